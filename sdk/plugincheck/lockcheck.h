// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_PLUGINCHECK_LOCKCHECK_H
#define GOVD_PLUGINCHECK_LOCKCHECK_H

class QFileInfo;
class Report;
class SourceRestriction;

/// Calls the functions of a lock plugin as the daemon does, and reports results that are wrong.
void checkLock(SourceRestriction &plugin, const QFileInfo &file, Report &report);

#endif
