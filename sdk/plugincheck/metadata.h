// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_PLUGINCHECK_METADATA_H
#define GOVD_PLUGINCHECK_METADATA_H

class QFileInfo;
class QPluginLoader;
class Report;

/// Checks a library without running its code: whether it is a shared library, a plugin for this Qt,
/// and which interface it names. Returns whether it can be loaded.
bool checkMetaData(const QFileInfo &file, const QPluginLoader &loader, Report &report);

#endif
