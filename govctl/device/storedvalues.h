// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_STOREDVALUES_H
#define GOVCTL_STOREDVALUES_H

#include <QMap>
#include <QString>

/// The values in one of the daemon's files, if this user may read it.
struct StoredValues
{
    enum class State { Read, Missing, Unreadable, Malformed };

    QString path;
    State state = State::Missing;
    QMap<QString, bool> values; ///< empty unless the file was read

    /// The state as one word for programs.
    QString stateName() const;
};

/// Reads the booleans of the group that the daemon uses. Other values are left out and keys are
/// decoded in the same way as in the daemon.
StoredValues readStoredValues(const QString &path);

#endif
