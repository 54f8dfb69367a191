#include "bench/peers/DataSet.h"

#include <algorithm>
#include <cstdio>
#include <random>

namespace tamu::bench {

namespace {

constexpr unsigned int kRooms = 20;  // of an area
constexpr unsigned int kUnits = 20;  // of a room

std::string Numbered(const std::string& above, const char* name, unsigned int number) {
  char text[32];
  std::snprintf(text, sizeof text, "%s-%02u", name, number);
  return above.empty() ? text : above + "/" + text;
}

}  // namespace

DataSet::DataSet(unsigned int count) {
  const unsigned int areasOfWing = (count / (2 * (1 + kRooms * (1 + kUnits)))) + 1;
  for (unsigned int wing = 0; wing < 2; ++wing) {
    const std::string wingPath = Numbered("", "wing", wing);
    AddKey(wingPath);
    for (unsigned int area = 0; area < areasOfWing; ++area) {
      const std::string areaPath = Numbered(wingPath, "area", area);
      AddKey(areaPath);
      for (unsigned int room = 0; room < kRooms; ++room) {
        const std::string roomPath = Numbered(areaPath, "room", room);
        AddKey(roomPath);
        for (unsigned int unit = 0; unit < kUnits; ++unit) {
          AddKey(Numbered(roomPath, "unit", unit));
          if (keys.size() < count) continue;
          AddValues();
          return;
        }
        rooms.push_back(static_cast<unsigned int>(keys.size()) - kUnits - 1);
      }
      areas.push_back(static_cast<unsigned int>(keys.size()) - kRooms * (1 + kUnits) - 1);
    }
  }
  AddValues();
}

void DataSet::AddKey(std::string path) {
  keys.push_back(std::move(path));
}

void DataSet::AddValues() {
  std::mt19937 random(1);
  for (unsigned int i = 0; i < keys.size(); ++i) {
    const unsigned long long number = 1000 + i;
    const std::string bytes(reinterpret_cast<const char*>(&number), sizeof number);
    order.push_back(i);
    values.push_back({i, "mode", kInteger, bytes});
    if (keys.size() > kUsualCount) continue;
    values.push_back({i, "label", kText, "unit " + std::to_string(i) + std::string(1, '\0')});
    if (i < 396) values.push_back({i, "limit", kInteger, bytes});
    if (i % 42 == 41) {
      values.push_back({i, "image", kBytes, std::string(kImageSize, static_cast<char>(i))});
      images.push_back(i);
    }
  }
  std::shuffle(order.begin(), order.end(), random);
  making = order;
  const auto depth = [this](unsigned int key) {
    return std::count(keys[key].begin(), keys[key].end(), '/');
  };
  std::stable_sort(making.begin(), making.end(),
                   [&](unsigned int a, unsigned int b) { return depth(a) < depth(b); });
  std::shuffle(rooms.begin(), rooms.end(), random);
  std::shuffle(images.begin(), images.end(), random);
}

}  // namespace tamu::bench
