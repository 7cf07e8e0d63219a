// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/program/commandline.h"
#include "simulator/program/facts.h"
#include "simulator/program/neighbours.h"
#include "tests/unit/manualpage.h"
#include "tests/unit/verbdocs.h"

#include <QProcess>
#include <QRegularExpression>
#include <QtTest>

using namespace Simulator;

namespace {

QString manualPage()
{
    return contentOf(QStringLiteral(GOVD_SIM_MANUAL));
}

/// What the manual page says below the verb, and above the next.
QString entryOf(const QString &verb)
{
    const QRegularExpression start(QStringLiteral("^\\.It Cm %1( |$)").arg(verb),
                                   QRegularExpression::MultilineOption);
    const QRegularExpressionMatch match = start.match(manualPage());
    if (!match.hasMatch())
        return {};
    return manualPage()
        .mid(match.capturedStart())
        .section(QStringLiteral("\n.It Cm "), 0, 0)
        .section(QStringLiteral("\n.Sh "), 0, 0);
}

/// The first words of the entries that begin with @p macro.
QStringList documented(const QString &macro)
{
    QStringList words;
    const QRegularExpression entry(QStringLiteral("^\\.It %1([\\w-]+)").arg(macro),
                                   QRegularExpression::MultilineOption);
    auto matches = entry.globalMatch(manualPage());
    while (matches.hasNext())
        words.append(matches.next().captured(1));
    words.sort();
    return words;
}

QStringList verbNames()
{
    QStringList names;
    for (const Verb &verb : verbs())
        names.append(verb.name);
    names.sort();
    return names;
}

/// An option as the manual page writes it: one dash is understood.
QString spelled(const QString &name)
{
    return name.size() > 1 ? QLatin1Char('-') + name : name;
}

} // namespace

/// Verbs, options and words of the simulator against its manual page and help.
class TestSimulatorDocs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void manualPageIsWellFormed();
    void manualPageHasEveryVerb();
    void manualPageHasEveryOption();
    void manualPageHasNoOtherOption();
    void manualPageHasEveryWord();
    void manualPageHasEveryExitCode();
    void helpHasEverything_data();
    void helpHasEverything();
    void neighboursAreSorted();
};

/// Which other pages are installed is no matter of this page.
void TestSimulatorDocs::manualPageIsWellFormed()
{
    QProcess mandoc;
    mandoc.start(QStringLiteral("mandoc"),
                 {QStringLiteral("-Tlint"), QStringLiteral(GOVD_SIM_MANUAL)});
    QVERIFY(mandoc.waitForFinished());
    QStringList complaints;
    const QString output = QString::fromUtf8(mandoc.readAllStandardOutput())
        + QString::fromUtf8(mandoc.readAllStandardError());
    for (const QString &line : output.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        if (line.contains(QStringLiteral("govd-sim.1:"))
            && !line.contains(QStringLiteral("referenced manual not found")))
            complaints.append(line);
    }
    QVERIFY2(complaints.isEmpty(), qPrintable(complaints.join(QLatin1Char('\n'))));
}

void TestSimulatorDocs::manualPageHasEveryVerb()
{
    QCOMPARE(documented(QStringLiteral("Cm ")), verbNames());
    for (const Verb &verb : verbs()) {
        const QString words = entryOf(verb.name).section(QLatin1Char('\n'), 0, 0);
        for (const Argument &argument : verb.arguments) {
            for (const QString &word : argument.name.split(QLatin1Char('|')))
                QVERIFY2(words.contains(word), qPrintable(verb.name + QLatin1Char(' ') + word));
        }
    }
}

void TestSimulatorDocs::manualPageHasEveryOption()
{
    const QString common = manualPage()
                               .section(QStringLiteral(".Ss Common options"), 1)
                               .section(QStringLiteral("\n.Ss "), 0, 0);
    for (const QCommandLineOption &option : commonOptions()) {
        for (const QString &name : option.names())
            QVERIFY2(common.contains(QLatin1Char(' ') + spelled(name)), qPrintable(name));
    }
    for (const Verb &verb : verbs()) {
        for (const QCommandLineOption &option : verb.options)
            QVERIFY2(entryOf(verb.name).contains(QStringLiteral(".It Fl ")
                                                 + spelled(option.names().last())),
                     qPrintable(verb.name));
    }
}

void TestSimulatorDocs::manualPageHasNoOtherOption()
{
    QStringList names;
    for (const QCommandLineOption &option : commonOptions())
        names.append(spelled(option.names().first()));
    for (const Verb &verb : verbs()) {
        for (const QCommandLineOption &option : verb.options)
            names.append(spelled(option.names().first()));
    }
    names.sort();
    QCOMPARE(documented(QStringLiteral("Fl ")), names);
}

void TestSimulatorDocs::manualPageHasEveryWord()
{
    const QString expect = entryOf(QStringLiteral("expect"));
    for (const FactRow &row : factRows()) {
        QString line = QStringLiteral("\n.It ") + row.word;
        line += row.name.isEmpty() ? QString() : QStringLiteral(" Ar ") + row.name;
        line += row.values.isEmpty()
            ? QStringLiteral(" Ar NUMBER")
            : QStringLiteral(" Li ") + row.values.join(QStringLiteral(" | "));
        QVERIFY2(expect.contains(line + QLatin1Char('\n')), qPrintable(line));
    }
    for (const QString &mode : findFactRow(QStringLiteral("usb-mode"))->names)
        QVERIFY2(expect.contains(QStringLiteral(".Dq ") + mode), qPrintable(mode));
    for (const QString &application : findFactRow(QStringLiteral("running"))->names)
        QVERIFY2(entryOf(QStringLiteral("launch")).contains(QStringLiteral(".Dq ") + application),
                 qPrintable(application));
}

void TestSimulatorDocs::manualPageHasEveryExitCode()
{
    QCOMPARE(documentedExitCodes(manualPage()),
             exitCodes({ExitCode::Done, ExitCode::No, ExitCode::Usage, ExitCode::Refused,
                        ExitCode::NoDaemon, ExitCode::NoAnswer, ExitCode::NoOutput}));
}

void TestSimulatorDocs::helpHasEverything_data()
{
    addVerbRows(verbs());
}

void TestSimulatorDocs::helpHasEverything()
{
    QFETCH(int, index);
    const Verb &verb = verbs()[index];
    QCOMPARE(missingInHelp(verb, helpText(nullptr), helpText(&verb), commonOptions()),
             QStringList());
}

void TestSimulatorDocs::neighboursAreSorted()
{
    QStringList sorted = neighbourWords();
    sorted.sort();
    QCOMPARE(neighbourWords(), sorted);
}

QTEST_GUILESS_MAIN(TestSimulatorDocs)
#include "tst_simulatordocs.moc"
