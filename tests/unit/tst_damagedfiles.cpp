// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause

// When a damaged policy file loses values:
//
// 1. If GLib refuses the file, no policy has a value, all are enforced as off, no change is
//    accepted, and the file stays as it is until a person repairs it.
// 2. In a file that GLib accepts, each policy depends on its own line, with the ends of the lines
//    before and after it, and on the line of its group. Damage there loses the value, and the
//    policy gets its default, as if it had never been set; the value is never inverted. Damage
//    elsewhere does not change it.
// 3. Lines that are cut off are lost in the same way, and so is everything in an empty file. Of
//    keys that stand there twice the last one counts, and groups with the same name count as one.
//
// The daemon replaces its files by a rename, so such damage has other causes.
#include "keyfile.h"
#include "policymanager.h"

#include <pellorapolicy/policyvalue.h>

#include <QLoggingCategory>
#include <QMetaEnum>
#include <QtTest>

namespace {

const QString PolicyFile = QStringLiteral("/etc/policy/policy.conf");

using Readings = QMap<QString, QVariant>;

/// The keys of all policies in the platform's order.
QStringList platformKeys()
{
    const auto types = QMetaEnum::fromType<Pellora::PolicyValue::PolicyType>();
    QStringList keys;
    for (int i = 0; i < types.keyCount(); ++i)
        keys.append(QString::fromLatin1(types.key(i)));
    return keys;
}

void write(const QByteArray &content)
{
    QFile file(PolicyFile);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("Cannot write the policy file");
}

QByteArray content()
{
    QFile file(PolicyFile);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool isHold()
{
    return qEnvironmentVariableIsSet("GOVD_HOLD");
}

bool defaultOf(const QString &key)
{
    return key != QLatin1String("UserReportExportEnabled");
}

/// A file as the daemon writes it: every policy, every other one forbidden.
QByteArray validFile()
{
    QByteArray content = "[policy]\n";
    const QStringList keys = platformKeys();
    for (int i = 0; i < keys.size(); ++i)
        content += keys.at(i).toLatin1() + (i % 2 ? "=false\n" : "=true\n");
    return content;
}

/// The policies as the daemon reads them from @p content, this process being the daemon.
Readings readings(const QByteArray &content)
{
    write(content);
    // The log of the daemon's code in this process is not tested here.
    QLoggingCategory *log = QLoggingCategory::defaultCategory();
    log->setEnabled(QtInfoMsg, false);
    log->setEnabled(QtWarningMsg, false);
    Readings result;
    PolicyManager manager(nullptr);
    const QStringList keys = platformKeys();
    for (const QString &key : keys)
        result.insert(key, manager.policyValue(key));
    log->setEnabled(QtInfoMsg, true);
    log->setEnabled(QtWarningMsg, true);
    return result;
}

bool hasNothing(const Readings &readings)
{
    return std::none_of(readings.begin(), readings.end(),
                        [](const QVariant &each) { return each.isValid(); });
}

/// Whether a change of the bytes from @p begin to before @p end of validFile() may concern @p key.
bool isConcerned(const QByteArray &content, const QString &key, int begin, int end)
{
    const int line = content.indexOf('\n' + key.toLatin1() + '=');
    const int lineEnd = content.indexOf('\n', line + 1);
    const int groupEnd = content.indexOf('\n');
    return begin <= groupEnd || (begin <= lineEnd && end > line);
}

/// The same, predicted from the daemon's key reader alone. This is a thousand times faster, so that
/// every damage can be tried; a full daemon is built for some of them.
Readings predictions(const QByteArray &content)
{
    write(content);
    KeyFile file;
    const bool isRefused = file.load(PolicyFile) != nullptr;
    Readings result;
    const QStringList keys = platformKeys();
    for (const QString &key : keys) {
        const std::optional<bool> value = file.boolean(QStringLiteral("policy"), key);
        result.insert(key, isRefused ? QVariant() : QVariant(value.value_or(defaultOf(key))));
    }
    return result;
}

/// Checks that a daemon reads from @p damaged what predictions() says.
void checkDaemon(const QByteArray &damaged)
{
    const Readings expected = predictions(damaged);
    QCOMPARE(readings(damaged), expected);
    if (hasNothing(expected))
        QCOMPARE(::content(), damaged); // kept for a repair
}

/// Checks what is read from @p damaged, which differs from validFile() between @p begin and @p end.
void check(const QByteArray &damaged, int begin, int end)
{
    const QByteArray content = validFile();
    const Readings found = predictions(damaged);
    if (hasNothing(found))
        return;
    const QStringList keys = platformKeys();
    for (int i = 0; i < keys.size(); ++i) {
        const QString &key = keys.at(i);
        const QVariant value(i % 2 == 0);
        const bool mayBeLost = isConcerned(content, key, begin, end);
        const bool isLost = found.value(key) == QVariant(defaultOf(key));
        QVERIFY2(found.value(key) == value || (mayBeLost && isLost),
                 "at byte " + QByteArray::number(begin) + ": " + key.toLatin1());
    }
}

} // namespace

class TestDamagedFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void changedByteConcernsItsOwnLineOnly();
    void cutConcernsWhatIsCutOffOnly();
};

void TestDamagedFiles::changedByteConcernsItsOwnLineOnly()
{
    const QByteArray content = validFile();
    const QByteArray telling("\0\n[]=#;\\\x80\xff \r", 12);
    const int kinds = telling.size() + 8;
    const int step = isHold() ? 1 : 101; // prime to the number of kinds
    for (int i = 0; i < content.size() * kinds; ++i) {
        const int place = i / kinds;
        const int kind = i % kinds;
        QByteArray damaged = content;
        damaged[place] = kind < telling.size()
            ? telling.at(kind)
            : static_cast<char>(content.at(place) ^ (1 << (kind - telling.size())));
        check(damaged, place, place + 1);
        if (i % step == 0)
            checkDaemon(damaged);
        if (QTest::currentTestFailed())
            return;
    }
    qInfo("%d changed files, one in %d met by a daemon, too", int(content.size() * kinds), step);
}

void TestDamagedFiles::cutConcernsWhatIsCutOffOnly()
{
    const QByteArray content = validFile();
    const int step = isHold() ? 1 : 17;
    for (int size = 0; size < content.size(); ++size) {
        check(content.left(size), size, content.size());
        if (size % step == 0)
            checkDaemon(content.left(size));
        if (QTest::currentTestFailed())
            return;
    }
}

QTEST_GUILESS_MAIN(TestDamagedFiles)
#include "tst_damagedfiles.moc"
