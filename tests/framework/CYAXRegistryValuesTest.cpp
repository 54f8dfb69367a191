// Values through the framework: types, buffers and their sizes.
#include <memory>

#include "framework/YAXStatus.h"
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

class CYAXRegistryValuesTest : public FrameworkRegistry {
 protected:
  std::string GetText(unsigned int handle, const char* name, unsigned int capacity) {
    return Get(yax, handle, handle == 0 ? "key" : "", name, kString, capacity);
  }
  std::string GetNumber(unsigned int handle, const char* name, unsigned int capacity) {
    return Get(yax, handle, handle == 0 ? "key" : "", name, kInteger, capacity);
  }
};

// A client of the registry itself; the framework ends before it begins and begins anew after it.
class FrameworkForeignValues : public CYAXRegistryValuesTest {
 protected:
  template <class Change>
  void AsAnotherClient(Change change) {
    yax->Release();
    DestroyYAX();
    {
      tamu::registry::Registry registry(path.c_str(), "adminstrator");
      ASSERT_EQ(0u, registry.Initialize());
      change(registry);
    }
    ASSERT_EQ(yax_framework::kOk, CreateYAX(path.c_str()));
    void* view = nullptr;
    ASSERT_EQ(yax_framework::kOk, GetYAXInstance(IID_IYAXRegistry, &view));
    yax = static_cast<IYAXRegistry*>(view);
  }
};

// ---- what is refused

TEST_F(FrameworkRegistry, ValuesNeedAllPointers) {
  ASSERT_EQ(0u, yax->CreateValue(0, "key", "n", kString, "text"));
  const std::string before = Content();
  char data[8] = "#######";
  unsigned int size = sizeof data;
  for (auto type : {kInteger, kString}) {
    EXPECT_EQ(yax_framework::kBadArgument, yax->CreateValue(0, nullptr, "n", type, data));
    EXPECT_EQ(yax_framework::kBadArgument, yax->CreateValue(0, "key", nullptr, type, data));
    EXPECT_EQ(yax_framework::kBadArgument, yax->CreateValue(0, "key", "n", type, nullptr));
    EXPECT_EQ(yax_framework::kBadArgument, yax->SetValue(0, nullptr, "n", type, data));
    EXPECT_EQ(yax_framework::kBadArgument, yax->SetValue(0, "key", nullptr, type, data));
    EXPECT_EQ(yax_framework::kBadArgument, yax->SetValue(0, "key", "n", type, nullptr));
    EXPECT_EQ(yax_framework::kBadArgument, yax->GetValue(0, nullptr, "n", type, data, &size));
    EXPECT_EQ(yax_framework::kBadArgument, yax->GetValue(0, "key", nullptr, type, data, &size));
    EXPECT_EQ(yax_framework::kBadArgument, yax->GetValue(0, "key", "n", type, nullptr, &size));
    EXPECT_EQ(yax_framework::kBadArgument, yax->GetValue(0, "key", "n", type, data, nullptr));
  }
  EXPECT_EQ(8u, size);
  EXPECT_EQ(Content(), before);
}

TEST_F(FrameworkRegistry, UnknownTypesAreRefused) {
  ASSERT_EQ(0u, yax->CreateValue(0, "key", "n", kString, "text"));
  const std::string before = Content();
  char data[8] = "";
  unsigned int size = sizeof data;
  for (unsigned int number : {2u, 4u, 6u, 0xFFFFFFFFu}) {
    const auto type = static_cast<YAX_REG_DATA_TYPE_ENUM>(number);
    EXPECT_EQ(yax_framework::kBadArgument, yax->CreateValue(0, "key", "m", type, data));
    EXPECT_EQ(yax_framework::kBadArgument, yax->SetValue(0, "key", "n", type, data));
    EXPECT_EQ(yax_framework::kBadArgument, yax->GetValue(0, "key", "n", type, data, &size));
  }
  EXPECT_EQ(8u, size);
  EXPECT_EQ(Content(), before);
}

// The registry's statuses are all one here.
TEST_F(FrameworkRegistry, WhatTheRegistryRefusesIsOneFailure) {
  const unsigned long long number = 5;
  const std::string tooLong(1024, 'x');
  unsigned int size = 8, word = 7;
  EXPECT_EQ(yax_framework::kRegistryFailed, yax->CreateValue(0, "missing", "n", kInteger, &number));
  EXPECT_EQ(yax_framework::kRegistryFailed, yax->CreateValue(0, "key", "", kInteger, &number));
  EXPECT_EQ(yax_framework::kRegistryFailed,
            yax->CreateValue(0, "key", "n", kString, tooLong.c_str()));
  EXPECT_EQ(yax_framework::kRegistryFailed, yax->SetValue(0, "key", "n", kInteger, &number));
  EXPECT_EQ(yax_framework::kRegistryFailed, yax->GetValue(0, "key", "n", kInteger, &word, &size));
  EXPECT_EQ(yax_framework::kRegistryFailed, yax->DeleteValue(0, "key", "n"));
  EXPECT_EQ(yax_framework::kRegistryFailed, yax->GetValue(99, "", "n", kInteger, &word, &size));
  EXPECT_EQ(8u, size);
  EXPECT_EQ(7u, word);
}

// ---- texts

TEST_F(CYAXRegistryValuesTest, ATextIsStoredWithItsTerminator) {
  EXPECT_EQ(0u, yax->CreateValue(0, "key", "text", kString, "four"));
  EXPECT_EQ(0u, yax->CreateValue(0, "key", "empty", kString, ""));
  EXPECT_EQ(0u, yax->CreateValue(0, "key", "longest", kString, std::string(1023, 'x').c_str()));
  const DecodedKey key = Tree().at("key");
  ASSERT_EQ(3u, key.values.size());
  EXPECT_EQ(1u, key.values[2].type);
  EXPECT_EQ("four\0"s, key.values[2].bytes);
  EXPECT_EQ("\0"s, key.values[1].bytes);
  EXPECT_EQ(1024u, key.values[0].size);
  EXPECT_EQ(0u, yax->SetValue(0, "key", "empty", kString, "no more"));
  EXPECT_EQ("size 8: no more\0"s, GetText(0, "empty", 8));
  EXPECT_EQ(GetText(0, "longest", 1024), "size 1024: " + std::string(1023, 'x') + '\0');
}

TEST_F(CYAXRegistryValuesTest, ATextNeedsRoomForItsTerminator) {
  ASSERT_EQ(0u, yax->CreateValue(0, "key", "text", kString, "four"));
  ASSERT_EQ(0u, yax->CreateValue(0, "key", "empty", kString, ""));
  for (unsigned int handle : {Open("key"), 0u}) {
    EXPECT_EQ("size 5: four\0"s, GetText(handle, "text", 100));
    EXPECT_EQ("size 5: four\0"s, GetText(handle, "text", 5));
    EXPECT_EQ("status 8", GetText(handle, "text", 4));
    EXPECT_EQ("status 8", GetText(handle, "text", 0));
    EXPECT_EQ("size 1: \0"s, GetText(handle, "empty", 1));
    EXPECT_EQ("status 8", GetText(handle, "empty", 0));
  }
}

// ---- numbers

TEST_F(CYAXRegistryValuesTest, ANumberIsWrittenFromEightBytesAndReadIntoFour) {
  const unsigned long long number = 0x1122334455667788ull;
  ASSERT_EQ(0u, yax->CreateValue(0, "key", "n", kInteger, &number));
  const DecodedKey key = Tree().at("key");
  EXPECT_EQ(0u, key.values[0].type);
  EXPECT_EQ(key.values[0].number, number);
  for (unsigned int handle : {Open("key"), 0u}) {
    EXPECT_EQ("size 8: \x88\x77\x66\x55", GetNumber(handle, "n", 8));
    EXPECT_EQ("size 8: \x88\x77\x66\x55", GetNumber(handle, "n", 100));
    EXPECT_EQ("status 8", GetNumber(handle, "n", 7));
    EXPECT_EQ("status 8", GetNumber(handle, "n", 4));
    EXPECT_EQ("status 8", GetNumber(handle, "n", 0));
  }
}

TEST_F(CYAXRegistryValuesTest, OneWordIsFilled) {
  const unsigned long long number = 5;
  ASSERT_EQ(0u, yax->CreateValue(0, "key", "n", kInteger, &number));
  unsigned int words[2] = {7, 7};
  unsigned int size = sizeof words;
  EXPECT_EQ(0u, yax->GetValue(0, "key", "n", kInteger, words, &size));
  EXPECT_EQ(5u, words[0]);
  EXPECT_EQ(7u, words[1]);
}

// Without a handle its low half, through one all of it.
TEST_F(CYAXRegistryValuesTest, SettingANumberFollowsTheRegistry) {
  const unsigned long long first = 0x1122334455667788ull, second = 0x99AABBCCDDEEFF00ull;
  ASSERT_EQ(0u, yax->CreateValue(0, "key", "n", kInteger, &first));
  EXPECT_EQ(0u, yax->SetValue(0, "key", "n", kInteger, &second));
  EXPECT_EQ(0x11223344DDEEFF00ull, Tree().at("key").values[0].number);
  const unsigned int handle = Open("key");
  EXPECT_EQ(0u, yax->SetValue(handle, "", "n", kInteger, &second));
  EXPECT_EQ(Tree().at("key").values[0].number, second);
  EXPECT_EQ(0u, yax->DeleteValue(handle, "", "n"));
  EXPECT_TRUE(Tree().at("key").values.empty());
}

TEST_F(CYAXRegistryValuesTest, DataMayLieAtOddAddresses) {
  alignas(8) char bytes[32] = {};
  const unsigned long long number = 0x1122334455667788ull;
  std::memcpy(bytes + 1, &number, sizeof number);
  ASSERT_EQ(0u, yax->CreateValue(0, "key", "n", kInteger, bytes + 1));
  ASSERT_EQ(0u, yax->SetValue(0, "key", "n", kInteger, bytes + 1));
  for (unsigned int handle : {Open("key"), 0u}) {
    unsigned int size = 8;
    std::memset(bytes, '#', sizeof bytes);
    EXPECT_EQ(0u, yax->GetValue(handle, handle == 0 ? "key" : "", "n", kInteger, bytes + 3, &size));
    EXPECT_EQ("###\x88\x77\x66\x55#", std::string(bytes, 8));
  }
  const unsigned int handle = Open("key");
  std::memcpy(bytes + 5, &number, sizeof number);
  EXPECT_EQ(0u, yax->SetValue(handle, "", "n", kInteger, bytes + 5));
  EXPECT_EQ(0u, yax->CreateValue(handle, "", "m", kInteger, bytes + 5));
  EXPECT_EQ(Tree().at("key").values[0].number, number);
}

// ---- values read as something else

// No number is made of it, and no memory is freed that is not the reader's.
TEST_F(FrameworkRegistry, AValueOfAnotherTypeReadsAsAnEmptyTextThroughAHandle) {
  const unsigned long long number = 0x4142434445464748ull;
  ASSERT_EQ(0u, yax->CreateValue(0, "key", "n", kInteger, &number));
  const unsigned int handle = Open("key");
  for (int round = 0; round < 3; ++round) {
    char text[8] = "#######";
    unsigned int size = sizeof text;
    EXPECT_EQ(0u, yax->GetValue(handle, "", "n", kString, text, &size));
    EXPECT_EQ(1u, size);
    EXPECT_EQ("\0##"s, std::string(text, 3));
  }
  EXPECT_EQ("status 8", Get(yax, handle, "", "n", kString, 0));
}

TEST_F(CYAXRegistryValuesTest, ANumberReadAsATextWithoutAHandleIsItsBytes) {
  const unsigned long long number = 0x4142434445464748ull;
  ASSERT_EQ(0u, yax->CreateValue(0, "key", "n", kInteger, &number));
  EXPECT_EQ("size 8: HGFE\0\0\0\0"s, GetText(0, "n", 8));
  EXPECT_EQ("status 8", GetText(0, "n", 7));
}

TEST_F(CYAXRegistryValuesTest, AShortTextReadAsANumberIsFilledUpWithZeros) {
  ASSERT_EQ(0u, yax->CreateValue(0, "key", "one", kString, "A"));
  ASSERT_EQ(0u, yax->CreateValue(0, "key", "empty", kString, ""));
  ASSERT_EQ(0u, yax->CreateValue(0, "key", "long", kString, "ABCDEF"));
  for (unsigned int handle : {Open("key"), 0u}) {
    EXPECT_EQ("size 2: A\0\0\0"s, GetNumber(handle, "one", 4));
    EXPECT_EQ("size 1: \0\0\0\0"s, GetNumber(handle, "empty", 4));
    EXPECT_EQ("size 7: ABCD", GetNumber(handle, "long", 7));
    EXPECT_EQ("status 8", GetNumber(handle, "long", 6));
  }
}

TEST_F(FrameworkForeignValues, AValueThatIsNotSetHasNoNumberAndThroughAHandleAnEmptyText) {
  AsAnotherClient([](tamu::registry::Registry& registry) {
    EXPECT_EQ(0u, registry.CreateValue(0, "key", "unset", nullptr));
  });
  EXPECT_EQ("status 13", GetNumber(0, "unset", 8));
  EXPECT_EQ("status 13", GetText(0, "unset", 8));
  const unsigned int handle = Open("key");
  EXPECT_EQ("status 13", GetNumber(handle, "unset", 8));
  EXPECT_EQ("size 1: \0"s, GetText(handle, "unset", 8));
  EXPECT_EQ("status 8", GetText(handle, "unset", 0));
}

TEST_F(FrameworkForeignValues, DataOfSizeZeroIsTheNumberZero) {
  AsAnotherClient([](tamu::registry::Registry& registry) {
    tamu::registry::ExactValue text(1, "x"), nothing(2, "");
    EXPECT_EQ(0u, registry.CreateValue(0, "key", "n", &text));
    EXPECT_EQ(0u, registry.SetValue(0, "key", "n", &nothing));
  });
  EXPECT_EQ("size 0: \0\0\0\0"s, GetNumber(0, "n", 8));
  EXPECT_EQ("size 0: ", GetText(0, "n", 8));
}

// Of all types the bytes come without a handle; through one those of texts, and as a number of all.
TEST_F(FrameworkForeignValues, DataOfEveryTypeIsRead) {
  AsAnotherClient([](tamu::registry::Registry& registry) {
    for (unsigned int type = 1; type <= 5; ++type) {
      tamu::registry::ExactValue value(type, "ABCDE");
      EXPECT_EQ(0u, registry.CreateValue(0, "key", std::to_string(type).c_str(), &value));
    }
  });
  for (const char* name : {"1", "2", "3", "4", "5"}) {
    EXPECT_EQ("size 5: ABCDE", GetText(0, name, 5));
    EXPECT_EQ("size 5: ABCD", GetNumber(0, name, 5));
  }
  const unsigned int handle = Open("key");
  EXPECT_EQ("size 5: ABCDE", GetText(handle, "1", 5));
  for (const char* name : {"2", "3", "4", "5"}) {
    EXPECT_EQ("size 1: \0"s, GetText(handle, name, 5));
    EXPECT_EQ("size 5: ABCD", GetNumber(handle, name, 5));
  }
}

}  // namespace
