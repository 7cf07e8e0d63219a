// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/facts.h"
#include "support/files.h"
#include "support/waiting.h"
#include "support/watcheddaemon.h"

#include <QDBusMetaType>
#include <QDBusUnixFileDescriptor>
#include <QProcess>
#include <QtTest>

#include <unistd.h>

using namespace Support;

using Descriptors = QList<QDBusUnixFileDescriptor>;
using NamedDescriptors = QMap<QString, QDBusUnixFileDescriptor>;
Q_DECLARE_METATYPE(Descriptors)
Q_DECLARE_METATYPE(NamedDescriptors)

namespace {

/// Calls the daemon by means of a program that knows every D-Bus type and shares no code with the
/// daemon. The reply, in the form in which the program takes arguments; empty on error.
QString call(const QString &method, const QString &signature, const QString &arguments)
{
    QProcess program;
    program.start(QStringLiteral("busctl"),
                  QStringList{QStringLiteral("--system"), QStringLiteral("call"),
                              QStringLiteral("--"), QStringLiteral("org.kvt.PolicyManager"),
                              QStringLiteral("/org/kvt/PolicyManager"),
                              QStringLiteral("org.kvt.PolicyManager.Policy"), method, signature}
                      + arguments.split(QLatin1Char(' ')));
    if (!program.waitForFinished(Deadline))
        qFatal("No end of a call of %s", qPrintable(method));
    return QString::fromUtf8(program.readAllStandardOutput()).trimmed();
}

/// Writes a value given as its signature and its words.
bool write(const QString &value)
{
    return call(QStringLiteral("SetKeyValue"), QStringLiteral("sv"),
                Camera + QLatin1Char(' ') + value)
        == QLatin1String("b true");
}

/// The stored value as its signature and its words, texts in quotes.
QString readBack()
{
    const QString reply = call(QStringLiteral("KeyValue"), QStringLiteral("s"), Camera);
    return reply.startsWith(QLatin1String("v ")) ? reply.mid(2) : QString();
}

/// Has the daemon start with another value than what is written later, as texts and numbers that
/// read alike count as equal.
void storeAtStart(bool value)
{
    Files::write(PolicyFile,
                 value ? "[policy]\nCameraEnabled=true\n" : "[policy]\nCameraEnabled=false\n");
}

QString textOf(bool value)
{
    return value ? QStringLiteral("true") : QStringLiteral("false");
}

} // namespace

/// A policy is a boolean in practice, but a client may write a value of any type.
class TestValueKinds : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        qDBusRegisterMetaType<Descriptors>();
        qDBusRegisterMetaType<NamedDescriptors>();
    }
    void init() { Files::reset(); }
    void valueIsKeptAsGivenAndUsedByItsReading_data();
    void valueIsKeptAsGivenAndUsedByItsReading();
    void valueThatHoldsADescriptorIsRefused_data();
    void valueThatHoldsADescriptorIsRefused();
    void valueThatNoReaderCouldGetIsRefused_data();
    void valueThatNoReaderCouldGetIsRefused();
    void booleanReplacesAnything_data();
    void booleanReplacesAnything();
};

void TestValueKinds::valueIsKeptAsGivenAndUsedByItsReading_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<bool>("reading");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *value, const char *expected, bool reading, const char *text) {
        QTest::newRow(value) << QString::fromLatin1(value) << QString::fromLatin1(expected)
                             << reading << QString::fromLatin1(text);
    };
    row("b true", "b true", true, "true");
    row("b false", "b false", false, "false");
    row("y 255", "y 255", true, "255");
    row("y 0", "y 0", false, "0");
    row("n -32768", "n -32768", true, "-32768");
    row("n 0", "n 0", false, "0");
    row("q 65535", "q 65535", true, "65535");
    row("q 0", "q 0", false, "0");
    row("i -7", "i -7", true, "-7");
    row("i 0", "i 0", false, "0");
    row("u 4294967295", "u 4294967295", true, "4294967295");
    row("u 0", "u 0", false, "0");
    row("x -9223372036854775808", "x -9223372036854775808", true, "-9223372036854775808");
    row("x 0", "x 0", false, "0");
    row("t 18446744073709551615", "t 18446744073709551615", true, "18446744073709551615");
    row("t 0", "t 0", false, "0");
    row("d 1.5", "d 1.5", true, "1.5");
    row("d 0", "d 0", false, "0");
    row("s yes", "s \"yes\"", true, "yes");
    row("s no", "s \"no\"", true, "no");
    row("s 00", "s \"00\"", true, "00");
    row("s FALSE", "s \"FALSE\"", false, "FALSE");
    row("s False", "s \"False\"", false, "False");
    row("s false", "s \"false\"", false, "false");
    row("s 0", "s \"0\"", false, "0");
    row("s ", "s \"\"", false, "");
    row("o /a/path", "o \"/a/path\"", false, "");
    row("g a{sv}", "g \"a{sv}\"", false, "");
    row("ay 3 97 98 99", "ay 3 97 98 99", true, "abc");
    row("ay 1 48", "ay 1 48", false, "0");
    row("ay 0", "ay 0", false, "");
    row("as 1 one", "as 1 \"one\"", false, "one");
    row("as 2 one two", "as 2 \"one\" \"two\"", false, "");
    row("as 0", "as 0", false, "");
    row("ai 2 -1 1", "ai 2 -1 1", false, "");
    row("ai 0", "ai 0", false, "");
    row("ab 1 true", "ab 1 true", false, "");
    row("ad 1 0.5", "ad 1 0.5", false, "");
    row("ao 1 /a", "ao 1 \"/a\"", false, "");
    row("aas 2 1 a 2 b c", "aas 2 1 \"a\" 2 \"b\" \"c\"", false, "");
    row("av 2 i 1 s x", "av 2 i 1 s \"x\"", false, "");
    row("a{sv} 2 a b true b s x", "a{sv} 2 \"a\" b true \"b\" s \"x\"", false, "");
    row("a{sv} 0", "a{sv} 0", false, "");
    row("a{ss} 1 k v", "a{ss} 1 \"k\" \"v\"", false, "");
    row("a{us} 1 5 v", "a{us} 1 5 \"v\"", false, "");
    row("a{sa{sv}} 1 k 1 l ai 1 3", "a{sa{sv}} 1 \"k\" 1 \"l\" ai 1 3", false, "");
    row("(b) true", "(b) true", false, "");
    row("(bs) true x", "(bs) true \"x\"", false, "");
    row("(i(sd)) 1 x 2.5", "(i(sd)) 1 \"x\" 2.5", false, "");
    row("a(si) 2 x 1 y 2", "a(si) 2 \"x\" 1 \"y\" 2", false, "");
    row("v b true", "v b true", false, "");
    row("v v s x", "v v s \"x\"", false, "");
    row("v ai 1 3", "v ai 1 3", false, "");
}

void TestValueKinds::valueIsKeptAsGivenAndUsedByItsReading()
{
    QFETCH(QString, value);
    QFETCH(QString, expected);
    QFETCH(bool, reading);
    QFETCH(QString, text);
    storeAtStart(!reading);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QVERIFY(write(value));

    // Its boolean reading goes to the file, to enforcement and to the announcement; its text to the
    // event.
    QCOMPARE(daemon.said(),
             QStringList({daemon.event(Camera, textOf(!reading), text),
                          daemon.announcement(Camera, reading), QStringLiteral("reply true")}));
    QCOMPARE(daemon.recorded(), QStringList(daemon.eventText(Camera, textOf(!reading), text)));
    QCOMPARE(Files::values(PolicyFile).value(Camera), textOf(reading));
    QCOMPARE(QFile::exists(CameraMarker), reading);
    // A reader gets what was written, and so does the next one.
    QCOMPARE(readBack(), expected);
    QCOMPARE(readBack(), expected);
    QCOMPARE(daemon.logged(), QStringList());
}

void TestValueKinds::valueThatHoldsADescriptorIsRefused_data()
{
    const QVariant descriptor = QVariant::fromValue(QDBusUnixFileDescriptor(STDIN_FILENO));
    const QVariant deep =
        QVariantMap{{QStringLiteral("list"),
                     QVariantList{true, QVariantMap{{QStringLiteral("h"), descriptor}}}}};
    QTest::addColumn<QVariant>("value");
    QTest::newRow("h") << descriptor;
    QTest::newRow("v of h") << QVariant::fromValue(QDBusVariant(descriptor));
    QTest::newRow("ah") << QVariant::fromValue(Descriptors{QDBusUnixFileDescriptor(STDIN_FILENO)});
    QTest::newRow("a{sh}") << QVariant::fromValue(
        NamedDescriptors{{QStringLiteral("in"), QDBusUnixFileDescriptor(STDIN_FILENO)}});
    QTest::newRow("av") << QVariant(QVariantList{1, descriptor});
    QTest::newRow("a{sv}") << QVariant(QVariantMap{{QStringLiteral("in"), descriptor}});
    QTest::newRow("a{sv} of av of a{sv}") << deep;
    QTest::newRow("v of a{sv} of av of a{sv}") << QVariant::fromValue(QDBusVariant(deep));
}

/// It would cost the daemon a descriptor for each reader.
void TestValueKinds::valueThatHoldsADescriptorIsRefused()
{
    QFETCH(const QVariant, value);
    storeAtStart(true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    const FileSnapshot file = Files::snapshot(PolicyFile);
    QCOMPARE(daemon.set(Camera, value), QVariant(false));
    QCOMPARE(daemon.said(), QStringList(QStringLiteral("reply false")));
    QVERIFY(Files::snapshot(PolicyFile) == file);
    QCOMPARE(readBack(), QStringLiteral("b true"));
}

void TestValueKinds::valueThatNoReaderCouldGetIsRefused_data()
{
    QTest::addColumn<QString>("value");
    for (const char *value : {"g ", "v g ", "v v g "})
        QTest::newRow(value) << QString::fromLatin1(value);
}

void TestValueKinds::valueThatNoReaderCouldGetIsRefused()
{
    QFETCH(QString, value);
    storeAtStart(true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    const FileSnapshot file = Files::snapshot(PolicyFile);
    QCOMPARE(call(QStringLiteral("SetKeyValue"), QStringLiteral("sv"),
                  Camera + QLatin1Char(' ') + value),
             QStringLiteral("b false"));
    QCOMPARE(daemon.said(), QStringList(QStringLiteral("reply false")));
    QVERIFY(Files::snapshot(PolicyFile) == file);
    QCOMPARE(readBack(), QStringLiteral("b true"));
}

void TestValueKinds::booleanReplacesAnything_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("reading");
    const auto row = [](const char *value, const char *text, bool reading) {
        QTest::newRow(value) << QString::fromUtf8(value) << QString::fromUtf8(text) << reading;
    };
    row("i 7", "7", true);
    row("s yes", "yes", true);
    row("d 2.5", "2.5", true);
    row("o /a/path", "", false);
    row("g ai", "", false);
    row("ay 3 97 98 99", "abc", true);
    row("as 2 one two", "", false);
    row("ai 2 1 2", "", false);
    row("a{sv} 1 a b true", "", false);
    row("(bs) true x", "", false);
    row("v b true", "", false);
}

void TestValueKinds::booleanReplacesAnything()
{
    QFETCH(QString, value);
    QFETCH(QString, text);
    QFETCH(bool, reading);
    storeAtStart(!reading);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(write(value));
    QVERIFY(!readBack().startsWith(QLatin1String("b ")));
    daemon.forget();

    QVERIFY(write(QLatin1String("b ") + textOf(!reading)));

    QCOMPARE(daemon.said(),
             QStringList({daemon.event(Camera, text, textOf(!reading)),
                          daemon.announcement(Camera, !reading), QStringLiteral("reply true")}));
    QCOMPARE(readBack(), QLatin1String("b ") + textOf(!reading));
    QCOMPARE(Files::values(PolicyFile).value(Camera), textOf(!reading));
    QCOMPARE(QFile::exists(CameraMarker), !reading);
    QCOMPARE(daemon.logged(), QStringList());
}

QTEST_GUILESS_MAIN(TestValueKinds)
#include "tst_valuekinds.moc"
