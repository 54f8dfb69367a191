// Does the steps of a script on a registry that is open.
#pragma once

#include "registry/Registry.h"
#include "tests/crash/Step.h"

namespace crash {

constexpr unsigned int kUserId = tamu::registry::kAdministratorId;

class ScriptRun {
 public:
  // `folder` of the backups, without a slash at its end.
  ScriptRun(tamu::registry::Registry& registry, const std::string& folder)
      : registry_(registry), folder_(folder) {}

  // The operation's status.
  unsigned int Do(const Step& step);

 private:
  unsigned int Handle(const Step& step);
  unsigned int DoTransaction(const Step& step);

  tamu::registry::Registry& registry_;
  std::string folder_;
  unsigned int handle_ = 0;  // of the root key; 0 while it is not open
};

}  // namespace crash
