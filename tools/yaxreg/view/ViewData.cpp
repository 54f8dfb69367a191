#include "tools/yaxreg/view/ViewData.h"

#include <nlohmann/json.hpp>
#include <ostream>
#include <sstream>
#include <vector>

#include "registry/format/RecordSize.h"
#include "tools/yaxreg/components/ComponentJson.h"
#include "tools/yaxreg/content/ContentDiff.h"
#include "tools/yaxreg/content/ContentJson.h"
#include "tools/yaxreg/image/FilePieces.h"
#include "tools/yaxreg/image/ImageJson.h"
#include "tools/yaxreg/image/Kinds.h"
#include "tools/yaxreg/text/JsonText.h"

namespace yaxreg {

namespace {

using Json = nlohmann::ordered_json;

// A key of the page: of one file, or of both.
struct KeyPair {
  const ContentKey* first;
  const ContentKey* second;
};

std::vector<KeyPair> PairsOf(const ViewedFile& first, const ViewedFile* second) {
  std::vector<KeyPair> pairs;
  if (second == nullptr) {
    for (const ContentKey& key : first.image->content().keys) pairs.push_back({&key, nullptr});
    return pairs;
  }
  VisitKeyPairs(first.image->content(), 0, second->image->content(), 0,
                [&](const ContentKey* firstKey, const ContentKey* secondKey) {
                  pairs.push_back({firstKey, secondKey});
                  return true;
                });
  return pairs;
}

// Where the keys of a content are among all keys of the page.
std::vector<size_t> PlacesOf(const Content& content, const std::vector<KeyPair>& pairs,
                             const ContentKey* KeyPair::*side) {
  std::vector<size_t> places(content.keys.size());
  for (size_t i = 0; i < pairs.size(); ++i) {
    const ContentKey* const key = pairs[i].*side;
    if (key != nullptr) places[static_cast<size_t>(key - content.keys.data())] = i;
  }
  return places;
}

// The key that the path leads to, or the last one on the way there: a finding may be about what is
// lost, and very long paths are shortened.
size_t NearestKey(const Content& content, const std::string& path) {
  size_t key = 0;
  for (const std::string& name : ComponentsOf(path)) {
    const size_t child = content.FindChild(key, name);
    if (child == Content::kNone) break;
    key = child;
  }
  return key;
}

Json MarkedFindings(const RegistryImage& image, const std::vector<size_t>& places) {
  Json list = FindingsJson(image);
  const std::vector<Finding>& findings = image.findings();
  for (size_t i = 0; i < findings.size() && !places.empty(); ++i) {
    if (!findings[i].hasPath) continue;
    list[i]["key"] = places[NearestKey(image.content(), findings[i].path)];
  }
  return list;
}

Json KindsJson(const RegistryImage& image) {
  Json kinds;
  for (const NodeKind kind : kAllKinds) {
    const Wear wear = WearOf(image, kind);
    Json& json = kinds[RegistryImage::KindName(kind)];
    json = WearJson(wear);
    json["slots"] = wear.slots;
    json["ever"] = wear.ever;
    json["tables"] = wear.tables;
    json["maxTables"] = tamu::registry::kTablesMax;
  }
  return kinds;
}

Json PiecesJson(const RegistryImage& image) {
  Json list = Json::array();
  for (const FilePiece& piece : PiecesOf(image)) {
    list.push_back({{"offset", piece.offset}, {"size", piece.size}, {"name", piece.name}});
  }
  return list;
}

Json FileJson(const ViewedFile& file, const std::vector<size_t>& places) {
  const RegistryImage& image = *file.image;
  Json json;
  json["file"] = JsonText(file.name);
  json["bytes"] = image.bytes().size();
  json["sound"] = image.IsSound();
  json["complete"] = image.IsComplete();
  json["pendingChange"] = image.HasPendingChange();
  json["keyCount"] = image.content().KeyCount();
  json["valueCount"] = image.content().ValueCount();
  json["findings"] = MarkedFindings(image, places);
  json["kinds"] = KindsJson(image);
  json["components"] = ComponentsJson(ReadComponents(image.content()));
  json["pieces"] = PiecesJson(image);
  return json;
}

const char* ChangeOf(const KeyPair& pair) {
  if (pair.first == nullptr) return "added";
  if (pair.second == nullptr) return "removed";
  return AreSameKeys(*pair.first, *pair.second) ? "" : "changed";
}

// {"depth", "name", "change", the key's fields, "second": the fields in the second file}.
std::string KeyJson(const KeyPair& pair, const std::string& change) {
  const ContentKey& key = pair.first != nullptr ? *pair.first : *pair.second;
  std::ostringstream out;
  out << "{\"depth\":" << std::to_string(key.depth) << ",\"name\":" << TextJson(key.name) << ',';
  if (!change.empty()) out << "\"change\":\"" << change << "\",";
  WriteKeyFields(key, out);
  if (change == "changed") {
    out << ",\"second\":{";
    WriteKeyFields(*pair.second, out);
    out << '}';
  }
  out << '}';
  return out.str();
}

}  // namespace

void WriteViewData(const ViewedFile& first, const ViewedFile* second, std::ostream& out) {
  const std::vector<KeyPair> pairs = PairsOf(first, second);
  Json files = Json::array();
  files.push_back(FileJson(first, PlacesOf(first.image->content(), pairs, &KeyPair::first)));
  if (second != nullptr) {
    files.push_back(FileJson(*second, PlacesOf(second->image->content(), pairs, &KeyPair::second)));
  }
  out << "{\"format\":\"yax-view\",\"version\":1,\"files\":" << WithoutMarkup(JsonDump(files))
      << ",\"keys\":[";
  const char* before = "\n";
  for (size_t i = 0; i < pairs.size() && out; ++i) {
    const std::string change = second != nullptr ? ChangeOf(pairs[i]) : "";
    out << before << WithoutMarkup(KeyJson(pairs[i], change));
    before = ",\n";
  }
  out << "\n]}\n";
}

// These characters are nowhere in JSON but in its texts, where \u stands for each.
std::string WithoutMarkup(const std::string& json) {
  std::string text;
  text.reserve(json.size());
  for (size_t i = 0; i < json.size(); ++i) {
    const char c = json[i];
    const bool isSeparator = json.compare(i, 2, "\xE2\x80") == 0 && i + 2 < json.size() &&
                             (json[i + 2] == '\xA8' || json[i + 2] == '\xA9');
    if (c == '<') {
      text += "\\u003c";
    } else if (c == '>') {
      text += "\\u003e";
    } else if (c == '&') {
      text += "\\u0026";
    } else if (isSeparator) {
      text += json[i + 2] == '\xA8' ? "\\u2028" : "\\u2029";
      i += 2;
    } else {
      text += c;
    }
  }
  return text;
}

}  // namespace yaxreg
