# cmake -DBUILD=folder -DSTAGE=folder -DTREE=folder -DLIBDIR=lib -P InstallTree.cmake
# Installs the build, moves what was installed to TREE, as people do, and finds each kind of file there.
cmake_minimum_required(VERSION 3.25)

unset(ENV{DESTDIR})
file(REMOVE_RECURSE "${STAGE}" "${TREE}")
execute_process(COMMAND "${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${STAGE}" OUTPUT_QUIET
                COMMAND_ERROR_IS_FATAL ANY)
file(RENAME "${STAGE}" "${TREE}")

foreach(name bin/zq bin/tarn7d "${LIBDIR}/libzqhost.so" "${LIBDIR}/libzqhost.so.0" lib/zq/modules/tarn7.zqd
             share/zq/strings/en.toml share/zq/strings/de.toml share/zq/strings/ja.toml share/zq/panel-texts/en.toml
             include/zq/host/HostServices.h include/zq/repository/MediaFileRepositoryBase.h
             "${LIBDIR}/cmake/zq/zqConfig.cmake" "${LIBDIR}/cmake/zq/zqConfigVersion.cmake")
  if(NOT EXISTS "${TREE}/${name}")
    message(SEND_ERROR "${name} is not installed")
  endif()
endforeach()

# The contract is what others build with; the engine is the programs' own.
file(GLOB_RECURSE headers RELATIVE "${TREE}/include/zq" "${TREE}/include/zq/*")
foreach(header IN LISTS headers)
  if(NOT header MATCHES "^(host|repository)/.*\\.h$" OR header MATCHES "^host/engine/")
    message(SEND_ERROR "${header} is no header of the contract")
  endif()
endforeach()
