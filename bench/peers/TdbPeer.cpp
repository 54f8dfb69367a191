#include <fcntl.h>
#include <unistd.h>

#include <cstring>

extern "C" {
#include <sys/types.h>
#include <tdb.h>
}

#include "bench/peers/JoinedName.h"
#include "bench/peers/Peer.h"

namespace tamu::bench {

namespace {

TDB_DATA DataOf(const void* bytes, size_t size) {
  return {static_cast<unsigned char*>(const_cast<void*>(bytes)), size};
}

// A hash has no order: the names of the keys directly below a key are a record of their own, each
// with its terminator, at "path/".
class TdbPeer : public Peer, public Reader {
 public:
  void Open(const std::string& folder, Sync sync) override {
    isSynced_ = sync == Sync::kAlways;
    const int flags = isSynced_ ? TDB_DEFAULT : TDB_NOSYNC;
    constexpr int kHashSize = 10007;
    tdb_ = tdb_open((folder + "/peer.tdb").c_str(), kHashSize, flags, O_RDWR | O_CREAT, 0644);
    Expect(tdb_ != nullptr, "tdb_open");
  }
  void Close() override { tdb_close(tdb_); }
  std::unique_ptr<Reader> MakeReader() override { return nullptr; }
  Reader& Main() override { return *this; }

  unsigned int Get(const char* key, const char* name, void* buffer,
                   unsigned int capacity) override {
    const JoinedName joined(key, name);
    Target target{buffer, capacity, 0};
    tdb_parse_record(tdb_, DataOf(joined.text(), joined.length()), CopyTo, &target);
    return target.size;
  }
  void MakeKey(const char* key) override {
    Begin();
    Store(DataOf(key, std::strlen(key)), DataOf("", 1));
    const std::string above = Above(key);
    Expect(tdb_append(tdb_, DataOf(above.data(), above.size()), NameOf(key)) == 0, "tdb_append");
    End();
  }
  void RemoveKey(const char* key) override {
    Begin();
    Expect(tdb_delete(tdb_, DataOf(key, std::strlen(key))) == 0, "tdb_delete");
    const std::string above = Above(key);
    std::string names = Fetch(above);
    const TDB_DATA name = NameOf(key);
    const std::string wanted(reinterpret_cast<const char*>(name.dptr), name.dsize);
    size_t at = 0;
    while (names.compare(at, wanted.size(), wanted) != 0) at += std::strlen(&names[at]) + 1;
    names.erase(at, wanted.size());
    Store(DataOf(above.data(), above.size()), DataOf(names.data(), names.size()));
    End();
  }
  void MakeValue(const char* key, const char* name, unsigned int type, const void* data,
                 unsigned int size) override {
    const JoinedName joined(key, name);
    const TypedData typed(type, data, size);
    Begin();
    Store(DataOf(joined.text(), joined.length()), DataOf(typed.bytes(), typed.size()));
    End();
  }
  void SetValue(const char* key, const char* name, unsigned int type, const void* data,
                unsigned int size) override {
    MakeValue(key, name, type, data, size);
  }
  void RemoveValue(const char* key, const char* name) override {
    const JoinedName joined(key, name);
    Begin();
    Expect(tdb_delete(tdb_, DataOf(joined.text(), joined.length())) == 0, "tdb_delete");
    End();
  }
  void List(const char* key, bool isDeep, Names& names) override {
    const PathPrefix prefix(key);
    Listing listing{prefix, names};
    if (isDeep) return Traverse(ListFrom, &listing);
    const std::string below = Fetch(std::string(key) + "/");
    for (size_t at = 0; at < below.size();) {
      const size_t length = std::strlen(&below[at]);
      names.Add(&below[at], length);
      at += length + 1;
    }
  }
  unsigned int Count(const char* key) override {
    const PathPrefix prefix(key);
    const std::string names = Fetch(std::string(key) + "/");
    unsigned int count = 0;
    for (size_t at = 0; at < names.size(); at += std::strlen(&names[at]) + 1) {
      count += 1 + Count((prefix.text() + std::string(&names[at])).c_str());
    }
    return count;
  }
  unsigned long long ReadAll() override {
    unsigned long long sum = 0;
    Traverse(AddTo, &sum);
    return sum;
  }
  void BackUp(const std::string& folder) override {
    const std::string path = folder + "/tdb.bak";
    unlink(path.c_str());
    constexpr int kHashSize = 10007;
    TDB_CONTEXT* copy =
        tdb_open(path.c_str(), kHashSize, TDB_NOSYNC | TDB_NOLOCK, O_RDWR | O_CREAT | O_EXCL, 0644);
    Expect(copy != nullptr, "tdb_open");
    Traverse(StoreIn, copy);
    tdb_close(copy);
  }

 private:
  struct Target {
    void* buffer;
    unsigned int capacity;
    unsigned int size;
  };
  static int CopyTo(TDB_DATA, TDB_DATA data, void* context) {
    auto* target = static_cast<Target*>(context);
    const auto size = static_cast<unsigned int>(data.dsize - 1);
    if (size > target->capacity) return 0;
    std::memcpy(target->buffer, data.dptr + 1, size);
    target->size = size;
    return 0;
  }
  static int AssignTo(TDB_DATA, TDB_DATA data, void* context) {
    static_cast<std::string*>(context)->assign(reinterpret_cast<char*>(data.dptr), data.dsize);
    return 0;
  }
  struct Listing {
    const PathPrefix& prefix;
    Names& names;
  };
  // Neither values nor the names below a key.
  static int ListFrom(TDB_CONTEXT*, TDB_DATA key, TDB_DATA, void* context) {
    const auto* listing = static_cast<Listing*>(context);
    const char* path = reinterpret_cast<const char*>(key.dptr);
    if (!listing->prefix.Begins(path, key.dsize) || path[key.dsize - 1] == '/') return 0;
    if (std::memchr(path, 0, key.dsize) != nullptr) return 0;
    listing->names.Add(path + listing->prefix.length(), key.dsize - listing->prefix.length());
    return 0;
  }
  static int AddTo(TDB_CONTEXT*, TDB_DATA key, TDB_DATA data, void* context) {
    if (std::memchr(key.dptr, 0, key.dsize) == nullptr) return 0;  // of a key
    *static_cast<unsigned long long*>(context) += data.dsize - 1 + data.dptr[1];
    return 0;
  }
  static int StoreIn(TDB_CONTEXT*, TDB_DATA key, TDB_DATA data, void* context) {
    return tdb_store(static_cast<TDB_CONTEXT*>(context), key, data, TDB_INSERT);
  }
  static std::string Above(const char* key) {
    const char* slash = std::strrchr(key, '/');
    return slash == nullptr ? "/" : std::string(key, slash + 1);
  }
  static TDB_DATA NameOf(const char* key) {
    const char* slash = std::strrchr(key, '/');
    const char* name = slash == nullptr ? key : slash + 1;
    return DataOf(name, std::strlen(name) + 1);
  }

  // With one lock for all.
  void Traverse(tdb_traverse_func visit, void* context) {
    Expect(tdb_lockall_read(tdb_) == 0, "tdb_lockall_read");
    tdb_traverse_read(tdb_, visit, context);
    tdb_unlockall_read(tdb_);
  }
  void Begin() {
    if (isSynced_) Expect(tdb_transaction_start(tdb_) == 0, "tdb_transaction_start");
  }
  void End() {
    if (isSynced_) Expect(tdb_transaction_commit(tdb_) == 0, "tdb_transaction_commit");
  }
  void Store(TDB_DATA key, TDB_DATA data) {
    Expect(tdb_store(tdb_, key, data, TDB_REPLACE) == 0, "tdb_store");
  }
  std::string Fetch(const std::string& at) {
    std::string result;
    tdb_parse_record(tdb_, DataOf(at.data(), at.size()), AssignTo, &result);
    return result;
  }
  TDB_CONTEXT* tdb_ = nullptr;
  bool isSynced_ = false;
};

}  // namespace

std::unique_ptr<Peer> MakeTdbPeer() {
  return std::make_unique<TdbPeer>();
}

}  // namespace tamu::bench
