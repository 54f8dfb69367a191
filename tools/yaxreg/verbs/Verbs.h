// What the verbs do. Each takes one call apart, does its work and answers the exit code.
#pragma once

#include "tools/yaxreg/cli/Invocation.h"

namespace yaxreg {

ExitCode RunCreate(Invocation& call);      // verbs/KeyVerbs.cpp
ExitCode RunTree(Invocation& call);        // verbs/TreeVerb.cpp
ExitCode RunLs(Invocation& call);          // verbs/LsVerb.cpp
ExitCode RunGet(Invocation& call);         // verbs/ValueVerbs.cpp
ExitCode RunSet(Invocation& call);         // verbs/ValueVerbs.cpp
ExitCode RunAdd(Invocation& call);         // verbs/ValueVerbs.cpp
ExitCode RunRm(Invocation& call);          // verbs/ValueVerbs.cpp
ExitCode RunMkkey(Invocation& call);       // verbs/KeyVerbs.cpp
ExitCode RunRmkey(Invocation& call);       // verbs/KeyVerbs.cpp
ExitCode RunDefault(Invocation& call);     // verbs/AttributeVerbs.cpp
ExitCode RunRights(Invocation& call);      // verbs/AttributeVerbs.cpp
ExitCode RunWatch(Invocation& call);       // verbs/AttributeVerbs.cpp
ExitCode RunExport(Invocation& call);      // verbs/ExportVerb.cpp
ExitCode RunImport(Invocation& call);      // verbs/ImportVerb.cpp
ExitCode RunDiff(Invocation& call);        // verbs/DiffVerb.cpp
ExitCode RunBackup(Invocation& call);      // verbs/BackupVerbs.cpp
ExitCode RunRestore(Invocation& call);     // verbs/BackupVerbs.cpp
ExitCode RunCheck(Invocation& call);       // verbs/CheckVerb.cpp
ExitCode RunRepair(Invocation& call);      // verbs/RepairVerb.cpp
ExitCode RunCompact(Invocation& call);     // verbs/CompactVerb.cpp
ExitCode RunStat(Invocation& call);        // verbs/StatVerb.cpp
ExitCode RunCompLs(Invocation& call);      // verbs/ComponentVerbs.cpp
ExitCode RunCompVerify(Invocation& call);  // verbs/ComponentVerbs.cpp

}  // namespace yaxreg
