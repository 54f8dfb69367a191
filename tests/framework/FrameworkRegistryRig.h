// A framework on a registry file in a folder of its own, seen as its registry.
#pragma once

#include "framework/YAX.h"
#include "framework/internal/CYAX.h"
#include "tests/registry/RegistryRig.h"

class FrameworkRegistry : public ::testing::Test {
 protected:
  FrameworkRegistry() {
    EXPECT_EQ(CreateYAX(path.c_str()), 0u);
    void* view = nullptr;
    EXPECT_EQ(GetYAXInstance(IID_IYAXRegistry, &view), 0u);
    yax = static_cast<IYAXRegistry*>(view);
    EXPECT_EQ(yax->CreateKey(0, "key"), 0u);
  }
  ~FrameworkRegistry() override {
    EXPECT_EQ(StructureFindings(path), "");
    yax->Release();
    DestroyYAX();
  }

  unsigned int Open(const char* key) {
    unsigned int handle = 0;
    EXPECT_EQ(yax->OpenKey(key, &handle, 0), 0u);
    return handle;
  }
  // The file but for four bytes that have no meaning.
  std::string Content() const { return GetFile(path).replace(84, 4, 4, '\0'); }
  std::map<std::string, DecodedKey> Tree() const { return DecodeTree(path); }

  TempDir folder;
  const std::string path = folder / "registry";
  IYAXRegistry* yax = nullptr;
};
