# Run by cpack for the finished packages: sets Installed-Size as dpkg-gencontrol does, files in whole KiB and every
# folder or link 1 KiB. CPack takes the sizes of folders from the file system, so the same sources would give
# different packages on another one.

macro(run)
  execute_process(${ARGN} OUTPUT_VARIABLE output OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
endmacro()

foreach(package IN LISTS CPACK_PACKAGE_FILES)
  set(root ${CPACK_TEMPORARY_DIRECTORY}/repacked)
  file(REMOVE_RECURSE ${root})
  run(COMMAND dpkg-deb --raw-extract ${package} ${root})
  run(COMMAND find ${root} -path ${root}/DEBIAN -prune -o -type f -printf "%s\n" -o -printf "1024\n"
    COMMAND awk "{ size += int(($1 + 1023) / 1024) } END { print size }")
  file(READ ${root}/DEBIAN/control control)
  string(REGEX REPLACE "Installed-Size: [0-9]+" "Installed-Size: ${output}" control "${control}")
  file(WRITE ${root}/DEBIAN/control "${control}")
  run(COMMAND dpkg-deb --root-owner-group -Z${CPACK_DEBIAN_COMPRESSION_TYPE} --build ${root} ${package})
endforeach()
file(REMOVE_RECURSE ${root})
