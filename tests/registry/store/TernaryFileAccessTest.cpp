#include "tests/registry/store/StoreTesting.h"
#include "tests/support/LengthLook.h"

namespace tamu::registry::storetests {
namespace {

using TernaryFileAccessTest = StoreTest;

TEST_F(TernaryFileAccessTest, IntegersAreLittleEndian) {
  EXPECT_EQ(store.FileWriteInteger(100, 0xDEADBEEF), 0u);
  EXPECT_EQ(Bytes().substr(99, 6), std::string("\0\xEF\xBE\xAD\xDE\0", 6));
  unsigned int value = 0;
  EXPECT_EQ(store.FileReadInteger(100, &value), 0u);
  EXPECT_EQ(value, 0xDEADBEEFu);
  EXPECT_EQ(store.FileReadInteger(101, &value), 0u);
  EXPECT_EQ(value, 0x00DEADBEu);
}

TEST_F(TernaryFileAccessTest, TransfersExactlyTheBytesAskedFor) {
  const unsigned char out[3] = {0x80, 0x00, 0xFF};
  EXPECT_EQ(store.WriteToFile(200, 3, out), 0u);
  EXPECT_EQ(store.WriteChanges(0, 300, 3, out), 0u);
  EXPECT_EQ(Bytes().substr(199, 5), std::string("\0\x80\0\xFF\0", 5));
  EXPECT_EQ(Bytes().substr(299, 5), std::string("\0\x80\0\xFF\0", 5));
  unsigned char in[5] = {9, 9, 9, 9, 9};
  unsigned char* place = in + 1;
  EXPECT_EQ(store.ReadFromFile(200, 3, place), 0u);
  EXPECT_EQ(std::string(in, in + 5), std::string("\x09\x80\0\xFF\x09", 5));
}

TEST_F(TernaryFileAccessTest, ReadingBeyondTheEndAnswers5) {
  unsigned int value = 77;
  EXPECT_EQ(store.FileReadInteger(75884, &value), 0u);
  value = 77;
  EXPECT_EQ(store.FileReadInteger(75885, &value), 5u);
  EXPECT_EQ(value, 77u);
  EXPECT_EQ(store.FileReadInteger(0xFFFFFFFF, &value), 5u);
}

TEST_F(TernaryFileAccessTest, WritingBeyondTheEndMakesTheFileLonger) {
  const std::string before = Bytes();
  const unsigned char bytes[3] = {1, 2, 3};
  EXPECT_EQ(store.WriteToFile(kNewFileSize, 3, bytes), 0u);
  EXPECT_TRUE(Bytes() == before + "\1\2\3");
  EXPECT_EQ(store.FileWriteInteger(kNewFileSize + 1, 0x04050607), 0u);
  EXPECT_TRUE(Bytes() == before + "\1\7\6\5\4");
  EXPECT_EQ(store.WriteChanges(0, kNewFileSize + 6, 3, bytes), 0u);
  EXPECT_TRUE(Bytes() == before + "\1\7\6\5\4" + Zeros(1) + "\1\2\3");
}

TEST_F(TernaryFileAccessTest, NullPointersAnswer22) {
  unsigned char* none = nullptr;
  EXPECT_EQ(store.ReadFromFile(0, 1, none), 22u);
  EXPECT_EQ(store.WriteToFile(84, 1, nullptr), 22u);
  EXPECT_EQ(store.FileReadInteger(0, nullptr), 22u);
  EXPECT_EQ(store.WriteHeader(0, nullptr), 22u);
  TernaryHeader* header = nullptr;
  EXPECT_EQ(store.ReadHeader(header), 22u);
}

// The fills write in chunks of 256 numbers and of 1024 bytes.
TEST_F(TernaryFileAccessTest, ASequenceOfAnyLengthIsFollowedAtOnceByZeros) {
  for (unsigned int count : {1u, 255u, 256u, 257u, 600u}) {
    SCOPED_TRACE(count);
    ASSERT_EQ(
        store.WriteToFile(84, 4096,
                          reinterpret_cast<const unsigned char*>(std::string(4096, '\xAA').data())),
        0u);
    std::string expected(4, '\xAA');
    for (unsigned int i = 0; i < count; ++i) AddU32(expected, 7 + i);
    expected += Zeros(1025);
    expected.resize(4096, '\xAA');
    EXPECT_EQ(store.FileFillSequence(88, 0, 7, count), 0u);
    EXPECT_EQ(store.FileFillZero(0, 1025), 0u);
    EXPECT_TRUE(Bytes().substr(84, 4096) == expected);
  }
}

TEST_F(TernaryFileAccessTest, FillsOfLengthZeroWriteNothing) {
  const std::string before = Bytes();
  EXPECT_EQ(store.FileFillSequence(84, 0, 1, 0), 0u);
  EXPECT_EQ(store.FileFillZero(84, 0), 0u);
  EXPECT_EQ(store.FileFillSequence(90000, 0, 1, 0), 0u);
  EXPECT_EQ(store.FileFillZero(90000, 0), 0u);
  EXPECT_TRUE(Bytes() == before);
}

TEST_F(TernaryFileAccessTest, TheHeaderIsWrittenWhereItSays) {
  TernaryHeader header = store.Header();
  header.setStartNode(0x4400);
  EXPECT_EQ(store.WriteHeader(0, &header), 0u);
  EXPECT_EQ(U32(4208), 0x4400u);
  EXPECT_EQ(store.GetStartNode(0), 0u);  // the store's own record is another one
  header.setHeaderOffset(84);
  EXPECT_EQ(store.WriteHeader(0, &header), 0u);
  EXPECT_EQ(U32(84 + 28), 0x4400u);
}

TEST_F(TernaryFileAccessTest, AHeaderThatSaysItLiesElsewhereIsNotWritten) {
  const std::string before = Bytes();
  TernaryHeader header = store.Header();
  for (unsigned int offset : {0u, 83u, 4181u, 10188u, 0xFFFFFFFFu}) {
    SCOPED_TRACE(offset);
    header.setHeaderOffset(offset);
    EXPECT_EQ(store.WriteHeader(0, &header), 59u);
  }
  EXPECT_TRUE(Bytes() == before);
}

TEST_F(TernaryFileAccessTest, ReadHeaderReadsTheReservedArea) {
  ASSERT_EQ(store.FileWriteInteger(84 + 28, 0x12345678), 0u);
  TernaryHeader header;
  TernaryHeader* place = &header;
  EXPECT_EQ(store.ReadHeader(place), 0u);
  EXPECT_EQ(header.startNode(), 0x12345678u);
  EXPECT_EQ(header.headerOffset(), 0u);
}

TEST_F(TernaryFileAccessTest, TransactionsChangeNothing) {
  const std::string before = Bytes();
  unsigned int transaction = 4711;
  EXPECT_EQ(store.BeginChanges(&transaction), 0u);
  EXPECT_EQ(transaction, 4711u);
  EXPECT_EQ(store.EndChanges(transaction), 0u);
  EXPECT_EQ(store.EndChanges(0), 0u);
  EXPECT_EQ(store.BeginChanges(nullptr), 0u);
  EXPECT_TRUE(Bytes() == before);
}

// Somebody else cuts the file while it is open.
TEST_F(TernaryFileAccessTest, AFileThatBecameShorterAnswers5) {
  const unsigned int id = Take(NodeKind::kString);
  TernaryStringNode node;
  ASSERT_EQ(store.ReadNodeInBuffer(id, &node), 0u);
  std::filesystem::resize_file(path, 8192);
  WaitForTheNextLook();
  EXPECT_EQ(store.ReadNodeInBuffer(id, &node), 5u);
  unsigned int value = 0;
  EXPECT_EQ(store.FileReadInteger(4180, &value), 0u);
}

}  // namespace
}  // namespace tamu::registry::storetests
