// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_UNIT_STORAGETEST_H
#define GOVD_TESTS_UNIT_STORAGETEST_H

#include "simulator/servicethread.h"
#include "simulator/storage.h"
#include "tests/unit/privatebus.h"

#include <systemsettings/partitionmanager.h>

/// What the tests of partitions call things.
namespace StorageNames {

const QString ServiceName = QStringLiteral("org.freedesktop.UDisks2");
const QString RootPath = QStringLiteral("/org/freedesktop/UDisks2");
const QString BlockPath = RootPath + QStringLiteral("/block_devices/sda1");
const QString DrivePath = RootPath + QStringLiteral("/drives/stick");
const QString BlockInterface = QStringLiteral("org.freedesktop.UDisks2.Block");
const QString DriveInterface = QStringLiteral("org.freedesktop.UDisks2.Drive");
const QString FilesystemInterface = QStringLiteral("org.freedesktop.UDisks2.Filesystem");
const QString ObjectManager = QStringLiteral("org.freedesktop.DBus.ObjectManager");
const QString PropertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");

const QStringList MountPoint(QStringLiteral("/run/media/stick"));
constexpr auto Any = Partition::Any;

} // namespace StorageNames

/// The drive at DrivePath.
Simulator::Drive usbStick();

/// The block device at BlockPath.
Simulator::Block blockDevice(const QStringList &mountPoints = {},
                             const QString &drive = StorageNames::DrivePath);

/// A manager that a test looks at, and what it has announced.
struct Observed
{
    Observed();
    QStringList announcedPaths() const;

    PartitionManager manager;
    QVector<Partition> announced;
};

/// Tests that have a storage service, absent at first, on a bus of their own. A test in which
/// the library logs anything, or anybody logs a warning, has failed.
class StorageTest : public QObject
{
    Q_OBJECT

protected:
    /// Runs @p function in the thread of the storage service.
    template <typename Function> auto there(Function function) const
    {
        return m_thread->run(function);
    }

    template <typename Thing> QString plug(const Thing &thing) const
    {
        return there([&] { return m_storage->plug(thing); });
    }

    void appear() const;

    /// How often the service has been asked for @p member.
    int calls(const char *member) const;

    /// What has been logged since the last look: by the library anything, by others warnings.
    static QStringList takeLog();

    /// Makes the service announce another partition for a while and waits until @p observed has
    /// seen it come and go: all that was told before has then arrived, too.
    bool passSentinel(Observed &observed) const;

    PrivateBus m_bus;
    std::unique_ptr<Simulator::ServiceThread> m_thread;
    Simulator::Storage *m_storage = nullptr;

protected Q_SLOTS:
    void init();

private Q_SLOTS:
    void initTestCase();
    void cleanup();
};

#endif
