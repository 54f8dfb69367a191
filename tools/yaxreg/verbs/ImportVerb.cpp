// import: takes keys and values over from JSON.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <istream>
#include <memory>
#include <ostream>

#include "tools/yaxreg/content/ContentChange.h"
#include "tools/yaxreg/content/ContentDiff.h"
#include "tools/yaxreg/content/ContentJsonReader.h"
#include "tools/yaxreg/content/ContentMerge.h"
#include "tools/yaxreg/content/ContentPatch.h"
#include "tools/yaxreg/content/RestoreRoom.h"
#include "tools/yaxreg/image/FileBytes.h"
#include "tools/yaxreg/image/HeldSignals.h"
#include "tools/yaxreg/text/JsonText.h"
#include "tools/yaxreg/text/Numbers.h"
#include "tools/yaxreg/verbs/ChangeCount.h"
#include "tools/yaxreg/verbs/CommonArguments.h"
#include "tools/yaxreg/verbs/DifferenceText.h"
#include "tools/yaxreg/verbs/NewRegistry.h"
#include "tools/yaxreg/verbs/Session.h"
#include "tools/yaxreg/verbs/UsersFile.h"
#include "tools/yaxreg/verbs/VerbTable.h"

namespace yaxreg {

namespace status = tamu::registry::status;

namespace {

bool IsAbsent(const std::string& file) {
  struct stat found;
  return lstat(file.c_str(), &found) != 0 && errno == ENOENT;
}

// A document of keys, or a patch, in the direction in which it is to be applied.
struct ImportInput {
  ContentUpdate update;
  bool isPatch = false;
  ContentPatches patches;
};

bool FailInput(Invocation& call, const std::string& reason, ExitCode* code) {
  *code = call.Fail(call.in.bad() ? kFailed : kUsage, "standard input", "", reason);
  return false;
}

bool ReadInput(Invocation& call, ImportInput* input, ExitCode* code) {
  std::optional<UserNames> list;
  if (!TakeUsers(call, &list, code)) return false;
  const UserNames* const users = list ? &*list : nullptr;
  std::string json;
  std::string reason;
  if (!ReadJsonText(call.in, &json, &reason)) return FailInput(call, reason, code);
  input->isPatch = IsPatch(json);
  const bool isTaken = input->isPatch ? ReadPatches(json, &input->patches, &reason, users)
                                      : ReadContentJson(json, &input->update, &reason, users);
  if (!isTaken) return FailInput(call, reason, code);
  if (call.Has("--reverse") && !input->isPatch) {
    return FailInput(call, "is no patch, which --reverse needs", code);
  }
  if (input->isPatch && (!call.Path().empty() || call.Has("--exact"))) {
    return FailInput(call, "is a patch, which takes neither PATH nor --exact", code);
  }
  if (call.Has("--reverse")) std::swap(input->patches.forth, input->patches.back);
  return true;
}

// Whether a patch is for what the registry holds. The failure has been printed.
bool DoesFit(Invocation& call, const ImportInput& input, const Content& present, ExitCode* code) {
  std::string path;
  if (!input.isPatch || DoesPatchFit(present, input.patches, &path)) return true;
  *code = call.Fail(kNo, call.File(), path, "is not as the patch expects it");
  return false;
}

// What the registry is to become. The path has no slash at either end.
Content WantedContent(Invocation& call, const Content& present, const std::string& path,
                      const ImportInput& input) {
  if (input.isPatch) return PatchedContent(present, input.patches.forth);
  if (call.Has("--exact")) return ExactContent(present, path, input.update);
  return MergedContent(present, path, input.update);
}

// ---- what cannot be done

// Why a key, whose owner, say, cannot be changed otherwise, was not restored.
std::string NoRoomText(const RegistryImage& image, const Content& wanted,
                       const ChangeOutcome& outcome) {
  const size_t key = outcome.failedRestore;
  const bool isPresent = image.content().Find(outcome.path) != Content::kNone;
  std::string text = isPresent ? "has no room to rewrite it" : "has no room for it";
  const size_t below = wanted.KeysBelow(key);
  if (below == 1) text += " with the key below it";
  if (below > 1) text += " with the " + Counted(below, "key") + " below it";
  return text + (FitsWhenCompact(image, wanted, outcome.path) ? "; yaxreg compact may help" : "");
}

ExitCode FailChange(Invocation& call, Session& session, const RegistryImage& image,
                    const Content& wanted, const ChangeOutcome& outcome) {
  if (outcome.status != status::kLimit || outcome.failedRestore == Content::kNone) {
    return session.FailAt(outcome.path, outcome.status);
  }
  return call.FailWithStatus(outcome.status, call.File(), outcome.path,
                             NoRoomText(image, wanted, outcome));
}

// More than the tables can hold, whatever is given back: that need not be tried.
bool IsTooMuch(const RegistryImage& image, const Content& wanted) {
  const auto room = [&](NodeKind kind) {
    const SlotUse use = image.UseOf(kind);
    return size_t{use.reached} + use.room();
  };
  return wanted.keys.size() > room(NodeKind::kKey) || wanted.ValueCount() > room(NodeKind::kValue);
}

// Tries the changes on a copy. A failure has been printed.
ExitCode Rehearse(Invocation& call, Session& session, const RegistryImage& image,
                  const Content& wanted, const TemporaryFolder& folder, ChangeOutcome* outcome) {
  if (IsTooMuch(image, wanted)) {
    return call.FailWithStatus(status::kLimit, call.File(), "", "has no room for so much");
  }
  if (!folder.isMade()) return call.Fail(kFailed, call.File(), "", folder.reason());
  *outcome = RehearseChange(image, wanted, folder);
  if (outcome->status == status::kOk) return kDone;
  return FailChange(call, session, image, wanted, *outcome);
}

// ---- --dry-run

// The text of a piece for each key that is rewritten with all below it, and so uses up slots;
// `piece` makes it of the key's path and the number of keys below it.
template <class Piece>
std::string RewritesText(const Content& wanted, const std::vector<size_t>& rewritten, Piece piece) {
  std::string text;
  PathWalk walk;
  size_t next = 0;
  for (const size_t key : rewritten) {
    while (next < key) walk.Enter(wanted.keys[next++]);
    text += piece(walk.Enter(wanted.keys[next++]), wanted.KeysBelow(key), text.empty());
  }
  return text;
}

std::string RewriteLine(const std::string& path, size_t below, bool) {
  const std::string line = "rewrites " + (path.empty() ? "/" : Shown(path));
  return line + (below == 0 ? "" : " with " + Counted(below, "key") + " below it") + '\n';
}

std::string RewriteJson(const std::string& path, size_t below, bool isFirst) {
  return (isFirst ? "{\"path\":" : ",{\"path\":") + TextJson(path) +
         ",\"keys\":" + std::to_string(below) + '}';
}

ExitCode ShowChanges(Invocation& call, Session& session, const RegistryImage& image,
                     const Content& wanted, const TemporaryFolder& folder) {
  const Content& present = image.content();
  const bool isSame = AreSame(present, 0, wanted, 0);
  ChangeOutcome outcome;
  if (!isSame) {
    const ExitCode code = Rehearse(call, session, image, wanted, folder, &outcome);
    if (code != kDone) return code;
  }
  const Comparison what = {present, wanted, 0, 0};
  if (call.isJson()) {
    const std::string rewrites = RewritesText(wanted, outcome.rewritten, RewriteJson);
    PrintDifferences(call, what, isSame, ",\"rewrites\":[" + rewrites + ']');
  } else {
    PrintDifferences(call, what, isSame);
    call.out << RewritesText(wanted, outcome.rewritten, RewriteLine);
  }
  return kDone;
}

// The same for a file that is not there.
ExitCode ShowNew(Invocation& call, const ImportInput& input) {
  const std::unique_ptr<TemporaryFolder> folder = MakeTemporaryFolder(call.File());
  if (!folder->isMade()) return call.Fail(kFailed, call.File(), "", folder->reason());
  std::string bytes;
  const unsigned int made = MakeEmptyRegistry(folder->FileIn("new"), &bytes);
  if (made != status::kOk) {
    return call.FailWithStatus(made, call.File(), "", "the library cannot make a registry");
  }
  Session session(call);
  const RegistryImage empty(std::move(bytes));
  ExitCode code = kDone;
  if (!DoesFit(call, input, empty.content(), &code)) return code;
  const Content wanted = WantedContent(call, empty.content(), session.path(), input);
  return ShowChanges(call, session, empty, wanted, *folder);
}

// ---- doing it

// What finds no room is told by a rehearsal, before other programs have to wait. Where they have
// changed the file since, the import is made for what is there now.
ExitCode Apply(Invocation& call, Session& session, const ImportInput& input, Content* wanted,
               ChangeCount* count) {
  const bool hasRoot = !session.image().content().keys[0].isMadeUp;
  if (!hasRoot && !(session.OpenToChange() && session.Close())) return session.code();
  const TemporaryFolder folder(call.File());
  ChangeOutcome outcome;
  ExitCode code = Rehearse(call, session, session.image(), *wanted, folder, &outcome);
  if (code != kDone) return code;
  const std::string rehearsed = session.image().bytes();
  if (!session.OpenToChange()) return session.code();
  const Content& present = session.image().content();
  if (session.image().bytes() != rehearsed) {
    if (!DoesFit(call, input, present, &code)) return code;
    *wanted = WantedContent(call, present, session.path(), input);
    *count = ChangeCount(present, *wanted);
  }
  outcome = ChangeContent(session.registry(), present, *wanted, folder.FileIn("backup"));
  if (outcome.status != status::kOk) {
    return FailChange(call, session, session.image(), *wanted, outcome);
  }
  return session.Close() ? kDone : session.code();
}

ExitCode Import(Invocation& call, const ImportInput& input) {
  Session session(call);
  if (!session.OpenToLook()) return session.code();
  if (!session.image().IsSound()) {
    return call.FailWithStatus(status::kInvalidFile, call.File(), "",
                               "is damaged; yaxreg check tells how to mend it");
  }
  const Content& present = session.image().content();
  ExitCode code = kDone;
  if (!DoesFit(call, input, present, &code)) return code;
  Content wanted = WantedContent(call, present, session.path(), input);
  if (call.Has("--dry-run")) {
    return ShowChanges(call, session, session.image(), wanted, *MakeTemporaryFolder(call.File()));
  }
  const std::string path = session.path();
  ChangeCount count(present, wanted);
  if (!count.IsZero()) {
    code = Apply(call, session, input, &wanted, &count);
    if (code != kDone) return code;
  }
  return EndOfCounted(call, path, count);
}

std::string BytesOf(const std::string& file) {
  std::string bytes;
  ReadWholeFile(file, RegistryImage::kMaxSize, &bytes);  // empty when it cannot be read
  return bytes;
}

// A file that was made for an import that then fails is removed, unless another call has changed
// it.
ExitCode ImportNew(Invocation& call, const ImportInput& input) {
  const HeldSignals signals;
  const ExitCode made = MakeNewRegistry(call);
  if (made != kDone) return made;
  const std::string empty = BytesOf(call.File());
  const ExitCode code = Import(call, input);
  if (code != kDone && BytesOf(call.File()) == empty) unlink(call.File().c_str());
  return code;
}

// The path has lost one "/" at its beginning already.
bool HasEmptyComponent(const std::string& path) {
  const std::vector<std::string> names = ComponentsOf('/' + path);
  return std::any_of(names.begin(), names.end(),
                     [](const std::string& name) { return name.empty(); });
}

ExitCode RunImport(Invocation& call) {
  if (HasEmptyComponent(call.Path())) {
    return call.Fail(kUsage, "", "", Shown(call.Text("PATH")) + " has an empty name in it");
  }
  if (call.Has("--exact") && call.Has("--merge")) {
    return call.Fail(kUsage, "", "", "only one of --exact and --merge may be given");
  }
  if (!Waiting(call).Take()) return kUsage;
  ImportInput input;
  ExitCode code = kDone;
  if (!ReadInput(call, &input, &code)) return code;
  if (!IsAbsent(call.File())) return Import(call, input);
  if (call.Has("--dry-run")) return ShowNew(call, input);
  return ImportNew(call, input);
}

}  // namespace

Verb ImportVerb() {
  return {
      "import",
      "Take keys and values over from JSON",
      "Reads what export wrote, or the like, from the standard input and creates and changes keys "
      "until they are as it tells. What it does not tell of stays as it is: other keys, other "
      "values, fields that are left out. With --exact the keys and values below PATH that it does "
      "not tell of are deleted; the key of PATH itself stays. What diff --json prints is a patch: "
      "it makes the first "
      "registry the second one, with --reverse the other way round, and is refused (1) where what "
      "it changes is not as it expects. With --users the names of owners are those of the file, as "
      "for export, and others are refused. All of the input is checked before "
      "the first change, and "
      "a second import changes nothing. A file that does not exist is made. What is the same "
      "takes no room; another owner, a default value that is taken away, and many new keys "
      "rewrite a key with all keys below it, which uses slots up.",
      {kFile, kPath},
      {{"--merge", nullptr, "Leave what the input does not tell of as it is, as without options"},
       {"--exact", nullptr, "Delete keys and values below PATH that the input does not tell of"},
       {"--reverse", nullptr, "Take a patch back"},
       {"-n,--dry-run", nullptr, "Only print what would change"},
       kUsers,
       kTimeout},
      "yaxreg import device.rce network < network.json",
      RunImport,
      true};
}

}  // namespace yaxreg
