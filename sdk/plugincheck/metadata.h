// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_PLUGINCHECK_METADATA_H
#define GOVD_PLUGINCHECK_METADATA_H

class QFileInfo;
class QPluginLoader;
class Report;

/// Checks what can be seen of the library without running any of its code: whether it is one,
/// whether it is a plugin for this Qt, and which interface it names. Returns whether it is worth
/// loading.
bool checkMetaData(const QFileInfo &file, const QPluginLoader &loader, Report &report);

#endif
