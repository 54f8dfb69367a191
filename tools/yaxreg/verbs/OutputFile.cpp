#include "tools/yaxreg/verbs/OutputFile.h"

#include <sys/stat.h>

#include <cstring>

#include "registry/base/RegistryStatus.h"
#include "tools/yaxreg/image/FileBytes.h"

namespace yaxreg {

namespace {

constexpr size_t kMaxOld = 64u << 20;  // bytes; what is written has a few megabytes at most

bool IsReplaceable(const std::string& bytes, const OutputFormat& format) {
  if (bytes.empty()) return true;
  const size_t begin = bytes.find_first_not_of(" \t\r\n");
  if (begin == std::string::npos) return false;
  for (const char* beginning : format.beginnings) {
    if (bytes.compare(begin, std::strlen(beginning), beginning) == 0) return true;
  }
  return false;
}

}  // namespace

ExitCode WriteOutputFile(Invocation& call, const std::string& path, const std::string& bytes,
                         const OutputFormat& format) {
  FileResult written = WriteNewFile(path, bytes);
  if (written.exists) {
    std::string old;
    const FileResult read = ReadWholeFile(path, kMaxOld, &old);
    if (!read.isDone() && !read.tooLarge) return call.Fail(kFailed, path, "", read.reason);
    if (read.tooLarge || !IsReplaceable(old, format)) {
      return call.FailWithStatus(tamu::registry::status::kExists, path, "",
                                 std::string("is there already and is no ") + format.name);
    }
    written = ReplaceFile(path, old, bytes);
  }
  return written.isDone() ? kDone : call.Fail(kFailed, path, "", written.reason);
}

bool IsSameFile(const std::string& a, const std::string& b) {
  struct stat first;
  struct stat second;
  return stat(a.c_str(), &first) == 0 && stat(b.c_str(), &second) == 0 &&
         first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

std::string BaseName(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

}  // namespace yaxreg
