// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_FUZZ_RECORD_H
#define GOVD_TESTS_FUZZ_RECORD_H

#include "tests/fuzz/check.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

/// One of the daemon's files at one moment.
struct Record
{
    explicit Record(const QString &path)
        : written(QFileInfo(path).lastModified())
    {
        QFile file(path);
        if (file.open(QIODevice::ReadOnly))
            content = file.readAll();
    }

    /// The same content, and not written in between.
    bool operator==(const Record &other) const
    {
        return content == other.content && written == other.written;
    }

    /// The content with the line of @p key as it has to be after a write.
    QByteArray with(const QByteArray &key, bool value) const
    {
        const QByteArray line = key + (value ? "=true\n" : "=false\n");
        const int start = content.indexOf('\n' + key + '=') + 1;
        if (start == 0)
            return (content.isEmpty() ? "[policy]\n" : content) + line;
        QByteArray result = content;
        return result.replace(start, content.indexOf('\n', start) + 1 - start, line);
    }

    /// Puts the content back.
    void restore(const QString &path) const
    {
        QFile file(path);
        require(file.open(QIODevice::WriteOnly) && file.write(content) == content.size(),
                "a file cannot be put back");
    }

    QByteArray content;
    QDateTime written;
};

#endif
