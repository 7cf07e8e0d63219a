// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/networktechnology.h"
#include "simulator/runtimemanager.h"
#include "simulator/systemlogs.h"
#include "support/caller.h"
#include "support/client.h"
#include "support/daemon.h"
#include "support/files.h"
#include "support/neighbour.h"
#include "support/switchplugin.h"
#include "support/waiting.h"
#include "support/watcheddaemon.h"

#include <QDBusVariant>
#include <QtTest>

using namespace Support;

namespace {

const QString Camera = QStringLiteral("CameraEnabled");
const QString FalseEvent =
    QStringLiteral("Policy CameraEnabled changed. Old value false. New value "
                   "true.");
const QString ForgedEvent = QStringLiteral("x\n<14>Jan  1 00:00:00 govd: ") + FalseEvent;
const QString ForgedMessage = QStringLiteral("x\nwarning|default|Failed to enforce policy: forged");

/// The longest text that the daemon's log holds whole, in bytes with quotes and escapes.
constexpr int LongestText = 1024;

/// Texts that break the line, the format or the terminal of whoever prints them carelessly.
QMap<QString, QString> hostileTexts()
{
    return {
        {QStringLiteral("line break"), QStringLiteral("a\nb")},
        {QStringLiteral("carriage return"), QStringLiteral("a\rb")},
        {QStringLiteral("other line ends"), QString::fromUtf8("a\u0085b\u2028c\u2029d\v\f")},
        {QStringLiteral("forged event"), ForgedEvent},
        {QStringLiteral("forged message"), ForgedMessage},
        {QStringLiteral("terminal"), QStringLiteral("a\x1b[2J\x1b]0;title\x07\b\b")},
        {QStringLiteral("C format"), QStringLiteral("%s%s%s%n%1000000d")},
        {QStringLiteral("Qt format"), QStringLiteral("%1 %2 %3 %99 %L1")},
        {QStringLiteral("quotes"), QStringLiteral("\"\\\" \\n '`$(reboot)`")},
        {QStringLiteral("10 kB"), QString(10000, QLatin1Char('k'))},
        {QStringLiteral("10 kB of line breaks"), QString(10000, QLatin1Char('\n'))},
    };
}

void addTexts()
{
    QTest::addColumn<QString>("text");
    const QMap<QString, QString> texts = hostileTexts();
    for (auto row = texts.begin(); row != texts.end(); ++row)
        QTest::newRow(qPrintable(row.key())) << row.value();
}

/// The lines of the daemon's log that are not the whole of one message.
QStringList brokenLines(const QStringList &log)
{
    static const QRegularExpression whole(
        QStringLiteral("^(debug|info|warning|critical)\\|[\\w.]+\\|[^\\x00-\\x1f\\x7f]*$"));
    QStringList broken;
    for (const QString &line : log) {
        if (!whole.match(line).hasMatch()
            || line.startsWith(QLatin1String("warning|default|Failed to enforce")))
            broken.append(line);
    }
    return broken;
}

/// @p text as messages have it: in quotes, on one line, with nothing left out.
QString quoted(const QString &text)
{
    QString result;
    QDebug(&result).nospace() << text;
    return result;
}

/// The texts of the events that the log service has got.
QStringList textsIn(Neighbour<Simulator::SystemLogs> &logs)
{
    QStringList texts;
    for (const auto &event : logs.ask([](auto &service) { return service.events(); }))
        texts.append(event.text);
    return texts;
}

} // namespace

/// Texts that come from callers and neighbours forge no line in any log: each event is one message
/// to the system log, and each message of the daemon is one line.
///
/// The text of an event is fixed and holds what the caller sent, line breaks included. It travels
/// to the system log as one datagram; escaping it is left to whoever writes lines from that, as the
/// usual system logs do.
class TestLogLines : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Files::reset(); }
    void eventIsOneDatagram_data() { addTexts(); }
    void eventIsOneDatagram();
    void refusedKeyIsOneLine_data() { addTexts(); }
    void refusedKeyIsOneLine();
    void switchMessagesAreOneLineEach_data() { addTexts(); }
    void switchMessagesAreOneLineEach();
    void errorOfANeighbourIsOneLine_data() { addTexts(); }
    void errorOfANeighbourIsOneLine();
    void textTooLongForTheSystemLog();
    void longTextIsCut_data();
    void longTextIsCut();
    void linesOfReadersAreLimited();
};

void TestLogLines::eventIsOneDatagram()
{
    QFETCH(QString, text);
    Neighbour<Simulator::SystemLogs> logs;
    logs.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QCOMPARE(daemon.set(Camera, text), QVariant(true));

    QString expected = QStringLiteral("Policy CameraEnabled changed. Old value true. New value ");
    expected += text + QLatin1Char('.');
    QCOMPARE(daemon.recorded(), QStringList(expected));
    QTRY_COMPARE(textsIn(logs), QStringList(expected));
    QCOMPARE(brokenLines(daemon.logged()), QStringList());
    QCOMPARE(Files::read(QStringLiteral("/etc/policy/policy.conf")).count("CameraEnabled="), 1);
}

void TestLogLines::refusedKeyIsOneLine()
{
    QFETCH(QString, text);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    const bool accepted = daemon.set(text + QLatin1String("=true"), true).toBool();

    QVERIFY(!accepted); // no key file can hold an equals sign in a key
    const QStringList log = daemon.logged();
    QCOMPARE(log.size(), 2);
    QVERIFY(log.at(0).startsWith(QLatin1String("warning|default|Error saving key file")));
    QVERIFY(log.at(1).startsWith(QLatin1String("warning|default|Failed to save configuration")));
    QCOMPARE(brokenLines(log), QStringList());
    QCOMPARE(daemon.recorded(), QStringList());
}

void TestLogLines::switchMessagesAreOneLineEach()
{
    QFETCH(QString, text);
    SwitchPlugin plugin;
    plugin.setSwitch(text, {1}, 7); // reading it fails, with this code
    plugin.setEntry(text, QStringLiteral("result"), 3); // and so does writing
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    daemon.forget();

    const Reply reply = Caller().setSwitch(text, false);

    QCOMPARE(reply.value(), QVariant(false));
    const QStringList log = daemon.logged();
    // The plugin is not asked about a key that no file can hold.
    const bool isAsked = std::none_of(text.begin(), text.end(), [](QChar character) {
        return character.category() == QChar::Other_Control;
    });
    QCOMPARE(log.filter(QStringLiteral("AccessSwitch plugin failed to set value")).size(),
             isAsked ? 1 : 0);
    QCOMPARE(log.filter(QStringLiteral("Return code:")).size(), isAsked ? 2 : 0);
    QCOMPARE(log.filter(QStringLiteral("Error saving key file")).size(), isAsked ? 0 : 1);
    QCOMPARE(brokenLines(log), QStringList());
}

/// Two of the daemon's messages give the text of an error; that of the log service is not looked
/// at.
void TestLogLines::errorOfANeighbourIsOneLine()
{
    QFETCH(QString, text);
    const Simulator::Fault fault =
        Simulator::Fault::error(QStringLiteral("org.example.Refused"), text);
    Neighbour<Simulator::NetworkTechnology> network;
    Neighbour<Simulator::RuntimeManager> manager;
    Neighbour<Simulator::SystemLogs> logs;
    network.fail(fault);
    manager.fail(fault);
    logs.fail(fault);
    network.appear();
    manager.appear();
    logs.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QVERIFY(daemon.change(QStringLiteral("InternetSharingEnabled"), false));
    QVERIFY(daemon.change(QStringLiteral("MessagesEnabled"), false));

    const QStringList log = daemon.logged();
    QCOMPARE(brokenLines(log), QStringList());
    QCOMPARE(log.size(), 2);
    QVERIFY(log.at(0).startsWith(
        QLatin1String("warning|default|Failed to disable internet sharing: ")));
    QVERIFY(log.at(1).startsWith(QLatin1String("info|default|Terminating ")));
    const QString end =
        quoted(text).toUtf8().size() > LongestText ? QStringLiteral(" more bytes]") : quoted(text);
    for (const QString &line : log)
        QVERIFY2(line.endsWith(end) || line.endsWith(end + QLatin1Char(')')), qPrintable(line));
    QCOMPARE(daemon.recorded().size(), 2);
}

/// A datagram has a largest size, beyond which the system log gets nothing; the log service does.
void TestLogLines::textTooLongForTheSystemLog()
{
    Neighbour<Simulator::SystemLogs> logs;
    logs.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    const QString text(1024 * 1024, QLatin1Char('t'));

    QCOMPARE(daemon.set(Camera, text), QVariant(true));

    QTRY_COMPARE(textsIn(logs).filter(text).size(), 1);
    QCOMPARE(daemon.recorded(), QStringList());
    QCOMPARE(daemon.set(Camera, false), QVariant(true));
    QCOMPARE(daemon.recorded().size(), 1);
}

void TestLogLines::longTextIsCut_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("letters") << QStringLiteral("k");
    QTest::newRow("quotes") << QStringLiteral("\"");
    QTest::newRow("escapes") << QStringLiteral("\\");
    QTest::newRow("characters of several bytes") << QStringLiteral("\u20ac");
    QTest::newRow("control characters") << QStringLiteral("\u0001");
}

void TestLogLines::longTextIsCut()
{
    QFETCH(const QString, text);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QCOMPARE(daemon.set(text.repeated(100000) + QLatin1Char('='), true), QVariant(false));

    const QStringList log = daemon.logged();
    QCOMPARE(log.size(), 2);
    const QByteArray line = log.at(0).toUtf8();
    QVERIFY2(line.size() > LongestText && line.size() < LongestText + 200, line.constData());
    QVERIFY2(line.contains(" more bytes]"), line.constData());
    QCOMPARE(QString::fromUtf8(line).count(QChar::ReplacementCharacter), 0);
    QCOMPARE(brokenLines(log), QStringList());
}

/// Reading needs no right: what a failing plugin makes of it must not fill the log.
void TestLogLines::linesOfReadersAreLimited()
{
    constexpr int Reads = 50; // each of which is two lines
    constexpr int Burst = 20;
    SwitchPlugin plugin;
    plugin.setSwitch(QStringLiteral("lens"), {1}, 7);
    Daemon daemon;
    QVERIFY(daemon.start());
    const int mark = daemon.mark();
    Client client;
    for (int i = 0; i < Reads; ++i)
        client.switchValue(QStringLiteral("lens"));

    const QString leftOut =
        QStringLiteral("warning|default|Left out %1 log lines that callers caused")
            .arg(2 * Reads - Burst);
    QVERIFY(waitFor([&] { return daemon.log(mark).contains(leftOut); }));
    QCOMPARE(daemon.log(mark).size(), Burst + 1);
    client.switchValue(QStringLiteral("lens"));
    QCOMPARE(daemon.log(mark).size(), Burst + 3);
}

QTEST_GUILESS_MAIN(TestLogLines)
#include "tst_loglines.moc"
