# What a project that uses Ostrel gets: the libraries with their sonames,
# the public headers, the tool and its manual page; a CMake package
# (Ostrel::ostrel, Ostrel::tarnex) and pkg-config files; Debian packages
# through CPack. The installed tree is relocatable: it may be moved after
# installing and the CMake package, the pkg-config files and the tool still
# find their libraries, since every path in them is relative.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(OSTREL_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Ostrel)
set(OSTREL_PKGCONFIG_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# ---- Libraries, headers, the tool ------------------------------------------
install(TARGETS tarnex ostrel EXPORT OstrelTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY include/ostrel tarnex/include/tarnex
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev)

# The installed tool looks for the libraries relative to itself, so a
# prefix outside the loader's path (or a moved one) still runs.
file(RELATIVE_PATH _ostrel_bin_to_lib /p/${CMAKE_INSTALL_BINDIR} /p/${CMAKE_INSTALL_LIBDIR})
set_target_properties(ostrel-tool PROPERTIES INSTALL_RPATH "$ORIGIN/${_ostrel_bin_to_lib}")
install(TARGETS ostrel-tool RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tool)
install(FILES README.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT dev)

# ---- The manual page, from its scdoc source ---------------------------------
find_program(OSTREL_SCDOC scdoc)
if(OSTREL_SCDOC)
  set(_ostrel_man_src ${CMAKE_CURRENT_SOURCE_DIR}/tools/ostrel/ostrel.1.scd)
  add_custom_command(OUTPUT ${CMAKE_BINARY_DIR}/ostrel.1
    COMMAND ${OSTREL_SCDOC} < ${_ostrel_man_src} > ${CMAKE_BINARY_DIR}/ostrel.1
    DEPENDS ${_ostrel_man_src} VERBATIM)
  add_custom_target(ostrel-man ALL DEPENDS ${CMAKE_BINARY_DIR}/ostrel.1)
  install(FILES ${CMAKE_BINARY_DIR}/ostrel.1
          DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tool)
else()
  message(STATUS "scdoc not found: the manual page of ostrel is not built")
endif()

# ---- CMake package ----------------------------------------------------------
install(EXPORT OstrelTargets NAMESPACE Ostrel:: DESTINATION ${OSTREL_CMAKE_DIR}
        COMPONENT dev)
configure_package_config_file(cmake/OstrelConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/OstrelConfig.cmake INSTALL_DESTINATION ${OSTREL_CMAKE_DIR})
# The major version is the soname: it goes up exactly when the ABI breaks,
# so any release of the same major version serves a program built on it.
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/OstrelConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/OstrelConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/OstrelConfigVersion.cmake
        DESTINATION ${OSTREL_CMAKE_DIR} COMPONENT dev)

# ---- pkg-config ---------------------------------------------------------------
# The prefix is found from the .pc file's own place (pkg-config's pcfiledir).
file(RELATIVE_PATH OSTREL_PC_TO_PREFIX /p/${OSTREL_PKGCONFIG_DIR} /p)
foreach(_pc tarnex ostrel)
  configure_file(cmake/${_pc}.pc.in ${CMAKE_CURRENT_BINARY_DIR}/${_pc}.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${_pc}.pc
          DESTINATION ${OSTREL_PKGCONFIG_DIR} COMPONENT dev)
endforeach()

# ---- Debian packages: cpack -G DEB ----------------------------------------------
set(CPACK_PACKAGE_NAME ostrel)
set(CPACK_PACKAGE_VENDOR "Ostrel")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "phone personal data formats as C records")
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "Ostrel maintainers <maintainers@ostrel.invalid>")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime dev tool)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# dpkg-shlibdeps finds our own libraries in the build tree; the packages that
# hold them come in through the component dependencies below.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_BINARY_DIR})
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libostrel${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_DEV_PACKAGE_NAME libostrel-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_TOOL_PACKAGE_NAME ostrel)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION utils)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
    "libostrel and its foundation libtarnex: contacts, calendar, notes, bookmarks and short messages read and written")
set(CPACK_COMPONENT_DEV_DESCRIPTION
    "headers, CMake package and pkg-config files of libostrel and libtarnex")
set(CPACK_COMPONENT_TOOL_DESCRIPTION
    "ostrel: shows, inspects and converts a phone's contact, calendar and message files")
set(CPACK_COMPONENT_DEV_DEPENDS runtime)
set(CPACK_COMPONENT_TOOL_DEPENDS runtime)
include(CPack)
