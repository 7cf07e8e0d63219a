// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "pellorapolicy/policyvalue.h"

// The class is all meta-object, which is compiled into this file.
#include "moc_policyvalue.cpp" // NOLINT(bugprone-suspicious-include): code that moc made
