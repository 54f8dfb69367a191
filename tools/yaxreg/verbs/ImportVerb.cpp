// import: takes keys and values over from JSON.
#include <sys/stat.h>

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

// Writes the changes, and makes sure that all of them are in the file.
ExitCode Apply(Invocation& call, Session& session, const Content& wanted) {
  const TemporaryFolder folder(call.File());
  if (!folder.isMade()) return call.Fail(kFailed, call.File(), "", folder.reason());
  const Content present = session.image().content();
  Importer importer(session.registry(), present, wanted, folder.FileIn("backup"));
  const unsigned int result = importer.Run();
  if (!session.LookAgain()) return session.code();
  DeleteKeys(session.registry(), StrayPaths(session.image().content(), wanted));
  if (result != status::kOk) return session.FailAt(importer.path(), result);
  if (!session.Close()) return session.code();
  const std::vector<Difference> missing = DifferencesOf(session.image().content(), 0, wanted, 0);
  return missing.empty() ? kDone : session.FailAt(missing[0].path, status::kLimit);
}

ExitCode Import(Invocation& call, const ContentUpdate& update) {
  Session session(call);
  const bool isDry = call.Has("--dry-run");
  if (!(isDry ? session.OpenToLook() : session.OpenToChange())) return session.code();
  if (!session.image().IsSound()) {
    return call.FailWithStatus(status::kInvalidFile, call.File(), "",
                               "is damaged; yaxreg check tells how to mend it");
  }
  const Content& present = session.image().content();
  const Content wanted = MergedContent(present, session.path(), update);
  if (isDry) return ShowChanges(call, present, wanted);
  const bool isSame = AreSame(present, 0, wanted, 0);
  if (!isSame) {
    const ExitCode code = Apply(call, session, wanted);
    if (code != kDone) return code;
  }
  return session.EndOfChange(!isSame);
}

}  // namespace

ExitCode RunImport(Invocation& call) {
  ContentUpdate update;
  ExitCode code = kDone;
  if (!ReadUpdate(call, &update, &code)) return code;
  if (!IsAbsent(call.File())) return Import(call, update);
  if (call.Has("--dry-run")) {
    const Content empty = EmptyContent();
    return ShowChanges(call, empty, MergedContent(empty, call.Path(), update));
  }
  code = MakeNewRegistry(call);
  return code == kDone ? Import(call, update) : code;
}

}  // namespace yaxreg
