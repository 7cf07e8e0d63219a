// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_BENCHMARK_REFERENCE_KEYFILE_H
#define GOVD_BENCHMARK_REFERENCE_KEYFILE_H

#include <map>
#include <string>

/// Loads the key file at @p path, sets @p key and writes the file anew. Throws std::runtime_error.
void saveKeyValue(const std::string &path, const std::string &key, bool value);

/// The booleans of the key file; empty when there is no file.
std::map<std::string, bool> loadValues(const std::string &path);

#endif
