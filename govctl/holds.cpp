// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "govctl/holds.h"

#include "govctl/text.h"

#include <QCoreApplication>
#include <QDir>
#include <QJsonDocument>
#include <QProcess>
#include <QRegularExpression>
#include <QSaveFile>

#include <algorithm>
#include <unistd.h>

namespace {

const QLatin1String Directory("/var/lib/govctl/holds");
const QLatin1String Until("until");
const QLatin1String Changes("changes");

QString pathOf(const QString &id)
{
    return QStringLiteral("%1/%2.json").arg(Directory, id);
}

QString unitOf(const Hold &hold)
{
    return QStringLiteral("govctl-release-") + hold.id;
}

Failure noHold(ExitCode code, const QString &message)
{
    return {code,
            code == ExitCode::NotAllowed ? QStringLiteral("not-allowed")
                                         : QStringLiteral("no-timer"),
            message,
            {}};
}

/// Fails with what the program prints as message.
Outcome run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    const bool hasEnded = process.waitForStarted() && process.waitForFinished();
    if (hasEnded && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0)
        return std::nullopt;
    const QString words = QString::fromUtf8(process.readAll()).simplified();
    return noHold(ExitCode::NoDaemon,
                  QStringLiteral("%1 sets no timer: %2")
                      .arg(program, printable(words.isEmpty() ? process.errorString() : words)));
}

std::optional<Hold> readHold(const QString &id)
{
    QFile file(pathOf(id));
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QJsonObject object = QJsonDocument::fromJson(file.readAll()).object();
    Hold hold{id, QDateTime::fromString(object.value(Until).toString(), Qt::ISODate), {}};
    const QJsonArray changes = object.value(Changes).toArray();
    for (const QJsonValue &change : changes) {
        if (const auto step = Step::fromJson(change.toObject()))
            hold.steps.append(*step);
    }
    return hold;
}

Outcome save(const Hold &hold)
{
    QSaveFile file(pathOf(hold.id));
    if (QDir().mkpath(Directory) && file.open(QIODevice::WriteOnly)) {
        file.write(QJsonDocument(hold.toJson()).toJson());
        if (file.commit())
            return std::nullopt;
    }
    return noHold(
        ExitCode::NoDaemon,
        QStringLiteral("%1 cannot be written: %2").arg(file.fileName(), file.errorString()));
}

/// An unused number for a new hold.
QString freeId()
{
    int id = 1;
    while (QFile::exists(pathOf(QString::number(id))))
        ++id;
    return QString::number(id);
}

} // namespace

QJsonObject Hold::toJson() const
{
    return {{QStringLiteral("id"), id},
            {Until, until.toUTC().toString(Qt::ISODate)},
            {Changes, ::toJson(steps)}};
}

QVector<Hold> Holds::all()
{
    QVector<Hold> result;
    const QStringList files =
        QDir(Directory).entryList({QStringLiteral("*.json")}, QDir::Files, QDir::Name);
    for (const QString &file : files) {
        if (const auto hold = readHold(file.section(QLatin1Char('.'), 0, 0)))
            result.append(*hold);
    }
    std::stable_sort(result.begin(), result.end(),
                     [](const Hold &a, const Hold &b) { return a.until < b.until; });
    return result;
}

Result<Hold> Holds::begin(const QVector<Step> &steps, qint64 seconds)
{
    if (geteuid() != 0)
        return noHold(ExitCode::NotAllowed,
                      QStringLiteral("only root can change something for a while"));
    const Hold hold{freeId(), QDateTime::currentDateTimeUtc().addSecs(seconds), steps};
    // The file is written before the change: a change without a hold would never be taken back.
    if (const Outcome failure = save(hold))
        return *failure;
    if (const Outcome failure = setTimer(hold)) {
        forget(hold);
        return *failure;
    }
    return hold;
}

Outcome Holds::setTimer(const Hold &hold)
{
    const QString when = hold.until.toUTC().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"));
    return run(QStringLiteral("systemd-run"),
               {QStringLiteral("--quiet"), QStringLiteral("--unit=") + unitOf(hold),
                QStringLiteral("--on-calendar=%1 UTC").arg(when),
                QStringLiteral("--timer-property=AccuracySec=1s"),
                // The daemon may be absent when the timer runs, or refuse while a lock is active.
                QStringLiteral("--property=After=govd.service"),
                QStringLiteral("--property=StartLimitIntervalSec=0"),
                QStringLiteral("--property=Restart=on-failure"),
                QStringLiteral("--property=RestartSec=30s"),
                QCoreApplication::applicationFilePath(), QStringLiteral("release"), hold.id});
}

void Holds::forget(const Hold &hold)
{
    QFile::remove(pathOf(hold.id));
    // It fails when the timer does not run, which is no failure here.
    (void)run(QStringLiteral("systemctl"),
              {QStringLiteral("stop"), unitOf(hold) + QStringLiteral(".timer")});
}

Application Holds::takeBack(Daemon &daemon, const Snapshot &snapshot, const Hold &hold)
{
    Application result;
    for (int i = hold.steps.size() - 1; i >= 0; --i) {
        const Step &step = hold.steps[i];
        if (!step.before || valueNow(snapshot, step) != step.value) {
            result.done.append(step);
            continue;
        }
        if (const Outcome failure = writeStep(daemon, step, *step.before))
            result.failure = failure;
        else
            result.takenBack.append(step);
    }
    return result;
}

std::optional<qint64> parseDuration(const QString &text)
{
    constexpr qint64 Longest = 10LL * 366 * 86'400;
    static const QRegularExpression whole(QStringLiteral("^(\\d{1,9}[smhdw])+$"));
    static const QRegularExpression part(QStringLiteral("(\\d+)([smhdw])"));
    static const QHash<QString, qint64> units{{QStringLiteral("s"), 1},
                                              {QStringLiteral("m"), 60},
                                              {QStringLiteral("h"), 3600},
                                              {QStringLiteral("d"), 86'400},
                                              {QStringLiteral("w"), 604'800}};
    if (!whole.match(text).hasMatch())
        return std::nullopt;
    qint64 seconds = 0;
    for (auto match = part.globalMatch(text); match.hasNext();) {
        const QRegularExpressionMatch found = match.next();
        seconds += found.captured(1).toLongLong() * units.value(found.captured(2));
    }
    return seconds > 0 && seconds <= Longest ? std::optional<qint64>(seconds) : std::nullopt;
}
