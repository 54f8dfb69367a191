// One random operation after another, with and without handles, on a registry and on a model of it;
// what they answer must agree.
#pragma once

#include "tests/registry/HandlesModelValues.h"

namespace tamu::registry {

class HandlesModelOperations : public HandlesModelValues {
 public:
  explicit HandlesModelOperations(ModelInput input) : HandlesModelValues(std::move(input)) {}

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

 private:
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

  void CreateKey() {
    const std::string path = in_.Path(true);
    const bool isSet = in_.OneIn(2);
    const unsigned long long number = isSet ? in_.Number() : 0;
    const unsigned int expected = handles_->CreateKey(handle_, user_, path, number, isSet);
    const unsigned int result = isSet ? registry_->CreateKey(handle_, path.c_str(), number)
                                      : registry_->CreateKey(handle_, path.c_str());
    EXPECT_EQ(result, expected) << Text("CreateKey", path);
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
