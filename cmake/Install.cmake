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
# The pointer size that CMake knows is that of the compiler without -m32, here as in many hosts.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/comnlibConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion ARCH_INDEPENDENT)
install(FILES ${PROJECT_BINARY_DIR}/comnlibConfig.cmake
              ${PROJECT_BINARY_DIR}/comnlibConfigVersion.cmake DESTINATION ${package_dir})

# Relative to the file's own place, so that an installed tree may be moved.
file(RELATIVE_PATH pc_to_prefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" pc_to_prefix "${pc_to_prefix}")
configure_file(${CMAKE_CURRENT_LIST_DIR}/comnlib.pc.in ${PROJECT_BINARY_DIR}/comnlib.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/comnlib.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
