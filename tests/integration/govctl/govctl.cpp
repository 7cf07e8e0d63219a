// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "govctl/govctl.h"

#include "govctl/jsonschema.h"
#include "support/waiting.h"

#include <QJsonDocument>
#include <QtTest>

#include <csignal>

using namespace Support;

// Opened for reading and writing first, because opening one end alone waits for the other.
const QString PipeWithoutReader =
    QStringLiteral("mkfifo /tmp/pipe; exec 4<>/tmp/pipe 3>/tmp/pipe 4<&-; rm /tmp/pipe; ");

namespace {

const QString Program = QStringLiteral("/usr/bin/govctl");
const QString Schema = QStringLiteral("/usr/share/govctl/output.schema.json");

/// The start of a command line that takes @p identity.
QStringList setpriv(const Identity &identity)
{
    QStringList groups;
    for (const gid_t group : identity.groups)
        groups.append(QString::number(group));
    QStringList result{QStringLiteral("--reuid=%1").arg(identity.user),
                       QStringLiteral("--regid=%1").arg(identity.group)};
    result.append(groups.isEmpty() ? QStringLiteral("--clear-groups")
                                   : QStringLiteral("--groups=") + groups.join(QLatin1Char(',')));
    return result << QStringLiteral("--");
}

} // namespace

QStringList Outcome::lines() const
{
    return out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

QJsonObject Outcome::json() const
{
    if (lines().size() != 1 || !err.isEmpty()) {
        qCritical() << "not one document alone:" << out << err;
        QTest::qFail("not one document alone", __FILE__, __LINE__);
        return {};
    }
    const QJsonObject document = validDocument(out.toUtf8());
    if (document.value(QStringLiteral("code")).toInt(-1) != code)
        QTest::qFail("the document has another code than the process", __FILE__, __LINE__);
    return document;
}

QString Outcome::error() const
{
    return json()
        .value(QStringLiteral("error"))
        .toObject()
        .value(QStringLiteral("name"))
        .toString();
}

QJsonObject validDocument(const QByteArray &line)
{
    static const JsonSchema schema(Schema);
    QJsonParseError error;
    const QJsonObject document = QJsonDocument::fromJson(line, &error).object();
    const QStringList errors = error.error == QJsonParseError::NoError
        ? schema.errors(document)
        : QStringList{error.errorString()};
    if (errors.isEmpty())
        return document;
    qCritical() << line << errors;
    QTest::qFail("the output is not as the schema says", __FILE__, __LINE__);
    return {};
}

Govctl::Govctl(const Identity &identity)
    : m_identity(identity)
    , m_environment(QProcessEnvironment::systemEnvironment())
{
    QObject::connect(&m_process, &QProcess::readyReadStandardOutput,
                     [this] { m_out += m_process.readAllStandardOutput(); });
    QObject::connect(&m_process, &QProcess::readyReadStandardError,
                     [this] { m_err += m_process.readAllStandardError(); });
}

Govctl::~Govctl()
{
    m_process.kill();
    m_process.waitForFinished();
}

void Govctl::setEnvironment(const QString &name, const QString &value)
{
    m_environment.insert(name, value);
}

void Govctl::clearEnvironment()
{
    m_environment = {};
    m_environment.insert(QStringLiteral("EMPTY"), QString()); // none at all would mean "inherit"
}

Outcome Govctl::run(const QString &arguments)
{
    return run(arguments.split(QLatin1Char(' '), Qt::SkipEmptyParts));
}

Outcome Govctl::run(const QStringList &arguments)
{
    start(arguments);
    return finish();
}

Outcome Govctl::shell(const QString &script)
{
    startShell(script);
    return finish();
}

void Govctl::start(const QStringList &arguments)
{
    launch(Program, arguments);
}

void Govctl::startShell(const QString &script)
{
    launch(QStringLiteral("/bin/bash"), {QStringLiteral("-c"), script});
}

void Govctl::launch(const QString &program, const QStringList &arguments)
{
    m_out.clear();
    m_err.clear();
    m_process.setProcessEnvironment(m_environment);
    m_process.start(QStringLiteral("/usr/bin/setpriv"),
                    setpriv(m_identity) + QStringList{program} + arguments);
    if (!m_process.waitForStarted())
        QTest::qFail("the client cannot be started", __FILE__, __LINE__);
}

/// Runs the event loop meanwhile, so that the test itself can be the client's partner.
Outcome Govctl::finish()
{
    if (!waitFor([this] { return m_process.state() == QProcess::NotRunning; })) {
        QTest::qFail("the client does not end", __FILE__, __LINE__);
        return {};
    }
    const bool ended = m_process.exitStatus() == QProcess::NormalExit;
    return {ended ? m_process.exitCode() : -1, QString::fromUtf8(m_out), QString::fromUtf8(m_err)};
}

bool Govctl::waitForOut(const QString &text)
{
    return waitFor([&] { return QString::fromUtf8(m_out).contains(text); });
}

bool Govctl::waitForErr(const QString &text)
{
    return waitFor([&] { return QString::fromUtf8(m_err).contains(text); });
}

void Govctl::interrupt()
{
    ::kill(static_cast<pid_t>(m_process.processId()), SIGINT);
}
