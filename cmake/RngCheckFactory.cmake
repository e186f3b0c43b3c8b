# Run after a plug-in is linked: fails unless FILE exports FACTORY. NM lists the symbols. Linkers do not
# agree on an option for this, and none of them notices a factory that is hidden.
execute_process(
  COMMAND ${NM} --dynamic --defined-only ${FILE}
  OUTPUT_VARIABLE symbols
  COMMAND_ERROR_IS_FATAL ANY)
if(NOT symbols MATCHES " [TWi] ${FACTORY}\n")
  cmake_path(GET FILE FILENAME name)
  message(FATAL_ERROR "${name} does not export its factory ${FACTORY}, so no program can load it. "
    "Define the function with exactly this name as extern \"C\" and with default visibility, as "
    "<rngaggregator/provider.h> declares it.")
endif()
