// compact: rewrites a file without what it has lost for good.
#include <nlohmann/json.hpp>
#include <ostream>

#include "registry/RegistryStatus.h"
#include "tools/yaxreg/cli/Loading.h"
#include "tools/yaxreg/image/ContentDiff.h"
#include "tools/yaxreg/image/FileBytes.h"
#include "tools/yaxreg/image/ImageWriter.h"
#include "tools/yaxreg/verbs/Verbs.h"

namespace yaxreg {

namespace {

constexpr NodeKind kKinds[kNodeKinds] = {NodeKind::kString, NodeKind::kKey, NodeKind::kValue,
                                         NodeKind::kData};

void PrintText(Invocation& call, const RegistryImage& before, const RegistryImage& after) {
  call.out << Shown(call.File()) << ": " << before.bytes().size() << " bytes before, "
           << after.bytes().size() << " now\n";
  for (const NodeKind kind : kKinds) {
    const unsigned int old = before.UseOf(kind).remaining;
    const unsigned int now = after.UseOf(kind).remaining;
    call.out << RegistryImage::KindName(kind) << "s left: " << old << " before, " << now << " now";
    if (now > old) call.out << ", " << call.palette.good << now - old << " won" << call.palette.end;
    call.out << "\n";
  }
}

nlohmann::ordered_json UseJson(const RegistryImage& image) {
  nlohmann::ordered_json json;
  json["bytes"] = image.bytes().size();
  for (const NodeKind kind : kKinds) {
    const SlotUse use = image.UseOf(kind);
    json["left"][RegistryImage::KindName(kind)] = use.remaining;
  }
  return json;
}

void PrintJson(Invocation& call, const RegistryImage& before, const RegistryImage& after) {
  nlohmann::ordered_json document;
  document["changed"] = before.bytes() != after.bytes();
  document["before"] = UseJson(before);
  document["after"] = UseJson(after);
  call.out << document.dump(2) << "\n";
}

// Made of the same keys and values, and nothing is wrong with it. Anything else is a defect of this
// program, and the file is not touched then.
bool IsFaithful(const Content& content, const RegistryImage& after) {
  return after.IsSound() && AreSame(content, 0, after.content(), 0);
}

}  // namespace

ExitCode RunCompact(Invocation& call) {
  ExitCode code = kDone;
  const std::unique_ptr<RegistryImage> before = LoadImage(call, call.File(), &code);
  if (before == nullptr) return code;
  if (!before->IsComplete()) {
    return call.FailWithStatus(tamu::registry::status::kInvalidFile, call.File(), "",
                               "is damaged, something would be lost; yaxreg repair saves the rest");
  }
  Content content = before->content();
  for (ContentKey& key : content.keys) key.isMadeUp = false;  // it gets a record
  const ImageWriter writer(content, before->Tables(NodeKind::kString)[0].entries);
  if (writer.bytes().empty()) {
    return call.FailWithStatus(tamu::registry::status::kLimit, call.File(), "",
                               "is full of keys and values");
  }
  const RegistryImage after(writer.bytes());
  if (!IsFaithful(content, after)) {
    return call.Fail(kFailed, call.File(), "", "cannot be rewritten faithfully, nothing is done");
  }
  const FileResult replaced = ReplaceFile(call.File(), before->bytes(), writer.bytes());
  if (!replaced.isDone()) return call.Fail(kFailed, call.File(), "", replaced.reason);
  if (call.isJson()) {
    PrintJson(call, *before, after);
  } else {
    PrintText(call, *before, after);
  }
  return kDone;
}

}  // namespace yaxreg
