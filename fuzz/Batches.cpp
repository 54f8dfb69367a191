// Lines that yaxreg batch runs on a registry: it is changed as a whole or not at all, and sound.
#include "fuzz/support/Harness.h"
#include "tests/crash/MemoryFolder.h"
#include "tests/platform/TestFiles.h"
#include "tests/support/StructureCheck.h"
#include "tests/tools/yaxreg/RegistryFile.h"
#include "tests/tools/yaxreg/YaxregRig.h"

namespace fuzz {
namespace {

std::string SoundBytes(const std::string& path) {
  {
    RegistryFile registry(path);
    for (const char* key : {"a", "a/b", "net", "net/eth0"}) registry.AddKey(key);
    registry.AddNumber("net", "mtu", 1500);
    registry.AddText("net/eth0", "name", "uplink");
  }
  return GetFile(path);
}

// Other files than the registry are nobody's to read: some of them have no end.
bool AsksForFiles(const std::string& lines) {
  for (const char* word : {"file", "users", "root", "dev", "proc", "="}) {
    if (lines.find(word) != std::string::npos) return true;
  }
  return false;
}

void RunBatches(Bytes& in) {
  static const crash::MemoryFolder sFolder;
  static const std::string sPath = sFolder.path() + "/registry";
  static const std::string sSound = SoundBytes(sPath);
  const bool isJson = in.Below(2) != 0;
  const std::string lines = in.Rest();
  if (AsksForFiles(lines)) return;
  PutFile(sPath, sSound);
  std::vector<std::string> words = {"batch", sPath};
  if (isJson) words.push_back("--json");
  const Answer answer = Yaxreg(words, lines);
  EXPECT_GE(answer.code, 0);
  EXPECT_LE(answer.code, 2) << answer.err;
  EXPECT_EQ(answer.code == 0, answer.err.empty()) << answer.err;
  if (answer.code != 0) {
    EXPECT_TRUE(GetFile(sPath) == sSound);
  }
  EXPECT_EQ("", StructureFindings(sPath));
}

const Harness sBatches("Batches", RunBatches);

}  // namespace
}  // namespace fuzz
