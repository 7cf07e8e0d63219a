// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_PLUGINCHECK_LOCKCHECK_H
#define GOVD_PLUGINCHECK_LOCKCHECK_H

class QFileInfo;
class Report;
class SourceRestriction;

/// Asks a lock plugin what the daemon would ask it, and judges the answers.
void checkLock(SourceRestriction &plugin, const QFileInfo &file, Report &report);

#endif
