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
    EXPECT_EQ(registry.Initialize(), 0u);
  }
  const std::string bytes = GetFile(path);
  ASSERT_EQ(bytes.size(), 75888u);
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
  EXPECT_EQ(StructureFindings(path), "");
}

TEST(Registry, LeavesAnExistingFileAsItIs) {
  TempDir folder;
  const std::string path = folder / "old";
  {
    Registry registry(path.c_str(), kAdmin);
    ASSERT_EQ(registry.Initialize(), 0u);
    ASSERT_EQ(registry.CreateKey(0, "key", 5), 0u);
  }
  const std::string before = GetFile(path);
  Registry registry(path.c_str(), 1);
  EXPECT_EQ(registry.Initialize(7), 0u);
  EXPECT_EQ(GetFile(path), before);
  registry.Finalize();
  EXPECT_EQ(GetFile(path), before);
}

TEST(Registry, OfNoPathCannotBeOpened) {
  Registry registry(nullptr, kAdmin);
  EXPECT_EQ(registry.Initialize(), 22u);
  EXPECT_EQ(registry.CreateKey(0, "a"), 1u);
}

TEST(Registry, TakesItsUserByNameOrNumber) {
  unsigned int user = 0;
  Registry byName("unused", "a");
  EXPECT_EQ(byName.GetCurrentUserId(&user), 0u);
  EXPECT_EQ(user, 177670u);
  Registry byNumber("unused", 0xFFFFFFFFu);
  EXPECT_EQ(byNumber.GetCurrentUserId(&user), 0u);
  EXPECT_EQ(user, 0xFFFFFFFFu);
  Registry byNoName("unused", static_cast<const char*>(nullptr));
  EXPECT_EQ(byNoName.GetCurrentUserId(&user), 0u);
  EXPECT_EQ(user, 5381u);
  EXPECT_EQ(byNoName.GetCurrentUserId(nullptr), 22u);
}

TEST(Registry, ChangesItsUser) {
  Registry registry("unused", kAdmin);
  unsigned int user = 0;
  EXPECT_EQ(registry.SetCurrentUser("adminstrator"), 0u);
  EXPECT_EQ(registry.GetCurrentUserId(&user), 0u);
  EXPECT_EQ(user, 0xAC295ADDu);
  EXPECT_EQ(registry.SetCurrentUserId(7), 0u);
  EXPECT_EQ(registry.GetCurrentUserId(&user), 0u);
  EXPECT_EQ(user, 7u);
  EXPECT_EQ(registry.SetCurrentUser(nullptr), 0u);
  EXPECT_EQ(registry.GetCurrentUserId(&user), 0u);
  EXPECT_EQ(user, 5381u);
}

TEST(Registry, HasNothingToFlush) {
  TempDir folder;
  const std::string path = folder / "registry";
  Registry registry(path.c_str(), kAdmin);
  EXPECT_EQ(registry.Flush(), 1u);
  ASSERT_EQ(registry.Initialize(), 0u);
  const std::string before = GetFile(path);
  EXPECT_EQ(registry.Flush(), 0u);
  EXPECT_EQ(GetFile(path), before);
  registry.Finalize();
  EXPECT_EQ(registry.Flush(), 1u);
}

TEST(Registry, DoesNotSupportCallbacks) {
  TempDir folder;
  Registry registry((folder / "registry").c_str(), kAdmin);
  EXPECT_EQ(registry.RegisterCallback(1, SomeCallback()), 1u);
  EXPECT_EQ(registry.RegisterCallback(1, nullptr), 1u);
  EXPECT_EQ(registry.UnregisterCallback(SomeCallback()), 1u);
  EXPECT_EQ(registry.UnregisterCallback(nullptr), 1u);
  ASSERT_EQ(registry.Initialize(), 0u);
  EXPECT_EQ(registry.RegisterCallback(1, nullptr), 22u);
  EXPECT_EQ(registry.RegisterCallback(1, SomeCallback()), 37u);
  EXPECT_EQ(registry.UnregisterCallback(nullptr), 22u);
  EXPECT_EQ(registry.UnregisterCallback(SomeCallback()), 37u);
}

TEST(Registry, TellsAboutANewFile) {
  TempDir folder;
  Registry registry((folder / "registry").c_str(), kAdmin);
  ASSERT_EQ(registry.Initialize(), 0u);
  RegistryInfo info = {};
  info.infoReserved = 9;
  EXPECT_EQ(registry.GetRegistryInfo(&info), 0u);
  EXPECT_EQ(info.infoFormat, 1u);
  EXPECT_EQ(info.keyCount, 1u);
  EXPECT_EQ(info.valueCount, 0u);
  EXPECT_EQ(info.fileSize, 75888u);
  EXPECT_EQ(info.segmentSize, 16u);
  EXPECT_EQ(info.valueNameSize, 32u);
  EXPECT_EQ(info.maxDataSize, 1024u);
  EXPECT_EQ(info.keyCapacity, 364u);
  EXPECT_EQ(info.valueCapacity, 364u);
  EXPECT_EQ(info.dataBlockCapacity, 364u);
  EXPECT_EQ(info.infoFlag, 1);
  EXPECT_EQ(info.infoReserved, 0);
}

TEST(Registry, CountsKeysAndValuesInItsInformation) {
  TempDir folder;
  Registry registry((folder / "registry").c_str(), kAdmin);
  ASSERT_EQ(registry.Initialize(), 0u);
  ASSERT_EQ(registry.CreateKey(0, "a"), 0u);
  ASSERT_EQ(registry.CreateKey(0, "b"), 0u);
  ASSERT_EQ(registry.CreateValue(0, "a", "v", nullptr), 0u);
  RegistryInfo info = {};
  EXPECT_EQ(registry.GetRegistryInfo(&info), 0u);
  EXPECT_EQ(info.keyCount, 3u);
  EXPECT_EQ(info.valueCount, 1u);
  ASSERT_EQ(registry.DeleteValue(0, "a", "v"), 0u);
  EXPECT_EQ(registry.GetRegistryInfo(&info), 0u);
  EXPECT_EQ(info.valueCount, 0u);
}

TEST(Registry, LeavesTheAddressOfTheInformationInTheFile) {
  TempDir folder;
  const std::string path = folder / "registry";
  Registry registry(path.c_str(), kAdmin);
  ASSERT_EQ(registry.Initialize(), 0u);
  const std::string before = GetFile(path);
  RegistryInfo info = {};
  ASSERT_EQ(registry.GetRegistryInfo(&info), 0u);
  std::string expected = before;
  const auto address = static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(&info));
  expected.replace(84, 4, Little(address, 4));
  EXPECT_EQ(GetFile(path), expected);
}

TEST(Registry, TellsNothingWithoutARecordOrAFile) {
  TempDir folder;
  Registry registry((folder / "registry").c_str(), kAdmin);
  RegistryInfo info = {};
  EXPECT_EQ(registry.GetRegistryInfo(&info), 1u);
  EXPECT_EQ(registry.GetRegistryInfo(nullptr), 1u);
  ASSERT_EQ(registry.Initialize(), 0u);
  EXPECT_EQ(registry.GetRegistryInfo(nullptr), 22u);
  registry.Finalize();
  EXPECT_EQ(registry.GetRegistryInfo(&info), 1u);
}

TEST(Registry, IsNotTroubledByWhatBecomesOfThePathsBuffer) {
  TempDir folder;
  const std::string path = folder / "registry";
  char buffer[512] = {};
  ASSERT_LT(path.size(), sizeof buffer);
  std::strcpy(buffer, path.c_str());
  Registry registry(buffer, kAdmin);
  std::memset(buffer, 'x', sizeof buffer - 1);
  ASSERT_EQ(registry.Initialize(), 0u);
  EXPECT_EQ(GetFile(path).size(), 75888u);
  // The list of instances compares paths with those of objects that came before.
  Registry second(path.c_str(), kAdmin);
  EXPECT_EQ(second.Initialize(), 0u);
  EXPECT_EQ(registry.CreateKey(0, "a"), 0u);
  EXPECT_EQ(RegistryInstance::sFirstInstance->refCount, 2u);
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
  ASSERT_EQ(registry.Initialize(), 0u);
  unsigned long long number = 0;
  EXPECT_EQ(registry.GetDefaultValue(0, "key", &number), 0u);
  EXPECT_EQ(number, 0x123456789AULL);
  EXPECT_EQ(Read(registry, "key", "name"), "type 1: hello");
}

// What a process that only reads finds once another one has appended a table of each kind.
class AnotherProcessGrowsTest : public OpenRegistryTest {
 protected:
  AnotherProcessGrowsTest() {
    for (const char* key : {"a", "full"}) EXPECT_EQ(registry.CreateKey(0, key, 1), 0u);
    ExactValue value(1, "text");
    EXPECT_EQ(registry.CreateValue(0, "a", "old", &value), 0u);
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
  EXPECT_EQ(Read(registry, "a", "old"), "type 1: text");
  EXPECT_EQ(Read(registry, "a", "1002"),
            isShared ? "type 2: " + std::string(1024, 'x') : "status 59");
}

TEST_F(AnotherProcessGrowsTest, NamesInANewTableAreSeen) {
  LetGrow([&](unsigned int i) {
    return registry.CreateKey(0, ("full/" + std::to_string(i)).c_str(), 5) == 0;
  });
  EXPECT_EQ(Default("full/1002"), isShared ? 0u : 59u);
  EXPECT_EQ(Default("full/1000"), 0u);
  EXPECT_EQ(Read(registry, "a", "old"), "type 1: text");
}

}  // namespace

}  // namespace tamu::registry
