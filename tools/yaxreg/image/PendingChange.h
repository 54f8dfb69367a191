// What a program that died in a change has left beside a registry file.
#pragma once

#include <string>

namespace yaxreg {

// Completes `bytes`, those of the registry file at `path`, by what its journal holds, in the
// SideFolder or beside it, as the next program that opens the file will; the files stay as they
// are. False: there is nothing to complete. Any journal may lie there, docs/format.md tells which
// one counts.
bool CompletePendingChange(const std::string& path, std::string* bytes);

}  // namespace yaxreg
