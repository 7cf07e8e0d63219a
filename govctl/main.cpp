// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "program.h"

int main(int argc, char **argv)
{
    return runMain(argc, argv);
}
