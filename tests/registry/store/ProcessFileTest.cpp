// Several stores in one process, which has one file open.
#include <sys/stat.h>

#include <functional>

#include "registry/store/ProcessFile.h"
#include "tests/platform/ChildProcess.h"
#include "tests/platform/OpenDescriptors.h"
#include "tests/registry/store/StoreTesting.h"
#include "tests/support/StoreCalls.h"

namespace status = tamu::registry::status;

namespace tamu::registry::storetests {
namespace {

// A second file beside that of StoreTest, not opened yet.
class ProcessFileTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    for (NodeKind kind : kKinds) Take(kind);
    const std::string bytes = Bytes();
    PutFile(otherPath, bytes);
  }
  void TearDown() override {
    other.Finalize();
    StoreTest::TearDown();
  }

  std::string otherPath = dir / "other.rce";
  TernaryFile other;
};

struct Operation {
  const char* name;
  std::function<unsigned int(TernaryFile&)> run;
};

// Every operation that reads or writes the file, with arguments that are good on an open store.
const Operation kOperations[] = {
    {"ReadFromFile",
     [](TernaryFile& s) {
       unsigned char byte = 0;
       unsigned char* buffer = &byte;
       return s.ReadFromFile(0, 1, buffer);
     }},
    {"WriteToFile",
     [](TernaryFile& s) {
       const unsigned char byte = 1;
       return s.WriteToFile(84, 1, &byte);
     }},
    {"FileReadInteger",
     [](TernaryFile& s) {
       unsigned int word = 0;
       return s.FileReadInteger(0, &word);
     }},
    {"FileWriteInteger", [](TernaryFile& s) { return s.FileWriteInteger(84, 1); }},
    {"FileFillSequence", [](TernaryFile& s) { return s.FileFillSequence(84, 0, 1, 3); }},
    {"FileFillZero", [](TernaryFile& s) { return s.FileFillZero(84, 8); }},
    {"WriteChanges", [](TernaryFile& s) { return s.WriteChanges(0, 84, 1, "x"); }},
    {"WriteHeader",
     [](TernaryFile& s) {
       TernaryHeader header = s.Header();
       return s.WriteHeader(0, &header);
     }},
    {"ReadHeader",
     [](TernaryFile& s) {
       TernaryHeader header;
       TernaryHeader* place = &header;
       return s.ReadHeader(place);
     }},
    {"LoadNAT",
     [](TernaryFile& s) {
       NodeAllocationTable* table = nullptr;
       const unsigned int result = s.LoadNAT(4220, table);
       delete table;
       return result;
     }},
    {"ExpandFile",
     [](TernaryFile& s) { return s.ExpandFile(&s.Descriptor(NodeKind::kKey), 24, 500); }},
    {"AcquireNodeId",
     [](TernaryFile& s) {
       unsigned int id = 0;
       return s.AcquireNodeId(0, &id, s.Descriptor(NodeKind::kKey).lastTable);
     }},
    {"AcquireNodeIndexes",
     [](TernaryFile& s) {
       unsigned int indexes[2];
       return s.AcquireNodeIndexes(0, indexes, s.Descriptor(NodeKind::kData).lastTable, 2);
     }},
    {"ReleaseNodeId",
     [](TernaryFile& s) {
       return s.ReleaseNodeId(0, 0x100, s.Descriptor(NodeKind::kValue).lastTable);
     }},
    {"ReadNode",
     [](TernaryFile& s) {
       TernaryStringNode* node = nullptr;
       const unsigned int result = s.ReadNode(0x100, node);
       delete node;
       return result;
     }},
    {"ReadNodeInBuffer",
     [](TernaryFile& s) {
       TernaryKeyNode node;
       return s.ReadNodeInBuffer(0x100, &node);
     }},
    {"WriteValueNode",
     [](TernaryFile& s) {
       TernaryValueNode node;
       return s.WriteValueNode(0, 0x100, &node, false);
     }},
    {"AcquireNode",
     [](TernaryFile& s) {
       unsigned int id = 0;
       TernaryStringNode* node = nullptr;
       const unsigned int result = s.AcquireNode(0, &id, node);
       delete node;
       return result;
     }},
    {"ReleaseKeyNode", [](TernaryFile& s) { return s.ReleaseKeyNode(0, 0x100, nullptr); }},
    {"WriteData",
     [](TernaryFile& s) {
       unsigned int id = 0;
       return s.WriteData(0, "x", 1, &id);
     }},
    {"ReadData",
     [](TernaryFile& s) {
       unsigned char bytes[64];
       unsigned int size = sizeof bytes;
       return s.ReadData(bytes, &size, 0x100);
     }},
    {"DeleteData", [](TernaryFile& s) { return s.DeleteData(0, 0x100); }},
    {"SetStartNode", [](TernaryFile& s) { return s.SetStartNode(0, 0x100); }},
    {"GetRegistryInfo",
     [](TernaryFile& s) {
       RegistryInfo info;
       return s.GetRegistryInfo(&info);
     }},
};

// Without this the next test would also pass with arguments that are refused anyway.
TEST_F(ProcessFileTest, EveryOperationWorksOnTheFileThatIsOpen) {
  const std::string before = Bytes();
  for (const Operation& operation : kOperations) {
    SCOPED_TRACE(operation.name);
    Reopen(before);
    EXPECT_EQ(0u, operation.run(store));
  }
}

TEST_F(ProcessFileTest, AStoreWhoseFileWasReplacedAnswers5AndTouchesNeitherFile) {
  const std::string before = Bytes();
  ASSERT_EQ(status::kOk, other.Initialize(otherPath.c_str()));
  for (const Operation& operation : kOperations) {
    SCOPED_TRACE(operation.name);
    EXPECT_EQ(5u, operation.run(store));
    EXPECT_TRUE(GetFile(path) == before);
    EXPECT_TRUE(GetFile(otherPath) == before);
  }
  unsigned int id = 0;
  EXPECT_EQ(status::kOk, AcquireSlot(other, NodeKind::kKey, &id));
  EXPECT_EQ(0x200u, id);
}

TEST_F(ProcessFileTest, FinalizingAReplacedStoreLeavesTheOtherOpen) {
  ASSERT_EQ(status::kOk, other.Initialize(otherPath.c_str()));
  EXPECT_EQ(status::kOk, store.Finalize());
  EXPECT_TRUE(TernaryFile::file.IsOpen());
  unsigned int id = 0;
  EXPECT_EQ(status::kOk, AcquireSlot(other, NodeKind::kKey, &id));
}

TEST_F(ProcessFileTest, AReplacedStoreWorksAgainWhenItIsOpenedAnew) {
  ASSERT_EQ(status::kOk, other.Initialize(otherPath.c_str()));
  ASSERT_EQ(status::kOk, other.Finalize());
  unsigned int id = 0;
  EXPECT_EQ(status::kInputOutput, AcquireSlot(store, NodeKind::kKey, &id));
  EXPECT_EQ(status::kOk, store.Finalize());
  EXPECT_EQ(status::kOk, store.Initialize(path.c_str()));
  EXPECT_EQ(0x200u, Take(NodeKind::kKey));
}

TEST_F(ProcessFileTest, TwoStoresOnOnePathShareTheFile) {
  ASSERT_EQ(status::kOk, other.Initialize(path.c_str()));
  TernaryStringNode node;
  node.setSplitChar('q');
  EXPECT_EQ(status::kOk, store.WriteNode(0, 0x100, &node, false));
  TernaryStringNode back;
  EXPECT_EQ(status::kOk, other.ReadNodeInBuffer(0x100, &back));
  EXPECT_EQ('q', back.splitChar());
}

TEST_F(ProcessFileTest, TheFirstToFinalizeClosesTheFileOfItsPath) {
  ASSERT_EQ(status::kOk, other.Initialize(path.c_str()));
  EXPECT_EQ(status::kOk, other.Finalize());
  EXPECT_FALSE(TernaryFile::file.IsOpen());
  const std::string before = Bytes();
  for (const Operation& operation : kOperations) {
    SCOPED_TRACE(operation.name);
    EXPECT_EQ(5u, operation.run(store));
  }
  EXPECT_TRUE(Bytes() == before);
}

TEST_F(ProcessFileTest, TheOlderStoreClosesTheFileOfItsPathToo) {
  ASSERT_EQ(status::kOk, other.Initialize(path.c_str()));
  EXPECT_EQ(status::kOk, store.Finalize());
  EXPECT_FALSE(TernaryFile::file.IsOpen());
  unsigned int id = 0;
  EXPECT_EQ(status::kInputOutput, AcquireSlot(other, NodeKind::kKey, &id));
}

TEST_F(ProcessFileTest, ThePathIsKeptAsACopy) {
  std::string text = otherPath;
  ASSERT_EQ(status::kOk, other.Initialize(text.data()));
  text.assign(text.size(), 'x');
  unsigned int id = 0;
  EXPECT_EQ(status::kOk, AcquireSlot(other, NodeKind::kKey, &id));
  EXPECT_EQ(status::kOk, other.Finalize());
  EXPECT_FALSE(TernaryFile::file.IsOpen());
}

// Creating a file takes the open one's place too.
TEST_F(ProcessFileTest, AStoreIsClosedWhenAnotherFileIsCreated) {
  const std::string before = Bytes();
  EXPECT_EQ(status::kOk, other.CreateRegistryFile((dir / "third.rce").c_str(), 0));
  unsigned int id = 0;
  EXPECT_EQ(status::kInputOutput, AcquireSlot(store, NodeKind::kKey, &id));
  EXPECT_TRUE(Bytes() == before);
}

TEST_F(ProcessFileTest, AFailedOpeningLeavesTheOtherStoreOpen) {
  EXPECT_EQ(status::kCannotOpen, other.Initialize((dir / "missing.rce").c_str()));
  EXPECT_TRUE(other.PathMissing());
  EXPECT_EQ(status::kCannotOpen, other.Initialize((dir / ".").c_str()));
  EXPECT_FALSE(other.PathMissing());
  EXPECT_EQ(status::kNoSpace, other.CreateRegistryFile((dir / "no/folder.rce").c_str(), 0));
  EXPECT_EQ(status::kOk, other.Finalize());
  EXPECT_EQ(0x200u, Take(NodeKind::kKey));
}

TEST_F(ProcessFileTest, AStoreThatFailedToOpenClosesNothing) {
  std::string bytes = GetFile(otherPath);
  SetU32(bytes, 8, 3);
  PutFile(otherPath, bytes);
  store.Finalize();
  EXPECT_EQ(status::kInvalidFile, other.Initialize(otherPath.c_str()));
  SetU32(bytes, 8, 2);
  PutFile(otherPath, bytes);
  EXPECT_EQ(status::kOk, store.Initialize(otherPath.c_str()));
  EXPECT_EQ(status::kOk, other.Finalize());
  EXPECT_EQ(0x200u, Take(NodeKind::kKey));
}

// Its tables are those of an opening that is over.
TEST_F(ProcessFileTest, AReplacedStoreStaysClosedWhenAThirdOpensItsPath) {
  ASSERT_EQ(status::kOk, other.Initialize(otherPath.c_str()));
  ASSERT_EQ(status::kOk, other.Finalize());
  TernaryFile third;
  ASSERT_EQ(status::kOk, third.Initialize(path.c_str()));
  unsigned int id = 0;
  EXPECT_EQ(status::kInputOutput, AcquireSlot(store, NodeKind::kKey, &id));
  EXPECT_EQ(status::kOk, store.Finalize());
  EXPECT_EQ(status::kOk, AcquireSlot(third, NodeKind::kKey, &id));
  EXPECT_EQ(0x200u, id);
  third.Finalize();
}

TEST_F(ProcessFileTest, TheSamePathToAnotherFileIsAnotherFile) {
  const std::string before = Bytes();
  ASSERT_EQ(0, std::rename(path.c_str(), (dir / "moved.rce").c_str()));
  PutFile(path, before);
  ASSERT_EQ(status::kOk, other.Initialize(path.c_str()));
  unsigned int id = 0;
  EXPECT_EQ(status::kInputOutput, AcquireSlot(store, NodeKind::kKey, &id));
  EXPECT_TRUE(Bytes() == before);
}

TEST_F(ProcessFileTest, AFileWithAWrongHeaderLeavesTheOtherStoreOpen) {
  const std::string good = GetFile(otherPath);
  for (unsigned int field : {0u, 4u, 8u, 12u}) {
    SCOPED_TRACE(field);
    std::string bytes = good;
    SetU32(bytes, field, 3);
    PutFile(otherPath, bytes);
    EXPECT_EQ(status::kInvalidFile, other.Initialize(otherPath.c_str()));
    unsigned char byte = 0;
    unsigned char* place = &byte;
    EXPECT_EQ(status::kInputOutput, other.ReadFromFile(0, 1, place));
    EXPECT_EQ(status::kOk, store.ReadFromFile(0, 1, place));
    EXPECT_EQ(0xFFu, byte);
  }
  EXPECT_EQ(status::kOk, other.Finalize());
  EXPECT_EQ(0x200u, Take(NodeKind::kKey));
}

TEST_F(ProcessFileTest, ACreationOnAFullDiskLeavesTheOtherStoreOpen) {
  EXPECT_TRUE(InChild([&] {
    LimitFileSize(10000);
    unsigned int word = 0;
    return other.CreateRegistryFile((dir / "full.rce").c_str(), 65536) == 5 &&
           other.FileReadInteger(0, &word) == 5 && store.FileReadInteger(0, &word) == 0;
  }));
  EXPECT_EQ("other.rce store.rce ", NamesIn(dir / "."));
}

TEST_F(ProcessFileTest, AFileThatCannotBeReplacedStaysOpen) {
  const std::string before = Bytes();
  EXPECT_TRUE(InChild([&] {
    LimitFileSize(10000);
    unsigned int word = 0;
    return other.CreateRegistryFile((dir / "./store.rce").c_str(), 65536) == 5 &&
           other.FileReadInteger(0, &word) == 5 && store.FileWriteInteger(84, 0) == 0;
  }));
  EXPECT_TRUE(Bytes() == before);
  EXPECT_EQ("other.rce store.rce ", NamesIn(dir / "."));
}

TEST_F(ProcessFileTest, AReplacedFileIsClosedForAll) {
  const std::string before = Bytes();
  ASSERT_EQ(status::kOk, other.CreateRegistryFile(path.c_str(), 65536));
  const std::string fresh = Bytes();
  EXPECT_FALSE(fresh == before);
  EXPECT_EQ(status::kInputOutput, store.FileWriteInteger(84, 1));
  EXPECT_FALSE(TernaryFile::file.IsOpen());
  EXPECT_TRUE(Bytes() == fresh);
}

// Where the folder takes no other file, the file itself is emptied. Whoever has it open must not go
// on with that.
TEST_F(ProcessFileTest, AnEmptiedFileIsClosedAlsoWhenItCannotBeFilled) {
  chmod(path.c_str(), 0666);
  chmod((dir / ".").c_str(), 0555);
  EXPECT_TRUE(InChild([&] {
    if (!DropRights()) return false;
    LimitFileSize(10000);
    return other.CreateRegistryFile((dir / "./store.rce").c_str(), 65536) == 5 &&
           store.FileWriteInteger(84, 1) == 5 && !TernaryFile::file.IsOpen();
  }));
  chmod((dir / ".").c_str(), 0755);
  EXPECT_EQ("", Bytes());
}

TEST_F(ProcessFileTest, AStoreThatFindsNothingElsewhereGivesItsOwnFileUp) {
  const long descriptors = OpenDescriptors();
  ASSERT_EQ(status::kOk, other.Initialize(otherPath.c_str()));
  EXPECT_EQ(OpenDescriptors(), descriptors);
  EXPECT_EQ(status::kCannotOpen, other.Initialize((dir / "missing.rce").c_str()));
  EXPECT_FALSE(TernaryFile::file.IsOpen());
  EXPECT_EQ(OpenDescriptors(), descriptors - 1);
  unsigned int id = 0;
  EXPECT_EQ(status::kInputOutput, AcquireSlot(other, NodeKind::kKey, &id));
}

// Two stores on one path go on together although one of them is opened again.
TEST_F(ProcessFileTest, AStoreThatIsOpenedAgainTakesNothingFromItsPartner) {
  ASSERT_EQ(status::kOk, other.Initialize(path.c_str()));
  ASSERT_EQ(status::kOk, other.Initialize(path.c_str()));
  EXPECT_EQ(0x200u, Take(NodeKind::kKey));
}

}  // namespace
}  // namespace tamu::registry::storetests
