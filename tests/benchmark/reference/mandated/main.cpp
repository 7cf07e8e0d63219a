// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "benchmark/reference/mandated/service.h"

#include <exception>
#include <iostream>
#include <stdexcept>

/// govd-reference-mandated SERVICE FILE [KEY...]
int main(int argc, char **argv)
{
    try {
        if (argc < 3)
            throw std::invalid_argument("SERVICE and FILE are needed");
        Service(argv[1], argv[2], std::vector<std::string>(argv + 3, argv + argc)).run();
    } catch (const std::exception &error) {
        std::cerr << "govd-reference-mandated: " << error.what() << std::endl;
        return 1;
    }
}
