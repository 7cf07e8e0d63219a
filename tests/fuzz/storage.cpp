// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause

// The partition manager, with a storage service that sends any replies and signals.
//
// An input is a number of lives of the service, each with a listing and then signals; see Choices.
#include "tests/fuzz/check.h"
#include "tests/fuzz/peer.h"
#include "tests/fuzz/randomvalue.h"

#include <QCoreApplication>

#include <systemsettings/partitionmanager.h>

#include <cerrno>

namespace {

constexpr char Service[] = "org.freedesktop.UDisks2";
constexpr char Root[] = "/org/freedesktop/UDisks2";
constexpr char ObjectManager[] = "org.freedesktop.DBus.ObjectManager";
constexpr char Properties[] = "org.freedesktop.DBus.Properties";
constexpr char Sentinel[] = "/org/freedesktop/UDisks2/block_devices/sentinel";

const QList<QByteArray> Paths{"/org/freedesktop/UDisks2/block_devices/a",
                              "/org/freedesktop/UDisks2/block_devices/b",
                              "/org/freedesktop/UDisks2/drives/c", "/", Sentinel};

const QList<QByteArray> Known = Paths
    + QList<QByteArray>{"org.freedesktop.UDisks2.Block",
                        "org.freedesktop.UDisks2.Filesystem",
                        "org.freedesktop.UDisks2.Drive",
                        "org.freedesktop.UDisks2.PartitionTable",
                        "Device",
                        "Drive",
                        "HintSystem",
                        "MountPoints",
                        "ConnectionBus",
                        "Vendor",
                        "Model",
                        "Removable",
                        "usb",
                        "sdio"};

/// The service from its appearance on the bus to its disappearance.
class Life
{
public:
    explicit Life(Choices &choices);

    /// Sends signals as the input says.
    void signalAnything();

    /// Announces a proper block device, as the real service would.
    void plugSentinel();

private:
    void answer(sd_bus_message *call);
    void fill(const Message &message, const char *usualSignature);

    Choices &m_choices;
    Peer m_peer;
    bool m_isListed = false;
};

Life::Life(Choices &choices)
    : m_choices(choices)
{
    m_peer.listen([this](sd_bus_message *message) { answer(message); });
    // The bus may still give the name to the previous connection.
    m_peer.takeName(Service);
    Peer::waitFor([this] { return m_isListed; }, "the manager to ask what there is");
}

void Life::answer(sd_bus_message *call)
{
    if (!sd_bus_message_get_member(call) || sd_bus_message_get_expect_reply(call) <= 0)
        return;
    const bool isListing = sd_bus_message_is_method_call(call, nullptr, "GetManagedObjects") > 0;
    m_isListed = m_isListed || isListing;
    if (m_choices.below(8) == 7) {
        sd_bus_reply_method_errno(call, EIO, nullptr);
        return;
    }
    const Message reply = Peer::reply(call);
    fill(reply, isListing ? "a{oa{sa{sv}}}" : "v");
    m_peer.send(reply);
}

void Life::fill(const Message &message, const char *usualSignature)
{
    const QByteArray signature =
        m_choices.below(8) == 6 ? RandomValue::signature(m_choices) : QByteArray(usualSignature);
    RandomValue::append(message.get(), signature, m_choices, Known);
}

void Life::signalAnything()
{
    for (int left = m_choices.below(16); left > 0; --left) {
        const int kind = m_choices.below(4);
        const QByteArray path = m_choices.among(Paths);
        Message signal;
        if (kind == 0) {
            signal = m_peer.signal(Root, ObjectManager, "InterfacesRemoved");
            fill(signal, "oas");
        } else if (kind == 1) {
            signal = m_peer.signal(path.constData(), Properties, "PropertiesChanged");
            fill(signal, "sa{sv}as");
        } else {
            signal = m_peer.signal(Root, ObjectManager, "InterfacesAdded");
            fill(signal, "oa{sa{sv}}");
        }
        m_peer.send(signal);
        QCoreApplication::processEvents();
    }
}

void Life::plugSentinel()
{
    const Message gone = m_peer.signal(Root, ObjectManager, "InterfacesRemoved");
    require(sd_bus_message_append(gone.get(), "oas", Sentinel, 3, Known.at(5).constData(),
                                  Known.at(6).constData(), Known.at(7).constData())
                >= 0,
            "no removal");
    m_peer.send(gone);
    const Message there = m_peer.signal(Root, ObjectManager, "InterfacesAdded");
    require(sd_bus_message_append(there.get(), "oa{sa{sv}}", Sentinel, 2, Known.at(5).constData(),
                                  1, "Drive", "o", "/", Known.at(6).constData(), 0)
                >= 0,
            "no block device");
    m_peer.send(there);
}

void checkPartitions(PartitionManager &manager)
{
    const auto all = manager.partitions(Partition::Any);
    const auto system = manager.partitions(Partition::System);
    const auto external = manager.partitions(Partition::External);
    require(all.size() == system.size() + external.size(), "a partition of no known kind");
    require(manager.partitions(Partition::Any | Partition::ExcludeParents).size() <= all.size(),
            "more partitions without parents than with them");
    bool hasSentinel = false;
    for (const Partition &partition : all) {
        hasSentinel = hasSentinel || partition.objectPath() == QLatin1String(Sentinel);
        require(partition.objectPath().startsWith(QLatin1Char('/')), "a partition without a path");
        require(partition.status() == Partition::Mounted || partition.mountPath().isEmpty(),
                "a partition that is mounted and is not");
        manager.unmount(partition, {});
    }
    require(hasSentinel, "a partition that was announced is not there");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    static QCoreApplication application(*argc, *argv);
    qInstallMessageHandler(ignoreMessage);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size)
{
    Choices choices(data, size);
    PartitionManager manager;
    bool isSeen = false;
    QObject::connect(&manager, &PartitionManager::partitionAdded, &manager,
                     [&isSeen](const Partition &partition) {
                         isSeen = isSeen || partition.objectPath() == QLatin1String(Sentinel);
                     });
    for (int lives = 1 + choices.below(2); lives > 0; --lives) {
        Life life(choices);
        life.signalAnything();
        isSeen = false;
        life.plugSentinel();
        Peer::waitFor([&isSeen] { return isSeen; }, "a good block device among bad ones");
        checkPartitions(manager);
    }
    return 0;
}
