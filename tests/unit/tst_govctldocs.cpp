// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "govctl/commandline.h"
#include "govctl/completion.h"
#include "tests/unit/manualpage.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QtTest>

namespace {

QString manualPage()
{
    return contentOf(QStringLiteral("/usr/share/man/man1/govctl.1"));
}

/// The entries of the manual page's lists that begin with @p macro, as the names in them. An entry
/// like "Fl h , -help" holds two.
QSet<QString> documented(const QString &macro)
{
    QSet<QString> result;
    const QString start = QStringLiteral(".It %1 ").arg(macro);
    for (const QString &line : manualPage().split(QLatin1Char('\n'))) {
        if (!line.startsWith(start))
            continue;
        static const QRegularExpression argument(QStringLiteral(" (Ar|Op|Oo) .*"));
        const QString text = line.mid(start.size()).remove(argument);
        for (const QString &name : text.split(QStringLiteral(" , ")))
            result.insert(name);
    }
    return result;
}

/// Options as the manual page writes them: one dash is understood.
QSet<QString> spelledOptions()
{
    QSet<QString> result;
    QVector<Option> options = commonOptions();
    for (const Verb &verb : verbs())
        options += verb.options;
    for (const Option &option : options) {
        for (const QString &name : option.names)
            result.insert((name.size() > 1 ? QStringLiteral("-") : QString()) + name);
    }
    return result;
}

QStringList completed(const QStringList &words)
{
    QStringList result;
    const auto switches = [] {
        return QStringList{QStringLiteral("radio")};
    };
    for (const Candidate &candidate : completeCommandLine(words, switches))
        result.append(candidate.word);
    return result;
}

/// A row of test data for each verb: its "index".
void addVerbRows()
{
    QTest::addColumn<int>("index");
    for (int i = 0; i < verbs().size(); ++i)
        QTest::newRow(qPrintable(verbs()[i].name)) << i;
}

/// What the help does not say of a verb, although the table does.
QStringList missingInHelp(const Verb &verb)
{
    const QString help = helpText(&verb);
    QStringList words;
    for (const Option &option : verb.options + commonOptions()) {
        for (const QString &name : option.names)
            words.append(Option::spelled(name));
    }
    for (const Argument &argument : verb.arguments)
        words.append(argument.syntax());
    QStringList missing;
    for (const QString &word : words) {
        if (!help.contains(word))
            missing.append(word);
    }
    if (!helpText(nullptr).contains(verb.summary))
        missing.append(verb.summary);
    return missing;
}

QStringList wordsOf(const Verb &verb)
{
    return verb.name.split(QLatin1Char(' '));
}

} // namespace

/// Verbs and options of the program against everything that is written about them.
class TestGovctlDocs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void manualPageHasEveryVerb();
    void manualPageHasEveryOption();
    void manualPageHasEveryExitCode();
    void helpHasEverything_data();
    void helpHasEverything();
    void completionHasEverything_data();
    void completionHasEverything();
    void completionKnowsWhereItIs_data();
    void completionKnowsWhereItIs();
    void everyShellAsksTheProgram_data();
    void everyShellAsksTheProgram();
    void schemaHasEveryVerb();
};

void TestGovctlDocs::manualPageHasEveryVerb()
{
    QSet<QString> names;
    for (const Verb &verb : verbs())
        names.insert(verb.name);
    QCOMPARE(documented(QStringLiteral("Cm")), names);
}

void TestGovctlDocs::manualPageHasEveryOption()
{
    QCOMPARE(documented(QStringLiteral("Fl")), spelledOptions());
    const QString page = manualPage();
    for (const Verb &verb : verbs()) {
        // An option is described below its verb, and above the next.
        const QString entry = page.section(QStringLiteral(".It Cm ") + verb.name, 1)
                                  .section(QStringLiteral("\n.It Cm "), 0, 0);
        for (const Option &option : verb.options)
            QVERIFY2(entry.contains(QLatin1Char('-') + option.names.last()),
                     qPrintable(verb.name + QLatin1Char(' ') + option.names.last()));
    }
}

void TestGovctlDocs::manualPageHasEveryExitCode()
{
    const QStringList known = exitCodes(
        {ExitCode::Done, ExitCode::No, ExitCode::Usage, ExitCode::Refused, ExitCode::NotAllowed,
         ExitCode::NoDaemon, ExitCode::NoAnswer, ExitCode::NoOutput, ExitCode::NotInForce});
    QCOMPARE(documentedExitCodes(manualPage()), known);
    QCOMPARE(known.join(QString()), QStringLiteral("012345678"));
}

void TestGovctlDocs::helpHasEverything_data()
{
    addVerbRows();
}

void TestGovctlDocs::helpHasEverything()
{
    QFETCH(int, index);
    const Verb &verb = verbs()[index];
    QCOMPARE(missingInHelp(verb), QStringList());
}

void TestGovctlDocs::completionHasEverything_data()
{
    addVerbRows();
}

void TestGovctlDocs::completionHasEverything()
{
    QFETCH(int, index);
    const Verb &verb = verbs()[index];
    QStringList words;
    for (const QString &word : wordsOf(verb)) {
        QVERIFY(completed(words + QStringList{QString()}).contains(word));
        words.append(word);
    }
    const QStringList dashed = completed(words + QStringList{QStringLiteral("-")});
    for (const Option &option : verb.options + commonOptions())
        QVERIFY(dashed.contains(QStringLiteral("--") + option.names.last()));
    for (const Argument &argument : verb.arguments) {
        // There are no holds here, and any words may follow.
        const bool isText =
            argument.kind == Argument::Kind::Words || argument.kind == Argument::Kind::Holds;
        QCOMPARE(completed(words + QStringList{QString()}).isEmpty(), isText);
        words.append(QStringLiteral("x"));
    }
    const bool isOpen = !verb.arguments.isEmpty() && verb.arguments.last().isOpen();
    if (!isOpen)
        QCOMPARE(completed(words + QStringList{QString()}), QStringList());
}

void TestGovctlDocs::completionKnowsWhereItIs_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("candidates");
    const auto row = [](const char *line, const char *candidates) {
        QTest::newRow(line) << QString::fromLatin1(line) << QString::fromLatin1(candidates);
    };
    row("sw", "switch");
    row("switch ", "list get set");
    row("switch set ", "radio");
    row("switch set radio ", "on off");
    row("switch set radio o", "on off");
    row("switch set radio on ", "");
    row("nonsense ", "");
    row("list CameraE", "CameraEnabled");
    row("list VpnEnabled CameraE", "CameraEnabled");
    row("watch ra", "radio");
    row("diff /etc/pass", "/etc/passwd /etc/passwd-");
    row("get CameraE", "CameraEnabled");
    row("get camerae", "");
    row("--timeout ", "");
    row("--timeout 3 ge", "get");
    row("--timeout=3 ge", "get");
    row("get --json Vpn", "VpnEnabled");
    row("watch --exec ", "");
    row("watch --exec date --on", "--once");
    row("get --q", "--quiet");
    row("get -- Vpn", "VpnEnabled");
    row("get -- --", "");
    row("sw se radio ", "on off");
    row("watch --ex ", "");
    row("--off", "");
}

void TestGovctlDocs::completionKnowsWhereItIs()
{
    QFETCH(QString, line);
    QFETCH(QString, candidates);
    QCOMPARE(completed(line.split(QLatin1Char(' '))).join(QLatin1Char(' ')), candidates);
}

void TestGovctlDocs::everyShellAsksTheProgram_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("bash") << "bash-completion/completions/govctl";
    QTest::newRow("zsh") << "zsh/vendor-completions/_govctl";
    QTest::newRow("fish") << "fish/vendor_completions.d/govctl.fish";
}

/// The scripts hold no verb and no option of their own, but the words of this one call.
void TestGovctlDocs::everyShellAsksTheProgram()
{
    QFETCH(QString, path);
    QString script = contentOf(QStringLiteral("/usr/share/") + path);
    const QString call = QStringLiteral("govctl complete --timeout 0.5 -- ");
    QVERIFY(script.contains(call));
    script.remove(call);
    for (const QString &option : spelledOptions()) {
        if (option.size() > 1)
            QVERIFY2(!script.contains(QStringLiteral(" -") + option + QLatin1Char(' ')),
                     qPrintable(option));
    }
    const Result<Request> request = parseCommandLine(call.split(QLatin1Char(' ')).mid(1));
    QVERIFY(request);
    QCOMPARE(request->timeout.count(), 500);
}

void TestGovctlDocs::schemaHasEveryVerb()
{
    const QJsonObject schema =
        QJsonDocument::fromJson(
            contentOf(QStringLiteral("/usr/share/govctl/output.schema.json")).toUtf8())
            .object();
    QJsonArray names{QJsonValue::Null};
    for (const Verb &verb : verbs())
        names.append(verb.name);
    const QJsonObject properties = schema.value(QStringLiteral("properties")).toObject();
    QCOMPARE(
        properties.value(QStringLiteral("verb")).toObject().value(QStringLiteral("enum")).toArray(),
        names);
    QCOMPARE(schema.value(QStringLiteral("oneOf")).toArray().size(), names.size());
}

QTEST_GUILESS_MAIN(TestGovctlDocs)
#include "tst_govctldocs.moc"
