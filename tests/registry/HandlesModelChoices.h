// What a random operation on a registry and on its model works with: a user, a handle and paths.
#pragma once

#include <algorithm>
#include <memory>

#include "tests/registry/ModelInput.h"
#include "tests/support/ModelHandles.h"

namespace tamu::registry {

class HandlesModelChoices {
 protected:
  explicit HandlesModelChoices(ModelInput input) : in_(std::move(input)) {}

  static constexpr unsigned int kBackups = 2;
  static constexpr unsigned int kMostHandles = 7;
  // Slots of deleted things stay in use, and blocks do; with more tables a new file is begun. A
  // batch never takes what is left then.
  static constexpr unsigned int kMostTables = 12;
  // String nodes. Larger trees take long and show nothing new.
  static constexpr unsigned int kLargestTree = 200;

  // Whether the file may be worked on.
  bool HasRoom() {
    const SlotCounts counts = CountSlots(path_);
    return counts.strings.reachable <= kLargestTree &&
           std::max({counts.strings.tables, counts.keys.tables, counts.values.tables,
                     counts.blocks.tables}) <= kMostTables;
  }

  void ChooseUser() {
    if (in_.OneIn(6)) user_ = in_.OneIn(2) ? kAdmin : in_.User();
    EXPECT_EQ(status::kOk, registry_->SetCurrentUserId(user_));
  }

  // For a while without handles, then through all that are open. Seldom one that is not.
  void ChooseHandle() {
    if (in_.OneIn(isDirect_ ? 10 : 30)) isDirect_ = !isDirect_;
    handle_ = 0;
    if (!isDirect_) {
      const size_t open = handles_->Open().size();
      if (open == 0 || (open < kMostHandles && in_.OneIn(8))) OpenKey();
      if (open > 0 && in_.OneIn(12)) CloseKey();
      handle_ = in_.OneIn(50) ? 1 + in_.Below(120) : AnOpenHandle();
    }
    ChoosePaths();
  }

  // One that is not open when none is.
  unsigned int AnOpenHandle() {
    const std::vector<unsigned int> open = handles_->Open();
    return open.empty() ? 1 : open[in_.Below(static_cast<unsigned int>(open.size()))];
  }

  // Of the keys that the handle leads to, and one that may be gone.
  void ChoosePaths() {
    in_.ForgetPaths();
    if (!gone_.empty()) in_.AddPath(gone_);
    for (const std::string& name : handles_->Names(handle_)) in_.AddPath(name);
  }

  // Often the handle's own key, so that it gets many values.
  std::string ValuePath() { return in_.OneIn(2) ? "" : in_.Path(false); }

  std::string Text(const char* operation, const std::string& path, const std::string& name = "") {
    return std::string(operation) + " " + ::testing::PrintToString(path) + " " +
           ::testing::PrintToString(name) + " by " + std::to_string(user_) + " with handle " +
           std::to_string(handle_);
  }

  unsigned int Capacity() { return in_.OneIn(3) ? in_.Below(6) : 3000; }
  unsigned int First() { return in_.OneIn(3) ? in_.Below(8) : 0; }

  static std::vector<std::string> NamesOf(const NameList& list) {
    std::vector<std::string> names;
    for (unsigned int i = 0; i < list.Count(); ++i) names.push_back(list.GetName(i, nullptr));
    return names;
  }

  ModelInput in_;
  unsigned int user_ = kAdmin;
  bool isDirect_ = true;
  unsigned int handle_ = 0;
  std::string gone_;  // a path that was deleted
  TempDir folder_;
  const std::string path_ = folder_ / "registry";
  std::unique_ptr<ModelRegistry> model_;
  std::unique_ptr<ModelHandles> handles_;
  ModelBackup backups_[kBackups];
  std::unique_ptr<Registry> registry_;

 private:
  // Often on a key that has one already.
  void OpenKey() {
    ChoosePaths();
    const unsigned int known = AnOpenHandle();
    const std::string path = in_.OneIn(4) ? handles_->PathOf(known) : in_.Path(false);
    unsigned int handle = 0, expectedHandle = 0;
    const unsigned int expected = handles_->OpenKey(path, &expectedHandle);
    EXPECT_EQ(registry_->OpenKey(path.c_str(), &handle), expected) << Text("OpenKey", path);
    EXPECT_EQ(handle, expectedHandle) << Text("OpenKey", path);
  }

  void CloseKey() {
    const unsigned int handle = in_.OneIn(20) ? in_.Below(120) : AnOpenHandle();
    EXPECT_EQ(registry_->CloseKey(handle), handles_->CloseKey(handle)) << "CloseKey " << handle;
  }
};

}  // namespace tamu::registry
