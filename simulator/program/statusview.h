// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_SIMULATOR_PROGRAM_STATUSVIEW_H
#define GOVD_SIMULATOR_PROGRAM_STATUSVIEW_H

#include "commandline/output.h"

namespace Simulator {

/// Draws the @p state of the device on one screen, in the colours of @p output.
QString drawStatus(const QJsonObject &state, const Output &output);

/// Draws the list of services in the @p state of the device.
QString drawServices(const QJsonObject &state, const Output &output);

} // namespace Simulator

#endif
