// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/program/neighbours.h"

#include "commandline/text.h"

namespace Simulator {

const QVector<NeighbourRow> &neighbourRows()
{
    using All = Neighbours;
    static const QVector<NeighbourRow> rows{
        {QStringLiteral("audio"), Text::tr("opens and closes the microphone"),
         [](All &all) -> Service & {
             return all.audio;
         }},
        {QStringLiteral("developer"), Text::tr("switches remote access for developers"),
         [](All &all) -> Service & {
             return all.developer;
         }},
        {QStringLiteral("info"), Text::tr("tells whether the system is certified"),
         [](All &all) -> Service & {
             return all.info;
         }},
        {QStringLiteral("logs"), Text::tr("keeps audit events"),
         [](All &all) -> Service & {
             return all.logs;
         }},
        {QStringLiteral("network"), Text::tr("shares the network connection over Wi-Fi"),
         [](All &all) -> Service & {
             return all.network;
         }},
        {QStringLiteral("runtime"), Text::tr("runs and terminates applications"),
         [](All &all) -> Service & {
             return all.runtime;
         }},
        {QStringLiteral("sandbox"), Text::tr("keeps applications on its denylist from starting"),
         [](All &all) -> Service & {
             return all.sandbox;
         }},
        {QStringLiteral("storage"), Text::tr("shows, mounts and unmounts storage"),
         [](All &all) -> Service & {
             return all.storage;
         }},
        {QStringLiteral("usb"), Text::tr("lets USB devices in or keeps them out"),
         [](All &all) -> Service & {
             return all.usb;
         }},
        {QStringLiteral("usbmodes"), Text::tr("offers the modes of a USB cable"),
         [](All &all) -> Service & {
             return all.usbModes;
         }},
    };
    return rows;
}

QStringList neighbourWords()
{
    QStringList words;
    for (const NeighbourRow &row : neighbourRows())
        words.append(row.word);
    return words;
}

} // namespace Simulator
