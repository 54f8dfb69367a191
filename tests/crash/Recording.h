// The calls that a registry makes while it does a script.
#pragma once

#include <vector>

#include "tests/crash/Durability.h"
#include "tests/crash/Script.h"

namespace crash {

class Recording {
 public:
  Recording(const Script& script, Durability durability);

  const std::vector<Call>& calls() const { return calls_; }
  const std::vector<unsigned int>& answers() const { return answers_; }  // of the script's steps
  // The registry's bytes after step 0 and each of the script's.
  const std::vector<std::string>& files() const { return files_; }

 private:
  std::vector<Call> calls_;
  std::vector<unsigned int> answers_;
  std::vector<std::string> files_;
};

}  // namespace crash
