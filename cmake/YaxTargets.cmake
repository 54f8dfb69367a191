# What the targets of this project have in common.

# Every target: C++17 as written in the standard, 64-bit file offsets, our warnings where asked for.
function(yax_target target)
  target_compile_features(${target} PRIVATE cxx_std_17)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
  if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    target_compile_definitions(${target} PRIVATE _FILE_OFFSET_BITS=64)
  endif()
  if(YAX_WARNINGS)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
  endif()
  if(YAX_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()

# An object library that goes into libYAX: nothing throws, nothing is visible unless marked so.
function(yax_library_part target)
  yax_target(${target})
  target_include_directories(${target} PUBLIC ${PROJECT_SOURCE_DIR})
  target_compile_options(${target} PRIVATE
    -fno-exceptions -fno-rtti -fno-semantic-interposition -ffunction-sections -fdata-sections)
  target_link_libraries(${target} PUBLIC Threads::Threads)
  set_target_properties(${target} PROPERTIES
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    POSITION_INDEPENDENT_CODE ON)
endfunction()

# What runs seldom, or beside far slower things: where the library is optimised, this is for size.
set(yax_for_size "$<$<OR:$<CONFIG:Release>,$<CONFIG:RelWithDebInfo>,$<CONFIG:None>>:-Os>")
function(yax_small_part target)
  target_compile_options(${target} PRIVATE ${yax_for_size})
endfunction()
function(yax_small_sources)
  set_source_files_properties(${ARGN} PROPERTIES COMPILE_OPTIONS "${yax_for_size}")
endfunction()
# What every change goes through: for size on 32-bit machines alone, where memory and flash are small.
function(yax_lean_sources)
  if(CMAKE_SIZEOF_VOID_P LESS 8)
    yax_small_sources(${ARGN})
  endif()
endfunction()

# Headers that clients get; paths from the root of the project, which they keep where they are installed.
function(yax_public_headers)
  set_property(GLOBAL APPEND PROPERTY YAX_PUBLIC_HEADERS ${ARGN})
endfunction()
