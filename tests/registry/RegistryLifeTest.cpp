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
    EXPECT_EQ(nullptr, RegistryInstance::sFirstInstance);
    EXPECT_FALSE(TernaryFile::file.IsOpen());
  }

  TempDir folder;
  const std::string path = folder / "registry";
};

TEST_F(RegistryLifeTest, AnObjectThatWasNeverOpenedEndsQuietly) {
  Registry registry(path.c_str(), kAdmin);
  registry.Finalize();
  EXPECT_EQ("(cannot be read)", GetFile(path));
}

TEST_F(RegistryLifeTest, OpeningTwiceTakesOneReference) {
  Registry registry(path.c_str(), kAdmin);
  EXPECT_EQ(status::kOk, registry.Initialize());
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "a"));
  EXPECT_EQ(status::kOk, registry.Initialize());
  EXPECT_EQ(1u, RegistryInstance::sFirstInstance->refCount);
  EXPECT_EQ(status::kExists, registry.CreateKey(0, "a"));
  registry.Finalize();
  EXPECT_EQ(nullptr, RegistryInstance::sFirstInstance);
}

TEST_F(RegistryLifeTest, TheSecondObjectSharesTheInstanceAndHasNoOperations) {
  Registry first(path.c_str(), kAdmin);
  Registry second(path.c_str(), kAdmin);
  EXPECT_EQ(status::kOk, first.Initialize());
  EXPECT_EQ(status::kOk, second.Initialize());
  EXPECT_EQ(2u, RegistryInstance::sFirstInstance->refCount);
  EXPECT_EQ(nullptr, RegistryInstance::sFirstInstance->next);
  EXPECT_EQ(status::kNoRight, second.CreateKey(0, "a"));
  EXPECT_EQ(1u, second.Flush());
  EXPECT_EQ(status::kOk, first.CreateKey(0, "a"));
  EXPECT_EQ(status::kOk, second.Initialize());
  EXPECT_EQ(2u, RegistryInstance::sFirstInstance->refCount);
}

TEST_F(RegistryLifeTest, TheOpenerMayEndFirst) {
  Registry first(path.c_str(), kAdmin);
  Registry second(path.c_str(), kAdmin);
  ASSERT_EQ(status::kOk, first.Initialize());
  ASSERT_EQ(status::kOk, second.Initialize());
  ASSERT_EQ(status::kOk, first.CreateKey(0, "a", 3));
  first.Finalize();
  EXPECT_TRUE(TernaryFile::file.IsOpen());
  EXPECT_EQ(1u, RegistryInstance::sFirstInstance->refCount);
  unsigned long long number = 0;
  EXPECT_EQ(status::kNoRight, first.GetDefaultValue(0, "a", &number));
  EXPECT_EQ("status 1", Read(first, "a", "v"));
  EXPECT_EQ(status::kNoRight, second.GetDefaultValue(0, "a", &number));
  second.Finalize();
  EXPECT_FALSE(TernaryFile::file.IsOpen());
  EXPECT_EQ(status::kOk, second.Initialize());
  EXPECT_EQ(status::kOk, second.GetDefaultValue(0, "a", &number));
  EXPECT_EQ(3u, number);
}

TEST_F(RegistryLifeTest, TheOpenerMayEndLast) {
  Registry first(path.c_str(), kAdmin);
  Registry second(path.c_str(), kAdmin);
  ASSERT_EQ(status::kOk, first.Initialize());
  ASSERT_EQ(status::kOk, second.Initialize());
  second.Finalize();
  EXPECT_EQ(status::kNoRight, second.CreateKey(0, "b"));
  EXPECT_EQ(status::kOk, first.CreateKey(0, "a"));
  first.Finalize();
  EXPECT_FALSE(TernaryFile::file.IsOpen());
}

TEST_F(RegistryLifeTest, EndingTwiceGivesOneReferenceBack) {
  Registry first(path.c_str(), kAdmin);
  Registry second(path.c_str(), kAdmin);
  ASSERT_EQ(status::kOk, first.Initialize());
  ASSERT_EQ(status::kOk, second.Initialize());
  first.Finalize();
  first.Finalize();
  ASSERT_NE(nullptr, RegistryInstance::sFirstInstance);
  EXPECT_EQ(1u, RegistryInstance::sFirstInstance->refCount);
  EXPECT_TRUE(TernaryFile::file.IsOpen());
}

TEST_F(RegistryLifeTest, AnOpenerThatCameBackHasNoOperationsWhileOthersLive) {
  Registry first(path.c_str(), kAdmin);
  Registry second(path.c_str(), kAdmin);
  ASSERT_EQ(status::kOk, first.Initialize());
  ASSERT_EQ(status::kOk, second.Initialize());
  first.Finalize();
  EXPECT_EQ(status::kOk, first.Initialize());
  EXPECT_EQ(2u, RegistryInstance::sFirstInstance->refCount);
  EXPECT_EQ(status::kNoRight, first.CreateKey(0, "a"));
  EXPECT_EQ(status::kNoRight, second.CreateKey(0, "a"));
  second.Finalize();
  EXPECT_EQ(status::kNoRight, first.CreateKey(0, "a"));
  first.Finalize();
  EXPECT_EQ(status::kOk, first.Initialize());
  EXPECT_EQ(status::kOk, first.CreateKey(0, "a"));
}

// Three objects on one path, by Finalize and by their destructors.
TEST_F(RegistryLifeTest, ObjectsOnOnePathEndInEveryOrder) {
  std::string order = "012";
  do {
    for (const bool destroyed : {false, true}) {
      std::unique_ptr<Registry> objects[3];
      for (auto& object : objects) {
        object = std::make_unique<Registry>(path.c_str(), kAdmin);
        ASSERT_EQ(status::kOk, object->Initialize());
      }
      for (unsigned int i = 0; i < 3; ++i) {
        ASSERT_NE(nullptr, RegistryInstance::sFirstInstance) << order;
        EXPECT_EQ(RegistryInstance::sFirstInstance->refCount, 3 - i) << order;
        std::unique_ptr<Registry>& object = objects[order[i] - '0'];
        destroyed ? object.reset() : object->Finalize();
      }
      EXPECT_EQ(nullptr, RegistryInstance::sFirstInstance) << order;
      EXPECT_FALSE(TernaryFile::file.IsOpen()) << order;
    }
  } while (std::next_permutation(order.begin(), order.end()));
  EXPECT_EQ("", StructureFindings(path));
}

TEST_F(RegistryLifeTest, ObjectsOnThreePathsEndInEveryOrder) {
  const std::string paths[] = {folder / "p0", folder / "p1", folder / "p2"};
  std::string order = "012";
  do {
    std::unique_ptr<Registry> objects[3];
    for (unsigned int i = 0; i < 3; ++i) {
      objects[i] = std::make_unique<Registry>(paths[i].c_str(), kAdmin);
      ASSERT_EQ(status::kOk, objects[i]->Initialize());
    }
    bool latestLives = true;  // the one whose file is open
    for (char object : order) {
      objects[object - '0']->Finalize();
      latestLives = latestLives && object != '2';
      EXPECT_EQ(TernaryFile::file.IsOpen(), latestLives) << order;
      unsigned long long number = 0;
      EXPECT_EQ(objects[2]->GetDefaultValue(0, "", &number), latestLives ? 53u : 1u) << order;
    }
    EXPECT_EQ(nullptr, RegistryInstance::sFirstInstance) << order;
  } while (std::next_permutation(order.begin(), order.end()));
  for (const std::string& each : paths) EXPECT_EQ("", StructureFindings(each));
}

class TwoPathsTest : public RegistryLifeTest {
 protected:
  // The first registry is open and has a key with a value; then the second is opened.
  TwoPathsTest() {
    EXPECT_EQ(status::kOk, first.Initialize());
    EXPECT_EQ(status::kOk, first.CreateKey(0, "key", 1));
    ExactValue value(1, "first");
    EXPECT_EQ(status::kOk, first.CreateValue(0, "key", "name", &value));
    EXPECT_EQ(status::kOk, second.Initialize());
    EXPECT_EQ(status::kOk, second.CreateKey(0, "other", 2));
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
  EXPECT_EQ(status::kInputOutput, first.CreateKey(0, "new"));
  EXPECT_EQ(status::kInputOutput, first.CreateKey(0, "key"));
  EXPECT_EQ(status::kInputOutput, first.CreateValue(0, "key", "new", &value));
  EXPECT_EQ(status::kInputOutput, first.CreateValue(0, "key", "new", nullptr));
  EXPECT_EQ(status::kInputOutput, first.SetValue(0, "key", "name", &value));
  EXPECT_EQ(status::kInputOutput, first.DeleteValue(0, "key", "name"));
  EXPECT_EQ(status::kInputOutput, first.GetDefaultValue(0, "key", &number));
  EXPECT_EQ(status::kInputOutput, first.SetDefaultValue(0, "key", 9));
  EXPECT_EQ("status 5", Read(first, "key", "name"));
  EXPECT_EQ(status::kInputOutput, first.GetRegistryInfo(&info));
  EXPECT_EQ(GetFile(path), firstBytes);
  EXPECT_EQ(GetFile(otherPath), secondBytes);
}

TEST_F(TwoPathsTest, TheSecondWorksOnItsOwnFile) {
  EXPECT_EQ(status::kOk, second.CreateKey(0, "mine"));
  unsigned long long number = 0;
  EXPECT_EQ(status::kNotFound, second.GetDefaultValue(0, "key", &number));
  EXPECT_EQ(GetFile(path), firstBytes);
  EXPECT_NE(GetFile(otherPath), secondBytes);
  EXPECT_EQ("", StructureFindings(otherPath));
}

TEST_F(TwoPathsTest, EndingTheFirstDoesNotCloseTheSecond) {
  first.Finalize();
  EXPECT_EQ(status::kOk, second.CreateKey(0, "mine"));
  EXPECT_EQ(GetFile(path), firstBytes);
}

TEST_F(TwoPathsTest, EndingTheSecondDoesNotRevealItsFileToTheFirst) {
  second.Finalize();
  EXPECT_EQ("status 5", Read(first, "key", "name"));
  EXPECT_EQ(status::kInputOutput, first.CreateKey(0, "new"));
  EXPECT_EQ(GetFile(path), firstBytes);
  EXPECT_EQ(GetFile(otherPath), secondBytes);
}

TEST_F(TwoPathsTest, TheFirstWorksAgainOnceItIsOpenedAgain) {
  first.Finalize();
  ASSERT_EQ(status::kOk, first.Initialize());
  EXPECT_EQ("type 1: first", Read(first, "key", "name"));
  unsigned long long number = 0;
  EXPECT_EQ(status::kInputOutput, second.GetDefaultValue(0, "other", &number));
  EXPECT_EQ(status::kOk, first.CreateKey(0, "new"));
  EXPECT_EQ(GetFile(otherPath), secondBytes);
  EXPECT_EQ("", StructureFindings(path));
}

}  // namespace

}  // namespace tamu::registry
