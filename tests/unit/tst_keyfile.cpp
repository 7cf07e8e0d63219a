// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "keyfile.h"

#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>

namespace {

using Booleans = std::vector<std::pair<QString, bool>>;

const QString Group = QStringLiteral("policy");

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(unreadable)");
}

void write(const QString &path, const QByteArray &content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), qint64(content.size()));
}

void expectWarning(const char *pattern)
{
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QString::fromLatin1(pattern)));
}

} // namespace

class tst_KeyFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void createsTheFile();
    void changesOneLineOnly();
    void addsAtTheEndOfItsGroup();
    void addsAMissingGroupAtTheEnd();
    void dropsComments();
    void writesTheLiteralBoolean();
    void leavesAMalformedFileAlone_data();
    void leavesAMalformedFileAlone();
    void leavesWhatIsNoFileAlone_data();
    void leavesWhatIsNoFileAlone();
    void failsWithoutTheDirectory();
    void keysThatFit_data();
    void keysThatFit();
    void keysThatDoNotFit_data();
    void keysThatDoNotFit();
    void encodingFitsOutsideTheFirstGroup();
    void encodingIsRefusedEvenWhereItStands();
    void readsBooleansInFileOrder();
    void readsBooleans_data();
    void readsBooleans();

private:
    QScopedPointer<QTemporaryDir> m_directory;
    QString m_path;
};

void tst_KeyFile::init()
{
    m_directory.reset(new QTemporaryDir);
    QVERIFY(m_directory->isValid());
    m_path = m_directory->filePath(QStringLiteral("test.conf"));
}

void tst_KeyFile::createsTheFile()
{
    QVERIFY(saveKeyValue(m_path, Group, QStringLiteral("CameraEnabled"), true));
    QCOMPARE(contentOf(m_path), QByteArray("[policy]\nCameraEnabled=true\n"));
}

void tst_KeyFile::changesOneLineOnly()
{
    write(m_path, "[other]\nx=1\n\n[policy]\nA=true\nB=true\nC=whatever\n");
    QVERIFY(saveKeyValue(m_path, Group, QStringLiteral("B"), false));
    QCOMPARE(contentOf(m_path),
             QByteArray("[other]\nx=1\n\n[policy]\nA=true\nB=false\nC=whatever\n"));
}

void tst_KeyFile::addsAtTheEndOfItsGroup()
{
    write(m_path, "[policy]\nA=true\n\n[other]\nx=1\n");
    QVERIFY(saveKeyValue(m_path, Group, QStringLiteral("B"), true));
    QCOMPARE(contentOf(m_path), QByteArray("[policy]\nA=true\nB=true\n\n[other]\nx=1\n"));
}

void tst_KeyFile::addsAMissingGroupAtTheEnd()
{
    write(m_path, "[other]\nx=1\n");
    QVERIFY(saveKeyValue(m_path, Group, QStringLiteral("B"), true));
    QCOMPARE(contentOf(m_path), QByteArray("[other]\nx=1\n\n[policy]\nB=true\n"));
}

void tst_KeyFile::dropsComments()
{
    write(m_path, "# head\n[policy]\n# of A\nA=true\n\n\nA[de]=false\nB=true\n");
    QVERIFY(saveKeyValue(m_path, Group, QStringLiteral("B"), false));
    QCOMPARE(contentOf(m_path), QByteArray("[policy]\nA=true\nB=false\n"));
}

void tst_KeyFile::writesTheLiteralBoolean()
{
    write(m_path, "[policy]\nA=1\n");
    QVERIFY(saveKeyValue(m_path, Group, QStringLiteral("A"), true));
    QCOMPARE(contentOf(m_path), QByteArray("[policy]\nA=true\n"));
}

void tst_KeyFile::leavesAMalformedFileAlone_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("no key file") << QByteArray("This is a letter.\n");
    QTest::newRow("key before any group") << QByteArray("A=true\n[policy]\n");
    QTest::newRow("group not closed") << QByteArray("[policy\nA=true\n");
    QTest::newRow("foreign encoding") << QByteArray("[policy]\nEncoding=latin1\nA=true\n");
}

void tst_KeyFile::leavesAMalformedFileAlone()
{
    QFETCH(QByteArray, content);
    write(m_path, content);
    expectWarning("^Error loading key file \\d+ [^\"\n]");
    QVERIFY(!saveKeyValue(m_path, Group, QStringLiteral("A"), true));
    QCOMPARE(contentOf(m_path), content);
}

void tst_KeyFile::leavesWhatIsNoFileAlone_data()
{
    QTest::addColumn<int>("kind");
    QTest::newRow("directory") << int(S_IFDIR);
    QTest::newRow("pipe that nobody writes into") << int(S_IFIFO);
}

void tst_KeyFile::leavesWhatIsNoFileAlone()
{
    QFETCH(int, kind);
    const QByteArray path = m_path.toLocal8Bit();
    QCOMPARE(kind == S_IFDIR ? mkdir(path.constData(), 0755) : mkfifo(path.constData(), 0644), 0);
    expectWarning("^Error loading key file 1 Not a regular file$");
    QVERIFY(!saveKeyValue(m_path, Group, QStringLiteral("A"), true));

    struct stat now;
    QCOMPARE(lstat(path.constData(), &now), 0);
    QCOMPARE(int(now.st_mode & S_IFMT), kind);
}

void tst_KeyFile::failsWithoutTheDirectory()
{
    m_path = m_directory->filePath(QStringLiteral("missing/test.conf"));
    expectWarning("^Error saving key file \\d+ [^\"\n]");
    QVERIFY(!saveKeyValue(m_path, Group, QStringLiteral("A"), true));
    QVERIFY(!QFileInfo::exists(m_directory->filePath(QStringLiteral("missing"))));
}

void tst_KeyFile::keysThatFit_data()
{
    QTest::addColumn<QString>("key");
    for (const char *key : {"A", "a b", "a.b-c_d", "a#", ";a", "a\\b", "\"quoted\"", "%1", "true"})
        QTest::newRow(key) << QString::fromLatin1(key);
    QTest::newRow("not ASCII") << QStringLiteral("K\u00fche");
    QTest::newRow("beyond the basic plane") << QString::fromUtf8("\xf0\x9f\x90\x84");
    QTest::newRow("very long") << QString(100000, QLatin1Char('k'));
}

void tst_KeyFile::keysThatFit()
{
    QFETCH(QString, key);
    write(m_path, "[policy]\nOld=true\n");
    QVERIFY(saveKeyValue(m_path, Group, key, true));

    KeyFile file;
    QVERIFY(!file.load(m_path));
    const Booleans expected{{QStringLiteral("Old"), true}, {key, true}};
    QVERIFY(file.booleans(Group) == expected);
}

void tst_KeyFile::keysThatDoNotFit_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("shown");
    const auto row = [](const char *name, const char *key, const char *shown) {
        QTest::newRow(name) << QString::fromUtf8(key) << QString::fromUtf8(shown);
    };
    row("empty", "", "\"\"");
    row("equals sign", "a=b", "\"a=b\"");
    row("opening bracket", "a[b", "\"a[b\"");
    row("closing bracket", "a]b", "\"a]b\"");
    row("translation", "a[de]", "\"a[de]\"");
    row("translation for everybody", "a[C]", "\"a[C]\"");
    row("group", "[a]", "\"[a]\"");
    row("comment", "#a", "\"#a\"");
    row("leading blank", " a", "\" a\"");
    row("trailing blank", "a ", "\"a \"");
    row("blank", " ", "\" \"");
    row("tab", "a\tb", "\"a\\tb\"");
    row("line break", "a\nb", "\"a\\nb\"");
    row("a line of its own", "a\nforged=true\nb", "\"a\\nforged=true\\nb\"");
    row("carriage return", "a\r", "\"a\\r\"");
    row("delete", "a\x7f", "\"a\\u007F\"");
    row("control character beyond ASCII", "a\xc2\x85", "\"a\\u0085\"");
    row("taken by the library", "Encoding", "\"Encoding\"");
}

void tst_KeyFile::keysThatDoNotFit()
{
    QFETCH(QString, key);
    QFETCH(QString, shown);
    write(m_path, "[policy]\nOld=true\n");
    const QByteArray message =
        "Error saving key file 1 Key file cannot hold the key " + shown.toUtf8();
    QTest::ignoreMessage(QtWarningMsg, message.constData());
    QVERIFY(!saveKeyValue(m_path, Group, key, true));
    QCOMPARE(contentOf(m_path), QByteArray("[policy]\nOld=true\n"));
}

void tst_KeyFile::encodingFitsOutsideTheFirstGroup()
{
    write(m_path, "[first]\nx=1\n");
    QVERIFY(saveKeyValue(m_path, Group, QStringLiteral("Encoding"), true));
    QVERIFY(saveKeyValue(m_path, Group, QStringLiteral("A"), true));
}

void tst_KeyFile::encodingIsRefusedEvenWhereItStands()
{
    const QByteArray content("[policy]\nEncoding=UTF-8\nA=true\n");
    write(m_path, content);
    expectWarning("^Error saving key file");
    QVERIFY(!saveKeyValue(m_path, Group, QStringLiteral("Encoding"), true));
    QCOMPARE(contentOf(m_path), content);
}

void tst_KeyFile::readsBooleansInFileOrder()
{
    write(m_path, "[other]\nz=1\n[policy]\nB=true\na=false\nC=x\n");
    KeyFile file;
    QVERIFY(!file.load(m_path));
    const Booleans expected{{QStringLiteral("B"), true}, {QStringLiteral("a"), false}};
    QVERIFY(file.booleans(Group) == expected);
    QVERIFY(file.booleans(QStringLiteral("missing")).empty());
}

void tst_KeyFile::readsBooleans_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("expected"); // -1: no boolean
    QTest::newRow("true") << QByteArray("true") << 1;
    QTest::newRow("false") << QByteArray("false") << 0;
    QTest::newRow("1") << QByteArray("1") << 1;
    QTest::newRow("0") << QByteArray("0") << 0;
    QTest::newRow("yes") << QByteArray("yes") << -1;
    QTest::newRow("True") << QByteArray("True") << -1;
    QTest::newRow("nothing") << QByteArray() << -1;
    QTest::newRow("2") << QByteArray("2") << -1;
}

void tst_KeyFile::readsBooleans()
{
    QFETCH(QByteArray, text);
    QFETCH(int, expected);
    write(m_path, "[policy]\nA=" + text + "\n");
    KeyFile file;
    QVERIFY(!file.load(m_path));
    const std::optional<bool> value = file.boolean(Group, QStringLiteral("A"));
    QCOMPARE(value ? int(*value) : -1, expected);
    QVERIFY(!file.boolean(Group, QStringLiteral("a")));
    QVERIFY(!file.boolean(QStringLiteral("other"), QStringLiteral("A")));
}

QTEST_GUILESS_MAIN(tst_KeyFile)
#include "tst_keyfile.moc"
