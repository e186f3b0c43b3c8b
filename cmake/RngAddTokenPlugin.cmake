# rng_add_token_plugin(TARGET KIND kind URI "uri")
#
# Adds a plug-in that draws from PKCS#11 tokens, such as smart cards, for a kind that is a device. For example:
#
#   rng_add_token_plugin(my_token KIND Rutoken URI "pkcs11:manufacturer=Example%20Corp.?module-name=example")
#
# The URI (RFC 7512) selects the plug-in's tokens by any of the attributes manufacturer, model, serial and token (the
# label). Without any of these, it selects every token. The query attributes select the modules: module-path is the
# absolute path of a module's file; module-name is the name under which a module is registered with p11-kit. Without
# either, the plug-in uses all registered modules. Bytes other than letters, digits and -._~ are written as %XX. The
# plug-in asks for no PIN, so pin-value and pin-source are errors.
#
# The file name of the plug-in and its factory follow from the kind, as with rng_add_plugin. Needs p11-kit (in
# Debian: libp11-kit-dev and pkg-config) and a C++ compiler.
function(rng_add_token_plugin target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "KIND;URI" "")
  if(NOT arg_KIND OR NOT arg_URI OR arg_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "Write rng_add_token_plugin(TARGET KIND kind URI \"uri\"), with the quotes: a URI may contain semicolons.")
  endif()
  set(devices accord sobol JacartaGost Rutoken EsmartGost grandmaster biocore)
  rng_look_up_kind("${arg_KIND}" file factory)
  if(NOT arg_KIND IN_LIST devices)
    list(JOIN devices ", " devices)
    message(FATAL_ERROR "The kind \"${arg_KIND}\" is not a device. Choose from: ${devices}.")
  endif()
  rng_check_token_uri("${arg_URI}")
  find_package(PkgConfig QUIET)
  if(PKG_CONFIG_FOUND)
    pkg_check_modules(RNG_P11_KIT QUIET IMPORTED_TARGET p11-kit-1)
  endif()
  if(NOT TARGET PkgConfig::RNG_P11_KIT)
    message(FATAL_ERROR "A token plug-in needs p11-kit. In Debian, install libp11-kit-dev and pkg-config.")
  endif()

  set(kind ${arg_KIND})
  set(uri "${arg_URI}")
  set(plugin ${CMAKE_CURRENT_BINARY_DIR}/${target}.cpp)
  # A property, because the function is known in all directories, and a variable is not.
  get_property(folder GLOBAL PROPERTY RNG_TOKEN_SOURCES)
  configure_file(${folder}/plugin.cpp.in ${plugin} @ONLY)
  file(GLOB sources ${folder}/*.cpp ${folder}/pkcs11/*.cpp)
  rng_add_plugin_file(${target} ${file} ${factory} ${plugin} ${sources})
  target_include_directories(${target} PRIVATE ${folder})
  target_link_libraries(${target} PRIVATE PkgConfig::RNG_P11_KIT)
  target_compile_features(${target} PRIVATE cxx_std_17)
endfunction()

# rng_check_token_uri(URI): reports an error in the URI when the plug-in is built, rather than when no token matches.
function(rng_check_token_uri uri)
  if(NOT uri MATCHES "^pkcs11:([^?]*)([?]([^?]*))?$")
    message(FATAL_ERROR "The URI \"${uri}\" does not begin with \"pkcs11:\", or has more than one \"?\".")
  endif()
  set(path "${CMAKE_MATCH_1}")
  string(REPLACE "&" ";" query "${CMAKE_MATCH_3}")
  set(wrong "([^A-Za-z0-9._~%:@!$'()*+,=;?&/-]|%[^0-9A-Fa-f]|%.[^0-9A-Fa-f]|%.?$)")
  if(uri MATCHES "${wrong}")
    message(FATAL_ERROR
      "The URI \"${uri}\" contains \"${CMAKE_MATCH_1}\". Write special characters as %XX, in hexadecimal.")
  endif()
  if(uri MATCHES "%00")  # would end the text, and an attribute that begins with it would match all tokens
    message(FATAL_ERROR "The URI \"${uri}\" contains \"%00\". No text of a token does. Remove it.")
  endif()
  rng_check_token_attributes("${uri}" "manufacturer;model;serial;token" "${path}")
  rng_check_token_attributes("${uri}" "module-path;module-name" "${query}")
  if(query MATCHES "(^|;)module-path=" AND NOT query MATCHES "(^|;)module-path=(/|%2[Ff])")
    message(FATAL_ERROR "The module-path in the URI \"${uri}\" is not an absolute path. Begin it with \"/\".")
  endif()
endfunction()

# rng_check_token_attributes(URI NAMES ATTRIBUTES): each ATTRIBUTE has the form name=value, with one of the NAMES and a
# value that fits into the field of the token.
function(rng_check_token_attributes uri names attributes)
  set(longest_manufacturer 32)
  set(longest_model 16)
  set(longest_serial 16)
  set(longest_token 32)
  set(longest_module-path 4095)
  set(longest_module-name 255)
  set(seen)
  foreach(attribute IN LISTS attributes)
    string(REGEX REPLACE "=.*" "" name "${attribute}")
    if(NOT name IN_LIST names OR NOT attribute MATCHES "=.")
      list(JOIN names ", " names)
      message(FATAL_ERROR
        "The URI \"${uri}\" contains \"${attribute}\". Write name=value there, where name is one of: ${names}.")
    elseif(name IN_LIST seen)
      message(FATAL_ERROR "The URI \"${uri}\" contains ${name} twice. Remove one of them.")
    endif()
    list(APPEND seen ${name})
    string(REGEX REPLACE "^[^=]*=" "" value "${attribute}")
    string(REGEX REPLACE "%.." "x" value "${value}")
    string(LENGTH "${value}" length)
    if(length GREATER longest_${name})
      message(FATAL_ERROR
        "The URI \"${uri}\" contains \"${attribute}\". A value of ${name} has at most ${longest_${name}} bytes.")
    endif()
  endforeach()
endfunction()
