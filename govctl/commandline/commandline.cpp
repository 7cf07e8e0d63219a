// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "commandline.h"

#include "checks.h"
#include "linefailure.h"
#include "place.h"
#include "text.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <map>

namespace {

/// The library's help, with verbs of two words in one list.
class Help : public CLI::Formatter
{
public:
    explicit Help(QString form)
        : m_form(std::move(form))
    {
        column_width(28);
        label("REQUIRED", "");
        label("Positionals", "Arguments");
    }

    std::string make_usage(const CLI::App *, std::string) const override
    {
        return QStringLiteral("Usage: %1 %2 [options]\n").arg(programName(), m_form).toStdString();
    }

    /// A verb takes the options of the program, too.
    std::string make_footer(const CLI::App *app) const override
    {
        const CLI::App *root = app;
        while (root->get_parent())
            root = root->get_parent();
        if (root == app)
            return CLI::Formatter::make_footer(app);
        return make_group("Common options", false,
                          root->get_options([root](const CLI::Option *option) {
                              return option != root->get_help_ptr();
                          }));
    }

private:
    QString m_form;
};

std::string optionNames(const Option &option)
{
    QStringList names;
    for (const QString &name : option.names)
        names.append(Option::spelled(name));
    return names.join(QLatin1Char(',')).toStdString();
}

CLI::Option *describedOption(CLI::App &app, const std::string &names, const QString &description)
{
    return app.add_option(names, CLI::callback_t([](const CLI::results_t &) { return true; }),
                          description.toStdString());
}

CLI::Option *addOption(CLI::App &app, const Option &option)
{
    const std::string description = option.description.toStdString();
    if (option.valueName.isEmpty())
        return app.add_flag(optionNames(option), description)->disable_flag_override();
    return describedOption(app, optionNames(option), option.description)
        ->type_name(option.valueName.toStdString())
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
}

CLI::Option *addArgument(CLI::App &app, const Argument &argument)
{
    // As in the usage line, without the brackets and dots that tell how often it may stand there.
    QString name = argument.syntax();
    name.remove(QLatin1Char('[')).remove(QLatin1String("...")).remove(QLatin1Char(']'));
    CLI::Option *option = describedOption(app, name.toStdString(), argument.description());
    option->type_name("");
    if (argument.isOpen())
        return option->expected(1, -1)->allow_extra_args();
    return option->required(!argument.isOptional());
}

QString verbTable()
{
    QString text = QStringLiteral("Verbs:\n");
    for (const Verb &verb : verbs())
        text += QStringLiteral("  %1 %2\n").arg(verb.form().leftJustified(25), verb.summary);
    return text + QStringLiteral("\n\"%1 VERB --help\" and %1(1) say more.").arg(programName());
}

/// The library's parser, filled from the table of verbs.
class Parser
{
public:
    Parser();

    /// Returns the failure of a line that is wrong.
    Outcome parse(const QStringList &arguments);
    Request request() const;
    QString help(const Verb *verb) const { return QString::fromStdString(appOf(verb).help()); }

private:
    struct Part
    {
        CLI::App *app = nullptr;
        QVector<CLI::Option *> arguments;
        QHash<QString, CLI::Option *> options;
    };

    CLI::App *group(const QString &word);
    void add(const Verb &verb);
    const CLI::App &appOf(const Verb *verb) const;
    QStringList words() const;
    Failure failure(const QStringList &arguments, const CLI::ParseError &error) const;

    CLI::App m_app;
    QHash<QString, CLI::Option *> m_common;
    std::map<const Verb *, Part> m_parts;
    bool m_help = false;
};

Parser::Parser()
    : m_app("Reads and changes what this device allows.", programName().toStdString())
{
    m_app.require_subcommand(0, 1);
    m_app.formatter(std::make_shared<Help>(QStringLiteral("VERB")));
    m_app.footer(verbTable().toStdString());
    m_app.set_help_flag("-h,--help", "Print help and exit.");
    for (const Option &option : commonOptions()) {
        if (option.names.last() != QLatin1String("help"))
            m_common.insert(option.names.last(), addOption(m_app, option));
    }
    for (const Verb &verb : verbs())
        add(verb);
}

/// The first of two words that make a verb's name.
CLI::App *Parser::group(const QString &word)
{
    const std::vector<CLI::App *> found = m_app.get_subcommands(
        [name = word.toStdString()](const CLI::App *app) { return app->get_name() == name; });
    if (!found.empty())
        return found.front();
    CLI::App *app = m_app.add_subcommand(word.toStdString());
    return app->fallthrough()->require_subcommand(1)->group("");
}

void Parser::add(const Verb &verb)
{
    const QStringList words = verb.name.split(QLatin1Char(' '));
    CLI::App &parent = words.size() > 1 ? *group(words.first()) : m_app;
    Part &part = m_parts[&verb];
    part.app = parent.add_subcommand(words.last().toStdString(), verb.summary.toStdString());
    part.app->group("")->fallthrough()->formatter(std::make_shared<Help>(verb.form()));
    for (const Argument &argument : verb.arguments)
        part.arguments.append(addArgument(*part.app, argument));
    for (const Option &option : verb.options)
        part.options.insert(option.names.last(), addOption(*part.app, option));
}

const CLI::App &Parser::appOf(const Verb *verb) const
{
    return verb ? *m_parts.at(verb).app : m_app;
}

Outcome Parser::parse(const QStringList &arguments)
{
    // The library takes a "--" behind the first of repeated arguments for the end of the verb, so
    // the options are moved to the front.
    std::vector<std::string> reversed;
    const auto allArguments = inOrder(arguments);
    for (const QString &argument : allArguments)
        reversed.insert(reversed.begin(), argument.toStdString());
    try {
        m_app.parse(std::move(reversed));
    } catch (const CLI::CallForHelp &) {
        m_help = true;
    } catch (const CLI::ParseError &error) {
        return failure(arguments, error);
    }
    return std::nullopt;
}

/// The words that were parsed as the verb's name.
QStringList Parser::words() const
{
    QStringList result;
    for (auto parsed = m_app.get_subcommands(); !parsed.empty();
         parsed = parsed.front()->get_subcommands())
        result.append(QString::fromStdString(parsed.front()->get_name()));
    return result;
}

Request Parser::request() const
{
    Request result;
    result.verb = findVerb(words().join(QLatin1Char(' ')));
    if (m_help)
        result.options.insert(QStringLiteral("help"), {});
    QHash<QString, CLI::Option *> options = m_common;
    if (result.verb) {
        const Part &part = m_parts.at(result.verb);
        for (auto option = part.options.begin(); option != part.options.end(); ++option)
            options.insert(option.key(), option.value());
        for (const CLI::Option *argument : part.arguments) {
            for (const std::string &word : argument->results())
                result.arguments.append(QString::fromStdString(word));
        }
    }
    for (auto option = options.begin(); option != options.end(); ++option) {
        if ((*option)->count() > 0)
            result.options.insert(option.key(),
                                  QString::fromStdString((*option)->results().back()));
    }
    return result;
}

/// Replaces the library's message for @p error by the program's own failure.
Failure Parser::failure(const QStringList &arguments, const CLI::ParseError &error) const
{
    QStringList rest;
    for (const std::string &word : m_app.remaining(true))
        rest.append(QString::fromStdString(word));
    const bool isIncomplete =
        error.get_exit_code() == static_cast<int>(CLI::ExitCodes::RequiredError);
    return lineFailure(arguments, isIncomplete, words(), rest);
}

} // namespace

Result<Request> parseCommandLine(const QStringList &arguments)
{
    const QStringList full = writtenOut(arguments);
    Parser parser;
    if (const Outcome failure = parser.parse(full))
        return *failure;
    Request request = parser.request();
    if (request.has(QStringLiteral("help")) || request.has(QStringLiteral("version")))
        return request;
    if (!request.verb)
        request.verb = findVerb(QStringLiteral("summary"));
    if (const Outcome failure = checkRequest(request))
        return *failure;
    const double seconds = request.has(QStringLiteral("timeout"))
        ? request.options.value(QStringLiteral("timeout")).toDouble()
        : (request.verb->writes ? 300 : 5);
    request.timeout = std::chrono::milliseconds(static_cast<qint64>(seconds * 1000));
    return request;
}

QString namedVerb(const QStringList &arguments)
{
    Place place;
    const auto allWords = writtenOut(arguments);
    for (const QString &word : allWords)
        place.pass(word);
    return place.verb ? place.verb->name : QString();
}

bool asksForJson(const QStringList &arguments)
{
    Place place;
    const auto allWords = writtenOut(arguments);
    for (const QString &word : allWords) {
        if (place.isOption(word) && word == QLatin1String("--json"))
            return true;
        place.pass(word);
    }
    return false;
}

QString helpText(const Verb *verb)
{
    return Parser().help(verb);
}
