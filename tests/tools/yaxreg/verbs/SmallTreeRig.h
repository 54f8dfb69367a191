// yaxreg on the small tree of HandMadeFile.h, whole or with a change.
#pragma once

#include "tests/tools/yaxreg/ChangeRig.h"
#include "tests/tools/yaxreg/HandMadeFile.h"

class SmallTreeRig : public ChangeRig {
 protected:
  void SetUp() override { PutFile(file, SmallTree().bytes); }

  // Writes the small tree with a change.
  void Damage(unsigned offset, unsigned word) {
    HandMadeFile damaged = SmallTree();
    damaged.PutWord(offset, word);
    PutFile(file, damaged.bytes);
  }
};
