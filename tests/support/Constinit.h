// A variable that must need no code to be initialised, in C++17.
#pragma once

#ifdef __clang__
#define YAX_TEST_CONSTINIT [[clang::require_constant_initialization]]
#else
#define YAX_TEST_CONSTINIT __constinit
#endif
