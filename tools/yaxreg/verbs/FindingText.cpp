#include "tools/yaxreg/verbs/FindingText.h"

#include <nlohmann/json.hpp>
#include <ostream>
#include <unordered_map>

#include "tools/yaxreg/text/JsonText.h"
#include "tools/yaxreg/text/Numbers.h"

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

// Without its line end.
std::string FindingLine(const Finding& finding, const Palette& palette) {
  const bool isNote = finding.severity == Severity::kNote;
  std::string line = isNote ? palette.faint : palette.bad;
  line += NameOf(finding.severity);
  line += ':';
  line += palette.end;
  line += ' ';
  if (finding.hasPath) line += palette.key + ('/' + Shown(finding.path)) + palette.end + ": ";
  return line + Shown(finding.text);
}

}  // namespace

FindingCounts CountFindings(const RegistryImage& image) {
  FindingCounts counts;
  for (const Finding& finding : image.findings()) {
    if (finding.severity == Severity::kLoss) ++counts.losses;
    if (finding.severity == Severity::kDamage) ++counts.damages;
  }
  return counts;
}

void PrintFindings(Invocation& call, const RegistryImage& image, Notes notes) {
  std::vector<std::string> lines;
  std::unordered_map<std::string, size_t> times;
  for (const Finding& finding : image.findings()) {
    if (finding.severity == Severity::kNote && notes == Notes::kLeftOut) continue;
    const std::string line = FindingLine(finding, call.palette);
    if (++times[line] == 1) lines.push_back(line);
  }
  for (const std::string& line : lines) {
    call.out << line;
    if (times[line] > 1) call.out << " (" << times[line] << " times)";
    call.out << '\n';
  }
  if (image.moreFindings() > 0) {
    call.out << "and " << Counted(image.moreFindings(), "finding") << " more\n";
  }
}

void PrintFindingCounts(Invocation& call, const RegistryImage& image) {
  const FindingCounts counts = CountFindings(image);
  if (counts.losses + counts.damages == 0) return;
  if (image.moreFindings() > 0) call.out << "at least ";
  call.out << Counted(counts.losses, "finding") << " of loss, " << counts.damages << " of damage\n";
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
