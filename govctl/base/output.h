// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_OUTPUT_H
#define GOVCTL_OUTPUT_H

#include "result.h"

#include <QJsonObject>
#include <QString>

#include <optional>

/// The two forms of the output: text for people and JSON for programs.
///
/// In JSON, standard output holds one document on each line and nothing else, failures included.
/// As text, results go to standard output and failures to standard error. Everything is UTF-8,
/// whatever the locale. A reader that has closed the pipe is no error.
class Output
{
public:
    /// Version of the form of the documents.
    static constexpr int Version = 1;

    enum class Style { Good, Bad, Faint, Strong };

    enum class Colour { Auto, Always, Never };

    /// Whether text on a terminal is folded at its width; what programs read as well is not.
    enum class Lines { Folded, Whole };

    /// The options of the output.
    struct Form
    {
        bool json = false;
        Colour colour = Colour::Auto;
        QString verb; ///< the name that documents carry, or null before it is known
    };

    explicit Output(Form form);

    /// From now on writes JSON also without --json; in that case it is indented.
    void alwaysJson();

    bool isJson() const { return m_json; }

    /// False once a reader has closed the pipe or a write has failed.
    bool isOpen() const { return m_open; }

    /// @p code, or NoOutput when something could not be written.
    ExitCode finish(ExitCode code) const;

    /// Writes a result: @p result with --json, otherwise @p text. Returns @p code.
    ExitCode write(ExitCode code, const QJsonObject &result, const QString &text,
                   Lines lines = Lines::Folded);

    /// Writes @p failure and returns its code.
    ExitCode fail(const Failure &failure);

    /// Writes a partial result and the @p failure that ended it.
    ExitCode fail(const Failure &failure, const QJsonObject &result, const QString &text);

    /// A failure as one line for people, and as JSON.
    static QString toText(const Failure &failure);
    static QJsonObject toJson(const Failure &failure);

    /// Writes a line for people to standard error, with --json too.
    void note(const QString &line) const;

    /// @p text in a colour, where colours are wanted.
    QString paint(Style style, const QString &text) const;

    /// A value in its colour: "on", "off" or "none".
    QString paint(std::optional<bool> value) const;

private:
    QJsonObject envelope(ExitCode code) const;
    void print(const QJsonObject &document);
    void print(const QByteArray &bytes);

    bool m_json;
    bool m_indented = false;
    bool m_colour;
    bool m_open = true;
    bool m_failed = false;
    QString m_verb;
    int m_columns = 0; // width of the terminal on standard output; 0 for none
};

#endif
