// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "switchplugin.h"

#include <QJsonArray>
#include <QThread>
#include <QTimer>

namespace {

QJsonObject switchesOf(const QJsonObject &state)
{
    return state.value(QLatin1String("switches")).toObject();
}

/// An integer becomes an int; JSON has only doubles.
QVariant valueFrom(const QJsonValue &value)
{
    return value.isDouble() ? QVariant(value.toInt()) : value.toVariant();
}

} // namespace

SwitchPlugin::SwitchPlugin()
{
    connect(&m_control, &Control::ordered, this, [this](const QJsonObject &order) {
        Q_EMIT keyValueChanged(order.value(QLatin1String("key")).toString(),
                               valueFrom(order.value(QLatin1String("value"))));
    });
}

QVariant SwitchPlugin::keyValue(const QString &key)
{
    const QJsonObject state = begin(QStringLiteral("keyValue"), key);
    const QJsonObject switches = switchesOf(state);
    if (!switches.contains(key))
        return state.value(QLatin1String("unknown")).toInt(-1);
    return valueFrom(switches.value(key).toObject().value(QLatin1String("value")));
}

int SwitchPlugin::setKeyValue(const QString &key, const QVariant &value)
{
    const QString arguments = key + QLatin1Char(' ') + value.toString();
    const QJsonObject state = begin(QStringLiteral("setKeyValue"), arguments);
    const QJsonObject switches = switchesOf(state);
    if (!switches.contains(key))
        return state.value(QLatin1String("unknown")).toInt(-1);

    const QJsonObject one = switches.value(key).toObject();
    const int result = one.value(QLatin1String("result")).toInt(0);
    if (result == 0) {
        keep(key, value);
        announce(one.value(QLatin1String("announce")).toString(), key, value);
    }
    return result;
}

QHash<QString, QList<int>> SwitchPlugin::keyPolicyTypes() const
{
    const QJsonObject switches = switchesOf(begin(QStringLiteral("keyPolicyTypes"), QString()));
    QHash<QString, QList<int>> table;
    for (auto it = switches.begin(); it != switches.end(); ++it) {
        QList<int> types;
        const QJsonArray numbers = it.value().toObject().value(QLatin1String("types")).toArray();
        for (const QJsonValue &number : numbers)
            types.append(number.toInt());
        table.insert(it.key(), types);
    }
    return table;
}

/// Records the call, waits while the state holds it, and returns the state.
QJsonObject SwitchPlugin::begin(const QString &operation, const QString &arguments) const
{
    m_control.note((operation + QLatin1Char(' ') + arguments).trimmed());
    QJsonObject state = m_control.state();
    bool noted = false;
    while (state.value(QLatin1String("hold")).toArray().contains(operation)) {
        if (!noted)
            m_control.note(QLatin1String("holding ") + operation);
        noted = true;
        QThread::msleep(1);
        state = m_control.state();
    }
    return state;
}

void SwitchPlugin::keep(const QString &key, const QVariant &value)
{
    QJsonObject state = m_control.state();
    QJsonObject switches = switchesOf(state);
    QJsonObject one = switches.value(key).toObject();
    one.insert(QStringLiteral("value"), QJsonValue::fromVariant(value));
    switches.insert(key, one);
    state.insert(QStringLiteral("switches"), switches);
    m_control.setState(state);
}

void SwitchPlugin::announce(const QString &when, const QString &key, const QVariant &value)
{
    if (when == QLatin1String("never"))
        return;
    if (when == QLatin1String("later"))
        QTimer::singleShot(0, this, [=] { Q_EMIT keyValueChanged(key, value); });
    else
        Q_EMIT keyValueChanged(key, value);
}
