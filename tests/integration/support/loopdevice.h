// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_LOOPDEVICE_H
#define GOVD_TESTS_SUPPORT_LOOPDEVICE_H

#include "support/blockdevice.h"

namespace Support {

/// A loop device of the kernel, made of a file.
///
/// Taken away with this object; the kernel does so itself should the test be killed.
class LoopDevice : public BlockDevice
{
public:
    enum Content {
        FileSystem,
        TwoPartitions, ///< BlockDevice(partitionName(1)) and the same with 2
    };

    /// A device with this content. There is one at a time.
    explicit LoopDevice(Content content = FileSystem);
    ~LoopDevice();

    /// Why there is no device: what the machine does not give. Empty when all is well.
    QString failure() const { return m_failure; }

    /// The file that the device is made of, for whoever has to recognise it.
    static QString backingFile();

    QString partitionName(int number) const;

protected:
    /// A device that is made of the file at @p path.
    explicit LoopDevice(const QString &path);

private:
    bool makeFile(Content content);
    void attach(const QString &path);
    bool attachFree(const QString &path);
    bool fail(const QString &what);

    int m_descriptor = -1; ///< keeps the device alive while it is not mounted
    QString m_failure;
};

} // namespace Support

#endif
