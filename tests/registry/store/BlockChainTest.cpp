#include "registry/store/BlockChain.h"
#include "tests/registry/store/StoreTesting.h"

namespace tamu::registry::storetests {
namespace {

// 150 bytes in the blocks 5, 6 and 2, which hold 'a', 'b' and 'c'.
class BlockChainTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    std::string bytes = Bytes();
    SetU32(bytes, kTables[3] + 28, 361);
    SetEntry(bytes, 5, 6);
    SetEntry(bytes, 6, 2);
    SetEntry(bytes, 2, 0);
    for (unsigned int i = 0; i < 64; ++i) {
      bytes[kAreas[3] + 64 * 5 + i] = 'a';
      bytes[kAreas[3] + 64 * 6 + i] = 'b';
      bytes[kAreas[3] + 64 * 2 + i] = 'c';
    }
    Reopen(bytes);
  }
  static void SetEntry(std::string& bytes, unsigned int slot, unsigned int next) {
    SetU32(bytes, kTables[3] + 32 + 4 * slot, next);
  }
  unsigned int Follow(unsigned int id) {
    StoreAccess access(store);
    return BlockChain(store.Tables()).Follow(store.Bytes(), id);
  }
  // The first `size` bytes of the chain, or all when it has fewer.
  std::string Read(unsigned int id, unsigned int size) {
    StoreAccess access(store);
    BlockChain chain(store.Tables());
    EXPECT_EQ(status::kOk, chain.Follow(store.Bytes(), id));
    std::string text(size + 1, '.');
    unsigned int read = size;
    EXPECT_EQ(status::kOk, chain.Read(store.Bytes(), text.data(), &read));
    EXPECT_EQ('.', text[read]) << "written behind the end";
    return text.substr(0, read);
  }
};

TEST_F(BlockChainTest, ReadsTheBlocksInTheOrderOfTheChain) {
  const std::string all = std::string(64, 'a') + std::string(64, 'b') + std::string(64, 'c');
  EXPECT_EQ(all, Read(0x500, 192));
  EXPECT_EQ(all.substr(64), Read(0x600, 128));
  EXPECT_EQ(std::string(64, 'c'), Read(0x200, 64));
}

TEST_F(BlockChainTest, ReadsNoMoreThanIsAskedFor) {
  EXPECT_EQ("a", Read(0x500, 1));
  EXPECT_EQ(std::string(64, 'a'), Read(0x500, 64));
  EXPECT_EQ(std::string(64, 'a') + "b", Read(0x500, 65));
  EXPECT_EQ(std::string(64, 'a') + std::string(64, 'b') + "c", Read(0x500, 129));
  EXPECT_EQ("", Read(0x500, 0));
}

TEST_F(BlockChainTest, ReadsNoMoreThanThereIs) {
  EXPECT_EQ(192u, Read(0x500, 1024).size());
}

TEST_F(BlockChainTest, NoIdHasNoChain) {
  EXPECT_EQ(status::kInvalidFile, Follow(0));
  EXPECT_EQ(status::kInvalidFile, Follow(0x501));    // of a second table
  EXPECT_EQ(status::kInvalidFile, Follow(0x16D00));  // slot 365
}

TEST_F(BlockChainTest, AFreeBlockHasNoChain) {
  EXPECT_EQ(status::kOk, Follow(0x200));
  EXPECT_EQ(status::kInvalidFile, Follow(0x700));
}

TEST_F(BlockChainTest, AChainIsAsLongAsAValueCanBe) {
  std::string bytes = Bytes();
  for (unsigned int slot = 20; slot < 36; ++slot) SetEntry(bytes, slot, slot + 1);
  SetEntry(bytes, 35, 0);
  SetEntry(bytes, 19, 20);
  Reopen(bytes);
  EXPECT_EQ(status::kOk, Follow(0x1400));           // 16 blocks
  EXPECT_EQ(status::kInvalidFile, Follow(0x1300));  // 17
}

TEST_F(BlockChainTest, DamagedChainsAreRefused) {
  for (const unsigned int next : {2u, 5u, 365u, 0xFFFFFFFFu}) {  // two circles, two wild ones
    SCOPED_TRACE(next);
    Damage(kTables[3] + 32 + 4 * 2, next);
    EXPECT_EQ(status::kInvalidFile, Follow(0x500));
  }
}

TEST_F(BlockChainTest, WhatCannotBeReadIsTold) {
  StoreAccess access(store);
  BlockChain chain(store.Tables());
  ASSERT_EQ(status::kOk, chain.Follow(store.Bytes(), 0x500));
  TernaryFile closed;
  char buffer[192];
  unsigned int size = sizeof buffer;
  EXPECT_EQ(status::kInputOutput, chain.Read(closed.Bytes(), buffer, &size));
}

}  // namespace
}  // namespace tamu::registry::storetests
