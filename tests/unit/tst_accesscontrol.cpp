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
    return user ? user->pw_uid : static_cast<uid_t>(-1);
}

} // namespace

/// The users and groups are those of the sandbox.
class tst_AccessControl : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void membership_data();
    void membership();
    void unknownUserIsNoMember();
    void manyGroups();
    void groupOfTwoNames();
    void largeGroup();
};

void tst_AccessControl::membership_data()
{
    QTest::addColumn<QByteArray>("user");
    QTest::addColumn<QByteArray>("group");
    QTest::addColumn<bool>("expected");
    QTest::newRow("supplementary") << QByteArray("mdm") << QByteArray("pellora-mdm") << true;
    QTest::newRow("primary") << QByteArray("agent") << QByteArray("pellora-mdm") << true;
    QTest::newRow("other group") << QByteArray("mdm") << QByteArray("privileged") << false;
    QTest::newRow("no member") << QByteArray("guest") << QByteArray("pellora-mdm") << false;
    QTest::newRow("root, no member") << QByteArray("root") << QByteArray("pellora-mdm") << false;
    QTest::newRow("root in its own") << QByteArray("root") << QByteArray("root") << true;
    QTest::newRow("letter case") << QByteArray("pretender") << QByteArray("privileged") << false;
    QTest::newRow("unknown group") << QByteArray("mdm") << QByteArray("no-such-group") << false;
    QTest::newRow("empty group") << QByteArray("mdm") << QByteArray("") << false;
}

void tst_AccessControl::membership()
{
    QFETCH(QByteArray, user);
    QFETCH(QByteArray, group);
    QFETCH(bool, expected);
    QVERIFY(userId(user.constData()) != static_cast<uid_t>(-1));
    QCOMPARE(pellora_access_control_hasgroup(userId(user.constData()), group.constData()),
             expected);
}

void tst_AccessControl::unknownUserIsNoMember()
{
    QVERIFY(!pellora_access_control_hasgroup(4000000000U, "pellora-mdm"));
    QVERIFY(!pellora_access_control_hasgroup(4000000000U, "root"));
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
