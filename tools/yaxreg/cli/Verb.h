// What yaxreg can do, as data: the command line, the man page and the completion come from it.
#pragma once

#include <vector>

namespace yaxreg {

class Invocation;

// The exit codes of every verb. Scripts rely on them, never renumber.
enum ExitCode {
  kDone = 0,
  kNo = 1,       // not found, exists, differs, no right, no room
  kUsage = 2,    // the command line or the input is wrong
  kDamaged = 3,  // the file is damaged, or no registry
  kFailed = 4    // input/output
};

struct Argument {
  const char* name;  // "FILE", "PATH"; unique within the verb
  const char* help;  // one line, no full stop
  bool isRequired;
  bool isFile;  // completed as a file name
};

struct Option {
  const char* names;  // "-l,--long" or "--root"
  const char* value;  // "DIR"; null for a switch
  const char* help;   // one line, no full stop
  bool isRequired = false;
};

struct Verb {
  const char* name;         // "tree"; "comp ls" is the verb ls of the group comp
  const char* summary;      // one line, no full stop
  const char* description;  // some sentences
  std::vector<Argument> arguments;
  std::vector<Option> options;  // --json comes with every verb
  const char* example;          // one command line that works, given the file
  ExitCode (*run)(Invocation& call);
  bool isAlone = false;  // it is no command of a batch
};

// A group of verbs, "comp".
struct VerbGroup {
  const char* name;
  const char* summary;
};

// What a program can do. Names of verbs that begin with a word of their own and a blank belong to
// the group of that name.
struct VerbTable {
  std::vector<Verb> verbs;  // in the order in which help shows them
  std::vector<VerbGroup> groups;
};

}  // namespace yaxreg
