// export: keys and values as JSON.
#include "tools/yaxreg/content/ContentJson.h"
#include "tools/yaxreg/verbs/CommonArguments.h"
#include "tools/yaxreg/verbs/Loading.h"
#include "tools/yaxreg/verbs/UsersFile.h"
#include "tools/yaxreg/verbs/VerbTable.h"

namespace yaxreg {

namespace {

ExitCode RunExport(Invocation& call) {
  ExitCode code = kDone;
  std::optional<UserNames> users;
  if (!TakeUsers(call, &users, &code)) return code;
  const std::unique_ptr<RegistryImage> image = LoadImage(call, call.File(), &code);
  if (image == nullptr) return code;
  size_t key = Content::kNone;
  if (!FindKey(call, *image, call.File(), call.Path(), &key, &code)) return code;
  WriteContentJson(image->content(), key, call.out, users ? &*users : nullptr);
  return EndOfLook(call, *image, call.File());
}

}  // namespace

Verb ExportVerb() {
  return {
      "export",
      "Write keys and values as JSON",
      "Writes a key and all below it as canonical JSON: sorted, complete, the same bytes for the "
      "same content on every machine. Hidden and unset values, owners, rights, default values and "
      "watch bits are in it; bytes that are no text are written as hexadecimal digits. With "
      "--users owners are told by "
      "the names that the file has for them, one a line: 1000 anna, or anna:x:1000: as in "
      "/etc/passwd, or a name alone, which is the user of --user; import --users takes them back.",
      {kFile, kPath},
      {kUsers},
      "yaxreg export device.rce network > network.json",
      RunExport};
}

}  // namespace yaxreg
