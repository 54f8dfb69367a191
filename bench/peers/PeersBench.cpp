// The library beside the stores that people would take instead: everything in one run, in turn.
//
//   yax_bench_peers [--quick] [--root FOLDER]
//
// Works in a folder of its own below the working folder. Prints the tables; with --root, writes
// what was measured into docs/ and README.md of that checkout. --quick: a few rounds only.
#include <unistd.h>

#include <cstring>
#include <filesystem>

#include "bench/peers/Document.h"
#include "bench/peers/Phases.h"
#include "bench/peers/Plot.h"

namespace tamu::bench {

namespace {

void Print(const std::string& text) {
  std::fputs(text.c_str(), stdout);
  std::fflush(stdout);
}

Results MeasureAll(bool isQuick, const char* program) {
  const unsigned int few = isQuick ? 2 : 10;
  const DataSet set(DataSet::kUsualCount);
  Results results;
  results.date = DateText();
  results.machine = MachineText();
  MeasureRows(set, isQuick ? Effort{3, 3} : Effort{80, 12}, &results);
  MeasureBuilding(set, few, &results);
  MeasureOpening(set, 20 * few, program, &results);
  MeasureLoading(2 * few, &results);
  MeasureDurable(set, 2 * few, &results);
  MeasureThreads(set, few, &results);
  MeasureSizes("get integer", few, &results);
  MeasureSizes("create + delete key", few, &results);
  return results;
}

std::string Summary(const Results& results) {
  std::string text = results.date + "; " + results.machine + "; " + std::to_string(results.rounds) +
                     " rounds.\n\n" + TableOf(results);
  for (const Course& course : results.courses)
    text += "\n" + course.name + ":\n\n" + TableOf(course);
  return text;
}

void WriteDocuments(const Results& results, const std::string& root) {
  const std::string folder = root + "/docs/performance";
  WriteFile(folder + "/results.json", JsonOf(results));
  WriteFile(folder + "/rows.svg", BarsOf(results));
  WriteFile(folder + "/threads.svg", LinesOf(results.courses[0], false));
  WriteFile(folder + "/get.svg", LinesOf(results.courses[1], true));
  WriteFile(folder + "/keys.svg", LinesOf(results.courses[2], true));
  ReplacePart(root + "/docs/performance.md", "figures", Summary(results));
  ReplacePart(root + "/docs/performance.md", "short", ShortTableOf(results));
  ReplacePart(root + "/README.md", "short", ShortTableOf(results));
}

}  // namespace

}  // namespace tamu::bench

int main(int count, char** arguments) {
  using namespace tamu::bench;
  bool isQuick = false;
  std::string root;
  for (int i = 1; i < count; ++i) {
    if (std::strcmp(arguments[i], "--open") == 0 && i + 2 < count) {
      OpenOnce(static_cast<unsigned int>(std::atoi(arguments[i + 1])), arguments[i + 2]);
      return 0;
    }
    if (std::strcmp(arguments[i], "--quick") == 0) isQuick = true;
    if (std::strcmp(arguments[i], "--root") == 0 && i + 1 < count) {
      root = std::filesystem::absolute(arguments[i + 1]);
    }
  }
  const std::string program = std::filesystem::canonical("/proc/self/exe");
  const std::filesystem::path before = std::filesystem::current_path();
  const std::string folder = "yax-bench-peers-" + std::to_string(getpid());
  std::filesystem::create_directory(folder);
  std::filesystem::current_path(folder);
  const Results results = MeasureAll(isQuick, program.c_str());
  std::filesystem::current_path(before);
  std::filesystem::remove_all(folder);
  Print(Summary(results));
  if (!root.empty()) WriteDocuments(results, root);
  return 0;
}
