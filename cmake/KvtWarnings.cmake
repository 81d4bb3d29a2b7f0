# Warnings for every target of the project; errors unless KVT_WERROR is off.
function(kvt_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wshadow -Wvla -Wformat=2)
  if(KVT_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
