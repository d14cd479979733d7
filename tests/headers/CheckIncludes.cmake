# cmake -DROOT=folder -P CheckIncludes.cmake
# Fails when a header or source of the lower floors includes anything but the standard library, its own floor and
# the floors below it. Only the sources of plugin/platform may reach for the operating system.
cmake_minimum_required(VERSION 3.25)

# What each floor may include. host/engine is behind the contract and open to nobody here.
set(floors host repository tarn7 framequarry plugin)
set(below_host host)
set(below_repository host repository)
set(below_tarn7 host repository tarn7)
set(below_framequarry host repository framequarry)
set(below_plugin host repository tarn7 framequarry plugin)
# Made by the build, with compiled-in values of the services.
set(generated ServiceValues.h)

set(standard
  algorithm any array atomic barrier bit bitset cassert cctype cerrno cfenv cfloat charconv chrono cinttypes
  climits clocale cmath codecvt compare complex concepts condition_variable coroutine csetjmp csignal cstdarg
  cstddef cstdint cstdio cstdlib cstring ctime cuchar cwchar cwctype deque exception execution filesystem
  forward_list fstream functional future initializer_list iomanip ios iosfwd iostream istream iterator latch
  limits list locale map memory memory_resource mutex new numbers numeric optional ostream queue random ranges
  ratio regex scoped_allocator semaphore set shared_mutex source_location span sstream stack stdexcept
  stop_token streambuf string string_view strstream syncstream system_error thread tuple type_traits typeindex
  typeinfo unordered_map unordered_set utility valarray variant vector version)

set(offences)
set(seen 0)
foreach(floor IN LISTS floors)
  file(GLOB_RECURSE files RELATIVE "${ROOT}" "${ROOT}/${floor}/*.h" "${ROOT}/${floor}/*.cpp")
  list(FILTER files EXCLUDE REGEX "^host/engine/")
  list(SORT files)
  foreach(file IN LISTS files)
    math(EXPR seen "${seen} + 1")
    file(STRINGS "${ROOT}/${file}" lines REGEX "^[ \t]*#[ \t]*include")
    foreach(line IN LISTS lines)
      set(allowed FALSE)
      if(line MATCHES "include[ \t]*<([^>]*)>")
        set(included "${CMAKE_MATCH_1}")
        if(included IN_LIST standard OR file MATCHES "^plugin/platform/[^/]*[.]cpp$")
          set(allowed TRUE)
        endif()
      elseif(line MATCHES "include[ \t]*\"([^\"]*)\"")
        set(included "${CMAKE_MATCH_1}")
        string(REGEX MATCH "^[^/]*" top "${included}")
        if(included IN_LIST generated)
          set(allowed TRUE)
        elseif(top IN_LIST below_${floor} AND NOT included MATCHES "^host/engine/" AND NOT included MATCHES "[.][.]/")
          set(allowed TRUE)
        endif()
      else()
        set(included "${line}")
      endif()
      if(NOT allowed)
        list(APPEND offences "${file}: ${included}")
      endif()
    endforeach()
  endforeach()
endforeach()

if(seen EQUAL 0)
  message(FATAL_ERROR "No file to look at below ${ROOT}")
endif()
if(offences)
  list(LENGTH offences count)
  list(JOIN offences "\n  " text)
  message(FATAL_ERROR "${count} includes from elsewhere:\n  ${text}")
endif()
message(STATUS "${seen} files include what they may")
