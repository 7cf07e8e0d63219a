// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/program/statusview.h"

#include "commandline/text.h"
#include "names.h"
#include "simulator/program/applications.h"
#include "simulator/program/neighbours.h"

#include <QJsonArray>

namespace Simulator {
namespace {

constexpr int LabelWidth = 16;

QString line(const QString &label, const QString &value)
{
    return QStringLiteral("  %1%2\n").arg(label.leftJustified(LabelWidth), value);
}

QString none(const Output &output)
{
    return output.paint(Output::Style::Faint, QStringLiteral("-"));
}

/// A block of lines below one label.
QString block(const QString &label, const QStringList &values, const Output &output)
{
    if (values.isEmpty())
        return line(label, none(output));
    QString text;
    for (const QString &value : values)
        text += line(text.isEmpty() ? label : QString(), value);
    return text;
}

QString words(const QJsonValue &list, const Output &output)
{
    QStringList result;
    for (const QJsonValue &word : list.toArray())
        result.append(printable(applicationWord(word.toString())));
    return result.isEmpty() ? none(output) : result.join(QStringLiteral(", "));
}

QStringList storageLines(const QJsonArray &storage, const Output &output)
{
    QStringList lines;
    for (const QJsonValue &medium : storage) {
        const QString place = medium[QStringLiteral("mounted")].toBool()
            ? output.paint(
                Output::Style::Good,
                Text::tr("mounted at %1").arg(medium[QStringLiteral("mountPoint")].toString()))
            : output.paint(Output::Style::Bad, Text::tr("not mounted"));
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

QString serviceState(const QJsonValue &service, const Output &output)
{
    if (!service[QStringLiteral("present")].toBool())
        return output.paint(Output::Style::Bad, Text::tr("stopped"));
    const QString fault = service[QStringLiteral("fault")].toString();
    if (fault != QLatin1String("none"))
        return output.paint(Output::Style::Bad, Text::tr("fails: %1").arg(fault));
    return output.paint(Output::Style::Good, Text::tr("runs"));
}

/// The services that do not simply run.
QString troubles(const QJsonArray &services, const Output &output)
{
    QStringList parts;
    const QString runs = output.paint(Output::Style::Good, Text::tr("runs"));
    for (const QJsonValue &service : services) {
        const QString state = serviceState(service, output);
        if (state != runs)
            parts.append(service[QStringLiteral("word")].toString() + QLatin1Char(' ') + state);
    }
    return parts.isEmpty() ? output.paint(Output::Style::Good, Text::tr("all run"))
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

QString drawStatus(const QJsonObject &state, const Output &output)
{
    const auto value = [&](const char *key) {
        return state.value(QLatin1String(key));
    };
    const auto onOffOf = [&](const char *key) {
        return output.paint(value(key).toBool());
    };
    const QString marker = output.paint(Output::Style::Faint, Names::CameraMarker);
    const QString certified = value("certified").toBool() ? Text::tr("yes") : Text::tr("no");
    return output.paint(Output::Style::Strong, Text::tr("Device")) + QLatin1Char('\n')
        + line(Text::tr("camera"), onOffOf("camera") + QStringLiteral("  ") + marker)
        + line(Text::tr("microphone"), onOffOf("microphone"))
        + line(Text::tr("USB devices"), onOffOf("usb"))
        + line(Text::tr("USB modes"), words(value("usbModes"), output))
        + line(Text::tr("tethering"), onOffOf("tethering"))
        + line(Text::tr("remote access"), onOffOf("remoteAccess"))
        + line(Text::tr("certified"), certified)
        + line(Text::tr("denylist"), words(value("denylist"), output))
        + line(Text::tr("running"), words(value("running"), output))
        + block(Text::tr("storage"), storageLines(value("storage").toArray(), output), output)
        + line(Text::tr("services"), troubles(value("services").toArray(), output))
        + block(Text::tr("last events"), eventLines(value("events").toArray()), output);
}

QString drawServices(const QJsonObject &state, const Output &output)
{
    QString text;
    for (const QJsonValue &service : state.value(QStringLiteral("services")).toArray()) {
        const QString word = service[QStringLiteral("word")].toString();
        text += QStringLiteral("%1 %2  %3  %4\n")
                    .arg(word.leftJustified(10),
                         service[QStringLiteral("name")].toString().leftJustified(26),
                         summaryOf(word).leftJustified(50), serviceState(service, output));
    }
    return text;
}

} // namespace Simulator
