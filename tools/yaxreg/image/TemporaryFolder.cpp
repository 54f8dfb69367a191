#include "tools/yaxreg/image/TemporaryFolder.h"

#include <stdlib.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "tools/yaxreg/image/FileBytes.h"

namespace yaxreg {

TemporaryFolder::TemporaryFolder(const std::string& beside)
    : path_(FolderOf(beside) + "/.yaxreg-XXXXXX") {
  if (mkdtemp(&path_[0]) != nullptr) return;
  reason_ = std::string("cannot be made: ") + std::strerror(errno);
}

TemporaryFolder::~TemporaryFolder() {
  if (!isMade()) return;
  std::error_code ignored;  // what stays behind harms nobody
  std::filesystem::remove_all(path_, ignored);
}

std::unique_ptr<TemporaryFolder> MakeTemporaryFolder(const std::string& beside) {
  std::error_code error;
  const std::filesystem::path usual = std::filesystem::temp_directory_path(error);
  if (!error) {
    auto folder = std::make_unique<TemporaryFolder>((usual / "yaxreg").string());
    if (folder->isMade()) return folder;
  }
  return std::make_unique<TemporaryFolder>(beside);
}

}  // namespace yaxreg
