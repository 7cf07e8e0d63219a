// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_PLUGINCHECK_SWITCHCHECK_H
#define GOVD_PLUGINCHECK_SWITCHCHECK_H

class QFileInfo;
class Report;

namespace Pellora {
class AccessSwitchPlugin;
}

/// Asks an access-switch plugin what the daemon would ask it, and judges the answers. No switch is
/// set: it could be the device's own.
void checkSwitches(Pellora::AccessSwitchPlugin &plugin, const QFileInfo &file, Report &report);

#endif
