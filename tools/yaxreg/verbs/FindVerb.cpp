// find: keys and values by what they are.
#include <optional>
#include <ostream>

#include "registry/base/UserId.h"
#include "registry/base/Value.h"
#include "tools/yaxreg/content/ContentJson.h"
#include "tools/yaxreg/content/PathPattern.h"
#include "tools/yaxreg/content/ValueText.h"
#include "tools/yaxreg/image/ValueOrder.h"
#include "tools/yaxreg/text/JsonText.h"
#include "tools/yaxreg/text/Numbers.h"
#include "tools/yaxreg/text/RightsText.h"
#include "tools/yaxreg/verbs/CommonArguments.h"
#include "tools/yaxreg/verbs/Loading.h"
#include "tools/yaxreg/verbs/VerbTable.h"

namespace yaxreg {

namespace {

constexpr unsigned long long kAnySize = 0xFFFFFFFF;

// What is asked for; what is not told is anything.
struct Wanted {
  std::string keys = "**";            // a path or pattern
  std::optional<std::string> values;  // pattern of names, when PATH tells one
  std::optional<std::string> name;    // pattern, of keys and values
  std::optional<std::string> data;    // pattern
  std::optional<unsigned long long> type;
  std::optional<unsigned int> owner;
  bool tellsSize = false;
  unsigned long long minSize = 0;
  unsigned long long maxSize = kAnySize;

  bool IsOnlyOfValues() const { return values || data || type || tellsSize; }
};

// ---- the command line

bool FailUsage(Invocation& call, const std::string& option, const std::string& what,
               ExitCode* code) {
  *code = call.Fail(kUsage, "", "", option + ": " + Shown(call.Text(option)) + " is no " + what);
  return false;
}

bool ParseSize(const std::string& text, unsigned long long other, unsigned long long* size) {
  *size = other;
  return text.empty() || ParseNumberUpTo(text, kAnySize, size);
}

// "64", "64..", "..64" or "1..64".
bool TakeSize(Invocation& call, Wanted* wanted, ExitCode* code) {
  wanted->tellsSize = call.Has("--size");
  if (!wanted->tellsSize) return true;
  const std::string text = call.Text("--size");
  const size_t dots = text.find("..");
  const std::string last = dots == std::string::npos ? text : text.substr(dots + 2);
  const bool isTaken = !text.empty() && text != ".." &&
                       ParseSize(text.substr(0, dots), 0, &wanted->minSize) &&
                       ParseSize(last, kAnySize, &wanted->maxSize);
  return isTaken || FailUsage(call, "--size", "size or range such as 64, 1..64, 65..", code);
}

bool TakeType(Invocation& call, Wanted* wanted, ExitCode* code) {
  if (!call.Has("--type")) return true;
  unsigned long long type = 0;
  if (!ParseNumberUpTo(call.Text("--type"), tamu::registry::kValueTypeMax, &type)) {
    return FailUsage(call, "--type", "type from 0 to 5", code);
  }
  wanted->type = type;
  return true;
}

bool TakeOwner(Invocation& call, Wanted* wanted, ExitCode* code) {
  if (!call.Has("--owner")) return true;
  const std::string text = call.Text("--owner");
  if (text.empty()) return FailUsage(call, "--owner", "user", code);
  unsigned long long number = 0;
  wanted->owner = ParseNumberUpTo(text, 0xFFFFFFFF, &number)
                      ? static_cast<unsigned int>(number)
                      : tamu::registry::UserIdOf(text.c_str());
  return true;
}

bool TakeWanted(Invocation& call, Wanted* wanted, ExitCode* code) {
  if (call.Has("PATH")) {
    std::string name;
    wanted->keys = call.Path();
    if (SplitPlace(call.Path(), &wanted->keys, &name)) wanted->values = name;
  }
  if (call.Has("--name")) wanted->name = call.Text("--name");
  if (call.Has("--value")) wanted->data = call.Text("--value");
  return TakeType(call, wanted, code) && TakeSize(call, wanted, code) &&
         TakeOwner(call, wanted, code);
}

// ---- what fits

// A text without its end, a number in decimal, other data in digits; a number also by any way to
// write it.
bool MatchesData(const std::string& pattern, const ContentValue& value) {
  if (!value.isSet) return false;
  if (value.isNumber()) {
    unsigned long long number = 0;
    if (ParseNumber(pattern, &number)) return number == value.number;
    return MatchesName(pattern, std::to_string(value.number));
  }
  const bool isText = value.type == tamu::registry::kValueTypeString;
  if (!isText || !HoldsText(value)) return MatchesName(pattern, ToHex(value.data));
  return MatchesName(pattern, value.data.substr(0, value.data.size() - 1));
}

bool Fits(const Wanted& wanted, const ContentValue& value) {
  return (!wanted.values || MatchesName(*wanted.values, value.name)) &&
         (!wanted.name || MatchesName(*wanted.name, value.name)) &&
         (!wanted.type || *wanted.type == value.type) && value.size >= wanted.minSize &&
         value.size <= wanted.maxSize && (!wanted.data || MatchesData(*wanted.data, value));
}

bool Fits(const Wanted& wanted, const ContentKey& key) {
  return !wanted.IsOnlyOfValues() && (!wanted.name || MatchesName(*wanted.name, key.name));
}

// ---- what is printed

class FoundPrinter {
 public:
  explicit FoundPrinter(Invocation& call) : call_(call) {}

  void Print(const std::string& path, const ContentKey& key) {
    ++count_;
    if (call_.isJson()) {
      call_.out << Separator() << "{\"path\":" << TextJson(path);
      if (!key.isMadeUp) {
        call_.out << ",\"owner\":" << std::to_string(key.owner)
                  << ",\"rights\":" << std::to_string(key.permission);
      }
      call_.out << '}';
      return;
    }
    call_.out << call_.palette.key << Shown(path) << '/' << call_.palette.end;
    if (call_.Has("--long") && !key.isMadeUp) {
      call_.out << call_.palette.faint << "  " << RightsText(key.permission) << ' '
                << std::to_string(key.owner) << call_.palette.end;
    }
    call_.out << '\n';
  }

  void Print(const std::string& path, const ContentValue& value) {
    ++count_;
    if (call_.isJson()) {
      call_.out << Separator() << "{\"path\":" << TextJson(path)
                << ",\"value\":" << ValueJson(value) << '}';
      return;
    }
    call_.out << call_.palette.key << Shown(path) << call_.palette.end << ':' << call_.palette.value
              << Shown(value.name) << call_.palette.end;
    if (call_.Has("--long")) {
      call_.out << " = " << ValueText(value) << call_.palette.faint << "  type "
                << std::to_string(value.type) << ", " << Counted(value.size, "byte")
                << call_.palette.end;
    }
    call_.out << '\n';
  }

  void End() {
    if (call_.isJson()) call_.out << (count_ == 0 ? "{\"found\":[" : "\n") << "]}\n";
  }
  size_t count() const { return count_; }

 private:
  const char* Separator() const { return count_ == 1 ? "{\"found\":[\n" : ",\n"; }

  Invocation& call_;
  size_t count_ = 0;
};

// Of values only those that programs see.
void FindIn(const ContentKey& key, const std::string& path, const Wanted& wanted,
            FoundPrinter* printer) {
  if (wanted.owner && (key.isMadeUp || key.owner != *wanted.owner)) return;
  if (Fits(wanted, key)) printer->Print(path, key);
  const ContentValue* last = nullptr;
  for (const ContentValue* value : ValuesByName(key)) {
    const bool isHidden = last != nullptr && last->name == value->name;
    last = value;
    if (!isHidden && Fits(wanted, *value)) printer->Print(path, *value);
  }
}

ExitCode RunFind(Invocation& call) {
  Wanted wanted;
  ExitCode code = kDone;
  if (!TakeWanted(call, &wanted, &code)) return code;
  const auto image = LoadImage(call, call.File(), &code);
  if (image == nullptr) return code;
  const Content& content = image->content();
  FoundPrinter printer(call);
  PathWalk walk;
  size_t next = 0;
  for (const size_t key : KeysAt(content, wanted.keys)) {
    while (next < key) walk.Enter(content.keys[next++]);
    const std::string& path = walk.Enter(content.keys[next++]);
    if (!call.out) break;
    FindIn(content.keys[key], path, wanted, &printer);
  }
  printer.End();
  const ExitCode end = EndOfLook(call, *image, call.File());
  return end == kDone && printer.count() == 0 ? kNo : end;
}

}  // namespace

Verb FindVerb() {
  return {"find",
          "Find keys and values",
          "Prints the paths of keys, which end in a slash, and the places of values, as get takes "
          "them, that fit all that is told. PATH tells the keys, with a colon also the values; "
          "every key if left out. --type, --size and --value ask for values alone. The exit code "
          "is 1 when nothing is found. Values that newer ones of their name hide are left out.",
          {kFile,
           {"PATH", "A key or a pattern: * and ? within a name, ** over levels, :NAME for values",
            false, false}},
          {{"--name", "PATTERN", "The name of the key or value"},
           {"--value", "PATTERN",
            "What the value holds: a text, a number, or other data in hexadecimal digits"},
           {"--type", "N", "The type of the value, 0 to 5"},
           {"--size", "RANGE", "How many bytes the value has: 64, 1..64, 65.."},
           {"--owner", "USER", "Who owns the key, by number or name"},
           {"-l,--long", nullptr, "Tell rights and owner of keys, data, type and size of values"}},
          "yaxreg find device.rce '**' --value '192.168.*'",
          RunFind};
}

}  // namespace yaxreg
