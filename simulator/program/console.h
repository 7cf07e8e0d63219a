// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_SIMULATOR_PROGRAM_CONSOLE_H
#define GOVD_SIMULATOR_PROGRAM_CONSOLE_H

#include "govctl/result.h"

#include <QJsonObject>

namespace Simulator {

/// Where a verb writes: text for people or JSON for programs.
///
/// In JSON, standard output holds one document on each line and nothing else, failures included.
/// As text, failures go to standard error. A reader that has gone is no error.
class Console
{
public:
    enum class Style { Good, Bad, Faint, Strong };

    Console(bool isJson, const QString &verb);

    bool isJson() const { return m_isJson; }

    /// Whether standard output is a terminal that may be steered.
    bool isTerminal() const;

    /// False once a reader has gone or a write has failed.
    bool isOpen() const { return m_isOpen; }

    /// Writes a result: @p result for programs, @p text for people.
    void write(const QJsonObject &result, const QString &text);

    /// Writes why there is no result.
    void fail(const Failure &failure);

    /// Writes a line for people beside the result, to standard error.
    void note(const QString &line) const;

    /// @p text in a colour, where colours are wanted.
    QString paint(Style style, const QString &text) const;

    /// @p code, or NoOutput when something could not be written.
    ExitCode finish(ExitCode code) const { return m_hasFailed ? ExitCode::NoOutput : code; }

private:
    void print(const QByteArray &bytes);
    void print(ExitCode code, const QString &part, const QJsonObject &content);

    bool m_isJson;
    bool m_hasColour;
    bool m_isOpen = true;
    bool m_hasFailed = false;
    QString m_verb;
};

} // namespace Simulator

#endif
