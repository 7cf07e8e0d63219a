// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_BLOCKDEVICE_H
#define GOVD_TESTS_SUPPORT_BLOCKDEVICE_H

#include <QStringList>

#include <sys/types.h>

namespace Support {

/// A block device of the kernel with a small ext4 file system on it. Unmounted with this object.
class BlockDevice
{
    Q_DISABLE_COPY(BlockDevice)

public:
    /// The device that the kernel calls @p name.
    explicit BlockDevice(const QString &name);
    ~BlockDevice();

    /// What the kernel calls it.
    QString name() const { return m_name; }

    /// Name of the device file.
    QString node() const;

    /// Object path by which UDisks2 knows it.
    QString objectPath() const;

    /// Where mount() mounts it.
    static QString mountPoint();

    /// Mounts it at @p place, as root with mount(2). False when the kernel does not.
    [[nodiscard]] bool mount(const QString &place = mountPoint()) const;

    /// Shows what is mounted at mountPoint() at @p place as well, which may be the same. False when
    /// the kernel does not.
    [[nodiscard]] static bool mountAgain(const QString &place);

    /// Whether it is in the table of mounts, wherever.
    bool isMounted() const { return !mountPoints().isEmpty(); }

    /// Every place where it is mounted, as the kernel's table has it.
    QStringList mountPoints() const;

protected:
    BlockDevice() = default;

    /// Becomes the device @p name with the kernel's @p number. False when it gets no device file.
    bool become(const QString &name, dev_t number);

private:
    QString m_name;
    dev_t m_number = 0;
};

} // namespace Support

#endif
