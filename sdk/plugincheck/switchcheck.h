// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_PLUGINCHECK_SWITCHCHECK_H
#define GOVD_PLUGINCHECK_SWITCHCHECK_H

class QFileInfo;
class Report;

namespace Pellora {
class AccessSwitchPlugin;
}

/// Calls the functions of an access-switch plugin as the daemon does, and reports results that are
/// wrong. Sets no switch, because that could change the device.
void checkSwitches(Pellora::AccessSwitchPlugin &plugin, const QFileInfo &file, Report &report);

#endif
