// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_UNIT_MANUALPAGE_H
#define GOVD_TESTS_UNIT_MANUALPAGE_H

#include <QFile>
#include <QStringList>

#include <initializer_list>

/// The content of a text file. Ends the test program when it cannot be read.
inline QString contentOf(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", qPrintable(path));
    return QString::fromUtf8(file.readAll());
}

/// The exit codes that a manual page lists, in its order.
inline QStringList documentedExitCodes(const QString &page)
{
    const QString section =
        page.section(QStringLiteral(".Sh EXIT STATUS"), 1).section(QStringLiteral("\n.Sh "), 0, 0);
    QStringList codes;
    for (const QString &line : section.split(QLatin1Char('\n'))) {
        if (line.startsWith(QStringLiteral(".It ")))
            codes.append(line.mid(4));
    }
    return codes;
}

/// Exit codes of a program, as documentedExitCodes() has them.
template <typename Code> QStringList exitCodes(std::initializer_list<Code> codes)
{
    QStringList numbers;
    for (const Code code : codes)
        numbers.append(QString::number(static_cast<int>(code)));
    return numbers;
}

#endif
