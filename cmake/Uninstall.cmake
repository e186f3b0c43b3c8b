# Run in a build directory: removes the files that "cmake --install" installed from there, and the project's
# own directories if they are empty then. The settings stay.
file(STRINGS install_manifest.txt files)
foreach(file IN LISTS files)
  set(file $ENV{DESTDIR}${file})
  message(STATUS "Removing ${file}")
  file(REMOVE ${file})  # which is silent about a failure
  if(EXISTS ${file} OR IS_SYMLINK ${file})
    message(SEND_ERROR "${file} cannot be removed. Try as the user who installed it.")
  endif()
  cmake_path(GET file PARENT_PATH folder)
  set(status 0)
  while(status EQUAL 0 AND folder MATCHES "/[Rr]ng[Aa]ggregator(/|$)")
    execute_process(COMMAND rmdir ${folder} RESULT_VARIABLE status ERROR_QUIET)
    cmake_path(GET folder PARENT_PATH folder)
  endwhile()
endforeach()
