#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/platform/TestFiles.h"
#include "tests/support/ElfImage.h"
#include "tests/tools/yaxreg/RegistryFile.h"
#include "tests/tools/yaxreg/YaxregRig.h"

namespace {

namespace fs = std::filesystem;

const char kClock[] = "{1FBF55FC-0F15-45CC-8F3F-DE86A5640CB5}";
const char kOther[] = "{1FBF55FC-0F15-45CC-8F3F-DE86A5640CB6}";

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

// A registry and a folder that stands for the root folder of its device.
class Device {
 public:
  Device() : registry_(folder_ / "device.rce") {
    fs::create_directory(folder_ / "root");
    registry_.AddKey("YAX_ROOT");
  }

  std::string path() const { return folder_ / "device.rce"; }
  std::string root() const { return folder_ / "root"; }
  RegistryFile& registry() { return registry_; }

  void AddComponent(const std::string& identifier, unsigned int type, const std::string& path,
                    const char* name = "clock") {
    const std::string key = "YAX_ROOT/" + identifier;
    registry_.AddKey(key.c_str());
    registry_.AddText(key.c_str(), "CompName", name);
    registry_.AddNumber(key.c_str(), "Type", type);
    registry_.AddNumber(key.c_str(), "FactoryFn", 0);
    registry_.AddText(key.c_str(), "BinaryPath", path.c_str());
  }
  // A file below the root; its folders are made.
  void AddFile(const std::string& path, const std::string& bytes) {
    fs::create_directories(fs::path(root() + path).parent_path());
    PutFile(root() + path, bytes);
  }
  void AddLink(const std::string& path, const std::string& target) {
    fs::create_directories(fs::path(root() + path).parent_path());
    fs::create_symlink(target, root() + path);
  }
  Answer Verify(std::vector<std::string> options = {}) const {
    options.insert(options.begin(), {"comp", "verify", path(), "--root", root()});
    return Yaxreg(options);
  }

 private:
  TempDir folder_;
  RegistryFile registry_;
};

// What verify says of a component whose path is `path`, without what every line begins with.
std::string VerdictOf(Device& device, const std::string& path, int code,
                      const std::vector<std::string>& options = {}) {
  device.AddComponent(kClock, 1, path);
  const Answer answer = device.Verify(options);
  EXPECT_EQ(code, answer.code) << answer.out << answer.err;
  std::string line = answer.out;
  const std::string middle = std::string(kClock) + "  clock  ";
  const size_t at = line.find(middle);
  EXPECT_NE(std::string::npos, at) << line;
  if (at != std::string::npos) line.erase(at, middle.size());
  const size_t root = line.find(device.root());
  if (root != std::string::npos) line.replace(root, device.root().size(), "ROOT");
  return line;
}

std::string SharedObject() {
  return ElfImage().Bytes();
}

TEST(ComponentVerbs, ListsComponentsAndTheSystem) {
  Device device;
  device.registry().AddKey("YAX_SYSTEM");
  device.registry().AddNumber("YAX_SYSTEM", "isSingleBin", 1);
  device.registry().AddText("YAX_SYSTEM", "BinDirectory", "/opt/bin");
  device.AddComponent(kClock, 1, "/lib/libclock.so");
  device.AddComponent(kOther, 0, "", "ui");
  EXPECT_EQ(
      "isSingleBin: 1, nothing is ever loaded\n"
      "BinDirectory: /opt/bin\n"
      "{1FBF55FC-0F15-45CC-8F3F-DE86A5640CB5}  clock  /lib/libclock.so\n"
      "{1FBF55FC-0F15-45CC-8F3F-DE86A5640CB6}  ui     in the program\n",
      Yaxreg({"comp", "ls", device.path()}).out);
  const Answer json = Yaxreg({"comp", "ls", device.path(), "--json"});
  EXPECT_EQ(0, json.code);
  EXPECT_TRUE(Contains(json.out,
                       "{\n"
                       "  \"system\": {\n"
                       "    \"isSingleBin\": 1,\n"
                       "    \"binDirectory\": \"/opt/bin\"\n"
                       "  },\n"
                       "  \"components\": [\n"
                       "    {\n"
                       "      \"id\": \"{1FBF55FC-0F15-45CC-8F3F-DE86A5640CB5}\",\n"
                       "      \"name\": \"clock\",\n"
                       "      \"type\": 1,\n"
                       "      \"factoryFn\": 0,\n"
                       "      \"binaryPath\": \"/lib/libclock.so\",\n"
                       "      \"version\": 0,\n"
                       "      \"interfaces\": [],\n"
                       "      \"binarySize\": 0,\n"
                       "      \"buildId\": \"\",\n"
                       "      \"problems\": []\n"
                       "    },\n"))
      << json.out;
}

TEST(ComponentVerbs, SaysWhatIsMissingOrOfAWrongKind) {
  Device device;
  device.registry().AddKey("YAX_ROOT/other");
  device.registry().AddNumber("YAX_ROOT/other", "CompName", 5);
  device.registry().AddNumber("YAX_ROOT/other", "Type", 0xFFFFFFFF00000007);
  device.registry().AddNumber("YAX_ROOT/other", "FactoryFn", 0xFFFFFFFF80001234);
  EXPECT_EQ(
      "other  CompName is no text (type 0)  in the program (type 7) at 0x80001234  "
      "(the key's name is no identifier)\n",
      Yaxreg({"comp", "ls", device.path()}).out);
  const std::string json = Yaxreg({"comp", "ls", device.path(), "--json"}).out;
  EXPECT_TRUE(Contains(json, "\"name\": null")) << json;
  EXPECT_TRUE(Contains(json, "\"factoryFn\": \"18446744071562072628\"")) << json;
  EXPECT_TRUE(Contains(json, "\"system\": null")) << json;
  EXPECT_TRUE(Contains(json,
                       "        \"the key's name is no identifier\",\n"
                       "        \"CompName is no text (type 0)\",\n"
                       "        \"no BinaryPath\"\n"))
      << json;
}

TEST(ComponentVerbs, ShowsBytesThatAreNoTextSafely) {
  Device device;
  device.AddComponent(kClock, 1, "/lib/\x1b[2J\xFF", "a\tb");
  EXPECT_TRUE(
      Contains(Yaxreg({"comp", "ls", device.path()}).out, "  a\\x09b  /lib/\\x1b[2J\\xff\n"));
  EXPECT_TRUE(Contains(Yaxreg({"comp", "ls", device.path(), "--json"}).out,
                       "\"hex\": \"2f6c69622f1b5b324aff\""));
}

TEST(ComponentVerbs, SaysThatThereAreNone) {
  const TempDir folder;
  { const RegistryFile file(folder / "empty.rce"); }
  EXPECT_EQ("no components are registered\n", PrintedBy({"comp", "ls", folder / "empty.rce"}));
  EXPECT_EQ("{\n  \"system\": null,\n  \"components\": []\n}\n",
            Yaxreg({"comp", "ls", folder / "empty.rce", "--json"}).out);
}

TEST(ComponentVerbs, IsContentWithAGoodSharedObject) {
  Device device;
  device.AddFile("/lib/libclock.so", SharedObject());
  EXPECT_EQ("ok          ROOT/lib/libclock.so\n", VerdictOf(device, "/lib/libclock.so", 0));
  const Answer json = device.Verify({"--json"});
  EXPECT_TRUE(Contains(json.out, "{\n  \"machine\": \"x86-64\",\n")) << json.out;
  EXPECT_TRUE(Contains(json.out, "\"result\": \"ok\",\n      \"inProgram\": false,\n")) << json.out;
  EXPECT_TRUE(Contains(json.out, "\"problems\": [],\n      \"notes\": []\n")) << json.out;
}

TEST(ComponentVerbs, FindsAFileThatIsMissing) {
  Device device;
  EXPECT_EQ("wrong       ROOT/lib/none.so: there is no such file\n",
            VerdictOf(device, "/lib/none.so", 1).replace(12, 0, "ROOT"));
}

TEST(ComponentVerbs, WantsAPath) {
  Device device;
  EXPECT_EQ("wrong       : BinaryPath is empty\n", VerdictOf(device, "", 1));
}

TEST(ComponentVerbs, WantsARegularFileAndNeverWaitsForAPipe) {
  Device device;
  fs::create_directory(device.root() + "/lib");
  ASSERT_EQ(0, mkfifo((device.root() + "/lib/pipe.so").c_str(), 0600));
  EXPECT_EQ("wrong       ROOT/lib/pipe.so: is no regular file\n",
            VerdictOf(device, "/lib/pipe.so", 1));
  device.AddComponent(kOther, 1, "/lib");
  EXPECT_TRUE(Contains(device.Verify().out, "/lib: is no regular file\n"));
}

TEST(ComponentVerbs, WantsASharedObject) {
  Device device;
  device.AddFile("/lib/text.so", "INPUT(libclock.so.1)\n");
  EXPECT_EQ("wrong       ROOT/lib/text.so: is no ELF file\n", VerdictOf(device, "/lib/text.so", 1));
}

TEST(ComponentVerbs, WantsTheFactoryFunction) {
  Device device;
  ElfImage image;
  image.symbols = {{"EntryFn_getFactory", 0x12, 0, 0}, {"EntryFn_canUnloadNow"}};
  device.AddFile("/lib/a.so", image.Bytes());
  EXPECT_EQ("wrong       ROOT/lib/a.so: does not export EntryFn_getFactory\n",
            VerdictOf(device, "/lib/a.so", 1));
}

TEST(ComponentVerbs, OnlyNotesThatItCannotBeUnloaded) {
  Device device;
  ElfImage image;
  image.symbols = {{"EntryFn_getFactory"}};
  device.AddFile("/lib/a.so", image.Bytes());
  EXPECT_EQ(
      "ok          ROOT/lib/a.so; it cannot be unloaded, it does not export "
      "EntryFn_canUnloadNow\n",
      VerdictOf(device, "/lib/a.so", 0));
}

TEST(ComponentVerbs, WantsTheMachineThatIsAskedFor) {
  Device device;
  ElfImage image;
  image.is64 = false;
  image.machine = 40;
  device.AddFile("/lib/a.so", image.Bytes());
  EXPECT_EQ("ok          ROOT/lib/a.so\n", VerdictOf(device, "/lib/a.so", 0, {"--machine", "arm"}));
  const Answer wrong = device.Verify({"--machine", "x86-64"});
  EXPECT_EQ(1, wrong.code);
  EXPECT_TRUE(Contains(wrong.out, "/lib/a.so: is built for arm, not for x86-64\n")) << wrong.out;
  EXPECT_TRUE(
      Contains(device.Verify({"--machine", "armeb"}).out, "is built for arm, not for armeb"));
  const Answer unknown = device.Verify({"--machine", "abacus"});
  EXPECT_EQ(2, unknown.code);
  EXPECT_TRUE(Contains(unknown.err, "unknown machine 'abacus'")) << unknown.err;
}

TEST(ComponentVerbs, TakesTheMachineOfTheFirstSharedObjectBelowARoot) {
  Device device;
  ElfImage image;
  image.is64 = false;
  image.isBigEndian = true;
  image.machine = 8;
  device.AddFile("/lib/a.so", image.Bytes());
  device.AddFile("/lib/b.so", SharedObject());
  device.AddComponent(kOther, 1, "/lib/b.so");
  EXPECT_TRUE(Contains(VerdictOf(device, "/lib/a.so", 1), "ok          ROOT/lib/a.so\n"));
  EXPECT_TRUE(Contains(device.Verify().out, "/lib/b.so: is built for x86-64, not for mips\n"));
  EXPECT_TRUE(Contains(device.Verify({"--machine", "x32"}).out, "built for x86-64, not for x32\n"));
}

TEST(ComponentVerbs, FollowsLinksInsideTheRoot) {
  Device device;
  device.AddFile("/opt/real.so", SharedObject());
  device.AddLink("/lib/absolute.so", "/opt/real.so");
  device.AddLink("/lib/relative.so", "../opt/real.so");
  device.AddLink("/lib/outside.so", "../../../../../../opt/real.so");
  device.AddLink("/usr/lib", "/lib");
  EXPECT_EQ("ok          ROOT/opt/real.so\n", VerdictOf(device, "/lib/absolute.so", 0));
  device.AddComponent(kOther, 1, "/usr/lib/outside.so");
  device.AddComponent("{1FBF55FC-0F15-45CC-8F3F-DE86A5640CB7}", 1, "/../usr/lib/relative.so");
  const Answer answer = device.Verify();
  EXPECT_EQ(0, answer.code) << answer.out;
}

TEST(ComponentVerbs, NeverLeavesTheRoot) {
  Device device;
  PutFile(device.root() + "/../secret.so", SharedObject());
  device.AddLink("/lib/secret.so", "../../secret.so");
  EXPECT_TRUE(Contains(VerdictOf(device, "/lib/secret.so", 1), ": there is no such file\n"));
}

TEST(ComponentVerbs, CannotReadLinksThatFormACircle) {
  Device device;
  device.AddLink("/lib/a.so", "b.so");
  device.AddLink("/lib/b.so", "a.so");
  device.AddComponent(kClock, 1, "/lib/a.so");
  const Answer answer = device.Verify();
  EXPECT_EQ(4, answer.code);
  EXPECT_TRUE(Contains(answer.out, "unreadable  ")) << answer.out;
  EXPECT_TRUE(Contains(answer.out, "/lib/a.so: cannot be read: ")) << answer.out;
  EXPECT_EQ(answer.err.size() - 1, answer.err.find('\n')) << answer.err;
}

TEST(ComponentVerbs, TakesAFolderInThePathForNothingElse) {
  Device device;
  device.AddFile("/lib/file", SharedObject());
  EXPECT_TRUE(Contains(VerdictOf(device, "/lib/file/", 1), ": there is no such file\n"));
  device.AddComponent(kOther, 1, "/lib/file/../file");
  EXPECT_TRUE(Contains(device.Verify().out, "/lib/file/../file: there is no such file\n"));
}

TEST(ComponentVerbs, SaysWhatARelativePathIsRelativeTo) {
  Device device;
  device.AddFile("/opt/a.so", SharedObject());
  EXPECT_EQ("ok          ROOT/opt/a.so; the path is taken relative to the root folder\n",
            VerdictOf(device, "opt/a.so", 0));
  const Answer here = Yaxreg({"comp", "verify", device.path()});
  EXPECT_EQ(1, here.code);
  EXPECT_TRUE(Contains(here.out,
                       "opt/a.so: there is no such file; the path is relative to the "
                       "current folder\n"))
      << here.out;
}

TEST(ComponentVerbs, SearchesWhereTheLoaderLooks) {
  for (const char* folder : {"/lib", "/usr/lib", "/usr/local/lib", "/lib/x86_64-linux-gnu",
                             "/usr/lib/x86_64-linux-gnu", "/opt/one", "/opt/two"}) {
    Device device;
    device.AddFile("/etc/ld.so.conf", "include ld.so.conf.d/*.conf\n /opt/one # here\n");
    device.AddFile("/etc/ld.so.conf.d/two.conf", "# comment\n/opt/two\n");
    device.AddFile("/etc/ld.so.conf.d/old.conf~", "/opt/three\n");
    device.AddFile(std::string(folder) + "/liba.so", SharedObject());
    EXPECT_EQ("ok          ROOT" + std::string(folder) + "/liba.so\n",
              VerdictOf(device, "liba.so", 0));
  }
  Device device;
  device.AddFile("/etc/ld.so.conf.d/old.conf~", "/opt/three\n");
  device.AddFile("/opt/three/liba.so", SharedObject());
  device.AddFile("/liba.so", SharedObject());
  EXPECT_EQ("wrong       liba.so: is in none of the folders in which the loader looks\n",
            VerdictOf(device, "liba.so", 1));
}

TEST(ComponentVerbs, PassesOverFilesForOtherMachinesInASearch) {
  Device device;
  ElfImage image;
  image.is64 = false;
  image.machine = 3;
  device.AddFile("/lib/liba.so", image.Bytes());
  device.AddFile("/usr/lib/liba.so", SharedObject());
  EXPECT_EQ("ok          ROOT/usr/lib/liba.so\n",
            VerdictOf(device, "liba.so", 0, {"--machine", "x86-64"}));
  EXPECT_TRUE(Contains(device.Verify({"--machine", "i386"}).out, "ok  "));
  EXPECT_TRUE(Contains(device.Verify({"--machine", "arm"}).out,
                       "/lib/liba.so: is built for i386, not for arm\n"));
}

TEST(ComponentVerbs, TellsWhatIsInTheProgram) {
  Device device;
  device.AddComponent(kClock, 0, "/lib/none.so");
  device.AddComponent(kOther, 2, "");
  const Answer answer = device.Verify();
  EXPECT_EQ(0, answer.code) << answer.out;
  EXPECT_EQ(
      "ok          {1FBF55FC-0F15-45CC-8F3F-DE86A5640CB5}  clock  in the program\n"
      "ok          {1FBF55FC-0F15-45CC-8F3F-DE86A5640CB6}  clock  in the program\n",
      answer.out);
}

TEST(ComponentVerbs, LooksAtNoFileWhereNothingIsLoaded) {
  Device device;
  device.registry().AddKey("YAX_SYSTEM");
  device.registry().AddNumber("YAX_SYSTEM", "isSingleBin", 1);
  EXPECT_EQ(
      "ok          in the program; its shared object is not loaded, because isSingleBin is 1\n",
      VerdictOf(device, "/lib/none.so", 0));
}

TEST(ComponentVerbs, FindsWhatTheFrameworkCannotUse) {
  Device device;
  device.AddFile("/lib/a.so", SharedObject());
  device.AddComponent("{1fbf55fc-0f15-45cc-8f3f-de86a5640cb5}", 1, "/lib/a.so");
  Answer answer = device.Verify();
  EXPECT_EQ(1, answer.code);
  EXPECT_TRUE(Contains(answer.out, "the key's name is no identifier")) << answer.out;

  Device other;
  other.AddComponent(kClock, 1, "/" + std::string(255, 'a'));
  other.registry().AddKey("YAX_ROOT/{1FBF55FC-0F15-45CC-8F3F-DE86A5640CB6}");
  answer = other.Verify();
  EXPECT_EQ(1, answer.code);
  EXPECT_TRUE(Contains(answer.out, "BinaryPath has 256 bytes, of which only 255 are used\n"))
      << answer.out;
  EXPECT_TRUE(Contains(answer.out, "no CompName  ?: no Type; ")) << answer.out;
}

TEST(ComponentVerbs, SaysThatTheRootIsNoFolder) {
  Device device;
  for (const char* root : {"", "/dev/null", "/no such folder"}) {
    const Answer answer = Yaxreg({"comp", "verify", device.path(), "--root", root});
    EXPECT_EQ(4, answer.code) << root;
    EXPECT_TRUE(Contains(answer.err, "cannot be the root folder")) << answer.err;
  }
}

TEST(ComponentVerbs, EndsWithTheCodeOfADamagedRegistry) {
  const TempDir folder;
  PutFile(folder / "text", "text");
  EXPECT_EQ(3, Yaxreg({"comp", "verify", folder / "text"}).code);
  EXPECT_EQ(3, Yaxreg({"comp", "ls", folder / "text"}).code);
  EXPECT_EQ(4, Yaxreg({"comp", "ls", folder / "missing"}).code);
  Device device;
  device.AddComponent(kClock, 0, "");
  std::string bytes = GetFile(device.path());
  bytes.replace(10188 + 40 + 16, 4, std::string("\0\xFF\xFF\0", 4));  // the root's child link
  PutFile(folder / "damaged.rce", bytes);
  EXPECT_EQ(3, Yaxreg({"comp", "ls", folder / "damaged.rce"}).code);
  EXPECT_EQ(3, Yaxreg({"comp", "verify", folder / "damaged.rce"}).code);
}

}  // namespace
