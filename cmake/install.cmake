# Library, development files and tools: three components, each a Debian package.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(ZOP_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/zop_module)
set(ZOP_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/zop_module)

# ---- library ----
install(TARGETS zop_module EXPORT zop_module
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development
  INCLUDES DESTINATION ${ZOP_INCLUDEDIR})

# ---- development ----
install(FILES
  include/modem_download.h include/nubi.h include/vurn.h include/zop.h include/zop_diag_info.h
  DESTINATION ${ZOP_INCLUDEDIR} COMPONENT development)
install(EXPORT zop_module FILE zop_moduleTargets.cmake NAMESPACE zop_module::
  DESTINATION ${ZOP_CMAKEDIR} COMPONENT development)
configure_package_config_file(cmake/zop_moduleConfig.cmake.in
  ${CMAKE_BINARY_DIR}/zop_moduleConfig.cmake INSTALL_DESTINATION ${ZOP_CMAKEDIR})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/zop_moduleConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES
  ${CMAKE_BINARY_DIR}/zop_moduleConfig.cmake ${CMAKE_BINARY_DIR}/zop_moduleConfigVersion.cmake
  DESTINATION ${ZOP_CMAKEDIR} COMPONENT development)
file(RELATIVE_PATH ZOP_PREFIX_FROM_PC
  /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)  # relative: the tree may be moved
configure_file(cmake/zop_module.pc.in ${CMAKE_BINARY_DIR}/zop_module.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/zop_module.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
install(FILES examples/host.c
  DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples COMPONENT development)

# ---- tools ----
# zopctl loads the library installed with it, wherever the tree is.
set_target_properties(zopctl PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
install(TARGETS zopctl zop-modem-sim RUNTIME COMPONENT tools)
install(FILES ${CMAKE_BINARY_DIR}/zopctl.1 ${CMAKE_BINARY_DIR}/zop-modem-sim.1
  DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
install(FILES ${CMAKE_BINARY_DIR}/zopctl.bash
  DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME zopctl COMPONENT tools)
install(FILES ${CMAKE_BINARY_DIR}/_zopctl
  DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions COMPONENT tools)
install(FILES ${CMAKE_BINARY_DIR}/zopctl.fish
  DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT tools)
install(FILES ${CMAKE_BINARY_DIR}/zop_diag.lua
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/wireshark/plugins COMPONENT tools)
install(DIRECTORY docs/schema DESTINATION ${CMAKE_INSTALL_DATADIR}/zop-module
  COMPONENT tools FILES_MATCHING PATTERN *.json)
install(DIRECTORY scenarios DESTINATION ${CMAKE_INSTALL_DATADIR}/zop-module
  COMPONENT tools FILES_MATCHING PATTERN *.toml)
if(ZOP_FLEET)
  install(DIRECTORY fleet/questions fleet/clickhouse fleet/rsyslog
    DESTINATION ${CMAKE_INSTALL_DATADIR}/zop-module/fleet COMPONENT tools)
endif()
