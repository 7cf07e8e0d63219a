// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "policyvalue.h"

// The class has a meta-object only, which is compiled into this file.
#include "moc_policyvalue.cpp"
