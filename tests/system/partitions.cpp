// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
//
// Runs the library of partitions for tests from outside. Each line of the input is a command: a
// JSON array of its name, the number of a manager, which is made when it is new, and arguments. A
// line of JSON answers it, with lines about announcements in between.
#include <systemsettings/partitionmanager.h>

#include <QCoreApplication>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSocketNotifier>

#include <iostream>
#include <map>
#include <string>

#include <unistd.h>

namespace {

QHash<QString, Partition> known; ///< by object path, as listed or announced last

enum { Bare, Application, Loop } stage = Bare; ///< the objects beside the managers

void print(const QString &key, const QJsonValue &value, int number)
{
    const QJsonObject line{{key, value}, {QStringLiteral("manager"), number}};
    std::cout << QJsonDocument(line).toJson(QJsonDocument::Compact).constData() << std::endl;
}

QJsonObject describe(const Partition &partition)
{
    known[partition.objectPath()] = partition;
    return {{QStringLiteral("path"), partition.objectPath()},
            {QStringLiteral("device"), partition.devicePath()},
            {QStringLiteral("place"), partition.mountPath()},
            {QStringLiteral("drive"), QJsonObject::fromVariantMap(partition.drive())},
            {QStringLiteral("type"), partition.storageType()},
            {QStringLiteral("status"), partition.status()}};
}

/// A manager whose announcements are printed.
struct Manager
{
    explicit Manager(int number)
    {
        const auto tell = [=](const Partition &partition) {
            print(QStringLiteral("announced"), describe(partition), number);
            if (isUnmounting && partition.status() == Partition::Mounted
                && !manager.partitions(Partition::Any).isEmpty())
                manager.unmount(partition, {});
        };
        QObject::connect(&manager, &PartitionManager::partitionAdded, &manager, tell);
    }

    PartitionManager manager;
    bool isUnmounting = false; ///< unmounts at once what it announces as mounted
};

/// The managers by number. Those that exist at the end outlive the application object.
std::map<int, Manager> managers;
const bool isFirstOlderThanMain = managers.try_emplace(0, 0).second;

QJsonValue execute(const std::string &name, int number, const QJsonArray &arguments)
{
    Manager &own = managers.try_emplace(number, number).first->second;
    if (name == "application") {
        stage = Application;
    } else if (name == "run") {
        stage = Loop;
    } else if (name == "events") {
        QCoreApplication::processEvents();
    } else if (name == "remove") {
        managers.erase(number);
    } else if (name == "unmounting") {
        own.isUnmounting = true;
    } else if (name == "unmount") {
        own.manager.unmount(known.value(arguments.at(0).toString()),
                            arguments.at(1).toObject().toVariantMap());
    } else if (name == "list") {
        QJsonArray found;
        for (const Partition &each :
             own.manager.partitions(Partition::StorageTypes(arguments.at(0).toInt())))
            found.append(describe(each));
        return found;
    }
    return QJsonValue();
}

/// Carries out the next command. False when there is none.
bool serve()
{
    std::string line;
    if (!std::getline(std::cin, line))
        return false;
    QJsonArray command = QJsonDocument::fromJson(QByteArray::fromStdString(line)).array();
    const std::string name = command.takeAt(0).toString().toStdString();
    const int number = command.takeAt(0).toInt();
    print(QStringLiteral("result"), execute(name, number, command), number);
    return true;
}

} // namespace

int main(int argc, char **argv)
{
    while (stage == Bare) {
        if (!serve())
            return 0;
    }
    QCoreApplication application(argc, argv);
    while (stage == Application) {
        if (!serve())
            return 0;
    }
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, [] {
        if (!serve())
            QCoreApplication::quit();
    });
    return QCoreApplication::exec();
}
