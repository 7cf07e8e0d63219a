# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause

# Compiler settings of every target.
set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_AUTOMOC ON)

add_library(govd-options INTERFACE)
target_compile_options(govd-options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-qual
  -Wformat=2 -Wundef -Wextra-semi)
target_compile_definitions(govd-options INTERFACE
  QT_NO_CAST_FROM_ASCII
  QT_NO_CAST_TO_ASCII
  QT_NO_KEYWORDS # GLib uses "signals" and "slots" as names
  QT_NO_FOREACH
  QT_DISABLE_DEPRECATED_BEFORE=0x050F00)

# CMAKE_POSITION_INDEPENDENT_CODE applies to executables only after this check.
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)

# Results of earlier compilations are reused. CCACHE_DISABLE=1 switches that off.
find_program(GOVD_CCACHE ccache)
if(GOVD_CCACHE AND NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${GOVD_CCACHE})
endif()
