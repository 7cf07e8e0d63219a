// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/busmonitor.h"
#include "support/client.h"
#include "support/daemon.h"
#include "support/files.h"
#include "support/texts.h"

#include <QDBusArgument>
#include <QDBusVariant>
#include <QXmlStreamReader>
#include <QtTest>

#include <memory>

using namespace Support;

namespace {

const QString Policy = QStringLiteral("org.kvt.PolicyManager.Policy");
const QString Switch = QStringLiteral("org.kvt.PolicyManager.Switch");
const QString Error = QStringLiteral("org.freedesktop.DBus.Error.");

/// Every element of introspection data with its attributes, indented by its depth.
QStringList outline(const QString &xml)
{
    QStringList lines;
    QString indent;
    QXmlStreamReader reader(xml);
    while (!reader.atEnd()) {
        const QXmlStreamReader::TokenType token = reader.readNext();
        if (token == QXmlStreamReader::EndElement)
            indent.chop(1);
        if (token != QXmlStreamReader::StartElement)
            continue;
        QString line = indent + reader.name().toString();
        const QXmlStreamAttributes attributes = reader.attributes();
        for (const QXmlStreamAttribute &attribute : attributes)
            line += QStringLiteral(" %1=%2").arg(attribute.name(), attribute.value());
        lines.append(line);
        indent += QLatin1Char(' ');
    }
    return reader.hasError() ? QStringList(reader.errorString()) : lines;
}

/// The part of an outline that describes @p interface.
QStringList part(const QStringList &outline, const QString &interface)
{
    const int start = outline.indexOf(QStringLiteral(" interface name=") + interface);
    int end = start + 1;
    while (end < outline.size() && outline.at(end).startsWith(QLatin1String("  ")))
        ++end;
    return outline.mid(start, end - start);
}

QString installed(const QString &interface)
{
    return QString::fromUtf8(
        Files::read(QStringLiteral("/usr/share/dbus-1/interfaces/%1.xml").arg(interface)));
}

} // namespace

/// What the daemon offers on the bus, and that it offers nothing else.
class TestInterfaces : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();

    void objectHasTwoInterfacesOfItsOwn();
    void policyInterfaceIsAsDescribed();
    void switchInterfaceIsAsDescribed();
    void installedFilesTellTheSame_data();
    void installedFilesTellTheSame();
    void methodsOfTheManagerCannotBeCalled_data();
    void methodsOfTheManagerCannotBeCalled();
    void callsWithOtherArgumentsAreRefused_data();
    void callsWithOtherArgumentsAreRefused();
    void nothingIsAtOtherPaths_data();
    void nothingIsAtOtherPaths();
    void standardInterfacesWork();
    void thereAreNoProperties();

private:
    QString introspect(const QString &path = QStringLiteral("/org/kvt/PolicyManager"));

    std::unique_ptr<Daemon> m_daemon;
    std::unique_ptr<Client> m_client;
};

void TestInterfaces::initTestCase()
{
    // No test changes anything, so one daemon serves all.
    Files::reset();
    m_daemon = std::make_unique<Daemon>();
    m_client = std::make_unique<Client>();
    QVERIFY(m_daemon->start());
}

void TestInterfaces::cleanupTestCase()
{
    m_client.reset();
    m_daemon.reset();
}

QString TestInterfaces::introspect(const QString &path)
{
    return m_client
        ->callAny(QStringLiteral("org.freedesktop.DBus.Introspectable"),
                  QStringLiteral("Introspect"), {}, path)
        .arguments()
        .value(0)
        .toString();
}

void TestInterfaces::objectHasTwoInterfacesOfItsOwn()
{
    const QStringList interfaces = outline(introspect()).filter(QStringLiteral(" interface name="));
    QCOMPARE(interfaces,
             texts({" interface name=org.kvt.PolicyManager.Policy",
                    " interface name=org.kvt.PolicyManager.Switch",
                    " interface name=org.freedesktop.DBus.Properties",
                    " interface name=org.freedesktop.DBus.Introspectable",
                    " interface name=org.freedesktop.DBus.Peer"}));
    QCOMPARE(outline(introspect()).filter(QRegularExpression(QStringLiteral("^ *node"))),
             texts({"node"}));
}

void TestInterfaces::policyInterfaceIsAsDescribed()
{
    QCOMPARE(part(outline(introspect()), Policy),
             texts({" interface name=org.kvt.PolicyManager.Policy", "  signal name=PolicyChanged",
                    "   arg name=key type=s direction=out",
                    "   arg name=value type=v direction=out", "  method name=KeyValue",
                    "   arg name=key type=s direction=in", "   arg type=v direction=out",
                    "  method name=SetKeyValue", "   arg name=key type=s direction=in",
                    "   arg name=value type=v direction=in", "   arg type=b direction=out"}));
}

void TestInterfaces::switchInterfaceIsAsDescribed()
{
    // The result of SetKeyValue is said to be a number, which it is not.
    QCOMPARE(
        part(outline(introspect()), Switch),
        texts({" interface name=org.kvt.PolicyManager.Switch", "  signal name=SwitchChanged",
               "   arg name=key type=s direction=out", "   arg name=value type=v direction=out",
               "  method name=KeyValue", "   arg name=key type=s direction=in",
               "   arg type=v direction=out", "  method name=SetKeyValue",
               "   arg name=key type=s direction=in", "   arg name=value type=v direction=in",
               "   arg type=i direction=out", "  method name=KeyPolicyTypes",
               "   arg name=key type=s direction=in", "   arg type=ai direction=out",
               "  method name=Keys", "   arg type=as direction=out"}));
}

void TestInterfaces::installedFilesTellTheSame_data()
{
    QTest::addColumn<QString>("interface");
    QTest::newRow("policies") << Policy;
    QTest::newRow("switches") << Switch;
}

void TestInterfaces::installedFilesTellTheSame()
{
    QFETCH(const QString, interface);
    const QStringList file = outline(installed(interface));
    QVERIFY(file.size() > 10);
    QCOMPARE(file.mid(1), part(outline(introspect()), interface));
}

void TestInterfaces::methodsOfTheManagerCannotBeCalled_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<QVariantList>("arguments");
    const QString key = QStringLiteral("CameraEnabled");
    const QVariant value = QVariant::fromValue(QDBusVariant(false));
    QTest::newRow("updatePolicyValue")
        << QStringLiteral("updatePolicyValue") << QVariantList{key, value};
    QTest::newRow("enforceSwitchPolicies")
        << QStringLiteral("enforceSwitchPolicies") << QVariantList{key, value};
    QTest::newRow("onPolicyIsLockedChanged")
        << QStringLiteral("onPolicyIsLockedChanged") << QVariantList{key, true};
    QTest::newRow("setupPolicies") << QStringLiteral("setupPolicies") << QVariantList();
    QTest::newRow("setPolicyValue")
        << QStringLiteral("setPolicyValue") << QVariantList{key, value, false};
    QTest::newRow("policyChanged") << QStringLiteral("policyChanged") << QVariantList{key, value};
    QTest::newRow("PolicyChanged") << QStringLiteral("PolicyChanged") << QVariantList{key, value};
    QTest::newRow("deleteLater") << QStringLiteral("deleteLater") << QVariantList();
}

void TestInterfaces::methodsOfTheManagerCannotBeCalled()
{
    QFETCH(const QString, method);
    QFETCH(const QVariantList, arguments);
    BusMonitor monitor;
    for (const QString &interface :
         {QString(), Policy, Switch, QStringLiteral("local.PolicyManager"),
          QStringLiteral("org.kvt.PolicyManager")}) {
        const QString error = m_client->callAny(interface, method, arguments).errorName();
        const bool isKnown = interface.isEmpty() || interface == Policy || interface == Switch;
        QCOMPARE(
            error,
            Error
                + (isKnown ? QStringLiteral("UnknownMethod") : QStringLiteral("UnknownInterface")));
    }
    monitor.settle();
    QCOMPARE(m_client->policy(QStringLiteral("CameraEnabled")), QVariant(true));
    QCOMPARE(monitor.announcements(QStringLiteral("PolicyChanged")).size(), 0);
    QCOMPARE(monitor.announcements(QStringLiteral("policyChanged")).size(), 0);
}

void TestInterfaces::callsWithOtherArgumentsAreRefused_data()
{
    QTest::addColumn<QString>("interface");
    QTest::addColumn<QString>("method");
    QTest::addColumn<QVariantList>("arguments");
    const QString key = QStringLiteral("CameraEnabled");
    const QVariant value = QVariant::fromValue(QDBusVariant(false));
    const auto row = [](const char *name, const QString &interface, const char *method,
                        const QVariantList &arguments) {
        QTest::newRow(name) << interface << QString::fromLatin1(method) << arguments;
    };
    row("no key", Policy, "KeyValue", {});
    row("number for a key", Policy, "KeyValue", {1});
    row("key in a variant", Policy, "KeyValue", {QVariant::fromValue(QDBusVariant(key))});
    row("no value", Policy, "SetKeyValue", {key});
    row("value without variant", Policy, "SetKeyValue", {key, false});
    row("value before key", Policy, "SetKeyValue", {value, key});
    row("switch without value", Switch, "SetKeyValue", {key});
    row("switch without variant", Switch, "SetKeyValue", {key, false});
    row("no switch", Switch, "KeyPolicyTypes", {});
    row("other letters", Policy, "keyValue", {key});
    row("method of the other interface", Policy, "Keys", {});
    row("method that is a property elsewhere", Switch, "Value", {});
}

void TestInterfaces::callsWithOtherArgumentsAreRefused()
{
    QFETCH(const QString, interface);
    QFETCH(const QString, method);
    QFETCH(const QVariantList, arguments);
    const FileSnapshot before = Files::snapshot(QStringLiteral("/etc/policy/policy.conf"));
    QCOMPARE(m_client->callAny(interface, method, arguments).errorName(),
             Error + QStringLiteral("UnknownMethod"));
    QVERIFY(Files::snapshot(QStringLiteral("/etc/policy/policy.conf")) == before);
    QCOMPARE(m_client->policy(QStringLiteral("CameraEnabled")), QVariant(true));
}

void TestInterfaces::nothingIsAtOtherPaths_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("root") << QStringLiteral("/");
    QTest::newRow("above") << QStringLiteral("/org/kvt");
    QTest::newRow("below") << QStringLiteral("/org/kvt/PolicyManager/Policy");
    QTest::newRow("beside") << QStringLiteral("/org/kvt/PolicyManage");
}

void TestInterfaces::nothingIsAtOtherPaths()
{
    QFETCH(const QString, path);
    const QDBusMessage reply = m_client->callAny(Policy, QStringLiteral("KeyValue"),
                                                 {QStringLiteral("CameraEnabled")}, path);
    QCOMPARE(reply.type(), QDBusMessage::ErrorMessage);
    QVERIFY(!introspect(path).contains(QLatin1String("org.kvt.PolicyManager.")));
}

void TestInterfaces::standardInterfacesWork()
{
    const QString peer = QStringLiteral("org.freedesktop.DBus.Peer");
    const QDBusMessage ping = m_client->callAny(peer, QStringLiteral("Ping"));
    QCOMPARE(ping.type(), QDBusMessage::ReplyMessage);
    QCOMPARE(ping.arguments(), QVariantList());
    const QDBusMessage machine = m_client->callAny(peer, QStringLiteral("GetMachineId"));
    QCOMPARE(machine.arguments().value(0).toString().toLatin1(),
             Files::read(QStringLiteral("/etc/machine-id")).trimmed());
    QVERIFY(introspect().startsWith(QLatin1String("<!DOCTYPE node PUBLIC")));
}

void TestInterfaces::thereAreNoProperties()
{
    const QString properties = QStringLiteral("org.freedesktop.DBus.Properties");
    for (const QString &interface : {Policy, Switch}) {
        const QDBusMessage all =
            m_client->callAny(properties, QStringLiteral("GetAll"), {interface});
        QCOMPARE(all.signature(), QStringLiteral("a{sv}"));
        QCOMPARE(qdbus_cast<QVariantMap>(all.arguments().value(0)), QVariantMap());
        const QDBusMessage one = m_client->callAny(properties, QStringLiteral("Get"),
                                                   {interface, QStringLiteral("Value")});
        QCOMPARE(one.errorName(), Error + QStringLiteral("UnknownProperty"));
    }
}

QTEST_GUILESS_MAIN(TestInterfaces)
#include "tst_interfaces.moc"
