// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "hostile/systemcalls.h"
#include "support/client.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/switchplugin.h"
#include "support/watcheddaemon.h"

#include <QDBusVariant>
#include <QtTest>

using namespace Support;

namespace {

const QString Switch = QStringLiteral("lens");

/// A write of the policy or of a switch that governs it, and all that it concerns.
class Write
{
public:
    explicit Write(bool isOfSwitch)
        : m_isOfSwitch(isOfSwitch)
    {
        m_plugin.setSwitch(Switch, {1}, true);
    }

    QString key() const { return m_isOfSwitch ? Switch : Camera; }
    QString file() const { return m_isOfSwitch ? SwitchFile : PolicyFile; }

    QVariant make(bool value)
    {
        const QString interface =
            m_isOfSwitch ? QStringLiteral("Switch") : QStringLiteral("Policy");
        const QDBusMessage reply = m_client.call(interface, QStringLiteral("SetKeyValue"),
                                                 {key(), QVariant::fromValue(QDBusVariant(value))});
        return reply.type() == QDBusMessage::ReplyMessage ? reply.arguments().value(0) : QVariant();
    }

    /// What the daemon announces of a change to off that is made at all.
    QStringList announcements() const
    {
        QStringList lines{WatchedDaemon::announcement(Camera, false)};
        if (m_isOfSwitch)
            lines.append(QStringLiteral("signal SwitchChanged \"%1\" false").arg(Switch));
        return lines;
    }

    QVariant read()
    {
        return m_isOfSwitch ? m_client.switchValue(Switch) : m_client.policy(Camera);
    }

private:
    const bool m_isOfSwitch;
    SwitchPlugin m_plugin;
    Client m_client;
};

/// A row for the policy file and one for the switch file. @p text is what is seen of the call, with
/// "FILE" for the path of the file.
void addRows(const char *name, const char *call, const char *text, const QStringList &errors)
{
    for (const bool isOfSwitch : {false, true}) {
        for (const QString &error : errors) {
            QTest::addRow("%s, %s: %s", isOfSwitch ? "switch" : "policy", name, qPrintable(error))
                << isOfSwitch << QString::fromLatin1(call)
                << QString::fromLatin1(text).replace(QLatin1String("FILE"),
                                                     isOfSwitch ? SwitchFile : PolicyFile)
                << error;
        }
    }
}

void addColumns()
{
    QTest::addColumn<bool>("isOfSwitch");
    QTest::addColumn<QString>("call");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("error");
}

QStringList errors(const char *names)
{
    return QString::fromLatin1(names).split(QLatin1Char(' '));
}

} // namespace

/// System calls that fail while the file of a policy or of a switch is written.
///
/// A switch belongs to its plugin, which has taken and announced the new value when the file is
/// written: that it was not saved is told to the caller, and the plugin keeps the value.
class TestFailingCalls : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Files::reset(); }
    void writeThatCannotBeSavedIsRefused_data();
    void writeThatCannotBeSavedIsRefused();
    void failureThatDoesNotMatterIsNotTold_data();
    void failureThatDoesNotMatterIsNotTold();
    void newFileThatCannotBeRemovedIsNotRead();

private:
    /// Makes the write with one call failing, and leaves its answer in m_answer.
    void makeWith(WatchedDaemon &daemon, Write &write);

    QVariant m_answer;
    FileSnapshot m_before; ///< of the file
};

void TestFailingCalls::makeWith(WatchedDaemon &daemon, Write &write)
{
    QFETCH(QString, call);
    QFETCH(QString, text);
    QFETCH(QString, error);
    // All writes from the second one on make the same calls.
    QCOMPARE(write.make(false), QVariant(true));
    QCOMPARE(write.make(true), QVariant(true));
    SystemCalls rehearsal(daemon.process().processId(), {});
    QCOMPARE(write.make(false), QVariant(true));
    const int number = SystemCalls::numberOf(call, text, rehearsal.end());
    QVERIFY2(number > 0, "such a call is not made");
    QCOMPARE(write.make(true), QVariant(true));
    daemon.forget();
    m_before = Files::snapshot(write.file());

    SystemCalls calls(daemon.process().processId(),
                      SystemCalls::failing(call, QString::number(number), error));
    m_answer = write.make(false);
    const QStringList injected = calls.end().filter(QStringLiteral("(INJECTED)"));
    QCOMPARE(injected.size(), 1);
    QVERIFY2(injected.first().contains(text), qPrintable(injected.first()));
}

void TestFailingCalls::writeThatCannotBeSavedIsRefused_data()
{
    addColumns();
    addRows("file not opened", "openat", "\"FILE\"", errors("EIO EACCES EMFILE ENOMEM"));
    addRows("file not described", "newfstatat", "<FILE>", errors("EIO"));
    addRows("file not read", "read", "<FILE>", errors("EIO"));
    addRows("new file not opened", "openat", "\"FILE.", errors("ENOSPC EMFILE EROFS EACCES EIO"));
    addRows("content not written", "write", "<FILE.", errors("ENOSPC EIO EDQUOT EFBIG"));
    addRows("content not on the disk", "fsync", "<FILE.", errors("EIO ENOSPC"));
    addRows("new file not closed", "close", "<FILE.", errors("EIO ENOSPC"));
    addRows("not renamed", "rename", "\"FILE\"", errors("ENOSPC EROFS EIO EACCES"));
}

void TestFailingCalls::writeThatCannotBeSavedIsRefused()
{
    QFETCH(bool, isOfSwitch);
    Write write(isOfSwitch);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    makeWith(daemon, write);
    if (QTest::currentTestFailed())
        return;
    const QStringList announced = isOfSwitch ? write.announcements() : QStringList();
    QCOMPARE(m_answer, QVariant(false));
    QCOMPARE(daemon.said(), announced + QStringList(QStringLiteral("reply false")));
    QCOMPARE(daemon.recorded(), QStringList());
    QCOMPARE(daemon.logged().size(), 2);
    QVERIFY(Files::snapshot(write.file()) == m_before);
    QVERIFY(!QDir(QStringLiteral("/etc/policy"))
                 .entryList(QDir::Files | QDir::Hidden)
                 .join(QLatin1Char(' '))
                 .contains(QLatin1String(".conf."))); // nothing half-written is left
    QCOMPARE(write.read(), QVariant(announced.isEmpty()));
    QCOMPARE(QFile::exists(CameraMarker), announced.isEmpty());
}

void TestFailingCalls::failureThatDoesNotMatterIsNotTold_data()
{
    addColumns();
    addRows("file not looked at", "newfstatat", "\"FILE\"", errors("EIO EACCES ENOMEM"));
    addRows("old file not looked at", "newfstatat", "AT_SYMLINK_NOFOLLOW", errors("EIO"));
    addRows("no space reserved", "fallocate", "<FILE.", errors("ENOSPC EOPNOTSUPP"));
    addRows("writing interrupted", "write", "<FILE.", errors("EINTR"));
    addRows("directory not opened", "openat", "\"/etc/policy\"", errors("EMFILE EIO"));
    addRows("directory not on the disk", "fsync", "</etc/policy>", errors("EIO"));
}

void TestFailingCalls::failureThatDoesNotMatterIsNotTold()
{
    QFETCH(bool, isOfSwitch);
    Write write(isOfSwitch);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    makeWith(daemon, write);
    if (QTest::currentTestFailed())
        return;
    QCOMPARE(m_answer, QVariant(true));
    QStringList expected = write.announcements();
    expected.insert(isOfSwitch ? expected.size() : 0, WatchedDaemon::event(write.key(), Yes, No));
    QCOMPARE(daemon.said(), expected + QStringList(QStringLiteral("reply true")));
    QCOMPARE(daemon.logged(), QStringList());
    QMap<QString, QString> values = Files::values(write.file());
    QCOMPARE(values.value(write.key()), No);
    QCOMPARE(values.size(), m_before.content.count('=')); // no other key is lost
    QCOMPARE(write.read(), QVariant(false));
    QVERIFY(!QFile::exists(CameraMarker));
}

/// The file that could not take the other's place stays beside it, and nobody reads it.
void TestFailingCalls::newFileThatCannotBeRemovedIsNotRead()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    const QString failing = QStringLiteral("inject=rename,unlink:error=EROFS:when=1");
    SystemCalls calls(daemon.process().processId(), {QStringLiteral("-e"), failing});
    const QVariant answer = daemon.set(Camera, false);
    QCOMPARE(calls.end().filter(QStringLiteral("(INJECTED)")).size(), 2);
    QCOMPARE(answer, QVariant(false));
    QCOMPARE(QDir(QStringLiteral("/etc/policy")).entryList(QDir::Files).size(), 2);
    QCOMPARE(daemon.policy(Camera), QVariant(true));
    QVERIFY(daemon.change(QStringLiteral("VpnEnabled"), false));
    QCOMPARE(daemon.process().stop(), 0);
    QVERIFY(daemon.start());
    QCOMPARE(daemon.policy(Camera), QVariant(true));
    QCOMPARE(daemon.policy(QStringLiteral("VpnEnabled")), QVariant(false));
}

QTEST_GUILESS_MAIN(TestFailingCalls)
#include "tst_failingcalls.moc"
