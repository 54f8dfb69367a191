// Changes a registry until it is as a content tells.
#pragma once

#include <string>
#include <vector>

#include "registry/Registry.h"
#include "tools/yaxreg/image/Content.h"

namespace yaxreg {

// Single fields and values are changed one by one. New keys, and what the library offers no
// operation for (another owner, a default value to be taken away), come from a backup that is made
// of the wanted content and restored; so does a subtree of which much is new.
class Importer {
 public:
  // `wanted` has every key of `present`, which is what the registry holds. `backupFile`: where a
  // backup can be written for a moment. The registry is open as the administrator.
  Importer(tamu::registry::Registry& registry, const Content& present, const Content& wanted,
           const std::string& backupFile);

  // Ends at the first failure: its status, and path() tells where. Keys of other names may have
  // been made beside the way (cli/ExactKey.h).
  unsigned int Run();
  const std::string& path() const { return path_; }

 private:
  void FindPresent();
  void CountNews();
  bool NeedsRestore(size_t key) const;
  bool IsRestoreCheaper(size_t key) const;
  unsigned int ChangeKey(size_t key, bool* isDone);
  unsigned int CreateKey(size_t key);
  unsigned int RestoreKey(size_t key);
  unsigned int ChangeFields(size_t key);
  unsigned int ChangeValues(size_t key);
  unsigned int ReplaceValues(const std::string& name, const std::vector<ContentValue>& present,
                             const std::vector<ContentValue>& wanted);
  unsigned int SetValue(const ContentValue& value);
  unsigned int CreateValue(const ContentValue& value);
  unsigned int OpenRights(size_t key);
  unsigned int CloseRights(size_t key);
  const ContentKey* PresentOf(size_t key) const;

  tamu::registry::Registry& registry_;
  const Content& present_;
  const Content& wanted_;
  const std::string backupFile_;
  std::vector<size_t> presentOf_;  // by wanted key: the same one in `present`, or kNone
  std::vector<size_t> parents_;    // by wanted key
  std::vector<size_t> news_;       // by wanted key: keys that need a restore, it and those below
  std::vector<size_t> sizes_;      // by wanted key: keys, it and those below
  std::string path_;               // of the key that is worked on
};

}  // namespace yaxreg
