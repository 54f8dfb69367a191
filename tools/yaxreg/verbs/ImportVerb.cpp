// import: takes keys and values over from JSON.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <istream>
#include <ostream>

#include "registry/store/TernaryKeyNode.h"
#include "tools/yaxreg/cli/ContentJsonReader.h"
#include "tools/yaxreg/cli/ContentMerge.h"
#include "tools/yaxreg/cli/DifferenceText.h"
#include "tools/yaxreg/cli/Importer.h"
#include "tools/yaxreg/cli/NewRegistry.h"
#include "tools/yaxreg/cli/Session.h"
#include "tools/yaxreg/cli/TemporaryFolder.h"
#include "tools/yaxreg/image/ContentDiff.h"
#include "tools/yaxreg/image/FileBytes.h"
#include "tools/yaxreg/verbs/Verbs.h"

namespace yaxreg {

namespace status = tamu::registry::status;
using tamu::registry::Registry;

namespace {

bool IsAbsent(const std::string& file) {
  struct stat found;
  return lstat(file.c_str(), &found) != 0 && errno == ENOENT;
}

bool ReadUpdate(Invocation& call, ContentUpdate* update, ExitCode* code) {
  std::string reason;
  if (ReadContentJson(call.in, update, &reason)) return true;
  *code = call.Fail(call.in.bad() ? kFailed : kUsage, "standard input", "", reason);
  return false;
}

// What an empty registry holds.
Content EmptyContent() {
  ContentKey root;
  root.owner = tamu::registry::kAdministratorId;
  root.permission = tamu::registry::TernaryKeyNode::kRootPermission;
  return {{root}};
}

ExitCode ShowChanges(Invocation& call, const Content& present, const Content& wanted) {
  const bool isSame = AreSame(present, 0, wanted, 0);
  PrintDifferences(call, {present, wanted, 0, 0}, isSame);
  return kDone;
}

// Keys that were made beside the way and that nobody wanted.
std::vector<std::string> StrayPaths(const Content& present, const Content& wanted) {
  std::vector<std::string> strays;
  CompareContents(present, 0, wanted, 0, [&](const Difference& difference) {
    const bool isStray = difference.kind == DifferenceKind::kKey && difference.second == nullptr;
    const bool isBelowOne =
        isStray && !strays.empty() &&
        difference.path.compare(0, strays.back().size() + 1, strays.back() + '/') == 0;
    if (isStray && !isBelowOne) strays.push_back(difference.path);
    return true;
  });
  return strays;
}

void DeleteKeys(Registry& registry, const std::vector<std::string>& paths) {
  for (const std::string& path : paths) {
    registry.SetKeyPermission(0, path.c_str(), tamu::registry::kRightsAll);
    registry.DeleteKey(0, path.c_str());  // what stays is seen by the comparison that follows
  }
}

struct Outcome {
  unsigned int status;
  std::string path;  // of the key that could not be changed
};

bool ReadContent(const std::string& file, Content* content) {
  std::string bytes;
  if (!ReadWholeFile(file, RegistryImage::kMaxSize, &bytes).isDone()) return false;
  *content = RegistryImage(std::move(bytes)).content();
  return true;
}

// Writes the changes into the file of the registry, closes it, and makes sure that all of them are
// in it: the library does not report every change that found no room.
Outcome Change(Registry& registry, const std::string& file, const Content& present,
               const Content& wanted, const std::string& backupFile) {
  Importer importer(registry, present, wanted, backupFile);
  const unsigned int result = importer.Run();
  Content changed;
  if (!ReadContent(file, &changed)) return {status::kInputOutput, ""};
  DeleteKeys(registry, StrayPaths(changed, wanted));
  if (result != status::kOk) return {result, importer.path()};
  registry.Finalize();
  if (!ReadContent(file, &changed)) return {status::kInputOutput, ""};
  const std::vector<Difference> missing = DifferencesOf(changed, 0, wanted, 0);
  if (missing.empty()) return {status::kOk, ""};
  return {status::kLimit, missing[0].path};
}

// Makes the same changes to a copy.
Outcome Rehearse(const RegistryImage& image, const Content& wanted, const TemporaryFolder& folder) {
  const std::string copy = folder.FileIn("copy");
  if (!WriteNewFile(copy, image.bytes()).isDone()) return {status::kInputOutput, ""};
  Registry registry(copy.c_str(), tamu::registry::kAdministratorId);
  const unsigned int opened = registry.Initialize();
  if (opened != status::kOk) return {opened, ""};
  return Change(registry, copy, image.content(), wanted, folder.FileIn("backup"));
}

// More than the tables can hold, whatever is given back: that need not be tried.
bool IsTooMuch(const RegistryImage& image, const Content& wanted) {
  const auto room = [&](NodeKind kind) {
    const SlotUse use = image.UseOf(kind);
    return size_t{use.reached} + use.remaining;
  };
  return wanted.keys.size() > room(NodeKind::kKey) || wanted.ValueCount() > room(NodeKind::kValue);
}

// A change that finds no room can lose what was there before, so the file is only touched when all
// of them have succeeded elsewhere.
ExitCode Apply(Invocation& call, Session& session, const Content& wanted) {
  if (IsTooMuch(session.image(), wanted)) {
    return call.FailWithStatus(status::kLimit, call.File(), "", "has no room for so much");
  }
  const TemporaryFolder folder(call.File());
  if (!folder.isMade()) return call.Fail(kFailed, call.File(), "", folder.reason());
  Outcome outcome = Rehearse(session.image(), wanted, folder);
  if (outcome.status != status::kOk) return session.FailAt(outcome.path, outcome.status);
  const std::string rehearsed = session.image().bytes();
  if (!session.OpenToChange()) return session.code();
  if (session.image().bytes() != rehearsed) {
    return call.Fail(kFailed, call.File(), "",
                     "was changed by another program meanwhile, nothing is done");
  }
  outcome = Change(session.registry(), call.File(), session.image().content(), wanted,
                   folder.FileIn("backup"));
  return outcome.status == status::kOk ? kDone : session.FailAt(outcome.path, outcome.status);
}

ExitCode Import(Invocation& call, const ContentUpdate& update) {
  Session session(call);
  if (!session.OpenToLook()) return session.code();
  if (!session.image().IsSound()) {
    return call.FailWithStatus(status::kInvalidFile, call.File(), "",
                               "is damaged; yaxreg check tells how to mend it");
  }
  const Content& present = session.image().content();
  const Content wanted = MergedContent(present, session.path(), update);
  if (call.Has("--dry-run")) return ShowChanges(call, present, wanted);
  const bool isSame = AreSame(present, 0, wanted, 0);
  if (!isSame) {
    const ExitCode code = Apply(call, session, wanted);
    if (code != kDone) return code;
  }
  return session.EndOfChange(!isSame);
}

// The path has lost one "/" at its beginning already.
bool HasEmptyName(const std::string& path) {
  const std::vector<std::string> names = ComponentsOf('/' + path);
  return std::any_of(names.begin(), names.end(),
                     [](const std::string& name) { return name.empty(); });
}

}  // namespace

ExitCode RunImport(Invocation& call) {
  if (HasEmptyName(call.Path())) {
    return call.Fail(kUsage, "", "", Shown(call.Text("PATH")) + " has an empty name in it");
  }
  ContentUpdate update;
  ExitCode code = kDone;
  if (!ReadUpdate(call, &update, &code)) return code;
  if (!IsAbsent(call.File())) return Import(call, update);
  if (call.Has("--dry-run")) {
    const Content empty = EmptyContent();
    return ShowChanges(call, empty, MergedContent(empty, call.Path(), update));
  }
  code = MakeNewRegistry(call);
  if (code != kDone) return code;
  code = Import(call, update);
  if (code != kDone) unlink(call.File().c_str());
  return code;
}

}  // namespace yaxreg
