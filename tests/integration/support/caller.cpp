// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/caller.h"

#include "support/bus.h"

#include <QDBusVariant>
#include <QDataStream>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace Support {

namespace {

/// Arguments keep their exact types on the way to the other process.
QString packed(const QVariantList &arguments)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    for (const QVariant &argument : arguments) {
        const bool isVariant = argument.userType() == qMetaTypeId<QDBusVariant>();
        stream << isVariant << (isVariant ? argument.value<QDBusVariant>().variant() : argument);
    }
    return QString::fromLatin1(bytes.toBase64());
}

Reply replyFrom(const QByteArray &line)
{
    const QJsonObject object = QJsonDocument::fromJson(line).object();
    if (object.isEmpty())
        return {};
    return {true, object.value(QLatin1String("signature")).toString(),
            object.value(QLatin1String("arguments")).toArray().toVariantList(),
            object.value(QLatin1String("errorName")).toString(),
            object.value(QLatin1String("errorMessage")).toString()};
}

} // namespace

Caller::Caller(const Identity &identity)
    : m_identity(identity)
{
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
}

Caller::~Caller()
{
    m_process.kill();
    m_process.waitForFinished();
}

void Caller::setTimeout(int milliseconds)
{
    m_timeout = milliseconds;
}

void Caller::send(const QString &interface, const QString &method, const QVariantList &arguments)
{
    m_process.start(
        QStringLiteral(GOVD_TEST_CALLER),
        m_identity.toArguments()
            + QStringList{QString::number(m_timeout), interface, method, packed(arguments)});
    m_process.waitForStarted();
    m_processId = m_process.processId();
    m_busName = QString::fromLatin1(nextLine());
    if (m_busName.isEmpty())
        qFatal("A caller could not send its call");
}

Reply Caller::reply()
{
    return replyFrom(nextLine());
}

Reply Caller::call(const QString &interface, const QString &method, const QVariantList &arguments)
{
    send(interface, method, arguments);
    return reply();
}

Reply Caller::policy(const QString &key)
{
    return call(QStringLiteral("Policy"), QStringLiteral("KeyValue"), {key});
}

Reply Caller::setPolicy(const QString &key, const QVariant &value)
{
    return call(QStringLiteral("Policy"), QStringLiteral("SetKeyValue"),
                {key, QVariant::fromValue(QDBusVariant(value))});
}

Reply Caller::switchValue(const QString &key)
{
    return call(QStringLiteral("Switch"), QStringLiteral("KeyValue"), {key});
}

Reply Caller::setSwitch(const QString &key, const QVariant &value)
{
    return call(QStringLiteral("Switch"), QStringLiteral("SetKeyValue"),
                {key, QVariant::fromValue(QDBusVariant(value))});
}

void Caller::vanish()
{
    m_process.kill();
    m_process.waitForFinished();
    if (!Bus().waitForNoOwner(m_busName))
        qFatal("The bus does not notice that a caller has gone");
}

qint64 Caller::processId() const
{
    return m_processId;
}

QString Caller::busName() const
{
    return m_busName;
}

QByteArray Caller::nextLine()
{
    const bool there = waitFor(
        [this] { return m_process.canReadLine() || m_process.state() == QProcess::NotRunning; },
        m_timeout + Deadline);
    return there ? m_process.readLine().trimmed() : QByteArray();
}

} // namespace Support
