// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/program/facts.h"

#include "commandline/text.h"
#include "simulator/program/applications.h"
#include "simulator/program/neighbours.h"

#include <algorithm>

namespace Simulator {
namespace {

const QString Yes = QStringLiteral("yes");
const QString No = QStringLiteral("no");
const QString Absent = QStringLiteral("absent");

void addStorage(Facts &facts, const QJsonArray &storage)
{
    for (const QJsonValue &medium : storage)
        facts[QStringLiteral("storage ") + medium[QStringLiteral("label")].toString()] =
            medium[QStringLiteral("mounted")].toBool() ? QStringLiteral("mounted")
                                                       : QStringLiteral("unmounted");
}

void addServices(Facts &facts, const QJsonArray &services)
{
    for (const QJsonValue &service : services) {
        const QString word = service[QStringLiteral("word")].toString();
        facts[QStringLiteral("service ") + word] =
            service[QStringLiteral("present")].toBool() ? QStringLiteral("present") : Absent;
        facts[QStringLiteral("fault ") + word] =
            service[QStringLiteral("fault")].toString().section(QLatin1Char(' '), 0, 0);
    }
}

void addSet(Facts &facts, const QString &word, const QJsonArray &members)
{
    for (const QJsonValue &member : members)
        facts[word + QLatin1Char(' ') + applicationWord(member.toString())] = Yes;
}

} // namespace

const QVector<FactRow> &factRows()
{
    const QStringList onOffs{QStringLiteral("on"), QStringLiteral("off")};
    const QStringList yesNo{Yes, No};
    const QString app = QStringLiteral("APP");
    const QString service = QStringLiteral("SERVICE");
    static const QVector<FactRow> rows{
        {QStringLiteral("camera"), {}, {}, onOffs, {}},
        {QStringLiteral("certified"), {}, {}, yesNo, {}},
        {QStringLiteral("denied"), app, applicationWords(), yesNo, No},
        {QStringLiteral("events"), {}, {}, {}, {}},
        {QStringLiteral("fault"),
         service,
         neighbourWords(),
         {QStringLiteral("none"), QStringLiteral("error"), QStringLiteral("silent"),
          QStringLiteral("slow"), QStringLiteral("wrong-type")},
         {}},
        {QStringLiteral("microphone"), {}, {}, onOffs, {}},
        {QStringLiteral("remote-access"), {}, {}, onOffs, {}},
        {QStringLiteral("running"), app, applicationWords(), yesNo, No},
        {QStringLiteral("service"),
         service,
         neighbourWords(),
         {QStringLiteral("present"), Absent},
         {}},
        {QStringLiteral("storage"),
         QStringLiteral("LABEL"),
         {},
         {QStringLiteral("mounted"), QStringLiteral("unmounted"), Absent},
         Absent},
        {QStringLiteral("tethering"), {}, {}, onOffs, {}},
        {QStringLiteral("usb"), {}, {}, onOffs, {}},
        {QStringLiteral("usb-mode"), QStringLiteral("MODE"), UsbModes::supportedModes(), yesNo, No},
    };
    return rows;
}

const FactRow *findFactRow(const QString &word)
{
    const auto found = std::find_if(factRows().begin(), factRows().end(),
                                    [&](const FactRow &row) { return row.word == word; });
    return found == factRows().end() ? nullptr : &*found;
}

Facts factsOf(const QJsonObject &state)
{
    Facts facts{
        {QStringLiteral("camera"), onOff(state[QStringLiteral("camera")].toBool())},
        {QStringLiteral("certified"), state[QStringLiteral("certified")].toBool() ? Yes : No},
        {QStringLiteral("events"), QString::number(state[QStringLiteral("eventCount")].toInt())},
        {QStringLiteral("microphone"), onOff(state[QStringLiteral("microphone")].toBool())},
        {QStringLiteral("remote-access"), onOff(state[QStringLiteral("remoteAccess")].toBool())},
        {QStringLiteral("tethering"), onOff(state[QStringLiteral("tethering")].toBool())},
        {QStringLiteral("usb"), onOff(state[QStringLiteral("usb")].toBool())},
    };
    addSet(facts, QStringLiteral("denied"), state[QStringLiteral("denylist")].toArray());
    addSet(facts, QStringLiteral("running"), state[QStringLiteral("running")].toArray());
    addSet(facts, QStringLiteral("usb-mode"), state[QStringLiteral("usbModes")].toArray());
    addStorage(facts, state[QStringLiteral("storage")].toArray());
    addServices(facts, state[QStringLiteral("services")].toArray());
    return facts;
}

QString valueOf(const Facts &facts, const QString &key)
{
    const FactRow *row = findFactRow(key.section(QLatin1Char(' '), 0, 0));
    return facts.value(key, row ? row->otherwise : QString());
}

QVector<Change> changesBetween(const Facts &before, const Facts &now)
{
    QStringList keys = before.keys() + now.keys();
    keys.removeDuplicates();
    keys.sort();
    QVector<Change> changes;
    for (const QString &key : keys) {
        const Change change{key, valueOf(before, key), valueOf(now, key)};
        if (change.before != change.now)
            changes.append(change);
    }
    return changes;
}

} // namespace Simulator
