// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "commandline/options.h"
#include "commandline/text.h"
#include "govctl/verb.h"

namespace {

using Kind = Argument::Kind;

QCommandLineOption keysOption()
{
    return flag({QStringLiteral("keys")}, Text::tr("Only the keys, one on each line."));
}

QCommandLineOption quietOption()
{
    return flag({QStringLiteral("q"), QStringLiteral("quiet")},
                Text::tr("Print nothing; exit with 0 for on, with 1 for off or no value."));
}

QVector<Verb> policyVerbs()
{
    return {
        {QStringLiteral("list"),
         Text::tr("Print all policies, how they read, and why where that is not plain."),
         {},
         {flag({QStringLiteral("off")}, Text::tr("Only the policies that do not read on.")),
          keysOption()},
         Verbs::list},
        {QStringLiteral("get"),
         Text::tr("Print how a policy reads: on, off, or none."),
         {{Kind::Policy}},
         {quietOption()},
         Verbs::get},
        {QStringLiteral("set"),
         Text::tr("Change a policy, and print what that changed."),
         {{Kind::Policy}, {Kind::Value}},
         {},
         Verbs::set},
        {QStringLiteral("explain"),
         Text::tr("Print why a policy reads as it does, and what enforcing it does."),
         {{Kind::Policy}},
         {},
         Verbs::explain},
    };
}

QVector<Verb> switchVerbs()
{
    return {
        {QStringLiteral("switch list"),
         Text::tr("Print all access switches and the policies that each governs."),
         {},
         {keysOption()},
         Verbs::switchList},
        {QStringLiteral("switch get"),
         Text::tr("Print whether an access switch is on or off."),
         {{Kind::Switch}},
         {quietOption()},
         Verbs::switchGet},
        {QStringLiteral("switch set"),
         Text::tr("Change an access switch, and print what that changed."),
         {{Kind::Switch}, {Kind::Value}},
         {},
         Verbs::switchSet},
    };
}

QVector<Verb> systemVerbs()
{
    return {
        {QStringLiteral("watch"),
         Text::tr("Print each change of a policy or switch as the daemon announces it."),
         {},
         {flag({QStringLiteral("once")}, Text::tr("End after the first change.")),
          {QStringLiteral("exec"),
           Text::tr("Run a shell command for each change, with GOVCTL_KIND, GOVCTL_KEY and "
                    "GOVCTL_VALUE in its environment."),
           QStringLiteral("COMMAND")}},
         Verbs::watch},
        {QStringLiteral("status"),
         Text::tr("Check the daemon, and that policies read as they are stored."),
         {},
         {},
         Verbs::status},
        {QStringLiteral("can"),
         Text::tr("Tell whether this process may change anything, and why."),
         {},
         {},
         Verbs::can},
        {QStringLiteral("dump"),
         Text::tr("Print all that can be found out as one JSON document, for a bug report."),
         {},
         {},
         Verbs::dump},
        {QStringLiteral("complete"),
         Text::tr("Print what can follow on a command line; for the shells' completion."),
         {{Kind::Words}},
         {},
         Verbs::complete},
    };
}

} // namespace

const QVector<Verb> &verbs()
{
    static const QVector<Verb> all = policyVerbs() + switchVerbs() + systemVerbs();
    return all;
}

const QList<QCommandLineOption> &commonOptions()
{
    static const QList<QCommandLineOption> all =
        sharedOptions(Text::tr("How long to wait for all answers together (default: 5)."));
    return all;
}
