#include <sqlite3.h>
#include <unistd.h>

#include <cstring>

#include "bench/peers/Peer.h"

namespace tamu::bench {

namespace {

sqlite3* OpenFile(const std::string& path, Sync sync) {
  sqlite3* db = nullptr;
  Expect(sqlite3_open(path.c_str(), &db) == SQLITE_OK, "sqlite3_open");
  const char* synchronous =
      sync == Sync::kAlways ? "PRAGMA synchronous=FULL" : "PRAGMA synchronous=OFF";
  for (const char* text : {"PRAGMA journal_mode=WAL", synchronous}) {
    Expect(sqlite3_exec(db, text, nullptr, nullptr, nullptr) == SQLITE_OK, text);
  }
  return db;
}

// A prepared statement.
class Statement {
 public:
  Statement(sqlite3* db, const char* text) {
    Expect(sqlite3_prepare_v3(db, text, -1, SQLITE_PREPARE_PERSISTENT, &statement_, nullptr) ==
               SQLITE_OK,
           text);
  }
  ~Statement() { sqlite3_finalize(statement_); }
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  Statement& Bind(int at, const char* text) {
    sqlite3_bind_text(statement_, at, text, -1, SQLITE_STATIC);
    return *this;
  }
  Statement& Bind(int at, unsigned int number) {
    sqlite3_bind_int64(statement_, at, number);
    return *this;
  }
  Statement& Bind(int at, const void* data, unsigned int size) {
    sqlite3_bind_blob(statement_, at, data, static_cast<int>(size), SQLITE_STATIC);
    return *this;
  }
  bool Step() { return sqlite3_step(statement_) == SQLITE_ROW; }
  void Reset() { Expect(sqlite3_reset(statement_) == SQLITE_OK, "sqlite3_reset"); }
  void Run() {
    Step();
    Reset();
  }
  const char* Text(int column) {
    return reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
  }
  const void* Blob(int column) { return sqlite3_column_blob(statement_, column); }
  unsigned int Size(int column) {
    return static_cast<unsigned int>(sqlite3_column_bytes(statement_, column));
  }
  unsigned int Number(int column) {
    return static_cast<unsigned int>(sqlite3_column_int(statement_, column));
  }

 private:
  sqlite3_stmt* statement_ = nullptr;
};

constexpr char kRead[] = "SELECT data FROM vals WHERE path=? AND name=?";

unsigned int Read(Statement& statement, const char* key, const char* name, void* buffer,
                  unsigned int capacity) {
  statement.Bind(1, key).Bind(2, name);
  unsigned int size = 0;
  if (statement.Step() && statement.Size(0) <= capacity) {
    size = statement.Size(0);
    std::memcpy(buffer, statement.Blob(0), size);
  }
  statement.Reset();
  return size;
}

// With a connection of its own.
class SqliteReader : public Reader {
 public:
  explicit SqliteReader(const std::string& path) : db_(OpenFile(path, Sync::kNever)) {
    read_ = std::make_unique<Statement>(db_, kRead);
  }
  ~SqliteReader() override {
    read_.reset();
    sqlite3_close(db_);
  }
  unsigned int Get(const char* key, const char* name, void* buffer,
                   unsigned int capacity) override {
    return Read(*read_, key, name, buffer, capacity);
  }

 private:
  sqlite3* db_;
  std::unique_ptr<Statement> read_;
};

struct Statements {
  explicit Statements(sqlite3* db)
      : read(db, kRead),
        makeKey(db, "INSERT INTO keys VALUES(?)"),
        removeKey(db, "DELETE FROM keys WHERE path=?"),
        makeValue(db, "INSERT INTO vals VALUES(?,?,?,?)"),
        setValue(db, "UPDATE vals SET type=?3, data=?4 WHERE path=?1 AND name=?2"),
        removeValue(db, "DELETE FROM vals WHERE path=? AND name=?"),
        list(db, "SELECT path FROM keys WHERE path>=? AND path<?"),
        count(db, "SELECT count(*) FROM keys WHERE path>=? AND path<?"),
        readKeys(db, "SELECT path FROM keys"),
        readAll(db, "SELECT path, name, type, data FROM vals") {}
  Statement read, makeKey, removeKey, makeValue, setValue, removeValue, list, count, readKeys,
      readAll;
};

class SqlitePeer : public Peer, public Reader {
 public:
  void Open(const std::string& folder, Sync sync) override {
    path_ = folder + "/peer.sqlite";
    db_ = OpenFile(path_, sync);
    for (const char* text : {"CREATE TABLE IF NOT EXISTS keys(path TEXT PRIMARY KEY) WITHOUT ROWID",
                             "CREATE TABLE IF NOT EXISTS vals(path TEXT, name TEXT, type INTEGER, "
                             "data BLOB, PRIMARY KEY(path, name)) WITHOUT ROWID"}) {
      Expect(sqlite3_exec(db_, text, nullptr, nullptr, nullptr) == SQLITE_OK, text);
    }
  }
  void Close() override {
    statements_.reset();
    read_.reset();
    sqlite3_close(db_);
  }
  std::unique_ptr<Reader> MakeReader() override { return std::make_unique<SqliteReader>(path_); }
  Reader& Main() override { return *this; }

  unsigned int Get(const char* key, const char* name, void* buffer,
                   unsigned int capacity) override {
    if (!read_) read_ = std::make_unique<Statement>(db_, kRead);
    return Read(*read_, key, name, buffer, capacity);
  }
  void MakeKey(const char* key) override { All().makeKey.Bind(1, key).Run(); }
  void RemoveKey(const char* key) override { All().removeKey.Bind(1, key).Run(); }
  void MakeValue(const char* key, const char* name, unsigned int type, const void* data,
                 unsigned int size) override {
    Put(All().makeValue, key, name, type, data, size);
  }
  void SetValue(const char* key, const char* name, unsigned int type, const void* data,
                unsigned int size) override {
    Put(All().setValue, key, name, type, data, size);
  }
  void RemoveValue(const char* key, const char* name) override {
    All().removeValue.Bind(1, key).Bind(2, name).Run();
  }
  void List(const char* key, bool, Names& names) override {
    Statement& statement = All().list;
    const size_t skip = key[0] == 0 ? 0 : std::strlen(key) + 1;
    const Range range(key);
    statement.Bind(1, range.from.c_str()).Bind(2, range.to.c_str());
    while (statement.Step()) names.Add(statement.Text(0) + skip, statement.Size(0) - skip);
    statement.Reset();
  }
  unsigned int Count(const char* key) override {
    const Range range(key);
    Statement& statement = All().count;
    statement.Bind(1, range.from.c_str()).Bind(2, range.to.c_str());
    Expect(statement.Step(), "count");
    const unsigned int result = statement.Number(0);
    statement.Reset();
    return result;
  }
  unsigned long long ReadAll() override {
    unsigned long long sum = 0;
    for (Statement* each : {&All().readKeys, &All().readAll}) {
      while (each->Step()) {
        if (each == &All().readAll) {
          sum += each->Size(3) + *static_cast<const unsigned char*>(each->Blob(3));
        }
      }
      each->Reset();
    }
    return sum;
  }
  void BackUp(const std::string& folder) override {
    const std::string path = folder + "/sqlite.bak";
    unlink(path.c_str());
    sqlite3* copy = nullptr;
    Expect(sqlite3_open(path.c_str(), &copy) == SQLITE_OK, "sqlite3_open");
    Expect(sqlite3_exec(copy, "PRAGMA synchronous=OFF", nullptr, nullptr, nullptr) == SQLITE_OK,
           "synchronous");
    sqlite3_backup* backup = sqlite3_backup_init(copy, "main", db_, "main");
    Expect(backup != nullptr && sqlite3_backup_step(backup, -1) == SQLITE_DONE, "backup");
    sqlite3_backup_finish(backup);
    sqlite3_close(copy);
  }

 private:
  struct Range {
    explicit Range(const char* key)
        : from(key[0] == 0 ? "" : std::string(key) + "/"),
          to(key[0] == 0 ? "\x7F" : std::string(key) + "0") {}  // "0" comes after "/"
    std::string from;
    std::string to;
  };

  void Put(Statement& statement, const char* key, const char* name, unsigned int type,
           const void* data, unsigned int size) {
    statement.Bind(1, key).Bind(2, name).Bind(3, type).Bind(4, data, size).Run();
  }
  // Prepared when they are wanted: a program that only reads has but one.
  Statements& All() {
    if (!statements_) statements_ = std::make_unique<Statements>(db_);
    return *statements_;
  }

  std::string path_;
  sqlite3* db_ = nullptr;
  std::unique_ptr<Statement> read_;
  std::unique_ptr<Statements> statements_;
};

}  // namespace

std::unique_ptr<Peer> MakeSqlitePeer() {
  return std::make_unique<SqlitePeer>();
}

}  // namespace tamu::bench
