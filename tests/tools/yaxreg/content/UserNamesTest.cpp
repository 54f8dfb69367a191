#include <gtest/gtest.h>

#include "registry/base/UserId.h"
#include "tools/yaxreg/content/UserNames.h"

namespace {

using yaxreg::UserNames;

UserNames NamesIn(const std::string& text) {
  UserNames names;
  std::string reason;
  EXPECT_TRUE(names.Read(text, &reason)) << reason;
  return names;
}

std::string NameIn(const UserNames& names, unsigned int number) {
  const std::string* const name = names.NameOf(number);
  return name == nullptr ? "(none)" : *name;
}

TEST(UserNames, AreTakenInThreeForms) {
  const UserNames names = NamesIn(
      "# users of the device\n\n  1000 anna\r\n0x3E9\tbert\nclara:x:1002:1002:Clara:/:/bin/sh\n"
      "dora:x:1003\nservice\n");
  EXPECT_EQ("anna", NameIn(names, 1000));
  EXPECT_EQ("bert", NameIn(names, 1001));
  EXPECT_EQ("clara", NameIn(names, 1002));
  EXPECT_EQ("dora", NameIn(names, 1003));
  EXPECT_EQ("service", NameIn(names, tamu::registry::UserIdOf("service")));
  EXPECT_EQ("(none)", NameIn(names, 1004));
  ASSERT_NE(nullptr, names.NumberOf("clara"));
  EXPECT_EQ(1002u, *names.NumberOf("clara"));
  EXPECT_EQ(nullptr, names.NumberOf("Clara"));
}

TEST(UserNames, OfOneNumberAreAllTakenAndTheFirstIsShown) {
  const UserNames names = NamesIn("0 root\n0 toor\n0 root");
  EXPECT_EQ("root", NameIn(names, 0));
  ASSERT_NE(nullptr, names.NumberOf("toor"));
  EXPECT_EQ(0u, *names.NumberOf("toor"));
}

TEST(UserNames, RefuseWhatIsUnclear) {
  const struct {
    const char* line;
    const char* reason;
  } cases[] = {
      {"1000 anna bert", "line 2: is neither NUMBER NAME nor NAME:x:NUMBER: nor NAME"},
      {"x anna", "line 2: is neither NUMBER NAME nor NAME:x:NUMBER: nor NAME"},
      {"4294967296 anna", "line 2: is neither NUMBER NAME nor NAME:x:NUMBER: nor NAME"},
      {"anna:x", "line 2: is neither NUMBER NAME nor NAME:x:NUMBER: nor NAME"},
      {"anna:x:", "line 2: is neither NUMBER NAME nor NAME:x:NUMBER: nor NAME"},
      {":x:5:", "line 2: is neither NUMBER NAME nor NAME:x:NUMBER: nor NAME"},
      {"5 \xFF", "line 2: is neither NUMBER NAME nor NAME:x:NUMBER: nor NAME"},
      {"5 7", "line 2: 7 could be taken for a number"},
      {"1000", "line 2: 1000 could be taken for a number"},
      {"5 -7x", "line 2: -7x could be taken for a number"},
      {"2 known", "line 2: known has two numbers"},
  };
  for (const auto& one : cases) {
    UserNames names = NamesIn("9 nina\n");
    std::string reason;
    EXPECT_FALSE(names.Read(std::string("1 known\n") + one.line + "\n", &reason)) << one.line;
    EXPECT_EQ(one.reason, reason);
    EXPECT_EQ("nina", NameIn(names, 9));
    EXPECT_EQ("(none)", NameIn(names, 1));
  }
}

}  // namespace
