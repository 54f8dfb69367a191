// Opening, the current user and the small operations.
#include "registry/Registry.h"
#include "registry/store/TernaryFile.h"
#include "tests/registry/RegistryRig.h"

namespace tamu::registry {

namespace {

Callback* SomeCallback() {
  static char place = 0;
  return reinterpret_cast<Callback*>(&place);
}

TEST(Registry, MakesANewFileWhereThereIsNone) {
  TempDir folder;
  const std::string path = folder / "new";
  {
    Registry registry(path.c_str(), "somebody");
    EXPECT_EQ(status::kOk, registry.Initialize());
  }
  const std::string bytes = GetFile(path);
  ASSERT_EQ(75888u, bytes.size());
  EXPECT_EQ(bytes.substr(0, 16),
            std::string("\xFF\xE0\xAC\x0F\xEF\xBE\xAD\xDE\x02\0\0\0\x01\0\0\0", 16));
  EXPECT_EQ(bytes.substr(16, 68 + 4096), std::string(68 + 4096, '\0'));
  const std::string header = Little(0, 4) + Little(4180, 4) + Little(1, 4) + Little(4220, 4) +
                             Little(5712, 4) + Little(7204, 4) + Little(8696, 4) +
                             Little(0x100, 4) + Little(75888, 4) + Little(0, 4);
  EXPECT_EQ(bytes.substr(4180, 40), header);
  // The root: string node 1, which carries key 1 of the administrator.
  EXPECT_EQ(bytes.substr(10188 + 40, 24),
            std::string("\0\0\x10\0", 4) + std::string(16, '\0') + Little(0x100, 4));
  EXPECT_EQ(bytes.substr(24788 + 24, 24),
            Little(0, 6) + "\x5F\x02" + Little(0xFFFF, 4) + std::string(12, '\0'));
  EXPECT_EQ("", StructureFindings(path));
}

TEST(Registry, LeavesAnExistingFileAsItIs) {
  TempDir folder;
  const std::string path = folder / "old";
  {
    Registry registry(path.c_str(), kAdmin);
    ASSERT_EQ(status::kOk, registry.Initialize());
    ASSERT_EQ(status::kOk, registry.CreateKey(0, "key", 5));
  }
  const std::string before = GetFile(path);
  Registry registry(path.c_str(), 1);
  EXPECT_EQ(status::kOk, registry.Initialize(7));
  EXPECT_EQ(GetFile(path), before);
  registry.Finalize();
  EXPECT_EQ(GetFile(path), before);
}

TEST(Registry, OfNoPathCannotBeOpened) {
  Registry registry(nullptr, kAdmin);
  EXPECT_EQ(status::kBadArgument, registry.Initialize());
  EXPECT_EQ(status::kNoRight, registry.CreateKey(0, "a"));
}

TEST(Registry, TakesItsUserByNameOrNumber) {
  unsigned int user = 0;
  Registry byName("unused", "a");
  EXPECT_EQ(status::kOk, byName.GetCurrentUserId(&user));
  EXPECT_EQ(177670u, user);
  Registry byNumber("unused", 0xFFFFFFFFu);
  EXPECT_EQ(status::kOk, byNumber.GetCurrentUserId(&user));
  EXPECT_EQ(0xFFFFFFFFu, user);
  Registry byNoName("unused", static_cast<const char*>(nullptr));
  EXPECT_EQ(status::kOk, byNoName.GetCurrentUserId(&user));
  EXPECT_EQ(5381u, user);
  EXPECT_EQ(status::kBadArgument, byNoName.GetCurrentUserId(nullptr));
}

TEST(Registry, ChangesItsUser) {
  Registry registry("unused", kAdmin);
  unsigned int user = 0;
  EXPECT_EQ(status::kOk, registry.SetCurrentUser("adminstrator"));
  EXPECT_EQ(status::kOk, registry.GetCurrentUserId(&user));
  EXPECT_EQ(0xAC295ADDu, user);
  EXPECT_EQ(status::kOk, registry.SetCurrentUserId(7));
  EXPECT_EQ(status::kOk, registry.GetCurrentUserId(&user));
  EXPECT_EQ(7u, user);
  EXPECT_EQ(status::kOk, registry.SetCurrentUser(nullptr));
  EXPECT_EQ(status::kOk, registry.GetCurrentUserId(&user));
  EXPECT_EQ(5381u, user);
}

TEST(Registry, HasNothingToFlush) {
  TempDir folder;
  const std::string path = folder / "registry";
  Registry registry(path.c_str(), kAdmin);
  EXPECT_EQ(1u, registry.Flush());
  ASSERT_EQ(status::kOk, registry.Initialize());
  const std::string before = GetFile(path);
  EXPECT_EQ(0u, registry.Flush());
  EXPECT_EQ(GetFile(path), before);
  registry.Finalize();
  EXPECT_EQ(1u, registry.Flush());
}

TEST(Registry, DoesNotSupportCallbacks) {
  TempDir folder;
  Registry registry((folder / "registry").c_str(), kAdmin);
  EXPECT_EQ(status::kNoRight, registry.RegisterCallback(1, SomeCallback()));
  EXPECT_EQ(status::kNoRight, registry.RegisterCallback(1, nullptr));
  EXPECT_EQ(status::kNoRight, registry.UnregisterCallback(SomeCallback()));
  EXPECT_EQ(status::kNoRight, registry.UnregisterCallback(nullptr));
  ASSERT_EQ(status::kOk, registry.Initialize());
  EXPECT_EQ(status::kBadArgument, registry.RegisterCallback(1, nullptr));
  EXPECT_EQ(status::kNotSupported, registry.RegisterCallback(1, SomeCallback()));
  EXPECT_EQ(status::kBadArgument, registry.UnregisterCallback(nullptr));
  EXPECT_EQ(status::kNotSupported, registry.UnregisterCallback(SomeCallback()));
}

TEST(Registry, TellsAboutANewFile) {
  TempDir folder;
  Registry registry((folder / "registry").c_str(), kAdmin);
  ASSERT_EQ(status::kOk, registry.Initialize());
  RegistryInfo info = {};
  info.infoReserved = 9;
  EXPECT_EQ(status::kOk, registry.GetRegistryInfo(&info));
  EXPECT_EQ(1u, info.infoFormat);
  EXPECT_EQ(1u, info.keyCount);
  EXPECT_EQ(0u, info.valueCount);
  EXPECT_EQ(75888u, info.fileSize);
  EXPECT_EQ(16u, info.segmentSize);
  EXPECT_EQ(32u, info.valueNameSize);
  EXPECT_EQ(1024u, info.maxDataSize);
  EXPECT_EQ(364u, info.keyCapacity);
  EXPECT_EQ(364u, info.valueCapacity);
  EXPECT_EQ(364u, info.dataBlockCapacity);
  EXPECT_EQ(1, info.infoFlag);
  EXPECT_EQ(0, info.infoReserved);
}

TEST(Registry, CountsKeysAndValuesInItsInformation) {
  TempDir folder;
  Registry registry((folder / "registry").c_str(), kAdmin);
  ASSERT_EQ(status::kOk, registry.Initialize());
  ASSERT_EQ(status::kOk, registry.CreateKey(0, "a"));
  ASSERT_EQ(status::kOk, registry.CreateKey(0, "b"));
  ASSERT_EQ(status::kOk, registry.CreateValue(0, "a", "v", nullptr));
  RegistryInfo info = {};
  EXPECT_EQ(status::kOk, registry.GetRegistryInfo(&info));
  EXPECT_EQ(3u, info.keyCount);
  EXPECT_EQ(1u, info.valueCount);
  ASSERT_EQ(status::kOk, registry.DeleteValue(0, "a", "v"));
  EXPECT_EQ(status::kOk, registry.GetRegistryInfo(&info));
  EXPECT_EQ(0u, info.valueCount);
}

TEST(Registry, LeavesTheAddressOfTheInformationInTheFile) {
  TempDir folder;
  const std::string path = folder / "registry";
  Registry registry(path.c_str(), kAdmin);
  ASSERT_EQ(status::kOk, registry.Initialize());
  const std::string before = GetFile(path);
  RegistryInfo info = {};
  ASSERT_EQ(status::kOk, registry.GetRegistryInfo(&info));
  std::string expected = before;
  const auto address = static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(&info));
  expected.replace(84, 4, Little(address, 4));
  EXPECT_EQ(GetFile(path), expected);
}

TEST(Registry, TellsNothingWithoutARecordOrAFile) {
  TempDir folder;
  Registry registry((folder / "registry").c_str(), kAdmin);
  RegistryInfo info = {};
  EXPECT_EQ(status::kNoRight, registry.GetRegistryInfo(&info));
  EXPECT_EQ(status::kNoRight, registry.GetRegistryInfo(nullptr));
  ASSERT_EQ(status::kOk, registry.Initialize());
  EXPECT_EQ(status::kBadArgument, registry.GetRegistryInfo(nullptr));
  registry.Finalize();
  EXPECT_EQ(status::kNoRight, registry.GetRegistryInfo(&info));
}

TEST(Registry, IsNotTroubledByWhatBecomesOfThePathsBuffer) {
  TempDir folder;
  const std::string path = folder / "registry";
  char buffer[512] = {};
  ASSERT_LT(path.size(), sizeof buffer);
  std::strcpy(buffer, path.c_str());
  Registry registry(buffer, kAdmin);
  std::memset(buffer, 'x', sizeof buffer - 1);
  ASSERT_EQ(status::kOk, registry.Initialize());
  EXPECT_EQ(75888u, GetFile(path).size());
  // The list of instances compares paths with those of objects that came before.
  Registry second(path.c_str(), kAdmin);
  EXPECT_EQ(status::kOk, second.Initialize());
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "a"));
  EXPECT_EQ(2u, RegistryInstance::sFirstInstance->refCount);
}

TEST(Registry, ReadsInAnotherProcessWhatOneHasWritten) {
  TempDir folder;
  const std::string path = folder / "registry";
  EXPECT_TRUE(InChild([&] {
    Registry registry(path.c_str(), "writer");
    ExactValue value(1, "hello");
    return registry.Initialize() == 0 && registry.CreateKey(0, "key", 0x123456789AULL) == 0 &&
           registry.CreateValue(0, "key", "name", &value) == 0;
  }));
  Registry registry(path.c_str(), "writer");
  ASSERT_EQ(status::kOk, registry.Initialize());
  unsigned long long number = 0;
  EXPECT_EQ(status::kOk, registry.GetDefaultValue(0, "key", &number));
  EXPECT_EQ(0x123456789AULL, number);
  EXPECT_EQ("type 1: hello", Read(registry, "key", "name"));
}

// What a process that only reads finds once another one has appended a table of each kind.
class AnotherProcessGrowsTest : public OpenRegistryTest {
 protected:
  AnotherProcessGrowsTest() {
    for (const char* key : {"a", "full"}) EXPECT_EQ(status::kOk, registry.CreateKey(0, key, 1));
    ExactValue value(1, "text");
    EXPECT_EQ(status::kOk, registry.CreateValue(0, "a", "old", &value));
  }
  ~AnotherProcessGrowsTest() override { EXPECT_EQ(GetFile(path), grown); }

  // Another process does `work` until the file has grown, and twice more.
  template <class Work>
  void LetGrow(Work work) {
    EXPECT_TRUE(InChild([&] {
      registry.Finalize();
      if (registry.Initialize() != 0) return false;
      RegistryInfo info = {};
      unsigned int left = 1000;
      for (info.fileSize = 75888; info.fileSize == 75888 && left > 0; --left) {
        if (!work(left) || registry.GetRegistryInfo(&info) != 0) return false;
      }
      return left > 0 && work(1001) && work(1002);
    }));
    grown = GetFile(path);
  }
  unsigned int Default(const char* key) {
    unsigned long long number = 0;
    return registry.GetDefaultValue(0, key, &number);
  }

  const bool isShared = registry.EffectiveDurability() != Durability::kNone;
  std::string grown;
};

// Without shared mappings nobody tells of the growth: what lies there is damage.
TEST_F(AnotherProcessGrowsTest, ValuesInANewTableAreSeen) {
  LetGrow([&](unsigned int i) {
    const bool isLast = i > 1000;
    return registry.CreateValue(0, isLast ? "a" : "full", std::to_string(i).c_str(), nullptr) == 0;
  });
  EXPECT_EQ(Read(registry, "a", "old"), isShared ? "type 1: text" : "status 9");
  EXPECT_EQ(Read(registry, "a", "1002"), isShared ? "status 53" : "status 9");
  EXPECT_EQ(Read(registry, "full", "1000"), isShared ? "status 53" : "status 9");
  NameList names(10);
  EXPECT_EQ(registry.ListValues(0, "a", 0, 0, &names), isShared ? 0u : 59u);
  EXPECT_EQ(names.Count(), isShared ? 3u : 0u);
}

TEST_F(AnotherProcessGrowsTest, DataInANewTableAreSeen) {
  ExactValue value(2, std::string(1024, 'x'));
  LetGrow([&](unsigned int i) {
    const bool isLast = i > 1000;
    return registry.CreateValue(0, isLast ? "a" : "full", std::to_string(i).c_str(), &value) == 0;
  });
  EXPECT_EQ("type 1: text", Read(registry, "a", "old"));
  EXPECT_EQ(Read(registry, "a", "1002"),
            isShared ? "type 2: " + std::string(1024, 'x') : "status 59");
}

TEST_F(AnotherProcessGrowsTest, NamesInANewTableAreSeen) {
  LetGrow([&](unsigned int i) {
    return registry.CreateKey(0, ("full/" + std::to_string(i)).c_str(), 5) == 0;
  });
  EXPECT_EQ(Default("full/1002"), isShared ? 0u : 59u);
  EXPECT_EQ(0u, Default("full/1000"));
  EXPECT_EQ("type 1: text", Read(registry, "a", "old"));
}

}  // namespace

}  // namespace tamu::registry
