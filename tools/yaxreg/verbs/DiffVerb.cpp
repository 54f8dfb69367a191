// diff: what differs between two files.
#include "registry/base/RegistryStatus.h"
#include "tools/yaxreg/content/ContentDiff.h"
#include "tools/yaxreg/verbs/DifferenceText.h"
#include "tools/yaxreg/verbs/Loading.h"
#include "tools/yaxreg/verbs/VerbTable.h"

namespace yaxreg {

namespace {

ExitCode FailWithoutKey(Invocation& call, const RegistryImage& first, const RegistryImage& second) {
  const RegistryImage& worse = first.IsComplete() ? second : first;
  const ExitCode code = call.FailWithStatus(tamu::registry::status::kNotFound, "", call.Path(),
                                            "there is no such key in either file" + HintOf(worse));
  return worse.IsComplete() ? code : kDamaged;
}

ExitCode RunDiff(Invocation& call) {
  ExitCode code = kDone;
  const std::string firstFile = call.Text("FILE1");
  const std::string secondFile = call.Text("FILE2");
  const std::unique_ptr<RegistryImage> first = LoadImage(call, firstFile, &code);
  if (first == nullptr) return code;
  first->DropBytes();
  const std::unique_ptr<RegistryImage> second = LoadImage(call, secondFile, &code);
  if (second == nullptr) return code;
  second->DropBytes();

  const std::string path = call.Path();
  const Comparison what = {first->content(), second->content(), first->content().Find(path),
                           second->content().Find(path)};
  const bool isInNone = what.firstKey == Content::kNone && what.secondKey == Content::kNone;
  if (isInNone) return FailWithoutKey(call, *first, *second);

  const bool isSame = AreSame(what.first, what.firstKey, what.second, what.secondKey);
  PrintDifferences(call, what, isSame);
  const ExitCode firstEnd = EndOfLook(call, *first, firstFile);
  const ExitCode secondEnd = EndOfLook(call, *second, secondFile);
  if (firstEnd != kDone || secondEnd != kDone) return kDamaged;
  return isSame ? kDone : kNo;
}

}  // namespace

Verb DiffVerb() {
  return {
      "diff",
      "Compare two registries",
      "Compares key by key and value by value, and prints what differs: - for what only the first "
      "has, + for what only the second has. The exit code is 1 when they differ. What --json "
      "prints import takes as a patch.",
      {{"FILE1", "The first registry file", true, true},
       {"FILE2", "The second registry file", true, true},
       {"PATH", "Compare only this key and what is below it", false, false}},
      {},
      "yaxreg diff device.rce copy.rce",
      RunDiff,
      true};
}

}  // namespace yaxreg
