# The headers that nearly every source includes, read once in a build and not once in a source.

# Off for what is not a test in builds that are to show that each source includes what it needs.
option(ZQ_PRECOMPILE_HEADERS "Precompile the standard headers for libraries and programs too" OFF)

set(ZQ_STANDARD_HEADERS
  <algorithm> <array> <atomic> <chrono> <condition_variable> <cstdint> <cstring> <filesystem> <fstream> <functional>
  <map> <memory> <mutex> <optional> <set> <span> <sstream> <string> <string_view> <thread> <utility> <vector>)

# zq_precompiled(NAME HEADER...) reads them once, for targets that reuse them.
function(zq_precompiled name)
  set(source "${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp")
  file(CONFIGURE OUTPUT "${source}" CONTENT "// What is precompiled needs a target, and a target a source.\n")
  add_library(${name} OBJECT "${source}")
  target_link_libraries(${name} PRIVATE zq_settings)
  target_precompile_headers(${name} PRIVATE ${ARGN})
endfunction()

# zq_precompile_headers(TARGET HEADER...) gives the target the standard headers, and its own with them.
function(zq_precompile_headers target)
  if(NOT ZQ_PRECOMPILE_HEADERS)
    return()
  endif()
  if(ARGN)
    target_precompile_headers(${target} PRIVATE ${ZQ_STANDARD_HEADERS} ${ARGN})
  else()
    if(NOT TARGET zq_precompiled_standard)
      zq_precompiled(zq_precompiled_standard ${ZQ_STANDARD_HEADERS})
    endif()
    target_precompile_headers(${target} REUSE_FROM zq_precompiled_standard)
  endif()
endfunction()

# zq_precompile_test_headers(TARGET) does so for an executable with tests, with GoogleTest's.
function(zq_precompile_test_headers target)
  if(NOT TARGET zq_precompiled_tests)
    zq_precompiled(zq_precompiled_tests ${ZQ_STANDARD_HEADERS} <gmock/gmock.h> <gtest/gtest.h>)
    target_link_libraries(zq_precompiled_tests PRIVATE GTest::gmock)
    # Compilers take only what was read with the options of the executables.
    set_target_properties(zq_precompiled_tests PROPERTIES POSITION_INDEPENDENT_CODE OFF)
    target_compile_options(zq_precompiled_tests PRIVATE -fPIE)
  endif()
  target_precompile_headers(${target} REUSE_FROM zq_precompiled_tests)
endfunction()
