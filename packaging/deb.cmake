# The Debian packages: ostrel (the tool, its data, manual page and
# completion) and, when the debug information was split off, ostrel-dbgsym.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ostrel)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "Ostrel developers <ostrel@example.org>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES OFF)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://example.org/ostrel")
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_THREADS 0)  # xz on every core: the debug package is large
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "lists the installed products of one software family")
# The first line of each is the summary above; CPack indents the rest.
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "ostrel tells which of the family's products are installed (names, part
numbers, program folders, launcher labels, versions) and what machine they
run on. On Linux it reads registry exports in the Windows format, or a
built-in sample, and prints tables or JSON.")
set(CPACK_DEBIAN_DEBUG_DESCRIPTION "The debug information of the ostrel tool, found by gdb through the
program's build ID.")

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ostrel)
if(OSTREL_SPLIT_DEBUG)
  list(APPEND CPACK_COMPONENTS_ALL debug)
  set(CPACK_DEBIAN_DEBUG_PACKAGE_NAME ostrel-dbgsym)
  set(CPACK_DEBIAN_DEBUG_PACKAGE_SECTION debug)
  set(CPACK_DEBIAN_DEBUG_PACKAGE_DEPENDS "ostrel (= ${PROJECT_VERSION})")
  set(CPACK_DEBIAN_DEBUG_PACKAGE_SHLIBDEPS OFF)
endif()
include(CPack)
