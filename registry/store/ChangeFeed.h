// What has been changed lately, for those who ask.
#pragma once

#include "registry/base/ChangeNote.h"
#include "registry/base/Status.h"
#include "registry/store/SharedWords.h"

namespace tamu::registry {

// Changes are numbered: half the journal's sequence. Those of late lie in a ring behind the words
// that the processes share, or, without a journal, in memory of this object's own. Nothing is put
// there while nobody has asked for a while: then the numbers alone tell that something is missing.
// What others have put there is not trusted. The store's lock is held by the caller.
class ChangeFeed {
 public:
  ChangeFeed() = default;
  ~ChangeFeed() { delete[] own_; }
  ChangeFeed(const ChangeFeed&) = delete;
  ChangeFeed& operator=(const ChangeFeed&) = delete;

  // Those of the journal; without them (SharedWords()) there are none until Provide.
  // `mayWrite` false: others alone write there, and see by PCSideFile::kAudience that somebody
  // asks.
  void Attach(const SharedWords& words, bool mayWrite = true);
  // Makes sure that there are words. kNoMemory.
  Status Provide();
  bool IsOn() const { return words_.IsAttached(); }
  // True without a journal: nobody else has the words, and CountOwn counts.
  bool IsOwn() const { return own_ != nullptr; }
  // Of the last change. IsOn.
  unsigned long long Number() const;

  // Asks for the changes from now on. False: what is in the ring has no end yet, see Begin.
  bool Ask();
  // The same, where nobody else writes: with the lock between processes.
  void Begin();

  // While the change is being written: what it is. Null: nobody knows, so it is missing.
  void Put(const ChangeNote* note);
  // What was put of the change that is being written is not to be told.
  void Forget() { words_.SetLong(journal_word::kLast, 0); }
  // After a change that no journal counts.
  void CountOwn(const ChangeNote* note);
  // Wakes those who wait, if something has changed since they have begun.
  static void WakeWaiters(const SharedWords& words);

  void WakeAll() const { PCWord::WakeAll(words_.At(journal_word::kSequence)); }

  // What there is, as it was at one moment if nobody has changed the sequence meanwhile.
  struct Extent {
    unsigned long long number = 0;  // of the latest change
    bool isKnown = false;           // the ring has that one
    unsigned int newest = 0;        // its place in the ring
    unsigned int used = 0;          // bytes of the ring
  };
  Extent Look() const;
  // Adds all changes of an extent after number *after to the list; *after becomes the latest.
  // Others may go on writing. kLimit: some are missing; kNoMemory, with *after as it was.
  Status Read(const Extent& extent, unsigned long long* after, ChangeList* changes) const;
  // Where to sleep, and until it has another value, for the next change. Null: the last one is not
  // number `after` any more.
  const unsigned int* PrepareToWait(unsigned long long after, unsigned int* value);

 private:
  bool IsWanted() const;
  void StartRing(unsigned long long number);
  void PutChange(unsigned long long number, const char* base, const Change& change);
  bool DropOldest();
  unsigned int Place(unsigned int word) const;
  unsigned int Used() const;
  void Transfer(unsigned int place, unsigned char* bytes, unsigned int size, bool isPut) const;
  Status AddFrom(const unsigned char* entry, ChangeList* changes) const;
  unsigned int ReadHead(unsigned int place, unsigned int most, unsigned char* entry) const;
  bool Find(const Extent& extent, unsigned long long since, unsigned int* place,
            unsigned int* bytes) const;

  SharedWords words_;
  bool mayWrite_ = true;
  unsigned int* own_ = nullptr;
};

}  // namespace tamu::registry
