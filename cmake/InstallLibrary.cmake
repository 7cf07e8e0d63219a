# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause

# govd_install_library(TARGET lib HEADERS h... NAME Package TARGET_NAME Lib DESCRIPTION text
#                      [REQUIRES pkg-config-module...])
#
# Installs one platform substitute as a library. The component <output name> holds what programs
# need to run: the library with its versioned names. The component <output name>-development holds
# what they need to build: the unversioned name of the library, its headers below
# include/<output name>/, a CMake package and a pkg-config file.
function(govd_install_library)
  cmake_parse_arguments(ARG "" "TARGET;NAME;TARGET_NAME;DESCRIPTION" "HEADERS;REQUIRES" ${ARGN})
  get_target_property(module ${ARG_TARGET} OUTPUT_NAME)
  set_target_properties(${ARG_TARGET} PROPERTIES EXPORT_NAME ${ARG_TARGET_NAME})

  install(TARGETS ${ARG_TARGET} EXPORT ${ARG_NAME}Targets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    COMPONENT ${module} NAMELINK_COMPONENT ${module}-development)
  install(FILES ${ARG_HEADERS} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${module}
    COMPONENT ${module}-development)
  install(EXPORT ${ARG_NAME}Targets NAMESPACE ${ARG_NAME}:: DESTINATION
    ${CMAKE_INSTALL_LIBDIR}/cmake/${ARG_NAME} COMPONENT ${module}-development)

  set(ARG_DEPENDENCIES "")
  if("${QT}Core" IN_LIST ARG_REQUIRES)
    set(ARG_DEPENDENCIES "find_dependency(${QT} COMPONENTS Core)")
  endif()
  configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/LibraryConfig.cmake.in
    ${CMAKE_CURRENT_BINARY_DIR}/${ARG_NAME}Config.cmake
    INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/${ARG_NAME})
  write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/${ARG_NAME}ConfigVersion.cmake
    VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
  install(FILES
    ${CMAKE_CURRENT_BINARY_DIR}/${ARG_NAME}Config.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/${ARG_NAME}ConfigVersion.cmake
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/${ARG_NAME} COMPONENT ${module}-development)

  string(JOIN " " requires ${ARG_REQUIRES})
  configure_file(${PROJECT_SOURCE_DIR}/cmake/library.pc.in
    ${CMAKE_CURRENT_BINARY_DIR}/${module}.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${module}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT ${module}-development)
endfunction()
