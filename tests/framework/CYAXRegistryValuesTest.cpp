// Values through the framework: types, buffers and their sizes.
#include <memory>

#include "tests/framework/FrameworkRegistryRig.h"

using namespace std::string_literals;

namespace {

constexpr auto kInteger = YAX_REG_DATA_TYPE_INTEGER;
constexpr auto kString = YAX_REG_DATA_TYPE_STRING;

// Reads into a heap buffer of exactly `capacity` bytes: "status 8 size 5", or "size 5: text".
std::string Get(IYAXRegistry* yax, unsigned int handle, const char* path, const char* name,
                YAX_REG_DATA_TYPE_ENUM type, unsigned int capacity) {
  const unsigned int room = capacity == 0 && type == kString ? 1 : capacity;
  const std::unique_ptr<char[]> data(new char[room < 4 && type == kInteger ? 4 : room]);
  std::memset(data.get(), '#', room);
  unsigned int size = capacity;
  const unsigned int result = yax->GetValue(handle, path, name, type, data.get(), &size);
  if (result != 0) {
    EXPECT_EQ(std::string(data.get(), room), std::string(room, '#')) << "written to";
    EXPECT_EQ(size, capacity) << "changed";
    return "status " + std::to_string(result & 0xFF);
  }
  EXPECT_LE(size, capacity);
  const unsigned int got = type == kInteger ? 4 : size;
  return "size " + std::to_string(size) + ": " + std::string(data.get(), got);
}

class FrameworkValues : public FrameworkRegistry {
 protected:
  std::string GetText(unsigned int handle, const char* name, unsigned int capacity) {
    return Get(yax, handle, handle == 0 ? "key" : "", name, kString, capacity);
  }
  std::string GetNumber(unsigned int handle, const char* name, unsigned int capacity) {
    return Get(yax, handle, handle == 0 ? "key" : "", name, kInteger, capacity);
  }
};

// A client of the registry itself; the framework ends before it begins and begins anew after it.
class FrameworkForeignValues : public FrameworkValues {
 protected:
  template <class Change>
  void AsAnotherClient(Change change) {
    yax->Release();
    DestroyYAX();
    {
      tamu::registry::Registry registry(path.c_str(), "adminstrator");
      ASSERT_EQ(registry.Initialize(), 0u);
      change(registry);
    }
    ASSERT_EQ(CreateYAX(path.c_str()), 0u);
    void* view = nullptr;
    ASSERT_EQ(GetYAXInstance(IID_IYAXRegistry, &view), 0u);
    yax = static_cast<IYAXRegistry*>(view);
  }
};

// ---- what is refused

TEST_F(FrameworkRegistry, ValuesNeedAllPointers) {
  ASSERT_EQ(yax->CreateValue(0, "key", "n", kString, "text"), 0u);
  const std::string before = Content();
  char data[8] = "#######";
  unsigned int size = sizeof data;
  for (auto type : {kInteger, kString}) {
    EXPECT_EQ(yax->CreateValue(0, nullptr, "n", type, data), 0xE0000008);
    EXPECT_EQ(yax->CreateValue(0, "key", nullptr, type, data), 0xE0000008);
    EXPECT_EQ(yax->CreateValue(0, "key", "n", type, nullptr), 0xE0000008);
    EXPECT_EQ(yax->SetValue(0, nullptr, "n", type, data), 0xE0000008);
    EXPECT_EQ(yax->SetValue(0, "key", nullptr, type, data), 0xE0000008);
    EXPECT_EQ(yax->SetValue(0, "key", "n", type, nullptr), 0xE0000008);
    EXPECT_EQ(yax->GetValue(0, nullptr, "n", type, data, &size), 0xE0000008);
    EXPECT_EQ(yax->GetValue(0, "key", nullptr, type, data, &size), 0xE0000008);
    EXPECT_EQ(yax->GetValue(0, "key", "n", type, nullptr, &size), 0xE0000008);
    EXPECT_EQ(yax->GetValue(0, "key", "n", type, data, nullptr), 0xE0000008);
  }
  EXPECT_EQ(size, 8u);
  EXPECT_EQ(Content(), before);
}

TEST_F(FrameworkRegistry, UnknownTypesAreRefused) {
  ASSERT_EQ(yax->CreateValue(0, "key", "n", kString, "text"), 0u);
  const std::string before = Content();
  char data[8] = "";
  unsigned int size = sizeof data;
  for (unsigned int number : {2u, 4u, 6u, 0xFFFFFFFFu}) {
    const auto type = static_cast<YAX_REG_DATA_TYPE_ENUM>(number);
    EXPECT_EQ(yax->CreateValue(0, "key", "m", type, data), 0xE0000008);
    EXPECT_EQ(yax->SetValue(0, "key", "n", type, data), 0xE0000008);
    EXPECT_EQ(yax->GetValue(0, "key", "n", type, data, &size), 0xE0000008);
  }
  EXPECT_EQ(size, 8u);
  EXPECT_EQ(Content(), before);
}

// The registry's statuses are all one here.
TEST_F(FrameworkRegistry, WhatTheRegistryRefusesIsOneFailure) {
  const unsigned long long number = 5;
  const std::string tooLong(1024, 'x');
  unsigned int size = 8, word = 7;
  EXPECT_EQ(yax->CreateValue(0, "missing", "n", kInteger, &number), 0xE000000D);
  EXPECT_EQ(yax->CreateValue(0, "key", "", kInteger, &number), 0xE000000D);
  EXPECT_EQ(yax->CreateValue(0, "key", "n", kString, tooLong.c_str()), 0xE000000D);
  EXPECT_EQ(yax->SetValue(0, "key", "n", kInteger, &number), 0xE000000D);
  EXPECT_EQ(yax->GetValue(0, "key", "n", kInteger, &word, &size), 0xE000000D);
  EXPECT_EQ(yax->DeleteValue(0, "key", "n"), 0xE000000D);
  EXPECT_EQ(yax->GetValue(99, "", "n", kInteger, &word, &size), 0xE000000D);
  EXPECT_EQ(size, 8u);
  EXPECT_EQ(word, 7u);
}

// ---- texts

TEST_F(FrameworkValues, ATextIsStoredWithItsTerminator) {
  EXPECT_EQ(yax->CreateValue(0, "key", "text", kString, "four"), 0u);
  EXPECT_EQ(yax->CreateValue(0, "key", "empty", kString, ""), 0u);
  EXPECT_EQ(yax->CreateValue(0, "key", "longest", kString, std::string(1023, 'x').c_str()), 0u);
  const DecodedKey key = Tree().at("key");
  ASSERT_EQ(key.values.size(), 3u);
  EXPECT_EQ(key.values[2].type, 1u);
  EXPECT_EQ(key.values[2].bytes, "four\0"s);
  EXPECT_EQ(key.values[1].bytes, "\0"s);
  EXPECT_EQ(key.values[0].size, 1024u);
  EXPECT_EQ(yax->SetValue(0, "key", "empty", kString, "no more"), 0u);
  EXPECT_EQ(GetText(0, "empty", 8), "size 8: no more\0"s);
  EXPECT_EQ(GetText(0, "longest", 1024), "size 1024: " + std::string(1023, 'x') + '\0');
}

TEST_F(FrameworkValues, ATextNeedsRoomForItsTerminator) {
  ASSERT_EQ(yax->CreateValue(0, "key", "text", kString, "four"), 0u);
  ASSERT_EQ(yax->CreateValue(0, "key", "empty", kString, ""), 0u);
  for (unsigned int handle : {Open("key"), 0u}) {
    EXPECT_EQ(GetText(handle, "text", 100), "size 5: four\0"s);
    EXPECT_EQ(GetText(handle, "text", 5), "size 5: four\0"s);
    EXPECT_EQ(GetText(handle, "text", 4), "status 8");
    EXPECT_EQ(GetText(handle, "text", 0), "status 8");
    EXPECT_EQ(GetText(handle, "empty", 1), "size 1: \0"s);
    EXPECT_EQ(GetText(handle, "empty", 0), "status 8");
  }
}

// ---- numbers

TEST_F(FrameworkValues, ANumberIsWrittenFromEightBytesAndReadIntoFour) {
  const unsigned long long number = 0x1122334455667788ull;
  ASSERT_EQ(yax->CreateValue(0, "key", "n", kInteger, &number), 0u);
  const DecodedKey key = Tree().at("key");
  EXPECT_EQ(key.values[0].type, 0u);
  EXPECT_EQ(key.values[0].number, number);
  for (unsigned int handle : {Open("key"), 0u}) {
    EXPECT_EQ(GetNumber(handle, "n", 8), "size 8: \x88\x77\x66\x55");
    EXPECT_EQ(GetNumber(handle, "n", 100), "size 8: \x88\x77\x66\x55");
    EXPECT_EQ(GetNumber(handle, "n", 7), "status 8");
    EXPECT_EQ(GetNumber(handle, "n", 4), "status 8");
    EXPECT_EQ(GetNumber(handle, "n", 0), "status 8");
  }
}

TEST_F(FrameworkValues, OneWordIsFilled) {
  const unsigned long long number = 5;
  ASSERT_EQ(yax->CreateValue(0, "key", "n", kInteger, &number), 0u);
  unsigned int words[2] = {7, 7};
  unsigned int size = sizeof words;
  EXPECT_EQ(yax->GetValue(0, "key", "n", kInteger, words, &size), 0u);
  EXPECT_EQ(words[0], 5u);
  EXPECT_EQ(words[1], 7u);
}

// Without a handle its low half, through one all of it.
TEST_F(FrameworkValues, SettingANumberFollowsTheRegistry) {
  const unsigned long long first = 0x1122334455667788ull, second = 0x99AABBCCDDEEFF00ull;
  ASSERT_EQ(yax->CreateValue(0, "key", "n", kInteger, &first), 0u);
  EXPECT_EQ(yax->SetValue(0, "key", "n", kInteger, &second), 0u);
  EXPECT_EQ(Tree().at("key").values[0].number, 0x11223344DDEEFF00ull);
  const unsigned int handle = Open("key");
  EXPECT_EQ(yax->SetValue(handle, "", "n", kInteger, &second), 0u);
  EXPECT_EQ(Tree().at("key").values[0].number, second);
  EXPECT_EQ(yax->DeleteValue(handle, "", "n"), 0u);
  EXPECT_TRUE(Tree().at("key").values.empty());
}

TEST_F(FrameworkValues, DataMayLieAtOddAddresses) {
  alignas(8) char bytes[32] = {};
  const unsigned long long number = 0x1122334455667788ull;
  std::memcpy(bytes + 1, &number, sizeof number);
  ASSERT_EQ(yax->CreateValue(0, "key", "n", kInteger, bytes + 1), 0u);
  ASSERT_EQ(yax->SetValue(0, "key", "n", kInteger, bytes + 1), 0u);
  for (unsigned int handle : {Open("key"), 0u}) {
    unsigned int size = 8;
    std::memset(bytes, '#', sizeof bytes);
    EXPECT_EQ(yax->GetValue(handle, handle == 0 ? "key" : "", "n", kInteger, bytes + 3, &size), 0u);
    EXPECT_EQ(std::string(bytes, 8), "###\x88\x77\x66\x55#");
  }
  const unsigned int handle = Open("key");
  std::memcpy(bytes + 5, &number, sizeof number);
  EXPECT_EQ(yax->SetValue(handle, "", "n", kInteger, bytes + 5), 0u);
  EXPECT_EQ(yax->CreateValue(handle, "", "m", kInteger, bytes + 5), 0u);
  EXPECT_EQ(Tree().at("key").values[0].number, number);
}

// ---- values read as something else

// No number is made of it, and no memory is freed that is not the reader's.
TEST_F(FrameworkRegistry, AValueOfAnotherTypeReadsAsAnEmptyTextThroughAHandle) {
  const unsigned long long number = 0x4142434445464748ull;
  ASSERT_EQ(yax->CreateValue(0, "key", "n", kInteger, &number), 0u);
  const unsigned int handle = Open("key");
  for (int round = 0; round < 3; ++round) {
    char text[8] = "#######";
    unsigned int size = sizeof text;
    EXPECT_EQ(yax->GetValue(handle, "", "n", kString, text, &size), 0u);
    EXPECT_EQ(size, 1u);
    EXPECT_EQ(std::string(text, 3), "\0##"s);
  }
  EXPECT_EQ(Get(yax, handle, "", "n", kString, 0), "status 8");
}

TEST_F(FrameworkValues, ANumberReadAsATextWithoutAHandleIsItsBytes) {
  const unsigned long long number = 0x4142434445464748ull;
  ASSERT_EQ(yax->CreateValue(0, "key", "n", kInteger, &number), 0u);
  EXPECT_EQ(GetText(0, "n", 8), "size 8: HGFE\0\0\0\0"s);
  EXPECT_EQ(GetText(0, "n", 7), "status 8");
}

TEST_F(FrameworkValues, AShortTextReadAsANumberIsFilledUpWithZeros) {
  ASSERT_EQ(yax->CreateValue(0, "key", "one", kString, "A"), 0u);
  ASSERT_EQ(yax->CreateValue(0, "key", "empty", kString, ""), 0u);
  ASSERT_EQ(yax->CreateValue(0, "key", "long", kString, "ABCDEF"), 0u);
  for (unsigned int handle : {Open("key"), 0u}) {
    EXPECT_EQ(GetNumber(handle, "one", 4), "size 2: A\0\0\0"s);
    EXPECT_EQ(GetNumber(handle, "empty", 4), "size 1: \0\0\0\0"s);
    EXPECT_EQ(GetNumber(handle, "long", 7), "size 7: ABCD");
    EXPECT_EQ(GetNumber(handle, "long", 6), "status 8");
  }
}

TEST_F(FrameworkForeignValues, AValueThatIsNotSetHasNoNumberAndThroughAHandleAnEmptyText) {
  AsAnotherClient([](tamu::registry::Registry& registry) {
    EXPECT_EQ(registry.CreateValue(0, "key", "unset", nullptr), 0u);
  });
  EXPECT_EQ(GetNumber(0, "unset", 8), "status 13");
  EXPECT_EQ(GetText(0, "unset", 8), "status 13");
  const unsigned int handle = Open("key");
  EXPECT_EQ(GetNumber(handle, "unset", 8), "status 13");
  EXPECT_EQ(GetText(handle, "unset", 8), "size 1: \0"s);
  EXPECT_EQ(GetText(handle, "unset", 0), "status 8");
}

TEST_F(FrameworkForeignValues, DataOfSizeZeroIsTheNumberZero) {
  AsAnotherClient([](tamu::registry::Registry& registry) {
    tamu::registry::ExactValue text(1, "x"), nothing(2, "");
    EXPECT_EQ(registry.CreateValue(0, "key", "n", &text), 0u);
    EXPECT_EQ(registry.SetValue(0, "key", "n", &nothing), 0u);
  });
  EXPECT_EQ(GetNumber(0, "n", 8), "size 0: \0\0\0\0"s);
  EXPECT_EQ(GetText(0, "n", 8), "size 0: ");
}

// Of all types the bytes come without a handle; through one those of texts, and as a number of all.
TEST_F(FrameworkForeignValues, DataOfEveryTypeIsRead) {
  AsAnotherClient([](tamu::registry::Registry& registry) {
    for (unsigned int type = 1; type <= 5; ++type) {
      tamu::registry::ExactValue value(type, "ABCDE");
      EXPECT_EQ(registry.CreateValue(0, "key", std::to_string(type).c_str(), &value), 0u);
    }
  });
  for (const char* name : {"1", "2", "3", "4", "5"}) {
    EXPECT_EQ(GetText(0, name, 5), "size 5: ABCDE");
    EXPECT_EQ(GetNumber(0, name, 5), "size 5: ABCD");
  }
  const unsigned int handle = Open("key");
  EXPECT_EQ(GetText(handle, "1", 5), "size 5: ABCDE");
  for (const char* name : {"2", "3", "4", "5"}) {
    EXPECT_EQ(GetText(handle, name, 5), "size 1: \0"s);
    EXPECT_EQ(GetNumber(handle, name, 5), "size 5: ABCD");
  }
}

}  // namespace
