// JSON: documents of keys and patches. What is understood is written again as it is.
#include <sstream>

#include "fuzz/support/Harness.h"
#include "gtest/gtest.h"
#include "tools/yaxreg/content/ContentDiff.h"
#include "tools/yaxreg/content/ContentJson.h"
#include "tools/yaxreg/content/ContentMerge.h"
#include "tools/yaxreg/content/ContentPatch.h"

namespace fuzz {
namespace {

using namespace yaxreg;

std::string JsonOf(const Content& content) {
  std::ostringstream out;
  WriteContentJson(content, content.keys.empty() ? Content::kNone : 0, out);
  return out.str();
}

Content Root() {
  Content content;
  content.keys.resize(1);
  return content;
}

const Content& Sample() {
  static const Content sSample = [] {
    ContentUpdate update;
    std::string reason;
    EXPECT_TRUE(ReadContentJson(
        R"({"keys":[{"path":"a","values":[{"name":"n","number":1},{"name":"t","text":"x"}]},)"
        R"({"path":"a/b","default":7,"watch":3},{"path":"net","owner":7,"rights":255}]})",
        &update, &reason))
        << reason;
    return MergedContent(Root(), "", update);
  }();
  return sSample;
}

void TryDocument(const std::string& json) {
  ContentUpdate update;
  std::string reason;
  size_t line = 0;
  if (!ReadContentJson(json, &update, &reason, nullptr, &line)) {
    EXPECT_NE("", reason);
    EXPECT_EQ(std::string::npos, reason.find('\n'));
    return;
  }
  const Content merged = MergedContent(Sample(), "", update);
  const std::string written = JsonOf(merged);
  ContentUpdate again;
  ASSERT_TRUE(ReadContentJson(written, &again, &reason)) << reason << written;
  EXPECT_EQ(written, JsonOf(ExactContent(Root(), "", again)));
}

void TryPatch(const std::string& json) {
  IsPatch(json);
  ContentPatches patches;
  std::string reason;
  if (!ReadPatches(json, &patches, &reason)) {
    EXPECT_NE("", reason);
    return;
  }
  std::string path;
  DoesPatchFit(Sample(), patches, &path);
  const Content there = PatchedContent(Sample(), patches.forth);
  JsonOf(there);
  JsonOf(PatchedContent(there, patches.back));
}

void RunDocuments(Bytes& in) {
  const bool isPatch = in.Below(2) != 0;
  const std::string json = in.Rest();
  isPatch ? TryPatch(json) : TryDocument(json);
}

const Harness sDocuments("Documents", RunDocuments);

}  // namespace
}  // namespace fuzz
