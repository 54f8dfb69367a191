# cmake -DROOT=... -DCXX=... -DWORK=... -DPREFIX=... -DLIBDIR=... -P InstallStatic.cmake
# Builds the source tree ROOT as a static library and installs it into a prefix that was empty before.
file(REMOVE_RECURSE ${WORK} ${PREFIX})
execute_process(
  COMMAND ${CMAKE_COMMAND} -S ${ROOT} -B ${WORK} -DCMAKE_CXX_COMPILER=${CXX}
    -DBUILD_SHARED_LIBS=OFF -DYAX_BUILD_BENCH=OFF -DYAX_BUILD_EXAMPLES=OFF -DYAX_BUILD_TOOLS=OFF
    -DCMAKE_INSTALL_LIBDIR=${LIBDIR}
  COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_COMMAND} --build ${WORK} COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_COMMAND} --install ${WORK} --prefix ${PREFIX}
  COMMAND_ERROR_IS_FATAL ANY)
file(GLOB libraries RELATIVE ${PREFIX}/${LIBDIR} ${PREFIX}/${LIBDIR}/libYAX*)
if(NOT libraries STREQUAL "libYAX.a")
  message(FATAL_ERROR "Installed is ${libraries} instead of libYAX.a")
endif()
