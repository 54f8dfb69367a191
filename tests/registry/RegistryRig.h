// What the tests of the front end have in common: a folder with a registry file, values in buffers
// of exactly their size, and the bytes of a new file.
#pragma once

#include <cstring>

#include "registry/Registry.h"
#include "registry/RegistryInstance.h"
#include "tests/platform/ChildProcess.h"
#include "tests/platform/TestFiles.h"
#include "tests/registry/Users.h"
#include "tests/support/StructureCheck.h"

namespace tamu::registry {

// A number as its first `width` little-endian bytes.
inline std::string Little(unsigned long long number, unsigned int width) {
  std::string bytes;
  for (unsigned int i = 0; i < width; ++i) bytes += static_cast<char>(number >> (8 * i) & 0xFF);
  return bytes;
}

// A value to be written, in a heap buffer of exactly its size.
class ExactValue : public Value {
 public:
  ExactValue(unsigned int valueType, const std::string& bytes)
      : Value{valueType, static_cast<unsigned int>(bytes.size()), new char[bytes.size()]} {
    std::memcpy(data, bytes.data(), bytes.size());
  }
  ~ExactValue() { delete[] static_cast<char*>(data); }
  ExactValue(const ExactValue&) = delete;
  ExactValue& operator=(const ExactValue&) = delete;
};

inline std::string BytesOf(const ReadValue& value) {
  return value.data == nullptr ? "(none)"
                               : std::string(static_cast<const char*>(value.data), value.size);
}

// What GetValue gives: "status 53", or type and bytes as "type 1: text".
inline std::string Read(Registry& registry, const char* key, const char* name) {
  ReadValue value;
  const unsigned int result = registry.GetValue(0, key, name, &value);
  if (result != 0) return "status " + std::to_string(result);
  return "type " + std::to_string(value.type) + ": " + BytesOf(value);
}

// `count` bytes of a file from `offset` on.
inline std::string FilePart(const std::string& path, size_t offset, size_t count) {
  return GetFile(path).substr(offset, count);
}

// A registry that the administrator has opened on a new file.
class OpenRegistryTest : public ::testing::Test {
 protected:
  OpenRegistryTest() { EXPECT_EQ(status::kOk, registry.Initialize()); }
  ~OpenRegistryTest() override { EXPECT_EQ("", StructureFindings(path)); }

  TempDir folder;
  const std::string path = folder / "registry";
  Registry registry{path.c_str(), kAdmin};
};

}  // namespace tamu::registry
