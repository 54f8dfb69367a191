// Which tree an operation is sent to.
#include "registry/filetree/TernaryRegistry.h"
#include "registry/memtree/TernaryKeyTree.h"
#include "tests/registry/RegistryRig.h"

namespace tamu::registry {

namespace {

class RegistryRoutingTest : public OpenRegistryTest {};

TEST_F(RegistryRoutingTest, WithoutHandleTheFileIsAsked) {
  RegistryInterface* tree = nullptr;
  char place = 0;
  void* treeHandle = &place;
  EXPECT_EQ(0u, registry.GetKeyTree(0, tree, treeHandle));
  EXPECT_EQ(tree, RegistryInstance::sFirstInstance->fileTree);
  EXPECT_EQ(nullptr, treeHandle);
}

TEST_F(RegistryRoutingTest, AnInvalidHandleLeadsNowhere) {
  RegistryInterface* tree = nullptr;
  void* treeHandle = nullptr;
  for (unsigned int handle : {1u, 49u, 50u, 0xFFFFFFFFu}) {
    EXPECT_EQ(22u, registry.GetKeyTree(handle, tree, treeHandle));
  }
}

TEST_F(RegistryRoutingTest, AnObjectThatIsNotOpenHasNoTree) {
  RegistryInterface* tree = nullptr;
  void* treeHandle = nullptr;
  Registry second(path.c_str(), kAdmin);
  EXPECT_EQ(1u, second.GetKeyTree(0, tree, treeHandle));
  ASSERT_EQ(status::kOk, second.Initialize());
  EXPECT_EQ(1u, second.GetKeyTree(0, tree, treeHandle));
  EXPECT_EQ(1u, second.GetKeyTree(1, tree, treeHandle));
  EXPECT_EQ(nullptr, tree);
}

TEST_F(RegistryRoutingTest, BothTreesWorkOnOneStore) {
  const RegistryInstance& instance = *RegistryInstance::sFirstInstance;
  ASSERT_NE(nullptr, instance.keyTree);
  ASSERT_NE(nullptr, instance.keyTree->File());
  EXPECT_EQ(0x100u, instance.keyTree->File()->GetStartNode(0));
  EXPECT_EQ(nullptr, instance.daemon);
}

TEST_F(RegistryRoutingTest, TheHandleTableBeginsWithFiftySlots) {
  ASSERT_NE(nullptr, RegistryInstance::sFirstInstance->handles);
  EXPECT_EQ(50u, RegistryInstance::sFirstInstance->handles->capacity);
  EXPECT_EQ(0u, RegistryInstance::sFirstInstance->handles->count);
}

}  // namespace

}  // namespace tamu::registry
