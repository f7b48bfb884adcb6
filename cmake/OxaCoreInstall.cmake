include(CMakePackageConfigHelpers)

install(TARGETS OxaCore EXPORT OxaCoreTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/Infrastructure" DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT OxaCoreTargets NAMESPACE OxaCore:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/OxaCore)

configure_package_config_file("${CMAKE_CURRENT_LIST_DIR}/OxaCoreConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/OxaCoreConfig.cmake" INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/OxaCore)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/OxaCoreConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/OxaCoreConfig.cmake" "${PROJECT_BINARY_DIR}/OxaCoreConfigVersion.cmake"
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/OxaCore)
