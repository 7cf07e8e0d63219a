// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_PLUGINCHECK_PLUGINCHECK_H
#define GOVD_PLUGINCHECK_PLUGINCHECK_H

class QString;
class Report;

/// Loads the plugin at @p path as the daemon would, whichever of the two kinds it is, and reports
/// what is wrong with it. Runs the plugin's code.
void checkPlugin(const QString &path, Report &report);

#endif
