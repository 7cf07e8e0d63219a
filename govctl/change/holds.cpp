// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "holds.h"

#include "holdtimer.h"
#include "text.h"

#include <QDir>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QSaveFile>

#include <algorithm>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const QLatin1String Directory("/var/lib/govctl/holds");
const QLatin1String Until("until");
const QLatin1String Changes("changes");

/// Keeps other processes from changing holds meanwhile.
class Lock
{
    Q_DISABLE_COPY(Lock)

public:
    // Only root can open it, so no other user can keep root waiting.
    Lock()
        : m_file(open("/var/lib/govctl/lock", O_RDWR | O_CREAT | O_CLOEXEC, 0600))
    {
        flock(m_file, LOCK_EX);
    }
    ~Lock() { close(m_file); }

private:
    int m_file;
};

QString pathOf(const QString &id)
{
    return QStringLiteral("%1/%2.json").arg(Directory, id);
}

Failure badFile(const QFileDevice &file, const QString &what)
{
    return {ExitCode::NoDaemon,
            QStringLiteral("bad-file"),
            QStringLiteral("%1 %2").arg(printable(file.fileName()), what),
            {}};
}

Result<Hold> readHold(const QString &id)
{
    QFile file(pathOf(id));
    if (!file.open(QIODevice::ReadOnly))
        return badFile(file, QStringLiteral("cannot be read: ") + file.errorString());
    const QJsonObject object = QJsonDocument::fromJson(file.readAll()).object();
    Hold hold{id, QDateTime::fromString(object.value(Until).toString(), Qt::ISODate), {}};
    const QJsonArray changes = object.value(Changes).toArray();
    for (const QJsonValue &change : changes) {
        if (const auto step = Step::fromJson(change.toObject()))
            hold.steps.append(*step);
    }
    if (hold.until.isValid() && !changes.isEmpty() && hold.steps.size() == changes.size())
        return hold;
    return badFile(file,
                   QStringLiteral("is damaged, so its changes are not taken back; set their values "
                                  "yourself, then remove the file"));
}

Outcome save(const Hold &hold)
{
    QSaveFile file(pathOf(hold.id));
    if (file.open(QIODevice::WriteOnly)) {
        file.write(QJsonDocument(hold.toJson()).toJson());
        // commit() alone does not see that the disk is full.
        if (file.flush() && file.commit())
            return std::nullopt;
    }
    return badFile(file, QStringLiteral("cannot be written: ") + file.errorString());
}

Outcome remove(const Hold &hold)
{
    QFile file(pathOf(hold.id));
    if (file.remove())
        return std::nullopt;
    return badFile(file, QStringLiteral("cannot be removed: ") + file.errorString());
}

/// The failure for a switch whose plugin may come back.
Failure notThere(const Step &step)
{
    return {ExitCode::Refused,
            QStringLiteral("unknown-switch"),
            QStringLiteral("%1 is not there now, or has no value").arg(step.name()),
            {}};
}

Outcome setTimer()
{
    QVector<QDateTime> ends;
    const QVector<Hold> holds = Holds::all().holds;
    for (const Hold &hold : holds)
        ends.append(hold.until);
    return HoldTimer::set(ends);
}

/// An unused number for a new hold.
QString freeId()
{
    int id = 1;
    while (QFile::exists(pathOf(QString::number(id))))
        ++id;
    return QString::number(id);
}

/// @p step, with the value before the hold that has its policy or switch, if one has it.
Step fromBeforeHolds(Step step, const QVector<Hold> &holds)
{
    for (const Hold &hold : holds) {
        for (const Step &held : hold.steps) {
            if (held.isOfSame(step) && held.value == step.before) {
                step.before = held.before;
                return step;
            }
        }
    }
    return step;
}

} // namespace

QJsonObject Hold::toJson() const
{
    return {{QStringLiteral("id"), id},
            {Until, until.toUTC().toString(Qt::ISODate)},
            {Changes, ::toJson(steps)}};
}

Holds::Listing Holds::all()
{
    Listing result;
    const QStringList files =
        QDir(Directory).entryList({QStringLiteral("*.json")}, QDir::Files, QDir::Name);
    for (const QString &file : files) {
        const QString id = QFileInfo(file).completeBaseName();
        if (const auto hold = readHold(id))
            result.holds.append(*hold);
        else if (QFile::exists(pathOf(id))) // otherwise it has ended meanwhile
            result.failure = hold.failure();
    }
    std::stable_sort(result.holds.begin(), result.holds.end(),
                     [](const Hold &a, const Hold &b) { return a.until < b.until; });
    return result;
}

Outcome Holds::checkRight()
{
    if (geteuid() == 0)
        return std::nullopt;
    return Failure{ExitCode::NotAllowed,
                   QStringLiteral("not-allowed"),
                   QStringLiteral("only root can change something for a while, or end that"),
                   {}};
}

Result<std::optional<Hold>> Holds::begin(const QVector<Step> &steps, qint64 seconds)
{
    if (const Outcome failure = checkRight())
        return *failure;
    umask(022); // every user may read holds
    QDir().mkpath(Directory);
    const Lock lock;
    const QVector<Hold> others = all().holds;
    Hold hold{freeId(),
              QDateTime::fromSecsSinceEpoch(QDateTime::currentSecsSinceEpoch() + seconds, Qt::UTC),
              {}};
    for (const Step &step : steps) {
        if (const Step whole = fromBeforeHolds(step, others); whole.before != whole.value)
            hold.steps.append(whole);
    }
    if (hold.steps.isEmpty())
        return std::optional<Hold>();
    // The file is written before the change: a change without a hold would never be taken back.
    if (const Outcome failure = save(hold))
        return *failure;
    if (const Outcome failure = setTimer()) {
        (void)remove(hold);
        return *failure;
    }
    return std::optional<Hold>(hold);
}

Outcome Holds::edit(const std::function<void(Hold &)> &shorten)
{
    const Lock lock;
    Outcome result;
    bool isChanged = false;
    QVector<Hold> holds = all().holds;
    for (Hold &hold : holds) {
        const int length = hold.steps.size();
        shorten(hold);
        if (hold.steps.size() == length)
            continue;
        isChanged = true;
        if (const Outcome failure = hold.steps.isEmpty() ? remove(hold) : save(hold))
            result = failure;
    }
    if (isChanged && !result)
        result = setTimer();
    return result;
}

Outcome Holds::renewTimer()
{
    const Lock lock;
    return setTimer();
}

Holds::Release Holds::takeBack(Daemon &daemon, const Snapshot &snapshot, const Hold &hold)
{
    Release result;
    for (int i = hold.steps.size() - 1; i >= 0; --i) {
        const Step &step = hold.steps[i];
        if (isUncertain(result.failure)) {
            result.failed.append(step);
            continue;
        }
        const std::optional<bool> now = valueNow(snapshot, step);
        if (now && now != step.value) {
            result.left.append(step);
            continue;
        }
        const Outcome failure = now ? writeStep(daemon, step, *step.before) : notThere(step);
        if (!failure) {
            result.takenBack.append(step);
            continue;
        }
        result.failure = failure;
        result.failed.append(step);
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
