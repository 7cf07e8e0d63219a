// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/linefile.h"

#include "support/waiting.h"

#include <QFile>

#include <algorithm>

namespace Support {

LineFile::LineFile(const QString &path)
    : m_path(path)
{
}

QString LineFile::path() const
{
    return m_path;
}

QStringList LineFile::lines(int since) const
{
    read();
    return m_lines.mid(since);
}

int LineFile::mark() const
{
    read();
    return m_lines.size();
}

bool LineFile::contains(const QString &text, int since) const
{
    const QStringList later = lines(since);
    return std::any_of(later.cbegin(), later.cend(),
                       [&](const QString &line) { return line.contains(text); });
}

bool LineFile::waitForLine(const QString &text, int since) const
{
    return waitFor([&] { return contains(text, since); });
}

void LineFile::clear()
{
    QFile::resize(m_path, 0);
    m_offset = 0;
    m_lines.clear();
}

void LineFile::read() const
{
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly) || !file.seek(m_offset))
        return;
    while (true) {
        const QByteArray line = file.readLine();
        if (!line.endsWith('\n'))
            return;
        m_offset += line.size();
        m_lines.append(QString::fromUtf8(line.chopped(1)));
    }
}

} // namespace Support
