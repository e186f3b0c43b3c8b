# rng_add_plugin(KIND SOURCES file...)
#
# Adds the plug-in of one kind of generator, for example rng_add_plugin(Rutoken SOURCES token.cpp). The
# result is a module with the file name under which the library searches for that kind. The target is
# named after the file, without "lib" and ".so", here rngrutoken. The sources define the kind's factory.
#
# The module exports only the factory, and GetRngReport where the sources define it, so that plug-ins
# in one process do not clash. A factory that is missing or hidden fails the build. So does an undefined
# function: the library opens plug-ins with lazy binding, so the process would terminate at the first
# call of that function. Nothing in the module prevents it from being unmapped when it is closed.
#
# Works with GNU ld, gold and lld.
function(rng_add_plugin kind)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" SOURCES)
  if(NOT arg_SOURCES OR arg_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "Write rng_add_plugin(KIND SOURCES file...), with at least one file.")
  endif()
  rng_look_up_kind("${kind}" file factory)
  rng_add_plugin_file(${file} ${file} ${factory} ${arg_SOURCES})
endfunction()

# rng_add_plugin_file(TARGET FILE FACTORY file...): the module FILE that exports the FACTORY.
function(rng_add_plugin_file target file factory)
  set(exports ${CMAKE_CURRENT_BINARY_DIR}/${target}.map)
  # A pattern, because lld rejects the plain name of a function that the plug-in does not define.
  file(CONFIGURE OUTPUT ${exports} CONTENT
    "{\n  global: ${factory}; GetRngRepor[t];\n  local: *;\n};\n")

  add_library(${target} MODULE ${ARGN})
  target_link_libraries(${target} PRIVATE RngAggregator::plugin)
  # GNU-unique symbols would prevent the module from being unmapped.
  target_compile_options(${target} PRIVATE $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-fno-gnu-unique>)
  target_link_options(${target} PRIVATE
    -Wl,--version-script=${exports}
    -Wl,-Bsymbolic-functions  # its own calls do not reach functions of other plug-ins
    -Wl,-z,defs,-z,now)
  set_target_properties(${target} PROPERTIES
    OUTPUT_NAME ${file}
    C_VISIBILITY_PRESET hidden
    CXX_VISIBILITY_PRESET hidden
    LINK_DEPENDS ${exports})
  if(TARGET rngaggregator)  # built in this project: put the plug-in where it searches
    get_target_property(folder rngaggregator LIBRARY_OUTPUT_DIRECTORY)
    if(folder)
      set_target_properties(${target} PROPERTIES LIBRARY_OUTPUT_DIRECTORY ${folder})
    endif()
  endif()
  add_custom_command(TARGET ${target} POST_BUILD VERBATIM
    COMMAND ${CMAKE_COMMAND} -D NM=${CMAKE_NM} -D FILE=$<TARGET_FILE:${target}> -D FACTORY=${factory}
      -P ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/RngCheckFactory.cmake)
  rng_keep_file_name(${target})
  get_property(languages GLOBAL PROPERTY ENABLED_LANGUAGES)
  if(CXX IN_LIST languages)
    target_compile_features(${target} PRIVATE cxx_std_11)  # which provider.h needs
  endif()
endfunction()

# rng_keep_file_name(TARGET): overrides what the project adds to the names of its own libraries.
function(rng_keep_file_name target)
  set_target_properties(${target} PROPERTIES PREFIX lib SUFFIX .so)
  foreach(configuration IN LISTS CMAKE_CONFIGURATION_TYPES CMAKE_BUILD_TYPE)
    string(TOUPPER ${configuration} configuration)
    set_target_properties(${target} PROPERTIES ${configuration}_POSTFIX "")
  endforeach()
endfunction()

# rng_look_up_kind(KIND TARGET FACTORY): sets the variables TARGET and FACTORY to the names for the kind.
function(rng_look_up_kind kind target_variable factory_variable)
  # Kind, file and factory names follow no rule, so each is written out.
  set(rows
    "bioqt       rngbioqt       GetBioQtRng"
    "unixx11     rngbiox11      GetBioX11Rng"
    "dsdr        rngdsdr        GetDsdrRng"
    "accord      rngaccord      GetAccordRng"
    "sobol       rngsobol       GetSobolRng"
    "JacartaGost rngjacartagost GetJacartaGostRng"
    "Rutoken     rngrutoken     GetRuTokenRng"
    "EsmartGost  rngesmartgost  GetEsmartGostRng"
    "biokbd      rngbiokb       GetBioKbRng"
    "unixdev     rngunixdev     GetUnixDevRng"
    "grandmaster rnggrandmaster GetGrandmasterRng"
    "biocore     rngbiocore     GetBioCoreRng")
  foreach(row IN LISTS rows)
    separate_arguments(fields UNIX_COMMAND "${row}")
    list(POP_FRONT fields known target factory)
    if(kind STREQUAL known)
      set(${target_variable} ${target} PARENT_SCOPE)
      set(${factory_variable} ${factory} PARENT_SCOPE)
      return()
    endif()
    list(APPEND kinds ${known})
  endforeach()
  list(JOIN kinds ", " kinds)
  message(FATAL_ERROR "There is no kind \"${kind}\" of generator. The kinds are: ${kinds}.")
endfunction()
