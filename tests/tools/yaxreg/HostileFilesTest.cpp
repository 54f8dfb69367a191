// Every verb on files that are no registries, and on registries that somebody has damaged: one line
// tells what is wrong, and nothing is made worse.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "tests/platform/TestFiles.h"
#include "tests/support/StructureCheck.h"
#include "tests/support/ElfImage.h"
#include "tests/tools/yaxreg/RegistryFile.h"
#include "tests/tools/yaxreg/YaxregRig.h"
#include "tools/yaxreg/verbs/VerbTable.h"

namespace status = tamu::registry::status;

namespace {

namespace fs = std::filesystem;

constexpr size_t kPage = 4096;  // bytes

// The verbs that work on a registry file.
std::vector<yaxreg::Verb> VerbsOfFiles() {
  std::vector<yaxreg::Verb> verbs;
  for (const yaxreg::Verb& verb : yaxreg::AllVerbs().verbs) {
    const std::string first = verb.arguments.empty() ? "" : verb.arguments[0].name;
    if (first == "FILE" || first == "FILE1") verbs.push_back(verb);
  }
  return verbs;
}

size_t LinesOf(const std::string& text) {
  return static_cast<size_t>(std::count(text.begin(), text.end(), '\n'));
}

// A folder with a sound registry and a backup of its key net.
class HostileFiles : public ::testing::Test {
 protected:
  void SetUp() override {
    {
      RegistryFile registry(sound_);
      for (const char* key : {"net", "net/eth0", "net/wlan0", "network", "YAX_ROOT",
                              "YAX_ROOT/{1FBF55FC-0F15-45CC-8F3F-DE86A5640CB5}"}) {
        registry.AddKey(key);
      }
      registry.AddNumber("net", "mtu", 1500);
      registry.AddText("net/eth0", "name", "uplink");
      registry.AddText("net/eth0", "long", std::string(700, 'x').c_str());
      registry.AddText("YAX_ROOT/{1FBF55FC-0F15-45CC-8F3F-DE86A5640CB5}", "CompName", "clock");
      EXPECT_EQ(status::kOk, registry.Calls().SetDefaultValue(0, "net/wlan0", 7));
    }
    ASSERT_EQ(0, Yaxreg({"backup", sound_, "net", backup_}).code);
    PutFile(object_, ElfImage().Bytes());
    PutFile(commands_, "get net:mtu\n");
    bytes_ = GetFile(sound_);
    setenv("EDITOR", "sed -i s/1500/1501/", 1);
    setenv("TMPDIR", (folder_ / ".").c_str(), 1);
  }

  void TearDown() override {
    unsetenv("EDITOR");
    unsetenv("TMPDIR");
  }

  // A call of the verb that changes something, on a sound file.
  std::vector<std::string> ArgumentsFor(const yaxreg::Verb& verb, const std::string& file) const {
    const std::string name = verb.name;
    std::vector<std::string> arguments;
    for (size_t begin = 0; begin < name.size();) {
      const size_t end = std::min(name.find(' ', begin), name.size());
      arguments.push_back(name.substr(begin, end - begin));
      begin = end + 1;
    }
    const std::map<std::string, std::string> texts = {
        {"FILE", file},
        {"FILE1", file},
        {"FILE2", sound_},
        {"PATH", "net"},
        {"NAME", "mtu"},
        {"NUMBER", "8"},
        {"FROM", "net"},
        {"TO", "copy"},
        {"BITS", "3"},
        {"RIGHTS", "rwcd:r"},
        {"COMMANDS", commands_},
        {"ID", "{1FBF55FC-0F15-45CC-8F3F-DE86A5640CB5}"},
        {"OBJECT", object_},
        {"OTHER", sound_},
        {"BACKUP", name == "backup" ? output_ : backup_}};
    for (const yaxreg::Argument& argument : verb.arguments) {
      const auto text = texts.find(argument.name);
      if (text == texts.end()) ADD_FAILURE() << "what is " << argument.name << " of " << name;
      if (text != texts.end()) arguments.push_back(text->second);
    }
    if (name == "mkkey") arguments.back() = "net/new";
    if (name == "add") arguments.back() = "new";
    if (name == "set" || name == "add" || name == "put")
      arguments.insert(arguments.end(), {"--int", "8"});
    if (name == "monitor") arguments.insert(arguments.end(), {"--timeout", "0"});
    if (name == "comp add") arguments.insert(arguments.end(), {"-f", "--machine", "x86-64"});
    if (name == "comp set") arguments.insert(arguments.end(), {"--name", "watch"});
    if (name == "repair") arguments.insert(arguments.end(), {"-o", output_});
    return arguments;
  }

  Answer Run(const yaxreg::Verb& verb, const std::string& file) const {
    const bool isShell = std::string(verb.name) == "shell";
    return Yaxreg(
        ArgumentsFor(verb, file),
        isShell ? "put net:mtu --int 8\n"
                : "{\"keys\":[{\"path\":\"\",\"values\":[{\"name\":\"mtu\",\"number\":9}]}]}");
  }

  // The names of all files in the folder.
  std::vector<std::string> Files() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder_ / ".")) {
      names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
  }

  // Every verb on this file answers so; `created` is what create answers, and also import if it
  // makes a file.
  void ExpectRefused(const std::string& file, int code, int created) {
    const std::vector<std::string> files = Files();
    for (const yaxreg::Verb& verb : VerbsOfFiles()) {
      const std::string name = verb.name;
      const bool isMade = created == 0 && (name == "create" || name == "import");
      const Answer answer = Run(verb, file);
      EXPECT_EQ(isMade ? 0 : name == "create" ? created : code, answer.code) << name << answer.err;
      if (isMade) {
        EXPECT_EQ("", answer.err) << name;
        EXPECT_EQ("", StructureFindings(file)) << name;
        fs::remove(file);
      } else {
        EXPECT_EQ("", answer.out) << name;
        EXPECT_EQ(1u, LinesOf(answer.err)) << name << answer.err;
        EXPECT_EQ(0u, answer.err.find("yaxreg: " + file + ": ")) << name << answer.err;
      }
      EXPECT_EQ(files, Files()) << name;
    }
  }

  void ExpectNoRegistry(const std::string& bytes) {
    PutFile(file_, bytes);
    ExpectRefused(file_, 3, 1);
    EXPECT_TRUE(bytes == GetFile(file_));
  }

  // What only looks answers something on a damaged file, and repair makes a sound one.
  void ExpectLooks(const std::string& bytes) {
    PutFile(file_, bytes);
    const std::vector<std::vector<std::string>> calls = {
        {"check", file_},          {"tree", file_}, {"export", file_},
        {"ls", "-r", "-l", file_}, {"stat", file_}, {"comp", "ls", file_},
        {"diff", file_, sound_},   {"du", file_},   {"find", file_},
        {"view", file_, sound_}};
    for (const std::vector<std::string>& call : calls) {
      const Answer answer = Yaxreg(call);
      const bool differs = call[0] == "diff" && answer.code == 1;
      EXPECT_TRUE(answer.code == 0 || answer.code == 3 || differs) << call[0] << answer.code;
      EXPECT_LE(LinesOf(answer.err), 1u) << call[0] << answer.err;
    }
    ExpectRepair();
    ASSERT_TRUE(bytes == GetFile(file_));
  }

  void ExpectRepair() {
    const Answer answer = Yaxreg({"repair", file_, "-o", output_});
    ASSERT_TRUE(answer.code == 0 || answer.code == 3) << answer.err;
    ASSERT_EQ("", answer.err);
    ASSERT_EQ("", StructureFindings(output_));
    fs::remove(output_);
  }

  TempDir folder_;
  const std::string sound_ = folder_ / "sound.rce";
  const std::string backup_ = folder_ / "net.bak";
  const std::string object_ = folder_ / "libclock.so";
  const std::string commands_ = folder_ / "commands";
  const std::string file_ = folder_ / "hostile.rce";
  const std::string output_ = folder_ / "output";
  std::string bytes_;
};

// Otherwise the tests below would prove nothing.
TEST_F(HostileFiles, AreTriedWithCallsThatWorkOnASoundFile) {
  for (const yaxreg::Verb& verb : VerbsOfFiles()) {
    PutFile(file_, bytes_);
    const std::string name = verb.name;
    const Answer answer = Run(verb, file_);
    const bool isNo = name == "create" || name == "comp verify";
    EXPECT_EQ(isNo ? 1 : 0, answer.code) << name << answer.err;
    fs::remove(output_);
  }
}

TEST_F(HostileFiles, AreMissing) {
  ExpectRefused(folder_ / "missing.rce", 4, 0);
}

TEST_F(HostileFiles, AreInAMissingFolder) {
  const std::string file = folder_ / "none/missing.rce";
  ExpectRefused(file, 4, 4);
}

TEST_F(HostileFiles, AreFolders) {
  fs::create_directory(file_);
  ExpectRefused(file_, 4, 1);
}

TEST_F(HostileFiles, AreEmpty) {
  ExpectNoRegistry("");
}

TEST_F(HostileFiles, AreZeros) {
  ExpectNoRegistry(std::string(75888, '\0'));
}

TEST_F(HostileFiles, AreTexts) {
  ExpectNoRegistry("[eth0]\nmtu=1500\n");
}

TEST_F(HostileFiles, AreTooLong) {
  ExpectNoRegistry(bytes_ + std::string(3u << 20, '\0'));
}

// Nobody writes to it: who opened it to read would wait for ever.
TEST_F(HostileFiles, ArePipes) {
  ASSERT_EQ(0, mkfifo(file_.c_str(), 0666));
  ExpectRefused(file_, 4, 1);
}

TEST_F(HostileFiles, AreCutOff) {
  for (size_t size = kPage; size < bytes_.size(); size += kPage) {
    SCOPED_TRACE("cut off at " + std::to_string(size));
    ExpectLooks(bytes_.substr(0, size));
    EXPECT_EQ(3, Yaxreg({"check", "-q", file_}).code);
    if (HasFailure()) break;
  }
}

// Every 65th byte, so that records of all sizes are hit in different places; fewer where all takes
// longer.
class HostileFilesByteByByte : public HostileFiles, public ::testing::WithParamInterface<unsigned> {
 protected:
  void ForEachChange(unsigned step, const std::function<void(const std::string&)>& look) {
    ASSERT_EQ(75888u, bytes_.size());
    for (size_t i = GetParam(); step * i < bytes_.size(); i += 8) {
      SCOPED_TRACE("the byte at " + std::to_string(step * i) + " is changed");
      std::string changed = bytes_;
      changed[step * i] = static_cast<char>(changed[step * i] ^ 0xFF);
      look(changed);
      if (HasFailure()) break;
    }
  }
};

TEST_P(HostileFilesByteByByte, AreLookedAtAndRepaired) {
  ForEachChange(65 * YAX_TEST_STRIDE, [&](const std::string& changed) {
    // Without its signature and version it is no registry file.
    if (changed.substr(0, 16) == bytes_.substr(0, 16)) ExpectLooks(changed);
  });
}

TEST_P(HostileFilesByteByByte, AreChangedByNoVerbThatCrashes) {
  ForEachChange(65 * 17, [&](const std::string& changed) {
    for (const yaxreg::Verb& verb : VerbsOfFiles()) {
      PutFile(file_, changed);
      const Answer answer = Run(verb, file_);
      EXPECT_GE(answer.code, 0) << verb.name;
      EXPECT_LE(answer.code, 4) << verb.name;
      EXPECT_LE(LinesOf(answer.err), answer.code == 3 ? 2u : 1u) << verb.name << answer.err;
      EXPECT_TRUE(answer.code == 0 || !answer.out.empty() || !answer.err.empty()) << verb.name;
      fs::remove(output_);
    }
  });
}

INSTANTIATE_TEST_SUITE_P(Eighths, HostileFilesByteByByte, ::testing::Range(0u, 8u));

}  // namespace
