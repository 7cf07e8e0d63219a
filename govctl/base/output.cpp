// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "output.h"

#include "terminal.h"
#include "text.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <cerrno>
#include <unistd.h>
#include <utility>

namespace {

QLatin1String codeOf(Output::Style style)
{
    switch (style) {
    case Output::Style::Good:
        return QLatin1String("32");
    case Output::Style::Bad:
        return QLatin1String("31");
    case Output::Style::Faint:
        return QLatin1String("2");
    case Output::Style::Strong:
        return QLatin1String("1");
    }
    Q_UNREACHABLE();
}

} // namespace

Output::Output(Form form)
    : m_json(form.json)
    , m_colour(!form.json
               && (form.colour == Colour::Always
                   || (form.colour == Colour::Auto && Terminal::wantsColours())))
    , m_verb(std::move(form.verb))
    , m_columns(Terminal::columns(STDOUT_FILENO))
{
}

void Output::alwaysJson()
{
    m_indented = !m_json;
    m_json = true;
    m_colour = false;
}

ExitCode Output::finish(ExitCode code) const
{
    return m_failed ? ExitCode::NoOutput : code;
}

ExitCode Output::write(ExitCode code, const QJsonObject &result, const QString &text, Lines lines)
{
    if (!m_json) {
        print(Terminal::folded(text, lines == Lines::Folded ? m_columns : 0).toUtf8());
        return code;
    }
    QJsonObject document = envelope(code);
    document.insert(QStringLiteral("result"), result);
    print(document);
    return code;
}

ExitCode Output::fail(const Failure &failure)
{
    if (!m_json) {
        note(toText(failure));
        return failure.code;
    }
    QJsonObject document = envelope(failure.code);
    document.insert(QStringLiteral("error"), toJson(failure));
    print(document);
    return failure.code;
}

ExitCode Output::fail(const Failure &failure, const QJsonObject &result, const QString &text)
{
    if (!m_json) {
        print(Terminal::folded(text, m_columns).toUtf8());
        return fail(failure);
    }
    QJsonObject document = envelope(failure.code);
    document.insert(QStringLiteral("result"), result);
    document.insert(QStringLiteral("error"), toJson(failure));
    print(document);
    return failure.code;
}

QJsonObject Output::toJson(const Failure &failure)
{
    return {{QStringLiteral("name"), failure.name},
            {QStringLiteral("message"), failure.message},
            {QStringLiteral("nearest"), QJsonArray::fromStringList(failure.nearest)}};
}

QString Output::toText(const Failure &failure)
{
    QStringList names;
    for (const QString &name : failure.nearest)
        names.append(printable(name));
    if (names.isEmpty())
        return failure.message;
    return QStringLiteral("%1; did you mean %2?")
        .arg(failure.message, names.join(QLatin1String(", ")));
}

void Output::note(const QString &line) const
{
    // A failed write to standard error cannot be reported anywhere.
    const QString text = QStringLiteral("%1: %2\n").arg(programName(), line);
    Terminal::write(STDERR_FILENO,
                    Terminal::folded(text, Terminal::columns(STDERR_FILENO)).toUtf8());
}

QString Output::paint(Style style, const QString &text) const
{
    if (!m_colour)
        return text;
    return QStringLiteral("\033[%1m%2\033[0m").arg(codeOf(style), text);
}

QString Output::paint(std::optional<bool> value) const
{
    return paint(value.value_or(false) ? Style::Good : Style::Bad, onOff(value));
}

QJsonObject Output::envelope(ExitCode code) const
{
    return {{QStringLiteral("version"), Version},
            {QStringLiteral("verb"), m_verb.isNull() ? QJsonValue() : QJsonValue(m_verb)},
            {QStringLiteral("code"), static_cast<int>(code)}};
}

void Output::print(const QJsonObject &document)
{
    if (m_indented)
        print(QJsonDocument(document).toJson(QJsonDocument::Indented));
    else
        print(QJsonDocument(document).toJson(QJsonDocument::Compact) + '\n');
}

/// A closed pipe (EPIPE) is not reported: its reader needs no more output.
void Output::print(const QByteArray &bytes)
{
    if (!m_open)
        return;
    const int error = Terminal::write(STDOUT_FILENO, bytes);
    m_open = error == 0;
    if (error == 0 || error == EPIPE)
        return;
    m_failed = true;
    note(QStringLiteral("cannot write the result (%1); check where the output goes")
             .arg(qt_error_string(error)));
}
