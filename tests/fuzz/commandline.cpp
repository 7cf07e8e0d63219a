// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause

// Arbitrary command lines of the client.
//
// An input is a command line with an argument on each line.
#include "commandline.h"

#include "knownpolicies.h"
#include "place.h"
#include "program.h"
#include "tests/fuzz/check.h"
#include "text.h"

#include <QCoreApplication>
#include <QTextCodec>

#include <algorithm>
#include <fcntl.h>
#include <unistd.h>

namespace {

/// Verbs that make no call, so that they run to their end quickly.
const QStringList Quick{QStringLiteral("complete"), QStringLiteral("can")};

/// The verb of a line that names none.
const QString Silent = QStringLiteral("summary");

const QStringList On{QStringLiteral("on"), QStringLiteral("true"), QStringLiteral("yes"),
                     QStringLiteral("1")};
const QStringList Off{QStringLiteral("off"), QStringLiteral("false"), QStringLiteral("no"),
                      QStringLiteral("0")};

bool isDocumented(ExitCode code)
{
    return code >= ExitCode::Done && code <= ExitCode::NotInForce;
}

void checkArgument(const Argument &argument, const QString &text)
{
    switch (argument.kind) {
    case Argument::Kind::Policy:
        require(KnownPolicies::keys().contains(text), "an unknown policy was taken");
        break;
    case Argument::Kind::Value: {
        const auto value = parseValue(text);
        const QString word = text.toLower();
        require(value.has_value() && (*value ? On : Off).contains(word), "a bad value was taken");
        break;
    }
    case Argument::Kind::Policies:
        require(!KnownPolicies::matching(text).isEmpty(), "a pattern without a policy was taken");
        break;
    case Argument::Kind::Name:
    case Argument::Kind::Names:
    case Argument::Kind::Switch:
    case Argument::Kind::Holds:
    case Argument::Kind::File:
    case Argument::Kind::Words:
        break;
    }
}

/// Checks that the names in an accepted line exist.
void checkRequest(const Request &request, const QStringList &line)
{
    const QStringList words = request.verb->name.split(QLatin1Char(' '));
    const QStringList written = writtenOut(line);
    int place = 0;
    for (const QString &word : words) {
        place = written.indexOf(word, place);
        require(place++ >= 0 || request.verb->name == Silent, "a verb that nobody has written");
    }
    const QVector<Argument> &known = request.verb->arguments;
    const bool isOpen = !known.isEmpty() && known.last().isOpen();
    const bool mayLack = !known.isEmpty() && known.last().isOptional();
    require(isOpen || request.arguments.size() == known.size()
                || (mayLack && request.arguments.size() == known.size() - 1),
            "a wrong number of arguments was taken");
    for (int i = 0; i < request.arguments.size(); ++i)
        checkArgument(known.at(std::min(i, known.size() - 1)), request.arguments.at(i));
    require(request.timeout.count() >= 1 && request.timeout.count() <= 86'400'000,
            "a time-out was taken that is none");
}

void check(const QStringList &line)
{
    const Result<Request> request = parseCommandLine(line);
    asksForJson(line);
    if (!request) {
        require(request.failure().code == ExitCode::Usage, "a bad line is more than that");
        require(!request.failure().message.contains(QLatin1Char('\n')), "a message of two lines");
        require(runProgram(line) == ExitCode::Usage, "a bad line was carried out");
        return;
    }
    if (request->has(QStringLiteral("help")) || request->has(QStringLiteral("version"))) {
        require(runProgram(line) == ExitCode::Done, "there is no help");
        return;
    }
    checkRequest(*request, line);
    const QString named = namedVerb(line);
    require(named == request->verb->name || (named.isNull() && request->verb->name == Silent),
            "two verbs in one line");
    if (Quick.contains(request->verb->name))
        require(isDocumented(runProgram(line)), "an exit code that no page tells");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    static QCoreApplication application(*argc, *argv);
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    qInstallMessageHandler(ignoreMessage);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size)
{
    const QByteArray input(reinterpret_cast<const char *>(data), int(size));
    check(input.isEmpty() ? QStringList() : QString::fromUtf8(input).split(QLatin1Char('\n')));
    return 0;
}
