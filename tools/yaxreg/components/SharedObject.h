// Looks at one file as the component framework and the loader would, without loading it.
#pragma once

#include <string>

#include "tools/yaxreg/components/ComponentOffer.h"
#include "tools/yaxreg/components/MachineNames.h"

namespace yaxreg {

struct SharedObject {
  enum class State {
    kGood,
    kWrong,      // there, but it cannot be loaded as a component
    kAbsent,     // there is no such file
    kUnreadable  // it cannot be read
  };

  State state = State::kGood;
  std::string problem;      // in words; empty when it is good
  bool isOther = false;     // wrong, because it is built for another machine
  bool canBeAsked = false;  // it can be unloaded: it has the entry function that is asked before
  ElfMachine machine;       // known when it is good
  ComponentOffer offer;     // what it says of itself, likewise
  ComponentOffer binary;    // its size and build id alone, likewise
};

// The state that an error (of errno) of looking for a file stands for, with its words.
SharedObject AfterError(int error);

// Reads the headers and the table of symbols of a file. For a null machine every machine is fine.
SharedObject ExamineSharedObject(const std::string& file, const ElfMachine* machine);

}  // namespace yaxreg
