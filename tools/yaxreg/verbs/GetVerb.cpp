// get: one value, printed.
#include <ostream>

#include "registry/format/Codec.h"
#include "tools/yaxreg/content/PathPattern.h"
#include "tools/yaxreg/content/ValueText.h"
#include "tools/yaxreg/image/ValueOrder.h"
#include "tools/yaxreg/text/JsonText.h"
#include "tools/yaxreg/text/Numbers.h"
#include "tools/yaxreg/verbs/CommonArguments.h"
#include "tools/yaxreg/verbs/Loading.h"
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
  call.out << '}';
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
  } else if (HoldsText(value) || HoldsReal(value)) {
    const std::string text = value.data.substr(0, value.data.size() - 1);
    call.out << (call.isTerminal ? Shown(text) : text);
  } else {
    call.out << ToHex(value.data);
  }
  call.out << "\n";
}

// ---- patterns

struct Match {
  std::string path;  // of the key
  const ContentValue* value;
};

void PrintMatch(Invocation& call, const std::string& path, const ContentValue& value) {
  const bool isSigned = value.isNumber() && call.Has("--signed");
  call.out << call.palette.key << Shown(path) << call.palette.end << ':' << call.palette.value
           << Shown(value.name) << call.palette.end << " = "
           << (isSigned ? NumberText(value.number, true) : ValueText(value)) << '\n';
}

// The newest values of matching names that are set, of one key.
std::vector<const ContentValue*> ValuesThatMatch(const ContentKey& key, const std::string& name) {
  std::vector<const ContentValue*> found;
  const ContentValue* last = nullptr;
  for (const ContentValue* value : ValuesByName(key)) {
    const bool isHidden = last != nullptr && last->name == value->name;
    last = value;
    if (!isHidden && value->isSet && MatchesName(name, value->name)) found.push_back(value);
  }
  return found;
}

void PrintMatches(Invocation& call, const std::vector<Match>& matches) {
  const char* separator = "{\"values\":[\n";
  for (const Match& match : matches) {
    if (!call.out) return;
    if (!call.isJson()) {
      PrintMatch(call, match.path, *match.value);
      continue;
    }
    call.out << separator;
    PrintJson(call, match.path, *match.value);
    separator = ",\n";
  }
  if (call.isJson()) call.out << "\n]}\n";
}

ExitCode GetMatching(Invocation& call, Session& session, const std::string& name) {
  if (call.Has("--raw")) return call.Fail(kUsage, "", "", "--raw is for one value");
  const Content& content = session.image().content();
  std::vector<Match> matches;
  for (const size_t index : PathPattern(session.path()).Find(content)) {
    const ContentKey& key = content.keys[index];
    if (!session.MayDo(key, tamu::registry::kRightRead)) continue;
    for (const ContentValue* value : ValuesThatMatch(key, name)) {
      matches.push_back({content.PathOf(index), value});
    }
  }
  if (matches.empty()) return FailWithoutMatch(call, session.image());
  PrintMatches(call, matches);
  return session.EndOfLook();
}

// What a pattern looks like may be there by that very name.
bool IsThere(const Session& session, const std::string& name) {
  const Content& content = session.image().content();
  const size_t index = content.Find(session.path());
  return index != Content::kNone && content.keys[index].FindValue(name) != nullptr;
}

ExitCode RunGet(Invocation& call) {
  std::string name;
  ExitCode code = kDone;
  const bool mayMatch = !call.Has("NAME") && HasWildcard(call.Text("PATH"));
  if (!TakeValueName(call, &name, &code)) return code;
  if (call.Has("--raw") && call.isJson()) {
    return call.Fail(kUsage, "", "", "only one of --raw and --json may be given");
  }
  Session session(call);
  if (!session.OpenToLook()) return session.code();
  if (mayMatch && !IsThere(session, name)) return GetMatching(call, session, name);
  const ContentKey* const key = session.Key();
  if (key == nullptr || !session.HasRight(*key, tamu::registry::kRightRead)) return session.code();
  const ContentValue* const value = session.FindValue(*key, name);
  if (value == nullptr) return session.code();
  if (!value->isSet) {
    return session.FailWithStatus(status::kNoData, "the value " + Shown(name) + " is not set");
  }
  if (call.isJson()) {
    PrintJson(call, session.path(), *value);
    call.out << '\n';
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
      "Prints a value: a number in decimal (as a signed one with --signed), a text and a real "
      "number "
      "(type 3, as C, C++ and Python store them) as they are, "
      "other data in hexadecimal digits. The exit code is 1 when there is no such value or it is "
      "not set, and when the user may not read the key. A value that can be read of a file that "
      "has lost something elsewhere is printed, and the exit code is 3. Where PATH tells the "
      "value, "
      "both parts may be patterns: * and ? within a name, ** over levels; each value that matches, "
      "is set and may be read is printed with its place.",
      {kFile, kPlace, kValueName},
      {{"--raw", nullptr, "Write the stored bytes as they are"},
       {"--signed", nullptr, "Take a number as a signed one"},
       kUser,
       kUid},
      "yaxreg get device.rce network/eth0 mtu",
      RunGet};
}

}  // namespace yaxreg
