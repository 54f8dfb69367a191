// The table of all verbs, and its entries, each next to the code of its verb.
#pragma once

#include "tools/yaxreg/cli/Verb.h"

namespace yaxreg {

// Its verbs stand in the order in which help shows them.
const VerbTable& AllVerbs();

Verb CreateVerb();      // verbs/KeyVerbs.cpp
Verb TreeVerb();        // verbs/TreeVerb.cpp
Verb LsVerb();          // verbs/LsVerb.cpp
Verb GetVerb();         // verbs/GetVerb.cpp
Verb FindVerb();        // verbs/FindVerb.cpp
Verb DuVerb();          // verbs/DuVerb.cpp
Verb SetVerb();         // verbs/ValueVerbs.cpp
Verb PutVerb();         // verbs/ValueVerbs.cpp
Verb CpVerb();          // verbs/CopyVerbs.cpp
Verb MvVerb();          // verbs/CopyVerbs.cpp
Verb AddVerb();         // verbs/ValueVerbs.cpp
Verb RmVerb();          // verbs/ValueVerbs.cpp
Verb MkkeyVerb();       // verbs/KeyVerbs.cpp
Verb RmkeyVerb();       // verbs/KeyVerbs.cpp
Verb DefaultVerb();     // verbs/AttributeVerbs.cpp
Verb RightsVerb();      // verbs/AttributeVerbs.cpp
Verb WatchVerb();       // verbs/AttributeVerbs.cpp
Verb MonitorVerb();     // verbs/MonitorVerb.cpp
Verb ExportVerb();      // verbs/ExportVerb.cpp
Verb ImportVerb();      // verbs/ImportVerb.cpp
Verb EditVerb();        // verbs/EditVerb.cpp
Verb DiffVerb();        // verbs/DiffVerb.cpp
Verb BackupVerb();      // verbs/BackupVerbs.cpp
Verb RestoreVerb();     // verbs/BackupVerbs.cpp
Verb BatchVerb();       // verbs/BatchVerb.cpp
Verb ShellVerb();       // verbs/ShellVerb.cpp
Verb CheckVerb();       // verbs/CheckVerb.cpp
Verb RepairVerb();      // verbs/RepairVerb.cpp
Verb CompactVerb();     // verbs/CompactVerb.cpp
Verb StatVerb();        // verbs/StatVerb.cpp
Verb ViewVerb();        // verbs/ViewVerb.cpp
Verb SelftestVerb();    // verbs/SelftestVerb.cpp
Verb CompLsVerb();      // verbs/ComponentVerbs.cpp
Verb CompAddVerb();     // verbs/ComponentChangeVerbs.cpp
Verb CompSetVerb();     // verbs/ComponentChangeVerbs.cpp
Verb CompRmVerb();      // verbs/ComponentChangeVerbs.cpp
Verb CompVerifyVerb();  // verbs/ComponentVerbs.cpp

}  // namespace yaxreg
