// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_STORAGESTACK_H
#define GOVD_TESTS_SUPPORT_STORAGESTACK_H

#include "support/bus.h"

#include <QProcess>

namespace Support {

/// The real UDisks2 of the machine, with the device manager (udev) that it depends on.
///
/// The device manager gets rules about LoopDevice and UpperDevice only: what is on them, and that
/// the former is no part of the device, while the latter looks like one. It takes no notice of
/// other devices of the machine. Both programs hear and tell of devices in the sandbox's network
/// namespace, so that the machine's own device manager is not disturbed.
class StorageStack
{
    Q_DISABLE_COPY(StorageStack)

public:
    /// Starts both programs and waits until they serve. See failure().
    StorageStack();
    ~StorageStack();

    /// Why it does not run: what the machine does not give. Empty when all is well.
    QString failure() const { return m_failure; }

    /// What both programs have written so far.
    QByteArray log() const { return m_log; }

    /// Waits until UDisks2 knows of a file system on the block device at @p path, or of none.
    [[nodiscard]] bool waitForFileSystem(const QString &path, bool isThere);

    /// Waits until UDisks2 knows that it is mounted, or that it is not.
    [[nodiscard]] bool waitForMounted(const QString &path, bool isMounted);

    /// Starts UDisks2, and waits until it serves.
    bool startStorageService();

    /// Kills it, and waits until it is gone from the bus.
    [[nodiscard]] bool killStorageService();

    /// Has UDisks2 mount it, as a file manager does. False when it does not.
    [[nodiscard]] bool mount(const QString &path);

private:
    bool startDeviceManager();
    bool fail(const QString &what);
    QDBusMessage mountPoints(const QString &path);

    QByteArray m_log;
    QProcess m_deviceManager;
    QProcess m_storageService;
    Bus m_bus;
    QString m_failure;
};

} // namespace Support

#endif
