#include <leveldb/db.h>
#include <leveldb/write_batch.h>

#include <cstring>

#include "bench/peers/JoinedName.h"
#include "bench/peers/OrderedPeer.h"

namespace tamu::bench {

namespace {

void Check(const leveldb::Status& status, const char* what) {
  if (!status.ok()) Expect(false, (what + (" of LevelDB: " + status.ToString())).c_str());
}

// Keys and values in one space: 'k' before the path of a key, 'v' before that of a value.
std::string Under(char space, const char* text, size_t length) {
  std::string result(1, space);
  result.append(text, length);
  return result;
}

class LevelDbPeer : public OrderedPeer<LevelDbPeer>, public Reader {
 public:
  void Open(const std::string& folder, Sync sync) override {
    leveldb::Options options;
    options.create_if_missing = true;
    write_.sync = sync == Sync::kAlways;
    leveldb::DB* opened = nullptr;
    Check(leveldb::DB::Open(options, folder + "/leveldb", &opened), "Open");
    db_.reset(opened);
  }
  void Close() override { db_.reset(); }
  std::unique_ptr<Reader> MakeReader() override { return std::make_unique<SharedReader>(*this); }
  Reader& Main() override { return *this; }

  unsigned int Get(const char* key, const char* name, void* buffer,
                   unsigned int capacity) override {
    return Read(key, name, buffer, capacity, &data_);
  }
  void MakeKey(const char* key) override {
    Check(db_->Put(write_, Under('k', key, std::strlen(key)), ""), "Put");
  }
  void RemoveKey(const char* key) override {
    Check(db_->Delete(write_, Under('k', key, std::strlen(key))), "Delete");
  }
  void MakeValue(const char* key, const char* name, unsigned int type, const void* data,
                 unsigned int size) override {
    const JoinedName joined(key, name);
    const TypedData typed(type, data, size);
    Check(db_->Put(write_, Under('v', joined.text(), joined.length()),
                   leveldb::Slice(typed.bytes(), typed.size())),
          "Put");
  }
  void RemoveValue(const char* key, const char* name) override {
    const JoinedName joined(key, name);
    Check(db_->Delete(write_, Under('v', joined.text(), joined.length())), "Delete");
  }
  unsigned long long ReadAll() override {
    const std::unique_ptr<leveldb::Iterator> each(db_->NewIterator(leveldb::ReadOptions()));
    unsigned long long sum = 0;
    for (each->SeekToFirst(); each->Valid(); each->Next()) {
      if (each->key()[0] != 'v') continue;
      const leveldb::Slice data = each->value();
      sum += data.size() - 1 + static_cast<unsigned char>(data[1]);
    }
    return sum;
  }
  void BackUp(const std::string& folder) override {
    const std::string path = folder + "/leveldb.bak";
    leveldb::Options options;
    options.create_if_missing = true;
    leveldb::DestroyDB(path, options);
    leveldb::DB* opened = nullptr;
    Check(leveldb::DB::Open(options, path, &opened), "Open");
    const std::unique_ptr<leveldb::DB> copy(opened);
    const std::unique_ptr<leveldb::Iterator> each(db_->NewIterator(leveldb::ReadOptions()));
    leveldb::WriteBatch batch;
    for (each->SeekToFirst(); each->Valid(); each->Next()) batch.Put(each->key(), each->value());
    Check(copy->Write(leveldb::WriteOptions(), &batch), "Write");
  }

 private:
  friend OrderedPeer<LevelDbPeer>;

  class SharedReader : public Reader {
   public:
    explicit SharedReader(LevelDbPeer& peer) : peer_(peer) {}
    unsigned int Get(const char* key, const char* name, void* buffer,
                     unsigned int capacity) override {
      return peer_.Read(key, name, buffer, capacity, &data_);
    }

   private:
    LevelDbPeer& peer_;
    std::string data_;
  };

  unsigned int Read(const char* key, const char* name, void* buffer, unsigned int capacity,
                    std::string* data) {
    const JoinedName joined(key, name);
    const leveldb::Status status =
        db_->Get(leveldb::ReadOptions(), Under('v', joined.text(), joined.length()), data);
    if (!status.ok() || data->size() - 1 > capacity) return 0;
    std::memcpy(buffer, data->data() + 1, data->size() - 1);
    return static_cast<unsigned int>(data->size() - 1);
  }
  template <class Visitor>
  void Visit(const char* key, Visitor visit) {
    const PathPrefix below(key);
    const std::string prefix = Under('k', below.text(), below.length());
    const std::unique_ptr<leveldb::Iterator> each(db_->NewIterator(leveldb::ReadOptions()));
    for (each->Seek(prefix); each->Valid() && each->key().starts_with(prefix); each->Next()) {
      visit(each->key().data() + prefix.size(), each->key().size() - prefix.size());
    }
  }

  std::unique_ptr<leveldb::DB> db_;
  leveldb::WriteOptions write_;
  std::string data_;
};

}  // namespace

std::unique_ptr<Peer> MakeLevelDbPeer() {
  return std::make_unique<LevelDbPeer>();
}

}  // namespace tamu::bench
