#include "tools/yaxreg/content/ContentPatch.h"

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>

#include "tools/yaxreg/content/ContentDiff.h"
#include "tools/yaxreg/content/ContentMerge.h"
#include "tools/yaxreg/text/ByteText.h"

namespace yaxreg {

namespace {

using Json = nlohmann::json;

bool IsString(const Json& object, const char* field) {
  return object.contains(field) && object[field].is_string();
}

// A text, or bytes as {"hex": "ff00"}.
bool TakeText(const Json& json, std::string* text) {
  if (json.is_string()) {
    *text = json.get<std::string>();
    return true;
  }
  return json.is_object() && json.size() == 1 && IsString(json, "hex") &&
         FromHex(json["hex"].get<std::string>(), text);
}

// Gathers one side of the differences as a document that the reader of documents takes.
class PatchMaker {
 public:
  explicit PatchMaker(const char* side) : side_(side) {}

  // False: the difference is not understood.
  bool Add(const Json& difference) {
    std::string path;
    const bool isWhole = difference.is_object() && difference.contains("path") &&
                         IsString(difference, "kind") && difference.contains(side_) &&
                         TakeText(difference["path"], &path);
    if (!isWhole) return false;
    const std::string kind = difference["kind"].get<std::string>();
    const Json& now = difference[side_];
    if (kind == "key") return AddKey(difference["path"], path, now);
    if (kind == "value") return AddValues(difference, path, now);
    const bool isField =
        kind == "owner" || kind == "rights" || kind == "watch" || kind == "default";
    if (isField) KeyOf(difference["path"])[kind] = now;
    return isField;
  }

  bool Make(ContentPatch* patch, std::string* reason, const UserNames* users) {
    const Json document = {{"keys", keys_}};
    patch->goneKeys = goneKeys_;
    patch->goneValues = goneValues_;
    return ReadContentJson(document.dump(), &patch->told, reason, users);
  }

 private:
  Json& KeyOf(const Json& path) {
    const auto [place, isNew] = places_.emplace(path.dump(), keys_.size());
    if (isNew) keys_.push_back({{"path", path}});
    return keys_[place->second];
  }

  // Of a key that one side alone has all fields come at once.
  bool AddKey(const Json& pathJson, const std::string& path, const Json& now) {
    if (now.is_null()) {
      goneKeys_.push_back(path);
      return true;
    }
    if (!now.is_object() || now.contains("values") || now.contains("path")) return false;
    KeyOf(pathJson).update(now);
    return true;
  }

  bool AddValues(const Json& difference, const std::string& path, const Json& now) {
    std::string name;
    const bool isWhole =
        now.is_array() && difference.contains("name") && TakeText(difference["name"], &name);
    if (!isWhole) return false;
    if (now.empty()) {
      goneValues_.emplace_back(path, name);
      return true;
    }
    Json& values = KeyOf(difference["path"])["values"];
    for (const Json& value : now) values.push_back(value);
    return true;
  }

  const char* side_;
  Json keys_ = Json::array();
  std::map<std::string, size_t> places_;  // of keys_, by their paths as JSON
  std::vector<std::string> goneKeys_;
  std::vector<std::pair<std::string, std::string>> goneValues_;
};

bool RefusePatch(const std::string& why, std::string* reason) {
  *reason = why;
  return false;
}

bool IsBelow(const std::string& path, const std::string& key) {
  return path.compare(0, key.size() + 1, key + '/') == 0;
}

// The first key of which something differs.
bool FindDifference(const Content& a, const Content& b, std::string* path) {
  bool isFound = false;
  CompareContents(a, 0, b, 0, [&](const Difference& difference) {
    *path = difference.path;
    isFound = true;
    return false;
  });
  return isFound;
}

}  // namespace

bool IsPatch(const std::string& json) {
  if (json.size() > kMaxJsonSize || json.find("\"differences\"") == std::string::npos) return false;
  const Json document = Json::parse(json, nullptr, false);
  return document.is_object() && document.contains("differences");
}

bool ReadPatches(const std::string& json, ContentPatches* patches, std::string* reason,
                 const UserNames* users) {
  const Json document = Json::parse(json, nullptr, false);
  const Json differences =
      document.is_object() && document.contains("differences") ? document["differences"] : Json();
  if (!differences.is_array()) return RefusePatch("differences: is no list", reason);
  PatchMaker forth("second");
  PatchMaker back("first");
  for (size_t i = 0; i < differences.size(); ++i) {
    if (forth.Add(differences[i]) && back.Add(differences[i])) continue;
    return RefusePatch("differences[" + std::to_string(i) + "]: is none that can be made", reason);
  }
  if (forth.Make(&patches->forth, reason, users) && back.Make(&patches->back, reason, users)) {
    return true;
  }
  return RefusePatch("differences: " + *reason, reason);
}

Content PatchedContent(const Content& content, const ContentPatch& patch) {
  Content patched = MergedContent(content, "", patch.told);
  for (const auto& [path, name] : patch.goneValues) {
    const size_t key = patched.Find(path);
    if (key == Content::kNone) continue;
    std::vector<ContentValue>& values = patched.keys[key].values;
    const std::string& gone = name;
    const auto isIt = [&](const ContentValue& value) { return value.name == gone; };
    values.erase(std::remove_if(values.begin(), values.end(), isIt), values.end());
  }
  const std::string* last = nullptr;
  for (const std::string& path : patch.goneKeys) {
    if (last != nullptr && IsBelow(path, *last)) continue;
    last = &path;
    const size_t key = patched.Find(path);
    if (key != Content::kNone && key != 0) patched = ContentWithout(patched, key);
  }
  return patched;
}

// Taken back at once it must leave what was there: nothing else is lost.
bool DoesPatchFit(const Content& content, const ContentPatches& patches, std::string* path) {
  std::string other;
  const Content patched = PatchedContent(content, patches.forth);
  if (!FindDifference(content, patched, &other)) return true;
  return !FindDifference(content, PatchedContent(patched, patches.back), path);
}

}  // namespace yaxreg
