// export: keys and values as JSON.
#include "tools/yaxreg/cli/ContentJson.h"
#include "tools/yaxreg/cli/Loading.h"
#include "tools/yaxreg/verbs/Verbs.h"

namespace yaxreg {

ExitCode RunExport(Invocation& call) {
  ExitCode code = kDone;
  const std::unique_ptr<RegistryImage> image = LoadImage(call, call.File(), &code);
  if (image == nullptr) return code;
  size_t key = Content::kNone;
  if (!FindKey(call, *image, call.File(), call.Path(), &key, &code)) return code;
  WriteContentJson(image->content(), key, call.out);
  return EndOfLook(call, *image, call.File());
}

}  // namespace yaxreg
