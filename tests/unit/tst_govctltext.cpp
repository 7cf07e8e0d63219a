// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "policystate.h"
#include "terminal.h"
#include "text.h"

#include <QtTest>

Q_DECLARE_METATYPE(PolicyState)

namespace {

PolicyState state(std::optional<bool> value, std::optional<bool> stored,
                  const QVector<Daemon::Switch> &switches = {},
                  StoredValues::State file = StoredValues::State::Read, bool canBeLocked = true)
{
    return {QStringLiteral("CameraEnabled"), 1, value, stored, switches, file, canBeLocked};
}

const Daemon::Switch On{QStringLiteral("a"), true, {1}};
const Daemon::Switch Off{QStringLiteral("b"), false, {1}};

} // namespace

/// The texts and reasons of the client that need no daemon.
class TestGovctlText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void reasons_data();
    void reasons();
    void longLinesAreFolded_data();
    void longLinesAreFolded();
    void patterns_data();
    void patterns();
    void namesCannotSteerTheTerminal();
};

void TestGovctlText::reasons_data()
{
    QTest::addColumn<PolicyState>("policy");
    QTest::addColumn<QString>("reason");
    QTest::addColumn<bool>("differs");
    using File = StoredValues::State;
    const auto none = std::nullopt;
    QTest::newRow("on as stored") << state(true, true) << "stored" << false;
    QTest::newRow("off as stored") << state(false, false) << "stored" << false;
    QTest::newRow("on, file not readable")
        << state(true, none, {}, File::Unreadable) << "stored" << false;
    QTest::newRow("off, file not readable")
        << state(false, none, {}, File::Unreadable) << "unknown" << false;
    QTest::newRow("off, file not readable, no locks")
        << state(false, none, {}, File::Unreadable, false) << "stored" << false;
    QTest::newRow("off, stored on") << state(false, true) << "lock" << true;
    QTest::newRow("off, stored on, no locks")
        << state(false, true, {}, File::Read, false) << "file" << true;
    QTest::newRow("on, not stored") << state(true, none) << "file" << true;
    QTest::newRow("off, not stored") << state(false, none) << "file" << true;
    QTest::newRow("on, file missing") << state(true, none, {}, File::Missing) << "file" << false;
    QTest::newRow("off, stored on, switch on") << state(false, true, {On}) << "lock" << true;
    QTest::newRow("off, stored on, switch off")
        << state(false, true, {On, Off}) << "switch" << true;
    QTest::newRow("off, stored off, switch off") << state(false, false, {Off}) << "switch" << false;
    QTest::newRow("on, switch off later") << state(true, true, {Off}) << "stored" << false;
    QTest::newRow("on, stored off") << state(true, false) << "file" << true;
    QTest::newRow("no value") << state(none, none) << "none" << false;
    QTest::newRow("no value, but stored") << state(none, true) << "none" << true;
}

void TestGovctlText::reasons()
{
    QFETCH(PolicyState, policy);
    QFETCH(QString, reason);
    QFETCH(bool, differs);
    QCOMPARE(reasonName(policy.reason()), reason);
    QCOMPARE(policy.differs(), differs);
    QCOMPARE(policy.shortReason().isEmpty(), reason == QLatin1String("stored"));
}

void TestGovctlText::longLinesAreFolded_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("columns");
    QTest::addColumn<QString>("result");
    QTest::newRow("short") << "one two\n" << 20 << "one two\n";
    QTest::newRow("no terminal") << "one two\n" << 0 << "one two\n";
    QTest::newRow("plain") << "one two three" << 9 << "one two\nthree";
    QTest::newRow("below its column")
        << "  a   one two three" << 14 << "  a   one two\n      three";
    QTest::newRow("no room for columns") << "name        on  why" << 10 << "name  on \nwhy";
    QTest::newRow("long word") << "a loooooooong b" << 5 << "a\nloooooooong\nb";
    QTest::newRow("colours take no place")
        << "\033[1mone\033[0m two" << 7 << "\033[1mone\033[0m two";
}

void TestGovctlText::longLinesAreFolded()
{
    QFETCH(QString, text);
    QFETCH(int, columns);
    QFETCH(QString, result);
    QCOMPARE(Terminal::folded(text, columns), result);
}

void TestGovctlText::patterns_data()
{
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("matches");
    const auto row = [](const char *what, const char *pattern, const char *name, bool matches) {
        QTest::newRow(what) << pattern << name << matches;
    };
    row("name", "ab", "ab", true);
    row("part of it", "a", "ab", false);
    row("any letters", "a*", "abc", true);
    row("any letters, a slash", "a*", "a/b", true);
    row("any letter, a slash", "a?b", "a/b", true);
    row("slash", "a/*", "a/b", true);
    row("other than a slash", "a/*", "a.b", false);
    row("set", "x[12]", "x1", true);
    row("set, as a name", "x[12]", "x[12]", true);
}

void TestGovctlText::patterns()
{
    QFETCH(QString, pattern);
    QFETCH(QString, name);
    QFETCH(bool, matches);
    QCOMPARE(matchesAny({pattern}, name), matches);
}

void TestGovctlText::namesCannotSteerTheTerminal()
{
    QCOMPARE(printable(QStringLiteral("a b%1\"\\")), QStringLiteral("a b%1\"\\"));
    QCOMPARE(printable(QStringLiteral("\033[2J\n\t\u202e")),
             QStringLiteral("\\u001b[2J\\u000a\\u0009\\u202e"));
    QCOMPARE(quoted(QStringLiteral("x\n")), QStringLiteral("\"x\\u000a\""));
    QCOMPARE(cited(QString(1000, QLatin1Char('x'))).size(), 65);
}

QTEST_GUILESS_MAIN(TestGovctlText)
#include "tst_govctltext.moc"
