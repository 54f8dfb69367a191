#include "tools/yaxreg/verbs/NewRegistry.h"

#include <sys/stat.h>

#include "registry/Registry.h"
#include "tools/yaxreg/image/FileBytes.h"
#include "tools/yaxreg/image/RegistryImage.h"
#include "tools/yaxreg/image/TemporaryFolder.h"

namespace yaxreg {

namespace status = tamu::registry::status;
using tamu::registry::Registry;

namespace {

ExitCode FailCreated(Invocation& call) {
  return call.FailWithStatus(status::kExists, call.File(), "", "there is a file already");
}

}  // namespace

unsigned int MakeEmptyRegistry(const std::string& file, std::string* bytes) {
  Registry registry(file.c_str(), tamu::registry::kAdministratorId);
  const unsigned int result = registry.Initialize();
  registry.Finalize();
  if (result != status::kOk) return result;
  return ReadWholeFile(file, RegistryImage::kMaxSize, bytes).isDone() ? status::kOk
                                                                      : status::kInputOutput;
}

ExitCode MakeNewRegistry(Invocation& call) {
  const std::string file = call.File();
  struct stat found;
  if (lstat(file.c_str(), &found) == 0) return FailCreated(call);
  const TemporaryFolder folder(file);
  if (!folder.isMade()) return call.Fail(kFailed, file, "", folder.reason());
  std::string bytes;
  const unsigned int made = MakeEmptyRegistry(folder.FileIn("new"), &bytes);
  if (made != status::kOk) {
    return call.FailWithStatus(made, file, "", "the library cannot make a registry");
  }
  const FileResult written = WriteNewFile(file, bytes);
  if (written.exists) return FailCreated(call);
  if (!written.isDone()) return call.Fail(kFailed, file, "", written.reason);
  return kDone;
}

}  // namespace yaxreg
