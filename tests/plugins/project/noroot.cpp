// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include <QtGlobal>

// A library that loads, but offers no root object.
extern "C" Q_DECL_EXPORT int govdTestNothing();

int govdTestNothing()
{
    return 0;
}
