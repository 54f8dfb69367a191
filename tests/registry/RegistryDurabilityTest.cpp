// What changes survive, and what a journal beside a registry is good for. The journals here are put
// together byte by byte.
#include <sys/stat.h>

#include <array>

#include "tests/registry/RegistryRig.h"
#include "tests/support/JournalBytes.h"

namespace tamu::registry {
namespace {

using namespace journal_bytes;

class RegistryDurability : public ::testing::Test {
 protected:
  void SetUp() override {
    Registry registry(path.c_str(), kAdmin);
    ASSERT_EQ(status::kOk, registry.Initialize());
    ASSERT_EQ(status::kOk, registry.CreateKey(0, "key", 7));
    registry.Finalize();
    before = GetFile(path);
    after = before;
    after.replace(84, 4, "once");
  }

  // What the file is when it was opened beside the journal, which is gone afterwards.
  std::string OpenedBeside(const std::string& bytes) {
    PutFile(path, before);
    PutFile(journal, bytes);
    Registry registry(path.c_str(), kAdmin);
    EXPECT_EQ(status::kOk, registry.Initialize());
    registry.Finalize();
    EXPECT_EQ("(cannot be read)", GetFile(journal));
    return GetFile(path);
  }

  // After a large change the journal has its size again with the next small one.
  void ExpectSmallAgain(Registry& registry) {
    const std::string backup = dir / "backup";
    const std::string data(1024, 'd');
    ExactValue value(1, data);
    ASSERT_EQ(status::kOk, registry.CreateKey(0, "large", 7));
    for (unsigned int i = 0; i < 120; ++i) {
      ASSERT_EQ(status::kOk, registry.CreateValue(0, "large", std::to_string(i).c_str(), &value));
    }
    ASSERT_EQ(status::kOk, registry.BackupKey(0, "large", backup.c_str()));
    ASSERT_EQ(status::kOk, registry.RestoreKey(0, "large", backup.c_str()));
    EXPECT_GT(GetFile(journal).size(), 65536u);
    ASSERT_EQ(status::kOk, registry.SetDefaultValue(0, "large", 8));
    EXPECT_EQ(65536u, GetFile(journal).size());
    ASSERT_EQ(status::kOk, registry.DeleteKey(0, "large"));
  }

  TempDir dir;
  const std::string path = dir / "registry";
  const std::string journal = path + ".journal";
  std::string before;
  std::string after;
};

TEST_F(RegistryDurability, TheJournalIsThereWhileTheRegistryIsOpen) {
  Registry registry(path.c_str(), kAdmin);
  RegistryOptions options;
  options.durability = Durability::kPower;
  ASSERT_EQ(status::kOk, registry.SetOptions(options));
  ASSERT_EQ(status::kOk, registry.Initialize());
  EXPECT_EQ(registry.EffectiveDurability(), Durability::kPower);
  EXPECT_EQ(65536u, GetFile(journal).size());
  EXPECT_EQ(0u, registry.Sync());
  registry.Finalize();
  EXPECT_EQ("(cannot be read)", GetFile(journal));
  EXPECT_EQ(registry.EffectiveDurability(), Durability::kNone);
  EXPECT_EQ(1u, registry.Sync());
}

TEST_F(RegistryDurability, OptionsAreForARegistryThatIsNotOpen) {
  Registry registry(path.c_str(), kAdmin);
  RegistryOptions options;
  options.durability = static_cast<Durability>(3);
  EXPECT_EQ(status::kBadArgument, registry.SetOptions(options));
  options.durability = Durability::kNone;
  EXPECT_EQ(status::kOk, registry.SetOptions(options));
  ASSERT_EQ(status::kOk, registry.Initialize());
  EXPECT_EQ(status::kBadArgument, registry.SetOptions(options));
  EXPECT_EQ(registry.EffectiveDurability(), Durability::kNone);
  EXPECT_EQ("(cannot be read)", GetFile(journal));
}

// A folder lies where the journal would.
TEST_F(RegistryDurability, WhatIsAskedForIsHadOrRefused) {
  ASSERT_EQ(0, mkdir(journal.c_str(), 0700));
  for (const Durability durability : {Durability::kProcess, Durability::kPower}) {
    Registry registry(path.c_str(), kAdmin);
    RegistryOptions options;
    options.durability = durability;
    ASSERT_EQ(status::kOk, registry.SetOptions(options));
    EXPECT_EQ(status::kNoSpace, registry.Initialize());
    EXPECT_EQ(status::kNoRight, registry.CreateKey(0, "other", 7));
  }
  Registry registry(path.c_str(), kAdmin);
  EXPECT_EQ(status::kOk, registry.Initialize());
  EXPECT_EQ(registry.EffectiveDurability(), Durability::kNone);
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "other", 7));
}

// A folder in memory, for instance.
class JournalElsewhere : public RegistryDurability {
 protected:
  void SetUp() override {
    RegistryDurability::SetUp();
    ASSERT_EQ(0, mkdir(folder.c_str(), 0700));
    options.sideFolder = folder.c_str();
  }
  // The names in the folder.
  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
      names.push_back(entry.path().filename());
    }
    return names;
  }
  // Opens the registry with the journal in the folder, and tells its name if there is one.
  std::string OpenThere(const std::string& registryPath) {
    Registry registry(registryPath.c_str(), kAdmin);
    EXPECT_EQ(status::kOk, registry.SetOptions(options));
    // kNoSpace where there are no mappings.
    if (registry.Initialize() != 0) return "";
    EXPECT_EQ(registry.EffectiveDurability(), Durability::kProcess);
    EXPECT_EQ("(cannot be read)", GetFile(registryPath + ".journal"));
    EXPECT_EQ(1u, Names().size());
    return Names().empty() ? "" : Names()[0];
  }

  const std::string folder = dir / "memory";
  RegistryOptions options;
};

TEST_F(JournalElsewhere, HasANameOfItsOwnForEachRegistry) {
  const std::string name = OpenThere(path);
  EXPECT_TRUE(Names().empty());
  if (name.empty()) return;
  EXPECT_EQ("registry-", name.substr(0, 9));
  EXPECT_EQ(name.size(), 9u + 16 + 8);
  const std::string link = dir / "link";
  ASSERT_EQ(0, symlink(path.c_str(), link.c_str()));
  EXPECT_EQ(OpenThere(link), name);
  const std::string other = (dir / "other") + std::string(200, 'r');
  ASSERT_EQ(0, mkdir((dir / "below").c_str(), 0700));
  EXPECT_EQ(OpenThere(other).substr(0, 65), "other" + std::string(59, 'r') + "-");
  const std::string below = OpenThere(dir / "below/registry");
  EXPECT_EQ("registry-", below.substr(0, 9));
  EXPECT_NE(below, name);
}

// What a process has left beside the registry counts as well.
TEST_F(JournalElsewhere, IsCompletedByTheNextOpening) {
  const std::string name = OpenThere(path);
  const std::string bytes = ProcessJournal(RecordOf(84, "once", after, 1));
  if (!name.empty()) {
    PutFile(folder + "/" + name, bytes);
    EXPECT_EQ(OpenThere(path), name);
    EXPECT_TRUE(GetFile(path) == after);
  }
  PutFile(path, before);
  PutFile(journal, bytes);
  EXPECT_EQ(OpenThere(path), name);
  EXPECT_TRUE(GetFile(path) == after);
  EXPECT_EQ("(cannot be read)", GetFile(journal));
}

TEST_F(JournalElsewhere, IsRefusedWhereItCannotBe) {
  Registry registry(path.c_str(), kAdmin);
  options.durability = Durability::kPower;
  EXPECT_EQ(status::kBadArgument, registry.SetOptions(options));
  options.durability = Durability::kNone;
  EXPECT_EQ(status::kBadArgument, registry.SetOptions(options));
  options.durability = Durability::kProcess;
  const std::string absent = dir / "absent";
  options.sideFolder = absent.c_str();
  EXPECT_EQ(status::kOk, registry.SetOptions(options));
  EXPECT_EQ(status::kNoSpace, registry.Initialize());
  options.sideFolder = path.c_str();
  EXPECT_EQ(status::kOk, registry.SetOptions(options));
  EXPECT_EQ(status::kNoSpace, registry.Initialize());
  EXPECT_TRUE(GetFile(path) == before);
}

TEST_F(RegistryDurability, TheRecordOfADeadProcessIsCompleted) {
  EXPECT_TRUE(OpenedBeside(ProcessJournal(RecordOf(84, "once", after, 1))) == after);
}

// A restart may have taken from the file what the record builds on.
TEST_F(RegistryDurability, TheRecordOfADeadProcessDoesNotOutliveTheMachine) {
  std::string bytes = ProcessJournal(RecordOf(84, "once", after, 1));
  bytes[16] = static_cast<char>(bytes[16] ^ 1);
  EXPECT_TRUE(OpenedBeside(bytes) == before);
}

TEST_F(RegistryDurability, ARecordThatIsDoneWithIsNotFollowed) {
  std::string bytes = ProcessJournal(RecordOf(84, "once", after, 1));
  Put32(&bytes, 32, 0);
  EXPECT_TRUE(OpenedBeside(bytes) == before);
}

TEST_F(RegistryDurability, AJournalOfAnotherRegistryChangesNothing) {
  std::string other = after;
  other[5000] = static_cast<char>(other[5000] ^ 1);
  EXPECT_TRUE(OpenedBeside(ProcessJournal(RecordOf(84, "once", other, 1))) == before);
  EXPECT_TRUE(OpenedBeside(Head(2) + Sealed(RecordOf(84, "once", other, 1))) == before);
}

TEST_F(RegistryDurability, TheRecordsOfAPowerCutAreFollowedInOrder) {
  std::string last = after;
  last.replace(86, 4, "more");
  const std::string first = Sealed(RecordOf(84, "once", after, 5));
  EXPECT_TRUE(OpenedBeside(Head(2) + first) == after);
  EXPECT_TRUE(OpenedBeside(Head(2) + first + Sealed(RecordOf(86, "more", last, 6))) == last);
  // An older one lies behind.
  EXPECT_TRUE(OpenedBeside(Head(2) + first + Sealed(RecordOf(86, "more", last, 4))) == after);
}

TEST_F(RegistryDurability, ATornRecordIsNotFollowed) {
  std::string last = after;
  last.replace(86, 4, "more");
  const std::string first = Sealed(RecordOf(84, "once", after, 5));
  std::string second = Sealed(RecordOf(86, "more", last, 6));
  for (const size_t at : {0u, 8u, 16u, 24u, 40u, 44u, 51u}) {
    SCOPED_TRACE(at);
    std::string torn = second;
    torn[at] = static_cast<char>(torn[at] ^ 0x20);
    EXPECT_TRUE(OpenedBeside(Head(2) + first + torn) == after);
  }
}

// Whatever stands in it, the file is the old or the new one.
TEST_F(RegistryDurability, AnyJournalIsSurvived) {
  const std::string record = RecordOf(84, "once", after, 1);
  const std::string journals[] = {ProcessJournal(record), Head(2) + Sealed(record)};
  for (const std::string& bytes : journals) {
    for (size_t at = 0; at < kRecords + record.size(); at = at == 128 ? kRecords : at + 1) {
      for (const unsigned mask : {0x01u, 0x80u, 0xFFu}) {
        SCOPED_TRACE(at);
        std::string changed = bytes;
        changed[at] = static_cast<char>(static_cast<unsigned char>(changed[at]) ^ mask);
        const std::string opened = OpenedBeside(changed);
        ASSERT_TRUE(opened == before || opened == after);
      }
    }
    for (size_t length = 0; length < bytes.size(); length += length < kRecords ? 701 : 7) {
      SCOPED_TRACE(length);
      const std::string opened = OpenedBeside(bytes.substr(0, length));
      ASSERT_TRUE(opened == before || opened == after);
    }
  }
}

// What the file is after each 40th of some thousand changes with many growths, as hashes.
std::vector<size_t> GrownWith(Durability durability, const std::string& path) {
  Registry registry(path.c_str(), kAdmin);
  RegistryOptions options;
  options.durability = durability;
  EXPECT_EQ(status::kOk, registry.SetOptions(options));
  std::vector<size_t> hashes;
  if (registry.Initialize() != 0) return hashes;
  const ExactValue value(1, std::string(30, 'v'));
  for (unsigned int i = 0; i < 4000; ++i) {
    const std::string name = "k" + std::to_string(10000000 + i * 7919 % 10000000);
    EXPECT_EQ(status::kOk, registry.CreateKey(0, name.c_str()));
    Value data = value;
    EXPECT_EQ(status::kOk, registry.CreateValue(0, name.c_str(), "name", &data));
    const unsigned int deleted = i % 3 != 0 ? registry.DeleteKey(0, name.c_str()) : 0;
    EXPECT_EQ(0u, deleted);
    if (i % 40 == 0) hashes.push_back(std::hash<std::string>()(GetFile(path)));
  }
  return hashes;
}

// No mode but kNone may be had where there are no mappings.
TEST_F(RegistryDurability, EveryModeStoresTheSameBytes) {
  const std::vector<size_t> hashes = GrownWith(Durability::kNone, dir / "none");
  ASSERT_EQ(100u, hashes.size());
  EXPECT_EQ(GrownWith(Durability::kPower, dir / "power"), hashes);
  const std::vector<size_t> process = GrownWith(Durability::kProcess, dir / "process");
  EXPECT_TRUE(process.empty() || process == hashes);
}

// The default is kNone where there are no shared mappings.
TEST_F(RegistryDurability, TheJournalGetsSmallAgain) {
  for (const bool isDefault : {false, true}) {
    Registry registry(path.c_str(), kAdmin);
    RegistryOptions options;
    options.durability = Durability::kPower;
    if (!isDefault) {
      ASSERT_EQ(status::kOk, registry.SetOptions(options));
    }
    ASSERT_EQ(status::kOk, registry.Initialize());
    if (registry.EffectiveDurability() != Durability::kNone) ExpectSmallAgain(registry);
  }
}

}  // namespace
}  // namespace tamu::registry
