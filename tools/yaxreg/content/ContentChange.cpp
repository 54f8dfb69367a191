#include "tools/yaxreg/content/ContentChange.h"

#include <unistd.h>

#include <memory>
#include <utility>

#include "tools/yaxreg/content/ContentDiff.h"
#include "tools/yaxreg/content/Importer.h"
#include "tools/yaxreg/image/FileBytes.h"
#include "tools/yaxreg/image/Snapshot.h"

namespace yaxreg {

namespace status = tamu::registry::status;
using tamu::registry::Registry;

namespace {

// Keys that are not wanted, each with all below it: in what there was, or made beside the way.
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

// The keys that stay.
Content KeptKeys(const Content& present, const Content& wanted) {
  std::vector<bool> goes(present.keys.size());
  CompareContents(present, 0, wanted, 0, [&](const Difference& difference) {
    if (difference.second == nullptr) {
      goes[static_cast<size_t>(difference.first - present.keys.data())] = true;
    }
    return true;
  });
  Content kept;
  for (size_t key = 0; key < goes.size(); ++key) {
    if (!goes[key]) kept.keys.push_back(present.keys[key]);
  }
  return kept;
}

void DeleteKeys(Registry& registry, const std::vector<std::string>& paths) {
  for (const std::string& path : paths) {
    registry.SetKeyPermission(0, path.c_str(), tamu::registry::kRightsAll);
    registry.DeleteKey(0, path.c_str());  // what stays is seen by the comparison that follows
  }
}

std::unique_ptr<RegistryImage> Decode(Registry& registry) {
  std::string bytes;
  if (TakeSnapshot(registry, &bytes) != status::kOk) return nullptr;
  return std::make_unique<RegistryImage>(std::move(bytes));
}

// The first key that is not as it is wanted. False when all of them are.
bool FindUnchanged(const Content& changed, const Content& wanted, std::string* path) {
  bool isFound = false;
  CompareContents(changed, 0, wanted, 0, [&](const Difference& difference) {
    *path = difference.path;
    isFound = true;
    return false;
  });
  return isFound;
}

}  // namespace

ChangeOutcome ChangeContent(Registry& registry, const Content& present, const Content& wanted,
                            const std::string& backupFile) {
  DeleteKeys(registry, StrayPaths(present, wanted));
  const Content kept = KeptKeys(present, wanted);
  Importer importer(registry, kept, wanted, backupFile);
  ChangeOutcome outcome;
  outcome.status = importer.Run();
  outcome.path = importer.path();
  outcome.rewritten = importer.rewritten();
  outcome.failedRestore = importer.failedRestore();
  std::unique_ptr<RegistryImage> changed = Decode(registry);
  if (changed == nullptr) return {status::kInputOutput, ""};
  DeleteKeys(registry, StrayPaths(changed->content(), wanted));
  if (outcome.status != status::kOk) return outcome;
  changed = Decode(registry);
  if (changed == nullptr) return {status::kInputOutput, ""};
  if (FindUnchanged(changed->content(), wanted, &outcome.path)) outcome.status = status::kLimit;
  return outcome;
}

ChangeOutcome RehearseChange(const RegistryImage& image, const Content& wanted,
                             const TemporaryFolder& folder) {
  const std::string copy = folder.FileIn("copy");
  if (!WriteNewFile(copy, image.bytes()).isDone()) return {status::kInputOutput, ""};
  Registry registry(copy.c_str(), tamu::registry::kAdministratorId);
  const unsigned int opened = registry.Initialize();
  if (opened != status::kOk) return {opened, ""};
  const ChangeOutcome outcome =
      ChangeContent(registry, image.content(), wanted, folder.FileIn("backup"));
  registry.Finalize();
  unlink(copy.c_str());  // the change itself may need the room
  return outcome;
}

}  // namespace yaxreg
