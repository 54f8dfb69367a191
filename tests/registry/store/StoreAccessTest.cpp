#include <atomic>
#include <chrono>
#include <fstream>
#include <thread>

#include "registry/store/StoreAccess.h"
#include "tests/registry/store/RecordTesting.h"
#include "tests/registry/store/StoreTesting.h"
#include "tests/support/StoreCalls.h"

namespace tamu::registry::storetests {
namespace {

class StoreAccessTest : public StoreTest {};

TEST_F(StoreAccessTest, ReadsTheRecordOfAnId) {
  std::string bytes = Bytes();
  for (unsigned int i = 0; i < 40; ++i) bytes[10188 + 40 * 3 + i] = static_cast<char>(0x81 + i);
  for (unsigned int i = 0; i < 24; ++i) bytes[24788 + 24 * 364 + i] = static_cast<char>(0x81 + i);
  for (unsigned int i = 0; i < 52; ++i) bytes[33548 + 52 + i] = static_cast<char>(0x81 + i);
  Reopen(bytes);
  const StoreAccess access(store);
  TernaryStringNode string;
  ASSERT_EQ(status::kOk, access.Read(0x300, &string));
  EXPECT_EQ(Hex(Numbered<TernaryStringNode>()), Hex(string));
  TernaryKeyNode key;
  ASSERT_EQ(status::kOk, access.Read(0x16C00, &key));
  EXPECT_EQ(Hex(Numbered<TernaryKeyNode>()), Hex(key));
  TernaryValueNode value;
  ASSERT_EQ(status::kOk, access.Read(0x100, &value));
  EXPECT_EQ(Hex(Numbered<TernaryValueNode>()), Hex(value));
}

// Another process writes the file whenever it may: while nobody has the lock between processes.
TEST_F(StoreAccessTest, OthersThatWriteAllTheTimeDoNotKeepAReaderAwayForEver) {
  store.Finalize();
  RegistryOptions options;
  options.durability = Durability::kProcess;
  store.SetOptions(options);
  ASSERT_EQ(status::kOk, store.Initialize(path.c_str()));
  if (store.EffectiveDurability() != Durability::kProcess) GTEST_SKIP() << "no journal here";
  std::fstream journal(path + ".journal", std::ios::in | std::ios::out | std::ios::binary);
  unsigned int looks = 0;
  const Status result = store.Look([&](StoreAccess& access) {
    if (++looks <= 8) {
      std::string sequence;
      AddU32(sequence, 1000 + 2 * looks);
      journal.seekp(68).write(sequence.data(), 4).flush();
    } else if (looks > 9) {
      return Status(status::kBadArgument);
    }
    TernaryStringNode node;
    return access.Read(0x100, &node);
  });
  EXPECT_EQ(status::kOk, result);
  EXPECT_EQ(9u, looks);
}

TEST_F(StoreAccessTest, NoIdReadsAsZeros) {
  const StoreAccess access(store);
  TernaryKeyNode key = Numbered<TernaryKeyNode>();
  ASSERT_EQ(status::kOk, access.Read(0, &key));
  EXPECT_EQ(Hex(TernaryKeyNode()), Hex(key));
}

TEST_F(StoreAccessTest, AFailureLeavesTheRecordAsItWas) {
  TernaryKeyNode key = Numbered<TernaryKeyNode>();
  {
    const StoreAccess access(store);
    EXPECT_EQ(status::kInvalidFile, access.Read(0x16D00, &key));  // slot 365
    EXPECT_EQ(status::kInvalidFile, access.Read(0x101, &key));    // of a second table
  }
  store.Finalize();
  ASSERT_EQ(status::kOk, store.Initialize(path.c_str()));
  TernaryFile other;
  ASSERT_EQ(status::kOk, other.CreateRegistryFile((dir / "other").c_str(), 65536));
  {
    const StoreAccess access(store);
    EXPECT_EQ(status::kInputOutput, access.Read(0x100, &key));
  }
  EXPECT_EQ(Hex(Numbered<TernaryKeyNode>()), Hex(key));
}

TEST_F(StoreAccessTest, ASlotIsUsedOnceItIsHandedOut) {
  TakeMany(NodeKind::kValue, 2);
  ASSERT_EQ(status::kOk, ReleaseSlot(store, NodeKind::kValue, 0x100));
  const StoreAccess access(store);
  EXPECT_FALSE(access.IsUsed(NodeKind::kValue, 0x100));
  EXPECT_TRUE(access.IsUsed(NodeKind::kValue, 0x200));
  EXPECT_FALSE(access.IsUsed(NodeKind::kValue, 0x300));
  EXPECT_FALSE(access.IsUsed(NodeKind::kKey, 0x200));
  EXPECT_FALSE(access.IsUsed(NodeKind::kValue, 0));
  EXPECT_FALSE(access.IsUsed(NodeKind::kValue, 0x201));
  EXPECT_FALSE(access.IsUsed(NodeKind::kValue, 0x16D00));
}

TEST_F(StoreAccessTest, ReadsData) {
  unsigned int id = 0;
  ASSERT_EQ(status::kOk, store.StoreData(0, std::string(70, 'd').data(), 70, &id));
  const StoreAccess access(store);
  std::string text(200, '.');
  unsigned int size = 70;
  EXPECT_EQ(status::kOk, access.ReadData(id, text.data(), &size));
  EXPECT_EQ(70u, size);
  EXPECT_EQ(std::string(70, 'd') + std::string(130, '.'), text);
  size = 200;  // the last block is read to its end, and no further
  EXPECT_EQ(status::kOk, access.ReadData(id, text.data(), &size));
  EXPECT_EQ(128u, size);
  EXPECT_EQ(std::string(70, 'd') + Zeros(58) + std::string(72, '.'), text);
}

TEST_F(StoreAccessTest, NoDataIsReadFromAnyId) {
  const StoreAccess access(store);
  unsigned int size = 0;
  EXPECT_EQ(status::kOk, access.ReadData(0, nullptr, &size));
  EXPECT_EQ(status::kOk, access.ReadData(0xFFFFFFFF, nullptr, &size));
}

TEST_F(StoreAccessTest, RefusesToReadDataThatIsNotThere) {
  const StoreAccess access(store);
  char buffer[64];
  unsigned int size = sizeof buffer;
  EXPECT_EQ(status::kBadArgument, access.ReadData(0x100, buffer, nullptr));
  EXPECT_EQ(status::kBadArgument, access.ReadData(0x100, nullptr, &size));
  EXPECT_EQ(status::kInvalidFile, access.ReadData(0, buffer, &size));
  EXPECT_EQ(status::kInvalidFile, access.ReadData(0x100, buffer, &size));  // a free block
  EXPECT_EQ(sizeof buffer, size);
}

TEST_F(StoreAccessTest, HoldsTheStoreAsLongAsTheOutermostLives) {
  std::atomic<bool> done{false};
  std::thread thread;
  {
    StoreAccess outer(store);
    thread = std::thread([&] {
      StoreAccess access(store);
      done = true;
    });
    { StoreAccess inner(store); }
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(done);
  }
  thread.join();
  EXPECT_TRUE(done);
}

}  // namespace
}  // namespace tamu::registry::storetests
