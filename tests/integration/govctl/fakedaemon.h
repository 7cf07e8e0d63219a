// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_GOVCTL_FAKEDAEMON_H
#define GOVD_TESTS_GOVCTL_FAKEDAEMON_H

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QHash>
#include <QStringList>

#include <functional>

/// Something under the daemon's name that answers as a test wants, wrongly if need be.
class FakeDaemon : public QDBusVirtualObject
{
    Q_OBJECT

public:
    using Handler = std::function<void(const QDBusMessage &)>;

    /// Takes the daemon's name and path on @p connection.
    explicit FakeDaemon(const QDBusConnection &connection);
    ~FakeDaemon() override;

    /// Whether the name is ours.
    bool isThere() const { return m_isThere; }

    /// Answers calls of "Interface.method" with @p arguments.
    void answer(const QString &call, const QVariantList &arguments);

    /// Does @p handler when "Interface.method" is called, in place of an answer.
    void handle(const QString &call, const Handler &handler);

    /// Announces that the policy @p key is on.
    void announce(const QString &key);

    /// The calls so far, as "Interface.method".
    QStringList calls() const { return m_calls; }

    QString introspect(const QString &path) const override;
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

private:
    QDBusConnection m_connection;
    bool m_isThere;
    QHash<QString, Handler> m_handlers;
    QStringList m_calls;
};

#endif
