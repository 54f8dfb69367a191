#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "registry/RegistryInstance.h"
#include "registry/base/RegistryStatus.h"

namespace tamu::registry {

namespace {

// The paths of the list, in order, each with a blank behind it.
std::string Listed() {
  std::string paths;
  for (RegistryInstance* each = RegistryInstance::sFirstInstance; each != nullptr;
       each = each->next) {
    paths += std::string(each->path) + " ";
  }
  return paths;
}

class RegistryInstanceTest : public ::testing::Test {
 protected:
  ~RegistryInstanceTest() override { EXPECT_EQ(RegistryInstance::sFirstInstance, nullptr); }
};

TEST_F(RegistryInstanceTest, BeginsEmptyWithOneReference) {
  RegistryInstance* instance = RegistryInstance::CreateInstance("a");
  ASSERT_NE(instance, nullptr);
  EXPECT_STREQ(instance->path, "a");
  EXPECT_EQ(instance->keyTree, nullptr);
  EXPECT_EQ(instance->fileTree, nullptr);
  EXPECT_EQ(instance->daemon, nullptr);
  EXPECT_EQ(instance->handles, nullptr);
  EXPECT_EQ(instance->refCount, 1u);
  EXPECT_EQ(instance->next, nullptr);
  EXPECT_EQ(instance->prev, nullptr);
  EXPECT_EQ(RegistryInstance::sFirstInstance, instance);
  EXPECT_EQ(RegistryInstance::DeleteInstance(instance), 0u);
}

TEST_F(RegistryInstanceTest, OfOnePathIsShared) {
  RegistryInstance* instance = RegistryInstance::CreateInstance("a");
  const std::string samePath = "a";
  EXPECT_EQ(RegistryInstance::CreateInstance(samePath.c_str()), instance);
  EXPECT_EQ(instance->refCount, 2u);
  EXPECT_EQ(RegistryInstance::DeleteInstance(instance), 16u);
  EXPECT_EQ(instance->refCount, 1u);
  EXPECT_EQ(Listed(), "a ");
  EXPECT_EQ(RegistryInstance::DeleteInstance(instance), 0u);
}

TEST_F(RegistryInstanceTest, KeepsACopyOfThePath) {
  char path[] = "first";
  RegistryInstance* instance = RegistryInstance::CreateInstance(path);
  std::strcpy(path, "other");
  EXPECT_STREQ(instance->path, "first");
  RegistryInstance* other = RegistryInstance::CreateInstance(path);
  EXPECT_NE(other, instance);
  EXPECT_EQ(RegistryInstance::DeleteInstance(instance), 0u);
  EXPECT_EQ(RegistryInstance::DeleteInstance(other), 0u);
}

TEST_F(RegistryInstanceTest, OfANewPathIsAppended) {
  RegistryInstance* a = RegistryInstance::CreateInstance("a");
  RegistryInstance* b = RegistryInstance::CreateInstance("b");
  RegistryInstance* c = RegistryInstance::CreateInstance("c");
  EXPECT_EQ(Listed(), "a b c ");
  EXPECT_EQ(a->prev, nullptr);
  EXPECT_EQ(b->prev, a);
  EXPECT_EQ(c->prev, b);
  EXPECT_EQ(c->next, nullptr);
  for (RegistryInstance* each : {a, b, c}) EXPECT_EQ(RegistryInstance::DeleteInstance(each), 0u);
}

// Whatever is freed first, nothing freed is followed.
TEST_F(RegistryInstanceTest, LeavesTheListInEveryOrder) {
  std::string order = "abc";
  do {
    RegistryInstance* instances[] = {RegistryInstance::CreateInstance("a"),
                                     RegistryInstance::CreateInstance("b"),
                                     RegistryInstance::CreateInstance("c")};
    std::string left = "a b c ";
    for (char path : order) {
      EXPECT_EQ(RegistryInstance::DeleteInstance(instances[path - 'a']), 0u);
      left.erase(left.find(path), 2);
      EXPECT_EQ(Listed(), left) << "in the order " << order;
    }
  } while (std::next_permutation(order.begin(), order.end()));
}

TEST_F(RegistryInstanceTest, LeavesThePrevOfItsSuccessorAlone) {
  RegistryInstance* a = RegistryInstance::CreateInstance("a");
  RegistryInstance* b = RegistryInstance::CreateInstance("b");
  RegistryInstance* c = RegistryInstance::CreateInstance("c");
  EXPECT_EQ(RegistryInstance::DeleteInstance(b), 0u);
  EXPECT_EQ(a->next, c);
  EXPECT_EQ(c->prev, b);
  EXPECT_EQ(RegistryInstance::DeleteInstance(c), 0u);
  EXPECT_EQ(RegistryInstance::DeleteInstance(a), 0u);
}

TEST_F(RegistryInstanceTest, IsAppendedBehindTheLastAfterOthersWent) {
  RegistryInstance* a = RegistryInstance::CreateInstance("a");
  RegistryInstance* b = RegistryInstance::CreateInstance("b");
  EXPECT_EQ(RegistryInstance::DeleteInstance(a), 0u);
  RegistryInstance* c = RegistryInstance::CreateInstance("c");
  EXPECT_EQ(Listed(), "b c ");
  EXPECT_EQ(c->prev, b);
  EXPECT_EQ(RegistryInstance::DeleteInstance(b), 0u);
  EXPECT_EQ(RegistryInstance::DeleteInstance(c), 0u);
}

TEST_F(RegistryInstanceTest, ThatIsNullIsRefused) {
  EXPECT_EQ(RegistryInstance::DeleteInstance(nullptr), 22u);
}

}  // namespace

}  // namespace tamu::registry
