// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "tests/unit/storagetest.h"

#include <QtTest>

#include <iostream>

using namespace StorageNames;

namespace {

/// How this executable plays the part of a program with a manager among its global objects: each
/// scenario is a run of its own, named in the environment.
constexpr char ScenarioVariable[] = "TST_PARTITIONMANAGER_SCENARIO";

struct GlobalManager
{
    GlobalManager()
    {
        if (qEnvironmentVariableIsSet(ScenarioVariable))
            manager = std::make_unique<PartitionManager>();
    }
    std::unique_ptr<PartitionManager> manager;
};
GlobalManager global;

/// Lets the test look around while this process neither runs nor ends.
void pause()
{
    std::cout << "paused" << std::endl;
    std::string line;
    std::getline(std::cin, line);
}

/// Ends the program as soon as the library tells that it could not unmount something, so that a
/// reminder of that is still to come.
void quitOnComplaint(QtMsgType, const QMessageLogContext &, const QString &text)
{
    std::cout << qPrintable(text) << std::endl;
    QCoreApplication::quit();
}

int runScenario(const QByteArray &name, int argc, char **argv)
{
    if (!global.manager->partitions(Any).isEmpty())
        return 2;
    global.manager->unmount(Partition(), {});
    if (name == "no application")
        return 0;
    QCoreApplication application(argc, argv);
    pause();
    if (name == "no loop")
        return 0;
    if (name == "no bus") {
        QTimer::singleShot(0, &application, &QCoreApplication::quit);
        return application.exec() + global.manager->partitions(Any).size();
    }
    if (name == "busy") {
        qInstallMessageHandler(quitOnComplaint);
        QObject::connect(
            global.manager.get(), &PartitionManager::partitionAdded, &application,
            [](const Partition &partition) { global.manager->unmount(partition, {}); });
        return application.exec();
    }
    QObject::connect(global.manager.get(), &PartitionManager::partitionAdded, &application,
                     [](const Partition &partition) {
                         std::cout << qPrintable(partition.objectPath()) << std::endl;
                         QCoreApplication::quit();
                     });
    return application.exec();
}

/// A run of a scenario.
class Scenario
{
public:
    explicit Scenario(const char *name, const QString &busAddress = {})
    {
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QLatin1String(ScenarioVariable), QLatin1String(name));
        if (!busAddress.isEmpty())
            environment.insert(QStringLiteral("DBUS_SYSTEM_BUS_ADDRESS"), busAddress);
        m_process.setProcessEnvironment(environment);
        m_process.start(QCoreApplication::applicationFilePath(), QStringList());
    }

    bool isPaused() { return m_process.waitForReadyRead() && m_process.readLine() == "paused\n"; }
    void resume() { m_process.write("\n"); }

    /// All that it wrote since it was paused, when it has ended well and complained of nothing.
    QByteArray output()
    {
        m_process.waitForFinished();
        if (m_process.exitStatus() != QProcess::NormalExit || m_process.exitCode() != 0)
            return "It failed";
        return m_process.readAllStandardError() + m_process.readAllStandardOutput();
    }

private:
    QProcess m_process;
};

} // namespace

class tst_PartitionGlobal : public StorageTest
{
    Q_OBJECT

private Q_SLOTS:
    void worksAsGlobalObject();
    void endsWithoutApplication();
    void endsWithoutLoop();
    void staysQuietWithoutBus();
    void endsBeforeAReminder();
};

void tst_PartitionGlobal::worksAsGlobalObject()
{
    appear();
    plug(blockDevice(MountPoint, {}));
    Scenario scenario("loop");
    QVERIFY(scenario.isPaused());
    QCOMPARE(there([this] { return m_storage->calls().size(); }), 0);
    scenario.resume();
    QCOMPARE(scenario.output(), BlockPath.toUtf8() + '\n');
    QCOMPARE(calls("GetManagedObjects"), 1);
}

void tst_PartitionGlobal::endsWithoutApplication()
{
    Scenario scenario("no application");
    QCOMPARE(scenario.output(), QByteArray());
}

void tst_PartitionGlobal::endsWithoutLoop()
{
    appear();
    Scenario scenario("no loop");
    QVERIFY(scenario.isPaused());
    scenario.resume();
    QCOMPARE(scenario.output(), QByteArray());
    QCOMPARE(there([this] { return m_storage->calls().size(); }), 0);
}

void tst_PartitionGlobal::staysQuietWithoutBus()
{
    Scenario scenario("no bus", QStringLiteral("unix:path=/nonexistent/bus"));
    QVERIFY(scenario.isPaused());
    scenario.resume();
    QCOMPARE(scenario.output(), QByteArray());
}

void tst_PartitionGlobal::endsBeforeAReminder()
{
    appear();
    plug(blockDevice(MountPoint, {}));
    there([this] { m_storage->setFault(QStringLiteral("Unmount"), Simulator::Fault::error()); });
    Scenario scenario("busy");
    QVERIFY(scenario.isPaused());
    scenario.resume();
    QCOMPARE(scenario.output(),
             QByteArray("Cannot unmount \"/dev/sda1\": org.freedesktop.DBus.Error.Failed\n"));
}

int main(int argc, char **argv)
{
    const QByteArray scenario = qgetenv(ScenarioVariable);
    if (!scenario.isEmpty())
        return runScenario(scenario, argc, argv);
    QCoreApplication application(argc, argv);
    tst_PartitionGlobal test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_partitionglobal.moc"
