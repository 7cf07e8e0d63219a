// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "policystate.h"

#include "effects.h"
#include "knownpolicies.h"
#include "names.h"
#include "text.h"

#include <QDir>
#include <QJsonArray>
#include <QLibraryInfo>

namespace {

QVector<Daemon::Switch> governing(const QVector<Daemon::Switch> &switches, int type)
{
    QVector<Daemon::Switch> result;
    for (const Daemon::Switch &candidate : switches) {
        if (candidate.types.contains(type))
            result.append(candidate);
    }
    return result;
}

/// Whether a lock plugin is installed where the daemon loads them from.
bool hasLockPlugins()
{
    const QDir directory(QLibraryInfo::location(QLibraryInfo::LibrariesPath)
                         + Names::SourceRestrictionDirectory);
    return !directory.entryList({QStringLiteral("*.so")}, QDir::Files).isEmpty();
}

/// Why the stored value is not the effective one, if no switch and no lock is the reason.
QString fileReason(const PolicyState &policy)
{
    if (policy.file == StoredValues::State::Missing)
        return QStringLiteral("not stored: the file is missing");
    if (policy.file == StoredValues::State::Malformed)
        return QStringLiteral("not stored: the file is malformed");
    return QStringLiteral("%1 in the file, which was edited since the daemon read it")
        .arg(policy.stored ? onOff(policy.stored) : QStringLiteral("not"));
}

} // namespace

Reason PolicyState::reason() const
{
    if (!value)
        return Reason::NoValue;
    if (!*value && !forcingSwitch().isNull())
        return Reason::Switch;
    if (value == stored)
        return Reason::Stored;
    const bool mayBeLocked = !*value && canBeLocked;
    if (file == StoredValues::State::Unreadable)
        return mayBeLocked ? Reason::Unknown : Reason::Stored;
    return mayBeLocked && stored ? Reason::Lock : Reason::File;
}

QString PolicyState::forcingSwitch() const
{
    for (const Daemon::Switch &candidate : switches) {
        if (!candidate.value)
            return candidate.key;
    }
    return {};
}

bool PolicyState::isEnforced() const
{
    return !enforcementEffects(type, false).isEmpty();
}

QString PolicyState::shortReason() const
{
    switch (reason()) {
    case Reason::Stored:
        return {};
    case Reason::Switch:
        return (stored.value_or(true)
                    ? QStringLiteral("switch %1 is off")
                    : QStringLiteral("switch %1 is off; it is stored off as well"))
            .arg(quoted(forcingSwitch()));
    case Reason::Lock:
        return QStringLiteral("locked, or the file was edited");
    case Reason::File:
        return fileReason(*this);
    case Reason::NoValue:
        return QStringLiteral("no value: locked, or not to be saved, when the daemon started");
    case Reason::Unknown:
        return QStringLiteral("stored off, or locked");
    }
    Q_UNREACHABLE();
}

QJsonObject PolicyState::toJson() const
{
    QJsonArray governors;
    for (const Daemon::Switch &governor : switches)
        governors.append(QJsonObject{{QStringLiteral("key"), governor.key},
                                     {QStringLiteral("value"), governor.value}});
    return {{QStringLiteral("key"), key},
            {QStringLiteral("type"), type},
            {QStringLiteral("value"), valueToJson(value)},
            {QStringLiteral("stored"), valueToJson(stored)},
            {QStringLiteral("reason"), reasonName(reason())},
            {QStringLiteral("enforced"), isEnforced()},
            {QStringLiteral("switches"), governors}};
}

QString reasonName(Reason reason)
{
    switch (reason) {
    case Reason::Stored:
        return QStringLiteral("stored");
    case Reason::Switch:
        return QStringLiteral("switch");
    case Reason::Lock:
        return QStringLiteral("lock");
    case Reason::File:
        return QStringLiteral("file");
    case Reason::NoValue:
        return QStringLiteral("none");
    case Reason::Unknown:
        return QStringLiteral("unknown");
    }
    Q_UNREACHABLE();
}

Result<Snapshot> takeSnapshot(Daemon &daemon, const QStringList &keys)
{
    const Result<Daemon::Reading> reading = daemon.read(keys);
    if (!reading)
        return reading.failure();
    const Result<QVector<Daemon::Switch>> switches = daemon.readSwitches(reading->switchKeys);
    if (!switches)
        return switches.failure();

    Snapshot result{readStoredValues(Names::PolicyFile), {}, *switches};
    const bool canBeLocked = hasLockPlugins();
    for (int i = 0; i < keys.size(); ++i) {
        PolicyState policy{keys[i], KnownPolicies::type(keys[i]), reading->values[i], {}, {}};
        if (const auto stored = result.file.values.constFind(policy.key);
            stored != result.file.values.constEnd())
            policy.stored = *stored;
        policy.switches = governing(*switches, policy.type);
        policy.file = result.file.state;
        policy.canBeLocked = canBeLocked;
        result.policies.append(policy);
    }
    return result;
}

QJsonValue valueToJson(std::optional<bool> value)
{
    return value ? QJsonValue(*value) : QJsonValue(QJsonValue::Null);
}
