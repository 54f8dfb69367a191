# Building and installing needs CMake 3.16 only: the files that do it use nothing newer. -DROOT=source tree.
# Each entry is the version that brought a feature, and an expression that finds it.
set(newer
  "3.17 ZIP_LISTS"
  "3.17 CMAKE_CURRENT_FUNCTION"
  "3.17 CMAKE_MESSAGE_CONTEXT"
  "3.17 CHECK_(START|PASS|FAIL)"
  "3.17 -E rm "
  "3.18 cmake_language[(]"
  "3.18 file[(](CONFIGURE|ARCHIVE_CREATE|ARCHIVE_EXTRACT)"
  "3.18 find_[a-z]+[(][^)]* REQUIRED[^)]*NAMES"
  "3.18 DISCOVERY_MODE"
  "3.18 [$]<(LINK_LANGUAGE|LINK_LANG_AND_ID|DEVICE_LINK|HOST_LINK)"
  "3.18 CMAKE_PCH_"
  "3.18 include[(]CheckLinkerFlag"
  "3.18 -E cat "
  "3.19 string[(]JSON"
  "3.19 file[(](CHMOD|REAL_PATH)"
  "3.19 COMMAND_ERROR_IS_FATAL"
  "3.19 include[(]CheckCompilerFlag"
  "3.19 include[(]CheckSourceCompiles"
  "3.19 cmake_language[(]DEFER"
  "3.20 cmake_path[(]"
  "3.20 try_run[(][^)]*WORKING_DIRECTORY"
  "3.20 configure_file[(][^)]*(FILE_PERMISSIONS|USE_SOURCE_PERMISSIONS)"
  "3.20 cxx_std_23"
  "3.20 UNITY_BUILD_UNIQUE_ID"
  "3.21 PROJECT_IS_TOP_LEVEL"
  "3.21 install[(](RUNTIME_DEPENDENCY_SET|IMPORTED_RUNTIME_ARTIFACTS)"
  "3.21 RUNTIME_DEPENDENCIES"
  "3.21 TARGET_RUNTIME_DLLS"
  "3.21 --toolchain "
  "3.25 -E env --modify"
  "3.22 ENVIRONMENT_MODIFICATION"
  "3.22 CMAKE_REQUIRE_FIND_PACKAGE"
  "3.23 FILE_SET"
  "3.23 BUILD_LOCAL_INTERFACE"
  "3.23 HEADER_SETS|INTERFACE_HEADER_SETS"
  "3.24 LINK_(LIBRARY|GROUP):"
  "3.24 [$]<PATH:"
  "3.24 FIND_PACKAGE_ARGS"
  "3.24 VERIFY_INTERFACE_HEADER_SETS"
  "3.24 COMPILE_WARNING_AS_ERROR"
  "3.25 block[(]"
  "3.25 return[(]PROPAGATE"
  "3.25 add_subdirectory[(][^)]* SYSTEM"
  "3.25 CMAKE_HOST_LINUX")

file(GLOB scripts ${ROOT}/CMakeLists.txt ${ROOT}/cmake/*.cmake ${ROOT}/cmake/*.in)
foreach(folder bench examples framework platform registry tools)
  file(GLOB_RECURSE found ${ROOT}/${folder}/CMakeLists.txt ${ROOT}/${folder}/*.cmake)
  list(APPEND scripts ${found})
endforeach()
list(LENGTH scripts count)
if(count EQUAL 0)
  message(FATAL_ERROR "No files of CMake in ${ROOT}")
endif()
foreach(script IN LISTS scripts)
  file(READ ${script} text)
  string(REGEX REPLACE "#[^\n]*" "" text "${text}")
  foreach(entry IN LISTS newer)
    string(SUBSTRING "${entry}" 0 4 version)
    string(SUBSTRING "${entry}" 5 -1 expression)
    if(text MATCHES "${expression}")
      message(SEND_ERROR "${script}: ${CMAKE_MATCH_0} needs CMake ${version}")
    endif()
  endforeach()
endforeach()
file(READ ${ROOT}/CMakeLists.txt text)
if(NOT text MATCHES "cmake_minimum_required[(]VERSION 3[.]16[.][.][.]")
  message(SEND_ERROR "CMakeLists.txt does not ask for CMake 3.16")
endif()
