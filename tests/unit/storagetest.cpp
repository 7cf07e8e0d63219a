// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "tests/unit/storagetest.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QMutex>
#include <QtTest>

using namespace StorageNames;

namespace {

QMutex logMutex;
QStringList logged; ///< since the last look, by whatever thread

void collectLog(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    const bool isOurs = qstrcmp(context.category, "systemsettings") == 0;
    if (!isOurs && (type == QtDebugMsg || type == QtInfoMsg))
        return;
    const QMutexLocker locker(&logMutex);
    logged.append(text);
}

} // namespace

Simulator::Drive usbStick()
{
    return {QStringLiteral("stick"), QStringLiteral("usb"), QStringLiteral("Maker"),
            QStringLiteral("Model"), true};
}

Simulator::Block blockDevice(const QStringList &mountPoints, const QString &drive)
{
    return {QStringLiteral("sda1"), drive, false, true, false, mountPoints};
}

Observed::Observed()
{
    QObject::connect(&manager, &PartitionManager::partitionAdded, &manager,
                     [this](const Partition &partition) { announced.append(partition); });
}

QStringList Observed::announcedPaths() const
{
    QStringList paths;
    for (const Partition &partition : announced)
        paths.append(partition.objectPath());
    return paths;
}

void StorageTest::appear() const
{
    QVERIFY(there([this] { return m_storage->appear(); }));
}

int StorageTest::calls(const char *member) const
{
    return there([&] { return m_storage->calls(QLatin1String(member)).size(); });
}

QStringList StorageTest::takeLog()
{
    const QMutexLocker locker(&logMutex);
    return std::exchange(logged, {});
}

bool StorageTest::passSentinel(Observed &observed) const
{
    static int count = 0;
    Simulator::Block sentinel = blockDevice({}, {});
    sentinel.id = QStringLiteral("sentinel%1").arg(++count);
    const QString path = plug(sentinel);
    const auto isSentinel = [&](const Partition &each) {
        return each.objectPath() == path;
    };
    const auto isAnnounced = [&] {
        return observed.announcedPaths().contains(path);
    };
    const auto isGone = [&] {
        const auto all = observed.manager.partitions(Any);
        return std::none_of(all.begin(), all.end(), isSentinel);
    };

    if (!QTest::qWaitFor(isAnnounced))
        return false;
    there([&] { m_storage->unplug(path); });
    const auto end =
        std::remove_if(observed.announced.begin(), observed.announced.end(), isSentinel);
    observed.announced.erase(end, observed.announced.end());
    return QTest::qWaitFor(isGone);
}

void StorageTest::initTestCase()
{
    QVERIFY(m_bus.start(ServiceName));
    QVERIFY(QDBusConnection::systemBus().isConnected());
    qInstallMessageHandler(collectLog);
}

void StorageTest::init()
{
    m_thread = std::make_unique<Simulator::ServiceThread>();
    m_storage = m_thread->create<Simulator::Storage>();
}

void StorageTest::cleanup()
{
    m_thread.reset();
    const auto *bus = QDBusConnection::systemBus().interface();
    QTRY_VERIFY(!bus->isServiceRegistered(ServiceName));
    QCOMPARE(takeLog().join(QLatin1Char('\n')), QString());
}
