// check: what is wrong with a file, and how worn it is.
#include <nlohmann/json.hpp>
#include <ostream>

#include "tools/yaxreg/cli/FindingText.h"
#include "tools/yaxreg/cli/Loading.h"
#include "tools/yaxreg/verbs/Verbs.h"

namespace yaxreg {

namespace {

constexpr NodeKind kKinds[kNodeKinds] = {NodeKind::kString, NodeKind::kKey, NodeKind::kValue,
                                         NodeKind::kData};

void PrintVerdict(Invocation& call, const RegistryImage& image) {
  const Palette& palette = call.palette;
  call.out << Shown(call.File()) << ": ";
  if (image.IsSound()) {
    call.out << palette.good << "sound" << palette.end << "\n";
    return;
  }
  call.out << palette.bad << "damaged" << palette.end
           << (image.IsComplete() ? ", all keys and values can be read; yaxreg compact mends it"
                                  : ", yaxreg repair saves what can be read")
           << "\n";
}

void PrintWear(Invocation& call, const RegistryImage& image) {
  for (const NodeKind kind : kKinds) {
    const SlotUse use = image.UseOf(kind);
    call.out << call.palette.faint << "note:" << call.palette.end << " "
             << RegistryImage::KindName(kind) << "s: " << use.reached << " in use, " << use.leaked
             << " lost for good";
    if (kind == NodeKind::kString && image.deadNodes() > 0) {
      call.out << ", " << image.deadNodes() << " only spell names without a key";
    }
    if (use.stranded > 0) call.out << ", " << use.stranded << " free in older tables, never used";
    call.out << "; " << use.remaining << " left before status 75\n";
  }
}

void PrintText(Invocation& call, const RegistryImage& image) {
  PrintVerdict(call, image);
  for (const Finding& finding : image.findings()) call.out << FindingLine(finding, call.palette);
  if (image.moreFindings() > 0) {
    call.out << "and " << image.moreFindings() << " findings more\n";
  }
  PrintWear(call, image);
  if (!call.Has("--names")) return;
  for (const std::string& name : image.deadNames()) {
    call.out << call.palette.faint << "note:" << call.palette.end << " /" << Shown(name)
             << ": a name without a key\n";
  }
}

void PrintJson(Invocation& call, const RegistryImage& image) {
  nlohmann::ordered_json document;
  document["file"] = JsonText(call.File());
  document["sound"] = image.IsSound();
  document["complete"] = image.IsComplete();
  document["findings"] = FindingsJson(image);
  for (const NodeKind kind : kKinds) {
    const SlotUse use = image.UseOf(kind);
    nlohmann::ordered_json& wear = document["wear"][RegistryImage::KindName(kind)];
    wear["used"] = use.reached;
    wear["leaked"] = use.leaked;
    if (kind == NodeKind::kString) wear["withoutKey"] = image.deadNodes();
    wear["stranded"] = use.stranded;
    wear["remaining"] = use.remaining;
  }
  if (call.Has("--names")) {
    nlohmann::ordered_json& names = document["withoutKey"];
    names = nlohmann::ordered_json::array();
    for (const std::string& name : image.deadNames()) names.push_back(JsonText(name));
  }
  call.out << document.dump(2) << "\n";
}

}  // namespace

ExitCode RunCheck(Invocation& call) {
  ExitCode code = kDone;
  const std::unique_ptr<RegistryImage> image = LoadImage(call, call.File(), &code);
  if (image == nullptr) return code;
  if (call.isJson()) {
    PrintJson(call, *image);
  } else if (!call.Has("--quiet")) {
    PrintText(call, *image);
  }
  return image->IsSound() ? kDone : kDamaged;
}

}  // namespace yaxreg
