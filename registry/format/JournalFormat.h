// The journal of a registry: the file beside it that holds what is about to be written.
// docs/format.md tells it byte by byte.
#pragma once

#include "registry/format/Codec.h"

namespace tamu::registry {

constexpr char kJournalEnding[] = ".journal";           // of the name, behind that of the registry
constexpr unsigned int kJournalSize = 64 * 1024;        // bytes, when nothing large is written
constexpr unsigned int kJournalSector = 512;            // bytes; a record's border
constexpr unsigned int kJournalRecords = 16384;         // where the first record lies
constexpr unsigned int kJournalMax = 64 * 1024 * 1024;  // bytes

// The first bytes of the file.
class JournalHeader {
 public:
  static constexpr unsigned int kSize = 40;        // bytes
  static constexpr unsigned int kBootIdSize = 16;  // bytes
  static constexpr unsigned int kPendingAt = 32;   // offset of the word that tells of a record

  unsigned char* bytes() { return bytes_; }
  const unsigned char* bytes() const { return bytes_; }
  unsigned char* bootId() { return bytes_ + 16; }
  const unsigned char* bootId() const { return bytes_ + 16; }

  void Stamp() {
    PutU32(bytes_, kMagic);
    PutU32(bytes_ + 4, kVersion);
  }
  bool IsJournal() const { return GetU32(bytes_) == kMagic && GetU32(bytes_ + 4) == kVersion; }
  // A Durability: kProcess keeps one record, kPower a sequence of them.
  unsigned int mode() const { return GetU32(bytes_ + 8); }
  void setMode(unsigned int mode) { PutU32(bytes_ + 8, mode); }
  // kProcess: the offset of the record that is being written to the registry; 0 = none.
  unsigned int pending() const { return GetU32(bytes_ + kPendingAt); }

 private:
  static constexpr unsigned int kMagic = 0x4A584159;  // "YAXJ"
  static constexpr unsigned int kVersion = 2;

  unsigned char bytes_[kSize] = {};
};

// Where the words lie that the processes share which have the journal open: in the order of bytes
// of the machine. All but the lock and the sequence belong to who has the lock.
namespace journal_word {
constexpr unsigned int kLock = 64;          // 0, or who holds it, see CommitLock
constexpr unsigned int kSequence = 68;      // odd while the registry is being written
constexpr unsigned int kSequenceHigh = 72;  // one more whenever the sequence begins again at 0
constexpr unsigned int kIsKnown = 76;       // 1: the content hash is that of the registry
constexpr unsigned int kHash = 80;          // two words, the lower one first
constexpr unsigned int kHashLength = 88;    // bytes of the registry that the hash is over
constexpr unsigned int kRecord = 92;        // two words: sequence number of the latest record
constexpr unsigned int kNext = 100;         // kPower: where the next record goes
constexpr unsigned int kSize = 104;         // bytes of the journal
constexpr unsigned int kIsBroken = 108;     // kPower: 1: something could not be brought to the disk
constexpr unsigned int kDevice = 112;       // two words each: which file the registry is
constexpr unsigned int kFile = 120;
constexpr unsigned int kInterest = 128;  // when somebody has asked for the changes, see ChangeFeed
constexpr unsigned int kWaiting = 132;   // when somebody has begun to wait for one
constexpr unsigned int kFirst = 136;     // in the ring of changes: the oldest
constexpr unsigned int kEnd = 140;       // in the ring: behind the newest
constexpr unsigned int kFrom = 144;     // two words each: the ring holds all changes after this one
constexpr unsigned int kLast = 152;     // up to this one
constexpr unsigned int kNewest = 160;   // in the ring: the newest
constexpr unsigned int kHasTail = 164;  // 1: the registry may be longer than its header tells
constexpr unsigned int kRing = 4096;    // where the ring lies
constexpr unsigned int kRingSize = kJournalRecords - kRing;  // bytes
}  // namespace journal_word

// What a record begins with; its ranges follow.
class JournalRecord {
 public:
  static constexpr unsigned int kSize = 40;      // bytes
  static constexpr unsigned int kRangeSize = 8;  // bytes of a range before its content
  static constexpr unsigned int kChecksumAt = 32;

  unsigned char* bytes() { return bytes_; }
  const unsigned char* bytes() const { return bytes_; }

  void Stamp() { PutU32(bytes_, kMagic); }
  bool IsRecord() const { return GetU32(bytes_) == kMagic; }
  // Bytes of the record with its ranges.
  unsigned int length() const { return GetU32(bytes_ + 4); }
  void setLength(unsigned int length) { PutU32(bytes_ + 4, length); }
  // One more than that of the record before it.
  unsigned long long sequence() const { return GetU64(bytes_ + 8); }
  void setSequence(unsigned long long sequence) { PutU64(bytes_ + 8, sequence); }
  unsigned int rangeCount() const { return GetU32(bytes_ + 16); }
  void setRangeCount(unsigned int count) { PutU32(bytes_ + 16, count); }
  // Bytes of the registry that the hash is over.
  unsigned int fileLength() const { return GetU32(bytes_ + 20); }
  void setFileLength(unsigned int length) { PutU32(bytes_ + 20, length); }
  // The ContentHash of the registry once all ranges are written.
  unsigned long long contentHash() const { return GetU64(bytes_ + 24); }
  void setContentHash(unsigned long long hash) { PutU64(bytes_ + 24, hash); }

 private:
  static constexpr unsigned int kMagic = 0x43455259;  // "YREC"

  unsigned char bytes_[kSize] = {};
};

// Over the bytes of a record but for the checksum itself.
class JournalChecksum {
 public:
  void Add(const unsigned char* bytes, unsigned int size) {
    for (; size >= 4; size -= 4, bytes += 4) AddWord(GetU32(bytes));
    if (size == 0) return;
    unsigned char rest[4] = {};
    for (unsigned int i = 0; i < size; ++i) rest[i] = bytes[i];
    AddWord(GetU32(rest));
  }
  unsigned long long Value() const { return state_ ^ (state_ >> 32); }

 private:
  void AddWord(unsigned int word) {
    state_ = (state_ ^ word) * 0x9FB21C651E98DF25ull;
    state_ ^= state_ >> 28;
  }

  unsigned long long state_ = 0xCBF29CE484222325ull;
};

}  // namespace tamu::registry
