// What a registry's folder holds, as whoever opens it next finds it.
#pragma once

#include <map>
#include <string>

#include "tests/crash/Durability.h"

namespace crash {

struct RegistryState {
  // Opens the registry in the folder, reads all of it and closes it. Recovery, if any is due, is
  // done then, and a registry that is not there is made.
  static RegistryState Read(const std::string& folder, Durability durability);

  // Fills `tree` from the file that Read has left in the folder.
  void Decode(const std::string& folder);

  unsigned int opening = 0;  // status of Initialize; with another than 0 there is nothing else
  std::string content;       // keys with permission, default and values, through the interface
  std::string tree;          // the same with owners and watches, decoded; what is wrong with it.
                             // Equal files have equal trees: Read leaves this empty
  std::string file;          // its MeaningfulBytes
  std::map<std::string, std::string> others;  // files of the folder by name, the registry left out
};

// A registry's bytes up to its end, those without meaning as zero.
std::string MeaningfulBytes(std::string file);

// What is different in `found`, one line; empty for nothing. A journal must be gone. `tree` and
// the backups are not looked at.
std::string Difference(const RegistryState& expected, const RegistryState& found);
// The same of `tree` alone.
std::string DifferenceOfTrees(const RegistryState& expected, const RegistryState& found);
// The same of the other files whose names end in ".backup".
std::string DifferenceOfBackups(const RegistryState& expected, const RegistryState& found);

}  // namespace crash
