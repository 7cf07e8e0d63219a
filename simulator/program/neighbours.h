// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_SIMULATOR_PROGRAM_NEIGHBOURS_H
#define GOVD_SIMULATOR_PROGRAM_NEIGHBOURS_H

#include "simulator/applicationsandbox.h"
#include "simulator/audiopolicy.h"
#include "simulator/developermode.h"
#include "simulator/deviceinformation.h"
#include "simulator/devicesentry.h"
#include "simulator/networktechnology.h"
#include "simulator/runtimemanager.h"
#include "simulator/storage.h"
#include "simulator/systemlogs.h"
#include "simulator/usbmodes.h"

namespace Simulator {

/// All services of the device.
struct Neighbours
{
    ApplicationSandbox sandbox;
    AudioPolicy audio;
    DeveloperMode developer;
    DeviceInformation info;
    DeviceSentry usb;
    NetworkTechnology network;
    RuntimeManager runtime;
    Storage storage;
    SystemLogs logs;
    UsbModes usbModes;
};

/// One service as the command line names it.
struct NeighbourRow
{
    QString word;
    QString summary;
    Service &(*in)(Neighbours &neighbours);
};

/// The services by their words, in alphabetical order.
const QVector<NeighbourRow> &neighbourRows();

QStringList neighbourWords();

} // namespace Simulator

#endif
