// The subtree that the benchmarks of whole subtrees work on.
#pragma once

#include <benchmark/benchmark.h>

#include "bench/BenchFile.h"

namespace tamu::registry {

constexpr char kKey[] = "data";

// A registry with so many keys below "data", and a backup of them. Each key has two values, a
// number and a text of 20 bytes.
class Subtree {
 public:
  explicit Subtree(unsigned int keys)
      : file_(".rce"), backup_(".bak"), registry_(file_.path(), kAdministratorId) {
    Open();
    Fill(keys);
    Check(registry_.BackupKey(0, kKey, backup_.path()), "BackupKey");
  }

  Registry* operator->() { return &registry_; }
  const char* backup() const { return backup_.path(); }
  // A new file with nothing below "data".
  void Empty() {
    registry_.Finalize();
    file_.Remove();
    Open();
  }
  void Restore() { Check(registry_.RestoreKey(0, kKey, backup()), "RestoreKey"); }

 private:
  void Open() {
    Check(registry_.Initialize(), "Initialize");
    Check(registry_.CreateKey(0, kKey), kKey);
  }
  void Fill(unsigned int keys) {
    unsigned long long number = 1500;
    Value integer = {kValueTypeInteger, sizeof number, &number};
    char text[20] = "fast and reliable";
    Value string = {kValueTypeString, sizeof text, text};
    for (unsigned int i = 0; i < keys; ++i) {
      char name[24];
      std::snprintf(name, sizeof name, "data/key%04u", i);
      Check(registry_.CreateKey(0, name), name);
      Check(registry_.CreateValue(0, name, "mtu", &integer), "mtu");
      Check(registry_.CreateValue(0, name, "profile", &string), "profile");
    }
  }

  BenchFile file_;
  BenchFile backup_;
  Registry registry_;
};

inline unsigned int Keys(const benchmark::State& state) {
  return static_cast<unsigned int>(state.range(0));
}

// Puts the time for each key in the last column.
inline void CountKeys(benchmark::State& state) {
  state.counters["per_key"] = benchmark::Counter(
      static_cast<double>(Keys(state)),
      benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

}  // namespace tamu::registry
