# Run by cpack once the files of each package are in a folder of that name. Adds what Debian requires beyond a
# plain installation.

set(debian ${CMAKE_CURRENT_LIST_DIR}/debian)

# run(PROGRAM ARGUMENT...): runs it in the parent of these folders and sets `output` to its output.
macro(run)
  execute_process(COMMAND ${ARGN} WORKING_DIRECTORY ${CPACK_TEMPORARY_DIRECTORY}
    OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
endmacro()

set(packages ${CPACK_COMPONENTS_ALL})
list(FILTER packages EXCLUDE REGEX "^debug-")
foreach(package IN LISTS packages)
  set(share ${CPACK_TEMPORARY_DIRECTORY}/${package}${CPACK_PACKAGING_INSTALL_PREFIX}/share)
  set(documents ${share}/doc/${package})
  if(EXISTS ${share}/doc/rngaggregator)
    file(RENAME ${share}/doc/rngaggregator ${documents})
  endif()
  if(EXISTS ${share}/zsh/site-functions)  # where Debian's zsh does not look
    file(RENAME ${share}/zsh/site-functions ${share}/zsh/vendor-completions)
  endif()

  # A package is never moved, and packagers write $DESTDIR before the folder for plug-ins.
  file(GLOB pkgconfig ${CPACK_TEMPORARY_DIRECTORY}/${package}${CPACK_PACKAGING_INSTALL_PREFIX}/lib/pkgconfig/*.pc)
  foreach(file IN LISTS pkgconfig)
    file(READ ${file} text)
    string(REPLACE "\${pcfiledir}/../.." ${CPACK_PACKAGING_INSTALL_PREFIX} text "${text}")
    string(REGEX REPLACE "^#[^\n]*\n" "" text "${text}")
    file(WRITE ${file} "${text}")
  endforeach()

  configure_file(${debian}/copyright ${documents}/copyright COPYONLY)
  configure_file(${debian}/changelog ${documents}/changelog.Debian COPYONLY)
  configure_file(${debian}/../../CHANGELOG.md ${documents}/changelog COPYONLY)
  string(REGEX REPLACE "^(rng-plugin)-.*" "\\1" overrides ${package})  # which all plug-ins share
  if(NOT EXISTS ${debian}/${overrides}.lintian-overrides)
    set(overrides package)  # which all others share
  endif()
  configure_file(${debian}/${overrides}.lintian-overrides ${share}/lintian/overrides/${package} COPYONLY)
  file(GLOB_RECURSE texts ${share}/man/* ${documents}/changelog*)
  run(gzip -9n ${texts})

  # Independent of the modes of the sources and the umask of the build.
  run(find ${share} -type f -exec chmod 644 {} +)
  run(find ${package} -type d -exec chmod 755 {} +)
endforeach()

# copy_debug_information(PACKAGE BINARY): copies it into the debug package of PACKAGE, to the path where debuggers
# look for the binary's build ID.
function(copy_debug_information package binary)
  run(readelf -nW ${binary})
  if(NOT output MATCHES "Build ID: ([0-9a-f][0-9a-f])([0-9a-f]+)")
    message(FATAL_ERROR "${binary} has no build ID: ${output}")
  endif()
  set(root ${CPACK_TEMPORARY_DIRECTORY}/debug-${package}${CPACK_PACKAGING_INSTALL_PREFIX})
  set(file ${root}/lib/debug/.build-id/${CMAKE_MATCH_1}/${CMAKE_MATCH_2}.debug)
  cmake_path(GET file PARENT_PATH folder)
  file(MAKE_DIRECTORY ${folder} ${root}/share/doc)
  run(objcopy --only-keep-debug --compress-debug-sections ${binary} ${file})
  file(CREATE_LINK ${package} ${root}/share/doc/${package}-dbgsym SYMBOLIC)
  run(find ${root} -type d -exec chmod 755 {} +)
  run(chmod 644 ${file})
endfunction()

# add_dependencies_of(PACKAGE BINARY...): adds the packages of the libraries that its binaries need. While those
# are looked up, a folder DEBIAN marks the folder of each package. (CPACK_DEBIAN_PACKAGE_SHLIBDEPS is not used: it
# also calls ldconfig from maintainer scripts, which the trigger makes unnecessary.)
macro(add_dependencies_of package)
  file(MAKE_DIRECTORY ${CPACK_TEMPORARY_DIRECTORY}/${package}/DEBIAN)
  run(dpkg-shlibdeps -O -Slibrngaggregator1 -Slibrngcombine1 -xlibrngaggregator1 ${ARGN})
  if(NOT output MATCHES "^shlibs:Depends=(.+)\n$")
    message(FATAL_ERROR "unexpected output of dpkg-shlibdeps for ${package}: ${output}")
  endif()
  string(TOUPPER ${package} PACKAGE)
  set(depends ${CPACK_DEBIAN_${PACKAGE}_PACKAGE_DEPENDS} ${CMAKE_MATCH_1})
  list(JOIN depends ", " CPACK_DEBIAN_${PACKAGE}_PACKAGE_DEPENDS)
endmacro()

file(COPY ${CPACK_DEBIAN_LIBRNGAGGREGATOR1_PACKAGE_CONTROL_EXTRA}
  DESTINATION ${CPACK_TEMPORARY_DIRECTORY}/librngaggregator1/DEBIAN)
file(COPY ${CPACK_DEBIAN_LIBRNGCOMBINE1_PACKAGE_CONTROL_EXTRA}
  DESTINATION ${CPACK_TEMPORARY_DIRECTORY}/librngcombine1/DEBIAN)
file(WRITE ${CPACK_TEMPORARY_DIRECTORY}/debian/control "")
# Fails if the library and the list of symbols differ. The version includes the release, so that it is later than
# that of every symbol in the list; a missing symbol of exactly the given version would go unnoticed.
run(dpkg-gensymbols -c4 -plibrngaggregator1 -v${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}
  -Plibrngaggregator1 -Ilibrngaggregator1/DEBIAN/symbols -Osymbols)
foreach(package IN LISTS packages)
  set(prefix ${CPACK_TEMPORARY_DIRECTORY}/${package}${CPACK_PACKAGING_INSTALL_PREFIX})
  file(GLOB files ${prefix}/bin/* ${prefix}/lib/*.so ${prefix}/lib/*.so.* ${prefix}/lib/*/ossl-modules/*.so
    ${prefix}/libexec/rngaggregator/*)
  set(binaries)
  foreach(file IN LISTS files)
    if(IS_SYMLINK ${file})
      continue()
    endif()
    list(APPEND binaries ${file})
    if(NOT package STREQUAL rngctl)  # which is built without debug information
      copy_debug_information(${package} ${file})
    endif()
    run(strip --strip-unneeded --remove-section=.comment --remove-section=.note ${file})
  endforeach()
  if(binaries)
    add_dependencies_of(${package} ${binaries})
  endif()
endforeach()
foreach(package IN LISTS packages)
  file(REMOVE_RECURSE ${CPACK_TEMPORARY_DIRECTORY}/${package}/DEBIAN)
endforeach()
