// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_PLUGINCHECK_REPORT_H
#define GOVD_PLUGINCHECK_REPORT_H

#include <QString>
#include <QTextStream>

/// Prints what is found about one plugin, a line each, and remembers the worst of it.
class Report
{
    Q_DISABLE_COPY(Report)

public:
    /// How good the plugin is; the numbers are the exit codes of the program.
    enum Grade {
        Sound = 0, ///< the daemon takes it, and nothing is wrong with it
        Doubtful = 1, ///< the daemon takes it, but it will not do what its author wants
        Useless = 2 ///< the daemon does not take it, or does and comes to harm
    };

    /// @p file stands at the start of each line.
    explicit Report(const QString &file);

    /// Something worth knowing.
    void note(const QString &text);

    /// Something that makes the plugin doubtful.
    void warn(const QString &text);

    /// Something that makes the plugin useless.
    void fail(const QString &text);

    Grade grade() const { return m_grade; }

private:
    void print(const char *kind, const QString &text);

    QString m_file;
    QTextStream m_out;
    Grade m_grade = Sound;
};

#endif
