// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_LOOPDEVICE_H
#define GOVD_TESTS_SUPPORT_LOOPDEVICE_H

#include <QStringList>

namespace Support {

/// A loop device of the kernel with a small ext4 file system on it.
///
/// Unmounted and taken away with this object; the kernel does so itself should the test be killed.
class LoopDevice
{
    Q_DISABLE_COPY(LoopDevice)

public:
    LoopDevice();
    ~LoopDevice();

    /// Why there is no device: what the machine does not give. Empty when all is well.
    QString failure() const { return m_failure; }

    /// The file that the device is made of, for whoever has to recognise it.
    static QString backingFile();

    /// Name of the device file.
    QString node() const;

    /// Object path by which UDisks2 knows it.
    QString objectPath() const;

    /// Where mount() mounts it.
    static QString mountPoint();

    /// Mounts it, as root with mount(2). False when the kernel does not.
    [[nodiscard]] bool mount() const;

    /// Whether it is in the table of mounts, wherever.
    bool isMounted() const { return !mountPoints().isEmpty(); }

private:
    QStringList mountPoints() const;
    bool makeFileSystem();
    bool attach();
    bool makeNode() const;
    bool fail(const QString &what);

    int m_number = -1;
    int m_descriptor = -1; ///< keeps the device alive while it is not mounted
    QString m_failure;
};

} // namespace Support

#endif
