// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_STOREDVALUES_H
#define GOVCTL_STOREDVALUES_H

#include <QMap>
#include <QString>

/// The values of one of the daemon's files, as far as this user may read it.
struct StoredValues
{
    enum class State { Read, Missing, Unreadable, Malformed };

    QString path;
    State state = State::Missing;
    QMap<QString, bool> values; ///< empty unless the file was read

    /// The state as one word for programs.
    QString stateName() const;
};

/// Reads the booleans of the one group that the daemon uses. What is no boolean is left out, as
/// the daemon leaves it out. Keys are decoded as the daemon decodes them.
StoredValues readStoredValues(const QString &path);

#endif
