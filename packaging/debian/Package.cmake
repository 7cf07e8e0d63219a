# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause

# govd_package(NAME COMPONENT component SECTION section SUMMARY text DESCRIPTION text
#              [DEPENDS relation...] [RECOMMENDS relation...] [CONTROL file...] [FOR_ALL])
#
# Makes a package of the files installed as the component, with changelog and copyright, and with
# the lintian overrides in the file overrides/NAME if there is one. Without such a component in this
# build, no package is made. FOR_ALL makes a package for every architecture.
macro(govd_package name)
  cmake_parse_arguments(ARG "FOR_ALL" "COMPONENT;SECTION;SUMMARY;DESCRIPTION" "DEPENDS;RECOMMENDS;CONTROL" ${ARGN})
  get_cmake_property(components COMPONENTS)
  if(ARG_COMPONENT IN_LIST components)
    list(APPEND CPACK_COMPONENTS_ALL ${ARG_COMPONENT})
    string(TOUPPER ${ARG_COMPONENT} key)
    set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${name})
    set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${ARG_SECTION})
    if(ARG_FOR_ALL)
      set(CPACK_DEBIAN_${key}_PACKAGE_ARCHITECTURE all)
    endif()
    set(CPACK_DEBIAN_${key}_DESCRIPTION "${ARG_SUMMARY}\n${ARG_DESCRIPTION}")
    list(JOIN ARG_DEPENDS ", " CPACK_DEBIAN_${key}_PACKAGE_DEPENDS)
    list(JOIN ARG_RECOMMENDS ", " CPACK_DEBIAN_${key}_PACKAGE_RECOMMENDS)
    list(TRANSFORM ARG_CONTROL PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/
      REGEX "^[^/]" OUTPUT_VARIABLE CPACK_DEBIAN_${key}_PACKAGE_CONTROL_EXTRA)

    set(documentation ${CMAKE_INSTALL_DATADIR}/doc/${name})
    install(FILES changelog copyright DESTINATION ${documentation}
      COMPONENT ${ARG_COMPONENT} EXCLUDE_FROM_ALL)
    if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/overrides/${name})
      install(FILES overrides/${name} DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides
        COMPONENT ${ARG_COMPONENT} EXCLUDE_FROM_ALL)
    endif()
  endif()
endmacro()

# govd_platform_packages(LIBRARY text [package that the headers need])
#
# Makes the two packages of one platform substitute. Their names follow Debian's rules for the
# soname, and their version is lower than any of the platform's, so that the platform's own packages
# replace them in an ordinary upgrade.
macro(govd_platform_packages library text)
  govd_package(lib${library}1 COMPONENT ${library} SECTION libs
    SUMMARY "${text}"
    DESCRIPTION "Stands in for the library of the same name on machines that are no device of
the platform. Its own package takes the place of this one."
    CONTROL ${CMAKE_CURRENT_BINARY_DIR}/${library}/shlibs library/triggers)
  govd_package(lib${library}-dev COMPONENT ${library}-development SECTION libdevel
    SUMMARY "${text}, development files"
    DESCRIPTION "Headers, CMake package and pkg-config file of the library that stands in for
that of the platform. The platform's own package takes the place of this
one."
    DEPENDS "lib${library}1 (= ${CPACK_DEBIAN_PACKAGE_VERSION})" ${ARGN})
endmacro()
