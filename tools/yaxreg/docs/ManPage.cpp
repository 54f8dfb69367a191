#include "tools/yaxreg/docs/ManPage.h"

#include <cctype>
#include <sstream>

namespace yaxreg {

namespace {

// When the words of the page itself were last changed.
constexpr char kDate[] = "2026-11-21";

constexpr char kDescription[] =
    "yaxreg works on registry files: files that hold a tree of keys, each with an owner, rights, "
    "an "
    "optional default value and typed values. It needs no other program and no library of the "
    "registry on the machine. Verbs that only look open the file for reading alone, so that they "
    "work on files that must not be written, and show what can be read of a damaged file. "
    "A PATH is the names of the keys from the root down, separated by slashes; one slash at its "
    "beginning is ignored, and the empty path is the root. Changes are made as the administrator, "
    "unless an option tells a user, whose rights then count.";

constexpr char kOutput[] =
    "Plain output is for people: control characters in names and texts are shown as \\x and two "
    "hexadecimal digits, a backslash as two. It is coloured on a terminal, unless the environment "
    "variable NO_COLOR is set to something. Failures are one line on the standard error.";

constexpr char kJson[] =
    "Print one JSON document on the standard output. Bytes that are no UTF-8 are written as "
    "{\"hex\": \"ff00\"}, whole numbers above 2 to the power of 53 as decimal texts.";

constexpr char kNotes[] =
    "A registry file has no lock. Only one program may change it at a time: stop the others before "
    "verbs that change something, or make them wait by a lock of your own. Nobody may have the "
    "file open while compact works, since it puts a new file into the place of the old one; what a "
    "program writes into the old one afterwards is lost.";

struct Exit {
  ExitCode code;
  const char* meaning;
};
constexpr Exit kExits[] = {
    {kDone, "Done"},
    {kNo,
     "No: there is no such key or value, or there is one already, the files differ, the "
     "rights or the room in the file do not suffice"},
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
    {"Save what can be saved of a damaged file:",
     "yaxreg check device.rce || yaxreg repair device.rce -o saved.rce"},
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

std::string SectionOf(const Verb& verb) {
  std::string page =
      ".SS " + std::string(verb.name) + "\n" + Bold("yaxreg " + std::string(verb.name));
  page += " " + Italic(ArgumentsOf(verb));
  page += verb.options.empty() ? "\n" : " [" + Italic("options") + "]\n";
  page += ".PP\n" + Sentence(verb.summary) + TroffParagraph(verb.description);
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
  return ".SH DESCRIPTION\n" + TroffParagraph(kDescription) + ".PP\n" + TroffParagraph(kOutput) +
         ".PP\nEvery verb has these options:\n" + Entry(Bold("--json"), TroffParagraph(kJson)) +
         Entry(Bold("-h") + ", " + Bold("--help"), Sentence("Print a short help"));
}

std::string Verbs() {
  std::string page = ".SH VERBS\n";
  for (const Verb& verb : AllVerbs()) page += SectionOf(verb);
  return page;
}

std::string ExitStatus() {
  std::string page = ".SH EXIT STATUS\n";
  for (const Exit& exit : kExits) {
    page += Entry(Bold(std::to_string(exit.code)), Sentence(exit.meaning));
  }
  return page;
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

std::string ManPage(const std::string& version) {
  std::string page = ".\\\" Made from the table of verbs, do not edit.\n";
  page += ".TH YAXREG 1 " + std::string(kDate) + " \"yaxreg " + Troff(version) + "\"\n";
  page += ".SH NAME\nyaxreg \\- see, change, check, repair and move registry files\n";
  page += Synopsis() + Description() + Verbs() + ExitStatus();
  page += ".SH NOTES\n" + TroffParagraph(kNotes);
  return page + Examples();
}

}  // namespace yaxreg
