#include "tools/yaxreg/docs/ManPage.h"

#include <cctype>
#include <sstream>

#include "registry/base/RegistryStatus.h"
#include "tools/yaxreg/cli/CommandLine.h"
#include "tools/yaxreg/cli/Invocation.h"

namespace yaxreg {

namespace {

// When the words of the page itself were last changed.
constexpr char kDate[] = "2026-11-21";

constexpr char kDescription[] =
    "yaxreg works on registry files: files that hold a tree of keys, each with an owner, rights, "
    "an optional default value and typed values. It needs no other program and no library of the "
    "registry on the machine. Verbs that only look open the file for reading alone, so that they "
    "work on files that must not be written, and show what can be read of a damaged file. A PATH "
    "is the names of the keys from the root down, separated by slashes; one slash at its beginning "
    "is ignored, and the empty path is the root. Changes are made as the administrator, unless an "
    "option tells a user, whose rights then count.";

constexpr char kPlaces[] =
    "Verbs of one value take key and value as two words, PATH NAME, or as one, PATH:NAME, which is "
    "cut at its last colon. ls, get and find take patterns, too: * stands for any characters of "
    "a name, ? for one, and ** alone for any number of names, also none; behind a backslash a "
    "character stands for itself. A key or value that has such a name is taken before a pattern.";

constexpr char kWords[] =
    "Options may stand anywhere before a word --; behind it all words are arguments. A name or "
    "other argument that begins with a dash, such as the name -x or the rights -:r, needs -- "
    "before it, with all options before that: yaxreg get --signed -- device.rce network -x.";

constexpr char kOutput[] =
    "Plain output is for people: control characters in names and texts are shown as \\x and two "
    "hexadecimal digits, a backslash as two. It is coloured on a terminal, unless the environment "
    "variable NO_COLOR is set to something. Failures are one line on the standard error.";

constexpr char kSideFolder[] =
    "Programs may keep the journals of their registries in a folder of their own (sideFolder of "
    "RegistryOptions). The environment variable YAX_SIDE_FOLDER names it for yaxreg, which then "
    "sees what a program that died in a change has left there, and shares the registry with those "
    "that run.";

constexpr char kJson[] =
    "Print one JSON document on the standard output. A verb that cannot do its work prints none, "
    "only the line on the standard error.";

constexpr char kNames[] =
    "A part of a name that cannot be read in a damaged file is shown as the number of its record, "
    "such as (0x500). Keys and values that nothing leads to any more are shown below a key "
    "lost+found, which is in no file, by the numbers of their records, such as (key 0x200) and "
    "(value 0x100). repair saves them under these names.";

struct Item {
  const char* name;
  const char* meaning;
};

constexpr Item kTypes[] = {
    {"0", "A whole number of 64 bits"},
    {"1", "A text; the zero byte that ends it is stored, too"},
    {"2", "Bytes"},
    {"3", "Bytes of a kind that programs agree upon"},
    {"4",
     "The same; but programs that read with this type ask for the place of the data in the file"},
    {"5", "The same as 3"},
};
constexpr char kTypeLimits[] =
    "Data has at most 1024 bytes, of which a text needs one for its end: it has at most 1023. The "
    "name of a value has at most 31 bytes.";

constexpr char kStatuses[] =
    "Where the registry refuses something, the line on the standard error ends in its status. The "
    "exit status that it leads to stands in parentheses.";
constexpr char kFull[] =
    "Status 75 for what creates something tells that the file is full or worn out: check and stat "
    "tell of what, and compact may help.";

constexpr char kJsonText[] =
    "Whole numbers above 2 to the power of 53 are decimal texts, because many programs read "
    "numbers as doubles. Texts whose bytes are no UTF-8 are {\"hex\": \"ff00\"}. Verbs that change "
    "something print whether anything was changed. export writes one document whatever the options "
    "are, and the same bytes for the same content on every machine: an object with the format, the "
    "version and the list of keys, each with its path below the exported key, owner, rights, "
    "watch, default (null if none is set) and values, newest first of those of one name, each with "
    "name, type and number, text or hex. import takes it, and documents in which all but the paths "
    "of keys, the names of values and their data is left out.";

constexpr char kNotes[] =
    "Other programs may have the file open: what is read is the file as it is between two changes, "
    "and what a call changes is one change, with which the others go on; they wait with their own "
    "until it is made. compact and repair --in-place rewrite the file where it is. A program that "
    "has it open without a journal shares it with nobody: status 28.";

constexpr char kSeeAlso[] =
    "The pages of libYAX: docs/json.md (the JSON of all verbs), docs/behaviour.md (what may "
    "surprise; what wears a file out), docs/format.md (the file, byte by byte).";

constexpr unsigned int kMaxStatus = 255;  // the registry's are small numbers

struct Exit {
  ExitCode code;
  const char* meaning;
};
constexpr Exit kExits[] = {
    {kDone, "Done"},
    {kNo,
     "No: there is no such key or value, or there is one already, the files differ, the rights or "
     "the room in the file do not suffice"},
    {kUsage, "The command line or the input is wrong"},
    {kDamaged, "The file is damaged, or is no registry file"},
    {kFailed, "A file or the output cannot be read or written"},
};

struct Example {
  const char* what;
  const char* commands;
};
constexpr Example kExamples[] = {
    {"Make a registry with one key that has one value, and look at it:",
     "yaxreg create device.rce\n"
     "yaxreg mkkey -p device.rce network/eth0\n"
     "yaxreg add device.rce network/eth0 mtu --int 1500\n"
     "yaxreg tree device.rce"},
    {"Take a part of it over into another registry:",
     "yaxreg export device.rce network | yaxreg import other.rce network"},
    {"Save what can be saved, if the file is damaged:",
     "yaxreg check device.rce\n"
     "test $? -ne 3 || yaxreg repair device.rce -o saved.rce"},
    {"Tell a monitor when a file is damaged, or fewer than 1000 slots of a kind are left:",
     "yaxreg check --quiet --min-left 1000 device.rce || logger \"look after device.rce\""},
};

std::string Bold(const std::string& text) {
  return "\\fB" + Troff(text) + "\\fR";
}

std::string Italic(const std::string& text) {
  return "\\fI" + Troff(text) + "\\fR";
}

std::string Sentence(const std::string& text) {
  return TroffParagraph(text + ".");
}

// An entry of a list: its head, and what there is to say about it.
std::string Entry(const std::string& head, const std::string& text) {
  return ".TP\n" + head + "\n" + text;
}

std::string Commands(const std::string& lines) {
  std::string page = ".PP\n.RS 4\n.nf\n";
  std::istringstream in(lines);
  for (std::string line; std::getline(in, line);) page += Troff(line) + "\n";
  return page + ".fi\n.RE\n";
}

// "-d,--depth" and "N" as "-d, --depth N".
std::string HeadOf(const Option& option) {
  std::string head;
  std::istringstream names(option.names);
  for (std::string name; std::getline(names, name, ',');) {
    head += (head.empty() ? "" : ", ") + Bold(name);
  }
  return option.value == nullptr ? head : head + " " + Italic(option.value);
}

// Options that must be given stand with the arguments.
std::string UsageOf(const Verb& verb) {
  std::string usage = Bold("yaxreg " + std::string(verb.name)) + " " + Italic(ArgumentsOf(verb));
  bool hasOthers = false;
  for (const Option& option : verb.options) {
    if (option.isRequired) usage += " " + Bold(LongName(option)) + " " + Italic(option.value);
    hasOthers = hasOthers || !option.isRequired;
  }
  return usage + (hasOthers ? " [" + Italic("options") + "]\n" : "\n");
}

std::string SectionOf(const Verb& verb) {
  std::string page =
      ".SS " + Troff(verb.name) + " \\- " + Troff(verb.summary) + "\n" + UsageOf(verb);
  page += ".PP\n" + TroffParagraph(verb.description);
  for (const Argument& argument : verb.arguments) {
    page += Entry(Italic(argument.name), Sentence(argument.help));
  }
  for (const Option& option : verb.options) page += Entry(HeadOf(option), Sentence(option.help));
  return page + ".PP\nExample:\n" + Commands(verb.example);
}

std::string Synopsis() {
  return ".SH SYNOPSIS\n" + Bold("yaxreg") + " " + Italic("VERB FILE") + " [" + Italic("argument") +
         " ...] [" + Italic("option") + " ...]\n.br\n" + Bold("yaxreg") + " [" + Italic("VERB") +
         "] " + Bold("--help") + "\n.br\n" + Bold("yaxreg --version") + "\n";
}

std::string Description() {
  return ".SH DESCRIPTION\n" + TroffParagraph(kDescription) + ".PP\n" + TroffParagraph(kPlaces) +
         ".PP\n" + TroffParagraph(kWords) + ".PP\n" + TroffParagraph(kOutput) + ".PP\n" +
         TroffParagraph(kSideFolder) + ".PP\n" + TroffParagraph(kNames) +
         ".PP\nEvery verb has these options:\n" + Entry(Bold("--json"), TroffParagraph(kJson)) +
         Entry(Bold("-h") + ", " + Bold("--help"), Sentence("Print a short help"));
}

std::string Verbs(const VerbTable& table) {
  std::string page = ".SH VERBS\n";
  for (const Verb& verb : table.verbs) page += SectionOf(verb);
  return page;
}

std::string ExitStatus() {
  std::string page = ".SH EXIT STATUS\n";
  for (const Exit& exit : kExits) {
    page += Entry(Bold(std::to_string(exit.code)), Sentence(exit.meaning));
  }
  return page;
}

std::string ValueTypes() {
  std::string page = ".SH VALUE TYPES\n";
  for (const Item& type : kTypes) page += Entry(Bold(type.name), Sentence(type.meaning));
  return page + ".PP\n" + TroffParagraph(kTypeLimits);
}

std::string Statuses() {
  using tamu::registry::StatusText;
  std::string page = ".SH STATUSES\n" + TroffParagraph(kStatuses);
  const std::string unknown = StatusText(kMaxStatus + 1);
  for (unsigned int status = 1; status <= kMaxStatus; ++status) {
    if (StatusText(status) == unknown) continue;
    const std::string code = std::to_string(ExitCodeOf(status));
    page += Entry(Bold(std::to_string(status)) + " (" + code + ")", Sentence(StatusText(status)));
  }
  return page + ".PP\n" + TroffParagraph(kFull);
}

std::string Examples() {
  std::string page = ".SH EXAMPLES\n";
  for (const Example& example : kExamples) {
    if (&example != kExamples) page += ".PP\n";
    page += TroffParagraph(example.what) + Commands(example.commands);
  }
  return page;
}

}  // namespace

std::string ArgumentsOf(const Verb& verb) {
  std::string text;
  for (const Argument& argument : verb.arguments) {
    const std::string name = argument.name;
    text += (text.empty() ? "" : " ") + (argument.isRequired ? name : "[" + name + "]");
  }
  return text;
}

std::string Troff(const std::string& text) {
  std::string result;
  bool isLineStart = true;
  for (const char c : text) {
    if (isLineStart && (c == '.' || c == '\'')) result += "\\&";
    isLineStart = c == '\n';
    switch (c) {
      case '\\':
        result += "\\e";
        break;
      case '-':
        result += "\\-";
        break;
      case '\'':
        result += "\\(aq";
        break;
      case '`':
        result += "\\(ga";
        break;
      case '^':
        result += "\\(ha";
        break;
      case '~':
        result += "\\(ti";
        break;
      default:
        result += c;
    }
  }
  return result;
}

std::string TroffParagraph(const std::string& text) {
  std::string result;
  std::string line;
  std::istringstream words(text);
  const auto endLine = [&] {
    if (!line.empty()) result += line + "\n";
    line.clear();
  };
  bool isSentenceEnd = false;
  for (std::string word; words >> word;) {
    const bool isSentenceStart = isSentenceEnd && std::islower(word[0]) == 0;
    std::string shown = Troff(word);
    if (isSentenceStart || line.size() + 1 + shown.size() > 80) endLine();
    line += (line.empty() ? "" : " ") + shown;
    isSentenceEnd = word.back() == '.';
  }
  endLine();
  return result;
}

std::string ManPage(const VerbTable& table, const std::string& version) {
  std::string page = ".\\\" Made from the table of verbs, do not edit.\n";
  page += ".TH YAXREG 1 " + std::string(kDate) + " \"yaxreg " + Troff(version) + "\"\n";
  page += ".SH NAME\nyaxreg \\- see, change, check, repair and move registry files\n";
  page += Synopsis() + Description() + Verbs(table) + ValueTypes() + ExitStatus() + Statuses();
  page += ".SH JSON\n" + TroffParagraph(kJsonText);
  page += ".SH NOTES\n" + TroffParagraph(kNotes);
  return page + Examples() + ".SH SEE ALSO\n" + TroffParagraph(kSeeAlso);
}

}  // namespace yaxreg
