// A backup of whatever bytes: it is restored and the registry is sound, or it is refused and no
// byte of the registry has changed.
#include "fuzz/support/Harness.h"
#include "tests/registry/filetree/SmallRegistry.h"

namespace fuzz {
namespace {

void RunBackupFile(Bytes& in) {
  static tamu::registry::SmallRegistry sRegistry;
  TryBackup(sRegistry, in.Rest());
}

const Harness sBackupFile("BackupFile", RunBackupFile);

}  // namespace
}  // namespace fuzz
