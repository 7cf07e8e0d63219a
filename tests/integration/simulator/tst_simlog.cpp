// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/sim.h"
#include "support/client.h"
#include "support/daemon.h"
#include "support/files.h"

#include <QJsonArray>
#include <QRegularExpression>
#include <QtTest>

using namespace Support;

namespace {

const QString Camera = QStringLiteral("CameraEnabled");

/// The results of @p origin whose method is @p method.
QVector<QJsonObject> found(const Sim &device, const char *origin, const char *method)
{
    QVector<QJsonObject> result;
    for (const QJsonObject &line : device.results()) {
        if (line.value(QStringLiteral("origin")) == QLatin1String(origin)
            && line.value(QStringLiteral("method")) == QLatin1String(method))
            result.append(line);
    }
    return result;
}

QJsonObject change(const char *what, const char *from, const char *to)
{
    return {{QStringLiteral("what"), QLatin1String(what)},
            {QStringLiteral("from"), QLatin1String(from)},
            {QStringLiteral("to"), QLatin1String(to)}};
}

void forbid(const char *policy)
{
    QProcess govctl;
    govctl.start(QStringLiteral("govctl"),
                 {QStringLiteral("set"), QLatin1String(policy), QStringLiteral("off")});
    QVERIFY(govctl.waitForFinished());
    QCOMPARE(govctl.exitCode(), 0);
}

} // namespace

/// What a device prints of the calls that it gets from the real daemon.
class TestSimLog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void lineOfText();
    void markerFileIsTold();
    void callsAsJson();
    void errorsAreTold();
    void personIsTold();
    void wrongCallIsTold();
    void colourOnlyOnATerminal_data();
    void colourOnlyOnATerminal();
};

void TestSimLog::initTestCase()
{
    Sim::install();
}

void TestSimLog::init()
{
    Files::reset();
}

void TestSimLog::lineOfText()
{
    Sim device;
    QVERIFY(device.startDevice());
    Daemon daemon;
    QVERIFY(daemon.start());
    forbid("MicrophoneEnabled");
    const QRegularExpression line(
        QStringLiteral("^\\d\\d:\\d\\d:\\d\\d\\.\\d{3}  audio      "
                       "Set\\(\"microphone\",\"disabled\"\\) +  microphone: on -> off$"),
        QRegularExpression::MultilineOption);
    QTRY_VERIFY2(line.match(device.out()).hasMatch(), qPrintable(device.out()));
    QVERIFY(!device.out().contains(QLatin1Char('\033')));
}

void TestSimLog::markerFileIsTold()
{
    Sim device;
    QVERIFY(device.startDevice());
    Daemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(device.waitForOut(QStringLiteral("camera: off -> on")));
    forbid("CameraEnabled");
    QVERIFY(device.waitForOut(QStringLiteral("camera: on -> off")));
    QVERIFY(device.out().contains(QStringLiteral("  file       /var/lib/govd/camera_enabled  ")));
}

void TestSimLog::callsAsJson()
{
    Sim device;
    QVERIFY(device.startDevice({QStringLiteral("--json")}));
    QCOMPARE(Sim::run(QStringLiteral("launch browserstandalone")).code, 0);
    Daemon daemon;
    QVERIFY(daemon.start());
    forbid("BrowserEnabled");
    QTRY_COMPARE(found(device, "runtime", "Terminate").size(), 2);
    const QJsonObject killed = found(device, "runtime", "Terminate").first();
    QCOMPARE(killed.value(QStringLiteral("arguments")),
             QJsonValue(QJsonArray{QStringLiteral("org.kvt.browserstandalone")}));
    QCOMPARE(killed.value(QStringLiteral("error")), QJsonValue(QJsonValue::Null));
    QCOMPARE(killed.value(QStringLiteral("path")),
             QJsonValue(QStringLiteral("/org/kvt/RuntimeManager/Control1")));
    QCOMPARE(killed.value(QStringLiteral("changes")),
             QJsonValue(QJsonArray{change("running browserstandalone", "yes", "no")}));
    QVERIFY(QDateTime::fromString(killed.value(QStringLiteral("time")).toString(), Qt::ISODate)
                .isValid());
    QTRY_COMPARE(found(device, "sandbox", "AddToGlobalDenylist").size(), 1);
    QCOMPARE(found(device, "sandbox", "AddToGlobalDenylist")
                 .first()
                 .value(QStringLiteral("changes"))
                 .toArray()
                 .size(),
             2);
}

void TestSimLog::errorsAreTold()
{
    Sim device;
    QVERIFY(device.startDevice());
    Daemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(Sim::run(QStringLiteral("fail usb error")).code, 0);
    forbid("UsbDevicesEnabled");
    QTRY_VERIFY(QRegularExpression(QStringLiteral("usb +Set\\(.*false\\) +Failed\n"))
                    .match(device.out())
                    .hasMatch());
    QCOMPARE(Sim::run(QStringLiteral("expect usb on")).code, 0);
}

void TestSimLog::personIsTold()
{
    Sim device;
    QVERIFY(device.startDevice({QStringLiteral("--json")}));
    QCOMPARE(Sim::run(QStringLiteral("plug usb --label \"A B\"")).code, 0);
    QTRY_COMPARE(found(device, "person", "Plug").size(), 1);
    QCOMPARE(found(device, "person", "Plug").first().value(QStringLiteral("changes")),
             QJsonValue(QJsonArray{change("storage A B", "absent", "mounted")}));
    // Looking is not handling.
    QCOMPARE(Sim::run(QStringLiteral("status")).code, 0);
    QCOMPARE(Sim::run(QStringLiteral("launch clock")).code, 0);
    QTRY_COMPARE(found(device, "person", "Launch").size(), 1);
    QCOMPARE(device.results().size(), 2);
}

void TestSimLog::wrongCallIsTold()
{
    Sim device;
    QVERIFY(device.startDevice({QStringLiteral("--json")}));
    Bus bus;
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.ohm.mdm"), QStringLiteral("/org/freedesktop/ohm/mdm"),
        QStringLiteral("org.freedesktop.ohm.mdm"), QStringLiteral("Set"));
    call << 42;
    QCOMPARE(bus.call(call).errorName(), QStringLiteral("org.freedesktop.DBus.Error.InvalidArgs"));
    QTRY_COMPARE(found(device, "audio", "Set").size(), 1);
    QCOMPARE(found(device, "audio", "Set").first().value(QStringLiteral("error")),
             QJsonValue(QStringLiteral("org.freedesktop.DBus.Error.InvalidArgs")));
}

void TestSimLog::colourOnlyOnATerminal_data()
{
    QTest::addColumn<QString>("environment");
    QTest::addColumn<bool>("isColoured");
    QTest::newRow("terminal") << "TERM=xterm" << true;
    QTest::newRow("NO_COLOR") << "TERM=xterm NO_COLOR=1" << false;
    QTest::newRow("dumb") << "TERM=dumb" << false;
}

void TestSimLog::colourOnlyOnATerminal()
{
    QFETCH(QString, environment);
    QFETCH(bool, isColoured);
    Sim device;
    device.startShell(
        QStringLiteral("export %1; exec script -qec \"$SIM device\" /dev/null").arg(environment));
    QVERIFY(device.waitForOut(QStringLiteral("the device is on the bus")));
    QCOMPARE(Sim::run(QStringLiteral("launch clock")).code, 0);
    QVERIFY(device.waitForOut(QStringLiteral("running clock: no -> yes")));
    QCOMPARE(device.out().contains(QStringLiteral("\033[32mrunning clock: no -> yes\033[0m")),
             isColoured);
    QCOMPARE(device.out().contains(QLatin1Char('\033')), isColoured);
}

QTEST_GUILESS_MAIN(TestSimLog)
#include "tst_simlog.moc"
