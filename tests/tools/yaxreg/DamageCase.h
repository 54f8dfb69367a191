// One damage of the small tree, and what is to be said of it.
#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "tests/tools/yaxreg/ContentText.h"
#include "tests/tools/yaxreg/HandMadeFile.h"

struct DamageCase {
  const char* name;
  std::vector<std::pair<unsigned, unsigned>> words;  // offset, what is written there
  std::string findings;
  // The part of ContentText that is gone, and another one in its place; empty: all is read.
  std::string gone;
  std::string instead;
  // What is below "lost+found", the first key of the small tree's root; empty: there is none.
  std::string strays = {};
};

inline void PrintTo(const DamageCase& one, std::ostream* out) {
  *out << one.name;
}

// Damages the small tree in one place and compares all that is told and read.
inline void ExpectFindings(const DamageCase& one) {
  HandMadeFile file = SmallTree();
  std::string expected = ContentText(yaxreg::RegistryImage(file.bytes).content());
  for (const auto& [offset, word] : one.words) file.PutWord(offset, word);
  const size_t place = expected.find(one.gone);
  ASSERT_NE(std::string::npos, place);
  expected.replace(place, one.gone.size(), one.instead);
  if (!one.strays.empty()) {
    expected.insert(expected.find('\n') + 1, "/lost+found ffff:0f made up\n" + one.strays);
  }
  const yaxreg::RegistryImage image(file.bytes);
  EXPECT_TRUE(image.IsRegistry());
  EXPECT_EQ(one.findings, FindingsText(image));
  EXPECT_EQ(expected, ContentText(image.content()));
  EXPECT_EQ(one.findings.empty(), image.IsSound());
  EXPECT_EQ(one.findings.find("loss: ") == std::string::npos, image.IsComplete());
}

inline std::string DamageName(const ::testing::TestParamInfo<DamageCase>& info) {
  return info.param.name;
}
