// yaxreg_docs: writes the manual page and the completion of yaxreg, when they are built.
#include <fstream>
#include <iostream>
#include <string>

#include "tools/yaxreg/cli/Version.h"
#include "tools/yaxreg/docs/Completion.h"
#include "tools/yaxreg/docs/ManPage.h"

int main(int argc, char** argv) {
  const std::string kind = argc == 3 ? argv[1] : "";
  if (kind != "man" && kind != "completion") {
    std::cerr << "usage: yaxreg_docs man|completion FILE\n";
    return 2;
  }
  std::ofstream out(argv[2], std::ios::binary);
  out << (kind == "man" ? yaxreg::ManPage(YAXREG_VERSION) : yaxreg::BashCompletion());
  out.close();
  if (out) return 0;
  std::cerr << "yaxreg_docs: " << argv[2] << " cannot be written\n";
  return 1;
}
