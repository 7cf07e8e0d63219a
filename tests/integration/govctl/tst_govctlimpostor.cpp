// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "govctl/askingverbs.h"
#include "govctl/fakedaemon.h"
#include "govctl/govctl.h"
#include "support/bus.h"
#include "support/files.h"
#include "support/waiting.h"

#include <QDBusVariant>
#include <QTemporaryDir>
#include <QtTest>

#include <unistd.h>

using namespace Support;

namespace {

const QString BusAddress = QStringLiteral("DBUS_SYSTEM_BUS_ADDRESS");

/// A bus of its own on which everybody may own every name.
class LawlessBus
{
public:
    LawlessBus()
    {
        Files::write(m_directory.filePath(QStringLiteral("bus.conf")),
                     "<busconfig><listen>unix:path=" + socket().toLatin1()
                         + "</listen>"
                           "<auth>EXTERNAL</auth><policy context='default'><allow user='*'/>"
                           "<allow own='*'/><allow send_destination='*'/><allow "
                           "receive_sender='*'/></policy></busconfig>");
        QFile::setPermissions(m_directory.path(), QFile::Permissions(0x7755));
        m_process.start(
            QStringLiteral("dbus-daemon"),
            {QStringLiteral("--nofork"),
             QStringLiteral("--config-file=") + m_directory.filePath(QStringLiteral("bus.conf"))});
    }
    ~LawlessBus()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

    bool waitUntilReady() const
    {
        return waitFor([this] { return QFile::exists(socket()); });
    }
    QString address() const { return QStringLiteral("unix:path=") + socket(); }

private:
    QString socket() const { return m_directory.filePath(QStringLiteral("socket")); }

    QTemporaryDir m_directory;
    QProcess m_process;
};

/// Connects to @p address as @p user: the bus asks for the effective user of that moment.
QDBusConnection connectAs(uid_t user, const QString &address)
{
    const QString name = QStringLiteral("foreign");
    if (seteuid(user) != 0)
        return QDBusConnection(QString());
    QDBusConnection connection = QDBusConnection::connectToBus(address, name);
    if (seteuid(0) != 0)
        qFatal("cannot become root again");
    return connection;
}

} // namespace

/// What owns the name of the daemon and is not the daemon.
class TestGovctlImpostor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void foreignOwner_data() { addAskingVerbs(); }
    void foreignOwner();
    void foreignSuccessor();
    void wrongAnswers_data();
    void wrongAnswers();
    void emptyObject();
    void plainAnswersFromTheImpostor();
    void writeWithoutEffect();
};

void TestGovctlImpostor::init()
{
    Files::reset();
}

void TestGovctlImpostor::foreignOwner()
{
    QFETCH(QString, verb);
    LawlessBus bus;
    QVERIFY(bus.waitUntilReady());
    QDBusConnection connection = connectAs(Identity::of("guest").user, bus.address());
    FakeDaemon impostor(connection);
    QVERIFY(impostor.isThere());

    Govctl govctl;
    govctl.setEnvironment(BusAddress, bus.address());
    const Outcome foreign = govctl.run(verb + QStringLiteral(" --json"));
    QCOMPARE(foreign.code, 5);
    QCOMPARE(foreign.error(), QStringLiteral("foreign-service"));
    QCOMPARE(impostor.calls(), QStringList());
    QDBusConnection::disconnectFromBus(connection.name());
}

/// What it announces is not shown, neither before it is known nor after.
void TestGovctlImpostor::foreignSuccessor()
{
    LawlessBus bus;
    QVERIFY(bus.waitUntilReady());
    QDBusConnection guest = connectAs(Identity::of("guest").user, bus.address());
    QDBusConnection root =
        QDBusConnection::connectToBus(bus.address(), QStringLiteral("successor"));
    Govctl govctl;
    govctl.setEnvironment(BusAddress, bus.address());
    {
        const FakeDaemon daemon(root);
        govctl.start({QStringLiteral("watch"), QStringLiteral("--once")});
        QVERIFY(govctl.waitForErr(QStringLiteral("watching")));
    }
    {
        FakeDaemon impostor(guest);
        impostor.announce(QStringLiteral("VpnEnabled"));
        QVERIFY(govctl.waitForErr(QStringLiteral("not to root")));
        impostor.announce(QStringLiteral("NfcEnabled"));
    }
    FakeDaemon daemon(root);
    daemon.announce(QStringLiteral("CameraEnabled"));
    const Outcome outcome = govctl.finish();
    QCOMPARE(outcome.lines().size(), 3);
    QVERIFY(outcome.lines().last().endsWith(QStringLiteral("policy   CameraEnabled  on")));
    QDBusConnection::disconnectFromBus(root.name());
    QDBusConnection::disconnectFromBus(guest.name());
}

void TestGovctlImpostor::wrongAnswers_data()
{
    QTest::addColumn<QString>("call");
    QTest::addColumn<QVariantList>("answer");
    QTest::addColumn<QString>("verb");
    const QString get = QStringLiteral("get CameraEnabled");
    const QString list = QStringLiteral("switch list");
    const QString value = QStringLiteral("Policy.KeyValue");
    QTest::newRow("no variant") << value << QVariantList{true} << get;
    QTest::newRow("nothing") << value << QVariantList() << get;
    QTest::newRow("too much") << value << QVariantList{QVariant::fromValue(QDBusVariant(true)), 1}
                              << get;
    QTest::newRow("no list") << "Switch.Keys" << QVariantList{QStringLiteral("radio")} << get;
    QTest::newRow("no number list")
        << "Switch.KeyPolicyTypes" << QVariantList{QStringList{QStringLiteral("1")}} << list;
    QTest::newRow("no switch variant") << "Switch.KeyValue" << QVariantList{1} << list;
    QTest::newRow("no truth") << "Policy.SetKeyValue" << QVariantList{QStringLiteral("yes")}
                              << QStringLiteral("set CameraEnabled off");
}

void TestGovctlImpostor::wrongAnswers()
{
    QFETCH(QString, call);
    QFETCH(QVariantList, answer);
    QFETCH(QString, verb);
    Bus bus;
    FakeDaemon fake(bus.connect());
    QVERIFY(fake.isThere());
    fake.answer(call, answer);
    Govctl govctl;
    const Outcome wrong = govctl.run(verb + QStringLiteral(" --json"));
    QCOMPARE(wrong.code, 5);
    QCOMPARE(wrong.error(), QStringLiteral("bad-answer"));
}

/// Somebody has the name and nothing behind it.
void TestGovctlImpostor::emptyObject()
{
    Bus bus;
    QDBusConnection connection = bus.connect();
    QVERIFY(connection.registerService(QStringLiteral("org.kvt.PolicyManager")));
    Govctl govctl;
    const Outcome empty = govctl.run(QStringLiteral("list"));
    QCOMPARE(empty.code, 5);
    QVERIFY(empty.err.contains(QStringLiteral("does not answer as the daemon does")));
    QCOMPARE(empty.err.count(QLatin1Char('\n')), 1);
}

/// Proof that the rows of wrongAnswers() fail for the answer that they change alone.
void TestGovctlImpostor::plainAnswersFromTheImpostor()
{
    Bus bus;
    FakeDaemon fake(bus.connect());
    Govctl govctl;
    QCOMPARE(govctl.run(QStringLiteral("get CameraEnabled")).out, QStringLiteral("on\n"));
    QCOMPARE(govctl.run(QStringLiteral("switch list")).out,
             QStringLiteral("\"radio\"  on  WlanEnabled\n"));
    fake.answer(QStringLiteral("Switch.SetKeyValue"), {0});
    QCOMPARE(govctl.run(QStringLiteral("switch set radio off")).code, 3);
}

void TestGovctlImpostor::writeWithoutEffect()
{
    Bus bus;
    FakeDaemon fake(bus.connect());
    Govctl govctl;
    const Outcome policy = govctl.run(QStringLiteral("set CameraEnabled off"));
    QCOMPARE(policy.code, 0);
    QVERIFY(policy.out.startsWith(
        QStringLiteral("the daemon accepted off, but CameraEnabled still reads on")));
    const Outcome slow = govctl.run(QStringLiteral("switch set radio off"));
    QCOMPARE(slow.code, 0);
    QVERIFY(slow.out.startsWith(QStringLiteral("switch \"radio\" still reads on")));
}

QTEST_GUILESS_MAIN(TestGovctlImpostor)
#include "tst_govctlimpostor.moc"
