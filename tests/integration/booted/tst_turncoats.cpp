// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "service.h"
#include "support/files.h"
#include "turncoat.h"

#include <QFile>
#include <QtTest>

#include <optional>

#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

using Support::Identity;
using Wire::Answer;

namespace {

const char Program[] = "/usr/local/bin/govd-test-cat";

constexpr int Attempts = 1000;

const Wire::Call CameraOff{"org.kvt.PolicyManager.Policy", "SetKeyValue", "CameraEnabled", true};

/// What executing the program makes of its caller.
struct Elevation
{
    mode_t mode;
    uid_t user;
    gid_t group;
};

gid_t privileged()
{
    const group *entry = getgrnam("privileged");
    return entry ? entry->gr_gid : 0;
}

void install(const Elevation &elevation)
{
    QFile::remove(QString::fromLatin1(Program));
    const bool isDone = QFile::copy(QStringLiteral("/bin/cat"), QString::fromLatin1(Program))
        && chown(Program, elevation.user, elevation.mode & S_ISGID ? elevation.group : 0) == 0
        && chmod(Program, elevation.mode) == 0;
    if (!isDone)
        qFatal("Cannot install %s", Program);
}

/// How many of so many attempts got @p answer; the daemon is not kept from answering at once.
int countAnswers(Answer answer)
{
    const Identity guest = Identity::of("guest");
    int count = 0;
    for (int i = 0; i < Attempts; ++i)
        count += Turncoat(guest, CameraOff, Program).answer() == answer;
    return count;
}

QString recorded()
{
    return Support::Files::values(QStringLiteral("/etc/policy/policy.conf"))
        .value(QStringLiteral("CameraEnabled"));
}

} // namespace

Q_DECLARE_METATYPE(Elevation)

/// Callers without rights who, as soon as they have sent their call, execute a program that has
/// them. The daemon looks at the process when it gets the call; the bus has looked before.
class TestTurncoats : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void daemonAloneIsDeceived_data();
    void daemonAloneIsDeceived();
    void busIsNotDeceivedWhileTheDaemonWaits_data();
    void busIsNotDeceivedWhileTheDaemonWaits();
    void daemonAloneIsDeceivedInARace_data();
    void daemonAloneIsDeceivedInARace();
    void busIsNeverDeceived_data();
    void busIsNeverDeceived();

private:
    static void addRows();
};

void TestTurncoats::init()
{
    Service::startFresh();
}

void TestTurncoats::addRows()
{
    const Identity guest = Identity::of("guest");
    QTest::addColumn<Elevation>("elevation");
    QTest::newRow("to the user root") << Elevation{S_ISUID | 0755, 0, guest.group};
    QTest::newRow("to the group privileged") << Elevation{S_ISGID | 0755, guest.user, privileged()};
}

void TestTurncoats::daemonAloneIsDeceived_data()
{
    addRows();
}

void TestTurncoats::daemonAloneIsDeceived()
{
    QFETCH(Elevation, elevation);
    install(elevation);
    const Service::OpenBus open;
    std::optional<Service::Pause> pause(std::in_place);
    Turncoat caller(Identity::of("guest"), CameraOff, Program);
    QVERIFY(caller.waitUntilTurned(elevation.user, elevation.group));

    pause.reset();

    QCOMPARE(caller.answer(), Answer::Good);
    QCOMPARE(recorded(), QStringLiteral("false"));
}

void TestTurncoats::busIsNotDeceivedWhileTheDaemonWaits_data()
{
    addRows();
}

void TestTurncoats::busIsNotDeceivedWhileTheDaemonWaits()
{
    QFETCH(Elevation, elevation);
    install(elevation);
    std::optional<Service::Pause> pause(std::in_place);
    Turncoat caller(Identity::of("guest"), CameraOff, Program);
    QVERIFY(caller.waitUntilTurned(elevation.user, elevation.group));

    pause.reset();

    QCOMPARE(caller.answer(), Answer::RefusedByBus);
    QCOMPARE(recorded(), QStringLiteral("true"));
}

void TestTurncoats::daemonAloneIsDeceivedInARace_data()
{
    addRows();
}

void TestTurncoats::daemonAloneIsDeceivedInARace()
{
    QFETCH(Elevation, elevation);
    install(elevation);
    const Service::OpenBus open;
    const int admitted = countAnswers(Answer::Good);
    qInfo("%d of %d admitted", admitted, Attempts);
    QVERIFY(admitted > 0);
}

void TestTurncoats::busIsNeverDeceived_data()
{
    addRows();
}

void TestTurncoats::busIsNeverDeceived()
{
    QFETCH(Elevation, elevation);
    install(elevation);
    QCOMPARE(countAnswers(Answer::RefusedByBus), Attempts);
    QCOMPARE(recorded(), QStringLiteral("true"));
}

QTEST_GUILESS_MAIN(TestTurncoats)
#include "tst_turncoats.moc"
