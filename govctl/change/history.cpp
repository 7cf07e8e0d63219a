// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "history.h"

#include "journal.h"
#include "knownpolicies.h"
#include "text.h"
#include "usage.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QJsonDocument>
#include <QProcess>

#include <cerrno>
#include <pwd.h>
#include <unistd.h>

namespace {

Failure noJournal(const QString &message)
{
    return {ExitCode::NoDaemon, QStringLiteral("no-journal"), message, {}};
}

/// Checks that the system's journal files are readable: otherwise journalctl shows no records and
/// no error.
Outcome checkJournal()
{
    QFile idFile(QStringLiteral("/etc/machine-id"));
    (void)idFile.open(QIODevice::ReadOnly);
    const QByteArray id = idFile.readAll().trimmed();
    bool isThere = false;
    for (const char *directory : {"/var/log/journal/", "/run/log/journal/"}) {
        if (access((directory + id + "/system.journal").constData(), R_OK) == 0)
            isThere = true;
        else if (errno == EACCES)
            return Failure{ExitCode::NotAllowed,
                           QStringLiteral("not-allowed"),
                           QStringLiteral("this user may not read the system's journal; root and "
                                          "members of the group systemd-journal may"),
                           {}};
    }
    if (isThere)
        return std::nullopt;
    return noJournal(QStringLiteral("this system keeps no journal, so nothing is on record"));
}

QStringList argumentsFor(const QString &result, const QString &since)
{
    QStringList arguments{QStringLiteral("--quiet"), QStringLiteral("--no-pager"),
                          QStringLiteral("--system"), QStringLiteral("--all"),
                          QStringLiteral("--output=json"),
                          QStringLiteral("MESSAGE_ID=") + QLatin1String(WriteMessageId),
                          // Any process can send such a record, but the journal sets these itself.
                          QStringLiteral("_UID=0"), QStringLiteral("_SYSTEMD_UNIT=govd.service")};
    if (!result.isNull())
        arguments.append(QStringLiteral("GOVD_RESULT=") + result);
    if (!since.isNull())
        arguments.append(QStringLiteral("--since=") + since);
    return arguments;
}

/// Runs journalctl; its standard output. Fails with Usage when journalctl itself fails.
Result<QByteArray> journalctl(const QStringList &arguments, QDeadlineTimer deadline)
{
    QProcess process;
    process.start(QStringLiteral("journalctl"), arguments);
    if (!process.waitForStarted())
        return noJournal(
            QStringLiteral("journalctl cannot be started: %1").arg(process.errorString()));
    if (!process.waitForFinished(static_cast<int>(deadline.remainingTime()))) {
        process.kill();
        return Failure{ExitCode::NoAnswer,
                       QStringLiteral("no-answer"),
                       QStringLiteral("the journal was not read in time; a longer --timeout helps"),
                       {}};
    }
    if (process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0)
        return process.readAllStandardOutput();
    return usageFailure(printable(QString::fromUtf8(process.readAllStandardError()).simplified()));
}

/// A field as text. One that cannot be printed comes as a list of bytes.
QString fieldOf(const QJsonObject &entry, const char *name)
{
    const QJsonValue value = entry.value(QLatin1String(name));
    if (!value.isArray())
        return value.toString();
    QByteArray bytes;
    const QJsonArray numbers = value.toArray();
    for (const QJsonValue &number : numbers)
        bytes.append(static_cast<char>(number.toInt()));
    return QString::fromUtf8(bytes);
}

RecordedWrite writeOf(const QJsonObject &entry)
{
    RecordedWrite write;
    const qint64 microseconds = fieldOf(entry, "__REALTIME_TIMESTAMP").toLongLong();
    write.time = QDateTime::fromMSecsSinceEpoch(microseconds / 1000, Qt::UTC);
    if (fieldOf(entry, "GOVD_KIND") == QLatin1String("switch"))
        write.kind = Step::Kind::Switch;
    write.key = fieldOf(entry, "GOVD_KEY");
    write.before = fieldOf(entry, "GOVD_OLD_VALUE");
    write.value = fieldOf(entry, "GOVD_NEW_VALUE");
    write.result = fieldOf(entry, "GOVD_RESULT");
    write.caller = fieldOf(entry, "GOVD_CALLER");
    write.pid = fieldOf(entry, "GOVD_CALLER_PID").toInt();
    bool isKnown = false;
    if (const uint uid = fieldOf(entry, "GOVD_CALLER_UID").toUInt(&isKnown); isKnown)
        write.uid = uid;
    write.program = fieldOf(entry, "GOVD_CALLER_PROGRAM");
    write.command = fieldOf(entry, "GOVD_CALLER_COMMAND");
    write.leftOut = fieldOf(entry, "GOVD_LEFT_OUT").toInt();
    return write;
}

QString valueText(const QString &text)
{
    const std::optional<bool> value = RecordedWrite::parsed(text);
    return value || text.isEmpty() ? onOff(value) : cited(text);
}

} // namespace

bool RecordedWrite::isAccepted() const
{
    return result == QLatin1String("accepted");
}

bool RecordedWrite::isChange() const
{
    return isAccepted() && before != value;
}

std::optional<bool> RecordedWrite::parsed(const QString &text)
{
    if (text == QLatin1String("true"))
        return true;
    return text == QLatin1String("false") ? std::optional<bool>(false) : std::nullopt;
}

QString RecordedWrite::when() const
{
    return time.toLocalTime().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"));
}

QString RecordedWrite::user() const
{
    if (!uid)
        return QStringLiteral("unknown");
    // NOLINTNEXTLINE(concurrency-mt-unsafe): the bus library's thread looks up no users
    const passwd *entry = getpwuid(*uid);
    return entry ? printable(QString::fromUtf8(entry->pw_name)) : QString::number(*uid);
}

QString RecordedWrite::programText() const
{
    if (!program.isEmpty())
        return printable(program);
    return command.isEmpty() ? QStringLiteral("unknown") : quoted(command);
}

QString RecordedWrite::name() const
{
    const bool isPlain = kind == Step::Kind::Switch || KnownPolicies::type(key) != 0;
    return isPlain ? Step{kind, key, {}, false}.name() : cited(key);
}

QString RecordedWrite::changeText() const
{
    if (!isAccepted())
        return QStringLiteral("-> ") + valueText(value);
    return QStringLiteral("%1 -> %2").arg(valueText(before), valueText(value));
}

QJsonObject RecordedWrite::toJson() const
{
    return {{QStringLiteral("time"), time.toString(Qt::ISODateWithMs)},
            {QStringLiteral("kind"),
             kind == Step::Kind::Switch ? QStringLiteral("switch") : QStringLiteral("policy")},
            {QStringLiteral("key"), key},
            {QStringLiteral("before"), isAccepted() ? QJsonValue(before) : QJsonValue()},
            {QStringLiteral("value"), value},
            {QStringLiteral("result"), result},
            {QStringLiteral("caller"), caller},
            {QStringLiteral("pid"), pid ? QJsonValue(pid) : QJsonValue()},
            {QStringLiteral("uid"), uid ? QJsonValue(static_cast<qint64>(*uid)) : QJsonValue()},
            {QStringLiteral("user"), uid ? QJsonValue(user()) : QJsonValue()},
            {QStringLiteral("program"), program.isEmpty() ? QJsonValue() : QJsonValue(program)},
            {QStringLiteral("command"), command.isEmpty() ? QJsonValue() : QJsonValue(command)},
            {QStringLiteral("leftOut"), leftOut}};
}

Result<QVector<RecordedWrite>> History::read(const QString &result, const QString &since,
                                             std::chrono::milliseconds timeout)
{
    if (const Outcome failure = checkJournal())
        return *failure;
    const QDeadlineTimer deadline(timeout);
    // Records that the journal has not stored yet count too. Only root may ask for that, so a
    // failure is none here.
    if (const auto synced = journalctl({QStringLiteral("--sync")}, deadline);
        !synced && synced.failure().code == ExitCode::NoAnswer)
        return synced.failure();
    const Result<QByteArray> text = journalctl(argumentsFor(result, since), deadline);
    if (!text && text.failure().code == ExitCode::Usage) {
        const QString words = text.failure().message;
        return since.isNull()
            ? noJournal(QStringLiteral("journalctl fails: %1").arg(words))
            : usageFailure(
                QStringLiteral("--since takes a time as journalctl does, not %1 (journalctl: %2)")
                    .arg(cited(since), words));
    }
    if (!text)
        return text.failure();
    QVector<RecordedWrite> writes;
    const QList<QByteArray> lines = text->split('\n');
    for (const QByteArray &line : lines) {
        if (!line.isEmpty())
            writes.append(writeOf(QJsonDocument::fromJson(line).object()));
    }
    return writes;
}
