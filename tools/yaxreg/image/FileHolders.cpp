#include "tools/yaxreg/image/FileHolders.h"

#include <dirent.h>
#include <limits.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <vector>

namespace yaxreg {

namespace {

constexpr size_t kMostTold = 3;

struct FolderCloser {
  void operator()(DIR* folder) const { closedir(folder); }
};

// What the system lists there that is a number.
std::vector<std::string> NumbersIn(const std::string& path) {
  std::vector<std::string> numbers;
  const std::unique_ptr<DIR, FolderCloser> folder(opendir(path.c_str()));
  if (folder == nullptr) return numbers;
  while (const dirent* const entry = readdir(folder.get())) {
    const std::string name = entry->d_name;
    if (name.find_first_not_of("0123456789") == std::string::npos) numbers.push_back(name);
  }
  return numbers;
}

bool HasOpen(const std::string& process, const std::string& path) {
  const std::string folder = "/proc/" + process + "/fd";
  const std::vector<std::string> open = NumbersIn(folder);
  return std::any_of(open.begin(), open.end(), [&](const std::string& number) {
    char target[PATH_MAX];
    const ssize_t length = readlink((folder + '/' + number).c_str(), target, sizeof target);
    return length > 0 &&
           path.compare(0, std::string::npos, target, static_cast<size_t>(length)) == 0;
  });
}

std::string NameOf(const std::string& process) {
  std::string name;
  std::ifstream file("/proc/" + process + "/comm");
  std::getline(file, name);
  return name.empty() ? process : name + " (" + process + ')';
}

}  // namespace

std::string HoldersOf(const std::string& file) {
  const std::unique_ptr<char, decltype(&std::free)> path(realpath(file.c_str(), nullptr),
                                                         &std::free);
  if (path == nullptr) return "";
  std::string holders;
  size_t count = 0;
  for (const std::string& process : NumbersIn("/proc")) {
    if (process == std::to_string(getpid()) || !HasOpen(process, path.get())) continue;
    if (count++ == kMostTold) return holders + " and others";
    holders += (holders.empty() ? "" : ", ") + NameOf(process);
  }
  return holders;
}

}  // namespace yaxreg
