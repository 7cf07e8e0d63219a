// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "knownpolicies.h"

#include "text.h"
#include "usage.h"

#include <QHash>
#include <QMetaEnum>

#include <pellorapolicy/policyvalue.h>

namespace {

QMetaEnum enumeration()
{
    const QMetaObject &meta = Pellora::PolicyValue::staticMetaObject;
    return meta.enumerator(meta.indexOfEnumerator("PolicyType"));
}

/// Other words for the subject of a policy, given by its number, than its key has.
const QHash<QString, QVector<int>> &otherWords()
{
    static const QHash<QString, QVector<int>> words{
        {QStringLiteral("webcam"), {1}},        {QStringLiteral("photo"), {1}},
        {QStringLiteral("gps"), {2}},           {QStringLiteral("gnss"), {2}},
        {QStringLiteral("position"), {2}},      {QStringLiteral("bt"), {3}},
        {QStringLiteral("wifi"), {4}},          {QStringLiteral("wi-fi"), {4}},
        {QStringLiteral("wireless"), {4}},      {QStringLiteral("cellular"), {5}},
        {QStringLiteral("lte"), {5}},           {QStringLiteral("airplane"), {6}},
        {QStringLiteral("aeroplane"), {6}},     {QStringLiteral("hotspot"), {8}},
        {QStringLiteral("tethering"), {8, 16}}, {QStringLiteral("clock"), {12}},
        {QStringLiteral("timezone"), {12}},     {QStringLiteral("adb"), {13, 42}},
        {QStringLiteral("mtp"), {14}},          {QStringLiteral("otg"), {18}},
        {QStringLiteral("mic"), {20}},          {QStringLiteral("audio"), {20}},
        {QStringLiteral("screencast"), {22}},   {QStringLiteral("copy"), {23}},
        {QStringLiteral("paste"), {23}},        {QStringLiteral("ota"), {24}},
        {QStringLiteral("upgrade"), {24}},      {QStringLiteral("install"), {25, 26}},
        {QStringLiteral("apps"), {25, 26}},     {QStringLiteral("wipe"), {28}},
        {QStringLiteral("web"), {29}},          {QStringLiteral("sdcard"), {32}},
        {QStringLiteral("sd-card"), {32}},      {QStringLiteral("stick"), {33}},
        {QStringLiteral("pendrive"), {33}},     {QStringLiteral("phone"), {35}},
        {QStringLiteral("telephone"), {35}},    {QStringLiteral("sms"), {36}},
        {QStringLiteral("mms"), {36}},          {QStringLiteral("apn"), {37}},
        {QStringLiteral("pin"), {38}},          {QStringLiteral("root"), {39}},
        {QStringLiteral("sudo"), {39}},         {QStringLiteral("tls"), {40}},
        {QStringLiteral("ssh"), {42}},          {QStringLiteral("locale"), {43}},
        {QStringLiteral("biometrics"), {44}},
    };
    return words;
}

} // namespace

QStringList KnownPolicies::keys()
{
    const QMetaEnum policies = enumeration();
    QStringList result;
    for (int i = 0; i < policies.keyCount(); ++i) {
        if (policies.value(i) != 0)
            result.append(QString::fromLatin1(policies.key(i)));
    }
    return result;
}

int KnownPolicies::type(const QString &key)
{
    // QMetaEnum::keyToValue() would also accept scope-qualified names.
    return keys().contains(key) ? enumeration().keyToValue(key.toUtf8().constData()) : 0;
}

QString KnownPolicies::key(int type)
{
    const char *key = enumeration().valueToKey(type);
    return key ? QString::fromLatin1(key) : QString::number(type);
}

QStringList KnownPolicies::matching(const QString &pattern)
{
    return matching(QStringList{pattern});
}

QStringList KnownPolicies::matching(const QStringList &patterns)
{
    if (patterns.isEmpty())
        return keys();
    QStringList result;
    const QStringList all = keys();
    for (const QString &key : all) {
        if (matchesAny(patterns, key))
            result.append(key);
    }
    return result;
}

Failure unknownPolicy(const QString &key)
{
    Failure failure = unknownName(QStringLiteral("unknown-policy"), QStringLiteral("policy"),
                                  KnownPolicies::keys(), key,
                                  QStringLiteral("\"govctl list --keys\" names them"));
    QStringList meant;
    const auto allTypes = otherWords().value(key.toLower());
    for (const int type : allTypes)
        meant.append(KnownPolicies::key(type));
    if (meant.isEmpty())
        return failure;
    failure.nearest = meant + failure.nearest;
    failure.nearest.removeDuplicates();
    failure.message = QStringLiteral("unknown policy %1").arg(cited(key));
    return failure;
}
