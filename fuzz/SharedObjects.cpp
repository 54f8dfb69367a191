// Bytes that are taken for a shared object: each read lies inside of them, and is answered.
#include "framework/elf/ComponentNotes.h"
#include "fuzz/support/Harness.h"
#include "gtest/gtest.h"
#include "tests/support/ElfImage.h"
#include "tools/yaxreg/components/MachineNames.h"

namespace fuzz {
namespace {

void RunSharedObjects(Bytes& in) {
  const ElfBytes bytes(in.Rest());
  yax_elf::ElfReader file(bytes);
  if (file.HasMachine()) yaxreg::MachineName(file.machine());
  const char* const names[] = {"EntryFn_getFactory", "EntryFn_canUnloadNow"};
  bool found[2];
  file.FindFunctions(names, 2, found);
  yax_elf::ComponentNotes notes;
  ReadComponentNotes(file, &notes);
  EXPECT_FALSE(file.hasReadFailed());
  // However large it says that its tables are.
  EXPECT_LE(bytes.reads, 1000 + 8 * bytes.length());
}

const Harness sSharedObjects("SharedObjects", RunSharedObjects);

}  // namespace
}  // namespace fuzz
