// The files of a device: those of the running system, or those below a folder that stands for the
// device's root folder.
#pragma once

#include <string>
#include <vector>

#include "tools/yaxreg/components/MachineNames.h"

namespace yaxreg {

class DeviceFiles {
 public:
  // "": the running system.
  explicit DeviceFiles(const std::string& root);

  bool HasRoot() const { return hasRoot_; }
  // Finds where a path of the device lies on this machine. Below a root, symbolic links are
  // followed inside of it: those that begin with "/" begin at the root, and ".." does not leave it;
  // relative paths begin at the root, too. Answers 0, or the error (of errno) that is in the way.
  int Locate(const std::string& path, std::string* located) const;
  // The folders in which the device's loader looks for a file that is told without folder. For a
  // null machine those of every machine.
  std::vector<std::string> LoaderFolders(const ElfMachine* machine) const;

 private:
  std::vector<std::string> ConfigurationFiles() const;
  void AddConfigured(const std::string& file, std::vector<std::string>* folders) const;

  bool hasRoot_;
  std::string root_;  // without the slash at its end
};

}  // namespace yaxreg
