#include "bench/peers/Rows.h"

#include <chrono>
#include <cstring>

namespace tamu::bench {

namespace {

constexpr unsigned int kReads = 2000;
constexpr unsigned int kLargeValues = 16;
constexpr unsigned int kLargeSize = 1000;

const char* AnyKey(const DataSet& set, unsigned int i) {
  return set.keys[set.order[i % set.order.size()]].c_str();
}
const char* AnyRoom(const DataSet& set, unsigned int i) {
  return set.keys[set.rooms[i % set.rooms.size()]].c_str();
}
const char* AnyArea(const DataSet& set, unsigned int i) {
  return set.keys[set.areas[i % set.areas.size()]].c_str();
}
const char* AnyImage(const DataSet& set, unsigned int i) {
  return set.keys[set.images[i % set.images.size()]].c_str();
}

void Read(Peer& peer, const char* key, const char* name, bool isThere) {
  unsigned char buffer[1024];
  const unsigned int size = peer.Main().Get(key, name, buffer, sizeof buffer);
  Expect((size > 0) == isThere, name);
}
void GetInteger(Peer& peer, const DataSet& set, unsigned int i) {
  Read(peer, AnyKey(set, i), "mode", true);
}
// Few enough keys that a program would hold handles on them.
void GetOfFew(Peer& peer, const DataSet& set, unsigned int i) {
  constexpr unsigned int kFew = 64;
  Read(peer, AnyKey(set, i % kFew), "mode", true);
}
void GetText(Peer& peer, const DataSet& set, unsigned int i) {
  Read(peer, AnyKey(set, i), "label", true);
}
void GetMissing(Peer& peer, const DataSet& set, unsigned int i) {
  Read(peer, AnyKey(set, i), "none", false);
}

// What is set always differs from what was there.
unsigned long long NextNumber() {
  static unsigned long long sNumber = 1 << 20;
  return ++sNumber;
}

void SetInteger(Peer& peer, const DataSet& set, unsigned int i) {
  const unsigned long long number = NextNumber();
  peer.SetValue(AnyKey(set, i), "mode", kInteger, &number, sizeof number);
}
void SetSmall(Peer& peer, const DataSet& set, unsigned int i) {
  char data[DataSet::kImageSize];
  std::memset(data, static_cast<int>(NextNumber() % 251), sizeof data);
  peer.SetValue(AnyImage(set, i), "image", kBytes, data, sizeof data);
}
void SetLarge(Peer& peer, const DataSet& set, unsigned int i) {
  char data[kLargeSize];
  std::memset(data, static_cast<int>(NextNumber() % 251), sizeof data);
  peer.SetValue(AnyKey(set, i % kLargeValues), "large", kBytes, data, sizeof data);
}

void MakeAndRemoveValue(Peer& peer, const DataSet& set, unsigned int i) {
  const char* key = AnyKey(set, i);
  const unsigned long long number = i;
  peer.MakeValue(key, "scratch", kInteger, &number, sizeof number);
  peer.RemoveValue(key, "scratch");
}
void MakeAndRemoveKey(Peer& peer, const DataSet& set, unsigned int i) {
  const std::string key = std::string(AnyRoom(set, i)) + "/scratch";
  peer.MakeKey(key.c_str());
  peer.RemoveKey(key.c_str());
}

void ListRoom(Peer& peer, const DataSet& set, unsigned int i) {
  static Names names;
  names.Clear();
  peer.List(AnyRoom(set, i), false, names);
  Expect(names.count == 20, "listing a room");
}
void ListAll(Peer& peer, const DataSet& set, unsigned int) {
  static Names names;
  names.Clear();
  peer.List("", true, names);
  Expect(names.count == set.keys.size(), "listing everything");
}
void CountArea(Peer& peer, const DataSet& set, unsigned int i) {
  Expect(peer.Count(AnyArea(set, i)) == 420, "counting an area");
}
void ReadEverything(Peer& peer, const DataSet& set, unsigned int) {
  Expect(peer.ReadAll() > set.values.size(), "reading everything");
}
void BackUp(Peer& peer, const DataSet&, unsigned int) {
  peer.BackUp(".");
}

}  // namespace

const std::vector<Row>& AllRows() {
  static const std::vector<Row> rows = {
      {"get integer", 0.95, 0.5, -1, kReads, GetInteger},
      {"get integer, 64 keys", 0, 0, 0.2, kReads, GetOfFew},
      {"get string", 1.0, 0.5, -1, kReads, GetText},
      {"get missing", 0.85, 0.45, -1, kReads, GetMissing},
      {"set integer", 0.75, 0.7, -1, 1000, SetInteger},
      {"set 100 bytes", 1.2, 1.2, -1, 500, SetSmall},
      {"set 1,000 bytes", 2, 2, -1, 300, SetLarge},
      {"create + delete value", 0.8, 0.8, -1, 500, MakeAndRemoveValue},
      {"create + delete key", 1.2, 1.0, -1, 500, MakeAndRemoveKey},
      // Right behind those: what was known of paths is forgotten.
      {"get integer, path not known", 0, 0, -1, kReads, GetInteger, true},
      {"list 20 keys", 1.5, 1.0, -1, 300, ListRoom},
      {"list all keys", 1.2, 1.0, -1, 2, ListAll},
      {"count 420 keys", 1.2, 0.8, -1, 10, CountArea},
      {"read everything", 3, 2, -1, 2, ReadEverything},
      {"back up", 2, -1, -1, 1, BackUp},
  };
  return rows;
}

const Row& RowNamed(const std::string& name) {
  for (const Row& row : AllRows()) {
    if (row.name == name) return row;
  }
  std::abort();
}

void Build(Peer& peer, const DataSet& set) {
  for (const unsigned int key : set.making) peer.MakeKey(set.keys[key].c_str());
  for (const Item& item : set.values) {
    peer.MakeValue(set.keys[item.key].c_str(), item.name, item.type, item.data.data(),
                   static_cast<unsigned int>(item.data.size()));
  }
}

void MakeLargeValues(Peer& peer, const DataSet& set) {
  const char data[kLargeSize] = {1};
  for (unsigned int i = 0; i < kLargeValues; ++i) {
    peer.MakeValue(AnyKey(set, i), "large", kBytes, data, sizeof data);
  }
}

std::vector<std::unique_ptr<Peer>> AllPeers() {
  std::vector<std::unique_ptr<Peer>> peers;
  peers.push_back(MakeSqlitePeer());
  peers.push_back(MakeLmdbPeer(true));
  peers.push_back(MakeLmdbPeer(false));
  peers.push_back(MakeTdbPeer());
  peers.push_back(MakeLevelDbPeer());
  peers.push_back(MakeYaxPeer(Way::kFile));
  peers.push_back(MakeYaxPeer(Way::kRoot));
  peers.push_back(MakeYaxPeer(Way::kKey));
  return peers;
}

double Now() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration<double, std::nano>(now).count();
}

double Measure(const Row& row, Peer& peer, const DataSet& set, unsigned int start) {
  peer.Prepare();
  for (unsigned int i = 0; i < row.count && !row.isFirst; ++i) row.run(peer, set, start + i);
  const double began = Now();
  for (unsigned int i = 0; i < row.count; ++i) row.run(peer, set, start + i);
  const double took = Now() - began;
  return took / row.count;
}

}  // namespace tamu::bench
