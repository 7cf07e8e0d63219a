# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause

# Start-up, configuration files, reads, and the interfaces on the bus.
add_library(govd-test-pathtaker MODULE pathtaker/pathtaker.cpp)
target_link_libraries(govd-test-pathtaker PRIVATE govd-plugin Qt5::DBus govd-options)
set_target_properties(govd-test-pathtaker PROPERTIES PREFIX "" OUTPUT_NAME pathtaker)

add_library(govd-test-clients STATIC
  support/buspolicy.cpp support/client.cpp support/neighbours.cpp support/openwatch.cpp)
target_link_libraries(govd-test-clients
  PUBLIC govd-test-support govd-simulator Platform::Policy Qt5::DBus govd-options)

# In the place of the platform's own library when the loader looks there first.
add_library(govd-test-otherplatform SHARED
  otherplatform/policyvalue.cpp
  otherplatform/policyvalue.h
  ${PROJECT_SOURCE_DIR}/platform/pellorapolicy/accessswitchplugin.cpp
  ${PROJECT_SOURCE_DIR}/platform/pellorapolicy/accessswitchplugin.h)
set_target_properties(govd-test-otherplatform PROPERTIES
  OUTPUT_NAME pellorapolicy VERSION 1.0.0 SOVERSION 1
  LIBRARY_OUTPUT_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/otherplatform)
target_include_directories(govd-test-otherplatform PRIVATE ${PROJECT_SOURCE_DIR}/platform)
target_link_libraries(govd-test-otherplatform PRIVATE Qt5::Core govd-options)

foreach(name IN ITEMS
    brokenconfiguration
    defaults
    fileformat
    interfaces
    otherplatform
    policyfiles
    policyreading
    registration
    registrationfailures
    replies
    startenforcement
    surroundings
    switchfiles
    switchsurface)
  govd_integration_test(tst_${name} tst_${name}.cpp)
  target_link_libraries(tst_${name} PRIVATE govd-test-clients)
endforeach()
target_compile_definitions(tst_registrationfailures PRIVATE
  GOVD_TEST_PATHTAKER="$<TARGET_FILE:govd-test-pathtaker>")
add_dependencies(tst_registrationfailures govd-test-pathtaker)
target_compile_definitions(tst_otherplatform PRIVATE
  GOVD_TEST_OTHERPLATFORM="$<TARGET_FILE_DIR:govd-test-otherplatform>")
add_dependencies(tst_otherplatform govd-test-otherplatform)
