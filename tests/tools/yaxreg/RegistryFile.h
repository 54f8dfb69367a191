// A registry in a file, filled through the library.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "registry/Registry.h"

namespace status = tamu::registry::status;

// Works as the user with the number 1000, who owns the keys that are created.
class RegistryFile {
 public:
  explicit RegistryFile(const std::string& path) : registry_(path.c_str(), 1000u) {
    EXPECT_EQ(status::kOk, registry_.Initialize());
  }
  ~RegistryFile() { registry_.Finalize(); }
  RegistryFile(const RegistryFile&) = delete;
  RegistryFile& operator=(const RegistryFile&) = delete;

  tamu::registry::Registry& Calls() { return registry_; }
  void AddKey(const char* path) { EXPECT_EQ(status::kOk, registry_.CreateKey(0, path)) << path; }
  void AddNumber(const char* path, const char* name, unsigned long long number) {
    // As the file holds it, on every machine.
    unsigned char bytes[8];
    for (unsigned int i = 0; i < 8; ++i) bytes[i] = static_cast<unsigned char>(number >> 8 * i);
    AddValue(path, name, tamu::registry::MakeValue(0, bytes, sizeof bytes));
  }
  void AddText(const char* path, const char* name, const char* text) {
    AddValue(path, name, tamu::registry::TextValue(text));
  }
  void AddValue(const char* path, const char* name, tamu::registry::Value value) {
    EXPECT_EQ(status::kOk, registry_.CreateValue(0, path, name, &value)) << path << " " << name;
  }

 private:
  tamu::registry::Registry registry_;
};
