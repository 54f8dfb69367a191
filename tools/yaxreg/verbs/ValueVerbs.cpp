// One value: printed, changed, created, deleted.
#include <algorithm>
#include <ostream>

#include "registry/format/Codec.h"
#include "tools/yaxreg/cli/ContentJson.h"
#include "tools/yaxreg/cli/Numbers.h"
#include "tools/yaxreg/cli/Session.h"
#include "tools/yaxreg/cli/ValueInput.h"
#include "tools/yaxreg/cli/ValueText.h"
#include "tools/yaxreg/verbs/Verbs.h"

namespace yaxreg {

namespace status = tamu::registry::status;
using tamu::registry::Registry;

namespace {

// A value as the library takes it. Lives no longer than `input`.
class LibraryValue {
 public:
  explicit LibraryValue(const ValueInput& input) {
    tamu::registry::PutU64(number_, input.number);
    const void* const data = input.isNumber() ? number_ : static_cast<const void*>(&input.data[0]);
    const size_t size = input.isNumber() ? sizeof number_ : input.data.size();
    value_ = tamu::registry::MakeValue(input.type, data, static_cast<unsigned int>(size));
  }
  LibraryValue(const LibraryValue&) = delete;
  LibraryValue& operator=(const LibraryValue&) = delete;
  tamu::registry::Value* get() { return &value_; }

 private:
  unsigned char number_[8];
  tamu::registry::Value value_;
};

size_t CountOf(const ContentKey& key, const std::string& name) {
  const auto isIt = [&](const ContentValue& value) { return value.name == name; };
  return static_cast<size_t>(std::count_if(key.values.begin(), key.values.end(), isIt));
}

// ---- get

void PrintJson(Invocation& call, const std::string& path, const ContentValue& value) {
  call.out << "{\"path\":" << TextJson(path) << ",\"name\":" << TextJson(value.name)
           << ",\"type\":" << std::to_string(value.type) << ",\"set\":true,";
  if (value.isNumber()) {
    call.out << "\"number\":" << JsonNumberText(value.number, call.Has("--signed"));
  } else if (HoldsText(value)) {
    call.out << "\"text\":" << TextJson(value.data.substr(0, value.data.size() - 1));
  } else {
    call.out << "\"hex\":\"" << ToHex(value.data) << '"';
  }
  call.out << "}\n";
}

void PrintRaw(Invocation& call, const ContentValue& value) {
  if (!value.isNumber()) {
    call.out << value.data;
    return;
  }
  unsigned char bytes[8];
  tamu::registry::PutU64(bytes, value.number);
  for (const unsigned char byte : bytes) call.out << static_cast<char>(byte);
}

void PrintPlain(Invocation& call, const ContentValue& value) {
  if (value.isNumber()) {
    call.out << NumberText(value.number, call.Has("--signed"));
  } else if (HoldsText(value)) {
    const std::string text = value.data.substr(0, value.data.size() - 1);
    call.out << (call.isTerminal ? Shown(text) : text);
  } else {
    call.out << ToHex(value.data);
  }
  call.out << "\n";
}

// ---- set

// Without a handle the library writes only the low half of a number.
unsigned int StoreNumber(Session& session, const std::string& name, const ValueInput& input) {
  Registry& registry = session.registry();
  unsigned int handle = 0;
  unsigned int result = registry.OpenKey(session.path().c_str(), &handle);
  if (result != status::kOk) return result;
  result = registry.SetValue(handle, "", name.c_str(), LibraryValue(input).get());
  registry.CloseKey(handle);  // dropped: closing the registry lets go of it, too
  return result;
}

unsigned int Store(Session& session, const std::string& name, const ValueInput& input) {
  if (input.isNumber()) return StoreNumber(session, name, input);
  return session.registry().SetValue(0, session.path().c_str(), name.c_str(),
                                     LibraryValue(input).get());
}

// Whether the value is there as told, in the file as it was decoded last.
bool IsStored(const Session& session, const std::string& name, const ValueInput& input) {
  const size_t index = session.image().content().Find(session.path());
  if (index == Content::kNone) return false;
  const ContentValue* const value = session.image().content().keys[index].FindValue(name);
  return value != nullptr && input.IsIn(*value);
}

// The library gives the old data's room back before it stores the new data, so the old data usually
// fits in again.
bool PutBack(Session& session, const std::string& name, const ValueInput& old) {
  if (!old.isSet || !session.OpenToChange()) return false;
  if (Store(session, name, old) != status::kOk) return false;
  return session.Close() && IsStored(session, name, old);
}

ExitCode FailSet(Session& session, const std::string& name, const ValueInput& old,
                 unsigned int result) {
  if (IsStored(session, name, old)) return session.FailWithStatus(result);
  const bool isFull = result == status::kLimit || result == status::kNoSpace;
  const std::string words = isFull ? "the registry is full" : tamu::registry::StatusText(result);
  if (PutBack(session, name, old)) {
    return session.FailWithStatus(
        result, words + ", the value is as it was; yaxreg compact may help with a full one");
  }
  return session.FailWithStatus(result, words + ", and the value is not set any more");
}

// ---- add

unsigned int Create(Session& session, const std::string& name, const ValueInput& input) {
  const char* const path = session.path().c_str();
  Registry& registry = session.registry();
  if (input.isNumber() && !input.isSet) return registry.CreateValue(0, path, name.c_str(), nullptr);
  LibraryValue value(input);
  const unsigned int result = registry.CreateValue(0, path, name.c_str(), value.get());
  // A value created with no bytes is not set; it is once it is given no bytes.
  const bool isEmpty = !input.isNumber() && input.data.empty();
  if (result != status::kOk || !input.isSet || !isEmpty) return result;
  return registry.SetValue(0, path, name.c_str(), value.get());
}

bool MayAdd(Session& session, const ContentKey& key, const ValueInput& input) {
  if (!session.HasRight(key, tamu::registry::kRightCreate)) return false;
  const bool isSetAfterwards = input.isSet && !input.isNumber() && input.data.empty();
  return !isSetAfterwards || session.HasRight(key, tamu::registry::kRightModify);
}

// ---- rm

unsigned int Delete(Session& session, const std::string& name, size_t count) {
  unsigned int result = status::kOk;
  for (size_t i = 0; i < count && result == status::kOk; ++i) {
    result = session.registry().DeleteValue(0, session.path().c_str(), name.c_str());
  }
  return result;
}

}  // namespace

ExitCode RunGet(Invocation& call) {
  std::string name;
  ExitCode code = kDone;
  if (!TakeValueName(call, &name, &code)) return code;
  if (call.Has("--raw") && call.isJson()) {
    return call.Fail(kUsage, "", "", "only one of --raw and --json may be given");
  }
  Session session(call);
  if (!session.OpenToLook()) return session.code();
  const ContentKey* const key = session.Key();
  if (key == nullptr || !session.HasRight(*key, tamu::registry::kRightRead)) return session.code();
  const ContentValue* const value = session.FindValue(*key, name);
  if (value == nullptr) return session.code();
  if (!value->isSet) {
    return session.FailWithStatus(status::kNoData, "the value " + Shown(name) + " is not set");
  }
  if (call.isJson()) {
    PrintJson(call, session.path(), *value);
  } else if (call.Has("--raw")) {
    PrintRaw(call, *value);
  } else {
    PrintPlain(call, *value);
  }
  return session.EndOfLook();
}

ExitCode RunSet(Invocation& call) {
  std::string name;
  ValueInput input;
  ExitCode code = kDone;
  if (!TakeValueName(call, &name, &code) || !TakeValueInput(call, &input, &code)) return code;
  Session session(call);
  if (!session.OpenToChange()) return session.code();
  const ContentKey* const key = session.Key();
  if (key == nullptr) return session.code();
  if (!session.HasRight(*key, tamu::registry::kRightModify)) return session.code();
  const ContentValue* const value = session.FindValue(*key, name);
  if (value == nullptr) return session.code();
  const ValueInput old = ValueInput::Of(*value);
  const bool changes = !input.IsIn(*value);
  const unsigned int result = Store(session, name, input);
  if (!session.Close()) return session.code();
  if (result == status::kOk && IsStored(session, name, input)) return session.EndOfChange(changes);
  // Through a handle the library answers 0 when there is no room.
  return FailSet(session, name, old, result == status::kOk ? session.UnseenStatus() : result);
}

ExitCode RunAdd(Invocation& call) {
  std::string name;
  ValueInput input;
  ExitCode code = kDone;
  if (!TakeValueName(call, &name, &code) || !TakeValueInput(call, &input, &code)) return code;
  Session session(call);
  if (!session.OpenToChange()) return session.code();
  const ContentKey* const key = session.Key();
  if (key == nullptr || !MayAdd(session, *key, input)) return session.code();
  const size_t before = CountOf(*key, name);
  if (before != 0 && !call.Has("--hide")) {
    return session.FailWithStatus(status::kExists, "there is a value " + Shown(name) +
                                                       " already; set changes it, --hide hides it");
  }
  const unsigned int result = Create(session, name, input);
  if (result != status::kOk) return session.FailWithStatus(result);
  if (!session.Close()) return session.code();
  const ContentKey* const changed = session.Key();
  if (changed == nullptr) return session.code();
  const bool isThere = IsStored(session, name, input) && CountOf(*changed, name) == before + 1;
  return isThere ? session.EndOfChange() : session.FailUnseen();
}

ExitCode RunRm(Invocation& call) {
  std::string name;
  ExitCode code = kDone;
  if (!TakeValueName(call, &name, &code)) return code;
  Session session(call);
  if (!session.OpenToChange()) return session.code();
  const ContentKey* const key = session.Key();
  if (key == nullptr || session.FindValue(*key, name) == nullptr) return session.code();
  const size_t before = CountOf(*key, name);
  const size_t count = call.Has("--all") ? before : 1;
  const unsigned int result = Delete(session, name, count);
  if (result != status::kOk) return session.FailWithStatus(result);
  if (!session.Close()) return session.code();
  const ContentKey* const changed = session.Key();
  if (changed == nullptr) return session.code();
  return CountOf(*changed, name) == before - count ? session.EndOfChange() : session.FailUnseen();
}

}  // namespace yaxreg
