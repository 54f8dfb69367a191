#include "tests/registry/store/StoreTesting.h"

namespace status = tamu::registry::status;

namespace tamu::registry::storetests {
namespace {

// The operations of one kind of node under common names.
struct Strings {
  using Node = TernaryStringNode;
  static constexpr unsigned int kKind = 0;
  static unsigned int Read(TernaryFile& s, unsigned int id, Node*& n) { return s.ReadNode(id, n); }
  static unsigned int ReadIn(TernaryFile& s, unsigned int id, Node* n) {
    return s.ReadNodeInBuffer(id, n);
  }
  static unsigned int Write(TernaryFile& s, unsigned int id, Node* n, bool release) {
    return s.WriteNode(0, id, n, release);
  }
  static unsigned int Acquire(TernaryFile& s, unsigned int* id, Node*& n) {
    return s.AcquireNode(0, id, n);
  }
  static unsigned int Release(TernaryFile& s, unsigned int id, Node* n) {
    return s.ReleaseNode(0, id, n);
  }
};

struct Keys {
  using Node = TernaryKeyNode;
  static constexpr unsigned int kKind = 1;
  static unsigned int Read(TernaryFile& s, unsigned int id, Node*& n) {
    return s.ReadKeyNode(id, n);
  }
  static unsigned int ReadIn(TernaryFile& s, unsigned int id, Node* n) {
    return s.ReadNodeInBuffer(id, n);
  }
  static unsigned int Write(TernaryFile& s, unsigned int id, Node* n, bool release) {
    return s.WriteKeyNode(0, id, n, release);
  }
  static unsigned int Acquire(TernaryFile& s, unsigned int* id, Node*& n) {
    return s.AcquireKeyNode(0, id, n);
  }
  static unsigned int Release(TernaryFile& s, unsigned int id, Node* n) {
    return s.ReleaseKeyNode(0, id, n);
  }
};

struct Values {
  using Node = TernaryValueNode;
  static constexpr unsigned int kKind = 2;
  static unsigned int Read(TernaryFile& s, unsigned int id, Node*& n) {
    return s.ReadValueNode(id, n);
  }
  static unsigned int ReadIn(TernaryFile& s, unsigned int id, Node* n) {
    return s.ReadNodeInBuffer(id, n);
  }
  static unsigned int Write(TernaryFile& s, unsigned int id, Node* n, bool release) {
    return s.WriteValueNode(0, id, n, release);
  }
  static unsigned int Acquire(TernaryFile& s, unsigned int* id, Node*& n) {
    return s.AcquireValueNode(0, id, n);
  }
  static unsigned int Release(TernaryFile& s, unsigned int id, Node* n) {
    return s.ReleaseValueNode(0, id, n);
  }
};

template <class Kind>
class TernaryFileNodesTest : public StoreTest {
 protected:
  using Node = typename Kind::Node;
  static constexpr unsigned int kSize = kRecordSizes[Kind::kKind];

  static std::string Text(const Node& node) {
    return std::string(node.bytes(), node.bytes() + kSize);
  }
  static void Fill(Node& node, unsigned char first) {
    for (unsigned int i = 0; i < kSize; ++i) {
      node.bytes()[i] = static_cast<unsigned char>(first + i);
    }
  }
  static unsigned int Offset(unsigned int slot) { return kAreas[Kind::kKind] + slot * kSize; }
};

using NodeKinds = ::testing::Types<Strings, Keys, Values>;
TYPED_TEST_SUITE(TernaryFileNodesTest, NodeKinds);

TYPED_TEST(TernaryFileNodesTest, AnAcquiredNodeIsZeroAndItsSlotUntouched) {
  const unsigned int kind = TypeParam::kKind;
  std::string bytes = this->Bytes();
  bytes.replace(this->Offset(1), this->kSize, this->kSize, '\xEE');
  this->Reopen(bytes);
  unsigned int id = 0;
  typename TypeParam::Node* node = nullptr;
  ASSERT_EQ(status::kOk, TypeParam::Acquire(this->store, &id, node));
  EXPECT_EQ(0x100u, id);
  EXPECT_EQ(this->Text(*node), Zeros(this->kSize));
  delete node;
  SetU32(bytes, kTables[kind] + 28, 363);
  SetU32(bytes, kTables[kind] + 32, 2);
  SetU32(bytes, kTables[kind] + 36, 0);
  EXPECT_TRUE(this->Bytes() == bytes);
  EXPECT_EQ(1u, this->store.Descriptor(kKinds[kind]).usedNodes);
}

TYPED_TEST(TernaryFileNodesTest, ANodeIsStoredAsItsBytesAtItsSlot) {
  this->TakeMany(kKinds[TypeParam::kKind], 3);
  std::string expected = this->Bytes();
  typename TypeParam::Node node;
  this->Fill(node, 0x7F);
  EXPECT_EQ(0u, TypeParam::Write(this->store, 0x300, &node, false));
  expected.replace(this->Offset(3), this->kSize, this->Text(node));
  EXPECT_TRUE(this->Bytes() == expected);

  typename TypeParam::Node back;
  EXPECT_EQ(0u, TypeParam::ReadIn(this->store, 0x300, &back));
  EXPECT_EQ(this->Text(back), this->Text(node));
  typename TypeParam::Node* fresh = nullptr;
  ASSERT_EQ(0u, TypeParam::Read(this->store, 0x300, fresh));
  EXPECT_EQ(this->Text(*fresh), this->Text(node));
  delete fresh;
}

TYPED_TEST(TernaryFileNodesTest, ANodeOfASecondTableLiesInItsArea) {
  this->TakeMany(kKinds[TypeParam::kKind], 366);
  typename TypeParam::Node node;
  this->Fill(node, 1);
  EXPECT_EQ(0u, TypeParam::Write(this->store, 0x201, &node, false));
  EXPECT_EQ(this->Bytes().substr(75888 + 32 + 2000 + 2 * this->kSize, this->kSize),
            this->Text(node));
}

TYPED_TEST(TernaryFileNodesTest, WritingFreesTheRecordWhenTold) {
  this->TakeMany(kKinds[TypeParam::kKind], 1);
  typename TypeParam::Node* node = new typename TypeParam::Node;
  EXPECT_EQ(0u, TypeParam::Write(this->store, 0x100, node, true));  // freed: leaks otherwise
  typename TypeParam::Node* kept = new typename TypeParam::Node;
  EXPECT_EQ(59u, TypeParam::Write(this->store, 0x101, kept, true));
  EXPECT_EQ(22u, TypeParam::Write(this->store, 0, kept, true));
  this->Fill(*kept, 9);  // not freed by a write that failed
  delete kept;
}

TYPED_TEST(TernaryFileNodesTest, ReleasingGivesTheSlotBackAndFreesTheRecord) {
  const unsigned int kind = TypeParam::kKind;
  unsigned int id = 0;
  typename TypeParam::Node* node = nullptr;
  ASSERT_EQ(status::kOk, TypeParam::Acquire(this->store, &id, node));
  EXPECT_EQ(0u, TypeParam::Release(this->store, id, node));
  EXPECT_EQ(0u, this->store.Descriptor(kKinds[kind]).usedNodes);
  EXPECT_EQ(364u, this->FreeCount(kind));
  EXPECT_EQ(1u, this->Entry(kind, 0));
  EXPECT_EQ(2u, this->Entry(kind, 1));
  ASSERT_EQ(status::kOk, TypeParam::Acquire(this->store, &id, node));
  EXPECT_EQ(0x100u, id);
  delete node;
  EXPECT_EQ(0u, TypeParam::Release(this->store, id, nullptr));
  EXPECT_EQ(59u, TypeParam::Release(this->store, id, nullptr));
  EXPECT_EQ(0u, this->store.Descriptor(kKinds[kind]).usedNodes);
}

TYPED_TEST(TernaryFileNodesTest, IdZeroReadsSlotZeroOfTheNewestTable) {
  typename TypeParam::Node node;
  this->Fill(node, 1);
  EXPECT_EQ(0u, TypeParam::ReadIn(this->store, 0, &node));
  EXPECT_EQ(this->Text(node), Zeros(this->kSize));
  ASSERT_EQ(status::kOk, this->store.ExpandFile(&this->store.Descriptor(kKinds[TypeParam::kKind]),
                                                this->kSize, 500));
  // Marked, so that the two slots 0 can be told apart.
  const unsigned char mark = 0x77;
  ASSERT_EQ(status::kOk, this->store.WriteToFile(75888 + 32 + 2000, 1, &mark));
  EXPECT_EQ(0u, TypeParam::ReadIn(this->store, 0, &node));
  EXPECT_EQ(0x77, node.bytes()[0]);
}

TYPED_TEST(TernaryFileNodesTest, IdZeroIsNeverWrittenOrReleased) {
  this->TakeMany(kKinds[TypeParam::kKind], 1);
  const std::string before = this->Bytes();
  typename TypeParam::Node node;
  this->Fill(node, 1);
  EXPECT_EQ(22u, TypeParam::Write(this->store, 0, &node, false));
  EXPECT_EQ(22u, TypeParam::Release(this->store, 0, nullptr));
  EXPECT_TRUE(this->Bytes() == before);
  EXPECT_EQ(1u, this->store.Descriptor(kKinds[TypeParam::kKind]).usedNodes);
}

TYPED_TEST(TernaryFileNodesTest, IdsWithoutTableOrSlotAnswer59) {
  const std::string before = this->Bytes();
  for (unsigned int id : {0x101u, 0x1C8u, 0xC8u, 0x1FFu, 0x16D00u, 0xEA6000u, 0xFFFFFFFFu}) {
    SCOPED_TRACE(id);
    typename TypeParam::Node node;
    this->Fill(node, 1);
    const std::string untouched = this->Text(node);
    EXPECT_EQ(59u, TypeParam::ReadIn(this->store, id, &node));
    EXPECT_EQ(this->Text(node), untouched);
    typename TypeParam::Node* none = nullptr;
    EXPECT_EQ(59u, TypeParam::Read(this->store, id, none));
    EXPECT_EQ(nullptr, none);
    EXPECT_EQ(59u, TypeParam::Write(this->store, id, &node, false));
    EXPECT_EQ(59u, TypeParam::Release(this->store, id, nullptr));
  }
  EXPECT_TRUE(this->Bytes() == before);
}

TYPED_TEST(TernaryFileNodesTest, NullPointersAnswer22) {
  typename TypeParam::Node* node = nullptr;
  EXPECT_EQ(22u, TypeParam::ReadIn(this->store, 0x100, nullptr));
  EXPECT_EQ(22u, TypeParam::Write(this->store, 0x100, nullptr, true));
  EXPECT_EQ(status::kBadArgument, TypeParam::Acquire(this->store, nullptr, node));
  EXPECT_EQ(nullptr, node);
}

}  // namespace
}  // namespace tamu::registry::storetests
