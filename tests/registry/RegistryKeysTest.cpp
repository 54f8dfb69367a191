// Keys through the front end: creation, default values, rights.
#include "tests/registry/RegistryRig.h"

namespace tamu::registry {

namespace {

class RegistryKeysTest : public OpenRegistryTest {};

TEST_F(RegistryKeysTest, AKeyIsCreatedOnce) {
  EXPECT_EQ(registry.CreateKey(0, "a"), 0u);
  EXPECT_EQ(registry.CreateKey(0, "a"), 17u);
  EXPECT_EQ(registry.CreateKey(0, "a", 5), 17u);
  unsigned long long number = 0;
  EXPECT_EQ(registry.GetDefaultValue(0, "a", &number), 53u);
}

TEST_F(RegistryKeysTest, AKeyIsCreatedWithItsDefaultValueOrWithout) {
  EXPECT_EQ(registry.CreateKey(0, "with", 0xFEDCBA9876543210ULL), 0u);
  EXPECT_EQ(registry.CreateKey(0, "zero", 0), 0u);
  EXPECT_EQ(registry.CreateKey(0, "none"), 0u);
  unsigned long long number = 1;
  EXPECT_EQ(registry.GetDefaultValue(0, "with", &number), 0u);
  EXPECT_EQ(number, 0xFEDCBA9876543210ULL);
  EXPECT_EQ(registry.GetDefaultValue(0, "zero", &number), 0u);
  EXPECT_EQ(number, 0u);
  number = 99;
  EXPECT_EQ(registry.GetDefaultValue(0, "none", &number), 53u);
  EXPECT_EQ(number, 99u);
}

TEST_F(RegistryKeysTest, ADefaultValueIsSetAndReplaced) {
  EXPECT_EQ(registry.CreateKey(0, "a"), 0u);
  EXPECT_EQ(registry.SetDefaultValue(0, "a", 0x8000000000000001ULL), 0u);
  unsigned long long number = 0;
  EXPECT_EQ(registry.GetDefaultValue(0, "a", &number), 0u);
  EXPECT_EQ(number, 0x8000000000000001ULL);
  EXPECT_EQ(registry.SetDefaultValue(0, "/a", 2), 0u);
  EXPECT_EQ(registry.GetDefaultValue(0, "a/", &number), 0u);
  EXPECT_EQ(number, 2u);
}

TEST_F(RegistryKeysTest, TheRootHasADefaultValueToo) {
  unsigned long long number = 0;
  EXPECT_EQ(registry.GetDefaultValue(0, "", &number), 53u);
  EXPECT_EQ(registry.SetDefaultValue(0, "/", 3), 0u);
  EXPECT_EQ(registry.GetDefaultValue(0, "", &number), 0u);
  EXPECT_EQ(number, 3u);
}

TEST_F(RegistryKeysTest, KeysThatAreNotThereAreNotFound) {
  unsigned long long number = 0;
  EXPECT_EQ(registry.GetDefaultValue(0, "a", &number), 2u);
  EXPECT_EQ(registry.SetDefaultValue(0, "a", 1), 2u);
  EXPECT_EQ(registry.DeleteValue(0, "a", "v"), 2u);
  EXPECT_EQ(registry.CreateValue(0, "a", "v", nullptr), 2u);
  EXPECT_EQ(Read(registry, "a", "v"), "status 2");
}

TEST_F(RegistryKeysTest, AParentMustExist) {
  EXPECT_EQ(registry.CreateKey(0, "a/b"), 22u);
  EXPECT_EQ(registry.CreateKey(0, "a"), 0u);
  EXPECT_EQ(registry.CreateKey(0, "a/b"), 0u);
  EXPECT_EQ(registry.CreateKey(0, "a/b/c", 1), 0u);
  EXPECT_EQ(DecodeTree(path).size(), 4u);
}

TEST_F(RegistryKeysTest, CaseMakesADifference) {
  EXPECT_EQ(registry.CreateKey(0, "a"), 0u);
  EXPECT_EQ(registry.CreateKey(0, "A"), 0u);
}

// Forty characters with bytes of both halves, as a chain of three string nodes.
TEST_F(RegistryKeysTest, NamesMayBeLongAndHoldAnyByte) {
  std::string name;
  for (int i = 0; i < 40; ++i) name += static_cast<char>(0x7C + i);
  EXPECT_EQ(registry.CreateKey(0, name.c_str(), 40), 0u);
  name[39] = '\x01';
  EXPECT_EQ(registry.CreateKey(0, name.c_str(), 41), 0u);
  const std::map<std::string, DecodedKey> keys = DecodeTree(path);
  EXPECT_EQ(keys.size(), 3u);
  EXPECT_EQ(keys.at(name).defaultValue, 41u);
}

TEST_F(RegistryKeysTest, ATopKeyIsItsCreatorsAlone) {
  registry.SetCurrentUserId(7);
  EXPECT_EQ(registry.CreateKey(0, "mine", 1), 0u);
  const DecodedKey key = DecodeTree(path).at("mine");
  EXPECT_EQ(key.owner, 7u);
  EXPECT_EQ(key.permission, 0x0Fu);
  registry.SetCurrentUserId(8);
  unsigned long long number = 0;
  EXPECT_EQ(registry.GetDefaultValue(0, "mine", &number), 1u);
  EXPECT_EQ(registry.SetDefaultValue(0, "mine", 2), 1u);
  EXPECT_EQ(registry.CreateKey(0, "mine/yours"), 1u);
  EXPECT_EQ(registry.CreateValue(0, "mine", "v", nullptr), 1u);
  EXPECT_EQ(registry.DeleteValue(0, "mine", "v"), 1u);
  EXPECT_EQ(Read(registry, "mine", "v"), "status 1");
  registry.SetCurrentUserId(kAdmin);
  EXPECT_EQ(registry.GetDefaultValue(0, "mine", &number), 0u);
  EXPECT_EQ(registry.CreateKey(0, "mine/administrator"), 0u);
  EXPECT_EQ(DecodeTree(path).at("mine/administrator").owner, 0xFFFFu);
}

TEST_F(RegistryKeysTest, TheUserIsTheOneAtTheTimeOfTheCall) {
  registry.SetCurrentUser("a");
  EXPECT_EQ(registry.CreateKey(0, "key", 1), 0u);
  EXPECT_EQ(DecodeTree(path).at("key").owner, 177670u);
  unsigned long long number = 0;
  registry.SetCurrentUser("b");
  EXPECT_EQ(registry.GetDefaultValue(0, "key", &number), 1u);
  registry.SetCurrentUserId(177670);
  EXPECT_EQ(registry.GetDefaultValue(0, "key", &number), 0u);
}

// The name that a framework would use for its own user is an ordinary user's: the root lets it read
// and create, and nothing else.
TEST_F(RegistryKeysTest, TheUserNamedAdminstratorIsAnOrdinaryOne) {
  ExactValue value(1, "x");
  ASSERT_EQ(registry.CreateKey(0, "administrators"), 0u);
  ASSERT_EQ(registry.SetDefaultValue(0, "", 1), 0u);
  registry.SetCurrentUser("adminstrator");
  unsigned long long number = 0;
  EXPECT_EQ(registry.GetDefaultValue(0, "", &number), 0u);
  EXPECT_EQ(registry.CreateValue(0, "", "v", &value), 0u);
  EXPECT_EQ(Read(registry, "", "v"), "type 1: x");
  EXPECT_EQ(registry.SetValue(0, "", "v", &value), 1u);
  EXPECT_EQ(registry.DeleteValue(0, "", "v"), 1u);
  EXPECT_EQ(registry.SetDefaultValue(0, "", 2), 1u);
  EXPECT_EQ(registry.CreateKey(0, "own"), 0u);
  EXPECT_EQ(DecodeTree(path).at("own").owner, 0xAC295ADDu);
  EXPECT_EQ(registry.SetDefaultValue(0, "own", 2), 0u);
  EXPECT_EQ(registry.GetDefaultValue(0, "administrators", &number), 1u);
  EXPECT_EQ(registry.CreateKey(0, "administrators/x"), 1u);
}

TEST_F(RegistryKeysTest, AFullTableGrowsAndEveryKeyIsFound) {
  constexpr unsigned int kKeys = 400;
  for (unsigned int i = 0; i < kKeys; ++i) {
    const std::string name = std::to_string(1000 + i);
    ASSERT_EQ(registry.CreateKey(0, name.c_str(), i), 0u) << name;
  }
  registry.Finalize();
  ASSERT_EQ(registry.Initialize(), 0u);
  for (unsigned int i = 0; i < kKeys; ++i) {
    unsigned long long number = 0;
    EXPECT_EQ(registry.GetDefaultValue(0, std::to_string(1000 + i).c_str(), &number), 0u);
    EXPECT_EQ(number, i);
  }
  EXPECT_EQ(CountSlots(path).keys.tables, 2u);
}

}  // namespace

}  // namespace tamu::registry
