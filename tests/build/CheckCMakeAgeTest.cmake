# cmake -DWORK=... -P CheckCMakeAgeTest.cmake
# Lays out small projects, old and new, and expects the check to name exactly the new ones.

function(check_finds expected line)
  file(REMOVE_RECURSE ${WORK})
  file(WRITE ${WORK}/CMakeLists.txt "cmake_minimum_required(VERSION 3.16...3.25)\n")
  file(WRITE ${WORK}/tools/yaxreg/CMakeLists.txt "project(a)\n${line}\n")
  execute_process(COMMAND ${CMAKE_COMMAND} -DROOT=${WORK}
    -P ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/CheckCMakeAge.cmake
    RESULT_VARIABLE result ERROR_VARIABLE errors)
  string(REGEX REPLACE "[ \n]+" " " errors "${errors}")  # CMake wraps its messages
  if(expected STREQUAL "good" AND NOT result EQUAL 0)
    message(SEND_ERROR "refused: ${line}\n${errors}")
  elseif(expected STREQUAL "bad" AND NOT errors MATCHES "tools/yaxreg/CMakeLists.txt: .* needs CMake 3[.]")
    message(SEND_ERROR "not refused: ${line}")
  endif()
endfunction()

check_finds(good "add_library(YAX SHARED)")
check_finds(good "# PROJECT_IS_TOP_LEVEL")
check_finds(good "configure_file(a b @ONLY)")
check_finds(bad "if(PROJECT_IS_TOP_LEVEL)")
check_finds(bad "install(TARGETS YAX FILE_SET HEADERS DESTINATION include)")
check_finds(bad "file(CONFIGURE OUTPUT a CONTENT b)")
check_finds(bad "execute_process(COMMAND a COMMAND_ERROR_IS_FATAL ANY)")
check_finds(bad "foreach(a b IN ZIP_LISTS c d)")
check_finds(bad "add_subdirectory(a SYSTEM)")
check_finds(bad "add_custom_target(a COMMAND cmake -E rm b)")
