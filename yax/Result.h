// What operations answer: a status, or a value or a status.
#pragma once

#include <optional>
#include <string>
#include <utility>

#include "yax/yax.h"

namespace yax {

// True for success. Of every failure the number and its words.
class [[nodiscard]] Status {
 public:
  // Of a number, as the C interface answers it.
  constexpr Status(unsigned code = YAX_OK) : code_(code) {}
  // Whether it is success.
  constexpr explicit operator bool() const { return code_ == YAX_OK; }
  constexpr bool ok() const { return code_ == YAX_OK; }
  constexpr unsigned code() const { return code_; }  // one of YAX_OK, YAX_NO_RIGHT, ...
  // A few words; the library's.
  const char* text() const { return yax_status_text(code_); }
  // Where it is left out of account on purpose.
  constexpr void Ignore() const {}

  // The same number.
  friend constexpr bool operator==(Status a, Status b) { return a.code_ == b.code_; }
  friend constexpr bool operator!=(Status a, Status b) { return a.code_ != b.code_; }

 private:
  unsigned code_;
};

// What has failed last in this thread: "network/eth0:mtu: the value has another type, it is a
// text". Empty when nothing has.
inline std::string FailureText() {
  return yax_failure_text();
}

// A value, or why there is none.
template <class T>
class [[nodiscard]] Result {
 public:
  // Success with its value.
  Result(T value) : value_(std::move(value)) {}
  // A failure, never YAX_OK.
  Result(Status failure) : status_(failure) {}

  // Whether there is a value.
  explicit operator bool() const { return value_.has_value(); }
  bool ok() const { return value_.has_value(); }
  // Why there is none; success otherwise.
  Status status() const { return status_; }
  // Only of a success.
  T& operator*() & { return *value_; }
  const T& operator*() const& { return *value_; }
  T&& operator*() && { return *std::move(value_); }
  T* operator->() { return &*value_; }
  const T* operator->() const { return &*value_; }

  // The value, or else the fallback.
  template <class U>
  T value_or(U&& fallback) const& {
    return value_.value_or(std::forward<U>(fallback));
  }
  // The value, or else the fallback.
  template <class U>
  T value_or(U&& fallback) && {
    return std::move(value_).value_or(std::forward<U>(fallback));
  }

 private:
  std::optional<T> value_;
  Status status_;
};

}  // namespace yax
