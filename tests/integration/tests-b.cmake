# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause

add_library(govd-test-observed STATIC
  support/borrowedsockets.cpp
  support/borrowedsockets.h
  support/effectiveuser.h
  support/groupmembership.h
  support/observeddaemon.cpp
  support/observeddaemon.h
  support/oddplugin.h
  support/openwatch.cpp
  support/openwatch.h
  support/texts.h
)
target_link_libraries(govd-test-observed PUBLIC govd-test-support govd-simulator)

add_subdirectory(oddplugins)

foreach(name IN ITEMS callerchecks callers changedcallers gonecallers governedreading governedwriting
    pluginloader switchannouncements switchsaving switchstart switchvaluekinds switchvalues
    switchwriting)
  govd_integration_test(tst_${name} tst_${name}.cpp)
  target_link_libraries(tst_${name} PRIVATE govd-test-observed)
endforeach()
add_dependencies(tst_pluginloader govd-odd-plugins)
