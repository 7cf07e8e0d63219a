// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "hostile/systemcalls.h"
#include "support/client.h"
#include "support/daemon.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/platformkeys.h"
#include "support/switchplugin.h"

#include <QDBusVariant>
#include <QtTest>

using namespace Support;

namespace {

const QString Vpn = QStringLiteral("VpnEnabled");
const QString Switch = QStringLiteral("lens");

QStringList filesLeft()
{
    return QDir(QStringLiteral("/etc/policy")).entryList(QDir::Files | QDir::Hidden);
}

void addFailures(const char *number, std::initializer_list<const char *> calls,
                 std::initializer_list<const char *> errors, const QString &path)
{
    QTest::addColumn<QStringList>("options");
    for (const char *call : calls) {
        for (const char *error : errors) {
            QTest::addRow("%s: %s", call, error) << SystemCalls::failing(
                QLatin1String(call), QLatin1String(number), QLatin1String(error), path);
        }
    }
}

} // namespace

/// System calls that fail while the daemon starts.
class TestFailingStart : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Files::reset(); }
    void unreadableFileIsNeverTakenForAMissingOne_data();
    void unreadableFileIsNeverTakenForAMissingOne();
    void unreadableSwitchFileIsNeverTakenForAMissingOne_data();
    void unreadableSwitchFileIsNeverTakenForAMissingOne();
    void whatCannotBeSavedHasNoValue_data();
    void whatCannotBeSavedHasNoValue();
    void oneFailureCostsOnePolicy_data();
    void oneFailureCostsOnePolicy();
};

void TestFailingStart::unreadableFileIsNeverTakenForAMissingOne_data()
{
    addFailures("1+", {"newfstatat", "statx", "access", "openat", "read"},
                {"EIO", "EACCES", "ENOMEM", "EMFILE"}, PolicyFile);
}

void TestFailingStart::unreadableFileIsNeverTakenForAMissingOne()
{
    QFETCH(QStringList, options);
    Files::write(PolicyFile, "[policy]\nCameraEnabled=false\nVpnEnabled=false\n");
    Files::write(QStringLiteral("/etc/policy/policy.d/seed.conf"),
                 "[policy]\nCameraEnabled=true\n");
    Daemon daemon;
    daemon.setWrapper(SystemCalls::wrapper(options));
    QVERIFY(daemon.start());
    Client client;
    if (!client.haveNoValue({Camera}))
        QCOMPARE(client.policy(Camera), QVariant(false));
    client.setPolicy(Vpn, false);
    QCOMPARE(Files::values(PolicyFile).value(Camera), No);
    QCOMPARE(Files::values(PolicyFile).value(Vpn), No);
}

void TestFailingStart::unreadableSwitchFileIsNeverTakenForAMissingOne_data()
{
    addFailures("1+", {"newfstatat", "statx", "access", "openat", "read"},
                {"EIO", "EACCES", "ENOMEM", "EMFILE"}, SwitchFile);
}

/// Whatever the plugin holds by itself: the seed must not overrule what was decided before.
void TestFailingStart::unreadableSwitchFileIsNeverTakenForAMissingOne()
{
    QFETCH(QStringList, options);
    SwitchPlugin plugin;
    plugin.setSwitch(Switch, {1}, false);
    plugin.setSwitch(QStringLiteral("other"), {}, true);
    Files::write(SwitchFile, "[policy]\nlens=false\nother=false\n");
    Files::write(QStringLiteral("/etc/policy/switch.d/seed.conf"), "[policy]\nlens=true\n");
    Daemon daemon;
    daemon.setWrapper(SystemCalls::wrapper(options));
    QVERIFY(daemon.start());
    Client client;
    QCOMPARE(client.switchValue(Switch), QVariant(false));
    QCOMPARE(client.policy(Camera), QVariant(false));
    client.call(QStringLiteral("Switch"), QStringLiteral("SetKeyValue"),
                {QStringLiteral("other"), QVariant::fromValue(QDBusVariant(false))});
    QCOMPARE(Files::read(SwitchFile), QByteArray("[policy]\nlens=false\nother=false\n"));
}

void TestFailingStart::whatCannotBeSavedHasNoValue_data()
{
    addFailures("1+", {"rename"}, {"ENOSPC", "EROFS", "EIO", "EACCES"}, {});
}

void TestFailingStart::whatCannotBeSavedHasNoValue()
{
    QFETCH(QStringList, options);
    Files::write(CameraMarker, {});
    Daemon daemon;
    daemon.setWrapper(SystemCalls::wrapper(options));
    QVERIFY(daemon.start());
    Client client;
    QVERIFY(client.haveNoValue(platformKeys()));
    QVERIFY(!QFile::exists(CameraMarker)); // enforced as off
    QVERIFY(!client.setPolicy(Camera, true));
    QVERIFY(client.haveNoValue({Camera}));
    QCOMPARE(filesLeft(), QStringList());
}

void TestFailingStart::oneFailureCostsOnePolicy_data()
{
    addFailures("2", {"rename"}, {"ENOSPC", "EROFS", "EIO", "EACCES"}, {});
}

void TestFailingStart::oneFailureCostsOnePolicy()
{
    QFETCH(QStringList, options);
    Files::write(CameraMarker, {});
    QStringList others = platformKeys();
    QCOMPARE(others.takeAt(1), Camera); // the second that is saved
    Daemon daemon;
    daemon.setWrapper(SystemCalls::wrapper(options));
    QVERIFY(daemon.start());
    Client client;
    QVERIFY(client.haveNoValue({Camera}));
    QVERIFY(!QFile::exists(CameraMarker));
    others.sort();
    QCOMPARE(QStringList(Files::values(PolicyFile).keys()), others); // a sorted map
    QCOMPARE(client.policy(Vpn), QVariant(true));
    QVERIFY(client.setPolicy(Camera, true));
    QVERIFY(QFile::exists(CameraMarker));
    QCOMPARE(filesLeft(), QStringList(QStringLiteral("policy.conf")));
}

QTEST_GUILESS_MAIN(TestFailingStart)
#include "tst_failingstart.moc"
