#include "tools/yaxreg/verbs/FindingText.h"

#include <ostream>
#include <unordered_map>

#include "tools/yaxreg/image/ImageJson.h"
#include "tools/yaxreg/text/Numbers.h"

namespace yaxreg {

namespace {

// Without its line end.
std::string FindingLine(const Finding& finding, const Palette& palette) {
  const bool isNote = finding.severity == Severity::kNote;
  std::string line = isNote ? palette.faint : palette.bad;
  line += SeverityName(finding.severity);
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

}  // namespace yaxreg
