# cmake -DTREE=folder -DHOME=folder [-DMODULES=folder] "-DEXPECTED=name name..." -P RunPrograms.cmake
# Starts the installed programs. zq has an empty home; with MODULES, its settings name the tree's folder of modules
# and that one. It shows exactly the EXPECTED repositories, by short name, each of a module of its own.
cmake_minimum_required(VERSION 3.25)

unset(ENV{LD_LIBRARY_PATH})
unset(ENV{ZQ_HOME})
execute_process(COMMAND "${TREE}/bin/tarn7d" --help OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)

file(REMOVE_RECURSE "${HOME}")
file(MAKE_DIRECTORY "${HOME}")
if(MODULES)
  file(WRITE "${HOME}/host.toml" "[modules]\npath = [\"${TREE}/lib/zq/modules\", \"${MODULES}\"]\n")
endif()
execute_process(COMMAND "${TREE}/bin/zq" --home "${HOME}" --language en --json info OUTPUT_VARIABLE answer
                COMMAND_ERROR_IS_FATAL ANY)

string(JSON ok GET "${answer}" ok)
string(JSON modules LENGTH "${answer}" modules)
set(names)
set(number 0)
while(number LESS modules)
  string(JSON loaded GET "${answer}" modules ${number} loaded)
  if(NOT loaded)
    message(SEND_ERROR "a module is not loaded")
  endif()
  string(JSON name GET "${answer}" modules ${number} repositories 0 shortName)
  list(APPEND names "${name}")
  math(EXPR number "${number} + 1")
endwhile()
list(JOIN names " " shown)
if(NOT ok OR NOT shown STREQUAL EXPECTED)
  message(FATAL_ERROR "expected the repositories ${EXPECTED}:\n${answer}")
endif()
