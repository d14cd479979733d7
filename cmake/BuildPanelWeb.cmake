# cmake -DWEB=folder -DOUT=folder -DSTAMP=file -DLOCK=file -DNPM=program -P BuildPanelWeb.cmake
# Builds the panel's page from WEB into OUT, and touches STAMP. The packages that it is built with are fetched only
# where those that are there are not the locked ones. Where they cannot be had, the build goes on without the page,
# and the next build tries again: nothing else depends on it.
cmake_minimum_required(VERSION 3.25)

# Presets are built side by side, with one folder of packages.
file(LOCK "${LOCK}" GUARD PROCESS TIMEOUT 600)

# Sets the variable to whether each locked package is installed in the locked version.
function(packages_are_there result)
  set(${result} FALSE PARENT_SCOPE)
  if(NOT EXISTS "${WEB}/node_modules/.package-lock.json")
    return()
  endif()
  file(READ "${WEB}/package-lock.json" locked)
  file(READ "${WEB}/node_modules/.package-lock.json" installed)
  string(JSON locked GET "${locked}" packages)
  string(JSON installed GET "${installed}" packages)
  string(JSON count LENGTH "${locked}")
  math(EXPR last "${count} - 1")
  foreach(number RANGE ${last})
    string(JSON name MEMBER "${locked}" ${number})
    if(name STREQUAL "")
      continue() # the page itself
    endif()
    string(JSON wanted GET "${locked}" "${name}" version)
    string(JSON optional ERROR_VARIABLE required GET "${locked}" "${name}" optional)
    string(JSON found ERROR_VARIABLE missing GET "${installed}" "${name}" version)
    if(missing AND required)
      return()
    endif()
    if(NOT missing AND (NOT found STREQUAL wanted OR NOT EXISTS "${WEB}/${name}/package.json"))
      return()
    endif()
  endforeach()
  set(${result} TRUE PARENT_SCOPE)
endfunction()

packages_are_there(there)
if(NOT there)
  # Not "npm ci": it takes a lock that names no addresses for one without the packages of other systems. Nothing is
  # saved, so the lock stays as it is, and what came is held against it.
  execute_process(COMMAND "${NPM}" install --no-save --no-audit --no-fund --no-update-notifier
                          --fetch-retry-mintimeout=500 --fetch-retry-maxtimeout=3000
                  WORKING_DIRECTORY "${WEB}" RESULT_VARIABLE failed OUTPUT_VARIABLE said ERROR_VARIABLE said)
  packages_are_there(there)
  if(failed OR NOT there)
    message(WARNING "The panel's page is not built, as its packages cannot be had (npm install):\n${said}")
    return()
  endif()
endif()

set(ENV{ZQ_PANEL_OUT} "${OUT}")
execute_process(COMMAND "${NPM}" run build --no-update-notifier
                WORKING_DIRECTORY "${WEB}" RESULT_VARIABLE failed OUTPUT_VARIABLE said ERROR_VARIABLE said)
if(failed)
  message(FATAL_ERROR "The panel's page does not build:\n${said}")
endif()
file(TOUCH "${STAMP}")
