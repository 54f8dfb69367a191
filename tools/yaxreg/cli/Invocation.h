// One call of a verb: what was on its command line, and where its output goes.
#pragma once

#include <iosfwd>
#include <map>
#include <string>

#include "tools/yaxreg/cli/Verb.h"
#include "tools/yaxreg/text/ByteText.h"

namespace yaxreg {

struct Batch;

// What the output is.
enum class OutputKind {
  kPlain,            // a pipe or a file: gets what is stored as it is
  kTerminal,         // gets no control characters
  kColouredTerminal  // the same, in colours
};

// Colours for people; all texts are empty when there are to be none.
struct Palette {
  const char* key = "";    // names of keys
  const char* value = "";  // names of values
  const char* faint = "";  // types, counts, what matters less
  const char* good = "";
  const char* bad = "";
  const char* end = "";  // back to normal

  static Palette Coloured();
};

class Invocation {
 public:
  Invocation(std::istream& input, std::ostream& output, std::ostream& errors,
             OutputKind kind = OutputKind::kPlain)
      : in(input), out(output), err(errors), isTerminal(kind != OutputKind::kPlain) {
    if (kind == OutputKind::kColouredTerminal) palette = Palette::Coloured();
  }

  // Arguments by their name ("FILE"), options by their long name ("--long", without value: "").
  bool Has(const std::string& name) const { return given.count(name) != 0; }
  // What was given, "" if nothing was.
  std::string Text(const std::string& name) const;
  // The arguments FILE and PATH, which most verbs have; a leading "/" of the path is taken off.
  std::string File() const { return Text("FILE"); }
  std::string Path() const;
  bool isJson() const { return Has("--json"); }

  // Prints the one line of a failure and answers `code`. Texts of a registry's status end it:
  // "yaxreg: FILE: PATH: REASON (status 2)". Empty parts are left out. File and path are printed as
  // Shown() makes them; in the reason only backslashes stay, since they may come from there.
  ExitCode Fail(ExitCode code, const std::string& file, const std::string& path,
                const std::string& reason);
  // With a status of registry/base/RegistryStatus.h; the reason defaults to its words.
  ExitCode FailWithStatus(unsigned int status, const std::string& file, const std::string& path,
                          const std::string& reason = "");
  // A line about something that is no failure.
  void Warn(const std::string& file, const std::string& path, const std::string& text);

  std::istream& in;
  std::ostream& out;
  std::ostream& err;
  const bool isTerminal;     // of `out`
  unsigned int columns = 0;  // of a terminal that `out` is; 0: lines of a help may have any length
  Palette palette;
  std::map<std::string, std::string> given;
  std::string failureNote;       // what Fail adds to its line, of this call
  const Batch* batch = nullptr;  // that the call is a command of; verbs/Batch.h
};

// The exit code that a status of the registry leads to: 1 for kNoRight, kNotFound, kExists,
// kNoData, kLimit, kNoSpace, kBusy, kNotSupported; 2 for kBadArgument; 3 for kInvalidFile; else 4.
ExitCode ExitCodeOf(unsigned int status);

}  // namespace yaxreg
