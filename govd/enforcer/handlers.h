// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_ENFORCER_HANDLERS_H
#define GOVD_ENFORCER_HANDLERS_H

#include "policyenforcementtask.h"

// The handlers, by family. tables.cpp assigns them to policies and routes.

// Marker files (markerfiles.cpp)
void markCamera(PolicyEnforcementTask task);
void markUserReport(PolicyEnforcementTask task);
void markDeveloperShell(PolicyEnforcementTask task);

// Applications that are running (termination.cpp)
void terminateBrowsers(PolicyEnforcementTask task);
void terminateMessages(PolicyEnforcementTask task);

// Applications that may be started (denylist.cpp)
void updateDenylist(PolicyEnforcementTask task);

// Connections to other devices (connectivity.cpp)
void switchUsbDevices(PolicyEnforcementTask task);
void disableRemoteAccess(PolicyEnforcementTask task);
void disableTethering(PolicyEnforcementTask task);

// USB modes (usbmodes.cpp)
void updateUsbModes(PolicyEnforcementTask task);

// Audio (microphone.cpp)
void switchMicrophone(PolicyEnforcementTask task);

// Removable storage (removablestorage.cpp)
void unmountRemovableStorage(PolicyEnforcementTask task);

#endif
