#include "tests/processes/SharedScript.h"

#include <algorithm>
#include <cstdio>

namespace processes {

using tamu::registry::NameList;
using tamu::registry::ReadValue;
using tamu::registry::Value;

namespace {

constexpr unsigned int kNumber = 0;
constexpr unsigned int kText = 2;
constexpr unsigned int kNames = 6;  // values of the own key
constexpr size_t kMostKeys = 12;    // below the own key
constexpr unsigned int kMostMade = 300;  // the name of a deleted key stays in the file
constexpr unsigned int kTextSize = 777;

template <class... Parts>
std::string Text(const char* format, Parts... parts) {
  char text[64];
  std::snprintf(text, sizeof text, format, parts...);
  return text;
}

std::string Wrong(const std::string& what, unsigned int status) {
  return status == 0 ? "" : what + ": status " + std::to_string(status);
}

Value ValueOf(std::string& bytes) {
  Value value = {};
  value.type = kText;
  value.size = static_cast<unsigned int>(bytes.size());
  value.data = bytes.data();
  return value;
}

Value NumberOf(unsigned int* number) {
  Value value = {};
  value.type = kNumber;
  value.size = sizeof *number;
  value.data = number;
  return value;
}

std::string BytesOf(const ReadValue& value) {
  return std::string(static_cast<const char*>(value.data), value.size);
}

bool IsOneLetter(const std::string& bytes) {
  return bytes.size() == kTextSize &&
         std::all_of(bytes.begin(), bytes.end(), [&](char c) { return c == bytes[0]; });
}

std::string CounterName(unsigned int thread) {
  return Text("count%02u", thread);
}

}  // namespace

// No name is the beginning of another one, or differs from another one in the last letter.
std::string OwnKey(unsigned int thread) {
  return Text("own%02ux", thread);
}

std::string PrepareShared(Registry& registry) {
  std::string text(kTextSize, 'a');
  Value value = ValueOf(text);
  std::string wrong = Wrong("create shared", registry.CreateKey(0, "shared"));
  if (wrong.empty()) wrong = Wrong("text", registry.CreateValue(0, "shared", "text", &value));
  for (unsigned int i = 0; i < kMostThreads && wrong.empty(); ++i) {
    unsigned int zero = 0;
    Value number = NumberOf(&zero);
    wrong = Wrong("create own", registry.CreateKey(0, OwnKey(i).c_str()));
    if (wrong.empty()) {
      wrong = Wrong("counter", registry.CreateValue(0, "shared", CounterName(i).c_str(), &number));
    }
  }
  return wrong;
}

SharedScript::SharedScript(Registry& registry, unsigned int thread, bool makesKeys)
    : registry_(registry),
      thread_(thread),
      makesKeys_(makesKeys),
      key_(OwnKey(thread)),
      random_(thread + 1) {}

std::string SharedScript::OpenHandles() {
  const std::string wrong = Wrong("open own", registry_.OpenKey(key_.c_str(), &ownHandle_));
  return wrong.empty() ? Wrong("open shared", registry_.OpenKey("shared", &sharedHandle_)) : wrong;
}

std::string SharedScript::Own(const std::string& below) const {
  if (ownHandle_ != 0) return below;
  return below.empty() ? key_ : key_ + "/" + below;
}

std::string SharedScript::Run(unsigned int operations) {
  std::string wrong;
  for (unsigned int i = 0; i < operations && wrong.empty(); ++i) wrong = Step();
  return wrong.empty() ? CheckAll() : key_ + ": " + wrong;
}

std::string SharedScript::Look(unsigned int operations) {
  std::string wrong;
  for (unsigned int i = 0; i < operations && wrong.empty(); ++i) {
    const bool isOther = i % 2 != 0;
    wrong = isOther ? CheckCounter(i / 2 % kMostThreads) : CheckText();
  }
  return wrong;
}

std::string SharedScript::Step() {
  switch (random_.Below(makesKeys_ ? 16 : 12)) {
    case 0:
    case 1:
      return SetOwn();
    case 2:
    case 3:
    case 4:
      return CheckOwn("value" + std::to_string(random_.Below(kNames)));
    case 5:
    case 6:
      return Count();
    case 7:
    case 8:
      return CheckCounter(random_.Below(kMostThreads));
    case 9:
      return SetText();
    case 10:
    case 11:
      return CheckText();
    case 12:
    case 13:
      if (made_ == kMostMade) return SetOwn();
      return keys_.size() < kMostKeys ? MakeKey() : DropKey();
    case 14:
      return DropKey();
    default:
      return CheckKeys();
  }
}

std::string SharedScript::SetOwn() {
  const std::string name = "value" + std::to_string(random_.Below(kNames));
  std::string bytes(1 + random_.Below(300), static_cast<char>('a' + random_.Below(26)));
  bytes[0] = '<';
  Value value = ValueOf(bytes);
  const bool isNew = own_.count(name) == 0;
  own_[name] = bytes;
  const std::string path = Own("");
  return Wrong("set " + name,
               isNew ? registry_.CreateValue(ownHandle_, path.c_str(), name.c_str(), &value)
                     : registry_.SetValue(ownHandle_, path.c_str(), name.c_str(), &value));
}

std::string SharedScript::CheckOwn(const std::string& name) {
  ReadValue value(kText);
  const unsigned int result = registry_.GetValue(ownHandle_, Own("").c_str(), name.c_str(), &value);
  if (own_.count(name) == 0) {
    return result == 2 || result == 53 ? "" : name + " is there: " + std::to_string(result);
  }
  if (result != 0) return Wrong("get " + name, result);
  return BytesOf(value) == own_[name] ? "" : name + " has another content";
}

std::string SharedScript::Count() {
  unsigned int number = counter_ + 1;
  Value value = NumberOf(&number);
  const unsigned int result =
      registry_.SetValue(sharedHandle_, Shared().c_str(), CounterName(thread_).c_str(), &value);
  if (result == 0) ++counter_;
  return Wrong("count", result);
}

std::string SharedScript::CheckCounter(unsigned int other) {
  ReadValue value(kNumber);
  const unsigned int result =
      registry_.GetValue(sharedHandle_, Shared().c_str(), CounterName(other).c_str(), &value);
  if (result != 0) return Wrong("get counter", result);
  const unsigned int number = static_cast<unsigned int>(value.number());
  if (number < seen_[other]) return "a counter has gone back";
  if (other == thread_ && counter_ != 0 && number != counter_) {
    return "the own counter is another one";
  }
  seen_[other] = number;
  return "";
}

std::string SharedScript::SetText() {
  std::string text(kTextSize, static_cast<char>('a' + random_.Below(26)));
  Value value = ValueOf(text);
  return Wrong("set text", registry_.SetValue(sharedHandle_, Shared().c_str(), "text", &value));
}

std::string SharedScript::CheckText() {
  ReadValue value(kText);
  const unsigned int result = registry_.GetValue(sharedHandle_, Shared().c_str(), "text", &value);
  if (result != 0) return Wrong("get text", result);
  return IsOneLetter(BytesOf(value)) ? "" : "the text is mixed";
}

std::string SharedScript::MakeKey() {
  const std::string name = Text("key%06ux", made_++);
  keys_.insert(name);
  return Wrong("create " + name, registry_.CreateKey(ownHandle_, Own(name).c_str(), made_));
}

std::string SharedScript::DropKey() {
  if (keys_.empty()) return "";
  const std::string name = *keys_.begin();
  keys_.erase(keys_.begin());
  return Wrong("delete " + name, registry_.DeleteKey(ownHandle_, Own(name).c_str()));
}

std::string SharedScript::CheckKeys() {
  NameList list(100);
  const unsigned int result = registry_.ListKeys(ownHandle_, Own("").c_str(), 0, 0, &list, 0);
  if (result != 0) return Wrong("list", result);
  std::set<std::string> found;
  for (unsigned int i = 0; i < list.Count(); ++i) found.insert(list.GetName(i, nullptr));
  return found == keys_ ? "" : "other keys are listed";
}

std::string SharedScript::CheckAll() {
  std::string wrong = CheckKeys();
  for (unsigned int i = 0; i < kNames && wrong.empty(); ++i) {
    wrong = CheckOwn("value" + std::to_string(i));
  }
  for (unsigned int i = 0; i < kMostThreads && wrong.empty(); ++i) wrong = CheckCounter(i);
  if (wrong.empty()) wrong = CheckText();
  return wrong.empty() ? "" : key_ + " at the end: " + wrong;
}

}  // namespace processes
