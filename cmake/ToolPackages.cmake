# CLI11 and nlohmann-json, which the tools are made with. Both are headers alone: asking the compiler
# at hand for them works in cross builds, too. And libedit, without which they work, too.

include(CheckCXXSourceCompiles)
include(CheckIncludeFileCXX)

# yax_need_header(HEADER RESULT PACKAGE)
function(yax_need_header header result package)
  set(CMAKE_REQUIRED_FLAGS -std=c++17)
  check_include_file_cxx(${header} ${result})
  if(NOT ${result})
    unset(${result} CACHE)  # looked for again once the package is there
    message(FATAL_ERROR "The tools need ${header}: install the package ${package}, tell its folder "
      "by -DCMAKE_CXX_FLAGS=-I..., or configure with -DYAX_BUILD_TOOLS=OFF")
  endif()
endfunction()

yax_need_header(CLI/Version.hpp YAX_HAVE_CLI11 libcli11-dev)
yax_need_header(nlohmann/json_fwd.hpp YAX_HAVE_NLOHMANN_JSON nlohmann-json3-dev)

# History and completion of lines that are typed, where a program can be linked with it.
set(YAX_TERMINAL_LINES TerminalLinesPlain.cpp)
set(YAX_LINE_LIBRARY)
if(YAX_LINE_EDITING)
  set(CMAKE_REQUIRED_LIBRARIES edit)
  check_cxx_source_compiles("#include <histedit.h>
    int main() { return el_init(\"\", 0, 0, 0) == 0; }" YAX_HAVE_LIBEDIT)
  unset(CMAKE_REQUIRED_LIBRARIES)
  if(YAX_HAVE_LIBEDIT)
    set(YAX_TERMINAL_LINES TerminalLinesEdited.cpp)
    set(YAX_LINE_LIBRARY edit)
  else()
    unset(YAX_HAVE_LIBEDIT CACHE)
    message(STATUS "No libedit: yaxreg shell has no history and no completion")
  endif()
endif()
