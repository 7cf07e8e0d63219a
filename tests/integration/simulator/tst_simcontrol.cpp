// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/sim.h"
#include "support/bus.h"
#include "support/files.h"

#include <QJsonDocument>
#include <QXmlStreamReader>
#include <QtTest>

using namespace Support;

namespace {

const QString Name = QStringLiteral("org.kvt.DeviceSimulator");
const QString Path = QStringLiteral("/org/kvt/DeviceSimulator");

/// The members of the interface @p name with the types that they take and give.
QStringList members(const QString &description, const QString &name)
{
    QStringList result;
    QXmlStreamReader xml(description);
    bool isInside = false;
    while (!xml.atEnd()) {
        xml.readNext();
        const QXmlStreamAttributes attributes = xml.attributes();
        if (xml.name() == QLatin1String("interface") && xml.isStartElement())
            isInside = attributes.value(QLatin1String("name")) == name;
        if (!isInside || !xml.isStartElement())
            continue;
        const QString type = attributes.value(QLatin1String("type")).toString();
        const QString way = attributes.value(QLatin1String("direction")).toString();
        if (xml.name() == QLatin1String("arg"))
            result.last() += QStringLiteral(" %1 %2").arg(way, type);
        else
            result.append(QStringLiteral("%1 %2 %3")
                              .arg(xml.name(), attributes.value(QLatin1String("name")), type));
    }
    result.sort();
    return result;
}

QDBusMessage ask(const QString &interface, const char *method, const QVariantList &arguments = {})
{
    Bus bus;
    QDBusMessage call =
        QDBusMessage::createMethodCall(Name, Path, interface, QString::fromLatin1(method));
    call.setArguments(arguments);
    return bus.call(call);
}

} // namespace

/// The object on the bus by which a device is handled.
class TestSimControl : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void isDescribedAsInstalled();
    void unknownIsAnError_data();
    void unknownIsAnError();
    void changesAreAnnounced();
};

void TestSimControl::initTestCase()
{
    Sim::install();
}

void TestSimControl::init()
{
    Files::reset();
}

void TestSimControl::isDescribedAsInstalled()
{
    Sim device;
    QVERIFY(device.startDevice());
    const QString live = ask(QStringLiteral("org.freedesktop.DBus.Introspectable"), "Introspect")
                             .arguments()
                             .value(0)
                             .toString();
    const QString file = QString::fromUtf8(
        Files::read(QStringLiteral("/usr/share/dbus-1/interfaces/org.kvt.DeviceSimulator.xml")));
    QCOMPARE(members(file, Name).size(), 10);
    QCOMPARE(members(file, Name), members(live, Name));
}

void TestSimControl::unknownIsAnError_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<QVariantList>("arguments");
    const QString x = QStringLiteral("x");
    const QString audio = QStringLiteral("audio");
    QTest::newRow("kind") << "Plug" << QVariantList{x, QString()};
    QTest::newRow("label") << "Unplug" << QVariantList{x};
    QTest::newRow("application") << "Launch" << QVariantList{x};
    QTest::newRow("stopped service") << "Stop" << QVariantList{x};
    QTest::newRow("started service") << "Start" << QVariantList{x};
    QTest::newRow("failing service") << "Fail" << QVariantList{x, QStringLiteral("error"), 0.0};
    QTest::newRow("fault") << "Fail" << QVariantList{audio, x, 0.0};
    QTest::newRow("delay") << "Fail" << QVariantList{audio, QStringLiteral("slow"), -1.0};
    QTest::newRow("no number") << "Fail" << QVariantList{audio, QStringLiteral("slow"), qQNaN()};
    QTest::newRow("healed service") << "Heal" << QVariantList{x};
}

void TestSimControl::unknownIsAnError()
{
    QFETCH(QString, method);
    QFETCH(QVariantList, arguments);
    Sim device;
    QVERIFY(device.startDevice());
    QCOMPARE(ask(Name, qPrintable(method), arguments).errorName(),
             QStringLiteral("org.kvt.DeviceSimulator.Error.Unknown"));
}

void TestSimControl::changesAreAnnounced()
{
    Sim device;
    QVERIFY(device.startDevice());
    Sim watch;
    watch.start({QStringLiteral("status"), QStringLiteral("--watch"), QStringLiteral("--json")});
    QTRY_COMPARE(watch.results().size(), 1);
    QCOMPARE(ask(Name, "SetCertified", {true}).type(), QDBusMessage::ReplyMessage);
    QTRY_COMPARE(watch.results().size(), 2);
    // What is the case already is not announced again.
    QCOMPARE(ask(Name, "SetCertified", {true}).type(), QDBusMessage::ReplyMessage);
    QCOMPARE(ask(Name, "SetCertified", {false}).type(), QDBusMessage::ReplyMessage);
    QTRY_COMPARE(watch.results().last().value(QStringLiteral("certified")), QJsonValue(false));
    QCOMPARE(watch.results().size(), 3);
}

QTEST_GUILESS_MAIN(TestSimControl)
#include "tst_simcontrol.moc"
