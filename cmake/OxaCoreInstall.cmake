# What a host finds: the library under its versioned soname, the public headers, the CMake package and the
# pkg-config file. All of it can be moved as a whole.
include(CMakePackageConfigHelpers)

set(package "${CMAKE_INSTALL_LIBDIR}/cmake/OxaCore")

install(TARGETS OxaCore EXPORT OxaCoreTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/Infrastructure" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
install(EXPORT OxaCoreTargets NAMESPACE OxaCore:: DESTINATION "${package}")

configure_package_config_file("${CMAKE_CURRENT_LIST_DIR}/OxaCoreConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/OxaCoreConfig.cmake" INSTALL_DESTINATION "${package}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/OxaCoreConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/OxaCoreConfig.cmake" "${PROJECT_BINARY_DIR}/OxaCoreConfigVersion.cmake"
  DESTINATION "${package}")

set(pkgconfig "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
file(RELATIVE_PATH OXACORE_PREFIX_FROM_PC "/prefix/${pkgconfig}" "/prefix")
configure_file("${CMAKE_CURRENT_LIST_DIR}/OxaCore.pc.in" "${PROJECT_BINARY_DIR}/OxaCore.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/OxaCore.pc" DESTINATION "${pkgconfig}")
