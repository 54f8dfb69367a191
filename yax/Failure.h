// What has failed last in the calling thread, for yax_failure_text.
#pragma once

#include "yax/CObjects.h"

namespace yax {

// Where something has failed. The texts are the caller's, and are copied.
struct FailedAt {
  const char* path = "";         // of a key or a file, or words
  const char* between = "";      // stands before what follows
  const char* name = "";         // of a value, a file or another key
  const char* reason = nullptr;  // more than the status tells, static; null: nothing
};

// Keeps a failure, in place of the one before; returns the status.
unsigned int KeepFailure(const FailedAt& at, unsigned int result);
// The same of a value of a key, or of the key itself: the name is null then. No key: it could not
// be named.
unsigned int KeepFailure(const yax_key* key, const char* name, unsigned int result,
                         const char* reason);
// Keeps that a path names no key.
unsigned int KeepUnnamed(const FailedAt& at, unsigned int result);
// Why the latest path that names no key does not; null: nobody knows.
const char* ReasonOfNoKey();

// Returns the status of an operation, which is kept unless it is success.
inline unsigned int Told(const FailedAt& at, unsigned int result) {
  return result == status::kOk ? result : KeepFailure(at, result);
}
inline unsigned int Told(const yax_key* key, const char* name, unsigned int result,
                         const char* reason = nullptr) {
  return result == status::kOk ? result : KeepFailure(key, name, result, reason);
}

constexpr char kNoKey[] = "(no key)";  // in place of a path
constexpr char kNullPointer[] = "a null pointer";
constexpr char kNotOpen[] = "the registry is not open";

}  // namespace yax
