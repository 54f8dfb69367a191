// Reads by several threads together.
#include <algorithm>
#include <atomic>
#include <filesystem>
#include <thread>

#include "bench/peers/Phases.h"

namespace tamu::bench {

namespace {

constexpr double kDuration = 30e6;  // nanoseconds

// Reads of all readers together in a second.
double ReadsPerSecond(const std::vector<std::unique_ptr<Reader>>& readers, const DataSet& set) {
  std::atomic<bool> isOver{false};
  std::atomic<unsigned int> ready{0};
  std::atomic<unsigned long long> total{0};
  std::vector<std::thread> threads;
  for (const auto& each : readers) {
    threads.emplace_back([&, reader = each.get(), start = 997 * threads.size()] {
      unsigned char buffer[64];
      unsigned long long count = 0;
      ++ready;
      while (ready < readers.size()) std::this_thread::yield();
      for (size_t i = start; !isOver.load(std::memory_order_relaxed); ++i, ++count) {
        const std::string& key = set.keys[set.order[i % set.order.size()]];
        Expect(reader->Get(key.c_str(), "mode", buffer, sizeof buffer) > 0, "get");
      }
      total += count;
    });
  }
  const double began = Now();
  std::this_thread::sleep_for(std::chrono::nanoseconds(static_cast<long long>(kDuration)));
  isOver = true;
  for (std::thread& each : threads) each.join();
  return static_cast<double>(total) / (Now() - began) * 1e9;
}

double ReadsBy(Peer& peer, unsigned int threads, const DataSet& set) {
  std::vector<std::unique_ptr<Reader>> readers;
  peer.Prepare();
  for (unsigned int i = 0; i < threads; ++i) {
    readers.push_back(peer.MakeReader());
    if (readers.back() == nullptr) return 0;
  }
  return ReadsPerSecond(readers, set);
}

}  // namespace

void MeasureThreads(const DataSet& set, unsigned int rounds, Results* results) {
  constexpr unsigned int kLines = kFileColumn + 2;
  std::filesystem::remove_all("threads");
  std::filesystem::create_directory("threads");
  Course course{"reads in a microsecond", "threads", {1, 2, 4, 8}, {}};
  const std::vector<std::unique_ptr<Peer>> peers = AllPeers();
  for (unsigned int i = 0; i < kLines; ++i) {
    peers[i]->Open("threads", Sync::kNever);
    if (i <= kFileColumn) Build(*peers[i], set);
    course.lines.push_back({kColumnNames[i], std::vector<double>(course.counts.size(), 0)});
  }
  for (unsigned int round = 0; round < rounds; ++round) {
    for (size_t k = 0; k < course.counts.size(); ++k) {
      for (unsigned int i = 0; i < kLines; ++i) {
        double& most = course.lines[i].values[k];
        most = std::max(most, ReadsBy(*peers[i], course.counts[k], set) / 1e6);
      }
    }
  }
  for (unsigned int i = 0; i < kLines; ++i) peers[i]->Close();
  const auto isMissing = [](const Line& line) { return line.values[0] <= 0; };
  course.lines.erase(std::remove_if(course.lines.begin(), course.lines.end(), isMissing),
                     course.lines.end());
  results->courses.push_back(course);
  std::filesystem::remove_all("threads");
}

}  // namespace tamu::bench
