# cmake -DBUILD=... -DPREFIX=... -P Install.cmake
# Installs a build into a prefix that was empty before. With -DCOMPONENT=... -DFILES=a;b only that component, which
# must be exactly these files.
cmake_minimum_required(VERSION 3.25)
file(REMOVE_RECURSE ${PREFIX})
set(component)
if(COMPONENT)
  set(component --component ${COMPONENT})
endif()
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${PREFIX} ${component}
  COMMAND_ERROR_IS_FATAL ANY)
if(COMPONENT)
  file(GLOB_RECURSE installed RELATIVE ${PREFIX} ${PREFIX}/*)
  list(SORT installed)
  if(NOT installed STREQUAL FILES)
    message(FATAL_ERROR "Installed is ${installed} instead of ${FILES}")
  endif()
endif()
