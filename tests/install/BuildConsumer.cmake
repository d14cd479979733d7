# cmake -DSOURCE=folder -DWORK=folder -DTREE=folder -DROOT=folder -DNM=program -DREADELF=program -DGENERATOR=...
#       -DMAKE_PROGRAM=program -DBUILD_TYPE=... -DCOMPILER=... -DFLAGS=... -DLIBRARIES=... -DLIBDIR=lib -P BuildConsumer.cmake
# Builds the example with the installed tree and nothing else of this project: it is copied away first, and no file
# of the sources in ROOT may be among those that the compiler read.
cmake_minimum_required(VERSION 3.25)

set(build "${WORK}/build")
file(REMOVE_RECURSE "${WORK}")
file(COPY "${SOURCE}/" DESTINATION "${WORK}/source")
execute_process(
  COMMAND "${CMAKE_COMMAND}" -S "${WORK}/source" -B "${build}" -G "${GENERATOR}" "-DCMAKE_PREFIX_PATH=${TREE}"
          "-DCMAKE_MAKE_PROGRAM=${MAKE_PROGRAM}" "-DCMAKE_BUILD_TYPE=${BUILD_TYPE}"
          "-DCMAKE_CXX_COMPILER=${COMPILER}" "-DCMAKE_CXX_FLAGS=${FLAGS}"
          "-DCMAKE_CXX_STANDARD_LIBRARIES=${LIBRARIES}"
          # The contract's headers are held to the same warnings as the example.
          -DCMAKE_NO_SYSTEM_FROM_IMPORTED=ON
  OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
load_cache("${build}" READ_WITH_PREFIX found_ zq_DIR)
if(NOT found_zq_DIR STREQUAL "${TREE}/${LIBDIR}/cmake/zq")
  message(FATAL_ERROR "the package was found in ${found_zq_DIR}")
endif()
execute_process(COMMAND "${CMAKE_COMMAND}" --build "${build}" RESULT_VARIABLE status OUTPUT_VARIABLE output
                ERROR_VARIABLE output)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "${output}")
endif()

if(GENERATOR STREQUAL "Ninja")
  execute_process(COMMAND "${MAKE_PROGRAM}" -C "${build}" -t deps OUTPUT_VARIABLE read COMMAND_ERROR_IS_FATAL ANY)
  if(NOT read MATCHES "include/zq/repository/MediaFileRepositoryBase.h")
    message(FATAL_ERROR "what the compiler read is not known:\n${read}")
  endif()
  foreach(folder apps examples framequarry host plugin repository tarn7 tests/support)
    string(FIND "${read}" "${ROOT}/${folder}/" position)
    if(NOT position EQUAL -1)
      string(SUBSTRING "${read}" ${position} 200 line)
      message(SEND_ERROR "the example was built with a file of the sources: ${line}")
    endif()
  endforeach()
endif()

execute_process(COMMAND "${NM}" -D --defined-only "${build}/folder.zqd" OUTPUT_VARIABLE symbols
                COMMAND_ERROR_IS_FATAL ANY)
if(NOT symbols MATCHES "^[0-9a-f]+ T zqPluginInstance\n$")
  message(FATAL_ERROR "expected zqPluginInstance alone to be exported:\n${symbols}")
endif()

# Of this project the module needs the host library alone.
execute_process(COMMAND "${READELF}" -d -W "${build}/folder.zqd" OUTPUT_VARIABLE entries COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "lib[a-z_+]+\\.so[.0-9]*" needed "${entries}")
list(FILTER needed EXCLUDE REGEX "^lib(stdc\\+\\+|gcc_s|c|m|asan|ubsan|tsan)\\.so")
if(NOT needed STREQUAL "libzqhost.so.0")
  message(FATAL_ERROR "the module needs ${needed}")
endif()
