# The package configuration that find_package(OrvexWorkbench) reads, and the
# Debian package that 'make package' builds from the installed tree.
include(CMakePackageConfigHelpers)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/OrvexWorkbenchConfig.cmake.in
  ${CMAKE_BINARY_DIR}/OrvexWorkbenchConfig.cmake
  INSTALL_DESTINATION ${ORVEX_INSTALL_CMAKEDIR})
# Matches the libraries' SOVERSION: before 1.0 only the same minor version fits.
write_basic_package_version_file(${CMAKE_BINARY_DIR}/OrvexWorkbenchConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/OrvexWorkbenchConfig.cmake ${CMAKE_BINARY_DIR}/OrvexWorkbenchConfigVersion.cmake
  DESTINATION ${ORVEX_INSTALL_CMAKEDIR})
install(EXPORT OrvexWorkbenchTargets NAMESPACE OrvexWorkbench:: DESTINATION ${ORVEX_INSTALL_CMAKEDIR})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME orvexworkbench)
set(CPACK_PACKAGE_VENDOR "Vantrel GmbH")
set(CPACK_PACKAGE_CONTACT "Vantrel GmbH <orvex@vantrel.de>" CACHE STRING "Maintainer of the Debian package")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Clipboard workbench plugin for document-management clients")
set(CPACK_PACKAGE_DESCRIPTION
  "The workbench docks into a document-management client as a Qt plugin and keeps
named clipboards of archived documents, shown as pages of cards with thumbnails,
key fields and notes. The package also holds a demo client (orvexhost) with an
embedded archive, a Connection Manager stand-in, and the headers and CMake
package configuration for building a host against the workbench.")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION misc)
set(CPACK_STRIP_FILES ON)
# dpkg-shlibdeps derives the libraries the binaries link (our own ones it finds
# through their $ORIGIN rpath). What Qt loads as plugins it cannot see: the
# SQLite driver of the archive and the SVG image and icon plugins.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libqt5sql5-sqlite, libqt5svg5")
# The desktop's viewer and mail launcher (xdg-open, xdg-email), and Qt's own
# German texts for standard dialogs, and the PostgreSQL driver for an archive
# kept on a server (a postgresql:// location).
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "xdg-utils, qttranslations5-l10n, libqt5sql5-psql")
include(CPack)
