#include "tests/registry/store/StoreTesting.h"
#include "tests/support/LengthLook.h"

namespace status = tamu::registry::status;

namespace tamu::registry::storetests {
namespace {

using TernaryFileAccessTest = StoreTest;

TEST_F(TernaryFileAccessTest, IntegersAreLittleEndian) {
  EXPECT_EQ(status::kOk, store.FileWriteInteger(100, 0xDEADBEEF));
  EXPECT_EQ(Bytes().substr(99, 6), std::string("\0\xEF\xBE\xAD\xDE\0", 6));
  unsigned int value = 0;
  EXPECT_EQ(status::kOk, store.FileReadInteger(100, &value));
  EXPECT_EQ(0xDEADBEEFu, value);
  EXPECT_EQ(status::kOk, store.FileReadInteger(101, &value));
  EXPECT_EQ(0x00DEADBEu, value);
}

TEST_F(TernaryFileAccessTest, TransfersExactlyTheBytesAskedFor) {
  const unsigned char out[3] = {0x80, 0x00, 0xFF};
  EXPECT_EQ(status::kOk, store.WriteToFile(200, 3, out));
  EXPECT_EQ(status::kOk, store.WriteChanges(0, 300, 3, out));
  EXPECT_EQ(Bytes().substr(199, 5), std::string("\0\x80\0\xFF\0", 5));
  EXPECT_EQ(Bytes().substr(299, 5), std::string("\0\x80\0\xFF\0", 5));
  unsigned char in[5] = {9, 9, 9, 9, 9};
  unsigned char* place = in + 1;
  EXPECT_EQ(status::kOk, store.ReadFromFile(200, 3, place));
  EXPECT_EQ(std::string(in, in + 5), std::string("\x09\x80\0\xFF\x09", 5));
}

// What is written by its offset may be where a path leads.
TEST_F(TernaryFileAccessTest, AfterWritesByOffsetNoPathIsKnown) {
  RegistryOptions options;
  options.durability = Durability::kPower;
  TernaryFile shared;
  shared.SetOptions(options);
  ASSERT_EQ(status::kOk, shared.Open(path.c_str()));
  const auto isKnownBehind = [&](const auto& operation) {
    PathMemo* const memo = StoreAccess(shared).Paths();
    PathMemo::Question(memo, 10, 1, "house").Keep(2, 3);
    EXPECT_EQ(status::kOk, operation());
    PathMemo::Place place;
    return PathMemo::Question(memo, 10, 1, "house").Find(&place);
  };
  const unsigned char bytes[4] = {};
  unsigned int number = 0;
  EXPECT_TRUE(isKnownBehind([&] { return shared.FileReadInteger(100, &number); }));
  EXPECT_FALSE(isKnownBehind([&] { return shared.WriteToFile(100, 4, bytes); }));
  EXPECT_FALSE(isKnownBehind([&] { return shared.WriteChanges(0, 100, 4, bytes); }));
  EXPECT_FALSE(isKnownBehind([&] { return shared.FileWriteInteger(100, 0); }));
  EXPECT_FALSE(isKnownBehind([&] { return shared.FileFillSequence(100, 0, 1, 1); }));
  EXPECT_FALSE(isKnownBehind([&] { return shared.FileFillZero(0, 1); }));
}

TEST_F(TernaryFileAccessTest, ReadingBeyondTheEndAnswers5) {
  unsigned int value = 77;
  EXPECT_EQ(status::kOk, store.FileReadInteger(75884, &value));
  value = 77;
  EXPECT_EQ(status::kInputOutput, store.FileReadInteger(75885, &value));
  EXPECT_EQ(77u, value);
  EXPECT_EQ(status::kInputOutput, store.FileReadInteger(0xFFFFFFFF, &value));
}

TEST_F(TernaryFileAccessTest, WritingBeyondTheEndMakesTheFileLonger) {
  const std::string before = Bytes();
  const unsigned char bytes[3] = {1, 2, 3};
  EXPECT_EQ(status::kOk, store.WriteToFile(kNewFileSize, 3, bytes));
  EXPECT_TRUE(Bytes() == before + "\1\2\3");
  EXPECT_EQ(status::kOk, store.FileWriteInteger(kNewFileSize + 1, 0x04050607));
  EXPECT_TRUE(Bytes() == before + "\1\7\6\5\4");
  EXPECT_EQ(status::kOk, store.WriteChanges(0, kNewFileSize + 6, 3, bytes));
  EXPECT_TRUE(Bytes() == before + "\1\7\6\5\4" + Zeros(1) + "\1\2\3");
}

TEST_F(TernaryFileAccessTest, NullPointersAnswer22) {
  unsigned char* none = nullptr;
  EXPECT_EQ(status::kBadArgument, store.ReadFromFile(0, 1, none));
  EXPECT_EQ(status::kBadArgument, store.WriteToFile(84, 1, nullptr));
  EXPECT_EQ(status::kBadArgument, store.FileReadInteger(0, nullptr));
  EXPECT_EQ(status::kBadArgument, store.WriteHeader(0, nullptr));
  TernaryHeader* header = nullptr;
  EXPECT_EQ(status::kBadArgument, store.ReadHeader(header));
}

// The fills write in chunks of 256 numbers and of 1024 bytes.
TEST_F(TernaryFileAccessTest, ASequenceOfAnyLengthIsFollowedAtOnceByZeros) {
  for (unsigned int count : {1u, 255u, 256u, 257u, 600u}) {
    SCOPED_TRACE(count);
    ASSERT_EQ(
        status::kOk,
        store.WriteToFile(
            84, 4096, reinterpret_cast<const unsigned char*>(std::string(4096, '\xAA').data())));
    std::string expected(4, '\xAA');
    for (unsigned int i = 0; i < count; ++i) AddU32(expected, 7 + i);
    expected += Zeros(1025);
    expected.resize(4096, '\xAA');
    EXPECT_EQ(status::kOk, store.FileFillSequence(88, 0, 7, count));
    EXPECT_EQ(status::kOk, store.FileFillZero(0, 1025));
    EXPECT_TRUE(Bytes().substr(84, 4096) == expected);
  }
}

TEST_F(TernaryFileAccessTest, FillsOfLengthZeroWriteNothing) {
  const std::string before = Bytes();
  EXPECT_EQ(status::kOk, store.FileFillSequence(84, 0, 1, 0));
  EXPECT_EQ(status::kOk, store.FileFillZero(84, 0));
  EXPECT_EQ(status::kOk, store.FileFillSequence(90000, 0, 1, 0));
  EXPECT_EQ(status::kOk, store.FileFillZero(90000, 0));
  EXPECT_TRUE(Bytes() == before);
}

TEST_F(TernaryFileAccessTest, TheHeaderIsWrittenWhereItSays) {
  TernaryHeader header = store.Header();
  header.setStartNode(0x4400);
  EXPECT_EQ(status::kOk, store.WriteHeader(0, &header));
  EXPECT_EQ(0x4400u, U32(4208));
  EXPECT_EQ(0u, store.GetStartNode(0));  // the store's own record is another one
  header.setHeaderOffset(84);
  EXPECT_EQ(status::kOk, store.WriteHeader(0, &header));
  EXPECT_EQ(0x4400u, U32(84 + 28));
}

TEST_F(TernaryFileAccessTest, AHeaderThatSaysItLiesElsewhereIsNotWritten) {
  const std::string before = Bytes();
  TernaryHeader header = store.Header();
  for (unsigned int offset : {0u, 83u, 4181u, 10188u, 0xFFFFFFFFu}) {
    SCOPED_TRACE(offset);
    header.setHeaderOffset(offset);
    EXPECT_EQ(status::kInvalidFile, store.WriteHeader(0, &header));
  }
  EXPECT_TRUE(Bytes() == before);
}

TEST_F(TernaryFileAccessTest, ReadHeaderReadsTheReservedArea) {
  ASSERT_EQ(status::kOk, store.FileWriteInteger(84 + 28, 0x12345678));
  TernaryHeader header;
  TernaryHeader* place = &header;
  EXPECT_EQ(status::kOk, store.ReadHeader(place));
  EXPECT_EQ(0x12345678u, header.startNode());
  EXPECT_EQ(0u, header.headerOffset());
}

TEST_F(TernaryFileAccessTest, TransactionsChangeNothing) {
  const std::string before = Bytes();
  unsigned int transaction = 4711;
  EXPECT_EQ(status::kOk, store.BeginChanges(&transaction));
  EXPECT_EQ(4711u, transaction);
  EXPECT_EQ(status::kOk, store.EndChanges(transaction));
  EXPECT_EQ(status::kOk, store.EndChanges(0));
  EXPECT_EQ(status::kOk, store.BeginChanges(nullptr));
  EXPECT_TRUE(Bytes() == before);
}

// Somebody else cuts the file while it is open.
TEST_F(TernaryFileAccessTest, AFileThatBecameShorterAnswers5) {
  const unsigned int id = Take(NodeKind::kString);
  TernaryStringNode node;
  ASSERT_EQ(status::kOk, store.ReadNodeInBuffer(id, &node));
  std::filesystem::resize_file(path, 8192);
  WaitForTheNextLook();
  EXPECT_EQ(status::kInputOutput, store.ReadNodeInBuffer(id, &node));
  unsigned int value = 0;
  EXPECT_EQ(status::kOk, store.FileReadInteger(4180, &value));
}

}  // namespace
}  // namespace tamu::registry::storetests
