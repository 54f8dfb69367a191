# GoogleTest, compiled from its sources for the target at hand (Debian's package googletest).

include_guard(GLOBAL)

set(YAX_GOOGLETEST_DIR /usr/src/googletest/googletest CACHE PATH "Sources of GoogleTest")
if(NOT EXISTS ${YAX_GOOGLETEST_DIR}/src/gtest-all.cc)
  message(FATAL_ERROR "The tests need the sources of GoogleTest: install the package googletest or "
    "set YAX_GOOGLETEST_DIR, or configure with -DYAX_BUILD_TESTS=OFF")
endif()

add_library(yax_gtest STATIC EXCLUDE_FROM_ALL
  ${YAX_GOOGLETEST_DIR}/src/gtest-all.cc
  ${YAX_GOOGLETEST_DIR}/src/gtest_main.cc)
target_compile_features(yax_gtest PUBLIC cxx_std_17)
target_compile_options(yax_gtest PRIVATE -w)
target_include_directories(yax_gtest PRIVATE ${YAX_GOOGLETEST_DIR})
target_include_directories(yax_gtest SYSTEM PUBLIC ${YAX_GOOGLETEST_DIR}/include)
target_link_libraries(yax_gtest PUBLIC Threads::Threads)
