# Debian packages by CPack, one for each component of the installation; those of i386 and of amd64
# may be installed side by side. tools/debian makes and tests them.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME comnlib)
set(COMNLIB_MAINTAINER "comnlib maintainers <maintainers@localhost>" CACHE STRING "Maintainer of the packages")
set(CPACK_PACKAGE_CONTACT "${COMNLIB_MAINTAINER}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
# Each package has a summary of its own.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime development home documentation)
if(COMNLIB_BUILD_ROWCOPY)
  list(APPEND CPACK_COMPONENTS_ALL tools)
endif()
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
if(COMNLIB_TARGET STREQUAL "i386")
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE i386)
else()
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE amd64)
endif()

# The day of the last release, for the packages' changes: those of two architectures have to agree.
file(STRINGS ${PROJECT_SOURCE_DIR}/CHANGELOG.md release LIMIT_COUNT 1
     REGEX "^## [0-9.]+ - [0-9]+-[0-9]+-[0-9]+$")
string(REGEX REPLACE "^.* - " "" release "${release}")
execute_process(COMMAND date -R -u -d ${release} OUTPUT_VARIABLE date OUTPUT_STRIP_TRAILING_WHITESPACE)

# debian_package(COMPONENT NAME SECTION MULTIARCH DEPENDS SUMMARY TEXT); without a multi-arch value
# the package is the same for every architecture.
function(debian_package component name section multiarch depends summary text)
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name} PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${depends}" PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_DESCRIPTION "${summary}\n${text}" PARENT_SCOPE)
  if(NOT multiarch)
    set(multiarch foreign)
    set(CPACK_DEBIAN_${upper}_PACKAGE_ARCHITECTURE all PARENT_SCOPE)
  endif()
  # CPack has no variable for the second field before CMake 3.31.
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION "${section}\nMulti-Arch: ${multiarch}" PARENT_SCOPE)

  # What every package has to bring: its changes and the terms it is under.
  set(folder ${PROJECT_BINARY_DIR}/debian/${name})
  file(MAKE_DIRECTORY ${folder})
  file(COPY_FILE ${PROJECT_SOURCE_DIR}/cmake/copyright ${folder}/copyright)
  file(WRITE ${folder}/changelog
       "comnlib (${PROJECT_VERSION}) unstable; urgency=medium\n\n"
       "  * See CHANGELOG.md, which is in comnlib-doc.\n\n"
       " -- ${CPACK_PACKAGE_CONTACT}  ${date}\n")
  execute_process(COMMAND gzip -9nf ${folder}/changelog)
  install(FILES ${folder}/copyright ${folder}/changelog.gz
          DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${component} EXCLUDE_FROM_ALL)
  file(WRITE ${folder}/overrides
       "# The owner has no public address yet; COMNLIB_MAINTAINER gives one.\n"
       "${name}: bogus-mail-host\n${name}: bogus-mail-host-in-debian-changelog\n")
  if(component STREQUAL "home")
    file(APPEND ${folder}/overrides
         "# A locale's files are in the character set of the locale.\n${name}: national-encoding\n")
  endif()
  install(FILES ${folder}/overrides DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides
          RENAME ${name} COMPONENT ${component} EXCLUDE_FROM_ALL)
endfunction()

set(text "Conversions of values, exact numerics, money, dates, locales, character\nsets, configuration, \
memory pools, lists and threads for the clients and\nservers of a database stack.")
set(this "(= ${PROJECT_VERSION})")
debian_package(
  runtime libcomnlib${PROJECT_VERSION_MAJOR} libs same "libc6 (>= 2.34)"
  "common services of a database stack, shared library" "${text}")
debian_package(
  development libcomnlib-dev libdevel same "libcomnlib${PROJECT_VERSION_MAJOR} ${this}, libc6-dev"
  "common services of a database stack, development files"
  "${text}\n.\nHeaders, archive, CMake package and pkg-config file.")
debian_package(
  home comnlib-home libs "" "" "common services of a database stack, locales"
  "${text}\n.\nThe localization home: locales, character sets and messages.")
debian_package(
  tools comnlib-tools database foreign "libcomnlib${PROJECT_VERSION_MAJOR} ${this}, comnlib-home ${this}, libc6 (>= 2.34), libstdc++6, libgcc-s1, zlib1g"
  "common services of a database stack, programs"
  "${text}\n.\nThe program rowcopy copies CSV files into records.")
debian_package(
  documentation comnlib-doc doc "" "" "common services of a database stack, documentation"
  "${text}\n.\nThe guides, the API reference and the manual pages.")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS comnlib-home)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA "${PROJECT_BINARY_DIR}/debian/shlibs;${PROJECT_BINARY_DIR}/debian/triggers")
file(WRITE ${PROJECT_BINARY_DIR}/debian/shlibs
     "libcomnlib ${PROJECT_VERSION_MAJOR} libcomnlib${PROJECT_VERSION_MAJOR} (>= ${PROJECT_VERSION})\n")
file(WRITE ${PROJECT_BINARY_DIR}/debian/triggers "activate-noawait ldconfig\n")
include(CPack)
