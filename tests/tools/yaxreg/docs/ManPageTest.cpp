#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>
#include <vector>

#include "tools/yaxreg/docs/ManPage.h"
#include "tools/yaxreg/verbs/VerbTable.h"

namespace {

std::vector<std::string> LinesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// The part of the page about a verb.
std::string SectionOf(const std::string& page, const yaxreg::Verb& verb) {
  const size_t begin = page.find("\n.SS " + std::string(verb.name) + " \\- ");
  if (begin == std::string::npos) return "";
  return page.substr(begin, page.find("\n.S", begin + 1) - begin);
}

void ExpectIn(const std::string& section, const std::string& part) {
  EXPECT_NE(std::string::npos, section.find(part)) << part << " is not in" << section;
}

TEST(ManPage, EscapesWhatTroffTakesForItsOwn) {
  EXPECT_EQ("a\\-b \\e \\(aq \\(ga \\(ha \\(ti", yaxreg::Troff("a-b \\ ' ` ^ ~"));
  EXPECT_EQ("\\&.a\n\\&\\(aqb\nc.", yaxreg::Troff(".a\n'b\nc."));
}

TEST(ManPage, BeginsSentencesOnTheirOwnLinesAndBreaksLongOnes) {
  EXPECT_EQ("One.\nTwo, e.g. three.\n", yaxreg::TroffParagraph("One. Two, e.g. three."));
  const std::string half(40, 'a');
  const std::string fits(39, 'b');
  EXPECT_EQ(half + " " + fits + "\n\\&.c\n", yaxreg::TroffParagraph(half + " " + fits + " .c"));
  EXPECT_EQ(half + "\n" + fits + "b\n", yaxreg::TroffParagraph(half + " " + fits + "b"));
}

// "make update-pages" renews the kept page.
TEST(ManPage, IsKeptAsItIsMade) {
  std::ifstream in(YAX_SOURCE_DIR "/tools/yaxreg/pages/yaxreg.1.in", std::ios::binary);
  const std::string kept((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  EXPECT_TRUE(kept == yaxreg::ManPage(yaxreg::AllVerbs(), "@PROJECT_VERSION@"))
      << "run make update-pages";
}

TEST(ManPage, HasTheSectionsInTheirOrder) {
  const std::string page = yaxreg::ManPage(yaxreg::AllVerbs(), "1.2.3");
  size_t at = 0;
  for (const char* section :
       {"\n.TH YAXREG 1 ", "\"yaxreg 1.2.3\"\n", "\n.SH NAME\nyaxreg \\- ", "\n.SH SYNOPSIS\n",
        "\n.SH DESCRIPTION\n", "\n.SH VERBS\n", "\n.SH VALUE TYPES\n", "\n.SH EXIT STATUS\n",
        "\n.SH STATUSES\n", "\n.SH JSON\n", "\n.SH NOTES\n", "\n.SH EXAMPLES\n",
        "\n.SH SEE ALSO\n"}) {
    const size_t found = page.find(section, at);
    ASSERT_NE(std::string::npos, found) << section;
    at = found;
  }
}

TEST(ManPage, TellsEverythingThatTheTableTellsOfAVerb) {
  const std::string page = yaxreg::ManPage(yaxreg::AllVerbs(), "1.2.3");
  for (const yaxreg::Verb& verb : yaxreg::AllVerbs().verbs) {
    const std::string section = SectionOf(page, verb);
    ExpectIn(section, "\\fByaxreg " + std::string(verb.name) + "\\fR ");
    ExpectIn(section, " \\- " + yaxreg::Troff(verb.summary) + "\n");
    EXPECT_EQ(std::string::npos, section.find(yaxreg::Troff(verb.summary) + "."));
    ExpectIn(section, yaxreg::TroffParagraph(verb.description));
    ExpectIn(section, ".nf\n" + yaxreg::Troff(verb.example) + "\n.fi\n");
    for (const yaxreg::Argument& argument : verb.arguments) {
      ExpectIn(section, ".TP\n\\fI" + std::string(argument.name) + "\\fR\n" +
                            yaxreg::TroffParagraph(std::string(argument.help) + "."));
    }
    for (const yaxreg::Option& option : verb.options) {
      ExpectIn(section, yaxreg::TroffParagraph(std::string(option.help) + "."));
      if (option.value != nullptr)
        ExpectIn(section, " \\fI" + std::string(option.value) + "\\fR\n");
    }
  }
}

TEST(ManPage, WritesOptionsSoThatTheyCanBeCopied) {
  const std::string page = yaxreg::ManPage(yaxreg::AllVerbs(), "1.2.3");
  ExpectIn(page, "\n.TP\n\\fB\\-d\\fR, \\fB\\-\\-depth\\fR \\fIN\\fR\nShow only");
  ExpectIn(page, "\n.TP\n\\fB\\-\\-raw\\fR\nWrite");
  ExpectIn(page, "\n.TP\n\\fB\\-\\-json\\fR\nPrint one JSON");
  ExpectIn(page, "\n\\fByaxreg tree\\fR \\fIFILE [PATH]\\fR [\\fIoptions\\fR]\n");
  ExpectIn(page, "\n\\fByaxreg create\\fR \\fIFILE\\fR\n");
}

TEST(ManPage, TellsEveryExitCode) {
  const std::string page = yaxreg::ManPage(yaxreg::AllVerbs(), "1.2.3");
  for (const char* code : {"0", "1", "2", "3", "4"}) {
    ExpectIn(page, "\n.TP\n\\fB" + std::string(code) + "\\fR\n");
  }
}

TEST(ManPage, TellsStatusesWithTheirWordsAndExitCodes) {
  const std::string page = yaxreg::ManPage(yaxreg::AllVerbs(), "1.2.3");
  ExpectIn(page, "\n.TP\n\\fB2\\fR (1)\nkey or value not found.\n");
  ExpectIn(page, "\n.TP\n\\fB59\\fR (3)\nnot a registry file, or damaged.\n");
  ExpectIn(page, "\n.TP\n\\fB75\\fR (1)\na limit was reached.\n");
  EXPECT_EQ(std::string::npos, page.find("unknown status"));
  const size_t begin = page.find("\n.SH STATUSES\n");
  const std::string section = page.substr(begin, page.find("\n.SH ", begin + 1) - begin);
  size_t count = 0;
  for (size_t at = section.find("\n.TP\n"); at != std::string::npos;
       at = section.find("\n.TP\n", at + 1)) {
    ++count;
  }
  EXPECT_EQ(15u, count);
}

TEST(ManPage, TellsValueTypesAndOptionsThatAreRequired) {
  const std::string page = yaxreg::ManPage(yaxreg::AllVerbs(), "1.2.3");
  ExpectIn(page, "\n.SH VALUE TYPES\n.TP\n\\fB0\\fR\nA whole number of 64 bits.\n");
  yaxreg::VerbTable table = yaxreg::AllVerbs();
  for (yaxreg::Verb& verb : table.verbs) {
    if (verb.name == std::string("repair")) {
      verb.options = {{"-o,--output", "NEW", "REQUIRED. The file to make", true}};
    }
  }
  const std::string required = yaxreg::ManPage(table, "1.2.3");
  ExpectIn(required,
           "\n\\fByaxreg repair\\fR \\fIFILE\\fR \\fB\\-\\-output\\fR \\fINEW\\fR\n.PP\n");
  ExpectIn(required, "\nREQUIRED.\n");
}

// A line that begins with a dot is a request; others of the page's own would be a mistake.
TEST(ManPage, HasNoLineThatTroffTakesWrong) {
  for (const std::string& line : LinesOf(yaxreg::ManPage(yaxreg::AllVerbs(), "1.2.3"))) {
    ASSERT_FALSE(line.empty());
    EXPECT_LE(line.size(), 100u) << line;
    EXPECT_NE('\'', line[0]) << line;
    if (line[0] != '.') {
      for (size_t i = 0; i < line.size(); ++i) {
        EXPECT_TRUE(line[i] != '-' || line[i - 1] == '\\') << line;
      }
      continue;
    }
    const std::string request = line.substr(0, line.find(' '));
    const std::vector<std::string> known = {".\\\"", ".TH", ".SH", ".SS", ".TP", ".PP",
                                            ".RS",   ".RE", ".nf", ".fi", ".br"};
    EXPECT_NE(known.end(), std::find(known.begin(), known.end(), request)) << line;
  }
}

}  // namespace
