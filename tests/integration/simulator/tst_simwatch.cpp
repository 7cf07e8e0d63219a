// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/sim.h"
#include "support/files.h"

#include <QJsonArray>
#include <QRegularExpression>
#include <QtTest>

#include <csignal>

using namespace Support;

namespace {

/// What a terminal does before it draws a state.
const QString Clear = QStringLiteral("\033[H\033[2J");

} // namespace

/// The state of the device, drawn again and again.
class TestSimWatch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void drawsEachChange();
    void fitsTheTerminal_data();
    void fitsTheTerminal();
    void endsWithTheDevice();
    void endsWithItsReader();
};

void TestSimWatch::initTestCase()
{
    Sim::install();
}

void TestSimWatch::init()
{
    Files::reset();
}

void TestSimWatch::drawsEachChange()
{
    Sim device;
    QVERIFY(device.startDevice());
    Sim watch;
    watch.start({QStringLiteral("status"), QStringLiteral("--watch"), QStringLiteral("--json")});
    QTRY_COMPARE(watch.results().size(), 1);
    QCOMPARE(Sim::run(QStringLiteral("launch camera")).code, 0);
    QTRY_COMPARE(watch.results().size(), 2);
    QCOMPARE(watch.results().last().value(QStringLiteral("running")).toArray().size(), 1);
    Files::write(QStringLiteral("/var/lib/govd/camera_enabled"), "");
    QTRY_COMPARE(watch.results().last().value(QStringLiteral("camera")), QJsonValue(true));
    QVERIFY(QFile::remove(QStringLiteral("/var/lib/govd/camera_enabled")));
    QTRY_COMPARE(watch.results().last().value(QStringLiteral("camera")), QJsonValue(false));
}

void TestSimWatch::fitsTheTerminal_data()
{
    QTest::addColumn<int>("columns");
    QTest::addColumn<int>("rows");
    QTest::addColumn<int>("drawn");
    QTest::addColumn<int>("width");
    QTest::newRow("small") << 30 << 10 << 9 << 30;
    QTest::newRow("flat") << 80 << 2 << 1 << 6;
    QTest::newRow("large") << 200 << 100 << 13 << 71;
    QTest::newRow("of unknown size") << 0 << 0 << 13 << 71;
}

void TestSimWatch::fitsTheTerminal()
{
    QFETCH(int, columns);
    QFETCH(int, rows);
    QFETCH(int, drawn);
    QFETCH(int, width);
    Sim device;
    QVERIFY(device.startDevice());
    Sim watch;
    watch.startShell(QStringLiteral("export TERM=xterm NO_COLOR=; exec script -qec \"stty cols %1 "
                                    "rows %2; $SIM status --watch\" /dev/null")
                         .arg(columns)
                         .arg(rows));
    QVERIFY(watch.waitForOut(Clear));
    QCOMPARE(Sim::run(QStringLiteral("launch clock")).code, 0);
    // The first state is drawn whole once the second one begins.
    QTRY_COMPARE(watch.out().count(Clear), 2);
    const QString first = watch.out().section(Clear, 1, 1);
    QVERIFY(first.endsWith(QStringLiteral("\r\n")));
    const QStringList lines = first.split(QStringLiteral("\r\n")).mid(0, drawn);
    QCOMPARE(first.count(QStringLiteral("\r\n")), drawn);
    QVERIFY(first.contains(QStringLiteral("\033[1m")));
    int longest = 0;
    for (QString line : lines) {
        line.remove(QRegularExpression(QStringLiteral("\033\\[\\d+m")));
        longest = std::max(longest, line.size());
    }
    QCOMPARE(longest, width);
}

void TestSimWatch::endsWithTheDevice()
{
    Sim device;
    QVERIFY(device.startDevice());
    Sim watch;
    watch.start({QStringLiteral("status"), QStringLiteral("--watch")});
    QVERIFY(watch.waitForOut(QStringLiteral("last events")));
    device.signal(SIGTERM);
    QCOMPARE(device.finish().code, 0);
    const Sim::Outcome outcome = watch.finish();
    QCOMPARE(outcome.code, 5);
    QVERIFY(outcome.err.contains(QStringLiteral("no device is on the system bus; run \"govd-sim "
                                                "device\"")));
}

void TestSimWatch::endsWithItsReader()
{
    Sim device;
    QVERIFY(device.startDevice());
    Sim watch;
    watch.startShell(QStringLiteral("$SIM status --watch | head -n 1; echo ${PIPESTATUS[0]}"));
    QVERIFY(watch.waitForOut(QStringLiteral("Device")));
    QCOMPARE(Sim::run(QStringLiteral("launch camera")).code, 0);
    QCOMPARE(Sim::run(QStringLiteral("launch clock")).code, 0);
    QCOMPARE(watch.finish().out, QStringLiteral("Device\n0\n"));
}

QTEST_GUILESS_MAIN(TestSimWatch)
#include "tst_simwatch.moc"
