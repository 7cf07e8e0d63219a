// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "lockplugin.h"

#include <QCoreApplication>
#include <QJsonArray>

#include <thread>

LockPlugin::LockPlugin()
{
    connect(&m_control, &Control::ordered, this, &LockPlugin::obey);
}

QString LockPlugin::name()
{
    m_control.note(QStringLiteral("name"));
    return m_control.state().value(QLatin1String("name")).toString();
}

bool LockPlugin::policyIsLocked(const QString &policy)
{
    m_control.note(QLatin1String("policyIsLocked ") + policy);
    return m_control.state().value(QLatin1String("locked")).toArray().contains(policy);
}

QStringList LockPlugin::supportedPolicies()
{
    m_control.note(QStringLiteral("supportedPolicies"));
    const QJsonArray keys = m_control.state().value(QLatin1String("supported")).toArray();
    QStringList policies;
    for (const QJsonValue &key : keys)
        policies.append(key.toString());
    return policies;
}

void LockPlugin::obey(const QJsonObject &order)
{
    if (order.contains(QLatin1String("exit")))
        QCoreApplication::exit(order.value(QLatin1String("exit")).toInt());
    else
        announce(order);
}

void LockPlugin::announce(const QJsonObject &order)
{
    const auto emitChange = [this, &order] {
        Q_EMIT policyIsLockedChanged(order.value(QLatin1String("key")).toString(),
                                     order.value(QLatin1String("locked")).toBool());
    };
    if (order.value(QLatin1String("thread")).toBool())
        std::thread(emitChange).join();
    else
        emitChange();
}
