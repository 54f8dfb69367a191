// Random operations on a registry and on a model of it in memory: every answer, and after each
// batch the whole file, must agree. One seed is new in every run; YAX_TEST_SEED runs that one alone
// again.
#include <cstdlib>
#include <memory>
#include <random>

#include "tests/registry/RegistryRig.h"
#include "tests/support/ModelRegistry.h"

namespace tamu::registry {

namespace {

constexpr unsigned int kBatches = 20;
constexpr unsigned int kOperations = 200;  // in a batch

// The order of keys and values in a message.
std::string Describe(const std::map<std::string, DecodedKey>& tree) {
  std::string text;
  for (const auto& [path, key] : tree) {
    text += ::testing::PrintToString(path) + " owner " + std::to_string(key.owner) +
            " permission " + std::to_string(key.permission) + " flags " +
            std::to_string(key.flags) + " default " + std::to_string(key.defaultValue) + "\n";
    for (const DecodedValue& value : key.values) {
      text += "  " + ::testing::PrintToString(value.name) + " type " + std::to_string(value.type) +
              (value.isSet ? " set" : " unset") + " size " + std::to_string(value.size) +
              " number " + std::to_string(value.number) + " bytes " +
              ::testing::PrintToString(value.bytes) + "\n";
    }
  }
  return text;
}

class ModelRun {
 public:
  explicit ModelRun(unsigned int seed) : random_(seed) {}

  // Stops at the first operation that is answered differently.
  void Run() {
    OpenAnew();
    for (unsigned int batch = 0; batch < kBatches && !::testing::Test::HasFailure(); ++batch) {
      for (unsigned int i = 0; i < kOperations && !::testing::Test::HasFailure(); ++i) DoOne();
      if (Below(2) == 0) OpenAnew();
      CheckFile();
    }
  }

 private:
  unsigned int Below(unsigned int limit) { return static_cast<unsigned int>(random_() % limit); }
  bool OneIn(unsigned int times) { return Below(times) == 0; }

  void OpenAnew() {
    if (registry_ != nullptr && OneIn(2)) {
      registry_->Finalize();
    } else {
      registry_.reset();
      registry_ = std::make_unique<Registry>(path_.c_str(), kAdmin);
    }
    ASSERT_EQ(registry_->Initialize(), 0u);
  }

  // Mostly few different characters, so that names share beginnings; both halves of the bytes.
  char Character() {
    static const char kFew[] = {'a', 'b', '\x80', '\xFF', '\x01', '\x7F'};
    if (!OneIn(6)) return kFew[Below(sizeof kFew)];
    const char any = static_cast<char>(1 + Below(255));
    return any == '/' ? '0' : any;
  }

  std::string Component() {
    std::string name;
    if (OneIn(3)) name.assign(15 + Below(5), OneIn(2) ? 's' : '\x90');
    if (!names_.empty() && OneIn(2)) {
      const std::string& known = names_[Below(static_cast<unsigned int>(names_.size()))];
      name = known.substr(0, Below(static_cast<unsigned int>(known.size()) + 1));
    }
    const unsigned int more = OneIn(4) ? Below(40) : Below(4);
    for (unsigned int i = 0; i < more || name.empty(); ++i) name += Character();
    name.resize(std::min<size_t>(name.size(), 40));
    names_.push_back(name);
    return name;
  }

  std::string KnownPath() {
    return paths_.empty() ? "" : paths_[Below(static_cast<unsigned int>(paths_.size()))];
  }

  // Mostly the path of a key, or of a new one below a key; sometimes an odd spelling or a guess.
  std::string Path(bool isNew) {
    std::string path = OneIn(3) ? "" : KnownPath();
    if (isNew || OneIn(8)) path += (path.empty() ? "" : "/") + Component();
    if (OneIn(10)) path += "/";
    if (OneIn(30)) path += "/" + Component();
    if (OneIn(60)) path += "//";
    if (OneIn(10)) path = "/" + path;
    if (OneIn(60)) path = "/" + path;
    return path;
  }

  std::string ValueName() {
    if (OneIn(50)) return "";
    const std::string name(OneIn(6) ? 29 + Below(12) : 1, static_cast<char>('v' + Below(3)));
    return OneIn(4) ? name + '\xE0' : name;
  }

  std::string Data() {
    static const unsigned int kSizes[] = {0,   1,   4,   8,   12,   63,   64,  65,
                                          127, 128, 129, 640, 1023, 1024, 1025};
    const unsigned int size = kSizes[OneIn(4) ? Below(sizeof kSizes / sizeof *kSizes) : Below(8)];
    std::string data;
    for (unsigned int i = 0; i < size; ++i) data += static_cast<char>(Below(256));
    return data;
  }

  unsigned int Type() { return OneIn(30) ? 6 + Below(3) : Below(6); }

  unsigned long long Number() {
    const unsigned long long high = random_();
    return high << 32 | static_cast<unsigned long long>(random_());
  }

  void ChooseUser() {
    static const unsigned int kUsers[] = {kAdmin, kAdmin, 7, 0xAC295ADD};
    if (OneIn(5)) user_ = kUsers[Below(4)];
    EXPECT_EQ(registry_->SetCurrentUserId(user_), 0u);
  }

  void DoOne() {
    ChooseUser();
    switch (Below(8)) {
      case 0:
      case 1:
        return CreateKey();
      case 2:
        return CreateValue();
      case 3:
        return SetValue();
      case 4:
        return GetValue();
      case 5:
        return DeleteValue();
      case 6:
        return SetDefaultValue();
      default:
        return GetDefaultValue();
    }
  }

  void CreateKey() {
    const std::string path = Path(true);
    const bool isSet = OneIn(2);
    const unsigned long long number = isSet ? Number() : 0;
    const unsigned int expected = model_.CreateKey(user_, path, number, isSet);
    if (isSet) {
      EXPECT_EQ(registry_->CreateKey(0, path.c_str(), number), expected) << Text("CreateKey", path);
    } else {
      EXPECT_EQ(registry_->CreateKey(0, path.c_str()), expected) << Text("CreateKey", path);
    }
    if (expected == 0) paths_.push_back(path);
  }

  void CreateValue() {
    const std::string path = Path(false), name = ValueName();
    if (OneIn(8)) {
      EXPECT_EQ(registry_->CreateValue(0, path.c_str(), name.c_str(), nullptr),
                model_.CreateValue(user_, path, name, 0, nullptr))
          << Text("CreateValue unset", path, name);
      return;
    }
    const unsigned int type = Type();
    const std::string data = Data();
    ExactValue value(type, data);
    EXPECT_EQ(registry_->CreateValue(0, path.c_str(), name.c_str(), &value),
              model_.CreateValue(user_, path, name, type, &data))
        << Text("CreateValue", path, name);
  }

  void SetValue() {
    const std::string path = Path(false), name = ValueName(), data = Data();
    const unsigned int type = Type();
    ExactValue value(type, data);
    EXPECT_EQ(registry_->SetValue(0, path.c_str(), name.c_str(), &value),
              model_.SetValue(user_, path, name, type, data))
        << Text("SetValue", path, name);
  }

  void GetValue() {
    const std::string path = Path(false), name = ValueName();
    unsigned int type = 0;
    std::string bytes;
    const unsigned int expected = model_.GetValue(user_, path, name, &type, &bytes);
    ReadValue value;
    EXPECT_EQ(registry_->GetValue(0, path.c_str(), name.c_str(), &value), expected)
        << Text("GetValue", path, name);
    if (expected != 0) return;
    EXPECT_EQ(value.type, type) << Text("GetValue", path, name);
    EXPECT_EQ(BytesOf(value), bytes) << Text("GetValue", path, name);
  }

  void DeleteValue() {
    const std::string path = Path(false), name = ValueName();
    EXPECT_EQ(registry_->DeleteValue(0, path.c_str(), name.c_str()),
              model_.DeleteValue(user_, path, name))
        << Text("DeleteValue", path, name);
  }

  void SetDefaultValue() {
    const std::string path = Path(false);
    const unsigned long long number = Number();
    EXPECT_EQ(registry_->SetDefaultValue(0, path.c_str(), number),
              model_.SetDefaultValue(user_, path, number))
        << Text("SetDefaultValue", path);
  }

  void GetDefaultValue() {
    const std::string path = Path(false);
    unsigned long long number = 1, expectedNumber = 1;
    EXPECT_EQ(registry_->GetDefaultValue(0, path.c_str(), &number),
              model_.GetDefaultValue(user_, path, &expectedNumber))
        << Text("GetDefaultValue", path);
    EXPECT_EQ(number, expectedNumber) << Text("GetDefaultValue", path);
  }

  std::string Text(const char* operation, const std::string& path, const std::string& name = "") {
    return std::string(operation) + " " + ::testing::PrintToString(path) + " " +
           ::testing::PrintToString(name) + " by " + std::to_string(user_);
  }

  void CheckFile() {
    EXPECT_EQ(StructureFindings(path_), "");
    EXPECT_EQ(Describe(DecodeTree(path_)), Describe(model_.Tree()));
    const SlotCounts counts = CountSlots(path_);
    EXPECT_EQ(counts.strings.reachable, model_.stringNodes());
    EXPECT_EQ(counts.strings.used, model_.stringNodes() + model_.lostStringNodes());
    EXPECT_EQ(counts.keys.reachable, model_.keyCount());
    EXPECT_EQ(counts.keys.used, model_.keyCount());
    EXPECT_EQ(counts.values.reachable, model_.valueCount());
    EXPECT_EQ(counts.values.used, model_.valueCount());
    EXPECT_EQ(counts.blocks.reachable, model_.blockCount());
    EXPECT_EQ(counts.blocks.used, model_.blockCount() + model_.lostBlocks());
    RegistryInfo info = {};
    EXPECT_EQ(registry_->GetRegistryInfo(&info), 0u);
    EXPECT_EQ(info.keyCount, model_.keyCount());
    EXPECT_EQ(info.valueCount, model_.valueCount());
  }

  std::mt19937 random_;
  unsigned int user_ = kAdmin;
  std::vector<std::string> names_;  // components tried so far
  std::vector<std::string> paths_;  // created, as they were spelled
  TempDir folder_;
  const std::string path_ = folder_ / "registry";
  ModelRegistry model_;
  std::unique_ptr<Registry> registry_;
};

const char* GivenSeed() {
  return std::getenv("YAX_TEST_SEED");
}

class RegistryModelTest : public ::testing::TestWithParam<unsigned int> {};

TEST_P(RegistryModelTest, AgreesUnderAFixedSeed) {
  if (GivenSeed() != nullptr) GTEST_SKIP() << "only the given seed is run";
  SCOPED_TRACE("YAX_TEST_SEED=" + std::to_string(GetParam()));
  ModelRun(GetParam()).Run();
}

INSTANTIATE_TEST_SUITE_P(Seeds, RegistryModelTest, ::testing::Values(1u, 2u, 3u, 4u));

TEST(RegistryModel, AgreesUnderANewSeed) {
  const char* given = GivenSeed();
  const unsigned int seed = given != nullptr
                                ? static_cast<unsigned int>(std::strtoul(given, nullptr, 10))
                                : std::random_device()();
  std::printf("YAX_TEST_SEED=%u\n", seed);
  SCOPED_TRACE("YAX_TEST_SEED=" + std::to_string(seed));
  ModelRun(seed).Run();
}

}  // namespace

}  // namespace tamu::registry
