# Language level, warnings, sanitizers and where built files go: the same for every target.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# Programs, the host library and the module lie in one folder: a program finds its module beside itself.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")

find_program(ZQ_CCACHE ccache)
if(ZQ_CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${ZQ_CCACHE}")
endif()

add_library(zq_settings INTERFACE)
target_compile_options(zq_settings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor
  -Woverloaded-virtual -Wold-style-cast -Wformat=2 -Werror
  # A unique symbol would pin the module in memory for the life of the process.
  $<$<CXX_COMPILER_ID:GNU>:-fno-gnu-unique>)
target_include_directories(zq_settings INTERFACE "${PROJECT_SOURCE_DIR}")

if(ZQ_SANITIZE)
  # g++ 12 sees uninitialised values in the instrumented standard library (std::regex) where there are none.
  add_compile_options(-fsanitize=${ZQ_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all
                      $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  add_link_options(-fsanitize=${ZQ_SANITIZE})
endif()

# The headers that nearly every source includes are read once a target. Off in builds that are to show that each
# source includes what it needs.
option(ZQ_PRECOMPILE_HEADERS "Precompile the standard headers, and GoogleTest for tests" OFF)
function(zq_precompile_headers target)
  if(ZQ_PRECOMPILE_HEADERS)
    target_precompile_headers(${target} PRIVATE
      <algorithm> <array> <atomic> <chrono> <condition_variable> <cstdint> <cstring> <filesystem> <fstream> <functional>
      <map> <memory> <mutex> <optional> <set> <span> <sstream> <string> <string_view> <thread> <utility> <vector> ${ARGN})
  endif()
endfunction()
