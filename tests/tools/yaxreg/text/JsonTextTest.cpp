#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "tests/tools/yaxreg/ChangeRig.h"
#include "tools/yaxreg/text/JsonText.h"

namespace yaxreg {

namespace {

TEST(JsonText, WritesNoControlCharacterAsItIs) {
  const std::string text = "\x01\x1F \x7E\x7F\xC2\x80\xC2\x9F\xC2\xA0\xC3\x80\xE0\xA2\x85";
  EXPECT_EQ("\"\\u0001\\u001f \x7E\\u007f\\u0080\\u009f\xC2\xA0\xC3\x80\xE0\xA2\x85\"",
            JsonDump(JsonText(text)));
  EXPECT_EQ(text, nlohmann::json::parse(JsonDump(JsonText(text))));
}

TEST(JsonText, IndentsADocument) {
  const nlohmann::ordered_json document = {{"b", "\x7F"}, {"a", JsonText("\xFF")}};
  EXPECT_EQ("{\"b\":\"\\u007f\",\"a\":{\"hex\":\"ff\"}}", JsonDump(document));
  EXPECT_EQ("{\n  \"b\": \"\\u007f\",\n  \"a\": {\n    \"hex\": \"ff\"\n  }\n}",
            JsonDump(document, 2));
}

TEST(JsonText, EscapesWhatJsonRequiresAndControlCharactersOnly) {
  EXPECT_EQ("\"a\\\"b\\\\c\\n\\u0001/\\u007f\xC3\xA4\"", TextJson("a\"b\\c\n\x01/\x7F\xC3\xA4"));
}

class JsonTextOfVerbs : public ChangeRig {};

// A terminal takes U+009B for the beginning of a command.
TEST_F(JsonTextOfVerbs, BringsNoControlCharacterToATerminal) {
  const std::string name = "\xC2\x9B\x7F";
  MakeKeys({name});
  MakeValue(name.c_str(), name.c_str(), 1, name + '\0');
  const std::string odd = folder / (name + ".rce").c_str();
  PutFile(odd, GetFile(file).substr(0, 70000));
  for (const std::vector<std::string>& call :
       std::vector<std::vector<std::string>>{{"export", file},
                                             {"tree", file, "--json"},
                                             {"ls", file, name, "--json"},
                                             {"get", file, name, name, "--json"},
                                             {"diff", file, odd, "--json"},
                                             {"check", odd, "--json"},
                                             {"stat", odd, "--json"},
                                             {"compact", file, "--json"},
                                             {"mkkey", "-p", file, name, "--json"},
                                             {"repair", odd, "-o", odd + name, "--json"}}) {
    const std::string out = Yaxreg(call).out;
    EXPECT_FALSE(out.empty()) << call[0];
    EXPECT_EQ(std::string::npos, out.find_first_of("\x7F\xC2")) << out;
  }
}

TEST_F(JsonTextOfVerbs, IsReadWithAndWithoutEscapes) {
  for (const std::string name : {"\xC2\x9B\x7F", "\\u009b\\u007f", "\\u009B\\u007F"}) {
    ASSERT_EQ(0, Yaxreg({"import", file},
                        "{\"format\":\"yax-registry\",\"version\":1,\"keys\":["
                        "{\"path\":\"" +
                            name + "\",\"values\":[]}]}")
                     .code);
    EXPECT_EQ(std::vector<std::string>({"\xC2\x9B\x7F"}), Paths());
  }
  EXPECT_NE(std::string::npos,
            Yaxreg({"export", file}).out.find("{\"path\":\"\\u009b\\u007f\",\"owner\""));
}

}  // namespace

}  // namespace yaxreg
