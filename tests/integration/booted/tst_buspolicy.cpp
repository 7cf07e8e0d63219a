// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "service.h"
#include "support/effectiveuser.h"
#include "turncoat.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QFile>
#include <QXmlStreamReader>
#include <QtTest>

using Support::Identity;
using Wire::Answer;

namespace {

const QString PolicyFile = QStringLiteral("/usr/share/dbus-1/system.d/org.kvt.PolicyManager.conf");
const QByteArray Policy = "org.kvt.PolicyManager.Policy";
const QByteArray Switch = "org.kvt.PolicyManager.Switch";

Answer answerTo(const Identity &identity, const Wire::Call &call)
{
    return Turncoat(identity, call, "/bin/cat").answer();
}

} // namespace

Q_DECLARE_METATYPE(Wire::Call)

/// The bus policy as it is shipped: its text, and what the bus makes of it.
class TestBusPolicy : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();

    void rulesAreAboutTheDaemonOnly();
    void onlyRootMayOwnTheName();
    void everybodyMayRead_data();
    void everybodyMayRead();
    void callWithoutAnInterfaceIsRefused_data();
    void callWithoutAnInterfaceIsRefused();
    void whatTheDaemonDoesNotOfferIsRefused_data();
    void whatTheDaemonDoesNotOfferIsRefused();
};

void TestBusPolicy::initTestCase()
{
    Service::startFresh();
}

void TestBusPolicy::rulesAreAboutTheDaemonOnly()
{
    QFile file(PolicyFile);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QXmlStreamReader reader(&file);
    QString user;
    bool isMandatory = false;
    int rules = 0;
    int refusals = 0;
    while (!reader.atEnd()) {
        if (reader.readNext() != QXmlStreamReader::StartElement)
            continue;
        const QXmlStreamAttributes attributes = reader.attributes();
        const QString element = reader.name().toString();
        if (element == QLatin1String("busconfig"))
            continue;
        if (element == QLatin1String("policy")) {
            QCOMPARE(attributes.size(), 1); // exactly one of context, user and group
            user = attributes.value(QLatin1String("user")).toString();
            isMandatory = attributes.value(QLatin1String("context")) == QLatin1String("mandatory");
            continue;
        }
        if (isMandatory) { // holds for everybody, whatever other files allow
            QCOMPARE(element, QStringLiteral("deny"));
            QCOMPARE(attributes.value(QLatin1String("send_destination")).toString(),
                     QStringLiteral("org.kvt.PolicyManager"));
            QCOMPARE(attributes.value(QLatin1String("min_fds")).toString(), QStringLiteral("1"));
            ++refusals;
            continue;
        }
        QCOMPARE(element, QStringLiteral("allow")); // what nothing allows is refused anyway
        ++rules;
        if (attributes.hasAttribute(QLatin1String("own"))) {
            QCOMPARE(user, QStringLiteral("root"));
            QCOMPARE(attributes.size(), 1);
            continue;
        }
        QCOMPARE(attributes.size(), 3);
        QCOMPARE(attributes.value(QLatin1String("send_destination")).toString(),
                 QStringLiteral("org.kvt.PolicyManager"));
        QVERIFY(attributes.hasAttribute(QLatin1String("send_interface")));
        QVERIFY(attributes.hasAttribute(QLatin1String("send_member")));
    }
    QVERIFY2(!reader.hasError(), qPrintable(reader.errorString()));
    QVERIFY(rules > 0);
    QCOMPARE(refusals, 1);
}

void TestBusPolicy::onlyRootMayOwnTheName()
{
    for (const char *user : {"mdm", "agent", "operator", "deputy", "guest"}) {
        const QString name = QString::fromLatin1(user);
        const QDBusConnection connection = [&] {
            const Support::EffectiveUser effective(Identity::of(user));
            return QDBusConnection::connectToBus(QDBusConnection::SystemBus, name);
        }();
        QVERIFY(connection.isConnected());
        const QDBusMessage reply =
            connection.call(QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
                                                           QStringLiteral("/org/freedesktop/DBus"),
                                                           QStringLiteral("org.freedesktop.DBus"),
                                                           QStringLiteral("RequestName"))
                            << QStringLiteral("org.kvt.PolicyManager") << 0U);
        QCOMPARE(reply.errorName(), QStringLiteral("org.freedesktop.DBus.Error.AccessDenied"));
        QDBusConnection::disconnectFromBus(name);
    }
}

void TestBusPolicy::everybodyMayRead_data()
{
    QTest::addColumn<Wire::Call>("call");
    QTest::newRow("policy") << Wire::Call{Policy, "KeyValue", "CameraEnabled", false};
    QTest::newRow("switch") << Wire::Call{Switch, "KeyValue", "none", false};
    QTest::newRow("policies of a switch") << Wire::Call{Switch, "KeyPolicyTypes", "none", false};
    QTest::newRow("switches") << Wire::Call{Switch, "Keys", {}, false};
    QTest::newRow("introspection")
        << Wire::Call{"org.freedesktop.DBus.Introspectable", "Introspect", {}, false};
    QTest::newRow("ping") << Wire::Call{"org.freedesktop.DBus.Peer", "Ping", {}, false};
    QTest::newRow("machine") << Wire::Call{"org.freedesktop.DBus.Peer", "GetMachineId", {}, false};
    QTest::newRow("properties") << Wire::Call{"org.freedesktop.DBus.Properties", "GetAll", Policy,
                                              false};
}

void TestBusPolicy::everybodyMayRead()
{
    QFETCH(Wire::Call, call);
    QCOMPARE(answerTo(Identity::of("guest"), call), Answer::Good);
    QCOMPARE(answerTo(Identity::root(), call), Answer::Good);
}

void TestBusPolicy::callWithoutAnInterfaceIsRefused_data()
{
    QTest::addColumn<Identity>("identity");
    QTest::newRow("root") << Identity::root();
    for (const char *user : {"mdm", "agent", "operator", "guest"})
        QTest::newRow(user) << Identity::of(user);
}

void TestBusPolicy::callWithoutAnInterfaceIsRefused()
{
    QFETCH(Identity, identity);
    const Wire::Call write{{}, "SetKeyValue", "CameraEnabled", true};
    QCOMPARE(answerTo(identity, write), Answer::RefusedByBus);
    const Wire::Call read{{}, "KeyValue", "CameraEnabled", false};
    QCOMPARE(answerTo(identity, read), Answer::RefusedByBus);
}

void TestBusPolicy::whatTheDaemonDoesNotOfferIsRefused_data()
{
    QTest::addColumn<Wire::Call>("call");
    QTest::newRow("member") << Wire::Call{Policy, "Reset", {}, false};
    QTest::newRow("writing a property")
        << Wire::Call{"org.freedesktop.DBus.Properties", "Set", Policy, false};
    QTest::newRow("interface") << Wire::Call{"org.example.Other", "KeyValue", "key", false};
}

void TestBusPolicy::whatTheDaemonDoesNotOfferIsRefused()
{
    QFETCH(Wire::Call, call);
    QCOMPARE(answerTo(Identity::of("guest"), call), Answer::RefusedByBus);
    QCOMPARE(answerTo(Identity::root(), call), Answer::RefusedByBus);
}

QTEST_GUILESS_MAIN(TestBusPolicy)
#include "tst_buspolicy.moc"
