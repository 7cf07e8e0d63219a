// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_PLUGINCHECK_REPORT_H
#define GOVD_PLUGINCHECK_REPORT_H

#include <QString>
#include <QTextStream>

/// Prints what is found about one plugin, one line each, and holds the worst grade of it.
class Report
{
    Q_DISABLE_COPY(Report)

public:
    /// The numbers are the exit codes of the program.
    enum Grade {
        Sound = 0, ///< the daemon loads it, and nothing is wrong with it
        Doubtful = 1, ///< the daemon loads it, but part of it has no effect or an unwanted one
        Useless = 2 ///< the daemon does not load it, or would fail with it
    };

    /// Each line begins with @p file.
    explicit Report(const QString &file);

    /// Prints information, which does not change the grade.
    void note(const QString &text);

    /// Prints a fault that makes the plugin doubtful.
    void warn(const QString &text);

    /// Prints a fault that makes the plugin useless.
    void fail(const QString &text);

    Grade grade() const { return m_grade; }

private:
    void print(const char *kind, const QString &text);

    QString m_file;
    QTextStream m_out;
    Grade m_grade = Sound;
};

#endif
