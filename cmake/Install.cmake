# Installation: headers in include/qel, libraries in lib, the QelSomIf CMake
# package and the qel_SomIf pkg-config file.
include(CMakePackageConfigHelpers)

file(GLOB QEL_FRAMEWORK_HEADERS ${PROJECT_SOURCE_DIR}/framework/include/*.h)
file(GLOB QEL_PUBLIC_HEADERS ${PROJECT_SOURCE_DIR}/include/*.h)
install(FILES ${QEL_FRAMEWORK_HEADERS} ${QEL_PUBLIC_HEADERS} DESTINATION ${QEL_INSTALL_INCLUDEDIR})

install(TARGETS qel_SomIf qel_framework EXPORT QelSomIfTargets
  LIBRARY DESTINATION ${QEL_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${QEL_INSTALL_LIBDIR}
  RUNTIME DESTINATION bin
  INCLUDES DESTINATION ${QEL_INSTALL_INCLUDEDIR})
install(EXPORT QelSomIfTargets NAMESPACE QelSomIf:: DESTINATION ${QEL_INSTALL_CMAKEDIR})

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/QelSomIfConfig.cmake.in
  ${PROJECT_BINARY_DIR}/QelSomIfConfig.cmake INSTALL_DESTINATION ${QEL_INSTALL_CMAKEDIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/QelSomIfConfigVersion.cmake
  VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/QelSomIfConfig.cmake
  ${PROJECT_BINARY_DIR}/QelSomIfConfigVersion.cmake DESTINATION ${QEL_INSTALL_CMAKEDIR})

configure_file(${PROJECT_SOURCE_DIR}/cmake/qel_SomIf.pc.in ${PROJECT_BINARY_DIR}/qel_SomIf.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/qel_SomIf.pc DESTINATION ${QEL_INSTALL_LIBDIR}/pkgconfig)
