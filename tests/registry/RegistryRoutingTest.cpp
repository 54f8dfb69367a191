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
  EXPECT_EQ(registry.GetKeyTree(0, tree, treeHandle), 0u);
  EXPECT_EQ(tree, RegistryInstance::sFirstInstance->fileTree);
  EXPECT_EQ(treeHandle, nullptr);
}

TEST_F(RegistryRoutingTest, AnInvalidHandleLeadsNowhere) {
  RegistryInterface* tree = nullptr;
  void* treeHandle = nullptr;
  for (unsigned int handle : {1u, 49u, 50u, 0xFFFFFFFFu}) {
    EXPECT_EQ(registry.GetKeyTree(handle, tree, treeHandle), 22u);
  }
}

TEST_F(RegistryRoutingTest, AnObjectThatIsNotOpenHasNoTree) {
  RegistryInterface* tree = nullptr;
  void* treeHandle = nullptr;
  Registry second(path.c_str(), kAdmin);
  EXPECT_EQ(second.GetKeyTree(0, tree, treeHandle), 1u);
  ASSERT_EQ(second.Initialize(), 0u);
  EXPECT_EQ(second.GetKeyTree(0, tree, treeHandle), 1u);
  EXPECT_EQ(second.GetKeyTree(1, tree, treeHandle), 1u);
  EXPECT_EQ(tree, nullptr);
}

TEST_F(RegistryRoutingTest, BothTreesWorkOnOneStore) {
  const RegistryInstance& instance = *RegistryInstance::sFirstInstance;
  ASSERT_NE(instance.keyTree, nullptr);
  ASSERT_NE(instance.keyTree->File(), nullptr);
  EXPECT_EQ(instance.keyTree->File()->GetStartNode(0), 0x100u);
  EXPECT_EQ(instance.daemon, nullptr);
}

TEST_F(RegistryRoutingTest, TheHandleTableBeginsWithFiftySlots) {
  ASSERT_NE(RegistryInstance::sFirstInstance->handles, nullptr);
  EXPECT_EQ(RegistryInstance::sFirstInstance->handles->capacity, 50u);
  EXPECT_EQ(RegistryInstance::sFirstInstance->handles->count, 0u);
}

}  // namespace

}  // namespace tamu::registry
