#include "tools/yaxreg/verbs/VerbTable.h"

namespace yaxreg {

const VerbTable& AllVerbs() {
  static const VerbTable table = {
      {
          CreateVerb(),  TreeVerb(),     LsVerb(),      GetVerb(),        FindVerb(),
          DuVerb(),      PutVerb(),      SetVerb(),     AddVerb(),        RmVerb(),
          CpVerb(),      MvVerb(),       MkkeyVerb(),   RmkeyVerb(),      DefaultVerb(),
          RightsVerb(),  WatchVerb(),    MonitorVerb(), ExportVerb(),     ImportVerb(),
          EditVerb(),    DiffVerb(),     BackupVerb(),  RestoreVerb(),    BatchVerb(),
          ShellVerb(),   CheckVerb(),    RepairVerb(),  CompactVerb(),    StatVerb(),
          ViewVerb(),    SelftestVerb(), CompLsVerb(),  CompVerifyVerb(), CompAddVerb(),
          CompSetVerb(), CompRmVerb(),
      },
      {{"comp", "Look at the components that are registered, and change what is"}}};
  return table;
}

}  // namespace yaxreg
