// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "qdbus.h"

#include <QCoreApplication>

#include <iostream>

namespace {

template <typename Value> Value resultOf(QDBusPendingReply<Value> reply)
{
    reply.waitForFinished();
    if (reply.isError())
        qFatal("%s", qPrintable(reply.error().message()));
    return reply.value();
}

} // namespace

/// Calls each method of the daemon once, and prints the results, then the signals.
int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    qRegisterMetaType<QDBusVariant>(); // without it Qt 6 delivers no signal that has one
    const QString service("org.kvt.PolicyManager"), path("/org/kvt/PolicyManager");
    org::kvt::PolicyManager::Policy policies(service, path, QDBusConnection::systemBus());
    org::kvt::PolicyManager::Switch switches(service, path, QDBusConnection::systemBus());
    const QDBusVariant off(false);
    const auto print = [](const QString &what, const QString &key, const QDBusVariant &value) {
        std::cout << qPrintable(what) << qPrintable(key) << ' ' << value.variant().toBool() << '\n';
    };
    QObject::connect(&policies, &org::kvt::PolicyManager::Policy::PolicyChanged,
                     [=](const QString &key, const QDBusVariant &value) {
                         print("PolicyChanged ", key, value);
                     });
    QObject::connect(&switches, &org::kvt::PolicyManager::Switch::SwitchChanged,
                     [=](const QString &key, const QDBusVariant &value) {
                         print("SwitchChanged ", key, value);
                         QCoreApplication::quit();
                     });

    std::cout << resultOf(policies.KeyValue("CameraEnabled")).variant().toBool() << '\n';
    std::cout << resultOf(policies.SetKeyValue("NfcEnabled", off)) << '\n';
    const QString key = resultOf(switches.Keys()).first();
    std::cout << qPrintable(key) << '\n';
    for (const int type : resultOf(switches.KeyPolicyTypes(key)))
        std::cout << type << '\n';
    std::cout << resultOf(switches.KeyValue(key)).variant().toBool() << '\n';
    std::cout << resultOf(switches.SetKeyValue(key, off)) << '\n';
    return QCoreApplication::exec();
}
