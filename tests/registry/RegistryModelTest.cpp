// Random operations on a registry and on a model of it in memory: every answer, and after each
// batch the whole file, must agree. One seed is new in every run; YAX_TEST_SEED runs that one alone
// again.
#include <memory>

#include "tests/registry/ModelInput.h"
#include "tests/registry/ModelSeeds.h"
#include "tests/registry/TreeText.h"
#include "tests/support/ModelRegistry.h"
#include "tests/support/RegistryImage.h"

namespace tamu::registry {

namespace {

constexpr unsigned int kBatches = 24;
constexpr unsigned int kOperations = 200;  // in a batch
constexpr unsigned int kBackups = 4;

// Room that must be left in the file, which is more than a batch of operations other than restoring
// ever takes. Blocks of values that are gone stay in use, and only the last table of a kind is
// drawn from, so a file that is restored into again and again is full one day.
constexpr unsigned int kReserve = 16 * kOperations;

// String nodes. Larger trees take long and show nothing new.
constexpr unsigned int kLargestTree = 1500;

class ModelRun {
 public:
  explicit ModelRun(unsigned int seed) : in_(seed) {}

  // Stops at the first operation that is answered differently.
  void Run() {
    OpenAnew();
    for (unsigned int batch = 0; batch < kBatches && !::testing::Test::HasFailure(); ++batch) {
      if (!HasRoom(ModelCounts())) StartOver();
      for (unsigned int i = 0; i < kOperations && !::testing::Test::HasFailure(); ++i) DoOne();
      if (in_.Below(2) == 0) OpenAnew();
      CheckFile();
    }
  }

 private:
  void OpenAnew() {
    if (registry_ != nullptr && in_.OneIn(2)) {
      registry_->Finalize();
    } else {
      registry_.reset();
      registry_ = std::make_unique<Registry>(path_.c_str(), kAdmin);
    }
    ASSERT_EQ(status::kOk, registry_->Initialize());
  }

  void ChooseUser() {
    if (in_.OneIn(5)) user_ = in_.User();
    EXPECT_EQ(status::kOk, registry_->SetCurrentUserId(user_));
  }

  void DoOne() {
    ChooseUser();
    switch (in_.Below(24)) {
      case 0:
      case 1:
      case 2:
      case 3:
        return CreateKey();
      case 4:
      case 5:
      case 6:
        return CreateValue();
      case 7:
      case 8:
        return SetValue();
      case 9:
      case 10:
        return GetValue();
      case 11:
        return DeleteValue();
      case 12:
        return SetDefaultValue();
      case 13:
        return GetDefaultValue();
      case 14:
        return DeleteKey();
      case 15:
        return ListKeys();
      case 16:
        return ListValues();
      case 17:
        return GetKeyInfo();
      case 18:
        return GetKeyPermission();
      case 19:
        return SetKeyPermission();
      case 20:
        return SetKeyWatch();
      case 21:
      case 22:
        return BackupKey();
      default:
        return RestoreKey();
    }
  }

  void CreateKey() {
    const std::string path = in_.Path(true);
    const bool isSet = in_.OneIn(2);
    const unsigned long long number = isSet ? in_.Number() : 0;
    const unsigned int expected = model_->CreateKey(user_, path, number, isSet);
    if (isSet) {
      EXPECT_EQ(registry_->CreateKey(0, path.c_str(), number), expected) << Text("CreateKey", path);
    } else {
      EXPECT_EQ(registry_->CreateKey(0, path.c_str()), expected) << Text("CreateKey", path);
    }
    if (expected == 0) in_.AddPath(path);
  }

  void CreateValue() {
    const std::string path = in_.Path(false), name = in_.ValueName();
    if (in_.OneIn(8)) {
      EXPECT_EQ(registry_->CreateValue(0, path.c_str(), name.c_str(), nullptr),
                model_->CreateValue(user_, path, name, 0, nullptr))
          << Text("CreateValue unset", path, name);
      return;
    }
    const NewValue made(in_);
    NewExactValue value(made);
    EXPECT_EQ(registry_->CreateValue(0, path.c_str(), name.c_str(), &value),
              model_->CreateValue(user_, path, name, made.type, &made.data))
        << Text("CreateValue", path, name);
  }

  void SetValue() {
    const std::string path = in_.Path(false), name = in_.ValueName(), data = in_.Data();
    const unsigned int type = in_.Type();
    ExactValue value(type, data);
    EXPECT_EQ(registry_->SetValue(0, path.c_str(), name.c_str(), &value),
              model_->SetValue(user_, path, name, type, data))
        << Text("SetValue", path, name);
  }

  void GetValue() {
    const std::string path = in_.Path(false), name = in_.ValueName();
    unsigned int type = 0;
    std::string bytes;
    const unsigned int expected = model_->GetValue(user_, path, name, &type, &bytes);
    ReadValue value;
    EXPECT_EQ(registry_->GetValue(0, path.c_str(), name.c_str(), &value), expected)
        << Text("GetValue", path, name);
    if (expected != 0) return;
    EXPECT_EQ(value.type, type) << Text("GetValue", path, name);
    EXPECT_EQ(BytesOf(value), bytes) << Text("GetValue", path, name);
  }

  void DeleteValue() {
    const std::string path = in_.Path(false), name = in_.ValueName();
    EXPECT_EQ(registry_->DeleteValue(0, path.c_str(), name.c_str()),
              model_->DeleteValue(user_, path, name))
        << Text("DeleteValue", path, name);
  }

  void SetDefaultValue() {
    const std::string path = in_.Path(false);
    const unsigned long long number = in_.Number();
    EXPECT_EQ(registry_->SetDefaultValue(0, path.c_str(), number),
              model_->SetDefaultValue(user_, path, number))
        << Text("SetDefaultValue", path);
  }

  void GetDefaultValue() {
    const std::string path = in_.Path(false);
    unsigned long long number = 1, expectedNumber = 1;
    EXPECT_EQ(registry_->GetDefaultValue(0, path.c_str(), &number),
              model_->GetDefaultValue(user_, path, &expectedNumber))
        << Text("GetDefaultValue", path);
    EXPECT_EQ(number, expectedNumber) << Text("GetDefaultValue", path);
  }

  // The root key is left alone: without it nothing could be done any more.
  void DeleteKey() {
    const std::string path = in_.Path(false);
    if (model_->IsRoot(path)) return;
    const unsigned int expected = model_->DeleteKey(user_, path);
    EXPECT_EQ(registry_->DeleteKey(0, path.c_str()), expected) << Text("DeleteKey", path);
    if (expected == 0) RenewPaths(path);
  }

  unsigned int Capacity() { return in_.OneIn(3) ? in_.Below(6) : 3000; }
  unsigned int First() { return in_.OneIn(3) ? in_.Below(8) : 0; }

  void ListKeys() {
    const std::string path = in_.Path(false);
    const unsigned int first = First(), capacity = Capacity();
    const bool withPath = in_.OneIn(3);
    std::vector<std::string> expectedNames;
    const unsigned int expected =
        model_->ListKeys(user_, path, first, capacity, withPath, &expectedNames);
    NameList list(capacity);
    EXPECT_EQ(registry_->ListKeys(0, path.c_str(), first, in_.Below(3), &list, withPath ? 1 : 0),
              expected)
        << Text("ListKeys", path);
    EXPECT_EQ(NamesOf(list), expectedNames) << Text("ListKeys", path);
  }

  void ListValues() {
    const std::string path = in_.Path(false);
    const unsigned int first = First(), capacity = Capacity();
    std::vector<std::string> expectedNames;
    const unsigned int expected = model_->ListValues(user_, path, first, capacity, &expectedNames);
    NameList list(capacity);
    EXPECT_EQ(registry_->ListValues(0, path.c_str(), first, in_.Below(3), &list), expected)
        << Text("ListValues", path);
    EXPECT_EQ(NamesOf(list), expectedNames) << Text("ListValues", path);
  }

  static std::vector<std::string> NamesOf(const NameList& list) {
    std::vector<std::string> names;
    for (unsigned int i = 0; i < list.Count(); ++i) names.push_back(list.GetName(i, nullptr));
    return names;
  }

  void GetKeyInfo() {
    const std::string path = in_.Path(false);
    ModelInfo counts;
    const unsigned int expected = model_->GetKeyInfo(user_, path, &counts);
    KeyInfo info = {1, 2, 3, 4, 5, 6, 7};
    EXPECT_EQ(registry_->GetKeyInfo(0, path.c_str(), &info), expected) << Text("GetKeyInfo", path);
    EXPECT_EQ(1u, info.reserved);
    const std::vector<unsigned int> told = {info.subKeyCount, info.totalKeyCount,
                                            info.valueCount,  info.totalValueCount,
                                            info.userId,      info.permission};
    const std::vector<unsigned int> wanted = {counts.subKeys, counts.allSubKeys,
                                              counts.values,  counts.allValues,
                                              user_,          counts.permission};
    EXPECT_EQ(told, expected == 0 ? wanted : std::vector<unsigned int>({2, 3, 4, 5, 6, 7}))
        << Text("GetKeyInfo", path);
  }

  void GetKeyPermission() {
    const std::string path = in_.Path(false);
    unsigned int expectedByte = 0xA5;
    unsigned char byte = 0xA5;
    EXPECT_EQ(registry_->GetKeyPermission(0, path.c_str(), &byte),
              model_->GetKeyPermission(path, &expectedByte))
        << Text("GetKeyPermission", path);
    EXPECT_EQ(byte, expectedByte) << Text("GetKeyPermission", path);
  }

  void SetKeyPermission() {
    const std::string path = in_.Path(false);
    const unsigned char byte = in_.Permission();
    EXPECT_EQ(registry_->SetKeyPermission(0, path.c_str(), byte),
              model_->SetKeyPermission(user_, path, byte))
        << Text("SetKeyPermission", path);
  }

  void SetKeyWatch() {
    const std::string path = in_.Path(false);
    const unsigned char watch = static_cast<unsigned char>(in_.Below(256));
    EXPECT_EQ(registry_->SetKeyWatch(0, path.c_str(), watch),
              model_->SetKeyWatch(user_, path, watch))
        << Text("SetKeyWatch", path);
  }

  std::string BackupPath(unsigned int number) {
    return folder_ / ("backup" + std::to_string(number)).c_str();
  }

  void BackupKey() {
    const std::string path = in_.Path(false);
    const unsigned int number = in_.Below(kBackups);
    const std::string file = BackupPath(number);
    const unsigned int expected = model_->BackupKey(user_, path, &backups_[number]);
    EXPECT_EQ(registry_->BackupKey(0, path.c_str(), file.c_str()), expected)
        << Text("BackupKey", path);
    if (expected == 0) {
      EXPECT_EQ(GetFile(file).size(), backups_[number].FileSize()) << Text("BackupKey", path);
    }
  }

  // Backups that were not made yet are tried too. The root seldom: nothing else is left then.
  void RestoreKey() {
    const std::string path = in_.Path(false);
    if (model_->IsRoot(path) && !in_.OneIn(8)) return;
    const unsigned int number = in_.Below(kBackups);
    const ModelBackup& backup = backups_[number];
    if (backup.key != nullptr) {
      const ModelCounts more = backup.Counts();
      const ModelCounts now = model_->Counts();
      if (now.strings > kLargestTree || more.strings > kLargestTree) return;
      if (now.blocks > kLargestTree || more.blocks > kLargestTree) return;
      if (!HasRoom(more)) StartOver();
    }
    const unsigned int expected = model_->RestoreKey(user_, path, backup);
    EXPECT_EQ(registry_->RestoreKey(0, path.c_str(), BackupPath(number).c_str()), expected)
        << Text("RestoreKey", path);
    if (expected == 0) RenewPaths(path);
  }

  // Whether the file can take this and what a batch needs.
  bool HasRoom(const ModelCounts& more) {
    constexpr unsigned int kTables = 21, kSlots = 499;  // of a kind; of an appended table
    const RegistryImage image(path_);
    const unsigned int needs[] = {more.strings, more.keys, more.values, more.blocks};
    for (unsigned int kind = 0; kind < RegistryImage::kKinds; ++kind) {
      const auto& tables = image.Tables(static_cast<RegistryImage::Kind>(kind));
      const std::vector<bool>& isFree = tables.back().isFree;
      const size_t left = static_cast<size_t>(std::count(isFree.begin(), isFree.end(), true)) +
                          (kTables - tables.size()) * kSlots;
      if (left < needs[kind] + kReserve) return false;
    }
    return true;
  }

  // With a new file; the backups are kept.
  void StartOver() {
    registry_.reset();
    std::filesystem::remove(path_);
    model_ = std::make_unique<ModelRegistry>();
    in_.ForgetPaths();
    OpenAnew();
    EXPECT_EQ(status::kOk, registry_->SetCurrentUserId(user_));
  }

  // After keys have gone or come: the keys there are, and one that may be gone.
  void RenewPaths(const std::string& path) {
    in_.ForgetPaths();
    in_.AddPath(path);
    for (const auto& [each, key] : model_->Tree()) {
      if (!each.empty()) in_.AddPath(each);
    }
  }

  std::string Text(const char* operation, const std::string& path, const std::string& name = "") {
    return std::string(operation) + " " + ::testing::PrintToString(path) + " " +
           ::testing::PrintToString(name) + " by " + std::to_string(user_);
  }

  void CheckFile() {
    EXPECT_EQ("", StructureFindings(path_));
    EXPECT_EQ(Describe(DecodeTree(path_)), Describe(model_->Tree()));
    const SlotCounts counts = CountSlots(path_);
    const ModelCounts expected = model_->Counts();
    EXPECT_EQ(counts.strings.reachable, expected.strings);
    EXPECT_EQ(counts.strings.used, expected.strings + model_->lostStringNodes());
    EXPECT_EQ(counts.keys.reachable, expected.keys);
    EXPECT_EQ(counts.keys.used, expected.keys);
    EXPECT_EQ(counts.values.reachable, expected.values);
    EXPECT_EQ(counts.values.used, expected.values);
    EXPECT_EQ(counts.blocks.reachable, expected.blocks);
    EXPECT_EQ(counts.blocks.used, expected.blocks + model_->lostBlocks());
    RegistryInfo info = {};
    EXPECT_EQ(status::kOk, registry_->GetRegistryInfo(&info));
    EXPECT_EQ(info.keyCount, expected.keys);
    EXPECT_EQ(info.valueCount, expected.values);
  }

  ModelInput in_;
  unsigned int user_ = kAdmin;
  TempDir folder_;
  const std::string path_ = folder_ / "registry";
  std::unique_ptr<ModelRegistry> model_ = std::make_unique<ModelRegistry>();
  ModelBackup backups_[kBackups];
  std::unique_ptr<Registry> registry_;
};

class RegistryModelTest : public ::testing::TestWithParam<unsigned int> {};

TEST_P(RegistryModelTest, AgreesUnderAFixedSeed) {
  if (GivenSeed() != nullptr) GTEST_SKIP() << "only the given seed is run";
  RunUnder<ModelRun>(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Seeds, RegistryModelTest, ::testing::Values(1u, 2u, 3u, 4u));

TEST(RegistryModel, AgreesUnderANewSeed) {
  RunUnderANewSeed<ModelRun>();
}

}  // namespace

}  // namespace tamu::registry
