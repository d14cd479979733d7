# cmake -DSOURCE=folder -DBUILD=folder -DTREE=folder -DNM=program -DGENERATOR=... -DBUILD_TYPE=... -DCOMPILER=...
#       -DFLAGS=... -DLIBDIR=lib -P BuildConsumer.cmake
# Builds the consumer with the installed tree and nothing else of this project.
cmake_minimum_required(VERSION 3.25)

file(REMOVE_RECURSE "${BUILD}")
execute_process(
  COMMAND "${CMAKE_COMMAND}" -S "${SOURCE}" -B "${BUILD}" -G "${GENERATOR}" "-DCMAKE_PREFIX_PATH=${TREE}"
          "-DCMAKE_BUILD_TYPE=${BUILD_TYPE}" "-DCMAKE_CXX_COMPILER=${COMPILER}" "-DCMAKE_CXX_FLAGS=${FLAGS}"
  OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
load_cache("${BUILD}" READ_WITH_PREFIX found_ zq_DIR)
if(NOT found_zq_DIR STREQUAL "${TREE}/${LIBDIR}/cmake/zq")
  message(FATAL_ERROR "the package was found in ${found_zq_DIR}")
endif()
execute_process(COMMAND "${CMAKE_COMMAND}" --build "${BUILD}" RESULT_VARIABLE status OUTPUT_VARIABLE output
                ERROR_VARIABLE output)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "${output}")
endif()

execute_process(COMMAND "${NM}" -D --defined-only "${BUILD}/shelf.zqd" OUTPUT_VARIABLE symbols
                COMMAND_ERROR_IS_FATAL ANY)
if(NOT symbols MATCHES "^[0-9a-f]+ T zqPluginInstance\n$")
  message(FATAL_ERROR "expected zqPluginInstance alone to be exported:\n${symbols}")
endif()
