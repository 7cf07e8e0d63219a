// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "partitionmanager.h"

#include "udisksclient.h"

#include <QCoreApplication>
#include <QEvent>

namespace {

/// Returns the client of all managers, which exists as long as one of them.
std::shared_ptr<UDisks::Client> sharedClient()
{
    static std::weak_ptr<UDisks::Client> known;
    auto client = known.expired() ? std::make_shared<UDisks::Client>() : known.lock();
    known = client;
    return client;
}

} // namespace

/// Begins to announce when the event loop runs.
struct PartitionManagerPrivate : public QObject
{
    explicit PartitionManagerPrivate(PartitionManager *manager)
        : m_manager(manager)
    {
        // An event waits in the thread's queue even when there is no application object yet. It is
        // of a kind of its own, because an application may deliver queued calls before its event
        // loop runs.
        QCoreApplication::postEvent(this, new QEvent(QEvent::User));
    }

    void customEvent(QEvent *) override
    {
        client->connectToBus();
        const QVector<Partition> earlier = client->announced(); // to other managers
        connect(client.get(), &UDisks::Client::partitionAdded, m_manager,
                &PartitionManager::partitionAdded);
        for (const Partition &partition : earlier)
            Q_EMIT m_manager->partitionAdded(partition);
    }

    const std::shared_ptr<UDisks::Client> client = sharedClient();

private:
    PartitionManager *m_manager;
};

PartitionManager::PartitionManager(QObject *parent)
    : QObject(parent)
    , m_data(std::make_unique<PartitionManagerPrivate>(this))
{
}

PartitionManager::~PartitionManager() = default;

QVector<Partition> PartitionManager::partitions(Partition::StorageTypes types) const
{
    return m_data->client->partitions(types);
}

void PartitionManager::unmount(const Partition &partition, const QVariantMap &options)
{
    if (!partition.objectPath().isEmpty())
        m_data->client->unmount(partition, options);
}
