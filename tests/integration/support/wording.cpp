// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/wording.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace Support {

namespace {

QString json(const QVariantList &values)
{
    return QString::fromUtf8(
        QJsonDocument(QJsonArray::fromVariantList(values)).toJson(QJsonDocument::Compact));
}

QString plain(const QVariant &argument)
{
    return argument.canConvert<QString>() ? argument.toString()
                                          : argument.toStringList().join(QLatin1Char(','));
}

} // namespace

QString Wording::exact(const BusMessage &message)
{
    switch (message.type) {
    case BusMessage::Call:
        return QLatin1String("call ") + message.member + exact(message.arguments);
    case BusMessage::Signal:
        return QLatin1String("signal ") + message.member + exact(message.arguments);
    case BusMessage::Return:
        return QLatin1String("reply") + exact(message.arguments);
    case BusMessage::Error:
        return QLatin1String("error ") + message.errorName;
    }
    Q_UNREACHABLE();
}

QString Wording::exact(const QVariantList &arguments)
{
    QString text;
    for (const QVariant &argument : arguments) {
        const QString one = json({argument});
        text += QLatin1Char(' ') + one.mid(1, one.size() - 2);
    }
    return text;
}

QString Wording::plain(const BusMessage &message, const QString &caller)
{
    QStringList words;
    if (message.type == BusMessage::Return)
        words.append(QStringLiteral("return"));
    else if (message.type == BusMessage::Error)
        words = QStringList{QStringLiteral("error"), message.errorName};
    else
        words.append(message.member);
    for (const QVariant &argument : message.arguments) {
        const QString text = Support::plain(argument);
        words.append(!caller.isEmpty() && text == caller ? QStringLiteral("caller") : text);
    }
    return words.join(QLatin1Char(' '));
}

QString Wording::call(const QString &target, const QString &method, const QString &signature,
                      const QVariantList &arguments)
{
    return QStringList{target, method, signature, json(arguments)}.join(QLatin1Char(' '));
}

QString Wording::call(const BusMessage &message)
{
    const QStringList target{message.destination, message.path, message.interface};
    return call(target.join(QLatin1Char(' ')), message.member, message.signature,
                message.arguments);
}

} // namespace Support
