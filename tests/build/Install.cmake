# cmake -DBUILD=... -DPREFIX=... -P Install.cmake
# Installs a build into a prefix that was empty before.
file(REMOVE_RECURSE ${PREFIX})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${PREFIX}
  COMMAND_ERROR_IS_FATAL ANY)
