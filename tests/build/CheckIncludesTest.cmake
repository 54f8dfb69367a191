# cmake -DWORK=... -P CheckIncludesTest.cmake
# Lays out a small tree of sources, good and bad, and expects the check to name exactly the bad ones.

file(REMOVE_RECURSE ${WORK})

function(check_finds expected file header)
  file(REMOVE_RECURSE ${WORK})
  file(WRITE ${WORK}/${file} "#pragma once\n  # include \"${header}\"  // why\n#include <new>\n")
  execute_process(COMMAND ${CMAKE_COMMAND} -DROOT=${WORK}
    -P ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/CheckIncludes.cmake
    RESULT_VARIABLE result ERROR_VARIABLE errors)
  string(REGEX REPLACE "[ \n]+" " " errors "${errors}")  # CMake wraps its messages
  if(expected STREQUAL "good" AND NOT result EQUAL 0)
    message(SEND_ERROR "refused: ${file} includes ${header}")
  elseif(expected STREQUAL "bad" AND NOT errors MATCHES "${file} must not include ${header}")
    message(SEND_ERROR "not refused: ${file} includes ${header}")
  endif()
endfunction()

check_finds(good platform/PCList.h platform/PCMutex.h)
check_finds(bad platform/PCList.h platform/posix/PosixCalls.h)
check_finds(bad platform/posix/PCList.cpp registry/Value.h)
check_finds(good registry/Value.h platform/Export.h)
check_finds(bad registry/Value.cpp registry/store/TernaryFile.h)
check_finds(bad registry/Array.h registry/Registry.h)
check_finds(bad registry/Registry.cpp platform/posix/PosixCalls.h)
check_finds(good registry/store/TernaryFile.h registry/Array.h)
check_finds(bad registry/store/TernaryFile.h registry/Registry.h)
check_finds(bad registry/store/TernaryFile.cpp registry/filetree/TernaryRegistry.h)
check_finds(good registry/memtree/TernaryKeyTree.h registry/store/TernaryFile.h)
check_finds(bad registry/memtree/TernaryKeyTree.h registry/filetree/TernaryRegistry.h)
check_finds(bad registry/filetree/TernaryRegistry.h registry/memtree/TernaryKeyTree.h)
check_finds(good registry/RegistryInstance.cpp registry/memtree/TernaryKeyTree.h)
check_finds(bad registry/Registry.cpp tests/support/Temp.h)
check_finds(bad registry/Registry.cpp framework/YAX.h)
check_finds(bad registry/Registry.cpp Value.h)
check_finds(good framework/CYAX.cpp registry/Registry.h)
check_finds(good framework/CYAX.cpp platform/PCMutex.h)
check_finds(bad framework/CYAX.cpp registry/store/TernaryFile.h)
check_finds(bad framework/CYAX.cpp registry/memtree/TernaryKeyTree.h)
check_finds(bad platform/PCList.h framework/YAX.h)
