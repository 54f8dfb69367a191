// A tree over a store that the test sees too.
#pragma once

#include "tests/registry/filetree/FileTreeRig.h"

namespace tamu::registry {

struct SharedStore {
  SharedStore() {
    EXPECT_EQ(status::kOk, store.CreateRegistryFile(path.c_str(), 65536));
    EXPECT_EQ(status::kOk, store.Initialize(path.c_str()));
    tree.ShareStore();
    EXPECT_EQ(status::kOk, tree.Initialize(nullptr));
  }
  ~SharedStore() {
    tree.Finalize();
    store.Finalize();
  }
  SharedStore(const SharedStore&) = delete;
  SharedStore& operator=(const SharedStore&) = delete;

  TempDir dir;
  std::string path = dir / "shared.rce";
  TernaryFile store;
  TernaryRegistry tree{&store, nullptr};
};

}  // namespace tamu::registry
