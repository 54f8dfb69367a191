// Objects on the same path and on different ones: what they share, and every order of their end.
#include <algorithm>
#include <memory>

#include "registry/store/TernaryFile.h"
#include "tests/registry/RegistryRig.h"

namespace tamu::registry {

namespace {

class RegistryLifeTest : public ::testing::Test {
 protected:
  ~RegistryLifeTest() override {
    EXPECT_EQ(RegistryInstance::sFirstInstance, nullptr);
    EXPECT_FALSE(TernaryFile::file.IsOpen());
  }

  TempDir folder;
  const std::string path = folder / "registry";
};

TEST_F(RegistryLifeTest, AnObjectThatWasNeverOpenedEndsQuietly) {
  Registry registry(path.c_str(), kAdmin);
  registry.Finalize();
  EXPECT_EQ(GetFile(path), "(cannot be read)");
}

TEST_F(RegistryLifeTest, OpeningTwiceTakesOneReference) {
  Registry registry(path.c_str(), kAdmin);
  EXPECT_EQ(registry.Initialize(), 0u);
  EXPECT_EQ(registry.CreateKey(0, "a"), 0u);
  EXPECT_EQ(registry.Initialize(), 0u);
  EXPECT_EQ(RegistryInstance::sFirstInstance->refCount, 1u);
  EXPECT_EQ(registry.CreateKey(0, "a"), 17u);
  registry.Finalize();
  EXPECT_EQ(RegistryInstance::sFirstInstance, nullptr);
}

TEST_F(RegistryLifeTest, TheSecondObjectSharesTheInstanceAndHasNoOperations) {
  Registry first(path.c_str(), kAdmin);
  Registry second(path.c_str(), kAdmin);
  EXPECT_EQ(first.Initialize(), 0u);
  EXPECT_EQ(second.Initialize(), 0u);
  EXPECT_EQ(RegistryInstance::sFirstInstance->refCount, 2u);
  EXPECT_EQ(RegistryInstance::sFirstInstance->next, nullptr);
  EXPECT_EQ(second.CreateKey(0, "a"), 1u);
  EXPECT_EQ(second.Flush(), 1u);
  EXPECT_EQ(first.CreateKey(0, "a"), 0u);
  EXPECT_EQ(second.Initialize(), 0u);
  EXPECT_EQ(RegistryInstance::sFirstInstance->refCount, 2u);
}

TEST_F(RegistryLifeTest, TheOpenerMayEndFirst) {
  Registry first(path.c_str(), kAdmin);
  Registry second(path.c_str(), kAdmin);
  ASSERT_EQ(first.Initialize(), 0u);
  ASSERT_EQ(second.Initialize(), 0u);
  ASSERT_EQ(first.CreateKey(0, "a", 3), 0u);
  first.Finalize();
  EXPECT_TRUE(TernaryFile::file.IsOpen());
  EXPECT_EQ(RegistryInstance::sFirstInstance->refCount, 1u);
  unsigned long long number = 0;
  EXPECT_EQ(first.GetDefaultValue(0, "a", &number), 1u);
  EXPECT_EQ(Read(first, "a", "v"), "status 1");
  EXPECT_EQ(second.GetDefaultValue(0, "a", &number), 1u);
  second.Finalize();
  EXPECT_FALSE(TernaryFile::file.IsOpen());
  EXPECT_EQ(second.Initialize(), 0u);
  EXPECT_EQ(second.GetDefaultValue(0, "a", &number), 0u);
  EXPECT_EQ(number, 3u);
}

TEST_F(RegistryLifeTest, TheOpenerMayEndLast) {
  Registry first(path.c_str(), kAdmin);
  Registry second(path.c_str(), kAdmin);
  ASSERT_EQ(first.Initialize(), 0u);
  ASSERT_EQ(second.Initialize(), 0u);
  second.Finalize();
  EXPECT_EQ(second.CreateKey(0, "b"), 1u);
  EXPECT_EQ(first.CreateKey(0, "a"), 0u);
  first.Finalize();
  EXPECT_FALSE(TernaryFile::file.IsOpen());
}

TEST_F(RegistryLifeTest, EndingTwiceGivesOneReferenceBack) {
  Registry first(path.c_str(), kAdmin);
  Registry second(path.c_str(), kAdmin);
  ASSERT_EQ(first.Initialize(), 0u);
  ASSERT_EQ(second.Initialize(), 0u);
  first.Finalize();
  first.Finalize();
  ASSERT_NE(RegistryInstance::sFirstInstance, nullptr);
  EXPECT_EQ(RegistryInstance::sFirstInstance->refCount, 1u);
  EXPECT_TRUE(TernaryFile::file.IsOpen());
}

TEST_F(RegistryLifeTest, AnOpenerThatCameBackHasNoOperationsWhileOthersLive) {
  Registry first(path.c_str(), kAdmin);
  Registry second(path.c_str(), kAdmin);
  ASSERT_EQ(first.Initialize(), 0u);
  ASSERT_EQ(second.Initialize(), 0u);
  first.Finalize();
  EXPECT_EQ(first.Initialize(), 0u);
  EXPECT_EQ(RegistryInstance::sFirstInstance->refCount, 2u);
  EXPECT_EQ(first.CreateKey(0, "a"), 1u);
  EXPECT_EQ(second.CreateKey(0, "a"), 1u);
  second.Finalize();
  EXPECT_EQ(first.CreateKey(0, "a"), 1u);
  first.Finalize();
  EXPECT_EQ(first.Initialize(), 0u);
  EXPECT_EQ(first.CreateKey(0, "a"), 0u);
}

// Three objects on one path, by Finalize and by their destructors.
TEST_F(RegistryLifeTest, ObjectsOnOnePathEndInEveryOrder) {
  std::string order = "012";
  do {
    for (const bool destroyed : {false, true}) {
      std::unique_ptr<Registry> objects[3];
      for (auto& object : objects) {
        object = std::make_unique<Registry>(path.c_str(), kAdmin);
        ASSERT_EQ(object->Initialize(), 0u);
      }
      for (unsigned int i = 0; i < 3; ++i) {
        ASSERT_NE(RegistryInstance::sFirstInstance, nullptr) << order;
        EXPECT_EQ(RegistryInstance::sFirstInstance->refCount, 3 - i) << order;
        std::unique_ptr<Registry>& object = objects[order[i] - '0'];
        destroyed ? object.reset() : object->Finalize();
      }
      EXPECT_EQ(RegistryInstance::sFirstInstance, nullptr) << order;
      EXPECT_FALSE(TernaryFile::file.IsOpen()) << order;
    }
  } while (std::next_permutation(order.begin(), order.end()));
  EXPECT_EQ(StructureFindings(path), "");
}

TEST_F(RegistryLifeTest, ObjectsOnThreePathsEndInEveryOrder) {
  const std::string paths[] = {folder / "p0", folder / "p1", folder / "p2"};
  std::string order = "012";
  do {
    std::unique_ptr<Registry> objects[3];
    for (unsigned int i = 0; i < 3; ++i) {
      objects[i] = std::make_unique<Registry>(paths[i].c_str(), kAdmin);
      ASSERT_EQ(objects[i]->Initialize(), 0u);
    }
    bool latestLives = true;  // the one whose file is open
    for (char object : order) {
      objects[object - '0']->Finalize();
      latestLives = latestLives && object != '2';
      EXPECT_EQ(TernaryFile::file.IsOpen(), latestLives) << order;
      unsigned long long number = 0;
      EXPECT_EQ(objects[2]->GetDefaultValue(0, "", &number), latestLives ? 53u : 1u) << order;
    }
    EXPECT_EQ(RegistryInstance::sFirstInstance, nullptr) << order;
  } while (std::next_permutation(order.begin(), order.end()));
  for (const std::string& each : paths) EXPECT_EQ(StructureFindings(each), "");
}

class TwoPathsTest : public RegistryLifeTest {
 protected:
  // The first registry is open and has a key with a value; then the second is opened.
  TwoPathsTest() {
    EXPECT_EQ(first.Initialize(), 0u);
    EXPECT_EQ(first.CreateKey(0, "key", 1), 0u);
    ExactValue value(1, "first");
    EXPECT_EQ(first.CreateValue(0, "key", "name", &value), 0u);
    EXPECT_EQ(second.Initialize(), 0u);
    EXPECT_EQ(second.CreateKey(0, "other", 2), 0u);
    firstBytes = GetFile(path);
    secondBytes = GetFile(otherPath);
  }
  // The destructors of the objects run before the base's.
  std::string otherPath = folder / "other";
  Registry first{path.c_str(), kAdmin};
  Registry second{otherPath.c_str(), kAdmin};
  std::string firstBytes;
  std::string secondBytes;
};

TEST_F(TwoPathsTest, TheFirstAnswersAnErrorAndWritesToNeitherFile) {
  ExactValue value(1, "text");
  unsigned long long number = 0;
  RegistryInfo info = {};
  EXPECT_EQ(first.CreateKey(0, "new"), 5u);
  EXPECT_EQ(first.CreateKey(0, "key"), 5u);
  EXPECT_EQ(first.CreateValue(0, "key", "new", &value), 5u);
  EXPECT_EQ(first.CreateValue(0, "key", "new", nullptr), 5u);
  EXPECT_EQ(first.SetValue(0, "key", "name", &value), 5u);
  EXPECT_EQ(first.DeleteValue(0, "key", "name"), 5u);
  EXPECT_EQ(first.GetDefaultValue(0, "key", &number), 5u);
  EXPECT_EQ(first.SetDefaultValue(0, "key", 9), 5u);
  EXPECT_EQ(Read(first, "key", "name"), "status 5");
  EXPECT_EQ(first.GetRegistryInfo(&info), 5u);
  EXPECT_EQ(GetFile(path), firstBytes);
  EXPECT_EQ(GetFile(otherPath), secondBytes);
}

TEST_F(TwoPathsTest, TheSecondWorksOnItsOwnFile) {
  EXPECT_EQ(second.CreateKey(0, "mine"), 0u);
  unsigned long long number = 0;
  EXPECT_EQ(second.GetDefaultValue(0, "key", &number), 2u);
  EXPECT_EQ(GetFile(path), firstBytes);
  EXPECT_NE(GetFile(otherPath), secondBytes);
  EXPECT_EQ(StructureFindings(otherPath), "");
}

TEST_F(TwoPathsTest, EndingTheFirstDoesNotCloseTheSecond) {
  first.Finalize();
  EXPECT_EQ(second.CreateKey(0, "mine"), 0u);
  EXPECT_EQ(GetFile(path), firstBytes);
}

TEST_F(TwoPathsTest, EndingTheSecondDoesNotRevealItsFileToTheFirst) {
  second.Finalize();
  EXPECT_EQ(Read(first, "key", "name"), "status 5");
  EXPECT_EQ(first.CreateKey(0, "new"), 5u);
  EXPECT_EQ(GetFile(path), firstBytes);
  EXPECT_EQ(GetFile(otherPath), secondBytes);
}

TEST_F(TwoPathsTest, TheFirstWorksAgainOnceItIsOpenedAgain) {
  first.Finalize();
  ASSERT_EQ(first.Initialize(), 0u);
  EXPECT_EQ(Read(first, "key", "name"), "type 1: first");
  unsigned long long number = 0;
  EXPECT_EQ(second.GetDefaultValue(0, "other", &number), 5u);
  EXPECT_EQ(first.CreateKey(0, "new"), 0u);
  EXPECT_EQ(GetFile(otherPath), secondBytes);
  EXPECT_EQ(StructureFindings(path), "");
}

}  // namespace

}  // namespace tamu::registry
