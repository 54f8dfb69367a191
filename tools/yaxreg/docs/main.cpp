// yaxreg_docs: writes the manual page and the completions of yaxreg into the folder that keeps
// them.
#include <fstream>
#include <iostream>
#include <string>

#include "tools/yaxreg/docs/Completion.h"
#include "tools/yaxreg/docs/FishCompletion.h"
#include "tools/yaxreg/docs/ManPage.h"
#include "tools/yaxreg/docs/ZshCompletion.h"
#include "tools/yaxreg/verbs/VerbTable.h"

namespace {

bool Write(const std::string& path, const std::string& text) {
  std::ofstream out(path, std::ios::binary);
  out << text;
  out.close();
  if (!out) std::cerr << "yaxreg_docs: " << path << " cannot be written\n";
  return static_cast<bool>(out);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: yaxreg_docs FOLDER\n";
    return 2;
  }
  const std::string folder = argv[1];
  // The version is put in when the page is configured.
  const yaxreg::VerbTable& table = yaxreg::AllVerbs();
  const bool written =
      Write(folder + "/yaxreg.1.in", yaxreg::ManPage(table, "@PROJECT_VERSION@")) &&
      Write(folder + "/completions/yaxreg", yaxreg::BashCompletion(table)) &&
      Write(folder + "/completions/yaxreg.fish", yaxreg::FishCompletion(table)) &&
      Write(folder + "/completions/_yaxreg", yaxreg::ZshCompletion(table));
  return written ? 0 : 1;
}
