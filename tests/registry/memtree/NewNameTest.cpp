#include "registry/memtree/LoadedObject.h"
#include "registry/memtree/NewName.h"
#include "tests/registry/store/RecordTesting.h"
#include "tests/registry/store/StoreTesting.h"

namespace tamu::registry {
namespace {

class NewNameTest : public storetests::StoreTest {
 protected:
  // The record of a slot, four bytes a group.
  std::string Record(unsigned int slot) {
    TernaryStringNode node;
    EXPECT_EQ(status::kOk, StoreAccess(store).Read(slot << 8, &node));
    return storetests::Hex(node);
  }
  static void Free(TernaryString* string) {
    while (string != nullptr) {
      TernaryString* next = string->equal;
      delete string;
      string = next;
    }
  }
};

TEST_F(NewNameTest, AnObjectIsTakenAndNotWritten) {
  Changes changes(store);
  std::unique_ptr<TernaryString> string;
  ASSERT_EQ(status::kOk, TakeLoaded(changes, TernaryStringNode(), &string));
  EXPECT_EQ(0x100u, string->id);
  EXPECT_EQ(storetests::Hex(TernaryStringNode()), storetests::Hex(string->node));
  EXPECT_EQ(storetests::Hex(TernaryStringNode()), Record(1));
  EXPECT_EQ(0u, Entry(0, 1));
}

TEST_F(NewNameTest, AShortNameIsOneString) {
  TernaryKey key(0x700, new TernaryKeyNode);
  {
    Changes changes(store);
    NewName name;
    ASSERT_EQ(status::kOk, name.Write(changes, "abc", &key));
    EXPECT_EQ(status::kOk, changes.Keep(status::kOk));
    TernaryString* first = name.LetGo();
    EXPECT_EQ(nullptr, name.First());
    EXPECT_EQ(0x100u, first->id);
    EXPECT_EQ(&key, first->key);
    EXPECT_EQ(nullptr, first->equal);
    EXPECT_EQ(Record(1), storetests::Hex(first->node));
    Free(first);
  }
  EXPECT_EQ(
      "00021063 00000000 00000000 00000000 00000000 00070000 61620000 00000000 00000000 00000000",
      Record(1));
}

// Seventeen characters a string.
TEST_F(NewNameTest, ALongNameIsAChainOfStrings) {
  TernaryKey key(0x700, new TernaryKeyNode);
  {
    Changes changes(store);
    NewName name;
    ASSERT_EQ(status::kOk, name.Write(changes, "aaaaaaaaaaaaaaaabccccccccccccccccde", &key));
    EXPECT_EQ(status::kOk, changes.Keep(status::kOk));
    TernaryString* first = name.LetGo();
    ASSERT_NE(nullptr, first->equal);
    ASSERT_NE(nullptr, first->equal->equal);
    EXPECT_EQ(nullptr, first->key);
    EXPECT_EQ(nullptr, first->equal->key);
    EXPECT_EQ(&key, first->equal->equal->key);
    EXPECT_EQ(Record(2), storetests::Hex(first->equal->node));
    Free(first);
  }
  EXPECT_EQ(
      "00100062 00000000 00000000 00020000 00000000 00000000 61616161 61616161 61616161 61616161",
      Record(1));
  EXPECT_EQ(
      "00100064 00000000 00000000 00030000 00000000 00000000 63636363 63636363 63636363 63636363",
      Record(2));
  EXPECT_EQ(
      "00001065 00000000 00000000 00000000 00000000 00070000 00000000 00000000 00000000 00000000",
      Record(3));
}

TEST_F(NewNameTest, WithoutAKeyNoneIsNamed) {
  Changes changes(store);
  NewName name;
  ASSERT_EQ(status::kOk, name.Write(changes, "ab", nullptr));
  EXPECT_EQ(nullptr, name.First()->key);
  EXPECT_EQ(
      "00010062 00000000 00000000 00000000 00000000 00000000 61000000 00000000 00000000 00000000",
      Record(1));
}

// The strings go with the object, the key stays the caller's.
TEST_F(NewNameTest, WhatIsNotLetGoIsDestroyed) {
  const std::string before = Bytes();
  TernaryKey key(0x700, new TernaryKeyNode);
  {
    Changes changes(store);
    NewName name;
    ASSERT_EQ(status::kOk, name.Write(changes, std::string(60, 'n').c_str(), &key));
    EXPECT_EQ(360u, FreeCount(0));
  }
  EXPECT_EQ(0x700u, key.id);
  EXPECT_TRUE(Bytes() == before);
}

TEST_F(NewNameTest, AFailureLeavesNoString) {
  store.Descriptor(NodeKind::kString).damaged = true;  // nothing is allocated then
  Changes changes(store);
  NewName name;
  EXPECT_EQ(status::kInvalidFile, name.Write(changes, "ab", nullptr));
  EXPECT_EQ(nullptr, name.First());
  EXPECT_EQ(nullptr, name.LetGo());
}

}  // namespace
}  // namespace tamu::registry
