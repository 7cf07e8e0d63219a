// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "commandline/output.h"

#include "commandline/terminal.h"
#include "commandline/text.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <cerrno>
#include <unistd.h>
#include <utility>

namespace {

QJsonObject toJson(const Failure &failure)
{
    return {{QStringLiteral("name"), failure.name},
            {QStringLiteral("message"), failure.message},
            {QStringLiteral("nearest"), QJsonArray::fromStringList(failure.nearest)}};
}

QString toText(const Failure &failure)
{
    QStringList names;
    for (const QString &name : failure.nearest)
        names.append(printable(name));
    if (names.isEmpty())
        return failure.message;
    return Text::tr("%1; did you mean %2?").arg(failure.message, names.join(QLatin1String(", ")));
}

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

Output::Output(bool json, QString verb)
    : m_json(json)
    , m_colour(!json && Terminal::wantsColours())
    , m_verb(std::move(verb))
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

ExitCode Output::write(ExitCode code, const QJsonObject &result, const QString &text)
{
    if (!m_json) {
        print(text.toUtf8());
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
        print(text.toUtf8());
        return fail(failure);
    }
    QJsonObject document = envelope(failure.code);
    document.insert(QStringLiteral("result"), result);
    document.insert(QStringLiteral("error"), toJson(failure));
    print(document);
    return failure.code;
}

void Output::note(const QString &line) const
{
    // There is no place left to complain about a failure here.
    Terminal::write(STDERR_FILENO, QStringLiteral("%1: %2\n").arg(programName(), line).toUtf8());
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

/// Once the reader has gone, there is nobody to tell anything, not even that it has gone.
void Output::print(const QByteArray &bytes)
{
    if (!m_open)
        return;
    const int error = Terminal::write(STDOUT_FILENO, bytes);
    m_open = error == 0;
    if (error == 0 || error == EPIPE)
        return;
    m_failed = true;
    note(Text::tr("cannot write the result (%1); check where the output goes")
             .arg(qt_error_string(error)));
}
