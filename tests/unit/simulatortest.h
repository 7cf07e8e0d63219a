// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_UNIT_SIMULATORTEST_H
#define GOVD_TESTS_UNIT_SIMULATORTEST_H

#include "simulator/servicethread.h"
#include "tests/unit/privatebus.h"

#include <QDBusVariant>

/// Where the methods of a service are found.
struct Address
{
    QString service;
    QString path;
    QString interface;

    /// The same object through the standard interface of properties.
    Address properties() const
    {
        return {service, path, QStringLiteral("org.freedesktop.DBus.Properties")};
    }
};

namespace SimulatorAddresses {

const Address Logs{QStringLiteral("org.kvtlabs.SystemLogs"),
                   QStringLiteral("/org/kvtlabs/SystemLogs"),
                   QStringLiteral("org.kvtlabs.SystemLogs")};
const Address Features{QStringLiteral("org.kvt.deviceinfo"),
                       QStringLiteral("/org/kvt/deviceinfo/Features"),
                       QStringLiteral("org.kvt.deviceinfo.Features")};
const Address Runtime{QStringLiteral("org.kvt.RuntimeManager"),
                      QStringLiteral("/org/kvt/RuntimeManager/Control1"),
                      QStringLiteral("org.kvt.RuntimeManager.Control1")};
const Address Usb{QStringLiteral("org.brinos.DeviceSentry1"),
                  QStringLiteral("/org/brinos/DeviceSentry1/Usb"),
                  QStringLiteral("org.brinos.DeviceSentry1.UsbManager")};
const Address Developer{QStringLiteral("org.kvt.developermode"), QStringLiteral("/"),
                        QStringLiteral("org.kvt.developermode")};
const Address Wifi{QStringLiteral("net.connman"), QStringLiteral("/net/connman/technology/wifi"),
                   QStringLiteral("net.connman.Technology")};
const Address Audio{QStringLiteral("org.freedesktop.ohm.mdm"),
                    QStringLiteral("/org/freedesktop/ohm/mdm"),
                    QStringLiteral("org.freedesktop.ohm.mdm")};
const Address Modes{QStringLiteral("com.meego.usb_moded"), QStringLiteral("/com/meego/usb_moded"),
                    QStringLiteral("com.meego.usb_moded")};
const Address Sandbox{QStringLiteral("org.pelloraos.appjaild1"),
                      QStringLiteral("/org/pelloraos/appjaild1"),
                      QStringLiteral("org.pelloraos.appjaild1")};

const QString InvalidArgs = QStringLiteral("org.freedesktop.DBus.Error.InvalidArgs");
const QString NoReply = QStringLiteral("org.freedesktop.DBus.Error.NoReply");

} // namespace SimulatorAddresses

/// The @p value as a D-Bus variant.
QVariant variant(const QVariant &value);

QDBusMessage methodCall(const Address &address, const QString &member,
                        const QVariantList &arguments);

/// Calls a method and waits for the answer, for @p timeout milliseconds at most.
QDBusMessage ask(const Address &address, const char *member, const QVariantList &arguments = {},
                 int timeout = 5000);

/// Tests of services in a thread of their own, on a bus of their own.
class SimulatorTest : public QObject
{
    Q_OBJECT

protected:
    /// Makes a service of the class @p S and lets it appear.
    template <typename S> S *host()
    {
        S *service = m_thread->create<S>();
        if (!there([=] { return service->appear(); }))
            qFatal("The service cannot appear");
        return service;
    }

    /// Runs @p function in the thread of the services.
    template <typename Function> auto there(Function function) const
    {
        return m_thread->run(function);
    }

    std::unique_ptr<Simulator::ServiceThread> m_thread;

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

private:
    PrivateBus m_bus;
};

#endif
