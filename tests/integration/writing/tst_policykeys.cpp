// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/facts.h"
#include "support/files.h"
#include "support/texts.h"
#include "support/watcheddaemon.h"

#include <QDBusPendingCall>
#include <QtTest>

using namespace Support;

namespace {

const QString True = QStringLiteral("true");
const QString ReplyFalse = QStringLiteral("reply false");

/// What the daemon logs when it refuses a key; @p shown is the key in quotes and with escapes.
QStringList refusal(const QString &shown)
{
    return {QLatin1String("warning|default|Error saving key file 1 Key file cannot hold the key ")
                + shown,
            QStringLiteral("warning|default|Failed to save configuration to file"
                           " \"/etc/policy/switch.conf\"")};
}

QDBusMessage readCall(const QString &key)
{
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.kvt.PolicyManager"), QStringLiteral("/org/kvt/PolicyManager"),
        QStringLiteral("org.kvt.PolicyManager.Policy"), QStringLiteral("KeyValue"));
    call.setArguments({key});
    return call;
}

/// Writes a key that cannot be kept, looks everywhere for traces of it, and starts again.
void verifyRefused(WatchedDaemon &daemon, const QString &key, const QString &shown)
{
    Files::write(PolicyFile, "[policy]\nCameraEnabled=false\n");
    QVERIFY(daemon.start());
    const FileSnapshot before = Files::snapshot(PolicyFile);

    for (const bool value : {true, false})
        QCOMPARE(daemon.set(key, value), QVariant(false));

    QCOMPARE(daemon.said(), QStringList({ReplyFalse, ReplyFalse}));
    QCOMPARE(daemon.recorded(), QStringList());
    QCOMPARE(daemon.logged(), refusal(shown) + refusal(shown));
    QVERIFY(Files::snapshot(PolicyFile) == before);

    // A reader of a key without a value gets no answer; one of a value would get it.
    daemon.bus().connect().asyncCall(readCall(key));
    QCOMPARE(daemon.said(), QStringList({ReplyFalse, ReplyFalse}));

    QCOMPARE(daemon.process().stop(), 0);
    QVERIFY(daemon.start());
    QCOMPARE(Files::values(PolicyFile).size(), 46); // every policy of the platform, and no more
    QCOMPARE(daemon.policy(Camera), QVariant(false));
    QCOMPARE(daemon.policy(QStringLiteral("BrowserEnabled")), QVariant(true));
}

} // namespace

/// Any text may come as a key, but a file that cannot be read again would cost every policy.
class TestPolicyKeys : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Files::reset(); }
    void keyThatTheFileCannotHoldIsRefused_data();
    void keyThatTheFileCannotHoldIsRefused();
    void keyIsTheSameInEveryLocale_data();
    void keyIsTheSameInEveryLocale();
    void keyForTheLibraryIsTakenBehindAnotherGroup();
    void keyThatTheFileCanHoldIsKept_data();
    void keyThatTheFileCanHoldIsKept();
    void unknownKeyIsNotReadAtTheNextStart();
};

void TestPolicyKeys::keyThatTheFileCannotHoldIsRefused_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("shown");
    const auto row = [](const char *name, const char *key, const char *shown) {
        QTest::newRow(name) << QString::fromUtf8(key) << QString::fromUtf8(shown);
    };
    row("empty", "", R"("")");
    row("equals sign", "a=b", R"("a=b")");
    row("equals sign at the end", "a=", R"("a=")");
    row("opening bracket", "a[b", R"("a[b")");
    row("closing bracket", "a]b", R"("a]b")");
    row("translation", "CameraEnabled[de]", R"("CameraEnabled[de]")");
    row("group", "[policy]", R"("[policy]")");
    row("comment", "#CameraEnabled", R"("#CameraEnabled")");
    row("blank in front", " CameraEnabled", R"(" CameraEnabled")");
    row("blank at the end", "CameraEnabled ", R"("CameraEnabled ")");
    row("blank alone", " ", R"(" ")");
    row("tab", "a\tb", R"("a\tb")");
    row("line break", "a\nb", R"("a\nb")");
    row("a line of its own", "a\nCameraEnabled=true\nb", R"("a\nCameraEnabled=true\nb")");
    row("carriage return", "a\rb", R"("a\rb")");
    row("escape", "a\x1b[31m", R"("a\u001B[31m")");
    row("delete", "a\x7f", R"("a\u007F")");
    row("control character beyond ASCII", "a\xc2\x85", R"("a\u0085")");
    row("taken by the library", "Encoding", R"("Encoding")");
}

void TestPolicyKeys::keyThatTheFileCannotHoldIsRefused()
{
    QFETCH(QString, key);
    QFETCH(QString, shown);
    WatchedDaemon daemon;
    verifyRefused(daemon, key, shown);
}

void TestPolicyKeys::keyIsTheSameInEveryLocale_data()
{
    QTest::addColumn<QString>("locale");
    for (const char *locale : {"", "C", "C.UTF-8", "xx_XX.ISO-8859-1"})
        QTest::newRow(locale) << QString::fromLatin1(locale);
}

void TestPolicyKeys::keyIsTheSameInEveryLocale()
{
    QFETCH(QString, locale);
    const QString key = QString::fromUtf8("K\u00fche \u03b1 \xf0\x9f\x90\x84");
    WatchedDaemon daemon;
    for (const char *variable : {"LANG", "LC_ALL"})
        daemon.process().setEnvironment(QLatin1String(variable), locale);
    QVERIFY(daemon.start());
    QCOMPARE(daemon.set(key, true), QVariant(true));
    QCOMPARE(daemon.said(),
             QStringList(
                 {daemon.event(key, QString(), True), daemon.announcement(key, true), ReplyTrue}));
    QVERIFY(Files::read(PolicyFile).endsWith('\n' + key.toUtf8() + "=true\n"));
    QCOMPARE(daemon.set(key + QLatin1Char('='), true), QVariant(false));
    QCOMPARE(daemon.logged(), refusal(QLatin1Char('"') + key + QLatin1String("=\"")));
    QCOMPARE(daemon.process().stop(), 0);
    QVERIFY(daemon.start());
    QCOMPARE(daemon.policy(Camera), QVariant(true));
}

void TestPolicyKeys::keyForTheLibraryIsTakenBehindAnotherGroup()
{
    const QString key = QStringLiteral("Encoding");
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    Files::write(PolicyFile, "[other]\nx=1\n\n[policy]\nCameraEnabled=true\n");
    QCOMPARE(daemon.set(key, true), QVariant(true));
    QCOMPARE(daemon.said(),
             QStringList(
                 {daemon.event(key, QString(), True), daemon.announcement(key, true), ReplyTrue}));
    QCOMPARE(Files::read(PolicyFile),
             QByteArray("[other]\nx=1\n\n[policy]\nCameraEnabled=true\nEncoding=true\n"));
}

void TestPolicyKeys::keyThatTheFileCanHoldIsKept_data()
{
    QTest::addColumn<QString>("key");
    for (const char *key : {"a b", "com.example.Wish", "a#b", ";a", "a\\nb", "\"a\"", "50%", "-",
                            "encoding", "true", "NoPolicyAtAll"})
        QTest::newRow(key) << QString::fromLatin1(key);
    QTest::newRow("umlaut") << QStringLiteral("K\u00fche");
    QTest::newRow("cow") << QString::fromUtf8("\xf0\x9f\x90\x84");
    QTest::newRow("long") << QString(5000, QLatin1Char('k'));
}

void TestPolicyKeys::keyThatTheFileCanHoldIsKept()
{
    QFETCH(QString, key);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(daemon.set(key, true), QVariant(true));
    QCOMPARE(daemon.said(),
             QStringList(
                 {daemon.event(key, QString(), True), daemon.announcement(key, true), ReplyTrue}));
    QCOMPARE(daemon.policy(key), QVariant(true));

    QCOMPARE(daemon.set(Camera, false), QVariant(true)); // the file can still be read
    QCOMPARE(Files::values(PolicyFile).value(key), True);
    QCOMPARE(daemon.process().stop(), 0);
    QVERIFY(daemon.start());
    QCOMPARE(daemon.policy(Camera), QVariant(false));
    QCOMPARE(Files::values(PolicyFile).value(key), True);
}

void TestPolicyKeys::unknownKeyIsNotReadAtTheNextStart()
{
    const QString key = QStringLiteral("com.example.Wish");
    Files::write(PolicyFile, "[policy]\ncom.example.Wish=true\n");
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    daemon.bus().connect().asyncCall(readCall(key));
    QCOMPARE(daemon.said(), QStringList());
    QCOMPARE(Files::values(PolicyFile).value(key), True);
    // Its first value again: without an old one in the event.
    QCOMPARE(daemon.set(key, true), QVariant(true));
    QCOMPARE(daemon.said(),
             QStringList(
                 {daemon.event(key, QString(), True), daemon.announcement(key, true), ReplyTrue}));
}

QTEST_GUILESS_MAIN(TestPolicyKeys)
#include "tst_policykeys.moc"
