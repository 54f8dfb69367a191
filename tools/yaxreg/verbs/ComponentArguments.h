// What the verbs of components have in common.
#pragma once

#include <string>

#include "tools/yaxreg/cli/Invocation.h"
#include "tools/yaxreg/components/ComponentList.h"
#include "tools/yaxreg/text/ByteText.h"

namespace yaxreg {

// False when it is no identifier: the failure has been printed.
inline bool TakeIdentifier(Invocation& call, const std::string& text, std::string* identifier,
                           ExitCode* code) {
  *identifier = IdentifierOf(text);
  if (!identifier->empty()) return true;
  *code =
      call.Fail(kUsage, "", "",
                Shown(text) + " is no identifier such as {1FBF55FC-0F15-45CC-8F3F-DE86A5640CB5}");
  return false;
}

}  // namespace yaxreg
