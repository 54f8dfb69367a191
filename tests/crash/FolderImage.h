// The files of a folder: names and bytes.
#pragma once

#include <map>
#include <string>

#include "tests/crash/Call.h"

namespace crash {

// Starts empty, and becomes what calls make of it.
class FolderImage {
 public:
  // Reads the files of a folder, all of different names.
  static FolderImage Of(const std::string& folder);

  void Apply(const Call& call);
  // A kWrite of which only the first `size` bytes were written.
  void ApplyTorn(const Call& call, unsigned int size);
  // The same for changes of names, and for the others.
  void ApplyToNames(const Call& call);
  void ApplyToBytes(const Call& call);

  // The number of the file at `name`; -1 for none.
  int NumberOf(const std::string& name) const;
  // The bytes of the file at `name`, which must be there.
  const std::string& BytesAt(const std::string& name) const { return files.at(names.at(name)); }

  // Makes the folder hold these files and nothing else.
  void PutInto(const std::string& folder) const;

  std::map<std::string, int> names;
  std::map<int, std::string> files;  // by number, also those that have lost their names
};

}  // namespace crash
