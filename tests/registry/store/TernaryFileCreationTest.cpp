#include <cstring>

#include "tests/platform/ChildProcess.h"
#include "tests/registry/store/StoreTesting.h"
#include "tests/support/StoreCalls.h"

namespace status = tamu::registry::status;

namespace tamu::registry::storetests {
namespace {

std::string NewFileHeaders(const unsigned int (&tables)[4], unsigned int fileSize) {
  std::string bytes("\xFF\xE0\xAC\x0F\xEF\xBE\xAD\xDE\x02\x00\x00\x00\x01\x00\x00\x00", 16);
  bytes += Zeros(68);
  bytes += Zeros(4096);
  AddU32(bytes, 0);
  AddU32(bytes, 4180);
  AddU32(bytes, 1);
  for (unsigned int table : tables) AddU32(bytes, table);
  AddU32(bytes, 0);
  AddU32(bytes, fileSize);
  AddU32(bytes, 0);
  return bytes;
}

void AddTable(std::string& bytes, unsigned int table, unsigned int area, unsigned int entries) {
  ASSERT_EQ(bytes.size(), table);
  AddU32(bytes, 0);
  AddU32(bytes, table);
  AddU32(bytes, area);
  AddU32(bytes, entries);
  bytes += Zeros(12);
  AddU32(bytes, entries - 1);
  for (unsigned int i = 1; i <= entries; ++i) AddU32(bytes, i);
}

// Makes a file and compares all of it.
void ExpectNewFile(unsigned int budget, unsigned int entries, const unsigned int (&tables)[4],
                   const unsigned int (&areas)[4], unsigned int fileSize) {
  SCOPED_TRACE(budget);
  TempDir dir;
  const std::string path = dir / "new.rce";
  TernaryFile store;
  ASSERT_EQ(status::kOk, store.CreateRegistryFile(path.c_str(), budget));
  EXPECT_FALSE(TernaryFile::file.IsOpen());
  std::string expected = NewFileHeaders(tables, fileSize);
  for (unsigned int i = 0; i < 4; ++i) AddTable(expected, tables[i], areas[i], entries);
  ASSERT_EQ(expected.size(), areas[0]);
  expected += Zeros(180 * entries);
  ASSERT_EQ(expected.size(), fileSize);
  const std::string made = GetFile(path);
  EXPECT_EQ(made.size(), expected.size());
  EXPECT_TRUE(made == expected);
}

TEST(TernaryFileCreation, WritesEveryByteOfANewFile) {
  ExpectNewFile(65536, 365, {4220, 5712, 7204, 8696}, {10188, 24788, 33548, 52528}, 75888);
}

TEST(TernaryFileCreation, WritesEveryByteOfTheSmallestFiles) {
  ExpectNewFile(0, 1, {4220, 4256, 4292, 4328}, {4364, 4404, 4428, 4480}, 4544);
  ExpectNewFile(179, 1, {4220, 4256, 4292, 4328}, {4364, 4404, 4428, 4480}, 4544);
  ExpectNewFile(180, 2, {4220, 4260, 4300, 4340}, {4380, 4460, 4508, 4612}, 4740);
}

TEST(TernaryFileCreation, InAFileWithoutSlotsTheFirstAllocationExpands) {
  const unsigned int sizes[4] = {4544 + 32 + 2000 + 20000, 4544 + 32 + 2000 + 12000,
                                 4544 + 32 + 2000 + 26000, 4544 + 32 + 2000 + 32000};
  for (unsigned int kind = 0; kind < 4; ++kind) {
    SCOPED_TRACE(kind);
    TempDir dir;
    const std::string path = dir / "small.rce";
    TernaryFile store;
    ASSERT_EQ(status::kOk, store.CreateRegistryFile(path.c_str(), 0));
    ASSERT_EQ(status::kOk, store.Initialize(path.c_str()));
    unsigned int id = 0;
    unsigned int result = 0;
    if (kind == 3) {
      result = store.WriteData(0, "x", 1, &id);
    } else {
      result = AcquireSlot(store, kKinds[kind], &id);
    }
    EXPECT_EQ(0u, result);
    EXPECT_EQ(0x101u, id);
    EXPECT_EQ(status::kOk, store.Finalize());
    EXPECT_EQ(GetFile(path).size(), sizes[kind]);
  }
}

TEST(TernaryFileCreation, ABudgetThatIsTooLargeAnswers28AndTouchesNothing) {
  TempDir dir;
  const std::string path = dir / "kept";
  PutFile(path, "kept");
  TernaryFile store;
  EXPECT_EQ(status::kNoSpace, store.CreateRegistryFile(path.c_str(), 0xFFFFFFFF));
  EXPECT_EQ(status::kNoSpace, store.CreateRegistryFile(path.c_str(), 1972174860));
  EXPECT_EQ("kept", GetFile(path));
  const std::string absent = dir / "absent";
  EXPECT_EQ(status::kNoSpace, store.CreateRegistryFile(absent.c_str(), 0xFFFFFFFF));
  EXPECT_EQ("(cannot be read)", GetFile(absent));
}

TEST(TernaryFileCreation, ReplacesAFileThatExists) {
  TempDir dir;
  const std::string path = dir / "again.rce";
  TernaryFile store;
  ASSERT_EQ(status::kOk, store.CreateRegistryFile(path.c_str(), 65536));
  const std::string fresh = GetFile(path);
  PutFile(path, std::string(100000, '\xAA'));
  ASSERT_EQ(status::kOk, store.CreateRegistryFile(path.c_str(), 65536));
  EXPECT_TRUE(GetFile(path) == fresh);
}

TEST(TernaryFileCreation, AFileThatCannotBeMadeAnswers28) {
  TempDir dir;
  TernaryFile store;
  EXPECT_EQ(status::kNoSpace, store.CreateRegistryFile((dir / "no/such/folder").c_str(), 65536));
  EXPECT_EQ(status::kNoSpace, store.CreateRegistryFile((dir / ".").c_str(), 65536));
  EXPECT_EQ(status::kBadArgument, store.CreateRegistryFile(nullptr, 65536));
  EXPECT_FALSE(TernaryFile::file.IsOpen());
}

TEST(TernaryFileCreation, LeavesTheStoreClosed) {
  TempDir dir;
  const std::string path = dir / "closed.rce";
  TernaryFile store;
  ASSERT_EQ(status::kOk, store.CreateRegistryFile(path.c_str(), 65536));
  unsigned int id = 0;
  EXPECT_EQ(status::kInputOutput, AcquireSlot(store, NodeKind::kString, &id));
  unsigned int word = 0;
  EXPECT_EQ(status::kInputOutput, store.FileReadInteger(0, &word));
}

// Creation on a disk with room for `limit` bytes: the status; what was there stays, and nothing is
// left beside it.
void ExpectFailedCreation(unsigned int limit, unsigned int status) {
  SCOPED_TRACE(limit);
  TempDir dir;
  const std::string path = dir / "full.rce";
  const auto create = [&] {
    return InChild([&] {
      LimitFileSize(limit);
      TernaryFile store;
      return store.CreateRegistryFile(path.c_str(), 65536) == status && !TernaryFile::file.IsOpen();
    });
  };
  EXPECT_TRUE(create());
  EXPECT_EQ("", NamesIn(dir / "."));
  PutFile(path, "older");
  EXPECT_TRUE(create());
  EXPECT_EQ("older", GetFile(path));
  EXPECT_EQ("full.rce ", NamesIn(dir / "."));
}

TEST(TernaryFileCreation, WithoutRoomForTheFileHeaderAnswers28AndChangesNothing) {
  ExpectFailedCreation(0, 28);
  ExpectFailedCreation(83, 28);
}

TEST(TernaryFileCreation, WithoutRoomForTheReservedAreaAnswers59AndChangesNothing) {
  ExpectFailedCreation(84, 59);
  ExpectFailedCreation(4179, 59);
}

TEST(TernaryFileCreation, WithoutRoomForAHeaderAnswers5AndChangesNothing) {
  ExpectFailedCreation(4219, 5);  // the record that leads to the tables
  ExpectFailedCreation(4251, 5);  // a table's head
  ExpectFailedCreation(5743, 5);
  ExpectFailedCreation(7235, 5);
  ExpectFailedCreation(8727, 5);
}

TEST(TernaryFileCreation, WithoutRoomForTheEntriesAnswers5AndChangesNothing) {
  ExpectFailedCreation(4252, 5);
  ExpectFailedCreation(10187, 5);
}

TEST(TernaryFileCreation, WithoutRoomForTheAreasAnswers5AndChangesNothing) {
  ExpectFailedCreation(10188, 5);
  ExpectFailedCreation(75887, 5);
}

TEST(TernaryFileCreation, WithJustEnoughRoomSucceeds) {
  TempDir dir;
  const std::string path = dir / "full.rce";
  EXPECT_TRUE(InChild([&] {
    LimitFileSize(75888);
    return TernaryFile().CreateRegistryFile(path.c_str(), 65536) == 0;
  }));
  EXPECT_EQ(75888u, GetFile(path).size());
}

TEST(TernaryFileCreation, AnEmptyFileIsRefused) {
  TempDir dir;
  const std::string path = dir / "empty.rce";
  PutFile(path, "");
  TernaryFile store;
  EXPECT_EQ(status::kInvalidFile, store.Initialize(path.c_str()));
  EXPECT_EQ(status::kInvalidFile, store.Initialize(path.c_str()));
  EXPECT_FALSE(store.PathMissing());
  EXPECT_EQ("", GetFile(path));
}

}  // namespace
}  // namespace tamu::registry::storetests
