// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "commandline/options.h"
#include "commandline/text.h"
#include "simulator/program/applications.h"
#include "simulator/program/device.h"
#include "simulator/program/verb.h"

namespace Simulator {
namespace {

Argument serviceArgument()
{
    return {QStringLiteral("SERVICE"), Text::tr("A service; \"govd-sim services\" names them."),
            neighbourWords()};
}

Argument words(const QStringList &known, const QString &description)
{
    return {known.join(QLatin1Char('|')), description, known};
}

QStringList factWords()
{
    QStringList result;
    for (const FactRow &row : factRows())
        result.append(row.word);
    return result;
}

QVector<Verb> seeingVerbs()
{
    return {
        {QStringLiteral("device"),
         Text::tr("Run the device on the system bus, and print each call that it gets."),
         {},
         {},
         false,
         nullptr,
         Verbs::device},
        {QStringLiteral("status"),
         Text::tr("Draw the present state of the device."),
         {},
         {flag({QStringLiteral("watch")}, Text::tr("Draw it again each time it changes."))},
         true,
         nullptr,
         Verbs::status},
        {QStringLiteral("services"),
         Text::tr("List the services of the device, and how each fares."),
         {},
         {},
         true,
         nullptr,
         Verbs::services},
    };
}

QVector<Verb> handlingVerbs()
{
    return {
        {QStringLiteral("plug"),
         Text::tr("Plug in a USB stick or a memory card; it is mounted at once."),
         {words(StoragePorts::kinds(), Text::tr("What to plug in."))},
         {{QStringLiteral("label"), Text::tr("What it is called (default: STICK or CARD)."),
           QStringLiteral("LABEL")}},
         true,
         nullptr,
         Verbs::order},
        {QStringLiteral("unplug"),
         Text::tr("Pull out what was plugged in."),
         {{QStringLiteral("LABEL"),
           Text::tr("Which one; may be left out when only one is plugged in."),
           {},
           true}},
         {},
         true,
         nullptr,
         Verbs::order},
        {QStringLiteral("launch"),
         Text::tr("Start an application."),
         {{QStringLiteral("APP"),
           Text::tr("One of %1.").arg(applicationWords().join(QStringLiteral(", "))),
           applicationWords()}},
         {},
         true,
         nullptr,
         Verbs::order},
        {QStringLiteral("certified"),
         Text::tr("Make the system of the device a certified one, or not."),
         {words({QStringLiteral("yes"), QStringLiteral("no")}, Text::tr("Which of them."))},
         {},
         true,
         nullptr,
         Verbs::order},
    };
}

QVector<Verb> faultVerbs()
{
    return {
        {QStringLiteral("stop"),
         Text::tr("Take a service off the bus."),
         {serviceArgument()},
         {},
         true,
         nullptr,
         Verbs::order},
        {QStringLiteral("start"),
         Text::tr("Bring a service back to the bus."),
         {serviceArgument()},
         {},
         true,
         nullptr,
         Verbs::order},
        {QStringLiteral("fail"),
         Text::tr("Let all calls of a service go wrong."),
         {serviceArgument(),
          words(Device::faultWords(),
                Text::tr("How: with an error, with no answer, after a time, "
                         "or with an answer of the wrong type.")),
          {QStringLiteral("SECONDS"), Text::tr("How slow."), {}, true}},
         {},
         true,
         Verbs::checkFail,
         Verbs::order},
        {QStringLiteral("heal"),
         Text::tr("Let calls of a service go right again."),
         {serviceArgument()},
         {},
         true,
         nullptr,
         Verbs::order},
    };
}

QVector<Verb> scriptVerbs()
{
    return {
        {QStringLiteral("expect"),
         Text::tr("Wait until something is so, and fail when it does not become so in time."),
         {{QStringLiteral("WHAT"),
           Text::tr("One of %1.").arg(factWords().join(QStringLiteral(", "))), factWords()},
          {QStringLiteral("NAME"),
           Text::tr("The application, service, USB mode or label that it is about."),
           {},
           true},
          {QStringLiteral("VALUE"), Text::tr("What it has to be."), {}}},
         {},
         true,
         Verbs::checkExpect,
         Verbs::expect},
        {QStringLiteral("run"),
         Text::tr("Run a script of such lines and of lines of govctl, up to the first that fails."),
         {{QStringLiteral("SCRIPT"), Text::tr("The file."), {}}},
         {},
         false,
         nullptr,
         Verbs::run},
    };
}

} // namespace

const QVector<Verb> &verbs()
{
    static const QVector<Verb> all = seeingVerbs() + handlingVerbs() + faultVerbs() + scriptVerbs();
    return all;
}

const QList<QCommandLineOption> &commonOptions()
{
    static const QList<QCommandLineOption> all = sharedOptions(
        Text::tr("How long to wait for answers, and for what is expected (default: 5)."));
    return all;
}

} // namespace Simulator
