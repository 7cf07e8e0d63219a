// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/devicesentry.h"
#include "simulator/servicethread.h"
#include "support/bus.h"
#include "support/daemon.h"
#include "support/files.h"
#include "support/waiting.h"

#include <QtTest>

using namespace Support;

/// The bus goes away while the daemon waits for a neighbour that does not answer.
class TestBusLoss : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void endsACall();

private:
    /// Waits until the neighbour has been asked once more, and takes the bus away.
    void loseTheBusInTheCall();

    Simulator::ServiceThread m_thread;
    Simulator::DeviceSentry *m_neighbour = nullptr;
};

void TestBusLoss::init()
{
    Files::reset();
    Bus bus;
    if (!bus.isRunning())
        bus.start();
    m_neighbour = m_thread.create<Simulator::DeviceSentry>();
}

void TestBusLoss::loseTheBusInTheCall()
{
    QVERIFY(waitFor(
        [this] { return m_thread.run([this] { return !m_neighbour->calls().isEmpty(); }); }));
    Bus().stop();
    m_thread.run([this] { m_neighbour->leave(); });
}

void TestBusLoss::endsACall()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    m_thread.run([this] {
        m_neighbour->setFault(Simulator::Fault::silence());
        return m_neighbour->appear();
    });
    Bus bus;
    QDBusMessage write = QDBusMessage::createMethodCall(
        QStringLiteral("org.kvt.PolicyManager"), QStringLiteral("/org/kvt/PolicyManager"),
        QStringLiteral("org.kvt.PolicyManager.Policy"), QStringLiteral("SetKeyValue"));
    write << QStringLiteral("UsbDevicesEnabled") << QVariant::fromValue(QDBusVariant(false));
    QVERIFY(bus.connect().send(write));
    loseTheBusInTheCall();

    QCOMPARE(daemon.waitForExit(), 0);
    QCOMPARE(Files::values(QStringLiteral("/etc/policy/policy.conf"))
                 .value(QStringLiteral("UsbDevicesEnabled")),
             QStringLiteral("false"));
}

QTEST_GUILESS_MAIN(TestBusLoss)
#include "tst_busloss.moc"
