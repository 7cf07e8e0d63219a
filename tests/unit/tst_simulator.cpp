// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/applicationsandbox.h"
#include "simulator/audiopolicy.h"
#include "simulator/developermode.h"
#include "simulator/deviceinformation.h"
#include "simulator/devicesentry.h"
#include "simulator/networktechnology.h"
#include "simulator/runtimemanager.h"
#include "simulator/storage.h"
#include "simulator/systemlogs.h"
#include "simulator/usbmodes.h"
#include "tests/unit/simulatortest.h"

#include <QDBusInterface>
#include <QDBusReply>
#include <QtTest>

using namespace Simulator;
using namespace SimulatorAddresses;

class tst_Simulator : public SimulatorTest
{
    Q_OBJECT

private Q_SLOTS:
    void keepsLogEvents();
    void tellsDeviceInformation();
    void terminatesApplications();
    void switchesUsbDevices();
    void switchesRemoteAccess();
    void switchesTethering();
    void switchesTheMicrophone();
    void keepsTheModeWhitelist();
    void keepsTheDenylist();
    void mountsStorage();
    void plugsStorage();
    void checksArguments_data();
    void checksArguments();
};

void tst_Simulator::keepsLogEvents()
{
    auto *logs = host<SystemLogs>();
    const QDBusMessage reply =
        ask(Logs, "sendEventStringAlt",
            {QStringLiteral("kind"), QStringLiteral("INFO_LEVEL"), QStringLiteral("text")});
    QCOMPARE(reply.type(), QDBusMessage::ReplyMessage);
    QCOMPARE(reply.signature(), QString());
    const auto events = there([=] { return logs->events(); });
    QCOMPARE(events.size(), 1);
    QCOMPARE(events.at(0).kind, QStringLiteral("kind"));
    QCOMPARE(events.at(0).level, QStringLiteral("INFO_LEVEL"));
    QCOMPARE(events.at(0).text, QStringLiteral("text"));
}

void tst_Simulator::tellsDeviceInformation()
{
    auto *information = host<DeviceInformation>();
    there([=] { information->setOsCertified(true); });

    QDBusInterface features(Features.service, Features.path, Features.interface,
                            QDBusConnection::systemBus());
    QCOMPARE(features.property("isOsCertified"), QVariant(true));

    const QDBusMessage get =
        ask(Features.properties(), "Get", {Features.interface, QStringLiteral("isOsCertified")});
    QCOMPARE(get.arguments().value(0).value<QDBusVariant>().variant(), QVariant(true));
    const QDBusReply<QVariantMap> all = ask(Features.properties(), "GetAll", {Features.interface});
    QCOMPARE(all.value(), (QVariantMap{{QStringLiteral("isOsCertified"), true}}));

    const QDBusMessage set =
        ask(Features.properties(), "Set",
            {Features.interface, QStringLiteral("isOsCertified"), variant(false)});
    QCOMPARE(set.errorName(), QStringLiteral("org.freedesktop.DBus.Error.PropertyReadOnly"));
}

void tst_Simulator::terminatesApplications()
{
    auto *runtime = host<RuntimeManager>();
    there([=] {
        runtime->start(QStringLiteral("org.a"));
        runtime->start(QStringLiteral("org.b"));
        runtime->start(QStringLiteral("org.a"));
    });
    QCOMPARE(there([=] { return runtime->runningApplications(); }),
             QStringList({QStringLiteral("org.a"), QStringLiteral("org.b")}));
    QCOMPARE(ask(Runtime, "Terminate", {QStringLiteral("org.a")}).type(),
             QDBusMessage::ReplyMessage);
    QCOMPARE(there([=] { return runtime->runningApplications(); }),
             QStringList(QStringLiteral("org.b")));
    QCOMPARE(ask(Runtime, "Terminate", {QStringLiteral("org.a")}).errorName(),
             QStringLiteral("org.kvt.RuntimeManager.Error.NotRunning"));
}

void tst_Simulator::switchesUsbDevices()
{
    auto *sentry = host<DeviceSentry>();
    const auto set = [](bool isEnabled) {
        return ask(Usb.properties(), "Set",
                   {Usb.interface, QStringLiteral("Enabled"), variant(isEnabled)});
    };
    QCOMPARE(set(false).type(), QDBusMessage::ReplyMessage);
    QVERIFY(!there([=] { return sentry->isUsbEnabled(); }));
    QCOMPARE(set(true).type(), QDBusMessage::ReplyMessage);
    QVERIFY(there([=] { return sentry->isUsbEnabled(); }));
}

void tst_Simulator::switchesRemoteAccess()
{
    auto *developer = host<DeveloperMode>();
    QVERIFY(there([=] { return developer->isRemoteConnectionEnabled(); }));
    QCOMPARE(ask(Developer, "SetRemoteConnectionEnabled", {false}).type(),
             QDBusMessage::ReplyMessage);
    QVERIFY(!there([=] { return developer->isRemoteConnectionEnabled(); }));
}

void tst_Simulator::switchesTethering()
{
    auto *wifi = host<NetworkTechnology>();
    there([=] { wifi->setTethering(true); });
    const QDBusReply<QVariantMap> before = ask(Wifi, "GetProperties");
    QCOMPARE(before.value().value(QStringLiteral("Tethering")), QVariant(true));
    QCOMPARE(ask(Wifi, "SetProperty", {QStringLiteral("Tethering"), variant(false)}).type(),
             QDBusMessage::ReplyMessage);
    QVERIFY(!there([=] { return wifi->isTethering(); }));
}

void tst_Simulator::switchesTheMicrophone()
{
    auto *audio = host<AudioPolicy>();
    const auto set = [](const char *value) {
        return ask(Audio, "Set", {QStringLiteral("microphone"), QLatin1String(value)}).type();
    };
    QCOMPARE(set("disabled"), QDBusMessage::ReplyMessage);
    QVERIFY(!there([=] { return audio->isMicrophoneEnabled(); }));
    QCOMPARE(set("enabled"), QDBusMessage::ReplyMessage);
    QVERIFY(there([=] { return audio->isMicrophoneEnabled(); }));
}

void tst_Simulator::keepsTheModeWhitelist()
{
    auto *modes = host<UsbModes>();
    const auto whitelist = [=] {
        return there([=] { return modes->whitelistedModes(); });
    };
    QCOMPARE(whitelist(), UsbModes::supportedModes());
    ask(Modes, "set_whitelisted_modes", {QStringLiteral("developer_mode,developer_mode")});
    QCOMPARE(whitelist(), QStringList(QStringLiteral("developer_mode")));
    ask(Modes, "set_whitelisted", {QStringLiteral("mtp_mode"), true});
    QCOMPARE(whitelist(),
             QStringList({QStringLiteral("developer_mode"), QStringLiteral("mtp_mode")}));
    ask(Modes, "set_whitelisted", {QStringLiteral("developer_mode"), false});
    QCOMPARE(whitelist(), QStringList(QStringLiteral("mtp_mode")));
    ask(Modes, "set_whitelisted_modes", {QString()});
    QCOMPARE(whitelist(), QStringList());
}

void tst_Simulator::keepsTheDenylist()
{
    auto *sandbox = host<ApplicationSandbox>();
    const QStringList both{QStringLiteral("org.a"), QStringLiteral("org.b")};
    const auto denylist = [=] {
        return there([=] { return sandbox->denylist(); });
    };
    ask(Sandbox, "AddToGlobalDenylist", {both});
    ask(Sandbox, "AddToGlobalDenylist", {both});
    QCOMPARE(denylist(), both);
    QCOMPARE(ask(Sandbox, "AddToGlobalDenylist", {QStringList()}).type(),
             QDBusMessage::ReplyMessage);
    QCOMPARE(denylist(), both);
    ask(Sandbox, "RemoveFromGlobalDenylist", {QStringList(QStringLiteral("org.a"))});
    QCOMPARE(denylist(), QStringList(QStringLiteral("org.b")));
}

void tst_Simulator::mountsStorage()
{
    auto *storage = host<Storage>();
    const QString path = there([=] { return storage->plug(Block{QStringLiteral("sda1")}); });
    const Address filesystem{storage->name(), path,
                             QStringLiteral("org.freedesktop.UDisks2.Filesystem")};
    const QDBusMessage mount = ask(filesystem, "Mount", {QVariantMap()});
    QCOMPARE(mount.arguments(), QVariantList{QStringLiteral("/run/media/sda1")});
    QCOMPARE(there([=] { return storage->blocks().value(path).mountPoints; }),
             QStringList(QStringLiteral("/run/media/sda1")));
    QCOMPARE(ask(filesystem, "Mount", {QVariantMap()}).errorName(),
             QStringLiteral("org.freedesktop.UDisks2.Error.AlreadyMounted"));
    QCOMPARE(ask(filesystem, "Unmount", {QVariantMap()}).type(), QDBusMessage::ReplyMessage);
    QCOMPARE(there([=] { return storage->blocks().value(path).mountPoints; }), QStringList());
    QCOMPARE(ask(filesystem, "Unmount", {QVariantMap()}).errorName(),
             QStringLiteral("org.freedesktop.UDisks2.Error.NotMounted"));
}

void tst_Simulator::plugsStorage()
{
    auto *storage = host<Storage>();
    const Address root{storage->name(), QStringLiteral("/org/freedesktop/UDisks2"),
                       QStringLiteral("org.freedesktop.DBus.ObjectManager")};
    const auto listing = [&] {
        return ask(root, "GetManagedObjects");
    };
    const auto paths = [&] {
        const auto objects = qdbus_cast<ObjectValues>(listing().arguments().at(0));
        QStringList found;
        for (auto it = objects.begin(); it != objects.end(); ++it)
            found.append(it.key().path());
        return found;
    };
    QCOMPARE(listing().signature(), QStringLiteral("a{oa{sa{sv}}}"));
    QCOMPARE(paths(), QStringList());
    const auto plugged = there([=] {
        const QString drive = storage->plug(Simulator::Drive{QStringLiteral("stick")});
        return QStringList{storage->plug(Block{QStringLiteral("sda1"), drive}), drive};
    });
    QCOMPARE(paths(), plugged);
    there([=] { storage->unplug(plugged.at(0)); });
    QCOMPARE(paths(), plugged.mid(1));
}

void tst_Simulator::checksArguments_data()
{
    QTest::addColumn<QString>("service");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("interface");
    QTest::addColumn<QString>("member");
    QTest::addColumn<QVariantList>("arguments");
    QTest::addColumn<QString>("error");

    const auto row = [](const char *title, const Address &address, const char *member,
                        const QVariantList &arguments, const QString &error = InvalidArgs) {
        QTest::newRow(title) << address.service << address.path
                             << address.interface << QString::fromLatin1(member) << arguments
                             << error;
    };
    const QString text = QStringLiteral("text");
    const QString unknown = QStringLiteral("org.freedesktop.DBus.Error.Unknown");
    row("event without text", Logs, "sendEventStringAlt", {text, text});
    row("event of no kind", Logs, "sendEventStringAlt",
        {QString(), QStringLiteral("INFO_LEVEL"), text});
    row("event of an unknown level", Logs, "sendEventStringAlt", {text, text, text});
    row("no application", Runtime, "Terminate", {});
    row("a nameless application", Runtime, "Terminate", {QString()});
    row("USB enabled by a text", Usb.properties(), "Set",
        {Usb.interface, QStringLiteral("Enabled"), variant(text)});
    row("USB enabled without variant", Usb.properties(), "Set",
        {Usb.interface, QStringLiteral("Enabled"), true});
    row("an unknown property", Usb.properties(), "Set", {Usb.interface, text, variant(true)},
        unknown + QStringLiteral("Property"));
    row("an unknown property to read", Usb.properties(), "Get", {Usb.interface, text},
        unknown + QStringLiteral("Property"));
    row("properties of nothing", Usb.properties(), "GetAll", {text},
        unknown + QStringLiteral("Interface"));
    row("remote access by a number", Developer, "SetRemoteConnectionEnabled", {1});
    row("tethering without variant", Wifi, "SetProperty", {QStringLiteral("Tethering"), false});
    row("tethering by a text", Wifi, "SetProperty", {QStringLiteral("Tethering"), variant(text)},
        QStringLiteral("net.connman.Error.InvalidArguments"));
    row("a read-only property", Wifi, "SetProperty", {QStringLiteral("Type"), variant(text)},
        QStringLiteral("net.connman.Error.InvalidProperty"));
    row("an unknown audio item", Audio, "Set", {text, QStringLiteral("enabled")});
    row("an unknown audio state", Audio, "Set", {QStringLiteral("microphone"), text});
    row("unknown modes", Modes, "set_whitelisted_modes", {QStringLiteral("mtp_mode,text")});
    row("an unknown mode", Modes, "set_whitelisted", {text, true});
    row("a mode by a text", Modes, "set_whitelisted", {QStringLiteral("mtp_mode"), text});
    row("a package that is no list", Sandbox, "AddToGlobalDenylist", {text});
    row("a nameless package", Sandbox, "AddToGlobalDenylist", {QStringList(QString())});
    row("a method that is not there", Audio, "Get", {}, unknown + QStringLiteral("Method"));
    row("an interface that is not there", {Audio.service, Audio.path, QStringLiteral("a.b")}, "Set",
        {text, text}, unknown + QStringLiteral("Interface"));
    row("an object that is not there", {Audio.service, QStringLiteral("/a"), Audio.interface},
        "Set", {text, text}, unknown + QStringLiteral("Object"));
}

void tst_Simulator::checksArguments()
{
    QFETCH(QString, service);
    QFETCH(QString, path);
    QFETCH(QString, interface);
    QFETCH(QString, member);
    QFETCH(QVariantList, arguments);
    QFETCH(QString, error);

    const QVector<Service *> services{
        host<SystemLogs>(),   host<DeviceInformation>(), host<RuntimeManager>(),
        host<DeviceSentry>(), host<DeveloperMode>(),     host<NetworkTechnology>(),
        host<AudioPolicy>(),  host<UsbModes>(),          host<ApplicationSandbox>()};
    int changes = 0;
    for (Service *each : services)
        there([&] { connect(each, &Service::changed, each, [&changes] { ++changes; }); });

    const QDBusMessage reply = QDBusConnection::systemBus().call(
        methodCall({service, path, interface}, member, arguments), QDBus::Block, 5000);
    QCOMPARE(reply.errorName(), error);
    QCOMPARE(there([&] { return changes; }), 0);
}

QTEST_GUILESS_MAIN(tst_Simulator)
#include "tst_simulator.moc"
