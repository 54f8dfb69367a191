// Giving a registry the content that is wanted, in its file or, to see whether it can be done, in a
// copy.
#pragma once

#include <string>
#include <vector>

#include "registry/Registry.h"
#include "tools/yaxreg/image/RegistryImage.h"
#include "tools/yaxreg/image/TemporaryFolder.h"

namespace yaxreg {

struct ChangeOutcome {
  unsigned int status = 0;
  std::string path;                       // of the key that could not be changed
  std::vector<size_t> rewritten = {};     // of Importer
  size_t failedRestore = Content::kNone;  // of Importer
};

// Changes the registry, which is open as the administrator and holds `present`, and makes sure that
// `wanted` is in it and nothing else; keys that are not wanted are deleted first. The library does
// not report every change that found no room. After a failure some of the changes may have been
// made: the caller cancels its transaction.
ChangeOutcome ChangeContent(tamu::registry::Registry& registry, const Content& present,
                            const Content& wanted, const std::string& backupFile);

// Makes the same changes in a copy of the file.
ChangeOutcome RehearseChange(const RegistryImage& image, const Content& wanted,
                             const TemporaryFolder& folder);

}  // namespace yaxreg
