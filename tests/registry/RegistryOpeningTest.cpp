// Files that cannot be opened: each answer, and that nothing is lost.
#include <sys/stat.h>

#include "registry/store/TernaryFile.h"
#include "tests/registry/RegistryRig.h"

namespace tamu::registry {

namespace {

class RegistryOpeningTest : public ::testing::Test {
 protected:
  // The bytes of a sound registry with one key.
  std::string SoundFile() {
    const std::string source = folder / "source";
    {
      Registry registry(source.c_str(), kAdmin);
      EXPECT_EQ(status::kOk, registry.Initialize());
      EXPECT_EQ(status::kOk, registry.CreateKey(0, "kept", 77));
    }
    return GetFile(source);
  }
  static bool HasKey(Registry& registry) {
    unsigned long long number = 0;
    return registry.GetDefaultValue(0, "kept", &number) == 0 && number == 77;
  }
  // Initialize answers `status`, the file stays as it is and the object has no operations.
  void ExpectRefused(const std::string& bytes, unsigned int status) {
    PutFile(path, bytes);
    Registry registry(path.c_str(), kAdmin);
    EXPECT_EQ(registry.Initialize(), status);
    EXPECT_EQ(status::kNoRight, registry.CreateKey(0, "a"));
    EXPECT_EQ(1u, registry.Flush());
    registry.Finalize();
    EXPECT_EQ(status::kNoRight, registry.CreateKey(0, "a"));
    EXPECT_EQ(GetFile(path), bytes);
    EXPECT_EQ(nullptr, RegistryInstance::sFirstInstance);
    EXPECT_FALSE(TernaryFile::file.IsOpen());
  }
  ~RegistryOpeningTest() override { EXPECT_EQ(nullptr, RegistryInstance::sFirstInstance); }

  TempDir folder;
  const std::string path = folder / "registry";
};

TEST_F(RegistryOpeningTest, AnEmptyFileIsInvalid) {
  ExpectRefused("", 59);
}

TEST_F(RegistryOpeningTest, AFileShorterThanItsHeaderIsInvalid) {
  ExpectRefused(SoundFile().substr(0, 83), 59);
}

TEST_F(RegistryOpeningTest, AFileThatIsNoRegistryIsInvalid) {
  ExpectRefused(std::string(75888, 'x'), 59);
}

TEST_F(RegistryOpeningTest, AWrongByteInTheMagicWordsIsInvalid) {
  const std::string sound = SoundFile();
  for (size_t i = 0; i < 8; ++i) {
    std::string bytes = sound;
    bytes[i] = static_cast<char>(bytes[i] ^ 1);
    ExpectRefused(bytes, 59);
  }
}

TEST_F(RegistryOpeningTest, AnotherVersionIsNotOpened) {
  std::string bytes = SoundFile();
  bytes[8] = 3;
  ExpectRefused(bytes, 12);
  TernaryFile store;
  EXPECT_EQ(status::kInvalidFile, store.Initialize(path.c_str()));
}

TEST_F(RegistryOpeningTest, AnotherRevisionIsNotOpened) {
  std::string bytes = SoundFile();
  bytes[12] = 2;
  ExpectRefused(bytes, 12);
}

TEST_F(RegistryOpeningTest, AFileThatEndsBehindItsMagicIsNotOpened) {
  const std::string sound = SoundFile();
  for (size_t size : {size_t{84}, size_t{4179}, size_t{4219}}) {
    ExpectRefused(sound.substr(0, size), 12);
  }
}

TEST_F(RegistryOpeningTest, AFolderIsNotOpened) {
  std::filesystem::create_directory(path);
  Registry registry(path.c_str(), kAdmin);
  EXPECT_EQ(status::kNoMemory, registry.Initialize());
  EXPECT_TRUE(std::filesystem::is_directory(path));
  EXPECT_EQ(status::kNoRight, registry.CreateKey(0, "a"));
}

TEST_F(RegistryOpeningTest, NoFileIsMadeInAFolderThatIsNotThere) {
  const std::string nowhere = folder / "absent/registry";
  Registry registry(nowhere.c_str(), kAdmin);
  EXPECT_EQ(status::kNoMemory, registry.Initialize());
  EXPECT_FALSE(std::filesystem::exists(folder / "absent"));
}

TEST_F(RegistryOpeningTest, AFileWithoutPermissionIsNotOpenedAndNotEmptied) {
  const std::string bytes = SoundFile();
  PutFile(path, bytes);
  chmod((folder / ".").c_str(), 0777);
  for (mode_t mode : {mode_t{0000}, mode_t{0444}, mode_t{0222}}) {
    chmod(path.c_str(), mode);
    EXPECT_TRUE(InChild([&] {
      if (!DropRights()) return false;
      Registry registry(path.c_str(), kAdmin);
      return registry.Initialize() == 12 && registry.CreateKey(0, "a") == 1;
    })) << "mode "
        << mode;
    chmod(path.c_str(), 0666);
    EXPECT_EQ(GetFile(path), bytes);
  }
}

TEST_F(RegistryOpeningTest, AFolderThatCannotBeWrittenGetsNoFile) {
  chmod((folder / ".").c_str(), 0555);
  EXPECT_TRUE(InChild([&] {
    if (!DropRights()) return false;
    Registry registry(path.c_str(), kAdmin);
    return registry.Initialize() == 12 && registry.Flush() == 1;
  }));
  chmod((folder / ".").c_str(), 0755);
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(RegistryOpeningTest, AProcessOutOfDescriptorsDoesNotEmptyTheFile) {
  const std::string bytes = SoundFile();
  PutFile(path, bytes);
  EXPECT_TRUE(InChild([&] {
    Registry registry(path.c_str(), kAdmin);
    struct rlimit before = {};
    getrlimit(RLIMIT_NOFILE, &before);
    LimitDescriptors(static_cast<unsigned long>(NextDescriptor()));
    if (registry.Initialize() != 12 || registry.CreateKey(0, "a") != 1) return false;
    setrlimit(RLIMIT_NOFILE, &before);
    return registry.Initialize() == 0 && HasKey(registry);
  }));
  EXPECT_EQ(GetFile(path), bytes);
}

TEST_F(RegistryOpeningTest, ARefusedObjectHoldsItsInstanceUntilItIsFinalised) {
  PutFile(path, "no registry");
  Registry registry(path.c_str(), kAdmin);
  ASSERT_EQ(status::kInvalidFile, registry.Initialize());
  ASSERT_NE(nullptr, RegistryInstance::sFirstInstance);
  EXPECT_EQ(1u, RegistryInstance::sFirstInstance->refCount);
  EXPECT_EQ(status::kInvalidFile, registry.Initialize());
  EXPECT_EQ(1u, RegistryInstance::sFirstInstance->refCount);
  registry.Finalize();
  EXPECT_EQ(nullptr, RegistryInstance::sFirstInstance);
  registry.Finalize();
}

TEST_F(RegistryOpeningTest, ARepairedFileIsOpenedByTheObjectThatRefusedIt) {
  const std::string bytes = SoundFile();
  for (const bool finalised : {false, true}) {
    PutFile(path, "");
    Registry registry(path.c_str(), kAdmin);
    ASSERT_EQ(status::kInvalidFile, registry.Initialize());
    if (finalised) registry.Finalize();
    PutFile(path, bytes);
    EXPECT_EQ(status::kOk, registry.Initialize());
    EXPECT_TRUE(HasKey(registry));
  }
}

TEST_F(RegistryOpeningTest, ASecondObjectMayOpenWhatTheFirstRefused) {
  PutFile(path, "");
  Registry first(path.c_str(), kAdmin);
  ASSERT_EQ(status::kInvalidFile, first.Initialize());
  PutFile(path, SoundFile());
  Registry second(path.c_str(), kAdmin);
  EXPECT_EQ(status::kOk, second.Initialize());
  EXPECT_TRUE(HasKey(second));
  first.Finalize();
  EXPECT_TRUE(HasKey(second));
  EXPECT_EQ(status::kNoRight, first.CreateKey(0, "a"));
}

TEST_F(RegistryOpeningTest, AnObjectThatFailedMayTryAgain) {
  std::filesystem::create_directory(path);
  Registry registry(path.c_str(), kAdmin);
  EXPECT_EQ(status::kNoMemory, registry.Initialize());
  EXPECT_EQ(nullptr, RegistryInstance::sFirstInstance);
  EXPECT_EQ(status::kNoMemory, registry.Initialize());
  std::filesystem::remove(path);
  EXPECT_EQ(status::kOk, registry.Initialize());
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "a"));
}

TEST_F(RegistryOpeningTest, AFailedObjectIsFinalisedAsOftenAsLiked) {
  std::filesystem::create_directory(path);
  Registry registry(path.c_str(), kAdmin);
  EXPECT_EQ(status::kNoMemory, registry.Initialize());
  registry.Finalize();
  registry.Finalize();
  EXPECT_EQ(1u, registry.Flush());
}

// The check of the file does not touch what another registry has open.
TEST_F(RegistryOpeningTest, ARefusedFileLeavesAnotherRegistryWorking) {
  const std::string other = folder / "other";
  Registry open(other.c_str(), kAdmin);
  ASSERT_EQ(status::kOk, open.Initialize());
  PutFile(path, "no registry");
  Registry refused(path.c_str(), kAdmin);
  EXPECT_EQ(status::kInvalidFile, refused.Initialize());
  EXPECT_EQ(status::kOk, open.CreateKey(0, "a"));
  refused.Finalize();
  EXPECT_EQ(status::kOk, open.CreateKey(0, "b"));
  EXPECT_EQ("", StructureFindings(other));
}

TEST_F(RegistryOpeningTest, AFileThatCannotBeOpenedLeavesAnotherRegistryWorking) {
  const std::string other = folder / "other";
  Registry open(other.c_str(), kAdmin);
  ASSERT_EQ(status::kOk, open.Initialize());
  std::filesystem::create_directory(path);
  Registry refused(path.c_str(), kAdmin);
  EXPECT_EQ(status::kNoMemory, refused.Initialize());
  EXPECT_EQ(status::kOk, open.CreateKey(0, "a"));
  EXPECT_EQ("", StructureFindings(other));
}

// A registry that is open on a file of its own while others are refused.
class BesideAnOpenRegistryTest : public RegistryOpeningTest {
 protected:
  BesideAnOpenRegistryTest() {
    EXPECT_EQ(status::kOk, open.Initialize());
    EXPECT_EQ(status::kOk, open.CreateKey(0, "kept", 77));
  }
  ~BesideAnOpenRegistryTest() override {
    open.Finalize();
    EXPECT_EQ("", StructureFindings(other));
  }
  // Opening `where` answers 12, twice, and the open registry goes on, with and without a handle.
  void ExpectOpenGoesOn(const std::string& where) {
    unsigned int handle = 0;
    ASSERT_EQ(status::kOk, open.OpenKey("", &handle));
    const int descriptor = NextDescriptor();
    {
      Registry refused(where.c_str(), kAdmin);
      EXPECT_EQ(status::kNoMemory, refused.Initialize());
      EXPECT_EQ(status::kOk, open.CreateKey(handle, "through"));
      EXPECT_EQ(status::kNoMemory, refused.Initialize());
      EXPECT_EQ(status::kNoRight, refused.CreateKey(0, "a"));
      EXPECT_TRUE(HasKey(open));
      refused.Finalize();
      EXPECT_EQ(NextDescriptor(), descriptor);
    }
    EXPECT_TRUE(HasKey(open));
    EXPECT_EQ(status::kOk, open.DeleteKey(0, "through"));
  }

  // In a process that was forked, which has got nothing that is open.
  bool OpenAgain() {
    open.Finalize();
    return open.Initialize() == 0;
  }

  const std::string other = folder / "other";
  Registry open{other.c_str(), kAdmin};
};

TEST_F(BesideAnOpenRegistryTest, AFileOfAnotherVersionTakesNothingAway) {
  std::string bytes = GetFile(other);
  bytes[8] = 3;
  PutFile(path, bytes);
  ExpectOpenGoesOn(path);
  EXPECT_EQ(GetFile(path), bytes);
}

TEST_F(BesideAnOpenRegistryTest, AFileThatEndsBehindItsMagicTakesNothingAway) {
  const std::string sound = GetFile(other);
  for (size_t size : {size_t{84}, size_t{4179}, size_t{4219}}) {
    SCOPED_TRACE(size);
    PutFile(path, sound.substr(0, size));
    ExpectOpenGoesOn(path);
    EXPECT_EQ(GetFile(path).size(), size);
  }
}

TEST_F(BesideAnOpenRegistryTest, APathWithoutFileTakesNothingAway) {
  const std::string loop = folder / "loop";
  ASSERT_EQ(0, symlink("loop", loop.c_str()));
  for (const std::string& where :
       {std::string(), std::string(5000, 'x'), folder / "", folder / "absent/registry",
        other + "/registry", loop, std::string("/dev/null")}) {
    SCOPED_TRACE(where.substr(0, 100));
    ExpectOpenGoesOn(where);
  }
}

TEST_F(BesideAnOpenRegistryTest, AFifoNeitherHangsNorTakesAnythingAway) {
  ASSERT_EQ(0, mkfifo(path.c_str(), 0666));
  ExpectOpenGoesOn(path);
}

// The new file is made and cannot be filled.
TEST_F(BesideAnOpenRegistryTest, AFullDiskTakesNothingAway) {
  EXPECT_TRUE(InChild([&] {
    if (!OpenAgain()) return false;
    LimitFileSize(50000);
    Registry refused(path.c_str(), kAdmin);
    return refused.Initialize() == 12 && HasKey(open) && open.SetDefaultValue(0, "kept", 1) == 0;
  }));
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(BesideAnOpenRegistryTest, AProcessOutOfDescriptorsLosesNothing) {
  PutFile(path, GetFile(other));
  EXPECT_TRUE(InChild([&] {
    if (!OpenAgain()) return false;
    LimitDescriptors(static_cast<unsigned long>(NextDescriptor()));
    Registry refused(path.c_str(), kAdmin);
    return refused.Initialize() == 12 && HasKey(open);
  }));
}

// A link is another path, and its file the same: the newer opening takes over, as with any other
// path, and the older object changes nothing any more.
TEST_F(BesideAnOpenRegistryTest, ALinkToTheOpenFileTakesItOver) {
  const std::string links[] = {folder / "soft", folder / "hard"};
  ASSERT_EQ(0, symlink(other.c_str(), links[0].c_str()));
  ASSERT_EQ(0, link(other.c_str(), links[1].c_str()));
  for (const std::string& each : links) {
    SCOPED_TRACE(each);
    Registry second(each.c_str(), kAdmin);
    ASSERT_EQ(status::kOk, second.Initialize());
    EXPECT_TRUE(HasKey(second));
    EXPECT_EQ(status::kInputOutput, open.SetDefaultValue(0, "kept", 1));
    open.Finalize();
    EXPECT_TRUE(HasKey(second));
    second.Finalize();
    ASSERT_EQ(status::kOk, open.Initialize());
    EXPECT_TRUE(HasKey(open));
  }
}

TEST_F(RegistryOpeningTest, ALinkThatLeadsNowhereGetsItsFile) {
  const std::string link = folder / "link";
  ASSERT_EQ(0, symlink("registry", link.c_str()));
  Registry registry(link.c_str(), kAdmin);
  EXPECT_EQ(status::kOk, registry.Initialize());
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "a"));
  EXPECT_EQ(75888u, GetFile(path).size());
}

// Renaming another file over an open one: the registry goes on with the old file, and finds the new
// one when it is opened again.
TEST_F(RegistryOpeningTest, AFileThatIsReplacedIsFoundByTheNextOpening) {
  const std::string replacement = SoundFile();
  Registry registry(path.c_str(), kAdmin);
  ASSERT_EQ(status::kOk, registry.Initialize());
  PutFile(folder / "new", replacement);
  ASSERT_EQ(0, std::rename((folder / "new").c_str(), path.c_str()));
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "lost"));
  EXPECT_EQ(status::kOk, registry.Initialize());
  EXPECT_FALSE(HasKey(registry));
  EXPECT_EQ(GetFile(path), replacement);
  registry.Finalize();
  ASSERT_EQ(status::kOk, registry.Initialize());
  EXPECT_TRUE(HasKey(registry));
}

}  // namespace

}  // namespace tamu::registry
