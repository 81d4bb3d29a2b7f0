# Fails when one weak or global function is defined by objects of two instruction-set tiers
# (tier from the source suffix _sse2/_ssse3/_avx2/_avx512, everything else the base): the linker
# would keep one copy, which may hold instructions a lower tier's processor does not have. Data
# (nm types V, u: weak objects such as inline constant tables) is the same bytes in every tier and
# is left out.
#   cmake -DNM=nm -DOBJECTS="a.o|b.o|..." -P check_tiers.cmake
string(REPLACE "|" ";" objects "${OBJECTS}")
foreach(obj ${objects})
  set(tier base)
  if(obj MATCHES "_(sse2|ssse3|avx2|avx512)\\.cpp\\.o(bj)?$")
    set(tier ${CMAKE_MATCH_1})
  endif()
  execute_process(COMMAND ${NM} --defined-only ${obj} OUTPUT_VARIABLE out RESULT_VARIABLE rc)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "${NM} failed on ${obj}")
  endif()
  string(REPLACE "\n" ";" lines "${out}")
  foreach(line ${lines})
    if(NOT line MATCHES "^[0-9a-fA-F]* +[WT] +(.+)$")
      continue()
    endif()
    set(name "${CMAKE_MATCH_1}")
    # The 32-bit PIC thunks (mov (%esp), reg; ret) are the compiler's own, the same for every tier.
    if(NOT name MATCHES "^__x86\\.get_pc_thunk\\.")
      string(MAKE_C_IDENTIFIER "${name}" key)
      if(DEFINED tier_of_${key} AND NOT tier_of_${key} STREQUAL tier)
        list(APPEND clashes "${name} (${tier_of_${key}} and ${tier}, ${obj})")
      endif()
      set(tier_of_${key} ${tier})
    endif()
  endforeach()
endforeach()
list(LENGTH objects count)
if(clashes)
  list(JOIN clashes "\n  " text)
  message(FATAL_ERROR "symbols defined by objects of two tiers:\n  ${text}")
endif()
message(STATUS "${count} objects: no symbol defined in two tiers")
