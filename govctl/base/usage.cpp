// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "usage.h"

#include "text.h"

Failure usageFailure(const QString &message)
{
    return {ExitCode::Usage, QStringLiteral("usage"), message, {}};
}

Failure unknownName(const QString &failure, const QString &kind, const QStringList &known,
                    const QString &name, const QString &hint)
{
    const QStringList near = nearest(name, known);
    QString message = QStringLiteral("unknown %1 %2").arg(kind, cited(name));
    if (near.isEmpty())
        message = QStringLiteral("%1; %2").arg(message, hint);
    return {ExitCode::Usage, failure, message, near};
}

Result<double> parseSeconds(const QString &name, const QString &text, double least, double most)
{
    bool isNumber = false;
    const double seconds = text.toDouble(&isNumber);
    // The negated form also refuses NaN.
    if (!isNumber || !(seconds >= least && seconds <= most)) {
        return usageFailure(
            QStringLiteral("%1 takes seconds, from %2 to %3, not %4")
                .arg(name, QString::number(least), QString::number(most), cited(text)));
    }
    return seconds;
}
