// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "hostilebus/crowd.h"
#include "simulator/applicationsandbox.h"
#include "simulator/audiopolicy.h"
#include "simulator/developermode.h"
#include "simulator/devicesentry.h"
#include "simulator/networktechnology.h"
#include "simulator/runtimemanager.h"
#include "simulator/servicethread.h"
#include "simulator/usbmodes.h"
#include "support/busmonitor.h"
#include "support/caller.h"
#include "support/client.h"
#include "support/daemon.h"
#include "support/files.h"

#include <QDBusVariant>
#include <QtTest>

using namespace Support;
using Simulator::Fault;
using Simulator::Service;

namespace {

using Maker = std::function<Service *(Simulator::ServiceThread &)>;

template <typename S> Maker makerOf()
{
    return [](Simulator::ServiceThread &thread) {
        return thread.create<S>();
    };
}

/// A neighbour, the policy for which the daemon calls it, and the method.
struct Target
{
    Maker make;
    const char *policy;
    const char *method;
};

const std::vector<Target> Targets = {
    {makerOf<Simulator::AudioPolicy>(), "MicrophoneEnabled", "Set"},
    {makerOf<Simulator::UsbModes>(), "UsbDeveloperModeEnabled", "set_whitelisted"},
    {makerOf<Simulator::ApplicationSandbox>(), "VoiceCallsEnabled", "AddToGlobalDenylist"},
    {makerOf<Simulator::NetworkTechnology>(), "InternetSharingEnabled", "SetProperty"},
    {makerOf<Simulator::DeveloperMode>(), "DeveloperModeEnabled", "SetRemoteConnectionEnabled"},
    {makerOf<Simulator::DeviceSentry>(), "UsbDevicesEnabled", "Set"},
    {makerOf<Simulator::RuntimeManager>(), "MessagesEnabled", "Terminate"},
};

void mend(Service &service)
{
    service.clearFaults();
    service.forgetCalls();
}

/// Longer than the time-outs of all calls of one change, and of all tasks that wait for a service.
constexpr int Patience = 3600000; // milliseconds

} // namespace

/// A service that never answers: the change is taken, the daemon goes on, and the service gets the
/// next change when it is well again. No service is asked for its introspection data, with which it
/// could keep the daemon waiting a second time, or exhaust its memory.
///
/// Usually the silent one leaves the bus as soon as it has been asked. With GOVD_HOLD it stays, and
/// the daemon waits for as long as its bus library does.
class TestSilentNeighbours : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void daemonGoesOn_data();
    void daemonGoesOn();
};

void TestSilentNeighbours::daemonGoesOn_data()
{
    QTest::addColumn<int>("target");
    for (size_t i = 0; i < Targets.size(); ++i)
        QTest::addRow("%s", Targets.at(i).policy) << int(i);
}

void TestSilentNeighbours::daemonGoesOn()
{
    QFETCH(int, target);
    const QString policy = QString::fromLatin1(Targets.at(size_t(target)).policy);
    const QString method = QString::fromLatin1(Targets.at(size_t(target)).method);
    Files::reset();
    Simulator::ServiceThread thread;
    Service *service = Targets.at(size_t(target)).make(thread);
    QVERIFY(thread.run([&] { return service->appear(); }));
    BusMonitor monitor;
    Daemon daemon;
    QVERIFY(daemon.start());
    monitor.settle();
    monitor.clear();
    thread.run([&] { service->setFault(Fault::silence()); });

    Caller caller;
    caller.setTimeout(Patience);
    caller.send(QStringLiteral("Policy"), QStringLiteral("SetKeyValue"),
                {policy, QVariant::fromValue(QDBusVariant(false))});
    QVERIFY(monitor.waitFor([&](const BusMessage &message) {
        return message.isCallOf(method) && message.destination == service->name();
    }));
    if (amount(1, 0))
        thread.run([&] { service->leave(); });
    QCOMPARE(caller.reply().value(), QVariant(true));

    Client client;
    QCOMPARE(client.policy(policy), QVariant(false));
    QCOMPARE(Files::values(QStringLiteral("/etc/policy/policy.conf")).value(policy),
             QStringLiteral("false"));
    thread.run([&] { mend(*service); });
    QVERIFY(thread.run([&] { return service->appear(); }));
    QVERIFY(client.setPolicy(policy, true));
    QVERIFY(client.setPolicy(policy, false));
    QVERIFY(!thread.run([&] { return service->calls(method); }).isEmpty());
    QVERIFY(daemon.isRunning());
    monitor.settle();
    const auto questions = monitor.messages([&](const BusMessage &message) {
        return message.isCallOf(QStringLiteral("Introspect"))
            && message.destination == service->name();
    });
    QCOMPARE(questions.size(), 0);
}

QTEST_GUILESS_MAIN(TestSilentNeighbours)
#include "tst_silentneighbours.moc"
