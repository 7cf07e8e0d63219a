// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include <QtTest>

#include <fstream>
#include <pelloraaccesscontrol/accesscontrol.h>
#include <pwd.h>

namespace {

uid_t userId(const char *name)
{
    const passwd *user = getpwnam(name);
    if (!user)
        qFatal("no user %s", name);
    return user->pw_uid;
}

} // namespace

/// The users and groups are those of the sandbox.
class tst_AccessControl : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void membership_data();
    void membership();
    void manyGroups();
    void groupOfTwoNames();
    void largeGroup();
};

void tst_AccessControl::membership_data()
{
    QTest::addColumn<uid_t>("user");
    QTest::addColumn<QByteArray>("group");
    QTest::addColumn<bool>("expected");
    const auto row = [](const char *what, uid_t user, const char *group, bool expected) {
        QTest::newRow(what) << user << QByteArray(group) << expected;
    };
    row("supplementary", userId("mdm"), "pellora-mdm", true);
    row("primary", userId("agent"), "pellora-mdm", true);
    row("other group", userId("mdm"), "privileged", false);
    row("no member", userId("guest"), "pellora-mdm", false);
    row("root, no member", userId("root"), "pellora-mdm", false);
    row("root in its own", userId("root"), "root", true);
    row("letter case", userId("pretender"), "privileged", false);
    row("unknown group", userId("mdm"), "no-such-group", false);
    row("empty group", userId("mdm"), "", false);
    row("unknown user", 4000000000U, "pellora-mdm", false);
    row("unknown user, group of root", 4000000000U, "root", false);
}

void tst_AccessControl::membership()
{
    QFETCH(uid_t, user);
    QFETCH(QByteArray, group);
    QFETCH(bool, expected);
    QCOMPARE(pellora_access_control_hasgroup(user, group.constData()), expected);
}

void tst_AccessControl::manyGroups()
{
    std::ofstream groups("/etc/group", std::ios::app);
    for (int i = 0; i < 300; ++i)
        groups << "crowd" << i << ":x:" << 20000 + i << ":guest\n";
    groups.close();
    for (const char *group : {"crowd0", "crowd31", "crowd32", "crowd299"})
        QVERIFY(pellora_access_control_hasgroup(userId("guest"), group));
    QVERIFY(!pellora_access_control_hasgroup(userId("guest"), "crowd300"));
}

void tst_AccessControl::groupOfTwoNames()
{
    std::ofstream("/etc/group", std::ios::app) << "managers:x:7010:guest\n";
    QVERIFY(pellora_access_control_hasgroup(userId("guest"), "managers"));
    QVERIFY(pellora_access_control_hasgroup(userId("guest"), "pellora-mdm"));
    QVERIFY(!pellora_access_control_hasgroup(userId("deputy"), "pellora-mdm"));
}

void tst_AccessControl::largeGroup()
{
    // An entry that is larger than the first buffer of the look-up.
    std::ofstream groups("/etc/group", std::ios::app);
    groups << "multitude:x:21000:";
    for (int i = 0; i < 2000; ++i)
        groups << "member" << i << ',';
    groups << "guest\n";
    groups.close();
    QVERIFY(pellora_access_control_hasgroup(userId("guest"), "multitude"));
    QVERIFY(!pellora_access_control_hasgroup(userId("mdm"), "multitude"));
}

QTEST_APPLESS_MAIN(tst_AccessControl)
#include "tst_accesscontrol.moc"
