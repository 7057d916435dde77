# Debian packages with CPack's DEB generator (cpack -G DEB in the build dir):
#   libqel-somif1    the two shared libraries (component runtime)
#   libqel-somif-dev headers, CMake package, pkg-config file, .so links (dev)
#   qel-som-tools    somctl, somd, somd's units, manual pages, completion (tools)
# Build them from a Release configuration with -DCMAKE_INSTALL_PREFIX=/usr
# -DCMAKE_INSTALL_LIBDIR=lib/x86_64-linux-gnu; the files are stripped.
set(QEL_DEB_RUNTIME libqel-somif${PROJECT_VERSION_MAJOR})
set(QEL_DEB_DEV libqel-somif-dev)
set(QEL_DEB_TOOLS qel-som-tools)

# Every package carries its copyright file and a compressed changelog in
# /usr/share/doc/<package>, as Debian policy asks.
set(QEL_DEB_CHANGELOG ${PROJECT_BINARY_DIR}/changelog.Debian.gz)
string(TIMESTAMP QEL_DEB_DATE "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(WRITE ${PROJECT_BINARY_DIR}/changelog.Debian
  "qel-somif (${PROJECT_VERSION}) stable; urgency=medium\n\n"
  "  * Packages of the SOM client library, its tools and somd.\n\n"
  " -- libqel_SomIf maintainers <qel-somif@velmora.example>  ${QEL_DEB_DATE}\n")
execute_process(COMMAND gzip -n -9 -f -k ${PROJECT_BINARY_DIR}/changelog.Debian
                RESULT_VARIABLE QEL_GZIP_RC)
foreach(component runtime dev tools)
  string(TOUPPER ${component} upper)
  install(FILES ${PROJECT_SOURCE_DIR}/packaging/debian/copyright ${QEL_DEB_CHANGELOG}
          DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${QEL_DEB_${upper}} COMPONENT ${component})
endforeach()
install(FILES ${PROJECT_SOURCE_DIR}/README.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${QEL_DEB_DEV}
        COMPONENT dev)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME qel-somif)
set(CPACK_PACKAGE_VENDOR "Velmora")
set(CPACK_PACKAGE_CONTACT "libqel_SomIf maintainers <qel-somif@velmora.example>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
# Each package's first description line is its own summary, not the project's.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime dev tools)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY "=")
set(QEL_DEB_EXACT "(= ${PROJECT_VERSION}-1)")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${QEL_DEB_RUNTIME})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
# The ldconfig trigger that policy asks for (CPack's own ldconfig calls stay).
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/debian/runtime/triggers)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
  "client library of the SOM operation-management service\n\
libqel_SomIf talks to the SOM service over its Unix socket: update plans,\n\
version logs, schedules, provider and device information.\n\
This package holds the shared libraries libqel_SomIf and libqel_framework.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME ${QEL_DEB_DEV})
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "${QEL_DEB_RUNTIME} ${QEL_DEB_EXACT}, libboost-dev (>= 1.74)")
set(CPACK_COMPONENT_DEV_DESCRIPTION
  "client library of the SOM operation-management service (development files)\n\
libqel_SomIf talks to the SOM service over its Unix socket.\n\
This package holds the headers, the QelSomIf CMake package, the qel_SomIf\n\
pkg-config file and the links for linking.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME ${QEL_DEB_TOOLS})
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION admin)
# dpkg-shlibdeps finds the sibling libraries in the build tree but cannot know
# their package; it is named here.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
  ${PROJECT_BINARY_DIR} ${PROJECT_BINARY_DIR}/framework)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${QEL_DEB_RUNTIME} ${QEL_DEB_EXACT}, passwd")
set(CPACK_DEBIAN_TOOLS_PACKAGE_CONTROL_EXTRA
  ${PROJECT_SOURCE_DIR}/packaging/debian/tools/postinst
  ${PROJECT_SOURCE_DIR}/packaging/debian/tools/prerm
  ${PROJECT_SOURCE_DIR}/packaging/debian/tools/postrm)
set(CPACK_DEBIAN_TOOLS_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_COMPONENT_TOOLS_DESCRIPTION
  "SOM service somd and its command-line tool somctl\n\
somd is a SOM operation-management service, run by systemd through\n\
somd.socket (/run/qel/som.sock, group qel) or standalone; somctl is the\n\
operator's command-line tool for it.")

include(CPack)
