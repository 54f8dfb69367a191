// The text of the last failure.
#include <cstring>
#include <iterator>

#include "yax/Failure.h"

namespace yax {

namespace {

constexpr size_t kPlaceSize = 192;  // bytes, with the zero byte at the end

// What has failed in a thread. All zero: nothing has.
struct Failure {
  unsigned int status;
  bool isOfNoKey;  // of a key that could not be named
  const char* reason;
  char place[kPlaceSize];
  const char* unnamedReason;
  char unnamed[kPlaceSize];  // the latest path that could not be named
  char text[3 * kPlaceSize];
};

thread_local Failure tFailure;

// Appends a text of which the end matters most where it does not fit; returns the new end.
char* Append(char* to, const char* end, const char* text) {
  constexpr char kCut[] = "...";
  const size_t room = static_cast<size_t>(end - to) - 1;
  const size_t length = std::strlen(text);
  if (length <= room) {
    std::memcpy(to, text, length + 1);
    return to + length;
  }
  const size_t cut = room < sizeof kCut - 1 ? room : sizeof kCut - 1;
  std::memcpy(to, kCut, cut);
  std::memcpy(to + cut, text + length - (room - cut), room - cut + 1);
  return to + room;
}

// Something of a path stays beside the longest name.
void WritePlace(const FailedAt& at, char (&place)[kPlaceSize]) {
  constexpr size_t kPathRoom = kPlaceSize * 3 / 5;
  char* const end = place + kPlaceSize;
  const bool isAlone = at.name[0] == 0;
  char* next = Append(place, isAlone ? end : place + kPathRoom, at.path);
  next = Append(next, end, at.between);
  Append(next, end, at.name);
}

void Keep(const FailedAt& at, unsigned int result, bool isOfNoKey) {
  tFailure.status = result;
  tFailure.reason = at.reason;
  tFailure.isOfNoKey = isOfNoKey;
  WritePlace(at, tFailure.place);
}

}  // namespace

unsigned int KeepFailure(const FailedAt& at, unsigned int result) {
  Keep(at, result, false);
  return result;
}

unsigned int KeepFailure(const yax_key* key, const char* name, unsigned int result,
                         const char* reason) {
  FailedAt at;
  at.path = key != nullptr ? PathOf(key) : kNoKey;
  if (name != nullptr) {
    at.between = ":";
    at.name = name;
  }
  at.reason = reason;
  Keep(at, result, key == nullptr);
  return result;
}

unsigned int KeepUnnamed(const FailedAt& at, unsigned int result) {
  WritePlace(at, tFailure.unnamed);
  tFailure.unnamedReason = at.reason;
  return KeepFailure(at, result);
}

const char* ReasonOfNoKey() {
  return tFailure.unnamedReason;
}

}  // namespace yax

using namespace yax;

const char* yax_failure_text() {
  Failure& failure = tFailure;
  if (failure.status == status::kOk) return "";
  const bool hasUnnamed = failure.isOfNoKey && failure.unnamed[0] != 0;
  const char* const reason = hasUnnamed ? failure.unnamedReason : failure.reason;
  const char* const parts[] = {failure.place,
                               ": ",
                               yax_status_text(failure.status),
                               hasUnnamed ? "; \"" : "",
                               hasUnnamed ? failure.unnamed : "",
                               hasUnnamed ? "\" could not be named" : "",
                               reason != nullptr ? ", " : "",
                               reason != nullptr ? reason : ""};
  char* next = failure.text;
  for (const char* part : parts) next = Append(next, std::end(failure.text), part);
  return failure.text;
}

yax_status yax_note_failure(const yax_key* key, const char* name, yax_status status,
                            const char* reason) {
  if (status == YAX_OK) return status;
  if (key != nullptr || name == nullptr) return KeepFailure(key, name, status, reason);
  return KeepUnnamed({name, "", "", reason}, status);
}
