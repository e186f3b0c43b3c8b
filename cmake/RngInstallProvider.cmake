# rng_install_provider(TARGET FOLDER): a target that installs the provider for OpenSSL, with the plug-in "unixdev", in
# that folder of the build.
function(rng_install_provider target folder)
  foreach(component IN ITEMS librngaggregator1 librngcombine1 rng-plugin-unixdev openssl-provider-rngaggregator)
    list(APPEND commands
      COMMAND ${CMAKE_COMMAND} --install ${PROJECT_BINARY_DIR} --prefix ${folder} --component ${component}
        >> ${folder}.log)
  endforeach()
  add_custom_target(${target}
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${folder} ${folder}.log
    ${commands}
    COMMENT "Installing the provider for OpenSSL")
  add_dependencies(${target} rngaggregator rngcombine rngunixdev rng_openssl_module rng-openssl-draw)
endfunction()
