// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/program/applications.h"

#include "names.h"

namespace Simulator {
namespace {

/// Those that policies govern, and one that none does.
const QStringList &installed()
{
    static const QStringList identifiers{
        Names::CameraApplication,        Names::CameraLockScreenApplication,
        Names::BrowserApplication,       Names::WebApplication,
        Names::MessagesApplication,      Names::VoiceCallApplication,
        QStringLiteral("org.kvt.clock"),
    };
    return identifiers;
}

QString lastPart(const QString &identifier)
{
    return identifier.section(QLatin1Char('.'), -1);
}

} // namespace

QStringList applicationWords()
{
    QStringList words;
    for (const QString &identifier : installed())
        words.append(lastPart(identifier));
    words.sort();
    return words;
}

QString applicationIdentifier(const QString &word)
{
    for (const QString &identifier : installed()) {
        if (lastPart(identifier) == word)
            return identifier;
    }
    return {};
}

QString applicationWord(const QString &identifier)
{
    return installed().contains(identifier) ? lastPart(identifier) : identifier;
}

} // namespace Simulator
