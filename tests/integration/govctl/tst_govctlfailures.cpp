// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "govctl/askingverbs.h"
#include "govctl/govctl.h"
#include "support/busmonitor.h"
#include "support/daemon.h"
#include "support/files.h"
#include "support/switchplugin.h"
#include "support/waiting.h"

#include <QtTest>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace Support;

namespace {

const QString BusAddress = QStringLiteral("DBUS_SYSTEM_BUS_ADDRESS");

/// A bus that takes connections and says nothing.
class SilentBus
{
    Q_DISABLE_COPY(SilentBus)

public:
    SilentBus()
        : m_socket(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_un address{AF_UNIX, "/tmp/silent"};
        unlink(address.sun_path);
        m_listens = bind(m_socket, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0
            && listen(m_socket, 10) == 0;
    }
    ~SilentBus() { close(m_socket); }

    bool listens() const { return m_listens; }

private:
    int m_socket;
    bool m_listens;
};

} // namespace

/// No bus, no daemon, no answer: one exit code, one line, and in time.
class TestGovctlFailures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void noBus_data() { addAskingVerbs(); }
    void noBus();
    void silentBus_data() { addAskingVerbs(); }
    void silentBus();
    void silentBusAndCompletion();
    void noService_data() { addAskingVerbs(); }
    void noService();
    void stuckDaemon_data() { addAskingVerbs(); }
    void stuckDaemon();
    void daemonStuckInAWrite();
    void daemonThatLeaves();
    void othersNeedNoDaemon();
};

void TestGovctlFailures::init()
{
    Files::reset();
}

void TestGovctlFailures::noBus()
{
    QFETCH(QString, verb);
    Govctl govctl;
    govctl.setEnvironment(BusAddress, QStringLiteral("unix:path=/nonexistent"));
    const Outcome text = govctl.run(verb);
    QCOMPARE(text.code, 5);
    QVERIFY(verb == QLatin1String("dump")
            || (text.err.contains(QStringLiteral("cannot reach the system bus"))
                && text.err.count(QLatin1Char('\n')) == 1));
    QCOMPARE(govctl.run(verb + QStringLiteral(" --json")).error(), QStringLiteral("no-bus"));
}

void TestGovctlFailures::silentBus()
{
    QFETCH(QString, verb);
    const SilentBus bus;
    QVERIFY(bus.listens());
    Govctl govctl;
    govctl.setEnvironment(BusAddress, QStringLiteral("unix:path=/tmp/silent"));
    const Outcome silent = govctl.run(verb + QStringLiteral(" --json --timeout 0.2"));
    QCOMPARE(silent.code, 6);
    QCOMPARE(silent.error(), QStringLiteral("no-answer"));
}

/// Whoever completes a word can do without the switches, but not without the shell.
void TestGovctlFailures::silentBusAndCompletion()
{
    const SilentBus bus;
    QVERIFY(bus.listens());
    Govctl govctl;
    govctl.setEnvironment(BusAddress, QStringLiteral("unix:path=/tmp/silent"));
    const Outcome silent = govctl.run({QStringLiteral("--timeout"), QStringLiteral("0.2"),
                                       QStringLiteral("complete"), QStringLiteral("--"),
                                       QStringLiteral("switch"), QStringLiteral("get"), QString()});
    QCOMPARE(silent.code, 0);
    QCOMPARE(silent.out, QString());
    QCOMPARE(silent.err, QString());
}

void TestGovctlFailures::noService()
{
    QFETCH(QString, verb);
    Govctl govctl;
    const Outcome text = govctl.run(verb);
    QCOMPARE(text.code, 5);
    QVERIFY(verb == QLatin1String("dump")
            || (text.err.contains(QStringLiteral("start the daemon"))
                && text.err.count(QLatin1Char('\n')) == 1));
    QCOMPARE(govctl.run(verb + QStringLiteral(" --json")).error(), QStringLiteral("no-service"));
}

void TestGovctlFailures::stuckDaemon()
{
    QFETCH(QString, verb);
    Daemon daemon;
    QVERIFY(daemon.start());
    daemon.pause();
    Govctl govctl;
    const Outcome stuck = govctl.run(verb + QStringLiteral(" --json --timeout 0.3"));
    QCOMPARE(stuck.code, 6);
    QCOMPARE(stuck.error(), QStringLiteral("no-answer"));
    daemon.resume();
}

void TestGovctlFailures::daemonStuckInAWrite()
{
    SwitchPlugin plugin;
    plugin.setSwitch(QStringLiteral("radio"), {4}, true);
    Daemon daemon;
    QVERIFY(daemon.start());
    plugin.hold(QStringLiteral("setKeyValue"));
    Govctl govctl;
    const Outcome stuck = govctl.run(QStringLiteral("switch set radio off --timeout 1"));
    QCOMPARE(stuck.code, 6);
    QVERIFY(stuck.err.contains(QStringLiteral("no answer within 1 s")));
    QVERIFY(plugin.waitForCall(QStringLiteral("holding setKeyValue")));
    plugin.release();
}

/// The bus tells, so nobody waits for the time-out.
void TestGovctlFailures::daemonThatLeaves()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    BusMonitor monitor;
    daemon.pause();
    Govctl govctl;
    govctl.start(QStringLiteral("get CameraEnabled --timeout 60 --json").split(QLatin1Char(' ')));
    QVERIFY(waitFor([&] { return !monitor.calls(QStringLiteral("KeyValue")).isEmpty(); }));
    daemon.kill();
    const Outcome left = govctl.finish();
    QCOMPARE(left.code, 5);
    QCOMPARE(left.error(), QStringLiteral("no-service"));
}

void TestGovctlFailures::othersNeedNoDaemon()
{
    Govctl govctl;
    govctl.setEnvironment(BusAddress, QStringLiteral("unix:path=/nonexistent"));
    QCOMPARE(govctl.run(QStringLiteral("can")).code, 0);
    QCOMPARE(govctl.run(QStringLiteral("list --keys")).code, 0);
    QCOMPARE(govctl.run(QStringLiteral("complete -- switch get ")).code, 0);
    QCOMPARE(govctl
                 .run({QStringLiteral("complete"), QStringLiteral("--"), QStringLiteral("switch"),
                       QStringLiteral("get"), QString()})
                 .out,
             QString());
    QCOMPARE(govctl.run(QStringLiteral("--version")).code, 0);
}

QTEST_GUILESS_MAIN(TestGovctlFailures)
#include "tst_govctlfailures.moc"
