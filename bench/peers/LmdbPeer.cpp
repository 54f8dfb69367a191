#include <lmdb.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

#include "bench/peers/JoinedName.h"
#include "bench/peers/OrderedPeer.h"

namespace tamu::bench {

namespace {

constexpr size_t kMapSize = size_t{64} << 20;

void Check(int result, const char* what) {
  if (result != 0) Expect(false, (std::string(what) + " of LMDB: " + mdb_strerror(result)).c_str());
}

// A transaction that is used again for each read.
class LmdbReader : public Reader {
 public:
  LmdbReader(MDB_env* env, MDB_dbi values) : values_(values) {
    Check(mdb_txn_begin(env, nullptr, MDB_RDONLY, &transaction_), "mdb_txn_begin");
    mdb_txn_reset(transaction_);
  }
  ~LmdbReader() override { mdb_txn_abort(transaction_); }

  unsigned int Get(const char* key, const char* name, void* buffer,
                   unsigned int capacity) override {
    Begin();
    const JoinedName joined(key, name);
    MDB_val at{joined.length(), const_cast<char*>(joined.text())};
    MDB_val data;
    unsigned int size = 0;
    if (mdb_get(transaction_, values_, &at, &data) == 0 && data.mv_size - 1 <= capacity) {
      size = static_cast<unsigned int>(data.mv_size - 1);
      std::memcpy(buffer, static_cast<const char*>(data.mv_data) + 1, size);
    }
    End();
    return size;
  }
  MDB_txn* Begin() {
    Check(mdb_txn_renew(transaction_), "mdb_txn_renew");
    return transaction_;
  }
  void End() { mdb_txn_reset(transaction_); }

 private:
  MDB_dbi values_;
  MDB_txn* transaction_ = nullptr;
};

class LmdbPeer : public OrderedPeer<LmdbPeer> {
 public:
  explicit LmdbPeer(bool isMapped) : isMapped_(isMapped) {}

  void Open(const std::string& folder, Sync sync) override {
    const std::string path = folder + (isMapped_ ? "/lmdb-map" : "/lmdb-pwrite");
    mkdir(path.c_str(), 0755);
    Check(mdb_env_create(&env_), "mdb_env_create");
    Check(mdb_env_set_mapsize(env_, kMapSize), "mdb_env_set_mapsize");
    Check(mdb_env_set_maxdbs(env_, 2), "mdb_env_set_maxdbs");
    unsigned int flags = MDB_NOTLS;
    if (isMapped_) flags |= MDB_WRITEMAP;
    if (sync == Sync::kNever) flags |= MDB_NOSYNC;
    Check(mdb_env_open(env_, path.c_str(), flags, 0644), "mdb_env_open");
    MDB_txn* transaction = Begin();
    Check(mdb_dbi_open(transaction, "keys", MDB_CREATE, &keys_), "mdb_dbi_open");
    Check(mdb_dbi_open(transaction, "values", MDB_CREATE, &values_), "mdb_dbi_open");
    Check(mdb_txn_commit(transaction), "mdb_txn_commit");
    main_ = std::make_unique<LmdbReader>(env_, values_);
  }
  void Close() override {
    main_.reset();
    mdb_env_close(env_);
  }
  std::unique_ptr<Reader> MakeReader() override {
    return std::make_unique<LmdbReader>(env_, values_);
  }
  Reader& Main() override { return *main_; }

  void MakeKey(const char* key) override { Put(keys_, key, std::strlen(key), "", 1); }
  void RemoveKey(const char* key) override { Remove(keys_, key, std::strlen(key)); }
  void MakeValue(const char* key, const char* name, unsigned int type, const void* data,
                 unsigned int size) override {
    const JoinedName joined(key, name);
    const TypedData typed(type, data, size);
    Put(values_, joined.text(), joined.length(), typed.bytes(), typed.size());
  }
  void RemoveValue(const char* key, const char* name) override {
    const JoinedName joined(key, name);
    Remove(values_, joined.text(), joined.length());
  }
  unsigned long long ReadAll() override {
    MDB_cursor* cursor = nullptr;
    MDB_txn* transaction = main_->Begin();
    Check(mdb_cursor_open(transaction, keys_, &cursor), "mdb_cursor_open");
    MDB_val at;
    MDB_val data;
    while (mdb_cursor_get(cursor, &at, &data, MDB_NEXT) == 0) {
    }
    mdb_cursor_close(cursor);
    Check(mdb_cursor_open(transaction, values_, &cursor), "mdb_cursor_open");
    unsigned long long sum = 0;
    while (mdb_cursor_get(cursor, &at, &data, MDB_NEXT) == 0) {
      sum += data.mv_size - 1 + static_cast<const unsigned char*>(data.mv_data)[1];
    }
    mdb_cursor_close(cursor);
    main_->End();
    return sum;
  }
  void BackUp(const std::string& folder) override {
    const std::string path = folder + "/lmdb.bak";
    Check(mdb_env_copy(env_, CopyFolder(path)), "mdb_env_copy");
  }

 private:
  friend OrderedPeer<LmdbPeer>;

  MDB_txn* Begin() {
    MDB_txn* transaction = nullptr;
    Check(mdb_txn_begin(env_, nullptr, 0, &transaction), "mdb_txn_begin");
    return transaction;
  }
  void Put(MDB_dbi where, const void* key, size_t length, const void* bytes, size_t size) {
    MDB_txn* transaction = Begin();
    MDB_val at{length, const_cast<void*>(key)};
    MDB_val data{size, const_cast<void*>(bytes)};
    Check(mdb_put(transaction, where, &at, &data, 0), "mdb_put");
    Check(mdb_txn_commit(transaction), "mdb_txn_commit");
  }
  void Remove(MDB_dbi where, const void* key, size_t length) {
    MDB_txn* transaction = Begin();
    MDB_val at{length, const_cast<void*>(key)};
    Check(mdb_del(transaction, where, &at, nullptr), "mdb_del");
    Check(mdb_txn_commit(transaction), "mdb_txn_commit");
  }
  template <class Visitor>
  void Visit(const char* key, Visitor visit) {
    const PathPrefix prefix(key);
    MDB_cursor* cursor = nullptr;
    Check(mdb_cursor_open(main_->Begin(), keys_, &cursor), "mdb_cursor_open");
    MDB_val at{prefix.length(), const_cast<char*>(prefix.text())};
    MDB_val data;
    int result =
        mdb_cursor_get(cursor, &at, &data, prefix.length() > 0 ? MDB_SET_RANGE : MDB_FIRST);
    for (; result == 0; result = mdb_cursor_get(cursor, &at, &data, MDB_NEXT)) {
      if (!prefix.Begins(static_cast<const char*>(at.mv_data), at.mv_size)) break;
      visit(static_cast<const char*>(at.mv_data) + prefix.length(), at.mv_size - prefix.length());
    }
    mdb_cursor_close(cursor);
    main_->End();
  }
  // A copy goes into an empty folder.
  static const char* CopyFolder(const std::string& path) {
    mkdir(path.c_str(), 0755);
    unlink((path + "/data.mdb").c_str());
    return path.c_str();
  }

  bool isMapped_;
  MDB_env* env_ = nullptr;
  MDB_dbi keys_ = 0;
  MDB_dbi values_ = 0;
  std::unique_ptr<LmdbReader> main_;
};

}  // namespace

std::unique_ptr<Peer> MakeLmdbPeer(bool isMapped) {
  return std::make_unique<LmdbPeer>(isMapped);
}

}  // namespace tamu::bench
