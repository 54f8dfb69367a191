// What the self test has done and found.
#pragma once

#include <string>

namespace yaxreg {

struct SelfTestCounts {
  bool hasJournal =
      false;  // without one a kill may leave half a change, and one process has a file
  // Processes that were killed while they changed something; what was then half a change, what was
  // acknowledged and is gone, and what could not be read any more.
  unsigned int kills = 0;
  unsigned int mixed = 0;
  unsigned int lost = 0;
  unsigned int unreadable = 0;
  // Changes of processes beside each other; those that are gone, looks that met half a change, and
  // processes that could not go on.
  unsigned int changes = 0;
  unsigned int lostChanges = 0;
  unsigned int tornLooks = 0;
  unsigned int stuck = 0;
  // Changes that found no room; those after which not everything was as before.
  unsigned int fullDisks = 0;
  unsigned int mixedByFullDisks = 0;
  // Files that were damaged on purpose; those that opening refused, and those that ended a process
  // or held it up.
  unsigned int damages = 0;
  unsigned int refused = 0;
  unsigned int crashes = 0;

  // Whether all is as promised. Without a journal nothing is promised about kills.
  bool IsKept() const {
    const bool areKillsKept = !hasJournal || (mixed == 0 && lost == 0);
    return areKillsKept && unreadable == 0 && lostChanges == 0 && tornLooks == 0 && stuck == 0 &&
           mixedByFullDisks == 0 && crashes == 0;
  }
};

}  // namespace yaxreg
