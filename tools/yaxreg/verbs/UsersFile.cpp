#include "tools/yaxreg/verbs/UsersFile.h"

#include "tools/yaxreg/image/FileBytes.h"

namespace yaxreg {

bool TakeUsers(Invocation& call, std::optional<UserNames>* users, ExitCode* code) {
  constexpr size_t kMost = 16u << 20;  // bytes
  if (!call.Has("--users")) return true;
  const std::string file = call.Text("--users");
  std::string text;
  const FileResult read = ReadWholeFile(file, kMost, &text);
  if (!read.isDone()) {
    *code = call.Fail(kFailed, file, "", read.reason);
    return false;
  }
  std::string reason;
  if (users->emplace().Read(text, &reason)) return true;
  *code = call.Fail(kUsage, file, "", reason);
  return false;
}

}  // namespace yaxreg
