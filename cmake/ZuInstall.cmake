# cmake --install + find_package(ZuUtils CONFIG)
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(ZUUTILS_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/ZuUtils)

install(TARGETS ZuUtils EXPORT ZuUtilsTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ZuUtils)

install(EXPORT ZuUtilsTargets NAMESPACE ZuUtils:: DESTINATION ${ZUUTILS_CMAKE_DIR})

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/ZuUtilsConfig.cmake.in
  ${PROJECT_BINARY_DIR}/ZuUtilsConfig.cmake INSTALL_DESTINATION ${ZUUTILS_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/ZuUtilsConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/ZuUtilsConfig.cmake ${PROJECT_BINARY_DIR}/ZuUtilsConfigVersion.cmake
  DESTINATION ${ZUUTILS_CMAKE_DIR})
