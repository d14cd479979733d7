# Tests: one executable per folder of tests/, every case in CTest, no test file left out.

include(GoogleTest)
find_package(GTest REQUIRED)

# What runs in parallel, and so under ThreadSanitizer too: the tests with the label "parallel".
add_custom_target(zq_parallel_tests)

# Under a sanitizer the start of a process for each case takes longer than most cases.
option(ZQ_TEST_WHOLE_PROGRAMS "Hand each test program to CTest as one test" OFF)

# zq_add_tests(NAME SOURCES ... LIBRARIES ... [LABELS ...] [ENVIRONMENT ...] [TIMEOUT seconds] [ALONE])
# builds one GoogleTest executable and hands each of its cases to CTest; ALONE for cases that need a process of their
# own in any build.
function(zq_add_tests name)
  cmake_parse_arguments(arg "ALONE" "TIMEOUT" "SOURCES;LIBRARIES;LABELS;ENVIRONMENT" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE zq_settings ${arg_LIBRARIES} GTest::gmock GTest::gtest_main)
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 60)
  endif()
  set(whole OFF)
  if(ZQ_TEST_WHOLE_PROGRAMS AND NOT arg_ALONE)
    set(whole ON)
    set(arg_TIMEOUT 900)
  endif()
  set(properties TIMEOUT ${arg_TIMEOUT})
  if(arg_LABELS)
    list(APPEND properties LABELS "${arg_LABELS}")
  endif()
  if(arg_ENVIRONMENT)
    list(APPEND properties ENVIRONMENT "${arg_ENVIRONMENT}")
  endif()
  if(whole)
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES ${properties})
  else()
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 PROPERTIES ${properties})
  endif()
  if("parallel" IN_LIST arg_LABELS)
    add_dependencies(zq_parallel_tests ${name})
  endif()
  foreach(source IN LISTS arg_SOURCES)
    get_filename_component(path "${source}" ABSOLUTE)
    set_property(GLOBAL APPEND PROPERTY ZQ_REGISTERED_TEST_SOURCES "${path}")
  endforeach()
endfunction()

# A test file that nobody builds tests nothing: finding one fails the configuration.
function(zq_check_every_test_is_registered)
  file(GLOB_RECURSE present CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/tests/*Test.cpp")
  get_property(registered GLOBAL PROPERTY ZQ_REGISTERED_TEST_SOURCES)
  foreach(file IN LISTS present)
    if(NOT file IN_LIST registered)
      message(FATAL_ERROR "${file} is in no test target: list it in a zq_add_tests call.")
    endif()
  endforeach()
endfunction()
