// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef SYSTEMSETTINGS_UDISKSRETRIES_H
#define SYSTEMSETTINGS_UDISKSRETRIES_H

#include <QHash>
#include <QObject>

class QTimer;

namespace UDisks {

/// Says when to try again what has failed: two seconds after the first failure, then twice as long
/// after each further one, to a minute. Each thing that is tried has a name.
class Retries : public QObject
{
    Q_OBJECT

public:
    /// Takes notice of a failure of @p name. Nothing changes when it is to be tried again anyway.
    void takeFailure(const QString &name);

    /// Forgets the failures of @p name.
    void end(const QString &name);
    void endAll();

Q_SIGNALS:
    /// It is time to try @p name again, after its first failure or after a further one.
    void due(const QString &name, bool onceMore);

private:
    QHash<QString, QTimer *> m_timers; ///< by name
};

} // namespace UDisks

#endif
