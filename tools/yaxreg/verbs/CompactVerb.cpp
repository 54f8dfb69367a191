// compact: rewrites a file without what it has lost for good.
#include <algorithm>
#include <nlohmann/json.hpp>
#include <ostream>

#include "registry/Registry.h"
#include "tools/yaxreg/image/FileBytes.h"
#include "tools/yaxreg/image/FileLock.h"
#include "tools/yaxreg/image/ImageWriter.h"
#include "tools/yaxreg/image/Kinds.h"
#include "tools/yaxreg/image/SideFolder.h"
#include "tools/yaxreg/text/JsonText.h"
#include "tools/yaxreg/verbs/CommonArguments.h"
#include "tools/yaxreg/verbs/Loading.h"
#include "tools/yaxreg/verbs/VerbTable.h"

namespace yaxreg {

namespace {

void PrintText(Invocation& call, const RegistryImage& before, const RegistryImage& after) {
  const std::string file = Shown(call.File());
  if (before.bytes() == after.bytes()) {
    call.out << file << ": is compact already, nothing is changed\n";
    return;
  }
  call.out << file << ": " << before.bytes().size() << " bytes before, " << after.bytes().size()
           << " now\n";
  bool isWon = after.bytes().size() < before.bytes().size();
  for (const NodeKind kind : kAllKinds) {
    const unsigned int old = before.UseOf(kind).remaining;
    const unsigned int now = after.UseOf(kind).remaining;
    call.out << RegistryImage::KindName(kind) << "s left: " << old << " before, " << now << " now";
    if (now > old) call.out << ", " << call.palette.good << now - old << " won" << call.palette.end;
    call.out << "\n";
    isWon = isWon || now > old;
  }
  if (!isWon) call.out << "nothing is won\n";
}

nlohmann::ordered_json UseJson(const RegistryImage& image) {
  nlohmann::ordered_json json;
  json["bytes"] = image.bytes().size();
  for (const NodeKind kind : kAllKinds) {
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
  call.out << JsonDump(document, 2) << "\n";
}

// Made of the same keys and values in the same order, and nothing is wrong with it. Anything else
// is a defect of this program, and the file is not touched then.
bool IsFaithful(const Content& content, const RegistryImage& after) {
  const auto isSame = [](const ContentKey& one, const ContentKey& other) {
    return one.name == other.name && one.depth == other.depth && one.IsSameAs(other);
  };
  const std::vector<ContentKey>& keys = after.content().keys;
  return after.IsSound() &&
         std::equal(content.keys.begin(), content.keys.end(), keys.begin(), keys.end(), isSame);
}

// The registry without what it has lost for good; null when that cannot be made.
std::unique_ptr<RegistryImage> Rewrite(Invocation& call, const RegistryImage& before,
                                       ExitCode* code) {
  Content content = before.content();
  for (ContentKey& key : content.keys) key.isMadeUp = false;  // it gets a record
  const ImageWriter writer(content, before.Tables(NodeKind::kString)[0].entries);
  if (writer.bytes().empty()) {
    *code = call.FailWithStatus(tamu::registry::status::kLimit, call.File(), "",
                                "is full of keys and values");
    return nullptr;
  }
  auto after = std::make_unique<RegistryImage>(writer.bytes());
  if (IsFaithful(content, *after)) return after;
  *code = call.Fail(kFailed, call.File(), "", "cannot be rewritten faithfully, nothing is done");
  return nullptr;
}

// The file is replaced only while it holds what was read: a change that a program has died in is
// completed in it before.
std::unique_ptr<RegistryImage> LoadCompleted(Invocation& call, ExitCode* code) {
  std::unique_ptr<RegistryImage> image = LoadImage(call, call.File(), code);
  if (image == nullptr || !image->HasPendingChange()) return image;
  tamu::registry::Registry completing(call.File().c_str(), tamu::registry::kAdministratorId);
  UseSideFolder(completing);
  completing.Initialize();
  completing.Finalize();
  return LoadImage(call, call.File(), code);
}

ExitCode RunCompact(Invocation& call) {
  FileLock lock;
  lock.Take(call.File());
  ExitCode code = kDone;
  const std::unique_ptr<RegistryImage> before = LoadCompleted(call, &code);
  if (before == nullptr) return code;
  if (!before->IsComplete()) {
    return call.FailWithStatus(tamu::registry::status::kInvalidFile, call.File(), "",
                               "is damaged, something would be lost; yaxreg repair saves the rest");
  }
  if (before->HasStrays() && !call.Has("--force")) {
    return call.Fail(kNo, call.File(), "",
                     "holds keys or values that nothing leads to, deleted while they were open or "
                     "lost by damage; yaxreg repair saves them, --force drops them");
  }
  const std::unique_ptr<RegistryImage> after = Rewrite(call, *before, &code);
  if (after == nullptr) return code;
  if (before->bytes() != after->bytes()) {
    const FileResult replaced = ReplaceFile(call.File(), before->bytes(), after->bytes());
    if (!replaced.isDone()) return call.Fail(kFailed, call.File(), "", replaced.reason);
  }
  if (call.isJson()) {
    PrintJson(call, *before, *after);
  } else {
    PrintText(call, *before, *after);
  }
  return kDone;
}

}  // namespace

Verb CompactVerb() {
  return {
      "compact",
      "Rewrite a file and win back the slots that wear has taken",
      "Writes all keys and values into a new file and puts it into the place of the old one: "
      "owner, rights, default values, watch bits, unset and hidden values and the order of values "
      "stay. Slots that are leaked or stranded, and those of names without a key, can be handed "
      "out again. A registry that refuses changes with status 75 works again, unless it is full "
      "of keys and values. No program may have the file open. A damaged file is refused, see "
      "repair.",
      {kFile},
      {{"-f,--force", nullptr, "Drop keys and values that nothing leads to"}},
      "yaxreg compact device.rce",
      RunCompact};
}

}  // namespace yaxreg
