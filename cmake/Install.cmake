# Installation: libraries, headers, the CMake package and the pkg-config file, all named comnlib.
include(CMakePackageConfigHelpers)

install(TARGETS comnlib comnlib_static EXPORT comnlibTargets)
install(DIRECTORY generic/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING
        PATTERN "*.h")
install(FILES companion/intl.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/comnlib)
install(DIRECTORY home DESTINATION ${CMAKE_INSTALL_DATADIR}/comnlib)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/comnlib)
install(
  EXPORT comnlibTargets
  NAMESPACE comnlib::
  DESTINATION ${package_dir})
configure_package_config_file(
  ${CMAKE_CURRENT_LIST_DIR}/comnlibConfig.cmake.in ${PROJECT_BINARY_DIR}/comnlibConfig.cmake
  INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/comnlibConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/comnlibConfig.cmake
              ${PROJECT_BINARY_DIR}/comnlibConfigVersion.cmake DESTINATION ${package_dir})

configure_file(${CMAKE_CURRENT_LIST_DIR}/comnlib.pc.in ${PROJECT_BINARY_DIR}/comnlib.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/comnlib.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
