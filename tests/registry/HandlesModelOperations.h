// One random operation after another, with and without handles, on a registry and on a model of it;
// what they answer must agree.
#pragma once

#include <memory>

#include "tests/registry/ModelInput.h"
#include "tests/support/ModelHandles.h"

namespace tamu::registry {

class HandlesModelOperations {
 public:
  explicit HandlesModelOperations(unsigned int seed) : in_(seed) {}

  // Of whatever kind, by whichever user, and with whichever handle; before it handles may be opened
  // and closed.
  void DoOne() {
    ChooseUser();
    ChooseHandle();
    const unsigned int kind = in_.Below(8);
    if (kind == 0) {
      CreateKey();
    } else if (kind < 5) {
      ChangeOrReadValues();
    } else {
      ChangeOrReadKeys();
    }
  }

 protected:
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
  // ---- what an operation works on

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

  // ---- the operations

  void ChangeOrReadValues() {
    switch (in_.Below(10)) {
      case 0:
      case 1:
      case 2:
        return CreateValue();
      case 3:
      case 4:
        return SetValue();
      case 5:
      case 6:
        return GetValue();
      case 7:
        return DeleteValue();
      case 8:
        return SetDefaultValue();
      default:
        return GetDefaultValue();
    }
  }

  void ChangeOrReadKeys() {
    switch (in_.Below(10)) {
      case 0:
      case 1:
        return DeleteKey();
      case 2:
      case 3:
        return ListKeys();
      case 4:
        return ListValues();
      case 5:
        return GetKeyInfo();
      case 6:
        return GetKeyPermission();
      case 7:
        return SetKeyPermission();
      case 8:
        return SetKeyWatch();
      default:
        return in_.OneIn(2) ? BackupKey() : RestoreKey();
    }
  }

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

  void CreateKey() {
    const std::string path = in_.Path(true);
    const bool isSet = in_.OneIn(2);
    const unsigned long long number = isSet ? in_.Number() : 0;
    const unsigned int expected = handles_->CreateKey(handle_, user_, path, number, isSet);
    const unsigned int result = isSet ? registry_->CreateKey(handle_, path.c_str(), number)
                                      : registry_->CreateKey(handle_, path.c_str());
    EXPECT_EQ(result, expected) << Text("CreateKey", path);
  }

  void CreateValue() {
    const std::string path = ValuePath(), name = in_.ValueName();
    if (in_.OneIn(8)) {
      EXPECT_EQ(registry_->CreateValue(handle_, path.c_str(), name.c_str(), nullptr),
                handles_->CreateValue(handle_, user_, path, name, 0, nullptr))
          << Text("CreateValue unset", path, name);
      return;
    }
    const unsigned int type = in_.Type();
    std::string data = in_.Data();
    const bool isUntold = type == 0 && data.empty();  // a number's size may be left at 0
    if (isUntold) data = Little(in_.Number(), 8);
    ExactValue value(type, data);
    if (isUntold) value.size = 0;
    EXPECT_EQ(registry_->CreateValue(handle_, path.c_str(), name.c_str(), &value),
              handles_->CreateValue(handle_, user_, path, name, type, &data))
        << Text("CreateValue", path, name);
  }

  void SetValue() {
    const std::string path = ValuePath(), name = in_.ValueName(), data = in_.Data();
    const unsigned int type = in_.Type();
    ExactValue value(type, data);
    EXPECT_EQ(registry_->SetValue(handle_, path.c_str(), name.c_str(), &value),
              handles_->SetValue(handle_, user_, path, name, type, data))
        << Text("SetValue", path, name);
  }

  // Mostly of any type; never the offset, which is another operation.
  void GetValue() {
    const std::string path = ValuePath(), name = in_.ValueName();
    const unsigned int wanted = in_.OneIn(4) ? in_.Below(kValueTypeOffset) : kValueTypeAny;
    unsigned int type = wanted;
    std::string bytes = "(none)";
    ReadValue value(wanted);
    EXPECT_EQ(registry_->GetValue(handle_, path.c_str(), name.c_str(), &value),
              handles_->GetValue(handle_, user_, path, name, &type, &bytes))
        << Text("GetValue", path, name);
    EXPECT_EQ(value.type, type) << Text("GetValue", path, name);
    EXPECT_EQ(BytesOf(value), bytes) << Text("GetValue", path, name);
  }

  void DeleteValue() {
    const std::string path = ValuePath(), name = in_.ValueName();
    EXPECT_EQ(registry_->DeleteValue(handle_, path.c_str(), name.c_str()),
              handles_->DeleteValue(handle_, user_, path, name))
        << Text("DeleteValue", path, name);
  }

  void SetDefaultValue() {
    const std::string path = in_.Path(false);
    const unsigned long long number = in_.Number();
    EXPECT_EQ(registry_->SetDefaultValue(handle_, path.c_str(), number),
              handles_->SetDefaultValue(handle_, user_, path, number))
        << Text("SetDefaultValue", path);
  }

  void GetDefaultValue() {
    const std::string path = in_.Path(false);
    unsigned long long number = 1, expectedNumber = 1;
    EXPECT_EQ(registry_->GetDefaultValue(handle_, path.c_str(), &number),
              handles_->GetDefaultValue(handle_, user_, path, &expectedNumber))
        << Text("GetDefaultValue", path);
    EXPECT_EQ(number, expectedNumber) << Text("GetDefaultValue", path);
  }

  // Often what another handle is open on. The root key is left alone: without it nothing could be
  // done any more.
  void DeleteKey() {
    const std::string path = in_.OneIn(4) ? handles_->PathOf(AnOpenHandle()) : in_.Path(false);
    if (handles_->IsRoot(handle_, path)) return;
    const unsigned int expected = handles_->DeleteKey(handle_, user_, path);
    EXPECT_EQ(registry_->DeleteKey(handle_, path.c_str()), expected) << Text("DeleteKey", path);
    if (expected == 0) gone_ = path;
  }

  unsigned int Capacity() { return in_.OneIn(3) ? in_.Below(6) : 3000; }
  unsigned int First() { return in_.OneIn(3) ? in_.Below(8) : 0; }

  void ListKeys() {
    const std::string path = in_.Path(false);
    const unsigned int first = First(), capacity = Capacity();
    const bool withPath = in_.OneIn(3);
    std::vector<std::string> expectedNames;
    const unsigned int expected =
        handles_->ListKeys(handle_, user_, path, first, capacity, withPath, &expectedNames);
    NameList list(capacity);
    EXPECT_EQ(registry_->ListKeys(handle_, path.c_str(), first, 0, &list, withPath ? 1 : 0),
              expected)
        << Text("ListKeys", path);
    EXPECT_EQ(NamesOf(list), expectedNames) << Text("ListKeys", path);
  }

  void ListValues() {
    const std::string path = in_.Path(false);
    const unsigned int first = First(), capacity = Capacity();
    std::vector<std::string> expectedNames;
    const unsigned int expected =
        handles_->ListValues(handle_, user_, path, first, capacity, &expectedNames);
    NameList list(capacity);
    EXPECT_EQ(registry_->ListValues(handle_, path.c_str(), first, 0, &list), expected)
        << Text("ListValues", path);
    EXPECT_EQ(NamesOf(list), expectedNames) << Text("ListValues", path);
  }

  static std::vector<std::string> NamesOf(const NameList& list) {
    std::vector<std::string> names;
    for (unsigned int i = 0; i < list.Count(); ++i) names.push_back(list.GetName(i, nullptr));
    return names;
  }

  // Through a handle the user and the permission are told even without the right.
  void GetKeyInfo() {
    const std::string path = in_.Path(false);
    ModelInfo counts;
    const unsigned int expected = handles_->GetKeyInfo(handle_, user_, path, &counts);
    KeyInfo info = {1, 2, 3, 4, 5, 6, 7};
    EXPECT_EQ(registry_->GetKeyInfo(handle_, path.c_str(), &info), expected)
        << Text("GetKeyInfo", path);
    EXPECT_EQ(1u, info.reserved);
    const std::vector<unsigned int> told = {info.subKeyCount, info.totalKeyCount,
                                            info.valueCount,  info.totalValueCount,
                                            info.userId,      info.permission};
    const std::vector<unsigned int> wanted = {counts.subKeys, counts.allSubKeys,
                                              counts.values,  counts.allValues,
                                              user_,          counts.permission};
    const bool isTold = expected == 0 || (expected == 1 && handle_ != 0);
    EXPECT_EQ(told, isTold ? wanted : std::vector<unsigned int>({2, 3, 4, 5, 6, 7}))
        << Text("GetKeyInfo", path);
  }

  void GetKeyPermission() {
    const std::string path = in_.Path(false);
    unsigned int expectedByte = 0xA5;
    unsigned char byte = 0xA5;
    EXPECT_EQ(registry_->GetKeyPermission(handle_, path.c_str(), &byte),
              handles_->GetKeyPermission(handle_, path, &expectedByte))
        << Text("GetKeyPermission", path);
    EXPECT_EQ(byte, expectedByte) << Text("GetKeyPermission", path);
  }

  void SetKeyPermission() {
    const std::string path = in_.Path(false);
    const unsigned char byte = in_.Permission();
    EXPECT_EQ(registry_->SetKeyPermission(handle_, path.c_str(), byte),
              handles_->SetKeyPermission(handle_, user_, path, byte))
        << Text("SetKeyPermission", path);
  }

  void SetKeyWatch() {
    const std::string path = in_.Path(false);
    const unsigned char watch = static_cast<unsigned char>(in_.Below(256));
    EXPECT_EQ(registry_->SetKeyWatch(handle_, path.c_str(), watch),
              handles_->SetKeyWatch(handle_, user_, path, watch))
        << Text("SetKeyWatch", path);
  }

  std::string BackupPath(unsigned int number) {
    return folder_ / ("backup" + std::to_string(number)).c_str();
  }

  void BackupKey() {
    const std::string path = in_.Path(false);
    const unsigned int number = in_.Below(kBackups);
    EXPECT_EQ(registry_->BackupKey(handle_, path.c_str(), BackupPath(number).c_str()),
              handles_->BackupKey(handle_, user_, path, &backups_[number]))
        << Text("BackupKey", path);
  }

  // The root is left alone: nothing else would be left.
  void RestoreKey() {
    const std::string path = in_.Path(false);
    if (handles_->IsRoot(handle_, path)) return;
    const unsigned int number = in_.Below(kBackups);
    const ModelBackup& backup = backups_[number];
    const bool isLarge = backup.key != nullptr && backup.Counts().strings > kLargestTree;
    if (handle_ == 0 && (isLarge || !HasRoom())) return;
    const unsigned int expected = handles_->RestoreKey(handle_, user_, path, backup);
    EXPECT_EQ(registry_->RestoreKey(handle_, path.c_str(), BackupPath(number).c_str()), expected)
        << Text("RestoreKey", path);
  }
};

}  // namespace tamu::registry
