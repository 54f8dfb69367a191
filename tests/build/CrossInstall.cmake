# cmake -DROOT=... -DBUILD=... -DTOOLCHAIN=... -DCXX=... -DEMULATOR=... -DLIBDIR=... -DSOURCE=... -DWORK=...
#   -DPKG_CONFIG=... -DVERSION=... -P CrossInstall.cmake
# Installs a build for another machine below DESTDIR, as systems that make images do, and builds a client for that
# machine against what is there: by CMake with a toolchain file that names the folder as a root, by pkg-config with
# the folder as its sysroot. The clients run where there is an emulator.
cmake_minimum_required(VERSION 3.25)
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK}/run)
set(root ${WORK}/root)
set(ENV{DESTDIR} ${root})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix /usr OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
unset(ENV{DESTDIR})

file(GLOB installed RELATIVE ${root} ${root}/*)
if(NOT installed STREQUAL "usr")
  message(FATAL_ERROR "Installed is ${installed} instead of usr")
endif()
# Nothing tells where it was built.
file(GLOB_RECURSE files ${root}/usr/*.cmake ${root}/usr/*.pc ${root}/usr/*.h)
foreach(file IN LISTS files)
  file(READ ${file} text)
  foreach(folder IN ITEMS ${ROOT} ${BUILD} ${root})
    string(FIND "${text}" "${folder}" found)
    if(NOT found EQUAL -1)
      message(SEND_ERROR "${file} names ${folder}")
    endif()
  endforeach()
endforeach()

file(WRITE ${WORK}/toolchain.cmake "include(${TOOLCHAIN})\nlist(APPEND CMAKE_FIND_ROOT_PATH ${root})\n")
execute_process(
  COMMAND ${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR}/consumer -B ${WORK}/build -DCLIENT_SOURCE=${SOURCE}
    -DCMAKE_TOOLCHAIN_FILE=${WORK}/toolchain.cmake
  OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
file(STRINGS ${WORK}/build/CMakeCache.txt place REGEX "^YAX_DIR:PATH=${root}/usr/")
if(NOT place)
  message(FATAL_ERROR "The client has found another package than the one in ${root}")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} --build ${WORK}/build OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${EMULATOR} ${WORK}/build/client WORKING_DIRECTORY ${WORK}/run COMMAND_ERROR_IS_FATAL ANY)

if(PKG_CONFIG)
  set(ENV{PKG_CONFIG_LIBDIR} ${root}/usr/${LIBDIR}/pkgconfig)
  set(ENV{PKG_CONFIG_SYSROOT_DIR} ${root})
  execute_process(
    COMMAND ${CMAKE_COMMAND} -DPREFIX=${root}/usr -DLIBDIR=${LIBDIR} -DVERSION=${VERSION} -DCXX=${CXX}
      "-DFLAGS=${FLAGS}" "-DEMULATOR=${EMULATOR}" -DPKG_CONFIG=${PKG_CONFIG} -DSOURCE=${SOURCE} -DWORK=${WORK}/pkg-config
      -P ${CMAKE_CURRENT_LIST_DIR}/UsePkgConfig.cmake
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
endif()
