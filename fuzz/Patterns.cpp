// Lines, each as a pattern, as the words of a command and as a command line: nothing but the answer
// comes of it.
#include <sstream>

#include "fuzz/support/Harness.h"
#include "tests/tools/yaxreg/YaxregRig.h"
#include "tools/yaxreg/content/PathPattern.h"
#include "tools/yaxreg/text/CommandWords.h"

namespace fuzz {
namespace {

using namespace yaxreg;

Content SampleKeys() {
  Content content;
  const struct {
    const char* name;
    unsigned int depth;
  } keys[] = {{"", 0},    {"a", 1}, {"a*", 2}, {"b", 2},  {"b", 3},
              {"eth", 1}, {"?", 2}, {"\\", 2}, {"ab", 3}, {"net", 1}};
  for (const auto& each : keys) {
    ContentKey key;
    key.name = each.name;
    key.depth = each.depth;
    content.keys.push_back(key);
  }
  return content;
}

// The verbs with their command lines, which are read and not run.
VerbTable VerbsThatDoNothing() {
  VerbTable table = AllVerbs();
  for (Verb& verb : table.verbs) verb.run = [](Invocation&) { return kDone; };
  return table;
}

void TryPattern(const std::string& line) {
  static const Content sKeys = SampleKeys();
  for (const ContentKey& key : sKeys.keys) MatchesName(line, key.name);
  size_t before = 0;
  for (const size_t key : PathPattern(line).Find(sKeys)) {
    EXPECT_LT(key, sKeys.keys.size());
    EXPECT_LE(before, key);
    before = key;
  }
  KeysAt(sKeys, line);
  std::string path;
  std::string name;
  if (SplitPlace(line, &path, &name)) {
    EXPECT_EQ(line, path + ":" + name);
  }
  if (!HasWildcard(line) && line.find('\\') == std::string::npos) {
    EXPECT_TRUE(MatchesName(line, line));
  }
}

void TryWords(const std::string& line) {
  static const VerbTable sVerbs = VerbsThatDoNothing();
  std::vector<std::string> words;
  if (!SplitCommandWords(line, &words)) return;
  std::istringstream in;
  std::ostringstream out;
  std::ostringstream err;
  const ExitCode code = RunYaxreg(sVerbs, words, in, out, err, OutputKind::kPlain);
  EXPECT_TRUE(code == kDone || code == kUsage) << code;
  EXPECT_EQ(code == kUsage, !err.str().empty());
}

void RunPatterns(Bytes& in) {
  std::istringstream lines(in.Rest());
  unsigned int left = 16;
  for (std::string line; left > 0 && std::getline(lines, line); --left) {
    if (line.size() > 200) continue;
    TryPattern(line);
    TryWords(line);
  }
}

const Harness sPatterns("Patterns", RunPatterns);

}  // namespace
}  // namespace fuzz
