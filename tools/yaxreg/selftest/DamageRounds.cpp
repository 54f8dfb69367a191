#include "tools/yaxreg/selftest/DamageRounds.h"

#include <algorithm>

#include "tools/yaxreg/image/FileBytes.h"
#include "tools/yaxreg/image/RegistryImage.h"
#include "tools/yaxreg/selftest/ChildTask.h"
#include "tools/yaxreg/selftest/TestContent.h"
#include "tools/yaxreg/selftest/TestFiles.h"

namespace yaxreg {

namespace status = tamu::registry::status;
using tamu::registry::Registry;

namespace {

constexpr unsigned int kChanges = 40;    // that have made the content
constexpr unsigned int kMostBytes = 16;  // that are changed
constexpr unsigned int kSector = 512;    // bytes

enum : int { kAnswerUsed = 0, kAnswerRefused = 10 };

class Everything : public tamu::registry::WalkVisitor {
 public:
  Then VisitKey(const tamu::registry::WalkedKey&) override { return Then::kGoOn; }
  Then VisitValue(const tamu::registry::WalkedKey&, const tamu::registry::WalkedValue&) override {
    return Then::kGoOn;
  }
};

// Single bytes, a sector, or the end of the file.
std::string Damaged(const TestPart& part, std::string bytes) {
  const auto last = static_cast<unsigned int>(bytes.size() - 1);
  switch (part.Draw(3)) {
    case 0:
      bytes.resize(part.Draw(last));
      return bytes;
    case 1: {
      const size_t begin = part.Draw(last) / kSector * kSector;
      const size_t size = std::min<size_t>(kSector, bytes.size() - begin);
      bytes.replace(begin, size, size, static_cast<char>(part.Draw(1) == 0 ? 0 : part.Draw(255)));
      return bytes;
    }
    default:
      for (unsigned int i = part.Draw(kMostBytes); i-- > 0;) {
        bytes[part.Draw(last)] = static_cast<char>(part.Draw(255));
      }
      const auto flipped = 1 + part.Draw(254);
      char& byte = bytes[part.Draw(last)];
      byte = static_cast<char>(static_cast<unsigned char>(byte) ^ flipped);
      return bytes;
  }
}

// What each of these answers does not matter.
int UseAll(const std::string& file) {
  Registry registry(file.c_str(), tamu::registry::kAdministratorId);
  if (OpenForTest(registry) != status::kOk) return kAnswerRefused;
  Everything all;
  registry.Walk(0, "", all);
  tamu::registry::CheckResult result;
  registry.Check(&result);
  TestContent content(registry);
  unsigned int number = 0;
  content.Read(&number);
  content.Write(number + 1);
  registry.RemoveKey("network");
  registry.Compact();
  registry.Walk(0, "", all);
  return kAnswerUsed;
}

unsigned int MakeContent(const std::string& file) {
  Registry registry(file.c_str(), tamu::registry::kAdministratorId);
  unsigned int result = OpenForTest(registry);
  for (unsigned int i = 0; i < kChanges && result == status::kOk; ++i) {
    result = TestContent(registry).Write(i);
  }
  return result;
}

}  // namespace

void RunDamageRounds(const TestPart& part) {
  SelfTestCounts& counts = *part.counts;
  std::string bytes;
  if (MakeContent(part.file) != status::kOk ||
      !ReadWholeFile(part.file, RegistryImage::kMaxSize, &bytes).isDone()) {
    ++counts.unreadable;
    return;
  }
  do {
    if (!PutTestFile(part.file, Damaged(part, bytes))) break;
    ++counts.damages;
    const int answer = RunInChild([&] { return UseAll(part.file); });
    if (answer == kAnswerRefused) ++counts.refused;
    if (answer != kAnswerRefused && answer != kAnswerUsed) ++counts.crashes;
  } while (!part.IsOver());
}

}  // namespace yaxreg
