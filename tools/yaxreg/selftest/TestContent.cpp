#include "tools/yaxreg/selftest/TestContent.h"

#include <string>

#include "registry/Transaction.h"

namespace yaxreg {

namespace status = tamu::registry::status;
using tamu::registry::ReadValue;
using tamu::registry::Transaction;

namespace {

constexpr const char* kTestKeys[] = {"network", "network/eth0", "shop", "shop/till", "clock"};
constexpr char kNumberName[] = "number";
constexpr char kTextName[] = "text";
constexpr char kMarksKey[] = "marks";

// Its length changes with the number, so that blocks are taken and given back.
std::string TextOf(unsigned int number) {
  constexpr unsigned int kStep = 37;
  constexpr unsigned int kLongest = 900;
  constexpr unsigned int kLetters = 26;
  return std::to_string(number) + ' ' +
         std::string(number * kStep % kLongest, static_cast<char>('a' + number % kLetters));
}

std::string MarkOf(unsigned int number) {
  return std::string(kMarksKey) + '/' + std::to_string(number);
}

}  // namespace

unsigned int TestContent::WriteValues(unsigned int number) {
  unsigned char bytes[8] = {};
  for (unsigned int i = 0; i < 4; ++i) bytes[i] = static_cast<unsigned char>(number >> 8 * i);
  const std::string text = TextOf(number);
  for (const char* const key : kTestKeys) {
    const unsigned int result = registry_.PutValue(
        key, kNumberName, tamu::registry::MakeValue(tamu::registry::kValueTypeInteger, bytes, 8),
        true);
    if (result != status::kOk) return result;
    const unsigned int written =
        registry_.PutValue(key, kTextName, tamu::registry::TextValue(text.c_str()), true);
    if (written != status::kOk) return written;
  }
  return status::kOk;
}

// A key that is made and deleted with each change.
unsigned int TestContent::MoveMark(unsigned int number) {
  const unsigned int removed = registry_.RemoveKey(kMarksKey);
  if (removed != status::kOk && removed != status::kNotFound) return removed;
  return registry_.MakeKey(MarkOf(number).c_str());
}

unsigned int TestContent::Write(unsigned int number) {
  Transaction change(registry_);
  if (change.Begun() != status::kOk) return change.Begun();
  unsigned int result = WriteValues(number);
  if (result == status::kOk) result = MoveMark(number);
  return result == status::kOk ? change.Commit() : result;
}

bool TestContent::HasMark(unsigned int number, bool* isThere) {
  unsigned char permission = 0;
  const unsigned int result = registry_.GetKeyPermission(0, MarkOf(number).c_str(), &permission);
  *isThere = result == status::kOk;
  return *isThere || result == status::kNotFound;
}

TestContent::State TestContent::Read(unsigned int* number) {
  bool isFirst = true;
  ReadValue value;
  for (const char* const key : kTestKeys) {
    value.Reset();
    if (registry_.ReadWholeValue(key, kNumberName, &value) != status::kOk)
      return State::kUnreadable;
    const unsigned int found = static_cast<unsigned int>(value.number());
    if (isFirst) *number = found;
    isFirst = false;
    if (found != *number) return State::kMixed;
    value.Reset();
    if (registry_.ReadWholeValue(key, kTextName, &value) != status::kOk) return State::kUnreadable;
    if (value.text() == nullptr || TextOf(*number) != value.text()) return State::kMixed;
  }
  bool isThere = false;
  bool isOlderThere = false;
  bool isNewerThere = false;
  if (!HasMark(*number, &isThere) || !HasMark(*number - 1, &isOlderThere) ||
      !HasMark(*number + 1, &isNewerThere)) {
    return State::kUnreadable;
  }
  return isThere && !isOlderThere && !isNewerThere ? State::kWhole : State::kMixed;
}

}  // namespace yaxreg
