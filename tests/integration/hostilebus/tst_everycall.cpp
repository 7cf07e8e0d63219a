// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "hostilebus/crowd.h"
#include "support/client.h"
#include "support/daemon.h"
#include "support/files.h"
#include "support/switchplugin.h"
#include "support/systemlog.h"

#include <QtTest>

using namespace Support;

namespace {

const QString PolicyFile = QStringLiteral("/etc/policy/policy.conf");
const QString SwitchFile = QStringLiteral("/etc/policy/switch.conf");
const QString Camera = QStringLiteral("CameraEnabled");
const QString Cellular = QStringLiteral("cellular");

/// One call of the sweep and what came of it.
struct Call
{
    explicit Call(const QString &line)
        : fields(line.split(QLatin1Char('\t')))
    {
    }

    bool isOfDaemon() const { return fields.at(0).startsWith(QLatin1String("org.kvt.")); }
    bool isWrite() const { return fields.at(0).endsWith(QLatin1String(".SetKeyValue")); }
    bool hasRightTypes() const { return fields.at(1) == fields.at(2); }
    bool isSignal() const { return fields.at(0).endsWith(QLatin1String("Changed")); }
    QString outcome() const { return fields.at(3); }

    QStringList fields;
};

QVector<Call> sweep(const Identity &identity)
{
    QVector<Call> calls;
    for (const QString &line : runClient(identity, {QStringLiteral("wildly")}))
        calls.append(Call(line));
    return calls;
}

} // namespace

/// Every method that the object describes, called with arguments of every type and number, a
/// mebibyte among them: the daemon takes what it should, refuses the rest, and goes on serving.
class TestEveryCall : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void rootMayTryEverything();
    void guestChangesNothing();

private:
    std::unique_ptr<SwitchPlugin> m_plugin;
};

void TestEveryCall::init()
{
    Files::reset();
    m_plugin = std::make_unique<SwitchPlugin>();
    m_plugin->setSwitch(Cellular, {5}, true);
}

void TestEveryCall::rootMayTryEverything()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    const QVector<Call> calls = sweep(Identity::root());
    int right = 0;
    for (const Call &call : calls) {
        if (!call.isOfDaemon())
            continue;
        const bool isRefused = call.outcome() == QLatin1String("UnknownMethod");
        QVERIFY2(isRefused != (call.hasRightTypes() && !call.isSignal()),
                 qPrintable(call.fields.join(QLatin1Char(' '))));
        right += !isRefused;
    }
    QVERIFY(right > 100);
    qInfo("%d calls, %d of them with the right types", calls.size(), right);
    QVERIFY(daemon.isRunning());
    Client client;
    QVERIFY(client.setPolicy(Camera, false));
    QCOMPARE(client.policy(Camera), QVariant(false));
    QCOMPARE(daemon.stop(), 0);

    // The file is still one that the daemon itself can read.
    QVERIFY(daemon.start());
    QCOMPARE(client.policy(Camera), QVariant(false));
}

void TestEveryCall::guestChangesNothing()
{
    SystemLog log;
    Daemon daemon;
    QVERIFY(daemon.start());
    const FileSnapshot policies = Files::snapshot(PolicyFile);
    const FileSnapshot switches = Files::snapshot(SwitchFile);
    const int plugin = m_plugin->mark();
    const int events = log.mark();

    const QVector<Call> calls = sweep(Identity::of("guest"));
    int refused = 0;
    for (const Call &call : calls) {
        if (!call.isWrite() || !call.hasRightTypes())
            continue;
        QCOMPARE(call.outcome(), QStringLiteral("AccessDenied"));
        ++refused;
    }
    QVERIFY(refused > 50);
    qInfo("%d calls, %d of them writes that were refused", calls.size(), refused);
    QVERIFY(Files::snapshot(PolicyFile) == policies);
    QVERIFY(Files::snapshot(SwitchFile) == switches);
    QCOMPARE(m_plugin->calls(plugin).filter(QStringLiteral("setKeyValue")), QStringList());
    log.settle();
    QCOMPARE(log.lines(events).size(), 0);
    QCOMPARE(Client().policy(Camera), QVariant(true));
}

QTEST_GUILESS_MAIN(TestEveryCall)
#include "tst_everycall.moc"
