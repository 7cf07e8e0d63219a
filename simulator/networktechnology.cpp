// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/networktechnology.h"

#include <QDBusVariant>

namespace Simulator {
namespace {

const QLatin1String Path("/net/connman/technology/wifi");
const QLatin1String Technology("net.connman.Technology");

/// The properties that others may set; the rest only tells about the technology.
bool isWritable(const QString &property)
{
    static const QStringList writable{QStringLiteral("Powered"), QStringLiteral("Tethering"),
                                      QStringLiteral("TetheringIdentifier"),
                                      QStringLiteral("TetheringPassphrase")};
    return writable.contains(property);
}

Reply failure(const char *error, const QString &text)
{
    return Reply::failure(QStringLiteral("net.connman.Error.") + QLatin1String(error), text);
}

} // namespace

NetworkTechnology::NetworkTechnology()
    : Service(QStringLiteral("net.connman"))
    , m_properties{{QStringLiteral("Name"), QStringLiteral("WiFi")},
                   {QStringLiteral("Type"), QStringLiteral("wifi")},
                   {QStringLiteral("Powered"), true},
                   {QStringLiteral("Connected"), false},
                   {QStringLiteral("Tethering"), false},
                   {QStringLiteral("TetheringIdentifier"), QString()},
                   {QStringLiteral("TetheringPassphrase"), QString()}}
{
    const auto get = [this](const Call &) {
        return Reply::of({m_properties});
    };
    const auto set = [this](const Call &call) {
        return change(call.arguments.at(0).toString(), call.arguments.at(1));
    };
    objects().add(Path,
                  {Technology,
                   {{QStringLiteral("GetProperties"), {}, QStringLiteral("a{sv}"), get},
                    {QStringLiteral("SetProperty"), QStringLiteral("sv"), {}, set}},
                   {},
                   {{QStringLiteral("PropertyChanged"), QStringLiteral("sv")}}});
}

void NetworkTechnology::setTethering(bool isTethering)
{
    change(QStringLiteral("Tethering"), isTethering);
}

Reply NetworkTechnology::change(const QString &property, const QVariant &value)
{
    if (!isWritable(property))
        return failure("InvalidProperty", property + QStringLiteral(" cannot be set"));
    QVariant &current = m_properties[property];
    if (value.userType() != current.userType())
        return failure("InvalidArguments", property + QStringLiteral(" is of another type"));
    if (current != value) {
        current = value;
        sendSignal(Path, Technology, QStringLiteral("PropertyChanged"),
                   {property, QVariant::fromValue(QDBusVariant(value))});
        Q_EMIT changed();
    }
    return {};
}

} // namespace Simulator
