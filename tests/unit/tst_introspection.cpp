// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/audiopolicy.h"
#include "simulator/developermode.h"
#include "simulator/introspection.h"
#include "simulator/networktechnology.h"
#include "tests/unit/simulatortest.h"

#include <QDBusInterface>
#include <QtTest>

using namespace Simulator;
using namespace SimulatorAddresses;

class tst_Introspection : public SimulatorTest
{
    Q_OBJECT

private Q_SLOTS:
    void isAnsweredDuringAFault();
    void describesItself();
    void splitsTypes_data();
    void splitsTypes();
};

void tst_Introspection::isAnsweredDuringAFault()
{
    auto *audio = host<AudioPolicy>();
    const Address introspection{Audio.service, Audio.path,
                                QStringLiteral("org.freedesktop.DBus.Introspectable")};
    there([=] { audio->setFault(Fault::silence()); });
    QVERIFY(ask(introspection, "Introspect")
                .arguments()
                .value(0)
                .toString()
                .contains(QStringLiteral("<method name=\"Set\">")));
    QVERIFY(there([=] { return audio->calls(); }).isEmpty());
}

void tst_Introspection::describesItself()
{
    host<NetworkTechnology>();
    host<DeveloperMode>();
    QDBusInterface wifi(Wifi.service, Wifi.path, Wifi.interface, QDBusConnection::systemBus());
    QVERIFY(wifi.isValid());
    QVERIFY(wifi.metaObject()->indexOfMethod("SetProperty(QString,QDBusVariant)") >= 0);
    QVERIFY(wifi.metaObject()->indexOfSignal("PropertyChanged(QString,QDBusVariant)") >= 0);
    QDBusInterface developer(Developer.service, Developer.path, Developer.interface,
                             QDBusConnection::systemBus());
    QVERIFY(developer.metaObject()->indexOfMethod("SetRemoteConnectionEnabled(bool)") >= 0);

    const QDBusMessage parent = ask({Wifi.service, QStringLiteral("/net"),
                                     QStringLiteral("org.freedesktop.DBus.Introspectable")},
                                    "Introspect");
    QVERIFY(
        parent.arguments().value(0).toString().contains(QStringLiteral("<node name=\"connman\"")));
}

void tst_Introspection::splitsTypes_data()
{
    QTest::addColumn<QString>("signature");
    QTest::addColumn<QStringList>("types");
    const auto row = [](const char *signature, const char *types) {
        QTest::newRow(signature) << QString::fromLatin1(
            signature) << QString::fromLatin1(types).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    };
    row("", "");
    row("s", "s");
    row("ssv", "s s v");
    row("asb", "as b");
    row("a{sv}as", "a{sv} as");
    row("oa{sa{sv}}", "o a{sa{sv}}");
    row("a{oa{sa{sv}}}", "a{oa{sa{sv}}}");
    row("(s(ii))aay", "(s(ii)) aay");
}

void tst_Introspection::splitsTypes()
{
    QFETCH(QString, signature);
    QTEST(completeTypes(signature), "types");
}

QTEST_GUILESS_MAIN(tst_Introspection)
#include "tst_introspection.moc"
