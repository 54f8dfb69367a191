// Frameworks that cannot be made.
#include <sys/stat.h>

#include "framework/YAX.h"
#include "framework/YAXStatus.h"
#include "tests/framework/PrintedMessages.h"
#include "tests/platform/ChildProcess.h"
#include "tests/platform/TestFiles.h"

namespace {

constexpr char kBeginsAndEnds[] = "3 *********** YAX ***********\n3 *********** ~YAX ***********\n";

// The status is that of a registry that fails, and nothing is left of the framework.
void ExpectNotMade(const std::string& path) {
  PrintedMessages printed;
  const int descriptor = NextDescriptor();
  EXPECT_EQ(yax_framework::kRegistryFailed, CreateYAX(path.c_str()));
  EXPECT_EQ(kBeginsAndEnds, printed.Take());
  void* view = nullptr;
  EXPECT_EQ(yax_framework::kNoFramework, GetYAXInstance(IID_IYAX, &view));
  EXPECT_EQ(yax_framework::kOk, DestroyYAX());
  EXPECT_EQ("", printed.Take());
  EXPECT_EQ(NextDescriptor(), descriptor);
}

// A framework on the path works, and ends.
void ExpectMade(const std::string& path) {
  ASSERT_EQ(yax_framework::kOk, CreateYAX(path.c_str()));
  void* view = nullptr;
  ASSERT_EQ(yax_framework::kOk, GetYAXInstance(IID_IYAXRegistry, &view));
  IYAXRegistry* registry = static_cast<IYAXRegistry*>(view);
  EXPECT_EQ(0u, registry->CreateKey(0, "key"));
  EXPECT_EQ(0u, registry->DeleteKey(0, "key"));
  EXPECT_EQ(1u, registry->Release());
  EXPECT_EQ(yax_framework::kOk, DestroyYAX());
}

class YAXFailures : public ::testing::Test {
 protected:
  // The bytes of a sound file.
  std::string SoundFile() {
    ExpectMade(folder / "sound");
    return GetFile(folder / "sound");
  }

  TempDir folder;
  const std::string path = folder / "registry";
};

TEST_F(YAXFailures, AFolder) {
  std::filesystem::create_directory(path);
  ExpectNotMade(path);
  EXPECT_TRUE(std::filesystem::is_directory(path));
  std::filesystem::remove(path);
  ExpectMade(path);
}

TEST_F(YAXFailures, AFolderThatIsNotThere) {
  ExpectNotMade(folder / "absent/registry");
  EXPECT_FALSE(std::filesystem::exists(folder / "absent"));
}

TEST_F(YAXFailures, FilesThatAreNoRegistry) {
  const std::string sound = SoundFile();
  std::string otherVersion = sound;
  otherVersion[8] = 3;
  const std::string files[] = {
      "", "x", std::string(75888, 'x'), sound.substr(0, 83), sound.substr(0, 4219), otherVersion};
  for (const std::string& bytes : files) {
    PutFile(path, bytes);
    ExpectNotMade(path);
    EXPECT_TRUE(GetFile(path) == bytes);
  }
  PutFile(path, sound);
  ExpectMade(path);
}

TEST_F(YAXFailures, TheEmptyPath) {
  ExpectNotMade("");
}

TEST_F(YAXFailures, AFileWithoutRights) {
  const std::string sound = SoundFile();
  PutFile(path, sound);
  ASSERT_EQ(0, chmod((folder / ".").c_str(), 0777));
  ASSERT_EQ(0, chmod(path.c_str(), 0));
  EXPECT_TRUE(InChild([&] {
    if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)) return false;
    void* view = nullptr;
    return CreateYAX(path.c_str()) == 0xE000000D && GetYAXInstance(IID_IYAX, &view) == 0xE0000005 &&
           CreateYAX((folder / "other").c_str()) == 0 && DestroyYAX() == 0;
  }));
  ASSERT_EQ(0, chmod(path.c_str(), 0600));
  EXPECT_TRUE(GetFile(path) == sound);
  ExpectMade(path);
}

TEST_F(YAXFailures, NoDescriptorLeft) {
  const std::string sound = SoundFile();
  PutFile(path, sound);
  EXPECT_TRUE(InChild([&] {
    LimitDescriptors(static_cast<unsigned long>(NextDescriptor()));
    void* view = nullptr;
    return CreateYAX(path.c_str()) == 0xE000000D && GetYAXInstance(IID_IYAX, &view) == 0xE0000005;
  }));
  EXPECT_TRUE(GetFile(path) == sound);
}

TEST_F(YAXFailures, LeaveAnOlderFrameworkAlone) {
  PutFile(path, "no registry");
  ASSERT_EQ(yax_framework::kOk, CreateYAX((folder / "first").c_str()));
  void* view = nullptr;
  ASSERT_EQ(yax_framework::kOk, GetYAXInstance(IID_IYAXRegistry, &view));
  IYAXRegistry* first = static_cast<IYAXRegistry*>(view);
  DestroyYAX();
  ExpectNotMade(path);
  EXPECT_EQ(0u, first->CreateKey(0, "key"));
  EXPECT_EQ(0u, first->Release());
}

}  // namespace
