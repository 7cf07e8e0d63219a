// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "commandline/program.h"
#include "simulator/program/program.h"

int main(int argc, char **argv)
{
    return runMain(argc, argv, "govd-sim", Simulator::runProgram);
}
