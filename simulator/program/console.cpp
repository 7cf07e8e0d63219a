// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/program/console.h"

#include "common/terminal.h"
#include "govctl/text.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <cstring>
#include <unistd.h>

namespace Simulator {
namespace {

/// Version of the form of the documents.
constexpr int Version = 1;

const char *codeOf(Console::Style style)
{
    switch (style) {
    case Console::Style::Good:
        return "32";
    case Console::Style::Bad:
        return "31";
    case Console::Style::Faint:
        return "2";
    case Console::Style::Strong:
        return "1";
    }
    Q_UNREACHABLE();
}

} // namespace

Console::Console(bool isJson, const QString &verb)
    : m_isJson(isJson)
    , m_hasColour(!isJson && Terminal::wantsColours())
    , m_verb(verb)
{
}

bool Console::isTerminal() const
{
    return !m_isJson && isatty(STDOUT_FILENO) && qgetenv("TERM") != "dumb";
}

void Console::write(const QJsonObject &result, const QString &text)
{
    if (m_isJson)
        print(ExitCode::Done, QStringLiteral("result"), result);
    else
        print(text.toUtf8());
}

void Console::fail(const Failure &failure)
{
    if (m_isJson) {
        print(failure.code, QStringLiteral("error"),
              {{QStringLiteral("name"), failure.name},
               {QStringLiteral("message"), failure.message},
               {QStringLiteral("nearest"), QJsonArray::fromStringList(failure.nearest)}});
        return;
    }
    QString line = failure.message;
    if (!failure.nearest.isEmpty())
        line =
            Text::tr("%1; did you mean %2?").arg(line, failure.nearest.join(QStringLiteral(", ")));
    note(line);
}

void Console::note(const QString &line) const
{
    // There is no place left to complain about a failure here.
    Terminal::write(STDERR_FILENO, QStringLiteral("govd-sim: %1\n").arg(line).toUtf8());
}

QString Console::paint(Style style, const QString &text) const
{
    if (!m_hasColour)
        return text;
    return QStringLiteral("\033[%1m%2\033[0m").arg(QLatin1String(codeOf(style)), text);
}

void Console::print(ExitCode code, const QString &part, const QJsonObject &content)
{
    const QJsonObject document{
        {QStringLiteral("version"), Version},
        {QStringLiteral("verb"), m_verb.isEmpty() ? QJsonValue() : QJsonValue(m_verb)},
        {QStringLiteral("code"), static_cast<int>(code)},
        {part, content}};
    print(QJsonDocument(document).toJson(QJsonDocument::Compact) + '\n');
}

/// Once the reader has gone, there is nobody to tell anything, not even that it has gone.
void Console::print(const QByteArray &bytes)
{
    if (!m_isOpen)
        return;
    const int error = Terminal::write(STDOUT_FILENO, bytes);
    m_isOpen = error == 0;
    if (error == 0 || error == EPIPE)
        return;
    m_hasFailed = true;
    note(Text::tr("cannot write the result (%1); check where the output goes")
             .arg(QString::fromLocal8Bit(std::strerror(error))));
}

} // namespace Simulator
