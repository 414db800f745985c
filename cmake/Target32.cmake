# The target is 32-bit x86 with SSE2: x87 would round doubles twice, and every layout is 32-bit.
add_compile_options(-m32 -msse2 -mfpmath=sse)
add_link_options(-m32)
add_compile_definitions(_FILE_OFFSET_BITS=64 _TIME_BITS=64)
# CMake knows the compiler as it is without -m32; folders of libraries go by these two.
set(CMAKE_SIZEOF_VOID_P 4)
if(CMAKE_LIBRARY_ARCHITECTURE)
  set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
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
