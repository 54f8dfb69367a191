#include "tools/yaxreg/verbs/ChangeCount.h"

#include <ostream>

#include "tools/yaxreg/content/ContentDiff.h"
#include "tools/yaxreg/text/JsonText.h"
#include "tools/yaxreg/text/Numbers.h"

namespace yaxreg {

ChangeCount::ChangeCount(const Content& present, const Content& wanted) {
  const ContentKey* last = nullptr;
  CompareContents(present, 0, wanted, 0, [&](const Difference& difference) {
    if (difference.kind == DifferenceKind::kValue) {
      ++values;
    } else if ((difference.second != nullptr ? difference.second : difference.first) != last) {
      ++keys;
      last = difference.second != nullptr ? difference.second : difference.first;
    }
    return true;
  });
}

ExitCode EndOfCounted(Invocation& call, const std::string& path, const ChangeCount& count) {
  if (call.isJson()) {
    call.out << "{\"changed\":" << (count.IsZero() ? "false" : "true")
             << ",\"path\":" << TextJson(path) << ",\"keys\":" << std::to_string(count.keys)
             << ",\"values\":" << std::to_string(count.values) << "}\n";
  } else if (!count.IsZero()) {
    call.out << Counted(count.keys, "key") << " and " << Counted(count.values, "value")
             << " changed\n";
  }
  return kDone;
}

}  // namespace yaxreg
