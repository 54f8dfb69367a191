// The keys and values that every store is filled with.
#pragma once

#include <string>
#include <vector>

namespace tamu::bench {

constexpr unsigned int kInteger = 0;
constexpr unsigned int kText = 1;
constexpr unsigned int kBytes = 2;

struct Item {
  unsigned int key;  // position in keys
  const char* name;
  unsigned int type;
  std::string data;
};

// The first `count` keys of a house with two wings, areas of 20 rooms and 20 units in each room:
// four levels. Each key has a number and a text; of the 4,202 keys that most is measured with, 396
// have a second number and 100 an image of 100 bytes: 8,900 values. In a larger set each key has
// its number alone.
struct DataSet {
  static constexpr unsigned int kUsualCount = 4202;
  static constexpr unsigned int kImageSize = 100;

  explicit DataSet(unsigned int count);

  std::vector<std::string> keys;  // in the order of their names
  std::vector<Item> values;
  std::vector<unsigned int> order;   // of keys, shuffled
  std::vector<unsigned int> making;  // the same, but keys come after those above them
  std::vector<unsigned int> rooms;   // positions in keys: those with 20 keys below
  std::vector<unsigned int> areas;   // those with 20 rooms
  std::vector<unsigned int> images;  // keys with an image

 private:
  void AddKey(std::string path);
  void AddValues();
};

}  // namespace tamu::bench
