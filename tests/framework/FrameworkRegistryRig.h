// A framework on a registry file in a folder of its own, seen as its registry.
#pragma once

#include "framework/YAX.h"
#include "framework/YAXStatus.h"
#include "framework/internal/CYAX.h"
#include "tests/registry/RegistryRig.h"

class FrameworkRegistry : public ::testing::Test {
 protected:
  FrameworkRegistry() {
    EXPECT_EQ(yax_framework::kOk, CreateYAX(path.c_str()));
    void* view = nullptr;
    EXPECT_EQ(yax_framework::kOk, GetYAXInstance(IID_IYAXRegistry, &view));
    yax = static_cast<IYAXRegistry*>(view);
    EXPECT_EQ(0u, yax->CreateKey(0, "key"));
  }
  ~FrameworkRegistry() override {
    EXPECT_EQ("", StructureFindings(path));
    yax->Release();
    DestroyYAX();
  }

  unsigned int Open(const char* key) {
    unsigned int handle = 0;
    EXPECT_EQ(0u, yax->OpenKey(key, &handle, 0));
    return handle;
  }
  // The file but for four bytes that have no meaning.
  std::string Content() const { return GetFile(path).replace(84, 4, 4, '\0'); }
  std::map<std::string, DecodedKey> Tree() const { return DecodeTree(path); }

  TempDir folder;
  const std::string path = folder / "registry";
  IYAXRegistry* yax = nullptr;
};
