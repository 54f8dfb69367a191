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
  ~RegistryInstanceTest() override { EXPECT_EQ(nullptr, RegistryInstance::sFirstInstance); }
};

TEST_F(RegistryInstanceTest, BeginsEmptyWithOneReference) {
  RegistryInstance* instance = RegistryInstance::CreateInstance("a");
  ASSERT_NE(nullptr, instance);
  EXPECT_STREQ(instance->path, "a");
  EXPECT_EQ(nullptr, instance->keyTree);
  EXPECT_EQ(nullptr, instance->fileTree);
  EXPECT_EQ(nullptr, instance->daemon);
  EXPECT_EQ(nullptr, instance->handles);
  EXPECT_EQ(1u, instance->refCount);
  EXPECT_EQ(nullptr, instance->next);
  EXPECT_EQ(nullptr, instance->prev);
  EXPECT_EQ(RegistryInstance::sFirstInstance, instance);
  EXPECT_EQ(status::kOk, RegistryInstance::DeleteInstance(instance));
}

TEST_F(RegistryInstanceTest, OfOnePathIsShared) {
  RegistryInstance* instance = RegistryInstance::CreateInstance("a");
  const std::string samePath = "a";
  EXPECT_EQ(RegistryInstance::CreateInstance(samePath.c_str()), instance);
  EXPECT_EQ(2u, instance->refCount);
  EXPECT_EQ(status::kBusy, RegistryInstance::DeleteInstance(instance));
  EXPECT_EQ(1u, instance->refCount);
  EXPECT_EQ("a ", Listed());
  EXPECT_EQ(status::kOk, RegistryInstance::DeleteInstance(instance));
}

TEST_F(RegistryInstanceTest, KeepsACopyOfThePath) {
  char path[] = "first";
  RegistryInstance* instance = RegistryInstance::CreateInstance(path);
  std::strcpy(path, "other");
  EXPECT_STREQ(instance->path, "first");
  RegistryInstance* other = RegistryInstance::CreateInstance(path);
  EXPECT_NE(other, instance);
  EXPECT_EQ(status::kOk, RegistryInstance::DeleteInstance(instance));
  EXPECT_EQ(status::kOk, RegistryInstance::DeleteInstance(other));
}

TEST_F(RegistryInstanceTest, OfANewPathIsAppended) {
  RegistryInstance* a = RegistryInstance::CreateInstance("a");
  RegistryInstance* b = RegistryInstance::CreateInstance("b");
  RegistryInstance* c = RegistryInstance::CreateInstance("c");
  EXPECT_EQ("a b c ", Listed());
  EXPECT_EQ(nullptr, a->prev);
  EXPECT_EQ(b->prev, a);
  EXPECT_EQ(c->prev, b);
  EXPECT_EQ(nullptr, c->next);
  for (RegistryInstance* each : {a, b, c})
    EXPECT_EQ(status::kOk, RegistryInstance::DeleteInstance(each));
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
      EXPECT_EQ(status::kOk, RegistryInstance::DeleteInstance(instances[path - 'a']));
      left.erase(left.find(path), 2);
      EXPECT_EQ(Listed(), left) << "in the order " << order;
    }
  } while (std::next_permutation(order.begin(), order.end()));
}

TEST_F(RegistryInstanceTest, LeavesThePrevOfItsSuccessorAlone) {
  RegistryInstance* a = RegistryInstance::CreateInstance("a");
  RegistryInstance* b = RegistryInstance::CreateInstance("b");
  RegistryInstance* c = RegistryInstance::CreateInstance("c");
  EXPECT_EQ(status::kOk, RegistryInstance::DeleteInstance(b));
  EXPECT_EQ(a->next, c);
  EXPECT_EQ(c->prev, b);
  EXPECT_EQ(status::kOk, RegistryInstance::DeleteInstance(c));
  EXPECT_EQ(status::kOk, RegistryInstance::DeleteInstance(a));
}

TEST_F(RegistryInstanceTest, IsAppendedBehindTheLastAfterOthersWent) {
  RegistryInstance* a = RegistryInstance::CreateInstance("a");
  RegistryInstance* b = RegistryInstance::CreateInstance("b");
  EXPECT_EQ(status::kOk, RegistryInstance::DeleteInstance(a));
  RegistryInstance* c = RegistryInstance::CreateInstance("c");
  EXPECT_EQ("b c ", Listed());
  EXPECT_EQ(c->prev, b);
  EXPECT_EQ(status::kOk, RegistryInstance::DeleteInstance(b));
  EXPECT_EQ(status::kOk, RegistryInstance::DeleteInstance(c));
}

TEST_F(RegistryInstanceTest, ThatIsNullIsRefused) {
  EXPECT_EQ(status::kBadArgument, RegistryInstance::DeleteInstance(nullptr));
}

}  // namespace

}  // namespace tamu::registry
