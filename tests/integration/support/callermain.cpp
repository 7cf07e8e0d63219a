// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusVariant>
#include <QDataStream>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QVector>

#include <cstdio>

#include <grp.h>
#include <unistd.h>

namespace {

/// Argument numbers of the command line.
enum Argument { User = 1, Group, Groups, Kind, Timeout, Interface, Method, Values, Count };

/// Becomes the given user. Real ids stay as they are when only the effective ones are asked for.
bool takeIdentity(const QStringList &arguments)
{
    QVector<gid_t> groups;
    const QStringList ids = arguments.at(Groups).split(QLatin1Char(','), Qt::SkipEmptyParts);
    for (const QString &id : ids)
        groups.append(id.toUInt());
    const bool all = arguments.at(Kind) == QLatin1String("all");
    const gid_t group = arguments.at(Group).toUInt();
    const uid_t user = arguments.at(User).toUInt();
    const gid_t sameGroup = static_cast<gid_t>(-1);
    const uid_t sameUser = static_cast<uid_t>(-1);

    return setgroups(static_cast<size_t>(groups.size()), groups.constData()) == 0
        && setresgid(all ? group : sameGroup, group, all ? group : sameGroup) == 0
        && setresuid(all ? user : sameUser, user, all ? user : sameUser) == 0;
}

QVariantList unpacked(const QString &text)
{
    QVariantList arguments;
    QDataStream stream(QByteArray::fromBase64(text.toLatin1()));
    while (!stream.atEnd()) {
        bool isVariant = false;
        QVariant value;
        stream >> isVariant >> value;
        arguments.append(isVariant ? QVariant::fromValue(QDBusVariant(value)) : value);
    }
    return arguments;
}

QJsonValue toJson(const QVariant &argument)
{
    if (argument.userType() == qMetaTypeId<QDBusVariant>())
        return toJson(argument.value<QDBusVariant>().variant());
    if (argument.userType() != qMetaTypeId<QDBusArgument>())
        return QJsonValue::fromVariant(argument);
    const auto container = argument.value<QDBusArgument>();
    return container.currentSignature() == QLatin1String("ai")
        ? QJsonArray::fromVariantList(
            QVariant::fromValue(qdbus_cast<QList<int>>(container)).value<QVariantList>())
        : QJsonArray::fromVariantList(qdbus_cast<QVariantList>(container));
}

void print(const QByteArray &line)
{
    std::puts(line.constData());
    std::fflush(stdout);
}

QByteArray describe(const QDBusMessage &reply)
{
    QJsonObject object;
    object.insert(QStringLiteral("signature"), reply.signature());
    if (reply.type() == QDBusMessage::ErrorMessage) {
        object.insert(QStringLiteral("errorName"), reply.errorName());
        object.insert(QStringLiteral("errorMessage"), reply.errorMessage());
    } else {
        QJsonArray values;
        const QVariantList arguments = reply.arguments();
        for (const QVariant &argument : arguments)
            values.append(toJson(argument));
        object.insert(QStringLiteral("arguments"), values);
    }
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

} // namespace

/// govd-test-caller USER GROUP GROUPS all|effective TIMEOUT INTERFACE METHOD VALUES
///
/// Takes an identity, connects to the system bus and calls the daemon. Prints its name on the bus
/// once the call is on its way, and later the reply.
int main(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    if (arguments.size() != Count || !takeIdentity(arguments))
        return 1;

    QCoreApplication::setSetuidAllowed(true); // two identities are what a test may ask for
    const QCoreApplication application(argc, argv);
    QDBusConnection bus =
        QDBusConnection::connectToBus(QDBusConnection::SystemBus, QStringLiteral("caller"));
    QDBusMessage message = QDBusMessage::createMethodCall(
        QStringLiteral("org.kvt.PolicyManager"), QStringLiteral("/org/kvt/PolicyManager"),
        QLatin1String("org.kvt.PolicyManager.") + arguments.at(Interface), arguments.at(Method));
    message.setArguments(unpacked(arguments.at(Values)));
    QDBusPendingCall pending = bus.asyncCall(message, arguments.at(Timeout).toInt());

    // The bus takes messages in order: its answer means that it has taken the call before, too.
    bus.interface()->isServiceRegistered(bus.baseService());
    print(bus.baseService().toLatin1());
    pending.waitForFinished();
    print(describe(pending.reply()));
    return 0;
}
