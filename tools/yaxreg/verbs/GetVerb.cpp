// get: one value, printed.
#include <ostream>

#include "registry/format/Codec.h"
#include "tools/yaxreg/content/ValueText.h"
#include "tools/yaxreg/text/JsonText.h"
#include "tools/yaxreg/text/Numbers.h"
#include "tools/yaxreg/verbs/CommonArguments.h"
#include "tools/yaxreg/verbs/Session.h"
#include "tools/yaxreg/verbs/ValueInput.h"
#include "tools/yaxreg/verbs/VerbTable.h"

namespace yaxreg {

namespace status = tamu::registry::status;

namespace {

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

}  // namespace

Verb GetVerb() {
  return {
      "get",
      "Print a value",
      "Prints a value: a number in decimal (as a signed one with --signed), a text as it is, "
      "other data in hexadecimal digits. The exit code is 1 when there is no such value or it is "
      "not set, and when the user may not read the key. A value that can be read of a file that "
      "has lost something elsewhere is printed, and the exit code is 3.",
      {kFile, kKeyPath, kValueName},
      {{"--raw", nullptr, "Write the stored bytes as they are"},
       {"--signed", nullptr, "Take a number as a signed one"},
       kUser,
       kUid},
      "yaxreg get device.rce network/eth0 mtu",
      RunGet};
}

}  // namespace yaxreg
