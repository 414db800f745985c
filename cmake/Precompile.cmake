# comnlib_precompile(TARGET HEADER...): the target's sources find these headers precompiled. A
# launcher takes care of the compiler cache.
function(comnlib_precompile target)
  target_precompile_headers(${target} PRIVATE ${ARGN})
  if(CMAKE_CXX_COMPILER_LAUNCHER)
    set_target_properties(${target} PROPERTIES CXX_COMPILER_LAUNCHER
                                               "${PROJECT_SOURCE_DIR}/tools/fresh_pch;${CMAKE_CXX_COMPILER_LAUNCHER}")
  endif()
endfunction()
