#include "tests/fault/FaultFiles.h"

#include <algorithm>

#include "registry/Registry.h"
#include "registry/store/TernaryFile.h"
#include "tests/platform/TestFiles.h"
#include "tests/support/StoreCalls.h"
#include "tests/support/StructureCheck.h"

namespace status = tamu::registry::status;

namespace faults {

using tamu::registry::NodeKind;
using tamu::registry::Registry;
using tamu::registry::TernaryFile;
using tamu::registry::TernaryNodeDescriptor;

namespace {

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

}  // namespace

std::string NewRegistryFile(const std::string& path) {
  Registry registry(path.c_str(), kUserId);
  EXPECT_EQ(status::kOk, registry.Initialize());
  registry.Finalize();
  return GetFile(path);
}

std::string AlmostFullFile(const std::string& path) {
  NewRegistryFile(path);
  TernaryFile store;
  EXPECT_EQ(status::kOk, store.Initialize(path.c_str()));
  const unsigned int left[4] = {3, 5, 2, 20};
  for (unsigned int kind = 0; kind < 4; ++kind) {
    const TernaryNodeDescriptor& descriptor = store.Descriptor(static_cast<NodeKind>(kind));
    while (descriptor.lastTable->freeCount() > left[kind]) {
      unsigned int id = 0;
      if (AcquireSlot(store, static_cast<NodeKind>(kind), &id) != 0) return "";
    }
  }
  store.Finalize();
  return GetFile(path);
}

std::string GraveFindings(const std::string& path, const std::vector<std::string>& harmless) {
  const SlotCounts counts = CountSlots(path);
  unsigned int lost = 0;
  for (const SlotCounts::Kind& kind : {counts.strings, counts.keys, counts.values, counts.blocks}) {
    lost += kind.used - kind.reachable;
  }
  std::string findings;
  for (const std::string& finding : CheckStructure(path)) {
    const bool isHarmless =
        std::any_of(harmless.begin(), harmless.end(),
                    [&](const std::string& part) { return Contains(finding, part); });
    if (Contains(finding, "used slot") && Contains(finding, "has the entry") && lost > 0) {
      --lost;
    } else if (!isHarmless) {
      findings += finding + "\n";
    }
  }
  return findings;
}

}  // namespace faults
