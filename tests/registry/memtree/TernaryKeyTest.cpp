#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "registry/memtree/TernaryKey.h"

namespace tamu::registry {
namespace {

class TernaryKeyTest : public ::testing::Test {
 protected:
  // Adds a value; the slots count up from 1.
  TernaryValue* Add(const char* name) {
    const unsigned int id = static_cast<unsigned int>(values_.size() + 1) << 8;
    values_.push_back(std::make_unique<TernaryValue>(id, new TernaryValueNode));
    TernaryValue* value = values_.back().get();
    value->SetValue(name, id, true);
    EXPECT_EQ(0u, key.AddValue(value));
    return value;
  }
  // The list in memory and the one of the records, which must agree: "300 b, 200 b, 100 a".
  std::string Values() const {
    std::string text;
    unsigned int nextId = key.node.firstValue();
    for (const TernaryValue* value = key.firstValue; value != nullptr; value = value->next) {
      EXPECT_EQ(value->id, nextId);
      nextId = value->node.nextValue();
      char id[16];
      std::snprintf(id, sizeof id, "%x ", unsigned{value->id});
      text += (text.empty() ? "" : ", ") + std::string(id) + value->node.name();
    }
    EXPECT_EQ(0u, nextId);
    return text;
  }

  TernaryKey key{0x200, new TernaryKeyNode};
  std::vector<std::unique_ptr<TernaryValue>> values_;
};

TEST_F(TernaryKeyTest, HasNoValuesAtFirst) {
  EXPECT_EQ(0x200u, key.id);
  EXPECT_EQ(nullptr, key.firstValue);
  TernaryValue* found = nullptr;
  TernaryValue* before = nullptr;
  EXPECT_EQ(2u, key.FindValue("a", found));
  EXPECT_EQ(status::kNotFound, key.RemoveValue("a", found, before));
  EXPECT_EQ(nullptr, found);
  EXPECT_EQ(nullptr, before);
}

TEST_F(TernaryKeyTest, TheValueAddedLastIsFoundFirst) {
  Add("a");
  TernaryValue* older = Add("b");
  TernaryValue* newer = Add("b");
  EXPECT_EQ("300 b, 200 b, 100 a", Values());
  EXPECT_EQ(3u, key.node.valueCount());
  TernaryValue* found = nullptr;
  EXPECT_EQ(0u, key.FindValue("b", found));
  EXPECT_EQ(found, newer);
  TernaryValue* before = key.firstValue;
  EXPECT_EQ(status::kOk, key.RemoveValue("b", found, before));
  EXPECT_EQ(found, newer);
  EXPECT_EQ(nullptr, before);
  EXPECT_EQ(0u, key.FindValue("b", found));
  EXPECT_EQ(found, older);
  EXPECT_EQ(2u, key.FindValue("c", found));
  EXPECT_EQ(found, older) << "untouched";
}

TEST_F(TernaryKeyTest, AValueIsTakenOutOfTheMiddle) {
  Add("a");
  TernaryValue* middle = Add("b");
  TernaryValue* first = Add("c");
  TernaryValue* removed = nullptr;
  TernaryValue* before = nullptr;
  EXPECT_EQ(status::kOk, key.RemoveValue("b", removed, before));
  EXPECT_EQ(removed, middle);
  EXPECT_EQ(before, first);
  EXPECT_EQ(0x100u, first->node.nextValue());
  EXPECT_EQ("300 c, 100 a", Values());
  EXPECT_EQ(2u, key.node.valueCount());
  EXPECT_EQ(status::kOk, key.RemoveValue("a", removed, before));
  EXPECT_EQ(before, first);
  EXPECT_EQ(0u, first->node.nextValue());
  EXPECT_EQ("300 c", Values());
}

TEST_F(TernaryKeyTest, TakingTheOnlyValueLeavesNone) {
  Add("a");
  TernaryValue* removed = nullptr;
  TernaryValue* before = nullptr;
  EXPECT_EQ(status::kOk, key.RemoveValue("a", removed, before));
  EXPECT_EQ(0u, key.node.firstValue());
  EXPECT_EQ(0u, key.node.valueCount());
  EXPECT_EQ(nullptr, key.firstValue);
}

TEST_F(TernaryKeyTest, TheCountOfValuesWrapsAround) {
  key.node.setValueCount(0xFFFF);
  Add("a");
  EXPECT_EQ(0u, key.node.valueCount());
  TernaryValue* removed = nullptr;
  TernaryValue* before = nullptr;
  EXPECT_EQ(status::kOk, key.RemoveValue("a", removed, before));
  EXPECT_EQ(0xFFFFu, key.node.valueCount());
}

TEST_F(TernaryKeyTest, ADefaultValueIsSetAndTakenAway) {
  unsigned long long number = 5;
  EXPECT_FALSE(key.isDefaultValueSet());
  EXPECT_EQ(status::kNotFound, key.GetDefaultValue(&number));
  EXPECT_EQ(5u, number);
  EXPECT_EQ(status::kNotFound, key.DeleteDefaultValue());
  EXPECT_EQ(status::kOk, key.SetDefaultValue(0x0102030405060708ull));
  EXPECT_TRUE(key.isDefaultValueSet());
  EXPECT_EQ(status::kOk, key.GetDefaultValue(&number));
  EXPECT_EQ(0x0102030405060708ull, number);
  EXPECT_EQ(status::kOk, key.DeleteDefaultValue());
  EXPECT_EQ(status::kNotFound, key.GetDefaultValue(&number));
  EXPECT_EQ(0x0102030405060708ull, key.node.defaultValue()) << "the stored number stays";
}

TEST_F(TernaryKeyTest, TheOwnerAndTheAdministratorHaveTheLowNibble) {
  key.node.setOwner(1000);
  key.node.setPermission(0x52);  // others 5, owner 2
  for (unsigned int right = 1; right <= 15; ++right) {
    const unsigned char rights = static_cast<unsigned char>(right);
    EXPECT_EQ(key.isPermissible(1000, rights), (right & 2) != 0) << right;
    EXPECT_EQ(key.isPermissible(65535, rights), (right & 2) != 0) << right;
    EXPECT_EQ(key.isPermissible(1001, rights), (right & 5) != 0) << right;
  }
  key.node.setPermission(0xF0);
  EXPECT_FALSE(key.isPermissible(65535, 15)) << "though everybody else may do everything";
  EXPECT_FALSE(key.isPermissible(1000, 15));
  EXPECT_TRUE(key.isPermissible(0, 15));
}

}  // namespace
}  // namespace tamu::registry
