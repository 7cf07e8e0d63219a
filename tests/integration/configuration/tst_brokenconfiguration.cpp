// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/client.h"
#include "support/daemon.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/mount.h"
#include "support/neighbours.h"
#include "support/platformkeys.h"
#include "support/systemlog.h"
#include "support/texts.h"

#include "simulator/applicationsandbox.h"
#include "simulator/audiopolicy.h"
#include "simulator/developermode.h"
#include "simulator/devicesentry.h"
#include "simulator/networktechnology.h"
#include "simulator/usbmodes.h"

#include <QtTest>

#include <memory>

#include <sys/stat.h>

using namespace Support;

namespace {

const QString Seed = QStringLiteral("/etc/policy/policy.d/seed.conf");
const QString Failure = QStringLiteral("warning|default|Failed to save configuration to file "
                                       "\"/etc/policy/switch.conf\"");

/// Neighbours that take every call, so that nothing but refused values stands in the log.
void addAll(Neighbours &neighbours)
{
    neighbours.add<Simulator::ApplicationSandbox>();
    neighbours.add<Simulator::AudioPolicy>();
    neighbours.add<Simulator::DeveloperMode>();
    neighbours.add<Simulator::DeviceSentry>();
    neighbours.add<Simulator::NetworkTechnology>();
    neighbours.add<Simulator::UsbModes>();
}

/// The pairs of warnings of @p count values that were refused. The first line of a pair begins
/// with @p cause. Empty when the log holds anything else, or another number.
bool holdsRefusals(const QStringList &log, const QString &cause, int count)
{
    const QStringList others =
        log.filter(QRegularExpression(QStringLiteral("^(?!info\\|)"))); // of applications
    if (others.size() != 2 * count)
        return false;
    for (int i = 0; i < others.size(); i += 2) {
        if (!others.at(i).startsWith(cause) || others.at(i + 1) != Failure)
            return false;
    }
    return true;
}

} // namespace

/// Configuration that cannot be recorded: nothing is taken then, and nothing is allowed.
class TestBrokenConfiguration : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void fileThatIsNoKeyFileStopsEverything_data();
    void fileThatIsNoKeyFileStopsEverything();
    void fileThatBreaksOffIsNotTakenInPart();
    void pipeInTheFilesPlaceStopsEverything();
    void unwritableDirectoryStopsEverything_data();
    void unwritableDirectoryStopsEverything();
    void nothingIsTakenFromSeedsThatCannotBeRecorded();
    void everythingIsEnforcedAsForbiddenOnce();
    void policiesAreWrittenOnceThatIsPossible();
    void nextStartFindsTheMendedFile();
};

void TestBrokenConfiguration::init()
{
    Files::reset();
    Files::write(CameraMarker, {});
    Files::write(QStringLiteral("/var/lib/govd/user_report_enabled"), {});
}

void TestBrokenConfiguration::fileThatIsNoKeyFileStopsEverything_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("error");
    const QString parse = QStringLiteral("1 ");
    QTest::newRow("text") << QByteArray("Everything is allowed.\n") << parse;
    QTest::newRow("no group") << QByteArray("CameraEnabled=true\n") << QStringLiteral("4 ");
    QTest::newRow("group without its end") << QByteArray("[policy\nCameraEnabled=true\n") << parse;
    QTest::newRow("conflict of an editor")
        << QByteArray("<<<<<<< mine\n[policy]\nCameraEnabled=true\n") << parse;
}

void TestBrokenConfiguration::fileThatIsNoKeyFileStopsEverything()
{
    QFETCH(const QByteArray, content);
    QFETCH(const QString, error);
    Files::write(PolicyFile, content);
    const FileSnapshot before = Files::snapshot(PolicyFile);
    Neighbours neighbours;
    addAll(neighbours);
    Daemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(holdsRefusals(daemon.log(),
                          QStringLiteral("warning|default|Error loading key file ") + error, 46));
    QVERIFY(Client().haveNoValue(platformKeys()));
    QVERIFY(Files::snapshot(PolicyFile) == before);
    QVERIFY(!QFile::exists(CameraMarker));
    QVERIFY(!QFile::exists(QStringLiteral("/var/lib/govd/user_report_enabled")));
    QVERIFY(QFile::exists(QStringLiteral("/var/lib/devel-su/.disable")));
}

void TestBrokenConfiguration::fileThatBreaksOffIsNotTakenInPart()
{
    Files::write(PolicyFile, "[policy]\nCameraEnabled=true\nMicrophoneEnabled=true\n<broken>\n");
    Neighbours neighbours;
    addAll(neighbours);
    Daemon daemon;
    QVERIFY(daemon.start());
    // Two values are read, refused, and then missed and refused once more as defaults.
    QVERIFY(holdsRefusals(daemon.log(), QStringLiteral("warning|default|Error loading key file 1 "),
                          48));
    QVERIFY(Client().haveNoValue(platformKeys()));
}

void TestBrokenConfiguration::pipeInTheFilesPlaceStopsEverything()
{
    QCOMPARE(mkfifo(qPrintable(PolicyFile), 0600), 0);
    Neighbours neighbours;
    addAll(neighbours);
    Daemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(holdsRefusals(daemon.log(), QStringLiteral("warning|default|Error loading key file 1 "),
                          46));
    QVERIFY(Client().haveNoValue(platformKeys()));
}

void TestBrokenConfiguration::unwritableDirectoryStopsEverything_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("place");
    QTest::addColumn<int>("refusals");
    QTest::newRow("read-only, empty") << QByteArray() << QStringLiteral("read-only") << 46;
    QTest::newRow("read-only, with a file")
        << QByteArray("[policy]\nCameraEnabled=true\nDeveloperShellEnabled=true\n")
        << QStringLiteral("read-only") << 48;
    QTest::newRow("no directory") << QByteArray() << QStringLiteral("missing") << 46;
}

void TestBrokenConfiguration::unwritableDirectoryStopsEverything()
{
    QFETCH(const QByteArray, content);
    QFETCH(const QString, place);
    QFETCH(const int, refusals);
    if (!content.isEmpty())
        Files::write(PolicyFile, content);
    std::unique_ptr<Mount> mount;
    if (place == QLatin1String("read-only"))
        mount.reset(new Mount(Mount::readOnly(QStringLiteral("/etc/policy"))));
    else
        QVERIFY(QDir(QStringLiteral("/etc/policy")).removeRecursively());
    SystemLog systemLog;
    Neighbours neighbours;
    addAll(neighbours);
    Daemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(holdsRefusals(daemon.log(), QStringLiteral("warning|default|Error saving key file "),
                          refusals));
    QVERIFY(Client().haveNoValue(platformKeys()));
    QCOMPARE(Files::read(PolicyFile), content);
    QCOMPARE(QDir(QStringLiteral("/etc/policy")).exists(), place == QLatin1String("read-only"));
    QVERIFY(!QFile::exists(CameraMarker));
    QVERIFY(QFile::exists(QStringLiteral("/var/lib/devel-su/.disable")));
    systemLog.settle();
    QCOMPARE(systemLog.lines().size(), 0);
}

void TestBrokenConfiguration::nothingIsTakenFromSeedsThatCannotBeRecorded()
{
    Files::write(Seed, "[policy]\nCameraEnabled=true\nUsbDevicesEnabled=true\n");
    const Mount mount = Mount::readOnly(QStringLiteral("/etc/policy"));
    Neighbours neighbours;
    addAll(neighbours);
    Daemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(
        holdsRefusals(daemon.log(), QStringLiteral("warning|default|Error saving key file "), 48));
    QVERIFY(Client().haveNoValue(platformKeys()));
}

void TestBrokenConfiguration::everythingIsEnforcedAsForbiddenOnce()
{
    const Mount mount = Mount::readOnly(QStringLiteral("/etc/policy"));
    Neighbours neighbours;
    addAll(neighbours);
    Daemon daemon;
    QVERIFY(daemon.start());
    neighbours.monitor().settle();
    const auto calls = [&](const char *service) {
        return neighbours.calls(QLatin1String(service));
    };
    QCOMPARE(calls("org.pelloraos.appjaild1"),
             texts({"AddToGlobalDenylist([org.kvt.cameralockscreen,org.kvt.camera])",
                    "AddToGlobalDenylist([])",
                    "AddToGlobalDenylist([org.kvt.browserstandalone,org.kvt.browserpwa])",
                    "AddToGlobalDenylist([voicecall-ui])",
                    "AddToGlobalDenylist([org.kvt.messages])", "AddToGlobalDenylist([])"}));
    QCOMPARE(calls("org.kvt.RuntimeManager"),
             texts({"Terminate(org.kvt.browserstandalone)", "Terminate(org.kvt.browserpwa)",
                    "Terminate(org.kvt.messages)"}));
    QCOMPARE(calls("com.meego.usb_moded"),
             texts({"set_whitelisted_modes()", "set_whitelisted(developer_mode,false)",
                    "set_whitelisted(mtp_mode,false)", "set_whitelisted(developer_mode,false)"}));
    QCOMPARE(calls("org.freedesktop.ohm.mdm"), texts({"Set(microphone,disabled)"}));
    QCOMPARE(calls("net.connman"), texts({"SetProperty(Tethering,false)"}));
    QCOMPARE(calls("org.kvt.developermode"),
             texts({"SetRemoteConnectionEnabled(false)", "SetRemoteConnectionEnabled(false)"}));
    QCOMPARE(calls("org.brinos.DeviceSentry1"),
             texts({"Set(org.brinos.DeviceSentry1.UsbManager,Enabled,false)"}));
}

void TestBrokenConfiguration::policiesAreWrittenOnceThatIsPossible()
{
    Daemon daemon;
    Client client;
    {
        const Mount mount = Mount::readOnly(QStringLiteral("/etc/policy"));
        QVERIFY(daemon.start());
        QVERIFY(!client.setPolicy(QStringLiteral("CameraEnabled"), true));
    }
    QVERIFY(client.setPolicy(QStringLiteral("CameraEnabled"), true));
    QCOMPARE(client.policy(QStringLiteral("CameraEnabled")), QVariant(true));
    QVERIFY(client.haveNoValue(platformKeys().mid(2)));
    QCOMPARE(Files::read(PolicyFile), QByteArray("[policy]\nCameraEnabled=true\n"));
    QVERIFY(QFile::exists(CameraMarker));
}

void TestBrokenConfiguration::nextStartFindsTheMendedFile()
{
    Files::write(PolicyFile, "<broken>");
    Daemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(daemon.stop(), 0);
    Files::write(PolicyFile, "[policy]\nCameraEnabled=false\n");
    QVERIFY(daemon.start());
    QCOMPARE(Client().policy(QStringLiteral("CameraEnabled")), QVariant(false));
    QCOMPARE(Client().policy(QStringLiteral("UsbDevicesEnabled")), QVariant(true));
}

QTEST_GUILESS_MAIN(TestBrokenConfiguration)
#include "tst_brokenconfiguration.moc"
