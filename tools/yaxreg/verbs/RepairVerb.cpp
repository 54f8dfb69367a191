// repair: saves what is undamaged into a new file.
#include <algorithm>
#include <nlohmann/json.hpp>
#include <ostream>

#include "registry/base/RegistryStatus.h"
#include "tools/yaxreg/image/FileBytes.h"
#include "tools/yaxreg/image/ImageJson.h"
#include "tools/yaxreg/image/ImageWriter.h"
#include "tools/yaxreg/text/JsonText.h"
#include "tools/yaxreg/text/Numbers.h"
#include "tools/yaxreg/verbs/CommonArguments.h"
#include "tools/yaxreg/verbs/Exchange.h"
#include "tools/yaxreg/verbs/FindingText.h"
#include "tools/yaxreg/verbs/Loading.h"
#include "tools/yaxreg/verbs/VerbTable.h"

namespace yaxreg {

namespace status = tamu::registry::status;

namespace {

// What is saved, of what. Keys that were only made up for those below them are none that were
// saved; a record that is in use, but that nothing leads to, may have been one.
struct Savings {
  size_t keys = 0;
  size_t values = 0;
  size_t keysInFile = 0;
  size_t valuesInFile = 0;
};

size_t RecordsOf(const RegistryImage& image, NodeKind kind) {
  const SlotUse use = image.UseOf(kind);
  return size_t{use.reached} + use.leaked;
}

Savings SavingsOf(const RegistryImage& image) {
  Savings savings;
  savings.keys = image.content().KeyCount();
  savings.values = image.content().ValueCount();
  savings.keysInFile = savings.keys;
  savings.valuesInFile = savings.values;
  if (image.IsComplete()) return savings;
  savings.keysInFile = std::max(savings.keys, RecordsOf(image, NodeKind::kKey));
  savings.valuesInFile = std::max(savings.values, RecordsOf(image, NodeKind::kValue));
  return savings;
}

std::string Target(const Invocation& call) {
  return call.Has("--in-place") ? call.File() : call.Text("--output");
}

void PrintText(Invocation& call, const RegistryImage& image) {
  const Savings savings = SavingsOf(image);
  PrintFindings(call, image, Notes::kLeftOut);
  PrintFindingCounts(call, image);
  call.out << Shown(Target(call)) << ": " << savings.keys << " of "
           << Counted(savings.keysInFile, "key") << " and " << savings.values << " of "
           << Counted(savings.valuesInFile, "value") << " saved";
  if (image.IsComplete()) {
    call.out << ", " << call.palette.good << "nothing is lost" << call.palette.end;
  } else {
    call.out << ", " << call.palette.bad << "the lines above tell what is lost or may be wrong"
             << call.palette.end;
  }
  call.out << "\n";
}

void PrintJson(Invocation& call, const RegistryImage& image) {
  const Savings savings = SavingsOf(image);
  const FindingCounts counts = CountFindings(image);
  nlohmann::ordered_json document;
  document["output"] = JsonText(Target(call));
  document["complete"] = image.IsComplete();
  document["keys"] = savings.keys;
  document["keysInFile"] = savings.keysInFile;
  document["values"] = savings.values;
  document["valuesInFile"] = savings.valuesInFile;
  document["losses"] = counts.losses;
  document["damages"] = counts.damages;
  document["findings"] = FindingsJson(image);
  call.out << JsonDump(document, 2) << "\n";
}

// Names whose key records are lost become keys again, so that the keys below them can be reached.
std::string RepairedBytes(const RegistryImage& image) {
  Content content = image.content();
  for (ContentKey& key : content.keys) key.isMadeUp = false;
  return ImageWriter(content).bytes();
}

std::string Repaired(Invocation& call, const RegistryImage& image, ExitCode* code) {
  const std::string bytes = RepairedBytes(image);
  if (bytes.empty()) {
    *code = call.FailWithStatus(status::kLimit, call.File(), "",
                                "what can be read does not fit into one file");
  }
  return bytes;
}

ExitCode EndOfRepair(Invocation& call, const RegistryImage& image) {
  if (call.isJson()) {
    PrintJson(call, image);
  } else {
    PrintText(call, image);
  }
  return image.IsComplete() ? kDone : kDamaged;
}

ExitCode RepairInPlace(Invocation& call) {
  Exchange exchange(
      call, Orphans::kAlways, tamu::registry::ChangeKind::kKeyRestored,
      [&](const RegistryImage& image, ExitCode* code) { return Repaired(call, image, code); });
  const ExitCode code = exchange.Run();
  return code == kDone ? EndOfRepair(call, exchange.before()) : code;
}

ExitCode RunRepair(Invocation& call) {
  const std::string output = call.Text("--output");
  if (output.empty() != call.Has("--in-place")) {
    return call.Fail(kUsage, "", "",
                     "either --output or --in-place is required; --help tells more");
  }
  if (output.empty()) return RepairInPlace(call);
  ExitCode code = kDone;
  const std::unique_ptr<RegistryImage> image =
      LoadImage(call, call.File(), &code, Orphans::kAlways);
  if (image == nullptr) return code;
  const std::string bytes = Repaired(call, *image, &code);
  if (bytes.empty()) return code;
  const FileResult written = WriteNewFile(output, bytes);
  if (written.exists) {
    return call.FailWithStatus(status::kExists, output, "", "there is a file already");
  }
  if (!written.isDone()) return call.Fail(kFailed, output, "", written.reason);
  return EndOfRepair(call, *image);
}

}  // namespace

Verb RepairVerb() {
  return {
      "repair",
      "Save what is undamaged",
      "Makes a new registry of every key and value that can be read from a damaged one, and lists "
      "what could not be saved. With --output the damaged file is only read; with --in-place it "
      "gets the new content, in one change, and programs that have it open go on with that. Keys "
      "and values that nothing leads "
      "to any more are saved below a key lost+found, by the numbers of their records, such as "
      "(key 0x200). A part of a name that cannot be read is written as the number of its record, "
      "such as (0x500). The beginning of a name that was cut off when a program was killed without "
      "a "
      "journal is put back. The last line tells how many of the keys and "
      "values that the file holds were saved; what is only marked as in use counts, so the totals "
      "may be too high where the tables are damaged. The exit code is 0 when everything was "
      "saved, 3 when something was not.",
      {kFile},
      {{"-o,--output", "NEW", "The file to make; it must not exist"},
       {"-i,--in-place", nullptr, "Repair the file itself"},
       kTimeout},
      "yaxreg repair device.rce -o saved.rce",
      RunRepair,
      true};
}

}  // namespace yaxreg
