// Checks whether the component framework could use the components that are registered.
#pragma once

#include <string>
#include <vector>

#include "tools/yaxreg/components/ComponentList.h"
#include "tools/yaxreg/components/DeviceFiles.h"
#include "tools/yaxreg/components/SharedObject.h"

namespace yaxreg {

struct ComponentVerdict {
  bool isInProgram = false;   // nothing is loaded for it
  bool isUnreadable = false;  // a file could not be read, though it is there
  std::string file;           // that was looked at; empty: none
  std::vector<std::string> problems;
  std::vector<std::string> notes;  // what does not keep it from being used

  bool isGood() const { return problems.empty(); }
};

class ComponentCheck {
 public:
  // `machine`: that of the device; null: that of the first good shared object.
  ComponentCheck(const DeviceFiles& files, const ElfMachine* machine);

  ComponentVerdict Verify(const Component& component, bool isSingleBinary);

  bool HasMachine() const { return hasMachine_; }
  const ElfMachine& machine() const { return machine_; }

 private:
  void VerifyBinary(const Component& component, ComponentVerdict* verdict);
  SharedObject Examine(const std::string& path, std::string* file) const;
  SharedObject Search(const std::string& name, std::string* file) const;
  const ElfMachine* Wanted() const { return hasMachine_ ? &machine_ : nullptr; }

  const DeviceFiles& files_;
  bool hasMachine_;
  ElfMachine machine_;
  std::vector<std::string> folders_;  // of the loader
};

}  // namespace yaxreg
