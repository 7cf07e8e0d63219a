// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "verb.h"

#include "text.h"

#include <algorithm>

bool Request::value(int index) const
{
    return *parseValue(arguments[index]);
}

bool Argument::isOpen() const
{
    return kind == Kind::Policies || kind == Kind::Names || kind == Kind::Holds
        || kind == Kind::Words;
}

bool Argument::isOptional() const
{
    return isOpen() || kind == Kind::Name;
}

QString Argument::syntax() const
{
    switch (kind) {
    case Kind::Policy:
        return QStringLiteral("KEY");
    case Kind::Name:
        return QStringLiteral("[KEY]");
    case Kind::Policies:
    case Kind::Names:
        return QStringLiteral("[KEY...]");
    case Kind::Switch:
        return QStringLiteral("SWITCH");
    case Kind::Value:
        return QStringLiteral("on|off");
    case Kind::File:
        return QStringLiteral("FILE");
    case Kind::Holds:
        return QStringLiteral("[HOLD...]");
    case Kind::Words:
        return QStringLiteral("[WORD...]");
    }
    Q_UNREACHABLE();
}

QString Argument::description() const
{
    switch (kind) {
    case Kind::Policy:
        return QStringLiteral("A policy; \"govctl list --keys\" names them.");
    case Kind::Policies:
        return QStringLiteral("Only these policies; *, ? and [...] as in the shell.");
    case Kind::Name:
        return QStringLiteral("Only this policy or access switch.");
    case Kind::Names:
        return QStringLiteral("Only these policies and switches; *, ? and [...] as in the shell.");
    case Kind::Switch:
        return QStringLiteral("An access switch; \"govctl switch list --keys\" names them.");
    case Kind::Value:
        return QStringLiteral("The new value; true, false, yes, no, 1 and 0 are taken as well.");
    case Kind::File:
        return QStringLiteral("A key file with the groups policy and switch; - is standard input.");
    case Kind::Holds:
        return QStringLiteral("Only these, as \"govctl holds\" numbers them.");
    case Kind::Words:
        return QStringLiteral("The words of a command line, the last one unfinished.");
    }
    Q_UNREACHABLE();
}

QString Option::spelled(const QString &name)
{
    return (name.size() == 1 ? QStringLiteral("-") : QStringLiteral("--")) + name;
}

QString Verb::form() const
{
    QStringList words{name};
    for (const Argument &argument : arguments)
        words.append(argument.syntax());
    return words.join(QLatin1Char(' '));
}

const Verb *findVerb(const QString &name)
{
    const QVector<Verb> &all = verbs();
    const auto found = std::find_if(all.begin(), all.end(),
                                    [&name](const Verb &verb) { return verb.name == name; });
    return found == all.end() ? nullptr : &*found;
}

QStringList nextWords(const QStringList &words)
{
    QStringList result;
    for (const Verb &verb : verbs()) {
        const QStringList own = verb.name.split(QLatin1Char(' '));
        if (own.size() > words.size() && own.mid(0, words.size()) == words)
            result.append(own[words.size()]);
    }
    result.removeDuplicates();
    return result;
}
