// Marks what libYAX.so shows to its users. Everything else is hidden.
#pragma once

#define YAX_API __attribute__((visibility("default")))
