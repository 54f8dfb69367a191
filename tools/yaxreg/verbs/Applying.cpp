#include "tools/yaxreg/verbs/Applying.h"

#include <memory>

#include "tools/yaxreg/content/ContentChange.h"
#include "tools/yaxreg/image/TemporaryFolder.h"

namespace yaxreg {

ExitCode ApplyContent(Invocation& call, Session& session, const Content& present,
                      const Content& wanted) {
  const std::unique_ptr<TemporaryFolder> folder = MakeTemporaryFolder(call.File());
  if (!folder->isMade()) return call.Fail(kFailed, call.File(), "", folder->reason());
  const ChangeOutcome outcome =
      ChangeContent(session.registry(), present, wanted, folder->FileIn("backup"));
  if (outcome.status != 0) return session.FailAt(outcome.path, outcome.status);
  return session.Close() ? kDone : session.code();
}

}  // namespace yaxreg
