# What a host finds, in three components: the library under its versioned soname ("runtime"), what one builds against
# it ("development": headers, the CMake package, the pkg-config file, gdb's printers, the pages), and the programs
# ("tools"). All of it can be moved as a whole, but for the printers: gdb finds them by the library's place.
include(CMakePackageConfigHelpers)

set(package "${CMAKE_INSTALL_LIBDIR}/cmake/OxaCore")

# A folder that is named whole lies outside of the prefix, and takes its place here.
set(bin_folder "${CMAKE_INSTALL_PREFIX}")
cmake_path(APPEND bin_folder "${CMAKE_INSTALL_BINDIR}")
set(lib_folder "${CMAKE_INSTALL_PREFIX}")
cmake_path(APPEND lib_folder "${CMAKE_INSTALL_LIBDIR}")

install(TARGETS OxaCore EXPORT OxaCoreTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/Infrastructure" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}"
  COMPONENT development)
install(EXPORT OxaCoreTargets NAMESPACE OxaCore:: DESTINATION "${package}" COMPONENT development)

configure_package_config_file("${CMAKE_CURRENT_LIST_DIR}/OxaCoreConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/OxaCoreConfig.cmake" INSTALL_DESTINATION "${package}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/OxaCoreConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/OxaCoreConfig.cmake" "${PROJECT_BINARY_DIR}/OxaCoreConfigVersion.cmake"
  DESTINATION "${package}" COMPONENT development)

file(RELATIVE_PATH OXACORE_PREFIX_FROM_PC "${lib_folder}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
set(OXACORE_PC_LIBDIR "\${prefix}")
cmake_path(APPEND OXACORE_PC_LIBDIR "${CMAKE_INSTALL_LIBDIR}")
set(OXACORE_PC_INCLUDEDIR "\${prefix}")
cmake_path(APPEND OXACORE_PC_INCLUDEDIR "${CMAKE_INSTALL_INCLUDEDIR}")
if(NOT BUILD_SHARED_LIBS)
  set(OXACORE_PC_CFLAGS " -DOXACORE_STATIC")
  set(OXACORE_PC_LIBS " -pthread -ldl")
endif()
configure_file("${CMAKE_CURRENT_LIST_DIR}/OxaCore.pc.in" "${PROJECT_BINARY_DIR}/OxaCore.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/OxaCore.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT development)

# gdb loads what has the library's full name, below a folder of its own. The prefix is known at the installation only.
if(BUILD_SHARED_LIBS AND CMAKE_SYSTEM_NAME STREQUAL "Linux")
  set(place "\${CMAKE_INSTALL_PREFIX}")
  cmake_path(APPEND place "${CMAKE_INSTALL_LIBDIR}")
  install(FILES "${PROJECT_SOURCE_DIR}/tools/gdb/oxacore_printers.py" COMPONENT development
    DESTINATION "${CMAKE_INSTALL_DATADIR}/gdb/auto-load${place}"
    RENAME "libOxaCore.so.${PROJECT_VERSION}-gdb.py")
endif()

# A host that takes the sources in as a folder has pages of its own.
if(PROJECT_IS_TOP_LEVEL)
  install(FILES "${PROJECT_SOURCE_DIR}/README.md" "${PROJECT_SOURCE_DIR}/CHANGELOG.md"
    "${PROJECT_SOURCE_DIR}/cmake/debian/copyright" DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT development)
  install(DIRECTORY "${PROJECT_SOURCE_DIR}/docs/" DESTINATION "${CMAKE_INSTALL_DOCDIR}/docs" COMPONENT development
    FILES_MATCHING PATTERN "*.md" PATTERN "*.svg" PATTERN "*.png"
    PATTERN doxygen EXCLUDE)
  install(DIRECTORY "${PROJECT_SOURCE_DIR}/examples" DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT development
    FILES_MATCHING PATTERN "*.cpp" PATTERN "*.h" PATTERN "*.md")
endif()

# The library's own tests start the second program; its name is the same on every system.
file(RELATIVE_PATH from_bin "${bin_folder}" "${lib_folder}")
if(TARGET oxatest)
  set_target_properties(oxatest PROPERTIES INSTALL_RPATH "$ORIGIN/${from_bin}")
  install(TARGETS oxatest RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT tools)
endif()
if(TARGET UnitTestProcess)
  set_target_properties(UnitTestProcess PROPERTIES INSTALL_RPATH "$ORIGIN/..")
  install(TARGETS UnitTestProcess RUNTIME DESTINATION "${CMAKE_INSTALL_LIBDIR}/OxaCore" COMPONENT tools)
endif()
