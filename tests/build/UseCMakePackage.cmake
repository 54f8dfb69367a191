# Builds SOURCE with the project in consumer/, which finds the package in PREFIX, and runs the program
# in an empty folder.
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK}/run)
execute_process(
  COMMAND ${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR}/consumer -B ${WORK}/build
    -DCMAKE_CXX_COMPILER=${CXX} "-DCMAKE_CXX_FLAGS=${FLAGS}" -DCMAKE_PREFIX_PATH=${PREFIX}
    -DYAX_VERSION_WANTED=${VERSION} -DCLIENT_SOURCE=${SOURCE} -DCHECK_HEADERS=${CHECK_HEADERS}
  COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_COMMAND} --build ${WORK}/build COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${WORK}/build/client WORKING_DIRECTORY ${WORK}/run
  COMMAND_ERROR_IS_FATAL ANY)
