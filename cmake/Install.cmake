# What an installation holds: the programs, their module and texts, and what a module of somebody else is built
# with. Programs and libraries find each other by relative paths, so an installed tree can be moved.
#
#   bin/              zq, tarn7d
#   lib/              libzqhost, and the CMake package "zq" with the target zq::host
#   lib/zq/modules/   the modules that zq loads
#   include/zq/       the contract: host/... and repository/...
#   share/zq/strings/ the texts, a file per language
#   share/zq/panel/   the panel's page, and share/zq/panel-texts/ its texts

include(CMakePackageConfigHelpers)

# zq looks here from its own folder; so it is lib also where the libraries lie in lib64 and the like.
set(ZQ_INSTALL_MODULEDIR lib/zq/modules)
set(ZQ_INSTALL_CONTRACTDIR "${CMAKE_INSTALL_INCLUDEDIR}/zq")
set(ZQ_INSTALL_PACKAGEDIR "${CMAKE_INSTALL_LIBDIR}/cmake/zq")

# zq_find_host_library_from(FOLDER TARGET...) lets targets that are installed in the folder find libzqhost.
function(zq_find_host_library_from folder)
  file(RELATIVE_PATH way "/${folder}" "/${CMAKE_INSTALL_LIBDIR}")
  string(REGEX REPLACE "/$" "" way "${way}")
  set_target_properties(${ARGN} PROPERTIES INSTALL_RPATH "$ORIGIN/${way}")
endfunction()
zq_find_host_library_from("${CMAKE_INSTALL_BINDIR}" zq tarn7d)
zq_find_host_library_from("${ZQ_INSTALL_MODULEDIR}" tarn7)

install(TARGETS zq tarn7d RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
install(TARGETS tarn7 LIBRARY DESTINATION "${ZQ_INSTALL_MODULEDIR}")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/resources/strings" DESTINATION "${CMAKE_INSTALL_DATADIR}/zq"
  FILES_MATCHING PATTERN "*.toml")

install(DIRECTORY "${PROJECT_SOURCE_DIR}/resources/panel/" DESTINATION "${CMAKE_INSTALL_DATADIR}/zq/panel-texts"
  FILES_MATCHING PATTERN "*.toml")
# Not there where the page was not built; the program then says so.
install(DIRECTORY "${PROJECT_BINARY_DIR}/panel/" DESTINATION "${CMAKE_INSTALL_DATADIR}/zq/panel" OPTIONAL)

install(TARGETS zqhost EXPORT zqTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  INCLUDES DESTINATION "${ZQ_INSTALL_CONTRACTDIR}")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/host" "${PROJECT_SOURCE_DIR}/repository"
  DESTINATION "${ZQ_INSTALL_CONTRACTDIR}"
  FILES_MATCHING PATTERN "*.h" PATTERN "engine" EXCLUDE)
install(EXPORT zqTargets NAMESPACE zq:: DESTINATION "${ZQ_INSTALL_PACKAGEDIR}")
configure_package_config_file(cmake/zqConfig.cmake.in "${PROJECT_BINARY_DIR}/package/zqConfig.cmake"
  INSTALL_DESTINATION "${ZQ_INSTALL_PACKAGEDIR}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/package/zqConfigVersion.cmake"
  COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/package/zqConfig.cmake" "${PROJECT_BINARY_DIR}/package/zqConfigVersion.cmake"
  DESTINATION "${ZQ_INSTALL_PACKAGEDIR}")
