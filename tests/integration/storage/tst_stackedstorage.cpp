// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/devicetree.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/stick.h"
#include "support/watcheddaemon.h"

#include <QTest>

using Simulator::Storage;
using namespace Support;

namespace {

/// A device that is built on a stick: it is on no drive, and looks like a part of the system.
struct Upper
{
    /// Plugs it in, as the decrypted content of the stick or as a logical volume on it.
    void plug(Neighbour<Storage> &storage, const DeviceTree &tree, bool isEncrypted) const
    {
        tree.add(name, {bottom.id});
        storage.ask([&](Storage &service) {
            Simulator::Block block;
            block.id = name;
            block.isSystem = true;
            if (isEncrypted)
                block.encrypted = bottom.path();
            service.plug(block);
        });
    }

    void mount(Neighbour<Storage> &storage) const { asStick().mount(storage); }
    bool isMountedIn(Neighbour<Storage> &storage) const { return asStick().isMountedIn(storage); }
    QString unmountOrder() const { return asStick().unmountOrder(); }

    Stick bottom = {QStringLiteral("stick"), QStringLiteral("usb"), false, false, false};
    QString name = QStringLiteral("dm0");

private:
    Stick asStick() const
    {
        Stick stick;
        stick.id = name;
        return stick;
    }
};

} // namespace

/// Encrypted sticks and logical volumes. The kernel's device mapper, which not every machine has,
/// is replaced at both places where the daemon's library meets it: by what the storage service
/// tells, and by directories of the form of the kernel's.
class TestStackedStorage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void openedBefore_data() { addRows(); }
    void openedBefore();
    void openedWhileForbidden_data() { addRows(); }
    void openedWhileForbidden();
    void otherPoliciesLeaveItMounted_data() { addRows(); }
    void otherPoliciesLeaveItMounted();
    void partOfTheSystemStaysMounted_data() { addRows(); }
    void partOfTheSystemStaysMounted();
    void volumeOfTwoBusesObeysBothPolicies_data();
    void volumeOfTwoBusesObeysBothPolicies();

private:
    static void addRows()
    {
        QTest::addColumn<bool>("isEncrypted");
        QTest::newRow("decrypted") << true;
        QTest::newRow("logical volume") << false;
    }

    std::unique_ptr<Neighbour<Storage>> m_storage;
};

void TestStackedStorage::init()
{
    Files::reset();
    m_storage = std::make_unique<Neighbour<Storage>>();
    m_storage->appear();
}

void TestStackedStorage::openedBefore()
{
    QFETCH(bool, isEncrypted);
    const DeviceTree tree;
    const Upper upper;
    upper.bottom.plug(*m_storage);
    upper.plug(*m_storage, tree, isEncrypted);
    upper.mount(*m_storage);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QVERIFY(daemon.change(UsbStorage, false));

    QTRY_VERIFY(!upper.isMountedIn(*m_storage));
    QCOMPARE(daemon.calls(), QStringList(upper.unmountOrder()));
}

void TestStackedStorage::openedWhileForbidden()
{
    QFETCH(bool, isEncrypted);
    const DeviceTree tree;
    const Upper upper;
    upper.bottom.plug(*m_storage);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(daemon.change(UsbStorage, false));
    daemon.forget();

    upper.plug(*m_storage, tree, isEncrypted);
    upper.mount(*m_storage);

    QTRY_VERIFY(!upper.isMountedIn(*m_storage));
    QCOMPARE(daemon.calls(), QStringList(upper.unmountOrder()));
}

void TestStackedStorage::otherPoliciesLeaveItMounted()
{
    QFETCH(bool, isEncrypted);
    const DeviceTree tree;
    const Upper upper;
    upper.bottom.plug(*m_storage);
    upper.plug(*m_storage, tree, isEncrypted);
    upper.mount(*m_storage);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QVERIFY(daemon.change(MemoryCard, false));

    QCOMPARE(daemon.calls(), QStringList());
}

void TestStackedStorage::partOfTheSystemStaysMounted()
{
    QFETCH(bool, isEncrypted);
    const DeviceTree tree;
    Upper upper;
    upper.bottom.isSystem = true;
    upper.bottom.plug(*m_storage);
    upper.plug(*m_storage, tree, isEncrypted);
    upper.mount(*m_storage);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QVERIFY(daemon.change(UsbStorage, false));
    QVERIFY(daemon.change(MemoryCard, false));

    QCOMPARE(daemon.calls(), QStringList());
}

void TestStackedStorage::volumeOfTwoBusesObeysBothPolicies_data()
{
    QTest::addColumn<QString>("policy");
    QTest::newRow("card") << MemoryCard;
    QTest::newRow("USB") << UsbStorage;
}

void TestStackedStorage::volumeOfTwoBusesObeysBothPolicies()
{
    QFETCH(QString, policy);
    const DeviceTree tree;
    const Upper upper;
    upper.bottom.plug(*m_storage);
    const Stick card{QStringLiteral("card"), QStringLiteral("sdio"), false, false, false};
    card.plug(*m_storage);
    tree.add(QStringLiteral("dm1"), {card.id, upper.bottom.id});
    Upper volume;
    volume.name = QStringLiteral("dm1");
    m_storage->ask([&](Storage &service) {
        service.plug(Simulator::Block{volume.name, {}, true});
    });
    volume.mount(*m_storage);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QVERIFY(daemon.change(policy, false));

    QTRY_VERIFY(!volume.isMountedIn(*m_storage));
    QCOMPARE(daemon.calls(), QStringList(volume.unmountOrder()));
}

QTEST_GUILESS_MAIN(TestStackedStorage)
#include "tst_stackedstorage.moc"
