#include "tools/yaxreg/selftest/TestFiles.h"

#include <unistd.h>

#include <fstream>

namespace yaxreg {

bool PutTestFile(const std::string& file, const std::string& bytes) {
  unlink(file.c_str());
  unlink((file + ".journal").c_str());
  std::ofstream out(file, std::ios::binary);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  out.close();
  return !out.fail();
}

}  // namespace yaxreg
