// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "report.h"

#include <algorithm>
#include <cstdio>

Report::Report(const QString &file)
    : m_file(file)
    , m_out(stdout)
{
}

void Report::note(const QString &text)
{
    print("note", text);
}

void Report::warn(const QString &text)
{
    m_grade = std::max(m_grade, Doubtful);
    print("warning", text);
}

void Report::fail(const QString &text)
{
    m_grade = Useless;
    print("error", text);
}

void Report::print(const char *kind, const QString &text)
{
    QString line = text; // names from the plugin can contain line breaks
    line.replace(QLatin1Char('\n'), QLatin1String("\\n"));
    m_out << m_file << ": " << kind << ": " << line << '\n';
    m_out.flush();
}
