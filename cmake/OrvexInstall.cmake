# Where 'cmake --install' puts things, below the prefix:
#
#   bin/                               links to the two programs
#   lib/                               liborvexcontracts, liborvexworkbench: what a host links
#   lib/orvexworkbench/                the programs and the modules they load from their
#                                      own folder: the workbench plugin, the archive client
#                                      and the archive library it needs
#   include/orvexworkbench/            the public headers
#   lib/cmake/OrvexWorkbench/          the package configuration for find_package()
#   share/applications/, share/icons/  the host's desktop entry and icon
#   share/orvexworkbench/translations/ the compiled catalogues
#
# The programs look for the workbench plugin, the archive client and the stand-in
# in the folder of the running executable, so these share one private folder and
# bin/ only links to them. Everything finds its libraries through an $ORIGIN
# rpath, so the tree works under any prefix without ldconfig.
include(GNUInstallDirs)
set(ORVEX_INSTALL_PRIVATEDIR ${CMAKE_INSTALL_LIBDIR}/orvexworkbench)
set(ORVEX_INSTALL_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/orvexworkbench)
set(ORVEX_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/OrvexWorkbench)
set(ORVEX_INSTALL_TRANSLATIONSDIR ${CMAKE_INSTALL_DATADIR}/orvexworkbench/translations)

# orvex_install_library(<target> EXPORT_NAME <name> [PUBLIC_HEADERS <files...>])
#
# A shared library a host links: installed into the library folder with its
# public headers and exported as OrvexWorkbench::<name>.
function(orvex_install_library target)
  cmake_parse_arguments(L "" "EXPORT_NAME" "PUBLIC_HEADERS" ${ARGN})
  # Before 1.0 every minor version may change the binary interface.
  set_target_properties(${target} PROPERTIES
    EXPORT_NAME ${L_EXPORT_NAME}
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}
    INSTALL_RPATH "$ORIGIN"
    PUBLIC_HEADER "${L_PUBLIC_HEADERS}")
  target_include_directories(${target} INTERFACE $<INSTALL_INTERFACE:${ORVEX_INSTALL_INCLUDEDIR}>)
  install(TARGETS ${target} EXPORT OrvexWorkbenchTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    PUBLIC_HEADER DESTINATION ${ORVEX_INSTALL_INCLUDEDIR})
endfunction()

# orvex_install_private(<target> [EXPORT_NAME <name>])
#
# A program, or a library or module that a program finds in its own folder:
# installed into the private folder, which sits one level below the library
# folder. With EXPORT_NAME it is also exported (the plugin module, so that a
# host can name the installed file).
function(orvex_install_private target)
  cmake_parse_arguments(P "" "EXPORT_NAME" "" ${ARGN})
  set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN;$ORIGIN/..")
  set(export "")
  if(P_EXPORT_NAME)
    set_target_properties(${target} PROPERTIES EXPORT_NAME ${P_EXPORT_NAME})
    set(export EXPORT OrvexWorkbenchTargets)
  endif()
  install(TARGETS ${target} ${export}
    RUNTIME DESTINATION ${ORVEX_INSTALL_PRIVATEDIR}
    LIBRARY DESTINATION ${ORVEX_INSTALL_PRIVATEDIR})
  get_target_property(type ${target} TYPE)
  if(type STREQUAL "EXECUTABLE")
    # The program's link in bin/, relative so that the tree can move.
    file(RELATIVE_PATH link_target ${CMAKE_INSTALL_FULL_BINDIR}
         ${CMAKE_INSTALL_FULL_LIBDIR}/orvexworkbench/${target})
    set(link ${CMAKE_BINARY_DIR}/install-links/${target})
    file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/install-links)
    file(CREATE_LINK ${link_target} ${link} SYMBOLIC)
    install(FILES ${link} DESTINATION ${CMAKE_INSTALL_BINDIR})
  endif()
endfunction()
