// Keys through the front end: creation, default values, rights.
#include "tests/registry/RegistryRig.h"

namespace tamu::registry {

namespace {

class RegistryKeysTest : public OpenRegistryTest {};

TEST_F(RegistryKeysTest, AKeyIsCreatedOnce) {
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "a"));
  EXPECT_EQ(status::kExists, registry.CreateKey(0, "a"));
  EXPECT_EQ(status::kExists, registry.CreateKey(0, "a", 5));
  unsigned long long number = 0;
  EXPECT_EQ(status::kNoData, registry.GetDefaultValue(0, "a", &number));
}

TEST_F(RegistryKeysTest, AKeyIsCreatedWithItsDefaultValueOrWithout) {
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "with", 0xFEDCBA9876543210ULL));
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "zero", 0));
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "none"));
  unsigned long long number = 1;
  EXPECT_EQ(status::kOk, registry.GetDefaultValue(0, "with", &number));
  EXPECT_EQ(0xFEDCBA9876543210ULL, number);
  EXPECT_EQ(status::kOk, registry.GetDefaultValue(0, "zero", &number));
  EXPECT_EQ(0u, number);
  number = 99;
  EXPECT_EQ(status::kNoData, registry.GetDefaultValue(0, "none", &number));
  EXPECT_EQ(99u, number);
}

TEST_F(RegistryKeysTest, ADefaultValueIsSetAndReplaced) {
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "a"));
  EXPECT_EQ(status::kOk, registry.SetDefaultValue(0, "a", 0x8000000000000001ULL));
  unsigned long long number = 0;
  EXPECT_EQ(status::kOk, registry.GetDefaultValue(0, "a", &number));
  EXPECT_EQ(0x8000000000000001ULL, number);
  EXPECT_EQ(status::kOk, registry.SetDefaultValue(0, "/a", 2));
  EXPECT_EQ(status::kOk, registry.GetDefaultValue(0, "a/", &number));
  EXPECT_EQ(2u, number);
}

TEST_F(RegistryKeysTest, TheRootHasADefaultValueToo) {
  unsigned long long number = 0;
  EXPECT_EQ(status::kNoData, registry.GetDefaultValue(0, "", &number));
  EXPECT_EQ(status::kOk, registry.SetDefaultValue(0, "/", 3));
  EXPECT_EQ(status::kOk, registry.GetDefaultValue(0, "", &number));
  EXPECT_EQ(3u, number);
}

TEST_F(RegistryKeysTest, KeysThatAreNotThereAreNotFound) {
  unsigned long long number = 0;
  EXPECT_EQ(status::kNotFound, registry.GetDefaultValue(0, "a", &number));
  EXPECT_EQ(status::kNotFound, registry.SetDefaultValue(0, "a", 1));
  EXPECT_EQ(status::kNotFound, registry.DeleteValue(0, "a", "v"));
  EXPECT_EQ(status::kNotFound, registry.CreateValue(0, "a", "v", nullptr));
  EXPECT_EQ("status 2", Read(registry, "a", "v"));
}

TEST_F(RegistryKeysTest, AParentMustExist) {
  EXPECT_EQ(status::kBadArgument, registry.CreateKey(0, "a/b"));
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "a"));
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "a/b"));
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "a/b/c", 1));
  EXPECT_EQ(4u, DecodeTree(path).size());
}

TEST_F(RegistryKeysTest, CaseMakesADifference) {
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "a"));
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "A"));
}

// Forty characters with bytes of both halves, as a chain of three string nodes.
TEST_F(RegistryKeysTest, NamesMayBeLongAndHoldAnyByte) {
  std::string name;
  for (int i = 0; i < 40; ++i) name += static_cast<char>(0x7C + i);
  EXPECT_EQ(status::kOk, registry.CreateKey(0, name.c_str(), 40));
  name[39] = '\x01';
  EXPECT_EQ(status::kOk, registry.CreateKey(0, name.c_str(), 41));
  const std::map<std::string, DecodedKey> keys = DecodeTree(path);
  EXPECT_EQ(3u, keys.size());
  EXPECT_EQ(41u, keys.at(name).defaultValue);
}

TEST_F(RegistryKeysTest, ATopKeyIsItsCreatorsAlone) {
  registry.SetCurrentUserId(7);
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "mine", 1));
  const DecodedKey key = DecodeTree(path).at("mine");
  EXPECT_EQ(7u, key.owner);
  EXPECT_EQ(0x0Fu, key.permission);
  registry.SetCurrentUserId(8);
  unsigned long long number = 0;
  EXPECT_EQ(status::kNoRight, registry.GetDefaultValue(0, "mine", &number));
  EXPECT_EQ(status::kNoRight, registry.SetDefaultValue(0, "mine", 2));
  EXPECT_EQ(status::kNoRight, registry.CreateKey(0, "mine/yours"));
  EXPECT_EQ(status::kNoRight, registry.CreateValue(0, "mine", "v", nullptr));
  EXPECT_EQ(status::kNoRight, registry.DeleteValue(0, "mine", "v"));
  EXPECT_EQ("status 1", Read(registry, "mine", "v"));
  registry.SetCurrentUserId(kAdmin);
  EXPECT_EQ(status::kOk, registry.GetDefaultValue(0, "mine", &number));
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "mine/administrator"));
  EXPECT_EQ(0xFFFFu, DecodeTree(path).at("mine/administrator").owner);
}

TEST_F(RegistryKeysTest, TheUserIsTheOneAtTheTimeOfTheCall) {
  registry.SetCurrentUser("a");
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "key", 1));
  EXPECT_EQ(177670u, DecodeTree(path).at("key").owner);
  unsigned long long number = 0;
  registry.SetCurrentUser("b");
  EXPECT_EQ(status::kNoRight, registry.GetDefaultValue(0, "key", &number));
  registry.SetCurrentUserId(177670);
  EXPECT_EQ(status::kOk, registry.GetDefaultValue(0, "key", &number));
}

// The name that a framework would use for its own user is an ordinary user's: the root lets it read
// and create, and nothing else.
TEST_F(RegistryKeysTest, TheUserNamedAdminstratorIsAnOrdinaryOne) {
  ExactValue value(1, "x");
  ASSERT_EQ(status::kOk, registry.CreateKey(0, "administrators"));
  ASSERT_EQ(status::kOk, registry.SetDefaultValue(0, "", 1));
  registry.SetCurrentUser("adminstrator");
  unsigned long long number = 0;
  EXPECT_EQ(status::kOk, registry.GetDefaultValue(0, "", &number));
  EXPECT_EQ(status::kOk, registry.CreateValue(0, "", "v", &value));
  EXPECT_EQ("type 1: x", Read(registry, "", "v"));
  EXPECT_EQ(status::kNoRight, registry.SetValue(0, "", "v", &value));
  EXPECT_EQ(status::kNoRight, registry.DeleteValue(0, "", "v"));
  EXPECT_EQ(status::kNoRight, registry.SetDefaultValue(0, "", 2));
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "own"));
  EXPECT_EQ(0xAC295ADDu, DecodeTree(path).at("own").owner);
  EXPECT_EQ(status::kOk, registry.SetDefaultValue(0, "own", 2));
  EXPECT_EQ(status::kNoRight, registry.GetDefaultValue(0, "administrators", &number));
  EXPECT_EQ(status::kNoRight, registry.CreateKey(0, "administrators/x"));
}

TEST_F(RegistryKeysTest, AFullTableGrowsAndEveryKeyIsFound) {
  constexpr unsigned int kKeys = 400;
  for (unsigned int i = 0; i < kKeys; ++i) {
    const std::string name = std::to_string(1000 + i);
    ASSERT_EQ(status::kOk, registry.CreateKey(0, name.c_str(), i)) << name;
  }
  registry.Finalize();
  ASSERT_EQ(status::kOk, registry.Initialize());
  for (unsigned int i = 0; i < kKeys; ++i) {
    unsigned long long number = 0;
    EXPECT_EQ(status::kOk, registry.GetDefaultValue(0, std::to_string(1000 + i).c_str(), &number));
    EXPECT_EQ(number, i);
  }
  EXPECT_EQ(2u, CountSlots(path).keys.tables);
}

}  // namespace

}  // namespace tamu::registry
