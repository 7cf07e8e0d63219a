# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause

# Runs in CPack when the files of all packages are staged: compresses what Debian's policy wants
# compressed, and finds out what each package depends on.

# Compresses manual pages and changelogs, without the time stamp that differs between builds.
function(compress directory)
  file(GLOB_RECURSE files ${directory}/usr/share/man/* ${directory}/usr/share/doc/*/changelog)
  foreach(file IN LISTS files)
    execute_process(COMMAND gzip -9n ${file} COMMAND_ERROR_IS_FATAL ANY)
  endforeach()
endfunction()

# The programs and libraries below a directory.
function(find_binaries directory result)
  file(GLOB_RECURSE files ${directory}/*)
  set(binaries "")
  foreach(file IN LISTS files)
    if(NOT IS_SYMLINK ${file})
      file(READ ${file} magic LIMIT 4 HEX)
      if(magic STREQUAL "7f454c46")
        list(APPEND binaries ${file})
      endif()
    endif()
  endforeach()
  set(${result} ${binaries} PARENT_SCOPE)
endfunction()

# dpkg's tools look for libraries of this architecture.
if(CPACK_DEBIAN_PACKAGE_ARCHITECTURE)
  set(ENV{DEB_HOST_ARCH} ${CPACK_DEBIAN_PACKAGE_ARCHITECTURE})
endif()

# Calls dpkg-shlibdeps instead of CPack, which would not pass it the libraries of our other packages
# and would ignore a library that belongs to no package.
function(find_dependencies directory result)
  find_binaries(${directory} binaries)
  set(${result} "" PARENT_SCOPE)
  if(binaries)
    file(WRITE ${directory}.shlibdeps/debian/control "")
    file(MAKE_DIRECTORY ${directory}/DEBIAN) # dpkg-shlibdeps recognises a package's directory by it
    file(GLOB libraries ${CPACK_TEMPORARY_DIRECTORY}/*/usr/lib/*)
    list(TRANSFORM libraries PREPEND -l)
    execute_process(COMMAND dpkg-shlibdeps -L${CPACK_GOVD_SHLIBS} ${libraries} -O ${binaries}
      WORKING_DIRECTORY ${directory}.shlibdeps
      OUTPUT_VARIABLE output OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX REPLACE "^.*shlibs:Depends=" "" output "${output}")
    set(${result} "${output}" PARENT_SCOPE)
    file(REMOVE_RECURSE ${directory}.shlibdeps ${directory}/DEBIAN)
  endif()
endfunction()

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  set(directory ${CPACK_TEMPORARY_DIRECTORY}/${component})
  compress(${directory})
  find_dependencies(${directory} found)
  string(TOUPPER ${component} key)
  set(depends ${CPACK_DEBIAN_${key}_PACKAGE_DEPENDS} ${found})
  list(JOIN depends ", " CPACK_DEBIAN_${key}_PACKAGE_DEPENDS)
endforeach()
