#include "tools/yaxreg/cli/FindingText.h"

#include <nlohmann/json.hpp>

namespace yaxreg {

namespace {

const char* NameOf(Severity severity) {
  switch (severity) {
    case Severity::kNote:
      return "note";
    case Severity::kDamage:
      return "damage";
    default:
      return "loss";
  }
}

}  // namespace

std::string FindingLine(const Finding& finding, const Palette& palette) {
  const bool isNote = finding.severity == Severity::kNote;
  std::string line = isNote ? palette.faint : palette.bad;
  line += NameOf(finding.severity);
  line += ':';
  line += palette.end;
  line += ' ';
  if (finding.hasPath) line += palette.key + ('/' + Shown(finding.path)) + palette.end + ": ";
  return line + Shown(finding.text) + "\n";
}

nlohmann::ordered_json FindingsJson(const RegistryImage& image) {
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  for (const Finding& finding : image.findings()) {
    nlohmann::ordered_json one;
    one["severity"] = NameOf(finding.severity);
    if (finding.hasPath) one["path"] = JsonText(finding.path);
    one["text"] = JsonText(finding.text);
    list.push_back(std::move(one));
  }
  if (image.moreFindings() > 0) {
    list.push_back({{"severity", "note"},
                    {"text", "and " + std::to_string(image.moreFindings()) + " findings more"}});
  }
  return list;
}

nlohmann::ordered_json JsonText(const std::string& bytes) {
  if (IsText(bytes)) return bytes;
  return {{"hex", ToHex(bytes)}};
}

}  // namespace yaxreg
