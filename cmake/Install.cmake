# Installation, every path from GNUInstallDirs: headers in include/qel, the
# libraries, the QelSomIf CMake package and the qel_SomIf pkg-config file
# (component "dev" for the build-time parts, "runtime" for the .so.1 files),
# somctl, somd, their manual pages, somctl's bash completion and somd's
# systemd units (component "tools"). `uninstall` removes what
# install_manifest.txt lists.
include(CMakePackageConfigHelpers)

file(GLOB QEL_FRAMEWORK_HEADERS ${PROJECT_SOURCE_DIR}/framework/include/*.h)
file(GLOB QEL_PUBLIC_HEADERS ${PROJECT_SOURCE_DIR}/include/*.h)
install(FILES ${QEL_FRAMEWORK_HEADERS} ${QEL_PUBLIC_HEADERS} DESTINATION ${QEL_INSTALL_INCLUDEDIR}
        COMPONENT dev)

install(TARGETS qel_SomIf qel_framework EXPORT QelSomIfTargets
  LIBRARY DESTINATION ${QEL_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev
  ARCHIVE DESTINATION ${QEL_INSTALL_LIBDIR} COMPONENT dev
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
  INCLUDES DESTINATION ${QEL_INSTALL_INCLUDEDIR})
install(EXPORT QelSomIfTargets NAMESPACE QelSomIf:: DESTINATION ${QEL_INSTALL_CMAKEDIR}
        COMPONENT dev)

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/QelSomIfConfig.cmake.in
  ${PROJECT_BINARY_DIR}/QelSomIfConfig.cmake INSTALL_DESTINATION ${QEL_INSTALL_CMAKEDIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/QelSomIfConfigVersion.cmake
  VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/QelSomIfConfig.cmake
  ${PROJECT_BINARY_DIR}/QelSomIfConfigVersion.cmake DESTINATION ${QEL_INSTALL_CMAKEDIR}
  COMPONENT dev)

# The pkg-config file finds its prefix from its own place, so that the same
# file works in any prefix: walk up from libdir/pkgconfig to the prefix.
file(RELATIVE_PATH QEL_PC_TO_PREFIX
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" QEL_PC_TO_PREFIX "${QEL_PC_TO_PREFIX}")
configure_file(${PROJECT_SOURCE_DIR}/cmake/qel_SomIf.pc.in ${PROJECT_BINARY_DIR}/qel_SomIf.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/qel_SomIf.pc DESTINATION ${QEL_INSTALL_LIBDIR}/pkgconfig
        COMPONENT dev)

# The Debian packages put README.md in the -dev package's doc folder instead.
install(FILES ${PROJECT_SOURCE_DIR}/README.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc)

if(QELSOMIF_BUILD_TOOLS)
  # In a prefix of its own the tools find the libraries beside them; the
  # system's /usr needs (and Debian policy allows) no search path.
  if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    file(RELATIVE_PATH QEL_BIN_TO_LIB ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
    set_target_properties(somctl somd PROPERTIES INSTALL_RPATH "$ORIGIN/${QEL_BIN_TO_LIB}")
  endif()
  install(TARGETS somctl RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
  install(TARGETS somd RUNTIME DESTINATION ${CMAKE_INSTALL_SBINDIR} COMPONENT tools)
  # Manual pages, compressed as Debian installs them (man reads them either way).
  foreach(page somctl.1 somd.8)
    string(REGEX REPLACE ".*\\." "" section ${page})
    add_custom_command(OUTPUT ${PROJECT_BINARY_DIR}/man/${page}.gz
      COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/man
      COMMAND sh -c "gzip -n -9 -c '${PROJECT_SOURCE_DIR}/docs/man/${page}' > '${PROJECT_BINARY_DIR}/man/${page}.gz'"
      DEPENDS ${PROJECT_SOURCE_DIR}/docs/man/${page} VERBATIM)
    list(APPEND QEL_MAN_PAGES ${PROJECT_BINARY_DIR}/man/${page}.gz)
    install(FILES ${PROJECT_BINARY_DIR}/man/${page}.gz
            DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section} COMPONENT tools)
  endforeach()
  add_custom_target(man ALL DEPENDS ${QEL_MAN_PAGES})
  # somctl's completion: its own file when present, else the packaged one.
  set(QEL_COMPLETION ${PROJECT_SOURCE_DIR}/tools/somctl/somctl.bash-completion)
  if(NOT EXISTS ${QEL_COMPLETION})
    set(QEL_COMPLETION ${PROJECT_SOURCE_DIR}/packaging/bash-completion/somctl)
  endif()
  install(FILES ${QEL_COMPLETION} RENAME somctl
          DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tools)
  # Units under the prefix's lib/ (/usr/lib/systemd/system for /usr).
  set(QEL_SYSTEMD_UNITDIR lib/systemd/system CACHE STRING "Where somd's systemd units go")
  install(FILES ${PROJECT_SOURCE_DIR}/packaging/systemd/somd.service
          ${PROJECT_SOURCE_DIR}/packaging/systemd/somd.socket
          DESTINATION ${QEL_SYSTEMD_UNITDIR} COMPONENT tools)
  file(GLOB QEL_SOMD_SCENARIO_FILES ${PROJECT_SOURCE_DIR}/tools/somd/scenario/default/*.json)
  install(FILES ${QEL_SOMD_SCENARIO_FILES}
          DESTINATION ${CMAKE_INSTALL_DATADIR}/somd/scenario COMPONENT tools)
endif()

if(NOT TARGET uninstall)
  add_custom_target(uninstall
    COMMAND ${CMAKE_COMMAND} -DMANIFEST=${PROJECT_BINARY_DIR}/install_manifest.txt
            -P ${PROJECT_SOURCE_DIR}/cmake/Uninstall.cmake
    COMMENT "Removing the files that the last install wrote")
endif()
