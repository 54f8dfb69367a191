#include "bench/peers/Phases.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

namespace tamu::bench {

namespace {

using Peers = std::vector<std::unique_ptr<Peer>>;

constexpr unsigned int kRootColumn = kFileColumn + 1;
constexpr unsigned int kKeyColumn = kFileColumn + 2;

// A folder that is empty, and the working folder until the end of the scope.
class Folder {
 public:
  explicit Folder(const char* name) : before_(std::filesystem::current_path()), name_(name) {
    std::filesystem::remove_all(name_);
    std::filesystem::create_directory(name_);
    std::filesystem::current_path(name_);
  }
  ~Folder() {
    std::filesystem::current_path(before_);
    std::filesystem::remove_all(name_);
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

 private:
  std::filesystem::path before_;
  std::string name_;
};

// All peers, open, with the data set in them.
class OpenPeers {
 public:
  OpenPeers(const DataSet& set, Sync sync) : peers_(AllPeers()) {
    for (unsigned int i = 0; i < kColumns; ++i) {
      if (i > kFileColumn) continue;
      peers_[i]->Open(".", Sync::kNever);
      Build(*peers_[i], set);
      if (sync == Sync::kNever) continue;
      peers_[i]->Close();
      peers_[i]->Open(".", sync);
    }
    for (unsigned int i = kRootColumn; i < kColumns; ++i) peers_[i]->Open(".", sync);
  }
  ~OpenPeers() {
    for (const auto& each : peers_) each->Close();
  }
  OpenPeers(const OpenPeers&) = delete;
  OpenPeers& operator=(const OpenPeers&) = delete;

  Peer& operator[](unsigned int i) { return *peers_[i]; }

 private:
  Peers peers_;
};

RowResult& AddRow(Results* results, const std::string& name, double goalFile, double goalRoot,
                  double goalKey) {
  RowResult row;
  row.name = name;
  row.goals.fill(0);
  row.goals[kFileColumn] = goalFile;
  row.goals[kRootColumn] = goalRoot;
  row.goals[kKeyColumn] = goalKey;
  results->rows.push_back(row);
  return results->rows.back();
}

bool IsMeasured(const Row& row, unsigned int column) {
  if (column == kKeyColumn) return row.goalKey > 0;
  return column != kRootColumn || row.goalRoot >= 0;
}

bool MeasureRound(OpenPeers& peers, const DataSet& set, unsigned int round,
                  std::vector<RowResult>::iterator first) {
  bool isBetter = false;
  for (const Row& row : AllRows()) {
    for (unsigned int i = 0; i < kColumns; ++i) {
      if (!IsMeasured(row, i)) continue;
      const unsigned int column = (i + round) % kColumns;
      if (!IsMeasured(row, column)) continue;
      if (first->cells[column].Add(Measure(row, peers[column], set, round * 977))) isBetter = true;
    }
    ++first;
  }
  return isBetter;
}

}  // namespace

void MeasureRows(const DataSet& set, const Effort& effort, Results* results) {
  const Folder folder("rows");
  OpenPeers peers(set, Sync::kNever);
  for (unsigned int i = 0; i <= kFileColumn; ++i) MakeLargeValues(peers[i], set);
  const size_t first = results->rows.size();
  for (const Row& row : AllRows()) {
    AddRow(results, row.name, row.goalFile, std::max(row.goalRoot, 0.0),
           std::max(row.goalKey, 0.0));
  }
  unsigned int still = 0;
  unsigned int round = 0;
  for (; round < effort.most && still < effort.still; ++round) {
    const auto at = results->rows.begin() + static_cast<std::ptrdiff_t>(first);
    still = MeasureRound(peers, set, round, at) ? 0 : still + 1;
  }
  results->rounds = round;
}

void MeasureBuilding(const DataSet& set, unsigned int rounds, Results* results) {
  RowResult& row = AddRow(results, "build D", 0.9, 0.9, 0);
  for (unsigned int round = 0; round < rounds; ++round) {
    for (unsigned int i = 0; i < kKeyColumn; ++i) {
      const Folder folder("building");
      Peers peers = AllPeers();
      peers[i]->Open(".", Sync::kNever);
      peers[i]->Prepare();
      const double began = Now();
      Build(*peers[i], set);
      row.cells[i].Add(Now() - began);
      peers[i]->Close();
    }
  }
}

void OpenOnce(unsigned int column, const char* key) {
  const Peers peers = AllPeers();
  unsigned char buffer[64];
  const double began = Now();
  peers[column]->Open(".", Sync::kNever);
  Expect(peers[column]->Main().Get(key, "mode", buffer, sizeof buffer) > 0, "get");
  peers[column]->Close();
  std::printf("%.0f\n", Now() - began);
}

namespace {

double OpenInNewProcess(const char* program, unsigned int column, const std::string& key) {
  const std::string command =
      std::string(program) + " --open " + std::to_string(column) + " " + key;
  FILE* pipe = popen(command.c_str(), "r");
  double took = 0;
  Expect(pipe != nullptr && std::fscanf(pipe, "%lf", &took) == 1, "a new process");
  pclose(pipe);
  return took;
}

}  // namespace

void MeasureOpening(const DataSet& set, unsigned int rounds, const char* program,
                    Results* results) {
  const Folder folder("opening");
  { OpenPeers peers(set, Sync::kNever); }
  RowResult here = AddRow(results, "open + get + close", 0.3, 0, 0);
  RowResult anew = AddRow(results, "open + get + close, new process", 1.0, 0, 0);
  const Peers peers = AllPeers();
  unsigned char buffer[64];
  for (unsigned int round = 0; round < rounds; ++round) {
    const std::string& key = set.keys[set.order[round % set.order.size()]];
    for (unsigned int i = 0; i <= kFileColumn; ++i) {
      const double began = Now();
      peers[i]->Open(".", Sync::kNever);
      Expect(peers[i]->Main().Get(key.c_str(), "mode", buffer, sizeof buffer) > 0, "get");
      peers[i]->Close();
      here.cells[i].Add(Now() - began);
      if (round % 4 == 0) anew.cells[i].Add(OpenInNewProcess(program, i, key));
    }
  }
  results->rows.end()[-2] = here;
  results->rows.end()[-1] = anew;
}

void MeasureLoading(unsigned int rounds, Results* results) {
  const Folder folder("loading");
  const DataSet set(DataSet::kUsualCount);
  const std::unique_ptr<Peer> peer = MakeYaxPeer(Way::kRoot);
  peer->Open(".", Sync::kNever);
  Build(*peer, set);
  RowResult& row = AddRow(results, "load everything", 0, 0, 0);
  for (unsigned int round = 0; round < rounds; ++round) {
    const double began = Now();
    peer->Prepare();
    row.cells[kRootColumn].Add(Now() - began);
  }
  peer->Close();
}

void MeasureDurable(const DataSet& set, unsigned int rounds, Results* results) {
  const Folder folder("durable");
  OpenPeers peers(set, Sync::kAlways);
  RowResult& row = AddRow(results, "set integer, durable", 0.6, 0.6, 0);
  Row few = RowNamed("set integer");
  few.count = 10;
  for (unsigned int round = 0; round < rounds; ++round) {
    for (unsigned int i = 0; i < kKeyColumn; ++i) {
      row.cells[i].Add(Measure(few, peers[i], set, round * 31));
    }
  }
}

void MeasureSizes(const char* rowName, unsigned int rounds, Results* results) {
  Course course{rowName, "keys", {100, 300, 1000, 3000, 9000}, {}};
  for (unsigned int i = 0; i < kKeyColumn; ++i) course.lines.push_back({kColumnNames[i], {}});
  for (const unsigned int count : course.counts) {
    const Folder folder("sizes");
    const DataSet set(count);
    OpenPeers peers(set, Sync::kNever);
    Cell cells[kKeyColumn];
    for (unsigned int round = 0; round < rounds; ++round) {
      for (unsigned int i = 0; i < kKeyColumn; ++i) {
        cells[i].Add(Measure(RowNamed(rowName), peers[i], set, round * 977));
      }
    }
    for (unsigned int i = 0; i < kKeyColumn; ++i)
      course.lines[i].values.push_back(cells[i].Least());
  }
  results->courses.push_back(course);
}

}  // namespace tamu::bench
