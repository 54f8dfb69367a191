#include "tools/yaxreg/verbs/DifferenceText.h"

#include <ostream>

#include "tools/yaxreg/content/ContentDiff.h"
#include "tools/yaxreg/content/ContentJson.h"
#include "tools/yaxreg/content/ValueText.h"
#include "tools/yaxreg/text/JsonText.h"
#include "tools/yaxreg/text/Numbers.h"
#include "tools/yaxreg/text/RightsText.h"

namespace yaxreg {

namespace {

const char* KindName(DifferenceKind kind) {
  switch (kind) {
    case DifferenceKind::kKey:
      return "key";
    case DifferenceKind::kMissing:
      return "missing";
    case DifferenceKind::kOwner:
      return "owner";
    case DifferenceKind::kRights:
      return "rights";
    case DifferenceKind::kWatch:
      return "watch";
    case DifferenceKind::kDefault:
      return "default";
    default:
      return "value";
  }
}

// What of a key is shown for people in a difference of that kind, behind its path.
std::string FieldText(DifferenceKind kind, const ContentKey& key) {
  switch (kind) {
    case DifferenceKind::kOwner:
      return "owner " + std::to_string(key.owner);
    case DifferenceKind::kRights:
      return "rights " + RightsText(key.permission);
    case DifferenceKind::kWatch:
      return "watch " + std::to_string(key.watch);
    case DifferenceKind::kDefault:
      return "default " + (key.hasDefault ? std::to_string(key.defaultValue) : "none");
    default:
      return key.isMadeUp ? "a name without a key" : "";
  }
}

// Prints the lines of one difference: "-" what the first file has, "+" what the second one has.
class DifferencePrinter {
 public:
  explicit DifferencePrinter(Invocation& call) : call_(call) {}

  void Print(const Difference& difference) {
    const std::string path = Shown(difference.path);
    if (difference.kind == DifferenceKind::kValue) {
      const std::string value = (path.empty() ? "/" : path) + " : " + Shown(difference.name);
      PrintValues(first_, value, difference.firstValues);
      PrintValues(second_, value, difference.secondValues);
      return;
    }
    PrintKey(first_, path, difference.kind, difference.first);
    PrintKey(second_, path, difference.kind, difference.second);
  }

 private:
  struct Sign {
    const char* text;
    const char* colour;
  };

  void PrintKey(const Sign& sign, const std::string& path, DifferenceKind kind,
                const ContentKey* key) {
    if (key == nullptr) return;
    const std::string field = FieldText(kind, *key);
    PrintLine(sign, path + '/' + (field.empty() ? "" : " (" + field + ')'));
  }

  void PrintValues(const Sign& sign, const std::string& name,
                   const std::vector<const ContentValue*>& values) {
    bool isHidden = false;
    for (const ContentValue* value : values) {
      const std::string notes = ValueNotes(*value, isHidden);
      PrintLine(sign, name + " = " + ValueText(*value) + (notes.empty() ? "" : " (" + notes + ')'));
      isHidden = true;
    }
  }

  void PrintLine(const Sign& sign, const std::string& text) {
    call_.out << sign.colour << sign.text << text << call_.palette.end << '\n';
  }

  Invocation& call_;
  const Sign first_{"- ", call_.palette.bad};
  const Sign second_{"+ ", call_.palette.good};
};

std::string KeyJson(DifferenceKind kind, const ContentKey* key) {
  if (key == nullptr) return "null";
  const std::string defaultJson = key->hasDefault ? JsonNumberText(key->defaultValue) : "null";
  switch (kind) {
    case DifferenceKind::kMissing:
      return key->isMadeUp ? "true" : "false";
    case DifferenceKind::kOwner:
      return std::to_string(key->owner);
    case DifferenceKind::kRights:
      return std::to_string(key->permission);
    case DifferenceKind::kWatch:
      return std::to_string(key->watch);
    case DifferenceKind::kDefault:
      return defaultJson;
    default:
      break;
  }
  if (key->isMadeUp) return "{\"missing\":true}";
  return "{\"owner\":" + std::to_string(key->owner) +
         ",\"rights\":" + std::to_string(key->permission) +
         ",\"watch\":" + std::to_string(key->watch) + ",\"default\":" + defaultJson + '}';
}

std::string ValuesJson(const std::vector<const ContentValue*>& values) {
  std::string json;
  for (const ContentValue* value : values) json += (json.empty() ? "" : ",") + ValueJson(*value);
  return '[' + json + ']';
}

// One difference as an object on a line of its own. A list of values, the newest first, holds all
// that a side has of the name.
void PrintJson(const Difference& difference, std::ostream& out) {
  const DifferenceKind kind = difference.kind;
  out << "{\"path\":" << TextJson(difference.path) << ",\"kind\":\"" << KindName(kind) << '"';
  if (kind == DifferenceKind::kValue) {
    out << ",\"name\":" << TextJson(difference.name)
        << ",\"first\":" << ValuesJson(difference.firstValues)
        << ",\"second\":" << ValuesJson(difference.secondValues) << '}';
  } else {
    out << ",\"first\":" << KeyJson(kind, difference.first)
        << ",\"second\":" << KeyJson(kind, difference.second) << '}';
  }
}

}  // namespace

void PrintDifferences(Invocation& call, const Comparison& what, bool isSame,
                      const std::string& moreJson) {
  const bool isJson = call.isJson();
  if (isJson) call.out << "{\"same\":" << (isSame ? "true" : "false") << ",\"differences\":[";
  DifferencePrinter printer(call);
  const char* before = "\n";
  CompareContents(what.first, what.firstKey, what.second, what.secondKey,
                  [&](const Difference& difference) {
                    if (isJson) {
                      call.out << before;
                      PrintJson(difference, call.out);
                      before = ",\n";
                    } else {
                      printer.Print(difference);
                    }
                    return call.out.good();
                  });
  if (isJson) call.out << (isSame ? "]" : "\n]") << moreJson << "}\n";
}

}  // namespace yaxreg
