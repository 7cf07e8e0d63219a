# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause

# The three platform libraries, as the targets Platform::Policy, Platform::AccessControl and
# Platform::SystemSettings: the substitutes in platform/, or the ones installed in the system.
set(GOVD_PLATFORM substitute CACHE STRING "Where the platform libraries come from: substitute or system")
set_property(CACHE GOVD_PLATFORM PROPERTY STRINGS substitute system)

if(GOVD_PLATFORM STREQUAL "substitute")
  add_subdirectory(platform)
elseif(GOVD_PLATFORM STREQUAL "system")
  foreach(pair IN ITEMS Policy=pellorapolicy AccessControl=pelloraaccesscontrol
                        SystemSettings=systemsettings)
    string(REPLACE "=" ";" pair ${pair})
    list(GET pair 0 target)
    list(GET pair 1 module)
    pkg_check_modules(${module} REQUIRED IMPORTED_TARGET GLOBAL ${module})
    add_library(Platform::${target} ALIAS PkgConfig::${module})
  endforeach()
else()
  message(FATAL_ERROR "GOVD_PLATFORM is \"${GOVD_PLATFORM}\"; it must be substitute or system")
endif()
