# Installing libYAX: the library, its headers, the CMake package, the pkg-config file and the pages for its users.
# A client includes "yax/Settings.h" or "yax/yax.h" from <prefix>/include, "registry/Registry.h" and the like from
# <prefix>/include/yax.

include(CMakePackageConfigHelpers)

set(yax_include_dir ${CMAKE_INSTALL_INCLUDEDIR}/yax)
set(yax_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/YAX)

install(TARGETS YAX EXPORT YAXTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
get_property(headers GLOBAL PROPERTY YAX_PUBLIC_HEADERS)
foreach(header IN LISTS headers)
  get_filename_component(folder ${header} DIRECTORY)
  string(REGEX REPLACE "^yax$" "." folder ${folder})
  install(FILES ${header} DESTINATION ${yax_include_dir}/${folder})
endforeach()

install(EXPORT YAXTargets NAMESPACE YAX:: DESTINATION ${yax_package_dir})
configure_package_config_file(cmake/YAXConfig.cmake.in YAXConfig.cmake
  INSTALL_DESTINATION ${yax_package_dir})
# Before 1.0 a new minor version may break clients.
write_basic_package_version_file(YAXConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES
  ${CMAKE_CURRENT_BINARY_DIR}/YAXConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/YAXConfigVersion.cmake
  DESTINATION ${yax_package_dir})

# The prefix is told relative to the file itself, so that the installed tree can be moved.
file(RELATIVE_PATH yax_pc_to_prefix
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" yax_pc_to_prefix "${yax_pc_to_prefix}")
# What a program that links the static library needs besides.
set(yax_pc_private -pthread)
foreach(library IN LISTS CMAKE_DL_LIBS)
  string(APPEND yax_pc_private " -l${library}")
endforeach()
configure_file(cmake/yax.pc.in yax.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/yax.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# What users of the library read. Pages lead to each other by relative links, so they keep their places. The reference
# is there when "make reference" has made it.
install(FILES
  docs/behaviour.md
  docs/components.md
  docs/format.md
  docs/json.md
  docs/performance.md
  DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc)
install(DIRECTORY docs/guide docs/performance DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc)
install(DIRECTORY build/reference/html/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/reference COMPONENT doc OPTIONAL)

# cpack -G TGZ: an archive of all this.
if(CMAKE_SOURCE_DIR STREQUAL PROJECT_SOURCE_DIR)
  set(CPACK_PACKAGE_VENDOR "libYAX")
  set(CPACK_GENERATOR TGZ)
  include(CPack)
endif()
