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

void setFault(Service &service, bool inIntrospection, bool isSilent)
{
    const Fault fault = isSilent ? Fault::silence() : Fault::wrongAnswer({7});
    if (inIntrospection)
        service.setIntrospectionFault(fault);
    else
        service.setFault(fault);
}

void mend(Service &service)
{
    service.clearFaults();
    service.forgetCalls();
}

/// Longer than the time-outs of all calls of one change, and of all tasks that wait for a service.
constexpr int Patience = 3600000; // milliseconds

} // namespace

/// A neighbour that never answers, be it a call or the question for its interfaces, or that answers
/// that question with nonsense: the change is taken, the daemon goes on, and the neighbour gets the
/// next change when it is well again.
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
    QTest::addColumn<bool>("inIntrospection");
    QTest::addColumn<bool>("isSilent");
    for (size_t i = 0; i < Targets.size(); ++i) {
        const char *policy = Targets.at(i).policy;
        QTest::addRow("%s: silent", policy) << int(i) << false << true;
        QTest::addRow("%s: silent about its interfaces", policy) << int(i) << true << true;
        QTest::addRow("%s: nonsense about its interfaces", policy) << int(i) << true << false;
    }
}

void TestSilentNeighbours::daemonGoesOn()
{
    QFETCH(int, target);
    QFETCH(bool, inIntrospection);
    QFETCH(bool, isSilent);
    const QString policy = QString::fromLatin1(Targets.at(size_t(target)).policy);
    const QString method = QString::fromLatin1(Targets.at(size_t(target)).method);
    Files::reset();
    Simulator::ServiceThread thread;
    Service *service = Targets.at(size_t(target)).make(thread);
    // A service is asked for its interfaces once, when it is called for the first time.
    QVERIFY(inIntrospection || thread.run([&] { return service->appear(); }));
    BusMonitor monitor;
    Daemon daemon;
    QVERIFY(daemon.start());
    monitor.settle();
    monitor.clear();
    thread.run([&] { setFault(*service, inIntrospection, isSilent); });
    QVERIFY(thread.run([&] { return service->appear(); }));

    Caller caller;
    caller.setTimeout(Patience);
    caller.send(QStringLiteral("Policy"), QStringLiteral("SetKeyValue"),
                {policy, QVariant::fromValue(QDBusVariant(false))});
    const QString awaited = inIntrospection ? QStringLiteral("Introspect") : method;
    QVERIFY(monitor.waitFor([&](const BusMessage &message) {
        return message.isCallOf(awaited) && message.destination == service->name();
    }));
    if (isSilent && amount(1, 0))
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
}

QTEST_GUILESS_MAIN(TestSilentNeighbours)
#include "tst_silentneighbours.moc"
