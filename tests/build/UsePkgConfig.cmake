# Compiles SOURCE with what pkg-config tells about the package in PREFIX, and runs the program in an
# empty folder; by EMULATOR, if that is given.
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK}/run)
set(ENV{PKG_CONFIG_PATH} ${PREFIX}/${LIBDIR}/pkgconfig)
execute_process(COMMAND ${PKG_CONFIG} --modversion yax
  OUTPUT_VARIABLE version OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
if(NOT version STREQUAL VERSION)
  message(FATAL_ERROR "pkg-config tells version ${version}, not ${VERSION}")
endif()
execute_process(COMMAND ${PKG_CONFIG} ${KIND} --cflags --libs yax
  OUTPUT_VARIABLE options OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(options UNIX_COMMAND "${options}")
separate_arguments(flags UNIX_COMMAND "${FLAGS}")
execute_process(
  COMMAND ${CXX} ${flags} -std=c++17 ${SOURCE} -o ${WORK}/client ${options}
    -Wl,-rpath,${PREFIX}/${LIBDIR}
  COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${EMULATOR} ${WORK}/client WORKING_DIRECTORY ${WORK}/run COMMAND_ERROR_IS_FATAL ANY)
