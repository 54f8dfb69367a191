// A workload of all operations that change a registry, and what must be there after a part of it.
#pragma once

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "registry/Registry.h"
#include "tests/support/StructureCheck.h"

namespace faults {

struct Step {
  enum Action {
    kKey,         // CreateKey
    kDefault,     // SetDefaultValue
    kCreate,      // CreateValue
    kSet,         // SetValue
    kDelete,      // DeleteValue
    kRemove,      // DeleteKey
    kPermission,  // SetKeyPermission, the byte is `type`
    kWatch,       // SetKeyWatch, the bits are `type`
    kBackup,      // BackupKey to the file `name`
    kRestore,     // RestoreKey from it
  };
  Action action;
  const char* path;
  const char* name;
  unsigned int type;
  unsigned int size;  // bytes of data
};

const std::vector<Step>& Workload();

// Backups go to and come from `folder`, which ends in "/".
unsigned int Apply(tamu::registry::Registry& registry, const Step& step, const std::string& folder);
// Through a handle, from whose key on `path` names the step's. Not for kBackup and kRestore.
unsigned int ApplyThrough(tamu::registry::Registry& registry, const Step& step, unsigned int handle,
                          const char* path);

// What is known of a registry. Of what a failed step has worked on nothing may be known; then it is
// not looked at.
class KnownState {
 public:
  // The step was done.
  void Done(const Step& step);
  // The step was begun, and values or keys of its own may be in any state. Of kRemove and kRestore,
  // which are done or not, it is not known which.
  void Hit(const Step& step);
  // The power went while the key was created: names beside it may be gone.
  void CutAt(const char* path) { cutAt_ = path; }

  // What is not as it must be, a line each. *gone: how many keys are missing that may be.
  std::string Differences(tamu::registry::Registry& registry,
                          const std::map<std::string, DecodedKey>& tree, unsigned int* gone) const;

 private:
  // What is known of one key.
  struct Key {
    bool isDefaultKnown = false;
    unsigned long long defaultValue = 0;
    bool isPermissionKnown = false;
    unsigned int permission = 0;
    bool isWatchKnown = false;
    unsigned int watch = 0;
    std::map<std::string, std::string> values;  // name -> data
  };
  using Keys = std::map<std::string, Key>;  // by path

  void Remove(const std::string& path);
  void Forget(const std::string& path);
  void Backup(const Step& step);
  void Restore(const Step& step);
  bool MayBeGone(const std::string& path) const;

  Keys keys_;
  std::set<std::string> removed_;        // paths that must not be found
  std::map<std::string, Keys> backups_;  // by file; paths without the key's own
  std::string cutAt_;
};

}  // namespace faults
