#include <gtest/gtest.h>

#include <sstream>

#include "tests/tools/yaxreg/ContentBuilder.h"
#include "tools/yaxreg/content/ContentJson.h"
#include "tools/yaxreg/content/ContentJsonReader.h"

namespace {

using yaxreg::ContentUpdate;
using yaxreg::ContentValue;
using yaxreg::KeyUpdate;
using yaxreg::ReadContentJson;

ContentUpdate Read(const std::string& json) {
  ContentUpdate update;
  std::string reason;
  EXPECT_TRUE(ReadContentJson(json, &update, &reason)) << reason;
  EXPECT_EQ("", reason);
  return update;
}

// A document with these keys; the one key with these fields; its one value with these fields.
std::string Keys(const std::string& keys) {
  return "{\"keys\":[" + keys + "]}";
}
std::string Key(const std::string& fields) {
  return Keys("{\"path\":\"a\"," + fields + "}");
}
std::string Value(const std::string& fields) {
  return Key("\"values\":[{\"name\":\"v\"," + fields + "}]");
}

KeyUpdate ReadKey(const std::string& fields) {
  const ContentUpdate update = Read(Key(fields));
  EXPECT_EQ(1u, update.keys.size());
  return update.keys.empty() ? KeyUpdate() : update.keys[0];
}

ContentValue ReadValue(const std::string& fields) {
  const KeyUpdate key = ReadKey("\"values\":[{\"name\":\"v\"," + fields + "}]");
  EXPECT_EQ(1u, key.values.size());
  return key.values.empty() ? ContentValue() : key.values[0];
}

// Why a document is refused.
std::string ReasonOf(const std::string& json) {
  ContentUpdate update;
  update.keys.resize(7);
  std::string reason;
  EXPECT_FALSE(ReadContentJson(json, &update, &reason)) << json;
  EXPECT_EQ(7u, update.keys.size()) << json;
  return reason;
}

TEST(ContentJsonReader, ReadsWhatIsWrittenBack) {
  yaxreg::ContentKey key = KeyOf(1, "n\xFF");
  key.owner = 0xFFFFFFFF;
  key.permission = 0xF1;
  key.watch = 63;
  key.hasDefault = true;
  key.defaultValue = ~0ULL;
  ContentValue sized = NumberOf("sized", 1ULL << 60);
  sized.size = 4;
  ContentValue left = DataOf("left", 3, "abc");
  left.isSet = false;
  key.values = {
      NumberOf("a", 1),         NumberOf("a", 2),   DataOf("data", 5, "\xFF"), left, sized,
      TextOf("text", "line\n"), UnsetOf("u", 0, 8), UnsetOf("w", 4, 1024)};
  std::ostringstream json;
  yaxreg::WriteContentJson(ContentOf({KeyOf(0, ""), key}), 0, json);

  std::istringstream in(json.str());
  ContentUpdate update;
  std::string reason;
  ASSERT_TRUE(ReadContentJson(in, &update, &reason)) << reason;
  ASSERT_EQ(2u, update.keys.size());
  EXPECT_EQ("", update.keys[0].path);
  EXPECT_TRUE(update.keys[0].tellsDefault);
  EXPECT_FALSE(update.keys[0].defaultValue.has_value());
  EXPECT_TRUE(update.keys[0].tellsValues);
  const KeyUpdate& read = update.keys[1];
  EXPECT_EQ("n\xFF", read.path);
  EXPECT_EQ(0xFFFFFFFFu, read.owner.value());
  EXPECT_EQ(0xF1, read.rights.value());
  EXPECT_EQ(63, read.watch.value());
  EXPECT_EQ(~0ULL, read.defaultValue.value());
  EXPECT_EQ(key.values, read.values);
}

TEST(ContentJsonReader, LeavesEmptyWhatADocumentDoesNotTell) {
  const ContentUpdate update = Read("{\"keys\":[{\"path\":\"a\"}]}");
  ASSERT_EQ(1u, update.keys.size());
  const KeyUpdate& key = update.keys[0];
  EXPECT_EQ("a", key.path);
  EXPECT_FALSE(key.isMissing);
  EXPECT_FALSE(key.owner.has_value());
  EXPECT_FALSE(key.rights.has_value());
  EXPECT_FALSE(key.watch.has_value());
  EXPECT_FALSE(key.tellsDefault);
  EXPECT_FALSE(key.tellsValues);
  EXPECT_TRUE(Read("{}").keys.empty());
}

TEST(ContentJsonReader, TellsADefaultThatIsTakenAwayFromNone) {
  const KeyUpdate key = ReadKey("\"default\":null");
  EXPECT_TRUE(key.tellsDefault);
  EXPECT_FALSE(key.defaultValue.has_value());
}

TEST(ContentJsonReader, ReadsNumbersInEveryNotation) {
  EXPECT_EQ(255u, ReadKey("\"default\":\"0xFF\"").defaultValue.value());
  EXPECT_EQ(42u, ReadKey("\"default\":\"42\"").defaultValue.value());
  EXPECT_EQ(~0ULL, ReadKey("\"default\":\"-1\"").defaultValue.value());
  EXPECT_EQ(~0ULL, ReadKey("\"default\":-1").defaultValue.value());
  EXPECT_EQ(~0ULL, ReadKey("\"default\":18446744073709551615").defaultValue.value());
  EXPECT_EQ(1ULL << 63, ReadKey("\"default\":-9223372036854775808").defaultValue.value());
  EXPECT_EQ(16u, ReadKey("\"owner\":\"0x10\"").owner.value());
}

TEST(ContentJsonReader, ReadsRightsAsNumberOrLetters) {
  EXPECT_EQ(0x1F, ReadKey("\"rights\":31").rights.value());
  EXPECT_EQ(0x1F, ReadKey("\"rights\":\"0x1F\"").rights.value());
  EXPECT_EQ(0x1F, ReadKey("\"rights\":\"rwcd:r\"").rights.value());
}

// The ids are those that h = 5381, then h = 33 * h + c for each character, gives modulo 2^32.
TEST(ContentJsonReader, ReadsAnOwnerAsNumberOrName) {
  EXPECT_EQ(1000u, ReadKey("\"owner\":\"1000\"").owner.value());
  EXPECT_EQ(177670u, ReadKey("\"owner\":\"a\"").owner.value());  // 33 * 5381 + 97
  EXPECT_EQ(3884477203u, ReadKey("\"owner\":\"installer\"").owner.value());
  EXPECT_EQ(2088417975u, ReadKey("\"owner\":\"3com\"").owner.value());
  EXPECT_EQ(5857809u, ReadKey("\"owner\":\"\\u00e9\"").owner.value());  // bytes count as signed
  for (const char* number : {"4294967296", "-1", "0x100000000"}) {
    EXPECT_EQ("keys[0].owner: must be from 0 to 4294967295",
              ReasonOf(Key(std::string("\"owner\":\"") + number + '"')));
  }
  const std::string kind = "keys[0].owner: must be a whole number or a user's name";
  EXPECT_EQ(kind, ReasonOf(Key("\"owner\":\"99999999999999999999\"")));
  EXPECT_EQ(kind, ReasonOf(Key("\"owner\":\"\"")));
  EXPECT_EQ("keys[0].owner: holds a zero byte", ReasonOf(Key("\"owner\":\"a\\u0000b\"")));
}

TEST(ContentJsonReader, GivesValuesTheTypeOfTheirData) {
  EXPECT_EQ(NumberOf("v", 1500), ReadValue("\"number\":1500"));
  EXPECT_EQ(TextOf("v", "eth0"), ReadValue("\"text\":\"eth0\""));
  EXPECT_EQ(DataOf("v", 2, std::string("\x00\xFF", 2)), ReadValue("\"hex\":\"00Ff\""));
  EXPECT_EQ(DataOf("v", 5, std::string("a\0", 2)), ReadValue("\"type\":5,\"text\":\"a\""));
  EXPECT_EQ(UnsetOf("v", 0, 8), ReadValue("\"type\":0,\"set\":false"));
  EXPECT_EQ(UnsetOf("v", 3, 0), ReadValue("\"set\":false,\"type\":3"));
}

TEST(ContentJsonReader, KeepsTheOrderOfValues) {
  const KeyUpdate key = ReadKey(
      "\"values\":[{\"name\":\"b\",\"number\":3},{\"name\":\"a\",\"number\":1},"
      "{\"name\":\"b\",\"number\":2}]");
  const std::vector<ContentValue> expected = {NumberOf("b", 3), NumberOf("a", 1), NumberOf("b", 2)};
  EXPECT_EQ(expected, key.values);
}

TEST(ContentJsonReader, SortsKeysSoThatEachComesBeforeThoseBelowIt) {
  const ContentUpdate update = Read(
      Keys("{\"path\":\"\xC3\xA4\"},{\"path\":\"a-b\"},{\"path\":\"a/z/b\"},{\"path\":\"ab\"},"
           "{\"path\":\"a\",\"owner\":7},{\"path\":\"a!\"},{\"path\":\"\"},{\"path\":\"a/z\"}"));
  std::string paths;
  for (const KeyUpdate& key : update.keys) paths += '<' + key.path + '>';
  EXPECT_EQ("<><a><a/z><a/z/b><a!><a-b><ab><\xC3\xA4>", paths);
  EXPECT_EQ(7u, update.keys[1].owner.value());
  EXPECT_FALSE(update.keys[5].owner.has_value());
  EXPECT_FALSE(update.keys[0].owner.has_value());
}

TEST(ContentJsonReader, ReadsAMissingKeyWithoutAnythingElse) {
  EXPECT_TRUE(ReadKey("\"missing\":true,\"values\":[]").isMissing);
  EXPECT_FALSE(ReadKey("\"missing\":false,\"owner\":1").isMissing);
  for (const char* field : {"\"owner\":1", "\"rights\":1", "\"watch\":1", "\"default\":null",
                            "\"values\":[{\"name\":\"v\",\"number\":1}]"}) {
    EXPECT_EQ("keys[0]: a key that is missing has only a path",
              ReasonOf(Key(std::string("\"missing\":true,") + field)));
  }
}

TEST(ContentJsonReader, NamesLineAndColumnOfWhatIsNoJson) {
  EXPECT_EQ("line 1, column 2: is no JSON", ReasonOf("net"));
  EXPECT_EQ("line 3, column 4: is no JSON", ReasonOf("{\n\"keys\":[\n{\"a\n"));
  EXPECT_EQ("line 2, column 1: is no JSON", ReasonOf("{\"keys\":[]}\n}"));
  EXPECT_EQ("line 1, column 9: is no JSON", ReasonOf("{\"keys\":'a'}"));
  EXPECT_EQ("line 1, column 19: is no JSON", ReasonOf("{\"keys\":[{\"path\":\"\xFF\"}]}"));
  EXPECT_EQ("line 2, column 2: is no JSON", ReasonOf("\n{"));
}

TEST(ContentJsonReader, TellsThatThereIsNothing) {
  EXPECT_EQ("is empty", ReasonOf(""));
  EXPECT_EQ("is empty", ReasonOf(" \t\r\n"));
}

TEST(ContentJsonReader, RefusesUnknownAndDoubleFields) {
  EXPECT_EQ("a field \"kyes\" is not known", ReasonOf("{\"kyes\":[]}"));
  EXPECT_EQ("keys[1]: a field \"onwer\\x0a\" is not known",
            ReasonOf(Keys("{\"path\":\"b\"},{\"path\":\"a\",\"onwer\\n\":1}")));
  EXPECT_EQ("keys[0].values[0]: a field \"path\" is not known", ReasonOf(Value("\"path\":\"\"")));
  EXPECT_EQ("keys[0].path: is there twice", ReasonOf(Key("\"path\":\"b\"")));
  EXPECT_EQ("keys[0].values[0].name: is there twice", ReasonOf(Value("\"name\":\"w\"")));
  EXPECT_EQ("keys: is there twice", ReasonOf("{\"keys\":[],\"keys\":[]}"));
  EXPECT_EQ("keys[0].path.hex: is there twice",
            ReasonOf(Keys("{\"path\":{\"hex\":\"61\",\"hex\":\"62\"}}")));
}

TEST(ContentJsonReader, RefusesOtherFormatsAndVersions) {
  Read("{\"keys\":[],\"version\":1,\"format\":\"yax-registry\"}");
  EXPECT_EQ("format: must be yax-registry", ReasonOf("{\"format\":\"registry\"}"));
  EXPECT_EQ("format: must be a text", ReasonOf("{\"format\":1}"));
  EXPECT_EQ("version: must be 1", ReasonOf("{\"version\":2}"));
  EXPECT_EQ("version: must be 1", ReasonOf("{\"version\":-1}"));
}

TEST(ContentJsonReader, RefusesWrongTypes) {
  EXPECT_EQ("must be an object", ReasonOf("[]"));
  EXPECT_EQ("must be an object", ReasonOf("[{\"path\":\"\"}]"));
  EXPECT_EQ("must be an object", ReasonOf("7"));
  EXPECT_EQ("keys: must be a list", ReasonOf("{\"keys\":{}}"));
  EXPECT_EQ("keys[0]: must be an object", ReasonOf("{\"keys\":[\"a\"]}"));
  EXPECT_EQ("keys[1]: must be an object", ReasonOf("{\"keys\":[{\"path\":\"\"},[]]}"));
  EXPECT_EQ("keys[0].path: must be a text or {\"hex\": DIGITS}",
            ReasonOf("{\"keys\":[{\"path\":null}]}"));
  for (const char* owner : {"null", "{}", "[]", "true", "1.5"}) {
    EXPECT_EQ("keys[0].owner: must be a whole number or a user's name",
              ReasonOf(Key(std::string("\"owner\":") + owner)));
  }
  EXPECT_EQ("keys[0].watch: must be a whole number", ReasonOf(Key("\"watch\":\"x\"")));
  EXPECT_EQ("keys[0].missing: must be true or false", ReasonOf(Key("\"missing\":1")));
  EXPECT_EQ("keys[0].rights: must be a whole number or letters such as rwcd:r",
            ReasonOf(Key("\"rights\":\"rwx:r\"")));
  EXPECT_EQ("keys[0].default: must be a whole number or null", ReasonOf(Key("\"default\":false")));
  EXPECT_EQ("keys[0].values[0]: must be an object", ReasonOf(Key("\"values\":[null]")));
  EXPECT_EQ("keys[0].values[0].set: must be true or false", ReasonOf(Value("\"set\":\"no\"")));
  EXPECT_EQ("keys[0].values[0].text: must be a text", ReasonOf(Value("\"text\":7")));
  EXPECT_EQ("keys[0].values[0].number: must be a whole number", ReasonOf(Value("\"number\":true")));
}

TEST(ContentJsonReader, RefusesFractionsAndNumbersAbove64Bits) {
  for (const char* number : {"1.0", "1e3", "18446744073709551616", "-9223372036854775809",
                             "\"18446744073709551616\"", "\"1.0\"", "\"\""}) {
    EXPECT_EQ("keys[0].values[0].number: must be a whole number",
              ReasonOf(Value(std::string("\"number\":") + number)))
        << number;
  }
}

TEST(ContentJsonReader, RefusesNumbersOutOfTheirRange) {
  Read(Key("\"owner\":4294967295,\"rights\":255,\"watch\":63"));
  EXPECT_EQ("keys[0].owner: must be from 0 to 4294967295", ReasonOf(Key("\"owner\":4294967296")));
  EXPECT_EQ("keys[0].owner: must be from 0 to 4294967295", ReasonOf(Key("\"owner\":-1")));
  EXPECT_EQ("keys[0].rights: must be from 0 to 255", ReasonOf(Key("\"rights\":256")));
  EXPECT_EQ("keys[0].watch: must be from 0 to 63", ReasonOf(Key("\"watch\":\"64\"")));
  EXPECT_EQ("keys[0].values[0].type: must be from 0 to 5",
            ReasonOf(Value("\"type\":6,\"hex\":\"\"")));
  // No backup holds a longer one.
  EXPECT_EQ(1024u, ReadValue("\"size\":1024,\"number\":1").size);
  EXPECT_EQ("keys[0].values[0].size: must be from 0 to 1024",
            ReasonOf(Value("\"size\":1025,\"number\":1")));
  EXPECT_EQ("keys[0].values[0].size: must be from 0 to 1024",
            ReasonOf(Value("\"size\":1025,\"type\":2,\"set\":false")));
}

TEST(ContentJsonReader, RefusesPathsThatNoKeyCanHave) {
  EXPECT_EQ("keys[0]: the path is left out", ReasonOf(Keys("{\"owner\":1}")));
  EXPECT_EQ("keys[0].path: begins with a /", ReasonOf(Keys("{\"path\":\"/a\"}")));
  EXPECT_EQ("keys[0].path: ends in a /", ReasonOf(Keys("{\"path\":\"a/\"}")));
  EXPECT_EQ("keys[0].path: has an empty component", ReasonOf(Keys("{\"path\":\"a//b\"}")));
  EXPECT_EQ("keys[0].path: holds a zero byte", ReasonOf(Keys("{\"path\":\"a\\u0000b\"}")));
  EXPECT_EQ("keys[0].path.hex: holds a zero byte", ReasonOf(Keys("{\"path\":{\"hex\":\"00\"}}")));
  EXPECT_EQ("keys[0].path.hex: must be hexadecimal digits, two a byte",
            ReasonOf(Keys("{\"path\":{\"hex\":\"6\"}}")));
  EXPECT_EQ("keys[0].path: the field hex is left out", ReasonOf(Keys("{\"path\":{}}")));
}

TEST(ContentJsonReader, RefusesTwoKeysWithOnePath) {
  EXPECT_EQ("keys[2].path: is the path of keys[0], too",
            ReasonOf(Keys("{\"path\":\"b\"},{\"path\":\"a\"},{\"path\":{\"hex\":\"62\"}}")));
}

TEST(ContentJsonReader, RefusesNamesThatNoValueCanHave) {
  const std::string longest(31, 'n');
  Read(Key("\"values\":[{\"name\":\"" + longest + "\",\"number\":1}]"));
  const auto reason = [](const std::string& name) {
    return ReasonOf(Key("\"values\":[{\"number\":1,\"name\":" + name + "}]"));
  };
  EXPECT_EQ("keys[0].values[0].name: has 32 bytes, 31 are possible",
            reason("\"" + longest + "n\""));
  EXPECT_EQ("keys[0].values[0].name: holds a zero byte", reason("\"a\\u0000\""));
  EXPECT_EQ("keys[0].values[0].name.hex: holds a zero byte", reason("{\"hex\":\"6100\"}"));
  EXPECT_EQ("keys[0].values[0]: the name is left out",
            ReasonOf(Key("\"values\":[{\"number\":1}]")));
}

// The library creates none, but restores it.
TEST(ContentJsonReader, ReadsAValueWithAnEmptyName) {
  const KeyUpdate key =
      ReadKey("\"values\":[{\"name\":\"\",\"number\":7},{\"name\":{\"hex\":\"\"},\"number\":8}]");
  const std::vector<ContentValue> expected = {NumberOf("", 7), NumberOf("", 8)};
  EXPECT_EQ(expected, key.values);
}

TEST(ContentJsonReader, RefusesMoreDataThanAValueHolds) {
  EXPECT_EQ(1024u, ReadValue("\"text\":\"" + std::string(1023, 'x') + "\"").size);
  EXPECT_EQ(1024u, ReadValue("\"hex\":\"" + std::string(2048, '0') + "\"").size);
  EXPECT_EQ(
      "keys[0].values[0]: has 1025 bytes of data with the zero byte at its end, 1024 are possible",
      ReasonOf(Value("\"text\":\"" + std::string(1024, 'x') + "\"")));
  EXPECT_EQ("keys[0].values[0]: has 1025 bytes of data, 1024 are possible",
            ReasonOf(Value("\"hex\":\"" + std::string(2050, '0') + "\"")));
}

TEST(ContentJsonReader, RefusesFieldsOfAValueThatDoNotFitTogether) {
  const std::string at = "keys[0].values[0]: ";
  EXPECT_EQ(at + "only one of number, text and hex is possible",
            ReasonOf(Value("\"text\":\"\",\"hex\":\"\"")));
  EXPECT_EQ(at + "type 0 has a number, neither text nor hex",
            ReasonOf(Value("\"type\":0,\"text\":\"a\"")));
  EXPECT_EQ(at + "only type 0 has a number", ReasonOf(Value("\"type\":1,\"number\":1")));
  EXPECT_EQ(at + "type and data are left out", ReasonOf(Value("\"set\":false")));
  EXPECT_EQ(at + "the number is left out", ReasonOf(Value("\"type\":0")));
  EXPECT_EQ(at + "text or hex is left out", ReasonOf(Value("\"type\":2,\"set\":true")));
  EXPECT_EQ(at + "the text holds a zero byte, write it as hex",
            ReasonOf(Value("\"text\":\"a\\u0000\"")));
  EXPECT_EQ(at + "the size is not that of the data, which has 2 bytes",
            ReasonOf(Value("\"size\":1,\"text\":\"a\"")));
  EXPECT_EQ(at + "the size is not that of the data, which has 0 bytes",
            ReasonOf(Value("\"size\":1,\"hex\":\"\"")));
}

TEST(ContentJsonReader, EndsAtOnceWhereADocumentIsTooDeep) {
  EXPECT_EQ("keys[0]: must be an object", ReasonOf("{\"keys\":" + std::string(1000000, '[')));
}

TEST(ContentJsonReader, RefusesMoreThan64MB) {
  std::string json = "{}" + std::string(yaxreg::kMaxJsonSize - 2, ' ');
  Read(json);
  json += ' ';
  EXPECT_EQ("has more than 64 MB", ReasonOf(json));
}

TEST(ContentJsonReader, TellsAStreamThatCannotBeRead) {
  std::istringstream in("{}");
  in.setstate(std::ios::badbit);
  ContentUpdate update;
  std::string reason;
  EXPECT_FALSE(ReadContentJson(in, &update, &reason));
  EXPECT_EQ("cannot be read", reason);
}

}  // namespace
