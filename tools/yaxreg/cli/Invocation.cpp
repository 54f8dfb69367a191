#include "tools/yaxreg/cli/Invocation.h"

#include <algorithm>
#include <ostream>

#include "registry/base/RegistryStatus.h"

namespace yaxreg {

namespace status = tamu::registry::status;

namespace {

void PrintPart(std::ostream& err, const std::string& part) {
  if (!part.empty()) err << Shown(part) << ": ";
}

// Parts of the text may have been shown already: backslashes stay.
std::string OnOneLine(const std::string& text) {
  std::string line;
  for (size_t begin = 0; begin <= text.size();) {
    const size_t end = std::min(text.find('\\', begin), text.size());
    line += Shown(text.substr(begin, end - begin));
    if (end < text.size()) line += '\\';
    begin = end + 1;
  }
  return line;
}

}  // namespace

Palette Palette::Coloured() {
  Palette palette;
  palette.key = "\033[1;34m";
  palette.value = "\033[36m";
  palette.faint = "\033[2m";
  palette.good = "\033[32m";
  palette.bad = "\033[1;31m";
  palette.end = "\033[0m";
  return palette;
}

std::string Invocation::Text(const std::string& name) const {
  const auto found = given.find(name);
  return found == given.end() ? std::string() : found->second;
}

std::string Invocation::Path() const {
  const std::string path = Text("PATH");
  return !path.empty() && path[0] == '/' ? path.substr(1) : path;
}

ExitCode Invocation::Fail(ExitCode code, const std::string& file, const std::string& path,
                          const std::string& reason) {
  Warn(file, path, reason + failureNote);
  return code;
}

ExitCode Invocation::FailWithStatus(unsigned int status, const std::string& file,
                                    const std::string& path, const std::string& reason) {
  const std::string words = reason.empty() ? tamu::registry::StatusText(status) : reason;
  return Fail(ExitCodeOf(status), file, path, words + " (status " + std::to_string(status) + ")");
}

void Invocation::Warn(const std::string& file, const std::string& path, const std::string& text) {
  if (out) out.flush();
  err << "yaxreg: ";
  PrintPart(err, file);
  PrintPart(err, path);
  err << OnOneLine(text) << std::endl;
}

ExitCode ExitCodeOf(unsigned int status) {
  switch (status) {
    case status::kOk:
      return kDone;
    case status::kNoRight:
    case status::kNotFound:
    case status::kExists:
    case status::kNoData:
    case status::kLimit:
    case status::kNoSpace:
    case status::kBusy:
    case status::kNotSupported:
      return kNo;
    case status::kBadArgument:
      return kUsage;
    case status::kInvalidFile:
      return kDamaged;
    default:
      return kFailed;
  }
}

}  // namespace yaxreg
