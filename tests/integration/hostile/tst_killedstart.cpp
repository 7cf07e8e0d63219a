// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "hostile/place.h"
#include "hostile/systemcalls.h"
#include "support/client.h"
#include "support/daemon.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/platformkeys.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace Support;

namespace {

bool isHold()
{
    return qEnvironmentVariableIsSet("GOVD_HOLD");
}

bool defaultOf(const QString &key)
{
    return key != QLatin1String("UserReportExportEnabled");
}

/// The file as it is when the defaults of the first @p count policies have been stored.
QByteArray fileWith(int count)
{
    QByteArray content = "[policy]\n";
    for (const QString &key : platformKeys().mid(0, count))
        content += key.toLatin1() + (defaultOf(key) ? "=true\n" : "=false\n");
    return content;
}

} // namespace

/// The daemon killed before each system call of its first start, when it has no file yet: what it
/// leaves is no file or a whole one, and the next start has every default.
class TestKilledStart : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Files::reset(); }
    void nextStartHasTheDefaults();

private:
    void kill(const Place &place);

    int m_none = 0;
    int m_part = 0;
    int m_whole = 0;
};

void TestKilledStart::nextStartHasTheDefaults()
{
    QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("calls"));
    {
        Daemon daemon;
        daemon.setWrapper(SystemCalls::wrapper({QStringLiteral("-y"), QStringLiteral("-o"), path}));
        QVERIFY(daemon.start());
    }
    const QStringList calls = QString::fromUtf8(Files::read(path)).split(QLatin1Char('\n'));
    const QVector<Place> places = Place::in(calls);
    const int count = platformKeys().size();
    QVERIFY(places.size() > 5 * count); // several calls for each policy
    const int step = isHold() ? 1 : 11;
    for (int i = 0; i < places.size(); i += step) {
        kill(places.at(i));
        if (QTest::currentTestFailed())
            return;
    }
    qInfo("%d places: no file %d times, some policies %d times, all %d times",
          m_none + m_part + m_whole, m_none, m_part, m_whole);
    QVERIFY(m_none > 0 && m_part > m_whole);
}

void TestKilledStart::kill(const Place &place)
{
    Files::reset();
    {
        Daemon daemon;
        daemon.setWrapper(SystemCalls::wrapper(place.killing()));
        if (daemon.start()) // what comes after the start, or came in another number this time
            daemon.kill();
    }
    const QByteArray content = Files::read(PolicyFile);
    const int count = content.count('=');
    const bool exists = QFile::exists(PolicyFile);
    QVERIFY2(exists ? count > 0 && content == fileWith(count) : content.isEmpty(),
             place.name.toLatin1() + ' ' + QByteArray::number(place.number) + ": " + content);
    const QStringList keys = platformKeys();
    ++(!exists ? m_none : count < keys.size() ? m_part : m_whole);

    Daemon next;
    QVERIFY(next.start());
    Client client;
    for (const QString &key : keys)
        QCOMPARE(client.policy(key), QVariant(defaultOf(key)));
    QCOMPARE(Files::read(PolicyFile), fileWith(keys.size()));
    QVERIFY(QFile::exists(CameraMarker));
    QVERIFY(client.setPolicy(Camera, false)); // and writes go on
    QCOMPARE(Files::values(PolicyFile).value(Camera), No);
}

QTEST_GUILESS_MAIN(TestKilledStart)
#include "tst_killedstart.moc"
