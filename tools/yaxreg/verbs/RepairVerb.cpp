// repair: saves what is undamaged into a new file.
#include <nlohmann/json.hpp>
#include <ostream>

#include "registry/RegistryStatus.h"
#include "tools/yaxreg/cli/FindingText.h"
#include "tools/yaxreg/cli/Loading.h"
#include "tools/yaxreg/image/FileBytes.h"
#include "tools/yaxreg/image/ImageWriter.h"
#include "tools/yaxreg/verbs/Verbs.h"

namespace yaxreg {

namespace status = tamu::registry::status;

namespace {

void PrintText(Invocation& call, const RegistryImage& image) {
  for (const Finding& finding : image.findings()) {
    if (finding.severity != Severity::kNote) call.out << FindingLine(finding, call.palette);
  }
  if (image.moreFindings() > 0) {
    call.out << "and " << image.moreFindings() << " findings more\n";
  }
  call.out << Shown(call.Text("--output")) << ": " << image.content().keys.size() << " keys, "
           << image.content().ValueCount() << " values saved";
  if (image.IsComplete()) {
    call.out << ", " << call.palette.good << "nothing is lost" << call.palette.end;
  } else {
    call.out << ", " << call.palette.bad << "the lines above tell what is lost or may be wrong"
             << call.palette.end;
  }
  call.out << "\n";
}

void PrintJson(Invocation& call, const RegistryImage& image) {
  nlohmann::ordered_json document;
  document["output"] = JsonText(call.Text("--output"));
  document["complete"] = image.IsComplete();
  document["keys"] = image.content().keys.size();
  document["values"] = image.content().ValueCount();
  document["findings"] = FindingsJson(image);
  call.out << document.dump(2) << "\n";
}

// Names whose key records are lost become keys again, so that the keys below them can be reached.
std::string RepairedBytes(const RegistryImage& image) {
  Content content = image.content();
  for (ContentKey& key : content.keys) key.isMadeUp = false;
  return ImageWriter(content).bytes();
}

}  // namespace

ExitCode RunRepair(Invocation& call) {
  const std::string output = call.Text("--output");
  if (output.empty()) {
    return call.Fail(kUsage, "", "", "--output is required; --help tells more");
  }
  ExitCode code = kDone;
  const std::unique_ptr<RegistryImage> image =
      LoadImage(call, call.File(), &code, Orphans::kAlways);
  if (image == nullptr) return code;
  const std::string bytes = RepairedBytes(*image);
  if (bytes.empty()) {
    return call.FailWithStatus(status::kLimit, call.File(), "",
                               "what can be read does not fit into one file");
  }
  const FileResult written = WriteNewFile(output, bytes);
  if (written.exists) {
    return call.FailWithStatus(status::kExists, output, "", "there is a file already");
  }
  if (!written.isDone()) return call.Fail(kFailed, output, "", written.reason);
  if (call.isJson()) {
    PrintJson(call, *image);
  } else {
    PrintText(call, *image);
  }
  return image->IsComplete() ? kDone : kDamaged;
}

}  // namespace yaxreg
