// Bytes that are taken for a shared object: each read lies inside of them, and is answered.
#include <cstring>

#include "fuzz/support/Harness.h"
#include "gtest/gtest.h"
#include "tools/yaxreg/components/ElfFile.h"

namespace fuzz {
namespace {

void RunSharedObjects(Bytes& in) {
  const std::string image = in.Rest();
  size_t reads = 0;
  yaxreg::ElfBytes bytes;
  bytes.length = image.size();
  bytes.read = [&](unsigned long long offset, size_t size, unsigned char* to) {
    ++reads;
    const bool isInside = offset <= image.size() && size <= image.size() - offset;
    EXPECT_TRUE(isInside) << offset << " " << size;
    if (isInside && size > 0) std::memcpy(to, image.data() + offset, size);
    return isInside;
  };
  yaxreg::ElfFile file(bytes);
  if (file.HasMachine()) MachineName(file.machine());
  const std::vector<bool> found =
      file.FindFunctions({"EntryFn_getFactory", "EntryFn_canUnloadNow"});
  EXPECT_TRUE(found.empty() || found.size() == 2);
  // However large it says that its tables are.
  EXPECT_LE(reads, 1000 + 8 * image.size());
}

const Harness sSharedObjects("SharedObjects", RunSharedObjects);

}  // namespace
}  // namespace fuzz
