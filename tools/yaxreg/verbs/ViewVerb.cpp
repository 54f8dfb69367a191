// view: a file as a page for browsers.
#include <sstream>

#include "tools/yaxreg/verbs/CommonArguments.h"
#include "tools/yaxreg/verbs/Loading.h"
#include "tools/yaxreg/verbs/OutputFile.h"
#include "tools/yaxreg/verbs/VerbTable.h"
#include "tools/yaxreg/view/ViewPage.h"

namespace yaxreg {

namespace {

constexpr char kPageBeginning[] = "<!doctype html>\n<!-- yaxreg view -->";

ExitCode WriteTo(Invocation& call, const ViewedFile& first, const ViewedFile* second) {
  if (!call.Has("--output")) {
    WriteViewPage(first, second, call.out);
    return kDone;
  }
  std::ostringstream page;
  WriteViewPage(first, second, page);
  return WriteOutputFile(call, call.Text("--output"), page.str(),
                         {"page of yaxreg view", {kPageBeginning}});
}

bool CheckOutput(Invocation& call) {
  for (const char* file : {"FILE", "OTHER"}) {
    if (!call.Has("--output") || !IsSameFile(call.Text(file), call.Text("--output"))) continue;
    call.Fail(kUsage, call.Text("--output"), "", "is the registry itself");
    return false;
  }
  return true;
}

ExitCode RunView(Invocation& call) {
  if (!CheckOutput(call)) return kUsage;
  ExitCode code = kDone;
  const bool hasOther = call.Has("OTHER");
  const auto first = LoadImage(call, call.File(), &code);
  if (first == nullptr) return code;
  const auto second = hasOther ? LoadImage(call, call.Text("OTHER"), &code) : nullptr;
  if (hasOther && second == nullptr) return code;

  const ViewedFile firstFile = {BaseName(call.File()), first.get()};
  const ViewedFile secondFile = {BaseName(call.Text("OTHER")), second.get()};
  const ViewedFile* const other = hasOther ? &secondFile : nullptr;
  if (call.isJson()) WriteViewData(firstFile, other, call.out);
  const bool writesPage = !call.isJson() || call.Has("--output");
  const ExitCode written = writesPage ? WriteTo(call, firstFile, other) : kDone;
  if (written != kDone) return written;
  code = EndOfLook(call, *first, call.File());
  if (!hasOther) return code;
  const ExitCode otherCode = EndOfLook(call, *second, call.Text("OTHER"));
  return code == kDone ? otherCode : code;
}

}  // namespace

Verb ViewVerb() {
  return {"view",
          "Show a file as a page for browsers",
          "Writes one HTML page that needs no server and no network: the keys and values to browse "
          "and to search, their types, owners, rights, default values and watch bits, data as text "
          "and in hexadecimal digits, the components, how much is left of each kind of record, the "
          "map of the file, and damage with the keys that it touches. With a second file it marks "
          "what was added, removed and changed there; whether anything was, diff answers by its "
          "exit code.",
          {kFile, {"OTHER", "A second registry file, to be compared with the first", false, true}},
          {{"-o,--output", "HTML",
            "Write the page to this file instead of the standard output; of files that exist only "
            "an empty one and such a page are replaced"}},
          "yaxreg view device.rce > device.html",
          RunView,
          true};
}

}  // namespace yaxreg
