// The shared objects in components/, for the tests that open them.
#pragma once

#include <dlfcn.h>

#include <string>

#include "framework/YAX_GUID_ST.h"
#include "tests/framework/components/Notes.h"

inline std::string ComponentFile(const std::string& name) {
  return YAX_TEST_COMPONENTS "/component_" + name + ".so";
}

// An identifier for each number.
constexpr YAX_GUID_ST ClsidOf(unsigned int number) {
  return {number, 0x71C3, 0x4E08, {0x95, 0xDA, 0x06, 0x3F, 0xB8, 0x40, 0x1E, 0x77}};
}

inline bool IsMapped(const std::string& path) {
  void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD);
  if (handle != nullptr) dlclose(handle);
  return handle != nullptr;
}

// Takes all notes back, and at the end of the scope everything that was left open out of memory, so
// that each test finds every component as if new.
class FreshComponents {
 public:
  FreshComponents() { Notes().Reset(); }
  ~FreshComponents() {
    for (const char* name :
         {"calls_back", "comes_back", "fails_to_create", "fails_with_factory", "fourth", "leaning",
          "leaves_early", "no_factory", "no_factory_entry", "no_unload_entry", "refusing", "second",
          "sound", "static_factory", "third", "unloads_itself", "waits_for_thread"}) {
      CloseForGood(ComponentFile(name));
    }
  }
  FreshComponents(const FreshComponents&) = delete;
  FreshComponents& operator=(const FreshComponents&) = delete;

 private:
  static void CloseForGood(const std::string& path) {
    while (void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD)) {
      dlclose(handle);
      dlclose(handle);
    }
  }
};
