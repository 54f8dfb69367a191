// Values through the front end, from and to buffers of exactly their size.
#include "tests/registry/RegistryRig.h"

namespace tamu::registry {

namespace {

constexpr unsigned int kValueArea = 33548;  // of a new file
constexpr unsigned int kBlockArea = 52528;

std::string Pattern(unsigned int size) {
  std::string bytes;
  for (unsigned int i = 0; i < size; ++i) bytes += static_cast<char>((i * 7 + size) & 0xFF);
  return bytes;
}

class RegistryValuesTest : public OpenRegistryTest {
 protected:
  RegistryValuesTest() { EXPECT_EQ(status::kOk, registry.CreateKey(0, "key")); }

  unsigned int Create(const char* name, unsigned int type, const std::string& bytes) {
    ExactValue value(type, bytes);
    return registry.CreateValue(0, "key", name, &value);
  }
  unsigned int Set(const char* name, unsigned int type, const std::string& bytes) {
    ExactValue value(type, bytes);
    return registry.SetValue(0, "key", name, &value);
  }
  std::string Get(const char* name) { return Read(registry, "key", name); }
  DecodedValue Newest() { return DecodeTree(path).at("key").values.at(0); }
};

TEST_F(RegistryValuesTest, EverySizeComesBack) {
  for (unsigned int size : {1u, 63u, 64u, 65u, 1023u, 1024u}) {
    const std::string name = std::to_string(size);
    EXPECT_EQ(status::kOk, Create(name.c_str(), 2, Pattern(size)));
    EXPECT_EQ(Get(name.c_str()), "type 2: " + Pattern(size));
    EXPECT_EQ(status::kOk, Set(name.c_str(), 3, Pattern(1025 - size)));
    EXPECT_EQ(Get(name.c_str()), "type 3: " + Pattern(1025 - size));
  }
}

TEST_F(RegistryValuesTest, WhatIsTooLargeIsRefused) {
  const std::string before = GetFile(path);
  EXPECT_EQ(status::kLimit, Create("large", 1, Pattern(1025)));
  EXPECT_EQ(GetFile(path), before);
  EXPECT_EQ(status::kOk, Create("large", 1, Pattern(1024)));
  EXPECT_EQ(status::kLimit, Set("large", 1, Pattern(1025)));
  EXPECT_EQ(status::kLimit, Set("large", 0, Pattern(1025)));
  EXPECT_EQ(Get("large"), "type 1: " + Pattern(1024));
}

TEST_F(RegistryValuesTest, TypesOneToFiveAreWritten) {
  for (unsigned int type = 1; type <= 5; ++type) {
    const std::string name(1, static_cast<char>('a' + type));
    EXPECT_EQ(status::kOk, Create(name.c_str(), type, "created"));
    EXPECT_EQ(Get(name.c_str()), "type " + std::to_string(type) + ": created");
    EXPECT_EQ(status::kOk, Set(name.c_str(), 6 - type, "set"));
    EXPECT_EQ(Get(name.c_str()), "type " + std::to_string(6 - type) + ": set");
  }
}

TEST_F(RegistryValuesTest, TypesAboveFiveAreOnlyAskedFor) {
  ASSERT_EQ(status::kOk, Create("v", 1, "text"));
  const std::string before = GetFile(path);
  for (unsigned int type : {6u, 7u, 31u, 32u, 256u, 0xFFFFFFFFu}) {
    EXPECT_EQ(status::kNoData, Create("w", type, "x")) << type;
    EXPECT_EQ(status::kNoData, Set("v", type, "x")) << type;
  }
  EXPECT_EQ(GetFile(path), before);
  for (unsigned int type : {0u, 1u, 2u, 3u, 5u, 6u}) {
    ReadValue value(type);
    EXPECT_EQ(status::kOk, registry.GetValue(0, "key", "v", &value));
    EXPECT_EQ(1u, value.type);
    EXPECT_EQ("text", BytesOf(value));
  }
}

// A number is taken from the bytes that are there, the rest is zero; it is stored with size 8.
TEST_F(RegistryValuesTest, AShortNumberIsCreatedFromTheBytesThatAreThere) {
  const std::string bytes = "\x11\x22\x33\x44\x55\x66\x77\x88";
  for (unsigned int size = 1; size <= 8; ++size) {
    EXPECT_EQ(status::kOk, Create("n", 0, bytes.substr(0, size))) << size;
    // The values so far are in slots 1 to size.
    const std::string record = FilePart(path, kValueArea + 52 * size, 52);
    EXPECT_EQ(record.substr(8, 4), std::string("\x08\0\0\x40", 4)) << size;
    EXPECT_EQ(record.substr(44), bytes.substr(0, size) + std::string(8 - size, '\0')) << size;
    const std::string low = bytes.substr(0, size < 4 ? size : 4);
    EXPECT_EQ(Get("n"), "type 0: " + low + std::string(8 - low.size(), '\0')) << size;
  }
}

// Only a size of 1 to 7 tells of fewer than eight bytes.
TEST_F(RegistryValuesTest, ANumberWhoseSizeIsLeftAt0HasEightBytes) {
  const std::string bytes = "\x11\x22\x33\x44\x55\xFF\x77\x88";
  unsigned int slot = 0;
  for (unsigned int size : {0u, 8u, 9u, 1024u, 1025u, 0xFFFFFFFFu}) {
    for (const bool isOpened : {false, true}) {
      SCOPED_TRACE(size);
      unsigned int handle = 0;
      if (isOpened) {
        ASSERT_EQ(status::kOk, registry.OpenKey("key", &handle));
      }
      ExactValue value(0, bytes);
      value.size = size;
      EXPECT_EQ(0u, registry.CreateValue(handle, isOpened ? "" : "key", "n", &value));
      EXPECT_EQ(value.size, size);
      const std::string record = FilePart(path, kValueArea + 52 * ++slot, 52);
      EXPECT_EQ(record.substr(8, 4), std::string("\x08\0\0\x40", 4));
      EXPECT_EQ(record.substr(44), bytes);
    }
  }
  Value nothing = {0, 0, nullptr};
  EXPECT_EQ(status::kBadArgument, registry.CreateValue(0, "key", "n", &nothing));
}

TEST_F(RegistryValuesTest, AShortNumberIsSetFromTheBytesThatAreThere) {
  const std::string bytes = "\x11\x22\x33\x44\x55\x66\x77\x88";
  for (unsigned int size = 0; size <= 8; ++size) {
    const std::string name = std::to_string(size);
    ASSERT_EQ(status::kOk, Create(name.c_str(), 0, std::string(8, '\xEE')));
    EXPECT_EQ(status::kOk, Set(name.c_str(), 0, bytes.substr(0, size))) << size;
    const std::string record = FilePart(path, kValueArea + 52 * (size + 1), 52);
    std::string low = bytes.substr(0, size < 4 ? size : 4);
    low.resize(4);
    // The size is stored as given, the upper half of the old number stays.
    EXPECT_EQ(record.substr(8, 4), Little(size, 2) + std::string("\0\x40", 2)) << size;
    EXPECT_EQ(record.substr(44), low + "\xEE\xEE\xEE\xEE") << size;
    EXPECT_EQ(Get(name.c_str()), "type 0: " + (low + Little(0, 4)).substr(0, size)) << size;
  }
}

TEST_F(RegistryValuesTest, ANumberCreatedThroughTheFrontEndTakesNoBlock) {
  EXPECT_EQ(status::kOk, Create("n", 0, Little(5, 8)));
  EXPECT_EQ(0u, CountSlots(path).blocks.used);
}

TEST_F(RegistryValuesTest, AValueWithoutDataIsNotSet) {
  EXPECT_EQ(status::kOk, registry.CreateValue(0, "key", "null", nullptr));
  EXPECT_EQ("status 53", Get("null"));
  EXPECT_EQ(0u, Newest().type);
  EXPECT_EQ(8u, Newest().size);
  EXPECT_FALSE(Newest().isSet);
  EXPECT_EQ(status::kOk, Create("empty", 1, ""));
  EXPECT_EQ("status 53", Get("empty"));
  EXPECT_EQ(1u, Newest().type);
  EXPECT_EQ(0u, Newest().size);
  EXPECT_FALSE(Newest().isSet);
  EXPECT_EQ(0u, CountSlots(path).blocks.used);
  Value nothing = {1, 0, nullptr};
  EXPECT_EQ(status::kOk, registry.CreateValue(0, "key", "nothing", &nothing));
  EXPECT_EQ("status 53", Get("nothing"));
}

TEST_F(RegistryValuesTest, AnEmptyValueThatIsSetIsRead) {
  ASSERT_EQ(status::kOk, Create("v", 1, "text"));
  EXPECT_EQ(status::kOk, Set("v", 2, ""));
  EXPECT_EQ("type 2: ", Get("v"));
  EXPECT_EQ(0u, CountSlots(path).blocks.used);
  EXPECT_EQ(status::kOk, Create("w", 1, Pattern(65)));
  EXPECT_EQ(Get("w"), "type 1: " + Pattern(65));
}

TEST_F(RegistryValuesTest, AnUnsetValueIsSetLater) {
  ASSERT_EQ(status::kOk, registry.CreateValue(0, "key", "v", nullptr));
  EXPECT_EQ(status::kOk, Set("v", 5, "now"));
  EXPECT_EQ("type 5: now", Get("v"));
}

TEST_F(RegistryValuesTest, NamesAreCutToThirtyOneCharacters) {
  const std::string name(40, 'n');
  EXPECT_EQ(status::kOk, Create(name.c_str(), 1, "x"));
  EXPECT_EQ("status 2", Get(name.c_str()));
  EXPECT_EQ("type 1: x", Get(std::string(31, 'n').c_str()));
  EXPECT_EQ("status 2", Get(std::string(30, 'n').c_str()));
  EXPECT_EQ(std::string(31, 'n'), Newest().name);
}

TEST_F(RegistryValuesTest, TheNewerOfTwoHidesTheOlder) {
  EXPECT_EQ(status::kOk, Create("v", 1, "old"));
  EXPECT_EQ(status::kOk, Create("v", 1, "new"));
  EXPECT_EQ("type 1: new", Get("v"));
  EXPECT_EQ(status::kOk, registry.DeleteValue(0, "key", "v"));
  EXPECT_EQ("type 1: old", Get("v"));
  EXPECT_EQ(status::kOk, registry.DeleteValue(0, "key", "v"));
  EXPECT_EQ(status::kNotFound, registry.DeleteValue(0, "key", "v"));
}

TEST_F(RegistryValuesTest, AValueIsDeletedFromEveryPlaceInTheChain) {
  for (const char* name : {"1", "2", "3", "4"}) ASSERT_EQ(status::kOk, Create(name, 1, name));
  EXPECT_EQ(status::kOk, registry.DeleteValue(0, "key", "2"));
  EXPECT_EQ(status::kOk, registry.DeleteValue(0, "key", "4"));
  EXPECT_EQ(status::kOk, registry.DeleteValue(0, "key", "1"));
  EXPECT_EQ("type 1: 3", Get("3"));
  EXPECT_EQ(1u, DecodeTree(path).at("key").values.size());
  // The blocks of deleted values stay in use.
  EXPECT_EQ(4u, CountSlots(path).blocks.used);
  EXPECT_EQ(1u, CountSlots(path).blocks.reachable);
  EXPECT_EQ(1u, CountSlots(path).values.used);
}

// Values of the key are in slots 1, 2, ..., their data in blocks 1, 2, ... of a new file.
TEST_F(RegistryValuesTest, AnOffsetTellsWhereTheDataLies) {
  ASSERT_EQ(status::kOk, Create("number", 0, Little(0x44332211, 8)));
  ASSERT_EQ(status::kOk, Create("long", 1, Pattern(100)));
  ASSERT_EQ(status::kOk, Create("short", 4, "four"));
  const struct {
    const char* name;
    unsigned int offset;
    std::string bytes;
  } cases[] = {{"number", kValueArea + 52 * 1 + 44, Little(0x44332211, 8)},
               {"long", kBlockArea + 64 * 1, Pattern(100)},
               {"short", kBlockArea + 64 * 3, "four"}};
  for (const auto& each : cases) {
    ExactValue request(4, std::string(4, '\xFF'));
    EXPECT_EQ(status::kOk, registry.GetValue(0, "key", each.name, static_cast<Value*>(&request)));
    EXPECT_EQ(4u, request.type);
    EXPECT_EQ(4u, request.size);
    unsigned int offset = 0;
    std::memcpy(&offset, request.data, sizeof offset);
    EXPECT_EQ(offset, each.offset) << each.name;
    EXPECT_EQ(FilePart(path, offset, each.bytes.size()), each.bytes) << each.name;
  }
}

TEST_F(RegistryValuesTest, AnOffsetIsWrittenOnlyWithSuccess) {
  ASSERT_EQ(status::kOk, registry.CreateValue(0, "key", "unset", nullptr));
  ExactValue request(4, "same bytes");
  EXPECT_EQ(status::kNoData, registry.GetValue(0, "key", "unset", static_cast<Value*>(&request)));
  EXPECT_EQ(status::kNotFound,
            registry.GetValue(0, "key", "absent", static_cast<Value*>(&request)));
  EXPECT_EQ(status::kNotFound,
            registry.GetValue(0, "absent", "unset", static_cast<Value*>(&request)));
  EXPECT_EQ("same bytes", std::string(static_cast<char*>(request.data), request.size));
}

// The root lets everybody read and create, but the place of a value's data is for those who may
// change it.
TEST_F(RegistryValuesTest, AnOffsetNeedsTheRightToModify) {
  ExactValue value(1, "text");
  ASSERT_EQ(status::kOk, registry.CreateValue(0, "", "v", &value));
  registry.SetCurrentUserId(7);
  ExactValue request(4, "1234");
  EXPECT_EQ(status::kNoRight, registry.GetValue(0, "", "v", static_cast<Value*>(&request)));
  EXPECT_EQ("type 1: text", Read(registry, "", "v"));
}

TEST_F(RegistryValuesTest, WhatIsReadIsUntouchedByAFailure) {
  ReadValue value;
  EXPECT_EQ(status::kNotFound, registry.GetValue(0, "key", "absent", &value));
  EXPECT_EQ(6u, value.type);
  EXPECT_EQ(0u, value.size);
  EXPECT_EQ(nullptr, value.data);
}

TEST_F(RegistryValuesTest, ANumberComesAsItsLowHalf) {
  ASSERT_EQ(status::kOk, Create("n", 0, Little(0x1122334455667788ULL, 8)));
  ReadValue value;
  EXPECT_EQ(status::kOk, registry.GetValue(0, "key", "n", &value));
  EXPECT_EQ(8u, value.size);
  EXPECT_EQ(0x55667788u, value.number());
  EXPECT_EQ(0x1122334455667788ULL, Newest().number);
}

}  // namespace

}  // namespace tamu::registry
