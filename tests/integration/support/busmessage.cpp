// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/busmessage.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace Support {

namespace {

BusMessage::Type typeOf(const QString &text)
{
    if (text == QLatin1String("method_call"))
        return BusMessage::Call;
    if (text == QLatin1String("method_return"))
        return BusMessage::Return;
    if (text == QLatin1String("error"))
        return BusMessage::Error;
    return BusMessage::Signal;
}

/// A variant is written as an object of its signature and its content.
QVariant contentOf(const QJsonValue &value)
{
    const QJsonObject object = value.toObject();
    const QJsonValue data = object.value(QLatin1String("data"));
    const bool isVariant =
        object.size() == 2 && object.contains(QLatin1String("type")) && !data.isUndefined();
    return isVariant ? contentOf(data) : value.toVariant();
}

} // namespace

BusMessage BusMessage::fromJson(const QByteArray &line)
{
    const QJsonObject object = QJsonDocument::fromJson(line).object();
    const auto text = [&object](const char *key) {
        return object.value(QLatin1String(key)).toString();
    };
    const auto number = [&object](const char *key) {
        return static_cast<quint32>(object.value(QLatin1String(key)).toDouble());
    };
    const QJsonObject payload = object.value(QLatin1String("payload")).toObject();

    BusMessage message;
    message.type = typeOf(text("type"));
    message.sender = text("sender");
    message.destination = text("destination");
    message.path = text("path");
    message.interface = text("interface");
    message.member = text("member");
    message.errorName = text("error_name");
    message.serial = number("cookie");
    message.replySerial = number("reply_cookie");
    message.signature = payload.value(QLatin1String("type")).toString();
    const QJsonArray values = payload.value(QLatin1String("data")).toArray();
    for (const QJsonValue &value : values)
        message.arguments.append(contentOf(value));
    return message;
}

bool BusMessage::isCallOf(const QString &method) const
{
    return type == Call && member == method;
}

bool BusMessage::isSignal(const QString &name) const
{
    return type == Signal && member == name;
}

bool BusMessage::answers(const BusMessage &call) const
{
    return (type == Return || type == Error) && replySerial == call.serial
        && destination == call.sender;
}

} // namespace Support
