#include "tools/yaxreg/image/ImageJson.h"

#include <nlohmann/json.hpp>

#include "tools/yaxreg/text/JsonText.h"
#include "tools/yaxreg/text/Numbers.h"

namespace yaxreg {

const char* SeverityName(Severity severity) {
  switch (severity) {
    case Severity::kNote:
      return "note";
    case Severity::kDamage:
      return "damage";
    default:
      return "loss";
  }
}

nlohmann::ordered_json FindingsJson(const RegistryImage& image) {
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  for (const Finding& finding : image.findings()) {
    nlohmann::ordered_json one;
    one["severity"] = SeverityName(finding.severity);
    if (finding.hasPath) one["path"] = JsonText(finding.path);
    one["text"] = JsonText(finding.text);
    list.push_back(std::move(one));
  }
  if (image.moreFindings() > 0) {
    list.push_back({{"severity", "note"},
                    {"text", "and " + Counted(image.moreFindings(), "finding") + " more"}});
  }
  return list;
}

nlohmann::ordered_json WearJson(const Wear& wear) {
  nlohmann::ordered_json json;
  json["used"] = wear.inUse;
  if (wear.kind == NodeKind::kString) json["withoutKey"] = wear.withoutKey;
  json["leaked"] = wear.leaked;
  json["free"] = wear.free;
  json["stranded"] = wear.stranded;
  json["left"] = wear.left;
  return json;
}

}  // namespace yaxreg
