// What every store that is measured can do.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace tamu::bench {

enum class Sync {
  kNever,   // what is written survives the process
  kAlways,  // each change survives a power cut
};

// Ends the program, with what was tried.
inline void Expect(bool isFine, const char* what) {
  if (isFine) return;
  std::fprintf(stderr, "yax_bench_peers: %s\n", what);
  std::exit(1);
}

// The names that a listing has found, one behind the other, each with its terminator.
struct Names {
  void Add(const char* name, size_t length) {
    text.append(name, length);
    text.push_back('\0');
    ++count;
  }
  void Clear() {
    text.clear();
    count = 0;
  }
  std::string text;
  unsigned int count = 0;
};

// Reads for one thread.
class Reader {
 public:
  virtual ~Reader() = default;
  // Copies a value's data into the buffer; the number of bytes, 0 when there is no such value.
  virtual unsigned int Get(const char* key, const char* name, void* buffer,
                           unsigned int capacity) = 0;
};

// A store with keys, by path, and values. What is not expected ends the program.
class Peer {
 public:
  virtual ~Peer() = default;

  // In a folder that is there; the store is made when it is not.
  virtual void Open(const std::string& folder, Sync sync) = 0;
  virtual void Close() = 0;
  // What is to be done before operations are timed.
  virtual void Prepare() {}
  // Null where the store may not be read by several threads.
  virtual std::unique_ptr<Reader> MakeReader() = 0;
  virtual Reader& Main() = 0;

  virtual void MakeKey(const char* key) = 0;
  virtual void RemoveKey(const char* key) = 0;  // one without values and keys below
  virtual void MakeValue(const char* key, const char* name, unsigned int type, const void* data,
                         unsigned int size) = 0;
  virtual void SetValue(const char* key, const char* name, unsigned int type, const void* data,
                        unsigned int size) = 0;
  virtual void RemoveValue(const char* key, const char* name) = 0;
  // The names of all keys below, from the key on. Not deep: none of them has keys below.
  virtual void List(const char* key, bool isDeep, Names& names) = 0;
  virtual unsigned int Count(const char* key) = 0;  // keys below
  // Looks at all values and their data; the sum of their sizes and first bytes.
  virtual unsigned long long ReadAll() = 0;
  virtual void BackUp(const std::string& folder) = 0;
};

std::unique_ptr<Peer> MakeSqlitePeer();
std::unique_ptr<Peer> MakeLmdbPeer(bool isMapped);
std::unique_ptr<Peer> MakeTdbPeer();
std::unique_ptr<Peer> MakeLevelDbPeer();

// The library: without a handle, through a handle on the root, or through handles on single keys
// (which only reads). The three share one registry.
enum class Way { kFile, kRoot, kKey };
std::unique_ptr<Peer> MakeYaxPeer(Way way);

}  // namespace tamu::bench
