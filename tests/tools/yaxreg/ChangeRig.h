// A folder with a registry, for the tests of what changes single keys and values.
#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "registry/Registry.h"
#include "tests/platform/TestFiles.h"
#include "tests/tools/yaxreg/YaxregRig.h"
#include "tools/yaxreg/image/RegistryImage.h"

namespace status = tamu::registry::status;

// Until the end of the scope this process is nobody's, whoever runs the tests: the system's checks
// of a file's mode count.
class OrdinaryUser {
 public:
  OrdinaryUser() : isRoot_(geteuid() == 0) {
    if (isRoot_) {
      EXPECT_EQ(0, seteuid(65534));
    }
  }
  ~OrdinaryUser() {
    if (isRoot_) {
      EXPECT_EQ(0, seteuid(0));
    }
  }
  OrdinaryUser(const OrdinaryUser&) = delete;
  OrdinaryUser& operator=(const OrdinaryUser&) = delete;

 private:
  bool isRoot_;
};

class ChangeRig : public ::testing::Test {
 protected:
  using Registry = tamu::registry::Registry;

  void SetUp() override {
    Registry registry(file.c_str(), tamu::registry::kAdministratorId);
    ASSERT_EQ(status::kOk, registry.Initialize());
  }

  // Makes keys as this user, who is the administrator unless told.
  void MakeKeys(const std::vector<std::string>& paths,
                unsigned int user = tamu::registry::kAdministratorId) {
    Registry registry(file.c_str(), user);
    ASSERT_EQ(status::kOk, registry.Initialize());
    for (const std::string& path : paths)
      ASSERT_EQ(status::kOk, registry.CreateKey(0, path.c_str()));
  }

  void MakeValue(const char* path, const char* name, unsigned int type, const std::string& data) {
    Registry registry(file.c_str(), tamu::registry::kAdministratorId);
    ASSERT_EQ(status::kOk, registry.Initialize());
    tamu::registry::Value value =
        tamu::registry::MakeValue(type, data.data(), static_cast<unsigned int>(data.size()));
    ASSERT_EQ(status::kOk, registry.CreateValue(0, path, name, &value));
  }

  // The file as it is now, decoded.
  yaxreg::Content Decoded() const { return yaxreg::RegistryImage(GetFile(file)).content(); }

  yaxreg::ContentKey Key(const std::string& path) const {
    const yaxreg::Content content = Decoded();
    const size_t index = content.Find(path);
    if (index != yaxreg::Content::kNone) return content.keys[index];
    ADD_FAILURE() << "no key " << path;
    return yaxreg::ContentKey();
  }

  yaxreg::ContentValue Value(const std::string& path, const std::string& name) const {
    const yaxreg::ContentKey key = Key(path);
    const yaxreg::ContentValue* const value = key.FindValue(name);
    if (value != nullptr) return *value;
    ADD_FAILURE() << "no value " << name;
    return yaxreg::ContentValue();
  }

  // The paths of all keys but the root, sorted.
  std::vector<std::string> Paths() const {
    std::vector<std::string> paths;
    const yaxreg::Content content = Decoded();
    for (size_t i = 1; i < content.keys.size(); ++i) paths.push_back(content.PathOf(i));
    std::sort(paths.begin(), paths.end());
    return paths;
  }

  // How many files there are in the folder.
  size_t FilesInFolder() const {
    const std::filesystem::path path = std::filesystem::path(file).parent_path();
    const std::filesystem::directory_iterator files(path);
    return static_cast<size_t>(std::distance(begin(files), end(files)));
  }

  // Runs a call that fails: nothing is printed but one line on the error output, with this text in
  // it, and the file is as it was.
  void ExpectFailure(int code, const std::string& text, const std::vector<std::string>& arguments) {
    const std::string before = GetFile(file);
    const Answer answer = Yaxreg(arguments);
    EXPECT_EQ(code, answer.code) << answer.err;
    EXPECT_EQ("", answer.out);
    EXPECT_NE(std::string::npos, answer.err.find(text)) << answer.err;
    EXPECT_EQ(answer.err.size() - 1, answer.err.find('\n')) << answer.err;
    EXPECT_TRUE(GetFile(file) == before);
  }

  // Runs a call that is done and prints `out`.
  void ExpectDone(const std::string& out, const std::vector<std::string>& arguments) {
    const Answer answer = Yaxreg(arguments);
    EXPECT_EQ(0, answer.code);
    EXPECT_EQ(out, answer.out);
    EXPECT_EQ("", answer.err);
  }

  // `arguments` follow the file. Tries them on what is no registry, and on nothing.
  void ExpectNoRegistryFails(const std::string& verb, const std::vector<std::string>& arguments) {
    const struct {
      const char* name;
      const char* content;  // null: there is no such file
      int code;
    } cases[] = {
        {"absent", nullptr, 4}, {"empty", "", 3}, {"text", "name=eth0\n", 3}, {".", nullptr, 4}};
    for (const auto& one : cases) {
      const std::string path = folder / one.name;
      if (one.content != nullptr) PutFile(path, one.content);
      const size_t files = FilesInFolder();
      std::vector<std::string> all = {verb, path};
      all.insert(all.end(), arguments.begin(), arguments.end());
      ExpectFailure(one.code, "yaxreg: " + path + ": ", all);
      EXPECT_EQ(files, FilesInFolder()) << verb << " " << one.name;
      if (one.content != nullptr) {
        EXPECT_EQ(one.content, GetFile(path));
      }
    }
  }

  // The same call as somebody who may only read the file.
  void ExpectReadOnlyFails(const std::vector<std::string>& arguments) {
    chmod((folder / ".").c_str(), 0755);
    chmod(file.c_str(), 0444);
    {
      const OrdinaryUser user;
      ExpectFailure(4, ": cannot be written: Permission denied\n", arguments);
    }
    chmod(file.c_str(), 0644);
  }

  TempDir folder;
  const std::string file = folder / "device.rce";
};
