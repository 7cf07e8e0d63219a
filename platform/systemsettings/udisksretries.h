// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef SYSTEMSETTINGS_UDISKSRETRIES_H
#define SYSTEMSETTINGS_UDISKSRETRIES_H

#include <QHash>
#include <QObject>

class QTimer;

namespace UDisks {

/// Says when to try again what has failed: after two seconds, then after twice as long each time,
/// to a minute. Each thing that is tried has a name.
class Retries : public QObject
{
    Q_OBJECT

public:
    /// Begins to retry @p name, unless that has begun already.
    void begin(const QString &name);

    void end(const QString &name);
    void endAll();

Q_SIGNALS:
    /// It is time to try @p name, for the first time or once more. Emitted until end() is called.
    void due(const QString &name, bool onceMore);

private:
    QHash<QString, QTimer *> m_timers; ///< by name
};

} // namespace UDisks

#endif
