// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/program/statusview.h"

#include "common/names.h"
#include "govctl/text.h"
#include "simulator/program/applications.h"
#include "simulator/program/neighbours.h"

#include <QJsonArray>

namespace Simulator {
namespace {

constexpr int LabelWidth = 16;

QString line(const QString &label, const QString &value)
{
    return QStringLiteral("  %1%2\n").arg(label, -LabelWidth).arg(value);
}

QString none(const Console &console)
{
    return console.paint(Console::Style::Faint, QStringLiteral("-"));
}

/// A block of lines below one label.
QString block(const QString &label, const QStringList &values, const Console &console)
{
    if (values.isEmpty())
        return line(label, none(console));
    QString text;
    for (const QString &value : values)
        text += line(text.isEmpty() ? label : QString(), value);
    return text;
}

QString paintedOnOff(const QJsonValue &value, const Console &console)
{
    return console.paint(value.toBool() ? Console::Style::Good : Console::Style::Bad,
                         onOff(value.toBool()));
}

QString words(const QJsonValue &list, const Console &console)
{
    QStringList result;
    for (const QJsonValue &word : list.toArray())
        result.append(printable(applicationWord(word.toString())));
    return result.isEmpty() ? none(console) : result.join(QStringLiteral(", "));
}

QStringList storageLines(const QJsonArray &storage, const Console &console)
{
    QStringList lines;
    for (const QJsonValue &medium : storage) {
        const QString place = medium[QStringLiteral("mounted")].toBool()
            ? console.paint(
                Console::Style::Good,
                Text::tr("mounted at %1").arg(medium[QStringLiteral("mountPoint")].toString()))
            : console.paint(Console::Style::Bad, Text::tr("not mounted"));
        lines.append(QStringLiteral("%1 (%2), %3")
                         .arg(medium[QStringLiteral("label")].toString(),
                              medium[QStringLiteral("kind")].toString(), place));
    }
    return lines;
}

QStringList eventLines(const QJsonArray &events)
{
    QStringList lines;
    for (const QJsonValue &event : events)
        lines.append(printable(event[QStringLiteral("text")].toString()));
    return lines;
}

QString serviceState(const QJsonValue &service, const Console &console)
{
    if (!service[QStringLiteral("present")].toBool())
        return console.paint(Console::Style::Bad, Text::tr("stopped"));
    const QString fault = service[QStringLiteral("fault")].toString();
    if (fault != QLatin1String("none"))
        return console.paint(Console::Style::Bad, Text::tr("fails: %1").arg(fault));
    return console.paint(Console::Style::Good, Text::tr("runs"));
}

/// The services that do not simply run.
QString troubles(const QJsonArray &services, const Console &console)
{
    QStringList parts;
    const QString runs = console.paint(Console::Style::Good, Text::tr("runs"));
    for (const QJsonValue &service : services) {
        const QString state = serviceState(service, console);
        if (state != runs)
            parts.append(service[QStringLiteral("word")].toString() + QLatin1Char(' ') + state);
    }
    return parts.isEmpty() ? console.paint(Console::Style::Good, Text::tr("all run"))
                           : parts.join(QStringLiteral(", "));
}

QString summaryOf(const QString &word)
{
    for (const NeighbourRow &row : neighbourRows()) {
        if (row.word == word)
            return row.summary;
    }
    return {};
}

} // namespace

QString drawStatus(const QJsonObject &state, const Console &console)
{
    const auto value = [&](const char *key) {
        return state.value(QLatin1String(key));
    };
    const auto onOffOf = [&](const char *key) {
        return paintedOnOff(value(key), console);
    };
    const QString marker = console.paint(Console::Style::Faint, Names::CameraMarker);
    const QString certified = value("certified").toBool() ? Text::tr("yes") : Text::tr("no");
    return console.paint(Console::Style::Strong, Text::tr("Device")) + QLatin1Char('\n')
        + line(Text::tr("camera"), onOffOf("camera") + QStringLiteral("  ") + marker)
        + line(Text::tr("microphone"), onOffOf("microphone"))
        + line(Text::tr("USB devices"), onOffOf("usb"))
        + line(Text::tr("USB modes"), words(value("usbModes"), console))
        + line(Text::tr("tethering"), onOffOf("tethering"))
        + line(Text::tr("remote access"), onOffOf("remoteAccess"))
        + line(Text::tr("certified"), certified)
        + line(Text::tr("denylist"), words(value("denylist"), console))
        + line(Text::tr("running"), words(value("running"), console))
        + block(Text::tr("storage"), storageLines(value("storage").toArray(), console), console)
        + line(Text::tr("services"), troubles(value("services").toArray(), console))
        + block(Text::tr("last events"), eventLines(value("events").toArray()), console);
}

QString drawServices(const QJsonObject &state, const Console &console)
{
    QString text;
    for (const QJsonValue &service : state.value(QStringLiteral("services")).toArray()) {
        const QString word = service[QStringLiteral("word")].toString();
        text += QStringLiteral("%1 %2  %3  %4\n")
                    .arg(word, -10)
                    .arg(service[QStringLiteral("name")].toString(), -26)
                    .arg(summaryOf(word), -50)
                    .arg(serviceState(service, console));
    }
    return text;
}

} // namespace Simulator
