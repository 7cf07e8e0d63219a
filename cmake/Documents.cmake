# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause

# Everything that is made of Markdown.
add_custom_target(documents ALL)

option(GOVD_MANUAL "Render the manual pages (needs lowdown)" ON)
if(GOVD_MANUAL)
  find_program(GOVD_LOWDOWN lowdown)
  if(NOT GOVD_LOWDOWN)
    message(FATAL_ERROR "lowdown is missing, which renders the manual pages. Install it, or leave the pages out with -DGOVD_MANUAL=OFF.")
  endif()
  file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/man)
endif()

# govd_manual_page(NAME.SECTION option...)
#
# Installs the manual page that docs/man/NAME.SECTION.md describes, with these options of install().
function(govd_manual_page page)
  if(GOVD_MANUAL)
    set(source ${PROJECT_SOURCE_DIR}/docs/man/${page}.md)
    set(output ${PROJECT_BINARY_DIR}/man/${page})
    set(render ${PROJECT_SOURCE_DIR}/scripts/docs)
    add_custom_command(OUTPUT ${output} COMMAND ${render} ${source} > ${output}
      DEPENDS ${source} ${render} ${PROJECT_SOURCE_DIR}/packaging/debian/changelog VERBATIM)
    add_custom_target(${page}.page DEPENDS ${output})
    add_dependencies(documents ${page}.page)
    string(REGEX MATCH "[1-8]$" section ${page})
    install(FILES ${output} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section} ${ARGN})
  endif()
endfunction()
