// check: what is wrong with a file, and how worn it is.
#include <algorithm>
#include <nlohmann/json.hpp>
#include <ostream>

#include "tools/yaxreg/image/ImageJson.h"
#include "tools/yaxreg/image/Kinds.h"
#include "tools/yaxreg/text/JsonText.h"
#include "tools/yaxreg/text/Numbers.h"
#include "tools/yaxreg/verbs/CommonArguments.h"
#include "tools/yaxreg/verbs/FindingText.h"
#include "tools/yaxreg/verbs/Loading.h"
#include "tools/yaxreg/verbs/VerbTable.h"

namespace yaxreg {

namespace {

// What compact can do about a kind that is nearly full.
std::string RemedyOf(const Wear& wear) {
  if (wear.lost() == 0) return "nothing can be won back";
  return std::string("yaxreg compact wins back ") + (wear.isLossNotable() ? "" : "only ") +
         std::to_string(wear.lost());
}

// ", but nearly full: 3 data blocks left; yaxreg compact wins back 7000"; empty while there is
// room.
std::string FullnessOf(const RegistryImage& image) {
  std::string text;
  for (const NodeKind kind : kAllKinds) {
    const Wear wear = WearOf(image, kind);
    if (!wear.isNearlyFull()) continue;
    text += text.empty() ? ", but nearly full: " : ", ";
    text += wear.LeftText() + " left; " + RemedyOf(wear);
  }
  return text;
}

void PrintVerdict(Invocation& call, const RegistryImage& image) {
  const Palette& palette = call.palette;
  call.out << Shown(call.File()) << ": ";
  if (image.IsSound()) {
    const std::string fullness = FullnessOf(image);
    call.out << palette.good << "sound" << palette.end << palette.bad << fullness
             << (fullness.empty() ? "" : palette.end) << "\n";
    return;
  }
  call.out << palette.bad << "damaged" << palette.end
           << (image.IsComplete() ? ", all keys and values can be read; yaxreg compact mends it"
                                  : ", yaxreg repair saves what can be read")
           << "\n";
}

void PrintWear(Invocation& call, const RegistryImage& image) {
  for (const NodeKind kind : kAllKinds) {
    const Wear wear = WearOf(image, kind);
    call.out << call.palette.faint << "note:" << call.palette.end << " " << KindNames(kind) << ": "
             << wear.inUse << " in use";
    if (wear.withoutKey > 0) call.out << " (" << wear.withoutKey << " of them without a key)";
    call.out << ", " << wear.leaked << " leaked";
    if (wear.stranded > 0) call.out << ", " << wear.stranded << " stranded";
    call.out << "; " << wear.left << " left until status 75\n";
  }
}

// The kinds of which fewer are left than were asked for.
std::vector<Wear> ShortOnes(const RegistryImage& image, unsigned long long minLeft) {
  std::vector<Wear> shortOnes;
  for (const NodeKind kind : kAllKinds) {
    const Wear wear = WearOf(image, kind);
    if (wear.left < minLeft) shortOnes.push_back(wear);
  }
  return shortOnes;
}

void PrintText(Invocation& call, const RegistryImage& image, const std::vector<Wear>& shortOnes) {
  PrintVerdict(call, image);
  PrintFindings(call, image, Notes::kShown);
  if (image.HasPendingChange()) {
    call.out << call.palette.faint << "note:" << call.palette.end
             << " a program has died in a change; the next one that opens the file completes it\n";
  }
  PrintWear(call, image);
  if (call.Has("--names")) {
    for (const std::string& name : image.deadNames()) {
      call.out << call.palette.faint << "note:" << call.palette.end << " /" << Shown(name)
               << ": a name without a key\n";
    }
  }
  for (const Wear& wear : shortOnes) {
    call.out << call.palette.bad << "too few:" << call.palette.end << " " << wear.LeftText()
             << " left of " << call.Text("--min-left") << " asked for\n";
  }
  PrintFindingCounts(call, image);
}

void PrintJson(Invocation& call, const RegistryImage& image, const std::vector<Wear>& shortOnes) {
  const FindingCounts counts = CountFindings(image);
  nlohmann::ordered_json document;
  document["file"] = JsonText(call.File());
  document["sound"] = image.IsSound();
  document["complete"] = image.IsComplete();
  if (call.Has("--min-left")) document["enoughLeft"] = shortOnes.empty();
  document["pendingChange"] = image.HasPendingChange();
  document["losses"] = counts.losses;
  document["damages"] = counts.damages;
  document["findings"] = FindingsJson(image);
  for (const NodeKind kind : kAllKinds) {
    document["kinds"][RegistryImage::KindName(kind)] = WearJson(WearOf(image, kind));
  }
  if (call.Has("--names")) {
    nlohmann::ordered_json& names = document["namesWithoutKey"];
    names = nlohmann::ordered_json::array();
    for (const std::string& name : image.deadNames()) names.push_back(JsonText(name));
  }
  call.out << JsonDump(document, 2) << "\n";
}

ExitCode RunCheck(Invocation& call) {
  unsigned long long minLeft = 0;
  if (call.Has("--min-left") && !ParseNumberUpTo(call.Text("--min-left"), ~0ull, &minLeft)) {
    return call.Fail(kUsage, "", "", "--min-left takes a whole number from 0");
  }
  ExitCode code = kDone;
  const std::unique_ptr<RegistryImage> image = LoadImage(call, call.File(), &code);
  if (image == nullptr) return code;
  const std::vector<Wear> shortOnes = ShortOnes(*image, minLeft);
  if (call.isJson()) {
    PrintJson(call, *image, shortOnes);
  } else if (!call.Has("--quiet")) {
    PrintText(call, *image, shortOnes);
  }
  if (!image->IsSound()) return kDamaged;
  return shortOnes.empty() ? kDone : kNo;
}

}  // namespace

Verb CheckVerb() {
  return {
      "check",
      "Look for damage and wear",
      "Checks headers, tables, free lists, every record that the tree leads to, names, counts and "
      "data. Tells which keys damage touches, and for each kind of record how many slots are in "
      "use, leaked and stranded and how many are left until changes are refused with status 75. A "
      "kind with less than 5 % left is nearly full. The exit code is 3 when the file is damaged, "
      "and 1 when it is not, but has fewer slots left than --min-left asks for.",
      {kFile},
      {{"-n,--names", nullptr, "List the names that are left without a key, too"},
       {"-q,--quiet", nullptr, "Print nothing, only answer by the exit code"},
       {"--min-left", "N",
        "End with 1 when fewer than N slots of any kind are left, so that a monitor can tell"}},
      "yaxreg check --quiet --min-left 1000 device.rce",
      RunCheck};
}

}  // namespace yaxreg
