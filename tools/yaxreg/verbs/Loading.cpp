#include "tools/yaxreg/verbs/Loading.h"

#include "registry/base/RegistryStatus.h"
#include "tools/yaxreg/image/FileBytes.h"
#include "tools/yaxreg/image/PendingChange.h"
#include "tools/yaxreg/image/Snapshot.h"
#include "tools/yaxreg/verbs/Batch.h"

namespace yaxreg {

namespace status = tamu::registry::status;

std::unique_ptr<RegistryImage> LoadImage(Invocation& call, const std::string& file, ExitCode* code,
                                         Orphans orphans) {
  std::string bytes;
  if (call.batch != nullptr && call.batch->file == file) {
    const unsigned int result = TakeSnapshot(*call.batch->registry, &bytes);
    if (result == status::kOk) return DecodeImage(call, file, std::move(bytes), code, orphans);
    *code = call.FailWithStatus(result, file, "");
    return nullptr;
  }
  const FileResult read = ReadWholeFile(file, RegistryImage::kMaxSize, &bytes);
  if (read.tooLarge) {
    *code = call.FailWithStatus(status::kInvalidFile, file, "", read.reason);
    return nullptr;
  }
  if (!read.isDone()) {
    *code = call.Fail(kFailed, file, "", read.reason);
    return nullptr;
  }
  bool isCompleted = CompletePendingChange(file, &bytes);
  // Programs that share it may have changed it meanwhile. What the library refuses to open is taken
  // as it was read.
  std::string snapshot;
  if (TakeSnapshot(file, &snapshot) && snapshot != bytes) {
    bytes.swap(snapshot);
    isCompleted = false;
  }
  return DecodeImage(call, file, std::move(bytes), code, orphans, isCompleted);
}

std::unique_ptr<RegistryImage> DecodeImage(Invocation& call, const std::string& file,
                                           std::string bytes, ExitCode* code, Orphans orphans,
                                           bool isCompleted) {
  auto image = std::make_unique<RegistryImage>(std::move(bytes), orphans, isCompleted);
  if (image->IsRegistry()) return image;
  *code = call.FailWithStatus(status::kInvalidFile, file, "", "is no registry file");
  return nullptr;
}

bool FindKey(Invocation& call, const RegistryImage& image, const std::string& file,
             const std::string& path, size_t* key, ExitCode* code) {
  *key = image.content().Find(path);
  if (*key != Content::kNone) return true;
  *code =
      call.FailWithStatus(status::kNotFound, file, path, "there is no such key" + HintOf(image));
  if (!image.IsComplete()) *code = kDamaged;
  return false;
}

ExitCode FailWithoutMatch(Invocation& call, const RegistryImage& image) {
  const ExitCode code = call.FailWithStatus(status::kNotFound, call.File(), call.Path(),
                                            "nothing matches" + HintOf(image));
  return image.IsComplete() ? code : kDamaged;
}

std::string HintOf(const RegistryImage& image) {
  if (image.IsComplete()) return "";
  return ", but the file is damaged, it may be lost; yaxreg check tells more";
}

ExitCode EndOfLook(Invocation& call, const RegistryImage& image, const std::string& file) {
  if (image.IsComplete()) return kDone;
  return call.Fail(
      kDamaged, file, "",
      "the file is damaged, something may be missing or wrong; yaxreg check tells more");
}

}  // namespace yaxreg
