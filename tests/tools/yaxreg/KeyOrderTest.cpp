// In whatever a verb shows of several keys, each stands before those below it.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "tests/platform/TestFiles.h"
#include "tests/tools/yaxreg/RegistryFile.h"
#include "tests/tools/yaxreg/YaxregRig.h"

namespace {

// Sorted by the bytes of the paths "a b" and "a-b" would part "a" and what is below it.
const std::vector<std::string> kOrdered = {"a", "a/b", "a/b/c", "a b", "a-b", "ab", "ab/a"};

class KeyOrder : public ::testing::Test {
 protected:
  void SetUp() override {
    { const RegistryFile empty(empty_); }
    RegistryFile registry(file_);
    for (const char* const key : {"a", "ab", "a-b", "a b", "ab/a", "a/b", "a/b/c"}) {
      registry.AddKey(key);
      registry.AddNumber(key, "v", 1);
    }
  }

  // Where each key is told of first, `before` and `behind` around its path.
  std::map<std::string, size_t> PlacesIn(const std::string& text, const std::string& before,
                                         const std::string& behind) {
    std::map<std::string, size_t> places;
    for (const std::string& key : kOrdered) {
      places[key] = text.find(before + key + behind);
      EXPECT_NE(std::string::npos, places[key]) << key << " in\n" << text;
    }
    return places;
  }

  TempDir folder_;
  const std::string file_ = folder_ / "device.rce";
  const std::string empty_ = folder_ / "empty.rce";
};

TEST_F(KeyOrder, EveryKeyStandsBeforeThoseBelowIt) {
  const struct {
    std::vector<std::string> words;
    const char* before;
    const char* behind;
  } cases[] = {
      {{"ls", "-r", file_}, "\n", "/\n"},
      {{"ls", "-r", "-l", file_}, "  ", "/\n"},
      {{"ls", file_, "**"}, "\n", "/:\n"},
      {{"ls", file_, "**", "--json"}, "\"path\":\"", "\""},
      {{"tree", file_, "--json"}, "\"path\":\"", "\""},
      {{"find", file_}, "\n", "/\n"},
      {{"find", file_, "**:v"}, "\n", ":v\n"},
      {{"get", file_, "**:v", "--json"}, "\"path\":\"", "\""},
      {{"export", file_}, "\"path\":\"", "\""},
      {{"diff", empty_, file_, "--json"}, "\"path\":\"", "\""},
      {{"du", "--depth", "9", file_}, "  ", "/\n"},
  };
  for (const auto& one : cases) {
    const std::string text = "\n" + Yaxreg(one.words).out;
    const auto places = PlacesIn(text, one.before, one.behind);
    const bool isBySize = one.words[0] == "du";
    for (size_t i = 0; i < kOrdered.size(); ++i) {
      for (size_t j = i + 1; j < kOrdered.size(); ++j) {
        const bool isBelow = kOrdered[j].compare(0, kOrdered[i].size() + 1, kOrdered[i] + '/') == 0;
        if (isBySize && !isBelow) continue;
        EXPECT_LT(places.at(kOrdered[i]), places.at(kOrdered[j]))
            << kOrdered[i] << " and " << kOrdered[j] << " in\n"
            << text;
      }
    }
  }
}

}  // namespace
