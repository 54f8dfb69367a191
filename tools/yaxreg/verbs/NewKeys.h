// Creating keys of exactly the names that are asked for.
#pragma once

#include <string>
#include <vector>

#include "tools/yaxreg/verbs/Session.h"

namespace yaxreg {

// Takes the names of a key apart: "a" and "b" of "a/b", none of "". False: one is empty, the
// failure has been printed.
bool TakeNames(Invocation& call, const std::string& path, std::vector<std::string>* names,
               ExitCode* code);

// What the library makes beside the way (content/ExactKey.h) is a stray key.
class NewKeys {
 public:
  // The session must be open to change, its file decoded.
  NewKeys(Session& session, const std::vector<std::string>& names);

  // How many of the names, from the first on, lead to keys that are there.
  size_t present() const { return present_; }
  // Whether the room that the registry has left can suffice for all others. It may not suffice even
  // so: names that have neighbours take more.
  bool MayFit() const;
  // Creates all others. The last one gets the default value, if there is any. Returns a status;
  // after a failure those that were created are deleted again.
  unsigned int Create(const unsigned long long* defaultValue);
  // Decodes the file again and deletes the stray keys that Create has made. False when it cannot be
  // decoded, the failure has been printed; *result is a status otherwise.
  bool DeleteStrays(unsigned int* result);

 private:
  bool IsOnTheWay(const std::string& path) const;
  std::vector<std::string> Strays(const Content& after) const;
  unsigned int Delete(const std::string& path);

  struct Mark {
    unsigned int depth;
    std::string name;
  };

  Session& session_;
  std::vector<std::string> names_;
  size_t present_;
  std::vector<Mark> before_;  // all keys that were there, in the order of Content
};

}  // namespace yaxreg
