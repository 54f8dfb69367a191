#include "registry/memtree/TreeRefresh.h"

#include "platform/PCString.h"

namespace tamu::registry {

namespace {

// True when the strings are as they were.
bool IsOfOneKey(ChangeKind kind) {
  switch (kind) {
    case ChangeKind::kKeyCreated:
    case ChangeKind::kKeyDeleted:
    case ChangeKind::kKeyRestored:
      return false;
    default:
      return true;
  }
}

bool HasKey(const TernaryHandle& handle) {
  return handle.start != nullptr ? !handle.start->isOrphan : handle.isAwaited;
}

}  // namespace

// Loads the key of a handle into `strings`, and notes where it would start. A key that is gone or
// damaged is no failure: the handle then leads nowhere.
Status TreeRefresh::Load(LoadedStrings& strings, TernaryHandle* handle) {
  handle->nextStart = nullptr;
  if (!HasKey(*handle)) return status::kOk;
  SubtreeLoader::Loaded loaded;
  const Status result =
      SubtreeLoader::LoadForHandle(access_, strings, handle->ownPath.get(), &loaded);
  if (result == status::kNotFound || result == status::kInvalidFile) return status::kOk;
  if (!result.IsOk()) return result;
  if (loaded.leftOut == status::kNoMemory || loaded.leftOut == status::kInputOutput) {
    return loaded.leftOut;
  }
  strings.AddStart(loaded.string, loaded.isBelowHandle);
  handle->nextStart = loaded.string;
  return status::kOk;
}

// What is loaded anew takes the place of the old when all is there.
Status TreeRefresh::LoadAnew() {
  if (loaded_.IsBusy()) return status::kBusy;
  LoadedStrings fresh;
  for (TernaryHandle* each = loaded_.Handles(); each != nullptr; each = each->next) {
    const Status result = Load(fresh, each);
    if (!result.IsOk()) return result;
  }
  for (TernaryHandle* each = loaded_.Handles(); each != nullptr; each = each->next) {
    each->start = each->nextStart;
    each->isAwaited = false;
  }
  loaded_.SwapStrings(fresh);
  return status::kOk;
}

Status TreeRefresh::Follow(const ChangeList& changes) {
  for (unsigned int i = 0; i < changes.Count(); ++i) {
    if (!IsOfOneKey(changes.At(i).kind)) return LoadAnew();
  }
  const char* before = nullptr;
  for (unsigned int i = 0; i < changes.Count(); ++i) {
    const char* path = changes.At(i).keyPath;
    if (before != nullptr && PCString::Diff(before, path) == 0) continue;
    const Status result = ReloadKey(path);
    if (!result.IsOk()) return result;
    before = path;
  }
  return LoadAwaited();
}

Status TreeRefresh::ReloadKey(const char* path) {
  if (loaded_.start == nullptr) return status::kOk;
  StringMatch match;
  if (!SearchStrings(loaded_.start, path, &match).IsOk()) {
    const bool isPutAway = match.matchChild() && match.string->isLocked();
    return isPutAway ? Status(status::kBusy) : Status(status::kOk);
  }
  TernaryString& string = *match.string;
  if (string.key == nullptr) return status::kOk;
  TernaryKey* fresh = nullptr;
  const Status result = SubtreeLoader(access_, loaded_).LoadKeyAnew(*string.key, &fresh);
  if (!result.IsOk()) return result;
  LoadedStrings::UnloadKey(string.key);
  string.key = fresh;
  return result;
}

Status TreeRefresh::LoadAwaited() {
  for (TernaryHandle* each = loaded_.Handles(); each != nullptr; each = each->next) {
    if (!each->isAwaited) continue;
    const Status result = Load(loaded_, each);
    if (!result.IsOk()) return result;
    each->start = each->nextStart;
    each->isAwaited = false;
  }
  return status::kOk;
}

}  // namespace tamu::registry
