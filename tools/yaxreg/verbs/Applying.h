// Giving the registry of a session another content.
#pragma once

#include "tools/yaxreg/verbs/Session.h"

namespace yaxreg {

// Makes the content of the session, which is open to change, the wanted one, and closes it. Not
// kDone: nothing is changed once the session ends, and the failure has been printed.
ExitCode ApplyContent(Invocation& call, Session& session, const Content& present,
                      const Content& wanted);

}  // namespace yaxreg
