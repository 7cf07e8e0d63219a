// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "tests/unit/simulatortest.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QtTest>

#include <algorithm>

QVariant variant(const QVariant &value)
{
    return QVariant::fromValue(QDBusVariant(value));
}

QDBusMessage methodCall(const Address &address, const QString &member,
                        const QVariantList &arguments)
{
    QDBusMessage call =
        QDBusMessage::createMethodCall(address.service, address.path, address.interface, member);
    call.setArguments(arguments);
    return call;
}

QDBusMessage ask(const Address &address, const char *member, const QVariantList &arguments,
                 int timeout)
{
    return QDBusConnection::systemBus().call(methodCall(address, QLatin1String(member), arguments),
                                             QDBus::Block, timeout);
}

void SimulatorTest::initTestCase()
{
    QVERIFY(m_bus.start());
    QVERIFY(QDBusConnection::systemBus().isConnected());
}

void SimulatorTest::init()
{
    m_thread = std::make_unique<Simulator::ServiceThread>();
}

void SimulatorTest::cleanup()
{
    m_thread.reset();
    // The next test takes the same names.
    const auto *bus = QDBusConnection::systemBus().interface();
    const auto isEmpty = [bus] {
        const QStringList names = bus->registeredServiceNames();
        return std::all_of(names.begin(), names.end(), [](const QString &name) {
            return name.startsWith(QLatin1Char(':'))
                || name == QLatin1String("org.freedesktop.DBus");
        });
    };
    QTRY_VERIFY(isEmpty());
}
