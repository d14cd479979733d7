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

# Fifty programs with tests take the usual linker minutes. What people run is linked by that one all the same.
find_program(ZQ_LLD ld.lld)
if(ZQ_LLD AND CMAKE_BUILD_TYPE STREQUAL "Debug")
  add_link_options(-fuse-ld=lld)
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
