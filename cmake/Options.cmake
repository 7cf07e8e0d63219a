# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause

# What every target of this project is compiled with.
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

# Position-independent executables where the tool chain can.
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)

# What has been compiled before is not compiled again. CCACHE_DISABLE=1 compiles all the same.
find_program(GOVD_CCACHE ccache)
if(GOVD_CCACHE AND NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${GOVD_CCACHE})
endif()
