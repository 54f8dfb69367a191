// What a thread does with a registry that others change at the same time, and what must come of it.
#pragma once

#include <map>
#include <set>
#include <string>

#include "registry/Registry.h"
#include "tests/crash/Random.h"

namespace processes {

using tamu::registry::Registry;

constexpr unsigned int kUser = 65535;
constexpr unsigned int kMostThreads = 16;

// The key that belongs to a thread, "own03x"; all threads share the key "shared".
std::string OwnKey(unsigned int thread);
// Makes the keys of all threads, and what they share.
std::string PrepareShared(Registry& registry);

// Random operations of one thread: on its own key, whose content it knows, on its counter, which
// only grows, and on a text that all set and that always is one letter many times.
class SharedScript {
 public:
  // `makesKeys`: it makes and deletes keys below its own, too.
  SharedScript(Registry& registry, unsigned int thread, bool makesKeys);

  // Works through handles from now on. A process does that with all its scripts or with none.
  std::string OpenHandles();
  // What was wrong, "" when nothing was.
  std::string Run(unsigned int operations);
  // The same, changing nothing.
  std::string Look(unsigned int operations);
  // Sets the text that all share.
  std::string SetText();
  // Everything that belongs to the thread is as it has left it.
  std::string CheckAll();
  unsigned int Counter() const { return counter_; }

 private:
  std::string Step();
  std::string Own(const std::string& below) const;
  std::string Shared() const { return sharedHandle_ != 0 ? "" : "shared"; }
  std::string SetOwn();
  std::string CheckOwn(const std::string& name);
  std::string Count();
  std::string CheckCounter(unsigned int other);
  std::string CheckText();
  std::string MakeKey();
  std::string DropKey();
  std::string CheckKeys();

  Registry& registry_;
  unsigned int thread_;
  bool makesKeys_;
  std::string key_;
  crash::Random random_;
  std::map<std::string, std::string> own_;  // values by name
  std::set<std::string> keys_;              // below the own one
  unsigned int ownHandle_ = 0;
  unsigned int sharedHandle_ = 0;
  unsigned int made_ = 0;
  unsigned int counter_ = 0;
  unsigned int seen_[kMostThreads] = {};  // of the others' counters
};

}  // namespace processes
