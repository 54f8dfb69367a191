// Random numbers that are the same for each seed, on every machine.
#pragma once

#include <random>

namespace crash {

class Random {
 public:
  explicit Random(unsigned int seed) : engine_(seed) {}

  unsigned int Number() { return static_cast<unsigned int>(engine_()); }
  // 0 to `limit` - 1; `limit` is more than 0.
  unsigned int Below(unsigned int limit) { return Number() % limit; }
  bool IsOneIn(unsigned int count) { return Below(count) == 0; }
  // True with a probability of `chance`, 0 to 1.
  bool IsLucky(double chance) { return Below(4096) < chance * 4096; }
  template <class Item, size_t kCount>
  Item Pick(const Item (&items)[kCount]) {
    return items[Below(kCount)];
  }

 private:
  std::mt19937 engine_;
};

}  // namespace crash
