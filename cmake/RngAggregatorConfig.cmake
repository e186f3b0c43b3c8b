# RngAggregator::rngaggregator  the library, for hosts
# RngAggregator::plugin         the headers alone, for plug-ins
# rng_add_plugin                adds the plug-in of one kind of generator
include(${CMAKE_CURRENT_LIST_DIR}/RngAggregatorTargets.cmake)
include(${CMAKE_CURRENT_LIST_DIR}/RngAddPlugin.cmake)
