// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_SIMULATOR_PROGRAM_STORAGEPORTS_H
#define GOVD_SIMULATOR_PROGRAM_STORAGEPORTS_H

#include "simulator/storage.h"

namespace Simulator {

/// What a person plugs into the device and pulls out, known by its label.
class StoragePorts
{
public:
    /// One stick or card as a person sees it.
    struct Medium
    {
        QString kind; ///< "usb" or "card"
        QString label;
        QString mountPoint; ///< empty while it is not mounted
    };

    explicit StoragePorts(Storage &storage);

    /// The kinds of media that there are ports for.
    static QStringList kinds();

    /// Plugs in a medium of @p kind. Without a @p label it gets a free one. Answers with the label.
    Reply plug(const QString &kind, const QString &label);

    /// Pulls out the medium with @p label; without one, the only one that is plugged in. Answers
    /// with the label.
    Reply unplug(const QString &label);

    /// All that is plugged in.
    QVector<Medium> media() const;

private:
    QStringList labels() const;
    QString freeLabel(const QString &kind) const;
    QString freeDrive(const QString &kind) const;

    Storage &m_storage;
};

} // namespace Simulator

#endif
