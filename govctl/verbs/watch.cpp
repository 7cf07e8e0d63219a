// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "commandqueue.h"
#include "daemonfailure.h"
#include "names.h"
#include "request.h"
#include "switches.h"
#include "text.h"
#include "watcher.h"

#include <QEventLoop>

namespace {

QJsonObject toJson(const Event &event)
{
    return {{QStringLiteral("time"), event.time.toUTC().toString(Qt::ISODateWithMs)},
            {QStringLiteral("kind"), event.kindName()},
            {QStringLiteral("key"), event.key},
            {QStringLiteral("value"), event.value}};
}

QString toText(const Event &event, const Output &output)
{
    return QStringLiteral("%1  %2  %3  %4\n")
        .arg(event.time.toString(QStringLiteral("yyyy-MM-dd hh:mm:ss.zzz")),
             event.kindName().leftJustified(7), printable(event.key), output.paint(event.value));
}

/// One run of the verb: passes events to the output and to the command until it ends.
class Session
{
public:
    Session(const Request &request, Output &output);

    ExitCode run();

private:
    void onEvent(const Event &event);
    void onCommandEnded(const QString &complaint);
    void end(ExitCode code);

    const Request &m_request;
    Output &m_output;
    bool m_once;
    bool m_hasCommand;
    bool m_hasAll = false; // no further event is to be written
    std::optional<ExitCode> m_code; // set when the session has ended
    CommandQueue m_commands;
    Watcher m_watcher;
    QEventLoop m_loop;
};

Session::Session(const Request &request, Output &output)
    : m_request(request)
    , m_output(output)
    , m_once(request.has(QStringLiteral("once")))
    , m_hasCommand(request.has(QStringLiteral("exec")))
    , m_commands(request.options.value(QStringLiteral("exec")), request.isJson())
{
    QObject::connect(&m_watcher, &Watcher::happened, &m_loop,
                     [this](const Event &event) { onEvent(event); });
    QObject::connect(&m_watcher, &Watcher::distrusted, &m_loop, [this](uint user) {
        m_output.note(DaemonFailure::foreignOwner(user).message);
    });
    QObject::connect(&m_watcher, &Watcher::disconnected, &m_loop, [this] {
        end(m_output.fail(DaemonFailure::noBus(QStringLiteral("the connection was lost"))));
    });
    QObject::connect(&m_commands, &CommandQueue::ended, &m_loop,
                     [this](const QString &complaint) { onCommandEnded(complaint); });
}

ExitCode Session::run()
{
    const bool waits = m_request.has(QStringLiteral("wait"));
    if (const auto failure = m_watcher.start(m_request.timeout, waits))
        return m_output.fail(*failure);
    if (const auto failure = checkNames(m_request.arguments, m_request.timeout))
        return m_output.fail(*failure);
    m_output.note(QStringLiteral("watching %1").arg(Names::Service));
    // The events that arrived during the start may already have ended the session.
    if (!m_code)
        m_loop.exec();
    return *m_code;
}

void Session::end(ExitCode code)
{
    m_code = m_code.value_or(code);
    m_loop.quit();
}

void Session::onEvent(const Event &event)
{
    const bool isChange = event.kind != Event::Kind::Service;
    const QStringList &names = m_request.arguments;
    if (m_hasAll || (isChange && !names.isEmpty() && !matchesAny(names, event.key)))
        return;
    m_output.write(ExitCode::Done, toJson(event), toText(event, m_output));
    const bool runsCommand = isChange && m_hasCommand;
    m_hasAll = !m_output.isOpen() || (m_once && isChange);
    if (runsCommand)
        m_commands.add(event);
    else if (m_hasAll)
        end(ExitCode::Done);
}

void Session::onCommandEnded(const QString &complaint)
{
    if (!complaint.isEmpty())
        m_output.note(complaint);
    if (m_hasAll)
        end(ExitCode::Done);
}

} // namespace

ExitCode Verbs::watch(const Request &request, Output &output)
{
    return Session(request, output).run();
}
