// One value: changed, created, deleted.
#include <algorithm>

#include "registry/format/Codec.h"
#include "tools/yaxreg/verbs/CommonArguments.h"
#include "tools/yaxreg/verbs/NewKeys.h"
#include "tools/yaxreg/verbs/Session.h"
#include "tools/yaxreg/verbs/ValueInput.h"
#include "tools/yaxreg/verbs/VerbTable.h"

namespace yaxreg {

namespace status = tamu::registry::status;
using tamu::registry::Registry;

namespace {

// The options that tell a value's type and data; one of the first four is given.
const Option kInt = {"--int", "NUMBER", "A whole number of 64 bits: 42, -1, 0xFF"};
const Option kString = {"--string", "TEXT", "A text; its end is stored, too"};
const Option kHex = {"--hex", "DIGITS", "Bytes, two hexadecimal digits each"};
const Option kFromFile = {"--file", "FILE", "The bytes of a file; - is the standard input"};
const Option kType = {"--type", "N",
                      "The type, 0 to 5: 0 with --int, 1 with --string, 2 otherwise, unless told"};
const Option kUnset = {"--unset", nullptr, "No data: the value is there, but not set"};

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

// A change that the library has refused, or could not write.
ExitCode FailChange(Session& session, unsigned int result) {
  return result == status::kInputOutput ? session.FailUnseen() : session.FailWithStatus(result);
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

// ---- put

// The key, made with its parents where it is missing.
const ContentKey* MakeKey(Session& session, const std::vector<std::string>& names, ExitCode* code) {
  NewKeys keys(session, names);
  const bool isThere = keys.present() == names.size();
  if (!isThere && !keys.MayFit()) {
    *code = session.FailWithStatus(status::kLimit);
    return nullptr;
  }
  unsigned int deleted = status::kOk;
  unsigned int made = isThere ? status::kOk : keys.Create(nullptr);
  if (made == status::kOk && !isThere && !keys.DeleteStrays(&deleted)) {
    *code = session.code();
    return nullptr;
  }
  if (made == status::kOk) made = deleted;
  const ContentKey* const key = made == status::kOk ? session.Key() : nullptr;
  if (key == nullptr) *code = made == status::kOk ? session.code() : session.FailWithStatus(made);
  return key;
}

// Changes the value of the key, or creates it. *changes: it was not so before.
ExitCode PutValue(Session& session, const ContentKey& key, const std::string& name,
                  const ValueInput& input, bool* changes) {
  const ContentValue* const value = key.FindValue(name);
  *changes = value == nullptr || !input.IsIn(*value);
  if (value == nullptr) {
    if (!MayAdd(session, key, input)) return session.code();
  } else if (!session.HasRight(key, tamu::registry::kRightModify)) {
    return session.code();
  }
  const unsigned int result =
      value == nullptr ? Create(session, name, input) : Store(session, name, input);
  return result == status::kOk ? kDone : FailChange(session, result);
}

// ---- rm

bool IsThere(const Session& session, const std::string& name) {
  const Content& content = session.image().content();
  const size_t key = content.Find(session.path());
  return key != Content::kNone && content.keys[key].FindValue(name) != nullptr;
}

unsigned int Delete(Session& session, const std::string& name, size_t count) {
  unsigned int result = status::kOk;
  for (size_t i = 0; i < count && result == status::kOk; ++i) {
    result = session.registry().DeleteValue(0, session.path().c_str(), name.c_str());
  }
  return result;
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
  const bool changes = !input.IsIn(*value);
  const unsigned int result = Store(session, name, input);
  if (result != status::kOk) return FailChange(session, result);
  if (!session.Close()) return session.code();
  return IsStored(session, name, input) ? session.EndOfChange(changes) : session.FailUnseen();
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
  if (result != status::kOk) return FailChange(session, result);
  if (!session.Close()) return session.code();
  const ContentKey* const changed = session.Key();
  if (changed == nullptr) return session.code();
  const bool isThere = IsStored(session, name, input) && CountOf(*changed, name) == before + 1;
  return isThere ? session.EndOfChange() : session.FailUnseen();
}

ExitCode RunPut(Invocation& call) {
  std::string name;
  ValueInput input;
  std::vector<std::string> names;
  ExitCode code = kDone;
  if (!TakeValueName(call, &name, &code) || !TakeValueInput(call, &input, &code)) return code;
  Session session(call);
  if (!TakeNames(call, session.path(), &names, &code)) return code;
  if (!session.OpenToChange()) return session.code();
  const ContentKey* const key = MakeKey(session, names, &code);
  if (key == nullptr) return code;
  bool changes = false;
  code = PutValue(session, *key, name, input, &changes);
  if (code != kDone) return code;
  if (!session.Close()) return session.code();
  return IsStored(session, name, input) ? session.EndOfChange(changes) : session.FailUnseen();
}

ExitCode RunRm(Invocation& call) {
  std::string name;
  ExitCode code = kDone;
  if (!TakeValueName(call, &name, &code)) return code;
  Session session(call);
  if (!session.OpenToChange()) return session.code();
  if (call.Has("--force") && !IsThere(session, name)) return session.EndOfChange(false);
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

}  // namespace

Verb SetVerb() {
  return {
      "set",
      "Change a value",
      "Gives a value that exists another type and data; numbers have 64 bits. Use add to create "
      "one. Data has at most 1024 bytes, which for --string are a text of at most 1023 bytes and "
      "its end.",
      {kFile, kPlace, kValueName},
      {kInt, kString, kHex, kFromFile, kType, kUser, kUid, kTimeout},
      "yaxreg set device.rce network/eth0 mtu --int 1400",
      RunSet};
}

Verb AddVerb() {
  return {
      "add",
      "Create a value",
      "Creates a value of a key. A value that exists is refused, because the new one would hide "
      "it; --hide creates it all the same. Names have at most 31 bytes, data at most 1024, which "
      "for --string are a text of at most 1023 bytes and its end.",
      {kFile, kPlace, kValueName},
      {kInt,
       kString,
       kHex,
       kFromFile,
       kType,
       kUnset,
       {"--hide", nullptr, "Create it though there is one of this name, which it then hides"},
       kUser,
       kUid,
       kTimeout},
      "yaxreg add device.rce network/eth0 name --string uplink",
      RunAdd};
}

Verb PutVerb() {
  return {
      "put",
      "Create or change a value",
      "Gives a key a value of this type and data, whether there is one of its name or not, and "
      "makes the key with its parents where it is missing: all of it or nothing. Names and data "
      "are limited as for add.",
      {kFile, kPlace, kValueName},
      {kInt, kString, kHex, kFromFile, kType, kUser, kUid, kTimeout},
      "yaxreg put device.rce network/eth0:mtu --int 1400",
      RunPut};
}

Verb RmVerb() {
  return {"rm",
          "Delete a value",
          "Deletes a value; one that it hid is seen again.",
          {kFile, kPlace, kValueName},
          {{"-a,--all", nullptr, "Delete those that it hides, too"}, kForce, kUser, kUid, kTimeout},
          "yaxreg rm device.rce network/eth0 name",
          RunRm};
}

}  // namespace yaxreg
