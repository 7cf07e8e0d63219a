// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_PLUGINCHECK_PLUGINCHECK_H
#define GOVD_PLUGINCHECK_PLUGINCHECK_H

class QString;
class Report;

/// Loads the lock or access-switch plugin at @p path as the daemon does, and reports what is wrong
/// with it. Runs the plugin's code.
void checkPlugin(const QString &path, Report &report);

#endif
