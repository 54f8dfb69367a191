// The registry that the benchmarks of single operations work on.
#pragma once

#include "bench/BenchFile.h"

namespace tamu::registry {

constexpr char kDeepKey[] = "devices/net/eth0/limits";  // depth 4

// 400 keys at the top level and a branch four levels deep, in a file of its own, gone at the end.
class BenchRegistry {
 public:
  BenchRegistry() : file_(".rce"), registry_(file_.path(), kAdministratorId) {
    Check(registry_.Initialize(), "Initialize");
    FillTopLevel();
    FillBranch();
  }
  Registry* operator->() { return &registry_; }
  const char* path() const { return file_.path(); }

 private:
  void FillTopLevel() {
    for (int i = 0; i < 400; ++i) {
      char name[16];
      std::snprintf(name, sizeof name, "key%03d", i);
      Check(registry_.CreateKey(0, name), name);
    }
  }
  void FillBranch() {
    for (const char* key : {"devices", "devices/net", "devices/net/eth0", kDeepKey}) {
      Check(registry_.CreateKey(0, key), key);
    }
    unsigned long long number = 1500;
    Value integer = {kValueTypeInteger, sizeof number, &number};
    Check(registry_.CreateValue(0, kDeepKey, "mtu", &integer), "mtu");
    char text[] = "fast and reliable";
    Value string = {kValueTypeString, sizeof text, text};
    Check(registry_.CreateValue(0, kDeepKey, "profile", &string), "profile");
  }

  BenchFile file_;
  Registry registry_;
};

}  // namespace tamu::registry
