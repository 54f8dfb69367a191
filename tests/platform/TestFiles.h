// Temporary folders and whole-file helpers for the tests of the platform layer.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <set>
#include <string>

// A folder of its own, gone with everything in it at the end of the scope.
class TempDir {
 public:
  TempDir() : mPath(::testing::TempDir() + "yax-XXXXXX") {
    if (mkdtemp(mPath.data()) == nullptr) ADD_FAILURE() << "no temporary folder at " << mPath;
  }
  ~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(mPath, ignored);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  std::string operator/(const char* name) const { return mPath + "/" + name; }

 private:
  std::string mPath;
};

// Writes a file the plain way; also over one that others have open.
inline void PutFile(const std::string& path, const std::string& bytes) {
  std::FILE* file = std::fopen(path.c_str(), "wb");
  ASSERT_NE(nullptr, file) << path;
  EXPECT_EQ(std::fwrite(bytes.data(), 1, bytes.size(), file), bytes.size());
  EXPECT_EQ(0, std::fclose(file));
}

// The bytes of a file, read the plain way; "(cannot be read)" when there is none.
inline std::string GetFile(const std::string& path) {
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (file == nullptr) return "(cannot be read)";
  std::string bytes;
  for (int c = std::fgetc(file); c != EOF; c = std::fgetc(file)) bytes += static_cast<char>(c);
  std::fclose(file);
  return bytes;
}

// The names of the files in a folder, sorted, each followed by a blank.
inline std::string NamesIn(const std::string& folder) {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    names.insert(entry.path().filename().string());
  }
  std::string text;
  for (const std::string& name : names) text += name + " ";
  return text;
}

// The number that the next descriptor of this process gets.
inline int NextDescriptor() {
  const int fd = dup(STDERR_FILENO);
  close(fd);
  return fd;
}
