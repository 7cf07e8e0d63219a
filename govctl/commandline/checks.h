// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_CHECKS_H
#define GOVCTL_CHECKS_H

#include "verb.h"

/// Fails when an argument or an option's value of @p request is not of its kind.
Outcome checkRequest(const Request &request);

#endif
