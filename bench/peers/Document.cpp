#include "bench/peers/Document.h"

#include <sys/utsname.h>
#include <unistd.h>

#include <ctime>
#include <fstream>
#include <iterator>

#include "bench/peers/Peer.h"

namespace tamu::bench {

namespace {

std::string ReadFile(const std::string& path) {
  std::ifstream file(path);
  Expect(file.good(), ("cannot read " + path).c_str());
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string ProcessorText() {
  std::ifstream file("/proc/cpuinfo");
  for (std::string line; std::getline(file, line);) {
    if (line.compare(0, 10, "model name") == 0) return line.substr(line.find(':') + 2);
  }
  return "a processor that does not tell its name";
}

}  // namespace

void WriteFile(const std::string& path, const std::string& text) {
  std::ofstream file(path);
  file << text;
  Expect(file.good(), ("cannot write " + path).c_str());
}

void ReplacePart(const std::string& path, const std::string& name, const std::string& text) {
  std::string content = ReadFile(path);
  const std::string begin = "<!-- begin " + name + " -->\n";
  const size_t from = content.find(begin);
  const size_t to = content.find("<!-- end " + name + " -->");
  Expect(from != std::string::npos && to != std::string::npos, (path + " has no " + name).c_str());
  content.replace(from + begin.size(), to - from - begin.size(), text);
  WriteFile(path, content);
}

std::string MachineText() {
  utsname system;
  uname(&system);
  std::string release = system.release;
  const size_t end = release.find('.', release.find('.') + 1);
  return std::to_string(sysconf(_SC_NPROCESSORS_ONLN)) + " cores, " + ProcessorText() + ", Linux " +
         release.substr(0, end);
}

std::string DateText() {
  const std::time_t now = std::time(nullptr);
  char text[16];
  std::strftime(text, sizeof text, "%Y-%m-%d", std::gmtime(&now));
  return text;
}

}  // namespace tamu::bench
