#include <sys/stat.h>

#include "registry/store/TernaryFile.h"
#include "tests/platform/ChildProcess.h"
#include "tests/platform/OpenDescriptors.h"
#include "tests/registry/store/StoreTesting.h"
#include "tests/support/StoreCalls.h"

namespace status = tamu::registry::status;

namespace tamu::registry::storetests {
namespace {

using TernaryFileTest = StoreTest;

TEST_F(TernaryFileTest, OpensANewFile) {
  EXPECT_TRUE(TernaryFile::file.IsOpen());
  EXPECT_EQ(4180u, store.Header().headerOffset());
  EXPECT_EQ(1u, store.Header().headerVersion());
  EXPECT_EQ(75888u, store.Header().fileSize());
  EXPECT_EQ(0u, store.Header().startNode());
  for (unsigned int i = 0; i < 4; ++i) {
    SCOPED_TRACE(i);
    const TernaryNodeDescriptor& descriptor = store.Descriptor(kKinds[i]);
    EXPECT_EQ(1u, descriptor.tableCount);
    EXPECT_EQ(21u, descriptor.tableCapacity);
    EXPECT_EQ(0u, descriptor.usedNodes);
    EXPECT_EQ(364u, descriptor.totalNodes);
    EXPECT_FALSE(descriptor.damaged);
    ASSERT_NE(nullptr, descriptor.firstTable);
    EXPECT_EQ(descriptor.lastTable, descriptor.firstTable);
    EXPECT_EQ(descriptor.firstTable->tableOffset(), kTables[i]);
    EXPECT_EQ(descriptor.firstTable->areaOffset(), kAreas[i]);
    EXPECT_EQ(364u, descriptor.firstTable->freeCount());
  }
}

TEST_F(TernaryFileTest, OpeningChangesNoByte) {
  const std::string before = Bytes();
  EXPECT_EQ(status::kOk, store.Initialize(path.c_str()));
  EXPECT_EQ(status::kOk, store.Finalize());
  EXPECT_TRUE(Bytes() == before);
}

TEST_F(TernaryFileTest, CountsTheSlotsInUseWhenOpening) {
  TakeMany(NodeKind::kKey, 5);
  ASSERT_EQ(status::kOk, ReleaseSlot(store, NodeKind::kKey, 0x200));
  ASSERT_EQ(status::kOk, store.Finalize());
  ASSERT_EQ(status::kOk, store.Initialize(path.c_str()));
  EXPECT_EQ(4u, store.Descriptor(NodeKind::kKey).usedNodes);
  EXPECT_EQ(364u, store.Descriptor(NodeKind::kKey).totalNodes);
}

TEST_F(TernaryFileTest, InitializeTwiceStartsOver) {
  TakeMany(NodeKind::kString, 3);
  const long descriptors = OpenDescriptors();
  EXPECT_EQ(status::kOk, store.Initialize(path.c_str()));
  EXPECT_EQ(OpenDescriptors(), descriptors);
  EXPECT_EQ(1u, store.Descriptor(NodeKind::kString).tableCount);
  EXPECT_EQ(3u, store.Descriptor(NodeKind::kString).usedNodes);
  EXPECT_EQ(364u, store.Descriptor(NodeKind::kString).totalNodes);
  EXPECT_EQ(0x400u, Take(NodeKind::kString));
}

TEST_F(TernaryFileTest, InitializeForgetsTheDamageOfAnotherFile) {
  Damage(kTables[0] + 4, 0);
  EXPECT_TRUE(store.Descriptor(NodeKind::kString).damaged);
  const std::string good = dir / "good.rce";
  ASSERT_EQ(status::kOk, TernaryFile().CreateRegistryFile(good.c_str(), 65536));
  EXPECT_EQ(status::kOk, store.Initialize(good.c_str()));
  EXPECT_FALSE(store.Descriptor(NodeKind::kString).damaged);
  EXPECT_EQ(0x100u, Take(NodeKind::kString));
}

TEST_F(TernaryFileTest, FinalizeTwiceDoesNothing) {
  EXPECT_EQ(status::kOk, store.Finalize());
  EXPECT_FALSE(TernaryFile::file.IsOpen());
  EXPECT_EQ(0u, store.Descriptor(NodeKind::kString).tableCount);
  EXPECT_EQ(0u, store.Descriptor(NodeKind::kString).totalNodes);
  EXPECT_EQ(status::kOk, store.Finalize());
  TernaryFile never;
  EXPECT_EQ(status::kOk, never.Finalize());
}

TEST_F(TernaryFileTest, AnObjectThatIsDestroyedClosesNothing) {
  {
    TernaryFile other;
    ASSERT_EQ(status::kOk, other.Initialize(path.c_str()));
  }
  EXPECT_TRUE(TernaryFile::file.IsOpen());
  EXPECT_EQ(0x100u, Take(NodeKind::kString));
}

TEST_F(TernaryFileTest, TheStartNodeIsOneForAllCharacters) {
  EXPECT_EQ(0u, store.GetStartNode('a'));
  EXPECT_EQ(0u, store.SetStartNode('a', 0x12345601));
  EXPECT_EQ(0x12345601u, store.GetStartNode('a'));
  EXPECT_EQ(0x12345601u, store.GetStartNode(0));
  EXPECT_EQ(0x12345601u, store.GetStartNode(static_cast<char>(0xFF)));
  EXPECT_EQ(0x12345601u, U32(4180 + 28));
  EXPECT_EQ(0u, store.SetStartNode('z', 0x200));
  std::string expected = Bytes();
  EXPECT_EQ(0x200u, U32At(expected, 4180 + 28));
  SetU32(expected, 4180 + 28, 0);
  EXPECT_EQ(0u, store.SetStartNode('b', 0));
  EXPECT_TRUE(Bytes() == expected);
}

// What was never written must not be counted on: it would be gone with the process.
TEST_F(TernaryFileTest, AStartNodeThatCannotBeWrittenStaysAsItWas) {
  ASSERT_EQ(0u, store.SetStartNode(0, 0x100));
  TernaryFile::file.Destroy();
  EXPECT_EQ(5u, store.SetStartNode(0, 0x200));
  EXPECT_EQ(0x100u, store.GetStartNode(0));
}

TEST_F(TernaryFileTest, AClosedStoreAnswers5) {
  ASSERT_EQ(status::kOk, store.Finalize());
  unsigned int word = 0;
  unsigned char byte = 0;
  unsigned char* bytes = &byte;
  unsigned int id = 7;
  EXPECT_EQ(status::kInputOutput, store.FileReadInteger(0, &word));
  EXPECT_EQ(status::kInputOutput, store.FileWriteInteger(84, 1));
  EXPECT_EQ(status::kInputOutput, store.ReadFromFile(0, 1, bytes));
  EXPECT_EQ(status::kInputOutput, store.WriteToFile(84, 1, &byte));
  EXPECT_EQ(status::kInputOutput, AcquireSlot(store, NodeKind::kKey, &id));
  EXPECT_EQ(status::kInputOutput, ReleaseSlot(store, NodeKind::kKey, 0x100));
  EXPECT_EQ(status::kInputOutput, store.WriteData(0, &byte, 1, &id));
  EXPECT_EQ(status::kInputOutput, store.DeleteData(0, 0x100));
  EXPECT_EQ(5u, store.SetStartNode(0, 0x100));
}

// ---- what cannot be opened

struct Opening {
  explicit Opening(const std::string& path) : status(store.Initialize(path.c_str())) {}
  ~Opening() { store.Finalize(); }
  TernaryFile store;
  unsigned int status;
};

TEST_F(TernaryFileTest, AMissingFileAnswers9) {
  Opening absent(dir / "absent.rce");
  EXPECT_EQ(9u, absent.status);
  EXPECT_TRUE(absent.store.PathMissing());
  Opening elsewhere(dir / "no/such/folder");
  EXPECT_EQ(9u, elsewhere.status);
}

TEST_F(TernaryFileTest, AFileThatIsThereButCannotBeOpenedAnswers9AndIsNotMissing) {
  Opening folder(dir / ".");
  EXPECT_EQ(9u, folder.status);
  EXPECT_FALSE(folder.store.PathMissing());
  const std::string before = Bytes();
  EXPECT_TRUE(InChild([&] {
    store.Finalize();
    LimitDescriptors(3);
    TernaryFile limited;
    return limited.Initialize(path.c_str()) == 9 && !limited.PathMissing();
  }));
  EXPECT_TRUE(InChild([&] {
    if (chmod(path.c_str(), 0) != 0 || (getuid() == 0 && setuid(65534) != 0)) return false;
    TernaryFile denied;
    return denied.Initialize(path.c_str()) == 9 && !denied.PathMissing();
  }));
  chmod(path.c_str(), 0600);
  EXPECT_TRUE(Bytes() == before);
}

TEST_F(TernaryFileTest, NoPathAnswers22) {
  TernaryFile other;
  EXPECT_EQ(status::kBadArgument, other.Initialize(nullptr));
  EXPECT_EQ(0x100u, Take(NodeKind::kString));
}

TEST_F(TernaryFileTest, AHeaderWithAnyFieldWrongAnswers59AndIsClosed) {
  store.Finalize();
  const std::string good = Bytes();
  const int descriptors = NextDescriptor();
  const struct {
    const char* field;
    unsigned int offset;
    unsigned int value;
  } rows[] = {{"signature", 0, 0x0FACE0FE}, {"marker", 4, 0xDEADBEEE}, {"version 3", 8, 3},
              {"version 1", 8, 1},          {"revision", 12, 2},       {"no revision", 12, 0}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.field);
    std::string bytes = good;
    SetU32(bytes, row.offset, row.value);
    PutFile(path, bytes);
    EXPECT_EQ(status::kInvalidFile, store.Initialize(path.c_str()));
    EXPECT_FALSE(store.PathMissing());
    EXPECT_FALSE(TernaryFile::file.IsOpen());
    EXPECT_EQ(NextDescriptor(), descriptors);
    unsigned int id = 0;
    EXPECT_EQ(status::kInputOutput, AcquireSlot(store, NodeKind::kString, &id));
    EXPECT_TRUE(Bytes() == bytes);
  }
  PutFile(path, good);
  EXPECT_EQ(status::kOk, store.Initialize(path.c_str()));
}

TEST_F(TernaryFileTest, AFileThatEndsInItsHeadersAnswers59) {
  store.Finalize();
  const std::string good = Bytes();
  for (unsigned int length : {0u, 1u, 83u, 84u, 4179u, 4180u, 4219u}) {
    SCOPED_TRACE(length);
    PutFile(path, good.substr(0, length));
    EXPECT_EQ(status::kInvalidFile, store.Initialize(path.c_str()));
    EXPECT_FALSE(TernaryFile::file.IsOpen());
    EXPECT_EQ(Bytes().size(), length);
  }
}

// A power cut in the creation leaves the headers right and the rest short or zero: the kinds that
// are whole work, the others are refused, and nothing is ever written over the headers.
TEST_F(TernaryFileTest, AFileCutAnywhereServesTheKindsThatAreWhole) {
  store.Finalize();
  const std::string good = Bytes();
  for (unsigned int cut = 0; cut < 75888 + 4096; cut += 4096) {
    SCOPED_TRACE(cut);
    const std::string before = good.substr(0, cut);
    PutFile(path, before);
    const unsigned int opened = store.Initialize(path.c_str());
    EXPECT_EQ(opened, cut < 4220 ? 59u : 0u);
    if (opened != 0) continue;
    for (unsigned int kind = 0; kind < 4; ++kind) {
      unsigned int id = 0;
      EXPECT_EQ(Acquire(kKinds[kind], &id), cut >= kAreaEnds[kind] ? 0u : 59u) << "kind " << kind;
    }
    store.Finalize();
    const std::string after = Bytes();
    EXPECT_EQ(after.size(), before.size());
    EXPECT_TRUE(after.substr(0, 4220) == good.substr(0, 4220));
  }
}

TEST_F(TernaryFileTest, AFileThatIsZeroBehindItsHeadersIsNeverWritten) {
  store.Finalize();
  const std::string bytes = Bytes().substr(0, 4220) + Zeros(75888 - 4220);
  PutFile(path, bytes);
  EXPECT_EQ(status::kOk, store.Initialize(path.c_str()));
  unsigned int id = 0;
  for (NodeKind kind : kKinds) EXPECT_EQ(status::kInvalidFile, Acquire(kind, &id));
  EXPECT_EQ(status::kInvalidFile, store.WriteData(0, "x", 1, &id));
  TernaryStringNode node;
  EXPECT_EQ(status::kInvalidFile, store.ReadNodeInBuffer(0, &node));
  EXPECT_EQ(status::kInvalidFile, store.ReadNodeInBuffer(0x100, &node));
  EXPECT_TRUE(Bytes() == bytes);
}

}  // namespace
}  // namespace tamu::registry::storetests
