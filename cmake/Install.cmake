# Installation: libraries, headers, the localization home, the CMake package and the pkg-config
# file, all named comnlib. Everything finds the rest from its own place, so that an installed tree
# may be moved; only a folder that was given as an absolute path stays where it is.
#
# The libraries for 32-bit and for 64-bit hosts share a prefix: what both install is the same in
# both, everything else has the target in its name or lies in the target's folder. The components
# are those of the Debian packages (Package.cmake): runtime, development, home, tools,
# documentation.
include(CMakePackageConfigHelpers)

install(
  TARGETS comnlib comnlib_static
  EXPORT comnlibTargets
  LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE COMPONENT development)
# Packages are stripped, the archive too, which CMake leaves as it is.
install(
  CODE "if(CMAKE_INSTALL_DO_STRIP)
  execute_process(COMMAND \"${CMAKE_STRIP}\" --strip-debug
    \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/$<TARGET_FILE_NAME:comnlib_static>\")
endif()"
  COMPONENT development)
install(
  DIRECTORY generic/include/
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  COMPONENT development
  FILES_MATCHING
  PATTERN "*.h"
  PATTERN "for_*.h" EXCLUDE)
install(FILES companion/intl.h generic/include/comnlib/for_${COMNLIB_TARGET}.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/comnlib COMPONENT development)
set(home_dir ${CMAKE_INSTALL_DATADIR}/comnlib/home)
install(DIRECTORY home/ DESTINATION ${home_dir} COMPONENT home)
install(FILES tools/valgrind.supp DESTINATION ${CMAKE_INSTALL_DATADIR}/comnlib COMPONENT development)
install(FILES README.md SECURITY.md CHANGELOG.md CONTRIBUTING.md DESTINATION ${CMAKE_INSTALL_DOCDIR}
        COMPONENT documentation)
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation
        PATTERN Doxyfile EXCLUDE)
# The hosts that README and guides refer to.
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation
        FILES_MATCHING PATTERN "*.c" PATTERN "*.cfg" PATTERN data EXCLUDE)
# The API reference, where tools/docs has built it.
install(DIRECTORY build/docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/html COMPONENT documentation OPTIONAL)

# The manual pages, where tools/man has written them.
set(man_pages ${CMAKE_CURRENT_SOURCE_DIR}/build/man)
install(DIRECTORY ${man_pages}/man3 ${man_pages}/man5 DESTINATION ${CMAKE_INSTALL_MANDIR}
        COMPONENT documentation OPTIONAL)

# One CMake package, with a file of targets for each library.
set(package_dir lib/cmake/comnlib)
install(
  EXPORT comnlibTargets
  NAMESPACE comnlib::
  FILE comnlib-${COMNLIB_TARGET}.cmake
  DESTINATION ${package_dir}
  COMPONENT development)
configure_package_config_file(
  ${CMAKE_CURRENT_LIST_DIR}/comnlibConfig.cmake.in ${PROJECT_BINARY_DIR}/comnlibConfig.cmake
  INSTALL_DESTINATION ${package_dir}
  PATH_VARS home_dir)
# The pointer size that CMake knows is that of the compiler without -m32; the package looks itself.
# The file names a size all the same, which has to be one for both libraries.
block()
  set(CMAKE_SIZEOF_VOID_P 4)
  write_basic_package_version_file(${PROJECT_BINARY_DIR}/comnlibConfigVersion.cmake
                                   COMPATIBILITY SameMajorVersion ARCH_INDEPENDENT)
endblock()
install(FILES ${PROJECT_BINARY_DIR}/comnlibConfig.cmake
              ${PROJECT_BINARY_DIR}/comnlibConfigVersion.cmake DESTINATION ${package_dir}
        COMPONENT development)

set(pc_prefix "${CMAKE_INSTALL_PREFIX}")
if(NOT IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  file(RELATIVE_PATH pc_prefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
  string(REGEX REPLACE "^(.*)/$" "\${pcfiledir}/\\1" pc_prefix "${pc_prefix}")
endif()
# cmake_path leaves an absolute folder as it is.
foreach(dir IN ITEMS CMAKE_INSTALL_LIBDIR CMAKE_INSTALL_INCLUDEDIR home_dir)
  cmake_path(APPEND pc_${dir} "\${prefix}" "${${dir}}")
endforeach()
configure_file(${CMAKE_CURRENT_LIST_DIR}/comnlib.pc.in ${PROJECT_BINARY_DIR}/comnlib.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/comnlib.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
        COMPONENT development)

add_custom_target(
  uninstall
  COMMAND ${CMAKE_COMMAND} -P ${CMAKE_CURRENT_LIST_DIR}/Uninstall.cmake ${PROJECT_BINARY_DIR}
  COMMENT "Removing what was installed")
