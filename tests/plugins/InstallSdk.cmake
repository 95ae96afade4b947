# Installs the build anew: cmake -DBUILD=folder -DPREFIX=folder -P
file(REMOVE_RECURSE "${PREFIX}")
execute_process(COMMAND "${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${PREFIX}" RESULT_VARIABLE result OUTPUT_QUIET)
if(result)
  message(FATAL_ERROR "cmake --install gave ${result}")
endif()
