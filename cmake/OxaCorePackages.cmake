# The Debian packages, by cpack: the library, what one builds against it, and the programs. scripts/package makes them,
# of the preset "package": that one brings the debug symbols, in a package of their own, and Debian's folders.
option(OXACORE_PACKAGE_SYMBOLS "Split the debug symbols off into a Debian package of their own" OFF)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME oxacore)
set(CPACK_PACKAGE_VENDOR "the owner of OxaCore")
set(CPACK_PACKAGE_CONTACT "The maintainers of OxaCore <maintainers@oxacore.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has its own
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL runtime development tools)
set(CPACK_DEB_COMPONENT_INSTALL ON)

set(library "liboxacore${PROJECT_VERSION_MAJOR}")
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(exact "(= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/src")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${library})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
# What it opens while it runs: without nettle there is no encryption. It does without call stacks, and without the zones
# that TZ names.
file(REAL_PATH "${OXACORE_NETTLE}" nettle)
string(REGEX REPLACE ".*/libnettle[.]so[.]([0-9]+).*" "libnettle\\1" nettle "${nettle}")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS ${nettle})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS "libdw1, tzdata")
# Programs that are linked to the library are content with this version of it or a later one; and the linker's cache is
# brought up to date by a trigger. What cpack would write for that are scripts.
file(WRITE "${PROJECT_BINARY_DIR}/debian/shlibs"
  "libOxaCore ${PROJECT_VERSION_MAJOR} ${library} (>= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})\n")
file(WRITE "${PROJECT_BINARY_DIR}/debian/triggers" "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
  "${PROJECT_BINARY_DIR}/debian/shlibs;${PROJECT_BINARY_DIR}/debian/triggers")
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "foundation library of measuring-instrument applications
Errors that carry their places and call stacks, a log, threads and tasks,
streams of bytes, path names, moments and spans of time, notifications,
XML, quantities with units, self-tests, and a death with a report.

This package holds the shared library.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME liboxacore-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${library} ${exact}, libboost-dev (>= 1.74)")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "cmake, pkg-config, gdb, oxacore-tools")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "foundation library of measuring-instrument applications (headers)
Errors that carry their places and call stacks, a log, threads and tasks,
streams of bytes, path names, moments and spans of time, notifications,
XML, quantities with units, self-tests, and a death with a report.

This package holds what programs are built with: headers, the files for
CMake and pkg-config, the printers of gdb, the pages and the examples.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME oxacore-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${library} ${exact}")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "runner for the self-tests of modules built with OxaCore
oxatest loads modules and runs the tests that they carry, each module in a
process of its own, with results on the terminal and as JUnit XML.

The library's own tests are among those that it can run.")

foreach(component IN ITEMS RUNTIME DEVELOPMENT TOOLS)
  set(CPACK_DEBIAN_${component}_DEBUGINFO_PACKAGE ${OXACORE_PACKAGE_SYMBOLS})
endforeach()
set(CPACK_DEBIAN_DEVELOPMENT_DEBUGINFO_PACKAGE OFF)
if(NOT OXACORE_PACKAGE_SYMBOLS)
  set(CPACK_STRIP_FILES ON)
endif()

# Every package tells of its changes and of its licence; a plain installation has no use for that.
string(TIMESTAMP OXACORE_PACKAGE_DATE "%a, %d %b %Y %H:%M:%S +0000" UTC)
configure_file("${CMAKE_CURRENT_LIST_DIR}/debian/changelog.in" "${PROJECT_BINARY_DIR}/debian/changelog.Debian" @ONLY)
configure_file("${PROJECT_SOURCE_DIR}/CHANGELOG.md" "${PROJECT_BINARY_DIR}/debian/changelog" COPYONLY)
foreach(changelog IN ITEMS changelog changelog.Debian)
  set(packed "${PROJECT_BINARY_DIR}/debian/${changelog}.gz")
  file(ARCHIVE_CREATE OUTPUT "${packed}" PATHS "${PROJECT_BINARY_DIR}/debian/${changelog}"
    FORMAT raw COMPRESSION GZip COMPRESSION_LEVEL 9)
  list(APPEND papers "${packed}")
endforeach()
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER "${component}" upper)
  install(FILES ${papers} "${CMAKE_CURRENT_LIST_DIR}/debian/copyright"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME}"
    COMPONENT ${component} EXCLUDE_FROM_ALL)
endforeach()

include(CPack)
