// Changes a registry until it is as a content tells.
#pragma once

#include <string>
#include <vector>

#include "registry/Registry.h"
#include "tools/yaxreg/image/Content.h"
#include "tools/yaxreg/image/ValueOrder.h"

namespace yaxreg {

// Works in two rounds. In the first one new keys, and what the library offers no operation for
// (another owner, a default value to be taken away), come from a backup that is made of the wanted
// content and restored; so does a subtree of which much is new. In the second one single fields and
// values are changed one by one, through one handle on the root: it finds keys and values in
// memory, and sets all bytes of a number.
class Importer {
 public:
  // `wanted` has every key of `present`, which is what the registry holds. `backupFile`: where a
  // backup can be written for a moment. The registry is open as the administrator.
  Importer(tamu::registry::Registry& registry, const Content& present, const Content& wanted,
           const std::string& backupFile);

  // Ends at the first failure: its status, and path() tells where. Keys of other names may have
  // been made beside the way (content/ExactKey.h). Data that finds no room is not reported: who
  // needs to know compares what the registry holds then.
  unsigned int Run();
  const std::string& path() const { return path_; }

  // The keys that were there and were restored, each with all below it, by their indexes in
  // `wanted`.
  const std::vector<size_t>& rewritten() const { return rewritten_; }
  // The key whose restore has failed; Content::kNone if it was something else.
  size_t failedRestore() const { return failedRestore_; }

 private:
  void FindPresent();
  void CountNews();
  bool NeedsRestore(size_t key) const;
  bool IsRestoreCheaper(size_t key) const;

  // The first round. *isDone: the key is complete, with all keys below it.
  unsigned int MakeKeys();
  unsigned int MakeKey(size_t key, bool* isDone);
  unsigned int CreateKey(size_t key);
  unsigned int RestoreKey(size_t key, bool* isDone);

  // The second one.
  unsigned int ChangeKeys();
  unsigned int ChangeKeysOpened();
  unsigned int ChangeFields(size_t key);
  unsigned int ChangeValues(size_t key);
  unsigned int ReplaceValues(const NamedValues& values);
  unsigned int SetValue(const ContentValue& value);
  unsigned int CreateValue(const ContentValue& value);

  unsigned int OpenRights(size_t key, const std::string& path);
  unsigned int CloseRights(size_t key, const std::string& path);
  const ContentKey* PresentOf(size_t key) const;

  tamu::registry::Registry& registry_;
  const Content& present_;
  const Content& wanted_;
  const std::string backupFile_;
  unsigned int handle_ = 0;         // on the root, in the second round
  std::vector<size_t> presentOf_;   // by wanted key: the same one in `present`, or kNone
  std::vector<size_t> parents_;     // by wanted key
  std::vector<bool> needsRestore_;  // by wanted key
  std::vector<size_t> news_;        // by wanted key: keys that need a restore, it and those below
  std::vector<size_t> sizes_;       // by wanted key: keys, it and those below
  std::vector<size_t> changed_;     // what the second round is to do, wanted keys
  std::vector<size_t> rewritten_;
  size_t failedRestore_ = Content::kNone;
  std::string path_;  // of the key that is worked on
};

}  // namespace yaxreg
