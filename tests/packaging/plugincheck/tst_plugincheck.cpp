// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

namespace {

enum Exit { Sound = 0, Doubtful = 1, Useless = 2, WrongUsage = 3 };

QStringList texts(std::initializer_list<const char *> lines)
{
    QStringList list;
    for (const char *line : lines)
        list.append(QString::fromUtf8(line));
    return list;
}

QByteArray read(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void write(const QString &path, const QByteArray &content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), qint64(content.size()));
}

struct Outcome
{
    int code = -1; ///< -1 when a signal ended it
    QString out;

    /// The lines of one kind, without the name of the file and the kind itself.
    QStringList lines(const QString &kind) const
    {
        QStringList found;
        const QString mark = QStringLiteral(": %1: ").arg(kind);
        const QStringList all = out.split(QLatin1Char('\n'));
        for (const QString &line : all) {
            if (line.contains(mark))
                found.append(line.mid(line.indexOf(mark) + mark.size()));
        }
        return found;
    }
};

Outcome check(const QStringList &arguments)
{
    QProcess process;
    process.start(QStringLiteral("/usr/bin/govd-plugin-check"), arguments);
    Outcome outcome;
    if (process.waitForFinished() && process.exitStatus() == QProcess::NormalExit)
        outcome.code = process.exitCode();
    outcome.out = QString::fromUtf8(process.readAllStandardOutput());
    return outcome;
}

QString plugin(const char *name)
{
    return QStringLiteral(GOVD_TEST_PLUGINS "/") + QLatin1String(name);
}

QString oddPlugin(const char *name)
{
    return QStringLiteral(GOVD_TEST_ODD_PLUGINS "/") + QLatin1String(name);
}

void add(const char *row, const QString &path, Exit code, std::initializer_list<const char *> lines)
{
    QTest::newRow(row) << path << int(code) << texts(lines);
}

} // namespace

/// The output of govd-plugin-check for plugins that are right, or wrong in one way each.
class TestPluginCheck : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void complaints_data();
    void complaints();
    void soundLockPlugin();
    void soundSwitchPlugin();
    void oneLineForEachFinding();
    void pluginOfAnotherQt();
    void damagedFiles_data();
    void damagedFiles();
    void nameThatTheDaemonPassesOver();
    void wrongUsage();
    void symbolsAreThoseOfTheDaemon();
};

void TestPluginCheck::complaints_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("code");
    QTest::addColumn<QStringList>("complaints"); // how each line begins

    add("nothing there", plugin("missing.so"), Useless, {"does not exist"});
    add("a directory", plugin(""), Useless, {"is no file"});
    add("text", oddPlugin("notalibrary.txt"), Useless, {"is no shared library"});
    add("library without a plugin", oddPlugin("noroot.so"), Useless, {"is no plugin"});
    add("missing variable", oddPlugin("unresolved.so"), Useless, {"cannot be loaded: "});
    add("missing function", plugin("missingfunction.so"), Useless, {"cannot be loaded: "});
    add("no root object", oddPlugin("noobject.so"), Useless, {"has no root object"});
    add("another interface", oddPlugin("otherinterface.so"), Useless,
        {"Q_PLUGIN_METADATA names the interface \"org.govd.test.OtherInterface\"",
         "the root object is of the class OtherInterface"});
    add("interface by name only", oddPlugin("impostor.so"), Useless,
        {"the root object is of the class Impostor"});
    add("right object, wrong identifier", oddPlugin("mislabelled.so"), Doubtful,
        {"Q_PLUGIN_METADATA names the interface \"org.govd.test.Mislabelled\""});
    add("no identifier", plugin("noiid.so"), Useless, {"is no plugin"});
    add("no Q_INTERFACES", plugin("nointerfaces.so"), Useless,
        {"the root object derives from SourceRestriction but does not say so"});
    add("wrong class", plugin("wrongclass.so"), Useless,
        {"the root object answers to the interface of SourceRestriction but does not derive"});
    add("no policies", plugin("nopolicies.so"), Doubtful, {"supportedPolicies() lists no policy"});
    add("unknown policies", plugin("strangepolicies.so"), Doubtful,
        {"name() is empty", "supportedPolicies() lists \"NoPolicy\"",
         "supportedPolicies() lists \"cameraenabled\""});
    add("announces while asked", plugin("chatty.so"), Useless, {"policyIsLocked() emits"});
    add("no switches", plugin("noswitches.so"), Doubtful, {"keyPolicyTypes() lists no switch"});
    add("strange switches", plugin("strangeswitches.so"), Doubtful,
        {"the switch \"%2\" governs number 999,", "keyValue(\"a\") gives a int (5)",
         "the switch \"b\" governs number 0,", "the switch \"b\" governs number 999,",
         "the switch \"c\" governs no policy", "governed more than once"});
    const char *unsavable = "keyPolicyTypes() lists a switch that can never be set: ";
    add("keys that no file can hold", plugin("unsavableswitches.so"), Useless,
        {unsavable, unsavable, unsavable});
    add("switch announces while asked", plugin("chattyswitch.so"), Useless,
        {"keyValue() or keyPolicyTypes() emits"});
}

void TestPluginCheck::complaints()
{
    QFETCH(QString, path);
    QFETCH(int, code);
    QFETCH(QStringList, complaints);

    const Outcome outcome = check({path});

    const QStringList said =
        outcome.lines(QStringLiteral("warning")) + outcome.lines(QStringLiteral("error"));
    QCOMPARE(said.size(), complaints.size());
    for (int i = 0; i < said.size(); ++i)
        QVERIFY2(said.at(i).startsWith(complaints.at(i)), qPrintable(said.at(i)));
    QCOMPARE(outcome.code, code);
    QCOMPARE(outcome.lines(QStringLiteral("error")).isEmpty(), code != Useless);
}

void TestPluginCheck::soundLockPlugin()
{
    const QString path = plugin("locked.so");
    const Outcome outcome = check({path});

    QCOMPARE(outcome.out,
             QStringLiteral("%1: note: a lock plugin named \"test\"\n"
                            "%1: note: can lock: BrowserEnabled, CameraEnabled\n"
                            "%1: note: locks now: CameraEnabled\n")
                 .arg(path));
    QCOMPARE(outcome.code, int(Sound));
}

void TestPluginCheck::soundSwitchPlugin()
{
    const Outcome outcome = check({plugin("soundswitch.so")});

    QVERIFY(outcome.lines(QStringLiteral("note"))
                .contains(QStringLiteral("the switch \"slider\" is on and governs: "
                                         "CameraEnabled, MicrophoneEnabled")));
    QCOMPARE(outcome.code, int(Sound));
}

void TestPluginCheck::oneLineForEachFinding()
{
    const Outcome outcome = check({plugin("unsavableswitches.so")});

    const QStringList lines = outcome.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (const QString &line : lines)
        QVERIFY2(line.startsWith(plugin("unsavableswitches.so: ")), qPrintable(line));
    QVERIFY(outcome.lines(QStringLiteral("error"))
                .last()
                .endsWith(QStringLiteral("Key file cannot hold the key \"two\\nlines\"")));
}

/// The two bytes behind the mark and the format of the meta data are the version of Qt.
void TestPluginCheck::pluginOfAnotherQt()
{
    QByteArray library = read(plugin("locked.so"));
    const int mark = library.indexOf("QTMETADATA !");
    QVERIFY(mark > 0);
    QCOMPARE(int(library.at(mark + 13)), 5);
    library[mark + 14] = 99;
    const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("other.so"));
    write(path, library);

    const Outcome outcome = check({path});

    QCOMPARE(outcome.lines(QStringLiteral("error")).size(), 1);
    QVERIFY(outcome.out.contains(QStringLiteral("was built with Qt 5.99.")));
    QCOMPARE(outcome.code, int(Useless));
}

void TestPluginCheck::damagedFiles_data()
{
    QTest::addColumn<int>("size");
    for (const int size : {0, 1, 3, 64, 4000, 9000})
        QTest::newRow(qPrintable(QString::number(size))) << size;
}

void TestPluginCheck::damagedFiles()
{
    QFETCH(int, size);
    const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("cut.so"));
    write(path, read(plugin("locked.so")).left(size));

    const Outcome outcome = check({path});

    QCOMPARE(outcome.lines(QStringLiteral("error")).size(), 1);
    QCOMPARE(outcome.code, int(Useless));
}

void TestPluginCheck::nameThatTheDaemonPassesOver()
{
    const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("plugin.so.1"));
    QVERIFY(QFile::copy(plugin("locked.so"), path));

    const Outcome outcome = check({path});

    QCOMPARE(outcome.lines(QStringLiteral("warning")).size(), 1);
    QCOMPARE(outcome.code, int(Doubtful));
}

void TestPluginCheck::wrongUsage()
{
    QCOMPARE(check({}).code, int(WrongUsage));
    QCOMPARE(check(texts({"--loud"})).code, int(WrongUsage));
    QCOMPARE(check(texts({"one.so", "two.so"})).code, int(WrongUsage));
    QCOMPARE(check(texts({"--help"})).code, int(Sound));
}

/// Otherwise it would refuse plugins that the daemon loads, or accept others.
void TestPluginCheck::symbolsAreThoseOfTheDaemon()
{
    const auto symbols = [](const QString &program) {
        QProcess nm;
        nm.start(QStringLiteral("nm"),
                 texts({"-D", "--defined-only", "--format=just-symbols"}) + QStringList(program));
        return nm.waitForFinished() ? QString::fromUtf8(nm.readAllStandardOutput()) : QString();
    };
    const QString daemon = symbols(QStringLiteral("/usr/sbin/govd"));
    QVERIFY(!daemon.isEmpty());
    QCOMPARE(symbols(QStringLiteral("/usr/bin/govd-plugin-check")), daemon);
}

QTEST_GUILESS_MAIN(TestPluginCheck)
#include "tst_plugincheck.moc"
