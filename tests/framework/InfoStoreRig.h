// What the tests of the information stores have in common: components, and a store on a registry
// file in a folder of its own.
#pragma once

#include <cstdint>
#include <deque>

#include "framework/YAXStatus.h"
#include "framework/internal/YAXInfoManagerRCEFile.h"
#include "framework/internal/YAXInfoManagerRCEMemory.h"
#include "tests/registry/RegistryRig.h"

inline constexpr YAX_GUID_ST kClsid = {
    0x0000000A, 0xBEEF, 0x0102, {0x80, 0x7F, 0x00, 0xFF, 0x01, 0x02, 0x03, 0x04}};
constexpr char kClsidText[] = "{0000000A-BEEF-0102-807F-00FF01020304}";
constexpr char kClsidKey[] = "YAX_ROOT/{0000000A-BEEF-0102-807F-00FF01020304}";

// An identifier for each number.
inline YAX_GUID_ST GuidOf(unsigned int number) {
  YAX_GUID_ST guid = kClsid;
  guid.Data1 = number;
  return guid;
}

inline std::string KeyOf(const YAX_GUID_ST& guid) {
  char text[kYAXTextSize] = "YAX_ROOT/";
  YAXInfoManager().ConvertGUID2String(&guid, text);
  return text;
}

// A function, never to be called, whose address has these low 32 bits.
inline YAX_FACTORY_FN FunctionAt(unsigned int word) {
  std::uintptr_t address = word;
  if (sizeof address > 4) address |= static_cast<std::uintptr_t>(0x5500ull << 32);
  return reinterpret_cast<YAX_FACTORY_FN>(address);
}

// The bytes of a field, the terminator included, or all of them when it has none.
inline std::string FieldOf(const char* field) {
  const size_t length = strnlen(field, kYAXTextSize);
  return std::string(field, length < kYAXTextSize ? length + 1 : length);
}

// Fills a field as far as the text goes, its terminator only where there is room for one.
inline void FillField(char* field, const std::string& text) {
  std::memcpy(field, text.c_str(), text.size() < kYAXTextSize ? text.size() + 1 : kYAXTextSize);
}

// A component as callers describe it.
inline YAX_COMPONENT_INFO_ST ComponentOf(const char* name, unsigned int type, unsigned int function,
                                         const char* binaryPath,
                                         const YAX_GUID_ST* guid = nullptr) {
  YAX_COMPONENT_INFO_ST info = {};
  info.pGuid = guid;
  FillField(info.CompName, name);
  info.Reserved = 77;
  info.Type = static_cast<YAX_COMPONENT_TYPE_ENUM>(type);
  info.FactoryFn = FunctionAt(function);
  FillField(info.BinaryPath, binaryPath);
  return info;
}

inline YAX_COMPONENT_INFO_ST Player() {
  return ComponentOf("Player", 1, 0x80123450, "libplayer.so", &kClsid);
}

inline YAX_SYSTEM_INFO_ST SystemOf(unsigned int isSingleBin, const char* folder) {
  YAX_SYSTEM_INFO_ST info = {isSingleBin, {}};
  FillField(info.BinDirectory, folder);
  return info;
}

// Components with the numbers from 1 on, in an array that ends with a null pointer.
class Components {
 public:
  explicit Components(unsigned int count) {
    for (unsigned int i = 1; i <= count; ++i) {
      guids_.push_back(GuidOf(i));
      infos_.push_back(ComponentOf(("c" + std::to_string(i)).c_str(), 1, 16 * i, "lib.so"));
    }
    for (unsigned int i = 0; i < count; ++i) {
      infos_[i].pGuid = &guids_[i];
      array_.push_back(&infos_[i]);
    }
    array_.push_back(nullptr);
  }
  YAX_COMPONENT_INFO_ST** Array() { return array_.data(); }
  YAX_COMPONENT_INFO_ST& operator[](unsigned int index) { return infos_[index]; }

 private:
  std::deque<YAX_GUID_ST> guids_;  // do not move when more come
  std::deque<YAX_COMPONENT_INFO_ST> infos_;
  std::vector<YAX_COMPONENT_INFO_ST*> array_;
};

// The file but for four bytes that have no meaning.
inline std::string FileContent(const std::string& path) {
  std::string bytes = GetFile(path);
  if (bytes.size() > 88) bytes.replace(84, 4, 4, '\0');
  return bytes;
}

// A store of the framework's user on a new file.
template <class Store>
class InfoStoreTest : public ::testing::Test {
 protected:
  InfoStoreTest() { EXPECT_EQ(0u, registry.Initialize()); }
  ~InfoStoreTest() override { EXPECT_EQ("", StructureFindings(path)); }

  void Reopen() {
    registry.Finalize();
    ASSERT_EQ(0u, registry.Initialize());
  }
  // Makes a value that any client of the registry might leave; closes all handles.
  void Put(const char* key, const char* name, unsigned int type, const std::string& bytes) {
    tamu::registry::ExactValue value(type, bytes);
    const unsigned int result = registry.SetValue(0, key, name, &value);
    if (result != 0) {
      EXPECT_EQ(0u, registry.CreateValue(0, key, name, &value)) << key << " " << name;
    }
  }
  // A value as the file has it: "type 1: text", with all eight bytes of a number.
  std::string Stored(const std::string& key, const std::string& name) {
    const std::map<std::string, DecodedKey> tree = DecodeTree(path);
    const auto found = tree.find(key);
    if (found == tree.end()) return "no key";
    for (const DecodedValue& value : found->second.values) {
      if (value.name != name) continue;
      if (!value.isSet) return "not set";
      const std::string bytes =
          value.type == 0 ? tamu::registry::Little(value.number, 8) : value.bytes;
      return "type " + std::to_string(value.type) + ": " + bytes;
    }
    return "no value";
  }
  bool HasKey(const std::string& key) { return DecodeTree(path).count(key) != 0; }

  TempDir folder;
  const std::string path = folder / "registry";
  tamu::registry::Registry registry{path.c_str(), "adminstrator"};
  Store store{&registry};
};

// The two stores, and what their test cases are called after.
using BothStores = ::testing::Types<YAXInfoManagerRCEFile, YAXInfoManagerRCEMemory>;
struct StoreNames {
  template <class Store>
  static std::string GetName(int) {
    return std::is_same<Store, YAXInfoManagerRCEFile>::value ? "File" : "Memory";
  }
};
