# Warnings for every target of the project; errors when KVT_WERROR is on (the presets and CI turn it
# on; it is off by default so that a newer compiler's new warnings do not break a user's build).
# The library's own sources (kvt_library_warnings) also get the conversion, declaration and
# undefined-macro warnings.
function(kvt_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wshadow -Wvla -Wformat=2 -Wundef -Wmissing-declarations)
  if(KVT_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()

function(kvt_library_warnings target)
  kvt_warnings(${target})
  target_compile_options(${target} PRIVATE -Wconversion)
  if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    # Clang's -Wconversion also warns on sign changes, which GCC's does not in C++; keep the two
    # compilers to one rule.
    target_compile_options(${target} PRIVATE -Wno-sign-conversion)
  endif()
endfunction()
