// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "hostile/place.h"
#include "hostile/systemcalls.h"
#include "support/client.h"
#include "support/daemon.h"
#include "support/files.h"
#include "support/switchplugin.h"
#include "support/waiting.h"

#include <QDBusVariant>
#include <QtTest>

using namespace Support;

namespace {

/// One kind of write, which the test makes again and again.
struct Write
{
    QString interface;
    QString key;
    QString file;
    bool isCreation; ///< of the file

    bool make(Client &client, bool value) const
    {
        const QDBusMessage reply = client.call(interface, QStringLiteral("SetKeyValue"),
                                               {key, QVariant::fromValue(QDBusVariant(value))});
        return reply.type() == QDBusMessage::ReplyMessage && reply.arguments().value(0).toBool();
    }

    /// Leaves the file without the key's new value, or leaves no file.
    void prepare(Client &client, bool oldValue) const
    {
        if (isCreation)
            QFile::remove(file);
        else
            QVERIFY(make(client, oldValue));
    }

    QVariant read(Client &client) const
    {
        return client.call(interface, QStringLiteral("KeyValue"), {key})
            .arguments()
            .value(0)
            .value<QDBusVariant>()
            .variant();
    }
};

QString textOf(bool value)
{
    return value ? QStringLiteral("true") : QStringLiteral("false");
}

} // namespace

/// The daemon killed before each system call of one write: the file holds the old or the new
/// content, and the next start reads it.
class TestKilledWrites : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Files::reset(); }
    void fileIsOldOrNew_data();
    void fileIsOldOrNew();

private:
    void kill(const Write &write, const Place &place);

    int m_old = 0;
    int m_new = 0;
    int m_missed = 0;
};

void TestKilledWrites::fileIsOldOrNew_data()
{
    QTest::addColumn<QString>("interface");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("file");
    QTest::addColumn<bool>("isCreation");
    for (const bool isCreation : {false, true}) {
        QTest::addRow("policy, %s", isCreation ? "first" : "again")
            << QStringLiteral("Policy") << QStringLiteral("CameraEnabled")
            << QStringLiteral("/etc/policy/policy.conf") << isCreation;
        QTest::addRow("switch, %s", isCreation ? "first" : "again")
            << QStringLiteral("Switch") << QStringLiteral("camera")
            << QStringLiteral("/etc/policy/switch.conf") << isCreation;
    }
}

void TestKilledWrites::fileIsOldOrNew()
{
    QFETCH(QString, interface);
    QFETCH(QString, key);
    QFETCH(QString, file);
    QFETCH(bool, isCreation);
    const Write write{interface, key, file, isCreation};
    SwitchPlugin plugin;
    plugin.setSwitch(QStringLiteral("camera"), {1}, true);
    m_old = m_new = m_missed = 0;

    QVector<Place> places;
    {
        Daemon daemon;
        Client client;
        QVERIFY(daemon.start());
        write.prepare(client, true);
        SystemCalls calls(daemon.processId(), {});
        QVERIFY(write.make(client, false));
        places = Place::in(calls.end());
    }
    QVERIFY(places.size() > 5);
    for (const Place &place : qAsConst(places)) {
        kill(write, place);
        if (QTest::currentTestFailed())
            return;
    }
    qInfo("%d places: old content %d times, new content %d times, not reached %d times",
          int(places.size()), m_old, m_new, m_missed);
    QVERIFY(m_old > 0 && m_new > 0 && m_missed * 2 <= places.size());
}

void TestKilledWrites::kill(const Write &write, const Place &place)
{
    Daemon daemon;
    Client client;
    QVERIFY(daemon.start());
    const bool value = !write.read(client).toBool();
    write.prepare(client, !value);
    const FileSnapshot before = Files::snapshot(write.file);
    auto expected = Files::values(write.file);
    expected.insert(write.key, textOf(value));

    SystemCalls calls(daemon.processId(), place.killing());
    const bool isAcknowledged = write.make(client, value);
    calls.drop();
    if (isAcknowledged)
        daemon.kill();
    QVERIFY2(waitFor([&] { return !daemon.isRunning(); }), "the write failed, but not by the kill");
    m_missed += isAcknowledged;

    const bool isOld = Files::snapshot(write.file) == before;
    QVERIFY2(isOld || Files::values(write.file) == expected, Files::read(write.file).constData());
    QVERIFY(!(isAcknowledged && isOld));
    ++(isOld ? m_old : m_new);

    QVERIFY(daemon.start());
    if (!isOld)
        QCOMPARE(write.read(client), QVariant(value));
    QVERIFY(write.make(client, value)); // and writes go on
    QCOMPARE(Files::values(write.file).value(write.key), textOf(value));
}

QTEST_GUILESS_MAIN(TestKilledWrites)
#include "tst_killedwrites.moc"
