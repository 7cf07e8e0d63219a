// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "commandline/options.h"

#include "commandline/text.h"

QCommandLineOption flag(const QStringList &names, const QString &description)
{
    return {names, description};
}

QList<QCommandLineOption> sharedOptions(const QString &timeoutDescription)
{
    return {
        flag({QStringLiteral("json")},
             Text::tr("Write JSON to standard output, failures included, and nothing else.")),
        {QStringLiteral("timeout"), timeoutDescription, QStringLiteral("SECONDS"),
         QStringLiteral("5")},
        flag({QStringLiteral("h"), QStringLiteral("help")}, Text::tr("Print help and exit.")),
        flag({QStringLiteral("v"), QStringLiteral("version")},
             Text::tr("Print the version and exit.")),
    };
}
