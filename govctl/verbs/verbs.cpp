// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "verb.h"

namespace {

using Kind = Argument::Kind;

Verb verb(const char *name, const char *summary, const QVector<Argument> &arguments,
          const QVector<Option> &options, ExitCode (*run)(const Request &, Output &))
{
    return {QString::fromUtf8(name), QString::fromUtf8(summary), arguments, options, run};
}

/// A verb that writes: it has a longer time limit, because the daemon may call many services.
Verb writer(Verb verb)
{
    verb.writes = true;
    return verb;
}

Option flag(const char *name, const char *description)
{
    return {{QString::fromUtf8(name)}, QString::fromUtf8(description), {}};
}

Option option(const char *name, const char *valueName, const char *description)
{
    return {
        {QString::fromUtf8(name)}, QString::fromUtf8(description), QString::fromUtf8(valueName)};
}

Option withLetter(const char *letter, Option option)
{
    option.names.prepend(QString::fromUtf8(letter));
    return option;
}

Option keysOption()
{
    return flag("keys", "Only the keys, one on each line.");
}

Option quietOption()
{
    return withLetter(
        "q", flag("quiet", "Print nothing; exit with 0 for on, with 1 for off or no value."));
}

Option forOption()
{
    return option("for", "TIME", "Take the change back after this time, like 90m, 3h or 1d12h.");
}

Option dryRunOption()
{
    return flag("dry-run", "Change nothing; print what would change.");
}

QVector<Verb> policyVerbs()
{
    return {
        verb("list", "Print policies, how they read, and why where that is not plain.",
             {{Kind::Policies}},
             {flag("off", "Only the policies that do not read on."), keysOption(),
              option("fields", "NAMES",
                     "Only these columns, with tabs between: key, type, value, stored, reason, "
                     "enforced, switches.")},
             Verbs::list),
        verb("get", "Print how a policy reads: on, off, or none.", {{Kind::Policy}},
             {quietOption()}, Verbs::get),
        writer(verb("set", "Change a policy, and print what that changed.",
                    {{Kind::Policy}, {Kind::Value}}, {forOption(), dryRunOption()}, Verbs::set)),
        verb("explain", "Print why a policy reads as it does, and what enforcing it does.",
             {{Kind::Policy}}, {}, Verbs::explain),
        writer(verb("verify", "Look at the device, and tell which policies are in force on it.",
                    {{Kind::Policies}},
                    {flag("repair",
                          "Where one is not, have the daemon enforce all of them once "
                          "more, and look again.")},
                    Verbs::verify)),
    };
}

QVector<Verb> fileVerbs()
{
    return {
        verb("export", "Print all policies and switches as a file for diff and apply.", {}, {},
             Verbs::exportState),
        verb("diff", "Print what differs from a file of policies and switches.", {{Kind::File}}, {},
             Verbs::diff),
        writer(verb("apply", "Make policies and switches what a file says.", {{Kind::File}},
                    {forOption(), dryRunOption(),
                     flag("exit-code", "Exit with 1 instead of 0 when something was changed.")},
                    Verbs::apply)),
        verb("holds", "Print what was changed for a while, and until when.", {}, {}, Verbs::holds),
        writer(verb("release", "End changes that were made for a while.", {{Kind::Holds}},
                    {flag("due", "Only those whose time is over; for the others, set the timer.")},
                    Verbs::release)),
    };
}

QVector<Verb> switchVerbs()
{
    return {
        verb("switch list", "Print all access switches and the policies that each governs.", {},
             {keysOption()}, Verbs::switchList),
        verb("switch get", "Print whether an access switch is on or off.", {{Kind::Switch}},
             {quietOption()}, Verbs::switchGet),
        writer(verb("switch set", "Change an access switch, and print what that changed.",
                    {{Kind::Switch}, {Kind::Value}}, {dryRunOption()}, Verbs::switchSet)),
    };
}

QVector<Verb> historyVerbs()
{
    return {
        verb("history", "Print who changed or tried to change what, as the journal has it.",
             {{Kind::Names}},
             {option("since", "TIME", "Only from this time on, written as for journalctl."),
              flag("denied", "Only what was denied to a caller without rights.")},
             Verbs::history),
        writer(verb("undo", "Set back the last change that was accepted.", {{Kind::Name}},
                    {dryRunOption()}, Verbs::undo)),
    };
}

QVector<Verb> systemVerbs()
{
    return {
        verb("summary", "Print how this device stands; the same as no verb at all.", {}, {},
             Verbs::summary),
        verb("watch", "Print each change of a policy or switch as the daemon announces it.",
             {{Kind::Names}},
             {flag("once", "End after the first change."),
              flag("wait", "Wait for a daemon that is not there yet."),
              option("exec", "COMMAND",
                     "Run a shell command for each change, with GOVCTL_KIND, GOVCTL_KEY and "
                     "GOVCTL_VALUE in its environment.")},
             Verbs::watch),
        verb("status", "Check the daemon, and that policies read as they are stored.", {}, {},
             Verbs::status),
        verb("can", "Tell whether this process may change anything, and why.", {}, {}, Verbs::can),
        verb("dump", "Print all that can be found out as one JSON document, for a bug report.", {},
             {}, Verbs::dump),
        verb("complete", "Print what can follow on a command line; for the shells' completion.",
             {{Kind::Words}}, {}, Verbs::complete),
    };
}

} // namespace

const QVector<Verb> &verbs()
{
    static const QVector<Verb> all =
        policyVerbs() + switchVerbs() + fileVerbs() + historyVerbs() + systemVerbs();
    return all;
}

const QVector<Option> &commonOptions()
{
    static const QVector<Option> all{
        flag("json", "Write JSON to standard output, failures included, and nothing else."),
        option("timeout", "SECONDS",
               "How long to wait for all answers together (default: 5; 300 for verbs that change "
               "something)."),
        option("color", "WHEN",
               "Colours: auto (only on a terminal, the default), always or never."),
        withLetter("h", flag("help", "Print help and exit.")),
        withLetter("v", flag("version", "Print the version and exit.")),
    };
    return all;
}
