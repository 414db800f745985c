# The processor that the library is built for: i386, the default, or x86_64. Each has its own binary
# interface; generic/src/machine.h has what follows from it in the sources.
set(COMNLIB_TARGET i386 CACHE STRING "Processor to build for: i386 or x86_64")
set_property(CACHE COMNLIB_TARGET PROPERTY STRINGS i386 x86_64)
if(COMNLIB_TARGET STREQUAL "i386")
  # With SSE2, since x87 would round doubles twice.
  set(COMNLIB_TARGET_OPTION -m32)
  set(COMNLIB_TARGET_BITS 32)
  add_compile_options(-m32 -msse2 -mfpmath=sse)
  add_compile_definitions(_FILE_OFFSET_BITS=64 _TIME_BITS=64)
elseif(COMNLIB_TARGET STREQUAL "x86_64")
  set(COMNLIB_TARGET_OPTION -m64)
  set(COMNLIB_TARGET_BITS 64)
  add_compile_options(-m64)
else()
  message(FATAL_ERROR "COMNLIB_TARGET is i386 or x86_64, not \"${COMNLIB_TARGET}\"")
endif()
# A build folder is for one target: the libraries that were found for it and the folder to install to
# stay in the cache.
if(PROJECT_IS_TOP_LEVEL)
  if(NOT DEFINED CACHE{COMNLIB_FOLDER_TARGET})
    set(COMNLIB_FOLDER_TARGET ${COMNLIB_TARGET} CACHE INTERNAL "Processor that this folder is for")
  elseif(NOT COMNLIB_TARGET STREQUAL COMNLIB_FOLDER_TARGET)
    set(wanted ${COMNLIB_TARGET})
    set_property(CACHE COMNLIB_TARGET PROPERTY VALUE ${COMNLIB_FOLDER_TARGET})
    message(FATAL_ERROR "comnlib: this build folder is for ${COMNLIB_FOLDER_TARGET}; take another one for ${wanted}")
  endif()
endif()
add_link_options(${COMNLIB_TARGET_OPTION})
# CMake looked at the compiler without that option; these two decide where it looks for libraries.
math(EXPR CMAKE_SIZEOF_VOID_P "${COMNLIB_TARGET_BITS} / 8")
set(CMAKE_LIBRARY_ARCHITECTURE ${COMNLIB_TARGET}-linux-gnu)
# Where Debian's 64-bit packages of 32-bit libraries put them.
set_property(GLOBAL PROPERTY FIND_LIBRARY_USE_LIB32_PATHS TRUE)
# Both libraries may be installed below one prefix.
if(PROJECT_IS_TOP_LEVEL)
  set(CMAKE_INSTALL_LIBDIR lib/${CMAKE_LIBRARY_ARCHITECTURE} CACHE PATH "Folder of the libraries")
endif()
# Places in diagnostics name files from the source tree's root, wherever it was built.
add_compile_options(-ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)

if(COMNLIB_SANITIZE)
  add_compile_options(-fsanitize=${COMNLIB_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${COMNLIB_SANITIZE})
endif()
# Only the library counts, atomically, since tests run it in several threads.
add_library(comnlib_coverage INTERFACE)
if(COMNLIB_COVERAGE)
  target_compile_options(comnlib_coverage INTERFACE --coverage -fprofile-update=atomic)
  add_link_options(--coverage)
endif()

add_library(comnlib_hardening INTERFACE)
target_compile_options(comnlib_hardening INTERFACE -fstack-protector-strong)
if(NOT COMNLIB_SANITIZE AND NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
  target_compile_definitions(comnlib_hardening INTERFACE _FORTIFY_SOURCE=2)
endif()
target_link_options(comnlib_hardening INTERFACE -Wl,-z,relro,-z,now,-z,noexecstack)
