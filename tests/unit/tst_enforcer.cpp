// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "handlers.h"
#include "names.h"
#include "policyenforcer.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QSemaphore>
#include <QThread>
#include <QtTest>

#include <atomic>
#include <functional>
#include <memory>

#include <sys/syscall.h>
#include <unistd.h>

namespace {

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

/// Waits for @p condition without an event loop, because a bus signal handled there would make this
/// thread wait for the lock, too. Returns whether it became true.
bool waitFor(const std::function<bool()> &condition)
{
    const QDeadlineTimer deadline(20000);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QThread::yieldCurrentThread();
    }
    return true;
}

/// A function that runs in a thread of its own.
class Work
{
    Q_DISABLE_COPY(Work)

public:
    explicit Work(const std::function<void()> &function)
        : m_thread(QThread::create([this, function] {
            m_id = static_cast<long>(syscall(SYS_gettid));
            function();
        }))
    {
        m_thread->start();
    }

    ~Work() { m_thread->wait(); }

    bool isDone() const { return m_thread->isFinished(); }

    /// Whether the thread waits for a mutex that is a part of @p object.
    template <typename T> bool waitsForLockOf(const T &object) const
    {
        // A system call and its arguments: the first one of futex is the address. Its number is not
        // looked at, because an emulator calls the kernel by another one.
        QFile file(QStringLiteral("/proc/self/task/%1/syscall").arg(m_id.load()));
        if (!file.open(QIODevice::ReadOnly))
            return false;
        const QList<QByteArray> words = file.readAll().split(' ');
        const auto address = words.value(1).toULongLong(nullptr, 16);
        const auto begin = reinterpret_cast<quintptr>(&object);
        return address >= begin && address < begin + sizeof object;
    }

private:
    std::atomic<long> m_id{0};
    std::unique_ptr<QThread> m_thread;
};

/// A handler that calls the audio service in another thread, until the service may answer.
class BusyHandler
{
    Q_DISABLE_COPY(BusyHandler)

public:
    BusyHandler() = default;
    ~BusyHandler() { finish(); }

    /// Runs in the audio service when it is called.
    void holdBack()
    {
        m_asked.release();
        m_mayAnswer.acquire();
        m_mayAnswer.release(); // from now on for every call
    }

    /// Runs the handler by @p function.
    void start(const std::function<void()> &function) { m_work = std::make_unique<Work>(function); }

    [[nodiscard]] bool waitUntilBusy() { return m_asked.tryAcquire(1, 20000); }

    /// Lets the service answer, and returns when the handler and its caller have returned.
    void finish()
    {
        m_mayAnswer.release();
        m_work.reset();
    }

private:
    QSemaphore m_asked;
    QSemaphore m_mayAnswer;
    std::unique_ptr<Work> m_work;
};

} // namespace

/// What no caller of the daemon can bring about: handlers in several threads, handlers without a
/// policy manager, and a handler that is called for a policy of others.
class TestEnforcer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void onlyWatchedNamesWaitForTheHandler_data();
    void onlyWatchedNamesWaitForTheHandler();
    void usbModesAreLeftAloneWithoutAManager();
    void tetheringIsLeftAloneForOtherPolicies();
};

void TestEnforcer::onlyWatchedNamesWaitForTheHandler_data()
{
    QTest::addColumn<bool>("isTaskOld");
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("hasToWait");
    for (const bool isTaskOld : {false, true}) {
        const char *task = isTaskOld ? "task that waited" : "new task";
        QTest::addRow("%s, its service", task) << isTaskOld << Names::AudioPolicy.service << true;
        QTest::addRow("%s, other service", task)
            << isTaskOld << Names::WifiTechnology.service << true;
        QTest::addRow("%s, service that is not watched", task)
            << isTaskOld << Names::RuntimeManager.service << false;
        QTest::addRow("%s, unknown name", task) << isTaskOld << QStringLiteral(":1.77") << false;
        QTest::addRow("%s, no name", task) << isTaskOld << QString() << false;
    }
}

void TestEnforcer::onlyWatchedNamesWaitForTheHandler()
{
    QFETCH(bool, isTaskOld);
    QFETCH(QString, name);
    QFETCH(bool, hasToWait);
    const PolicyEnforcementTask task{PolicyTypes::Microphone, false};
    BusyHandler handler;
    RecordingService audio(Names::AudioPolicy.service, [&] { handler.holdBack(); });
    if (!isTaskOld)
        QVERIFY(audio.appear());
    PolicyEnforcer enforcer(nullptr);
    if (isTaskOld) {
        enforcer.enforcePolicy(task);
        QVERIFY(audio.appear());
    }

    std::unique_ptr<Work> other; // destroyed after the handler, for which it may wait
    handler.start([&] {
        if (isTaskOld)
            enforcer.applyServicePolicies(Names::AudioPolicy.service);
        else
            enforcer.enforcePolicy(task);
    });
    QVERIFY(handler.waitUntilBusy());
    other = std::make_unique<Work>([&] { enforcer.applyServicePolicies(name); });
    QVERIFY(waitFor([&] { return other->isDone() || other->waitsForLockOf(enforcer); }));
    QCOMPARE(other->isDone(), !hasToWait);

    handler.finish();
    QVERIFY(waitFor([&] { return other->isDone(); }));
}

void TestEnforcer::usbModesAreLeftAloneWithoutAManager()
{
    RecordingService modes(Names::UsbModes.service);
    QVERIFY(modes.appear());

    for (int run = 0; run < 2; ++run) {
        QTest::ignoreMessage(QtWarningMsg, "PolicyManager wasn't set");
        updateUsbModes({PolicyTypes::UsbMediaTransfer, false});
    }

    QCOMPARE(modes.calls(), 0);
}

/// The enforcer never makes this call, because the table lists one policy for the service.
void TestEnforcer::tetheringIsLeftAloneForOtherPolicies()
{
    RecordingService wifi(Names::WifiTechnology.service);
    QVERIFY(wifi.appear());

    for (const auto type : {PolicyTypes::None, PolicyTypes::Camera, PolicyTypes::DeveloperMode})
        disableTethering({type, false});
    QCOMPARE(wifi.calls(), 0);

    disableTethering({PolicyTypes::InternetSharing, false});
    QCOMPARE(wifi.calls(), 1);
}

QTEST_GUILESS_MAIN(TestEnforcer)
#include "tst_enforcer.moc"
