# cmake -DROOT=... -DCXX=... -DSOURCE=... -DWORK=... -P IncludeProject.cmake
# Builds SOURCE with the project in including/, which adds the source tree ROOT as a folder of its own, runs
# the program and installs the project: nothing but that program must come into the prefix.
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK}/run)
execute_process(
  COMMAND ${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR}/including -B ${WORK}/build
    -DCMAKE_CXX_COMPILER=${CXX} -DYAX_SOURCES=${ROOT} -DCLIENT_SOURCE=${SOURCE}
  COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_COMMAND} --build ${WORK}/build COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${WORK}/build/client WORKING_DIRECTORY ${WORK}/run
  COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_COMMAND} --install ${WORK}/build --prefix ${WORK}/installed
  COMMAND_ERROR_IS_FATAL ANY)
file(GLOB_RECURSE installed RELATIVE ${WORK}/installed ${WORK}/installed/*)
if(NOT installed STREQUAL "bin/client")
  message(FATAL_ERROR "Installed is ${installed} instead of the client alone")
endif()
