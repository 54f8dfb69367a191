#include "tools/yaxreg/components/DeviceFiles.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <memory>
#include <sstream>

#include "tools/yaxreg/image/FileBytes.h"

namespace yaxreg {

namespace {

constexpr unsigned int kMaxLinks = 40;       // followed on the way to one file
constexpr size_t kMaxConfiguration = 65536;  // bytes of one file
constexpr size_t kMaxConfigurationFiles = 256;
constexpr size_t kMaxFolders = 512;

// The parts of a path that are still to be walked, the next one last.
void PushParts(const std::string& path, std::vector<std::string>* pending) {
  const size_t before = pending->size();
  std::istringstream parts(path);
  for (std::string part; std::getline(parts, part, '/');) {
    if (!part.empty()) pending->push_back(part);
  }
  if (!path.empty() && path.back() == '/') pending->push_back(".");  // it must be a folder
  std::reverse(pending->begin() + static_cast<std::ptrdiff_t>(before), pending->end());
}

// What a symbolic link holds. False with errno set.
bool ReadLink(const std::string& path, std::string* target) {
  char text[PATH_MAX];
  const ssize_t size = readlink(path.c_str(), text, sizeof text);
  if (size < 0) return false;
  target->assign(text, static_cast<size_t>(size));
  return true;
}

bool EndsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

}  // namespace

DeviceFiles::DeviceFiles(const std::string& root) : hasRoot_(!root.empty()), root_(root) {
  while (!root_.empty() && root_.back() == '/') root_.pop_back();
}

int DeviceFiles::Locate(const std::string& path, std::string* located) const {
  *located = path;
  if (!hasRoot_) return 0;
  std::string walked;  // below the root; "" or "/a/b", without links
  std::vector<std::string> pending;
  PushParts(path, &pending);
  for (unsigned int links = 0; !pending.empty();) {
    const std::string part = pending.back();
    pending.pop_back();
    if (part == ".") continue;
    if (part == "..") {
      if (!walked.empty()) walked.resize(walked.rfind('/'));
      continue;
    }
    const std::string there = root_ + walked + "/" + part;
    struct stat found;
    if (lstat(there.c_str(), &found) != 0) return errno;
    if (S_ISLNK(found.st_mode)) {
      std::string target;
      if (++links > kMaxLinks) return ELOOP;
      if (!ReadLink(there, &target)) return errno;
      if (!target.empty() && target[0] == '/') walked.clear();
      PushParts(target, &pending);
      continue;
    }
    if (!pending.empty() && !S_ISDIR(found.st_mode)) return ENOTDIR;
    walked += "/" + part;
  }
  *located = root_ + (walked.empty() ? "/" : walked);
  return 0;
}

std::vector<std::string> DeviceFiles::LoaderFolders(const ElfMachine* machine) const {
  std::vector<std::string> folders = {"/lib", "/usr/lib"};
  for (const std::string& name : LibraryFolders(machine)) {
    folders.push_back("/lib/" + name);
    folders.push_back("/usr/lib/" + name);
  }
  folders.insert(folders.end(), {"/lib64", "/usr/lib64", "/usr/local/lib"});
  for (const std::string& file : ConfigurationFiles()) AddConfigured(file, &folders);
  return folders;
}

// Files of the loader's configuration, as they lie on this machine.
std::vector<std::string> DeviceFiles::ConfigurationFiles() const {
  std::vector<std::string> files;
  std::string located;
  if (Locate("/etc/ld.so.conf", &located) == 0) files.push_back(located);
  if (Locate("/etc/ld.so.conf.d", &located) != 0) return files;
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir(located.c_str()), closedir);
  std::vector<std::string> names;
  while (folder != nullptr && names.size() < kMaxConfigurationFiles) {
    const dirent* entry = readdir(folder.get());
    if (entry == nullptr) break;
    if (EndsWith(entry->d_name, ".conf")) names.emplace_back(entry->d_name);
  }
  std::sort(names.begin(), names.end());
  for (const std::string& name : names) {
    if (Locate("/etc/ld.so.conf.d/" + name, &located) == 0) files.push_back(located);
  }
  return files;
}

// One folder a line, up to a "#". What other files a file includes is in the folder read anyway.
void DeviceFiles::AddConfigured(const std::string& file, std::vector<std::string>* folders) const {
  std::string bytes;
  if (!ReadWholeFile(file, kMaxConfiguration, &bytes).isDone()) return;
  std::istringstream lines(bytes);
  for (std::string line; std::getline(lines, line) && folders->size() < kMaxFolders;) {
    std::istringstream words(line.substr(0, line.find('#')));
    std::string folder;
    if (words >> folder && folder[0] == '/') folders->push_back(folder);
  }
}

}  // namespace yaxreg
