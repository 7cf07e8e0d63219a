// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "commandline/usage.h"

#include "commandline/text.h"

Failure usageFailure(const QString &message)
{
    return {ExitCode::Usage, QStringLiteral("usage"), message, {}};
}

Failure unknownName(const QString &failure, const QString &kind, const QString &name,
                    const QStringList &known, const QString &hint)
{
    const QStringList near = nearest(name, known);
    QString message = Text::tr("unknown %1 %2").arg(kind, quoted(name));
    if (near.isEmpty())
        message = Text::tr("%1; %2").arg(message, hint);
    return {ExitCode::Usage, failure, message, near};
}

Outcome checkCount(int count, int least, int most, const QString &form)
{
    if (count < least)
        return usageFailure(Text::tr("too few arguments; use: %1 %2").arg(programName(), form));
    if (count > most)
        return usageFailure(Text::tr("too many arguments; use: %1 %2").arg(programName(), form));
    return std::nullopt;
}

Result<double> parseSeconds(const QString &name, const QString &text, double least, double most)
{
    bool isNumber = false;
    const double seconds = text.toDouble(&isNumber);
    // Written so that it also refuses what is no number at all.
    if (!isNumber || !(seconds >= least && seconds <= most)) {
        return usageFailure(
            Text::tr("%1 takes seconds, from %2 to %3, not %4")
                .arg(name, QString::number(least), QString::number(most), quoted(text)));
    }
    return seconds;
}
