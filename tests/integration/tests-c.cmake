# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause

# Changes of policies: writing, saving, recording, handing on to the neighbours.
add_library(govd-test-watched STATIC
  support/blockedsystemlog.cpp
  support/blockedsystemlog.h
  support/busrelay.cpp
  support/busrelay.h
  support/watcheddaemon.cpp
  support/watcheddaemon.h
)
target_link_libraries(govd-test-watched PUBLIC govd-test-support govd-simulator)

function(govd_policy_test name)
  govd_integration_test(${name} ${ARGN})
  target_link_libraries(${name} PRIVATE govd-test-watched)
endfunction()

govd_policy_test(tst_policywrite tst_policywrite.cpp)
govd_policy_test(tst_writeorder tst_writeorder.cpp)
govd_policy_test(tst_policyswitches tst_policyswitches.cpp)
govd_policy_test(tst_valuekinds tst_valuekinds.cpp)
govd_policy_test(tst_policykeys tst_policykeys.cpp)
govd_policy_test(tst_persistence tst_persistence.cpp)
govd_policy_test(tst_savefailures tst_savefailures.cpp)
govd_policy_test(tst_audit tst_audit.cpp)
govd_policy_test(tst_markerfiles tst_markerfiles.cpp)
govd_policy_test(tst_developershell tst_developershell.cpp)
govd_policy_test(tst_servicediscovery tst_servicediscovery.cpp)
govd_policy_test(tst_dispatch tst_dispatch.cpp)
