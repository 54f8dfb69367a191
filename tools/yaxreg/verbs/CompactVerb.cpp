// compact: rewrites a file without what it has lost for good.
#include <algorithm>
#include <nlohmann/json.hpp>
#include <ostream>

#include "tools/yaxreg/image/ImageWriter.h"
#include "tools/yaxreg/image/Kinds.h"
#include "tools/yaxreg/text/JsonText.h"
#include "tools/yaxreg/verbs/CommonArguments.h"
#include "tools/yaxreg/verbs/Exchange.h"
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

// The registry without what it has lost for good.
std::string Rewritten(Invocation& call, const RegistryImage& before, ExitCode* code) {
  Content content = before.content();
  for (ContentKey& key : content.keys) key.isMadeUp = false;  // it gets a record
  const ImageWriter writer(content, before.Tables(NodeKind::kString)[0].entries);
  if (writer.bytes().empty()) {
    *code = call.FailWithStatus(tamu::registry::status::kLimit, call.File(), "",
                                "is full of keys and values");
    return "";
  }
  if (IsFaithful(content, RegistryImage(writer.bytes()))) return writer.bytes();
  *code = call.Fail(kFailed, call.File(), "", "cannot be rewritten faithfully, nothing is done");
  return "";
}

std::string Compacted(Invocation& call, const RegistryImage& before, ExitCode* code) {
  if (!before.IsComplete()) {
    *code =
        call.FailWithStatus(tamu::registry::status::kInvalidFile, call.File(), "",
                            "is damaged, something would be lost; yaxreg repair saves the rest");
    return "";
  }
  if (before.HasStrays() && !call.Has("--force")) {
    *code = call.Fail(kNo, call.File(), "",
                      "holds keys or values that nothing leads to, deleted while they were open or "
                      "lost by damage; yaxreg repair saves them, --force drops them");
    return "";
  }
  return Rewritten(call, before, code);
}

ExitCode RunCompact(Invocation& call) {
  Exchange exchange(
      call, Orphans::kIfDamaged, tamu::registry::ChangeKind::kCompacted,
      [&](const RegistryImage& before, ExitCode* code) { return Compacted(call, before, code); });
  const ExitCode code = exchange.Run();
  if (code != kDone) return code;
  const RegistryImage after(exchange.after());
  if (call.isJson()) {
    PrintJson(call, exchange.before(), after);
  } else {
    PrintText(call, exchange.before(), after);
  }
  return kDone;
}

}  // namespace

Verb CompactVerb() {
  return {
      "compact",
      "Rewrite a file and win back the slots that wear has taken",
      "Writes all keys and values anew, in one change: "
      "owner, rights, default values, watch bits, unset and hidden values and the order of values "
      "stay. Slots that are leaked or stranded, and those of names without a key, can be handed "
      "out again. A registry that refuses changes with status 75 works again, unless it is full "
      "of keys and values. Programs that have the file open go on with it, and it gets shorter "
      "when "
      "the last of them has closed it. A damaged file is refused, see repair.",
      {kFile},
      {{"-f,--force", nullptr, "Drop keys and values that nothing leads to"}, kTimeout},
      "yaxreg compact device.rce",
      RunCompact,
      true};
}

}  // namespace yaxreg
