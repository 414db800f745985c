add_library(comnlib_warnings INTERFACE)
target_compile_options(
  comnlib_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wundef -Wcast-qual
                             $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Wextra-semi>
                             # With clang -Wconversion looks at signs too, unlike with gcc.
                             $<$<C_COMPILER_ID:Clang>:-Wno-sign-conversion>
                             # Members of the conversion matrix are instantiated in the files of
                             # their families.
                             $<$<COMPILE_LANG_AND_ID:CXX,Clang>:-Wno-undefined-var-template>)
if(COMNLIB_WERROR)
  target_compile_options(comnlib_warnings INTERFACE -Werror)
endif()
