// Marks what libYAX.so shows to its users. Everything else is hidden.
#pragma once

// Seen by programs and components that link libYAX.so.
#define YAX_API __attribute__((visibility("default")))
// Hidden, too, though it belongs to a class that is shown.
#define YAX_LOCAL __attribute__((visibility("hidden")))
