// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_UNIT_RECORDINGSERVICE_H
#define GOVD_TESTS_UNIT_RECORDINGSERVICE_H

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QThread>

#include <atomic>
#include <functional>

/// A service on the bus that answers every call with an empty reply. It runs in a thread of its
/// own, so that the caller may block. It is on the bus from appear() until its destruction.
class RecordingService : public QDBusVirtualObject
{
public:
    /// @p whenCalled is run in the service's thread before each answer.
    explicit RecordingService(const QString &name, std::function<void()> whenCalled = {})
        : m_name(name)
        , m_whenCalled(std::move(whenCalled))
    {
        moveToThread(&m_thread);
        m_thread.start();
    }

    ~RecordingService() override
    {
        // The bus may notice the loss of a connection later than the next call.
        QDBusConnection(m_name).unregisterService(m_name);
        QDBusConnection::disconnectFromBus(m_name);
        m_thread.quit();
        m_thread.wait();
    }

    /// Takes the name. False when that fails.
    [[nodiscard]] bool appear()
    {
        bool isThere = false;
        const auto take = [&] {
            auto bus = QDBusConnection::connectToBus(QDBusConnection::SystemBus, m_name);
            isThere = bus.registerVirtualObject(QStringLiteral("/"), this, QDBusConnection::SubPath)
                && bus.registerService(m_name);
        };
        // The bus library adds a child to the object, which has to be in the same thread.
        QMetaObject::invokeMethod(this, take, Qt::BlockingQueuedConnection);
        return isThere;
    }

    /// The number of calls so far.
    int calls() const { return m_calls; }

    QString introspect(const QString &) const override { return {}; }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override
    {
        ++m_calls;
        if (m_whenCalled)
            m_whenCalled();
        return connection.send(message.createReply());
    }

private:
    const QString m_name;
    const std::function<void()> m_whenCalled;
    std::atomic<int> m_calls{0};
    QThread m_thread;
};

#endif
