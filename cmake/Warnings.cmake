add_library(comnlib_warnings INTERFACE)
target_compile_options(
  comnlib_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wundef -Wcast-qual
                             $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Wextra-semi>)
if(COMNLIB_WERROR)
  target_compile_options(comnlib_warnings INTERFACE -Werror)
endif()
