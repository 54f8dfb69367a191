#include "registry/store/ChangeFeed.h"

#include <new>

#include "platform/PCMem.h"
#include "registry/base/RCEString.h"
#include "registry/base/RegistryStatus.h"
#include "registry/base/Value.h"

namespace tamu::registry {

using namespace journal_word;

namespace {

// In steps of the sequence, of which a change takes two. The ring is full before.
constexpr unsigned int kInterestEnds = 2048;
constexpr unsigned int kInterestFades = 512;

// An entry of the ring: a head, the path and the name, up to a multiple of four.
constexpr unsigned int kHead = 20;         // bytes
constexpr unsigned int kMostEntry = 2048;  // bytes
constexpr unsigned int kAtSize = 0;        // u16, of the entry
constexpr unsigned int kAtBefore = 2;      // u16, of the one before it; 0 = there is none
constexpr unsigned int kAtNumber = 4;      // u64
constexpr unsigned int kAtLead = 12;       // u32, how much greater that is than the one before
constexpr unsigned int kAtKind = 16;
constexpr unsigned int kAtNameLength = 17;  // u8
constexpr unsigned int kAtPathLength = 18;  // u16

constexpr unsigned int Rounded(unsigned int size) {
  return (size + 3) / 4 * 4;
}

}  // namespace

void ChangeFeed::Attach(const SharedWords& words, bool mayWrite) {
  mayWrite_ = mayWrite;
  delete[] own_;
  own_ = nullptr;
  words_ = words;
}

Status ChangeFeed::Provide() {
  if (IsOn()) return status::kOk;
  own_ = new (std::nothrow) unsigned int[kJournalRecords / sizeof(unsigned int)]();
  if (own_ == nullptr) return status::kNoMemory;
  words_.Attach(reinterpret_cast<unsigned char*>(own_));
  words_.Set(kSequenceHigh, PCWord::Date() - 1);  // less than in a journal that is set up later
  return status::kOk;
}

// The higher word changes while the lower one is at its end.
unsigned long long ChangeFeed::Number() const {
  constexpr unsigned int kTries = 1000;
  unsigned int high = 0;
  unsigned int low = 0;
  for (unsigned int i = 0; i < kTries; ++i) {
    high = words_.Get(kSequenceHigh);
    low = words_.Get(kSequence);
    if (low != 0xFFFFFFFF && words_.Get(kSequenceHigh) == high) break;
  }
  return static_cast<unsigned long long>(high) << 31 | low / 2;
}

bool ChangeFeed::IsWanted() const {
  const unsigned int since = words_.Get(kInterest);
  return since != 0 && words_.Get(kSequence) - since + 1 < kInterestEnds;
}

bool ChangeFeed::Ask() {
  if (!mayWrite_) return true;
  if (!IsWanted()) return false;
  const unsigned int now = words_.Get(kSequence) | 1;
  if (now - words_.Get(kInterest) > kInterestFades) words_.Set(kInterest, now);
  return true;
}

void ChangeFeed::Begin() {
  words_.Set(kInterest, words_.Get(kSequence) | 1);
  if (words_.GetLong(kLast) != Number()) StartRing(Number());
}

void ChangeFeed::StartRing(unsigned long long number) {
  words_.SetLong(kFrom, number);
  words_.SetLong(kLast, number);
  words_.Set(kEnd, 0);
  PCWord::StoreBeforeWrites(words_.At(kFirst), 0);
}

void ChangeFeed::Put(const ChangeNote* note) {
  if (note == nullptr || !IsOn() || !IsWanted()) return;
  const unsigned long long number = Number() + 1;
  if (words_.GetLong(kLast) != number - 1) StartRing(number - 1);
  if (note->list != nullptr) {
    for (unsigned int i = 0; i < note->list->Count(); ++i) {
      PutChange(number, nullptr, note->list->At(i));
    }
  } else {
    for (unsigned int i = 0; i < note->count; ++i) PutChange(number, note->base, note->changes[i]);
  }
  words_.SetLong(kLast, number);
}

void ChangeFeed::CountOwn(const ChangeNote* note) {
  if (!IsOwn()) return;
  Put(note);
  const unsigned int next = words_.Get(kSequence) + 2;
  if (next == 0) words_.Set(kSequenceHigh, words_.Get(kSequenceHigh) + 1);
  words_.Set(kSequence, next);
  WakeWaiters(words_);
}

// Who waits has stored the sequence as it was then. It is taken back only when it is old: who has
// stored a newer one may be about to sleep.
void ChangeFeed::WakeWaiters(const SharedWords& words) {
  unsigned int* const waiting = words.At(kWaiting);
  const unsigned int since = PCWord::LoadInOrder(waiting);
  if (since == 0) return;
  if (since != (words.Get(kSequence) | 1)) PCWord::Replace(waiting, since, 0);
  PCWord::WakeAll(words.At(kSequence));
}

const unsigned int* ChangeFeed::PrepareToWait(unsigned long long after, unsigned int* value) {
  if (Number() != after) return nullptr;
  *value = words_.Get(kSequence);
  if (mayWrite_) words_.Set(kWaiting, *value | 1);
  return *value / 2 == (after & 0x7FFFFFFF) ? words_.At(kSequence) : nullptr;
}

// A place in the ring that a word tells, whoever has stored it.
unsigned int ChangeFeed::Place(unsigned int word) const {
  const unsigned int place = words_.Get(word);
  return place < kRingSize && place % 4 == 0 ? place : 0;
}

unsigned int ChangeFeed::Used() const {
  const unsigned int first = Place(kFirst);
  const unsigned int end = Place(kEnd);
  return end >= first ? end - first : end + kRingSize - first;
}

// The ring goes on at its begin.
void ChangeFeed::Transfer(unsigned int place, unsigned char* bytes, unsigned int size,
                          bool isPut) const {
  while (size > 0) {
    const unsigned int now = size < kRingSize - place ? size : kRingSize - place;
    auto* ring = reinterpret_cast<unsigned char*>(words_.At(kRing + place));
    PCMem::Copy(isPut ? ring : bytes, isPut ? bytes : ring, now);
    bytes += now;
    size -= now;
    place = 0;
  }
}

// Reads the head of an entry that has `most` bytes at most. Returns its size, 0 for what is none.
unsigned int ChangeFeed::ReadHead(unsigned int place, unsigned int most,
                                  unsigned char* entry) const {
  if (most < kHead) return 0;
  Transfer(place, entry, kHead, false);
  const unsigned int size = GetU16(entry + kAtSize);
  const unsigned int texts = entry[kAtNameLength] + GetU16(entry + kAtPathLength);
  const bool isEntry = size <= kMostEntry && size <= most && size == Rounded(kHead + texts) &&
                       entry[kAtKind] < kChangeKinds && GetU16(entry + kAtBefore) % 4 == 0;
  return isEntry ? size : 0;
}

// False when there is none that makes sense.
bool ChangeFeed::DropOldest() {
  unsigned char head[kHead];
  const unsigned int place = Place(kFirst);
  const unsigned int size = ReadHead(place, Used(), head);
  if (size == 0) return false;
  words_.SetLong(kFrom, GetU64(head + kAtNumber));
  PCWord::StoreBeforeWrites(words_.At(kFirst), (place + size) % kRingSize);
  return true;
}

void ChangeFeed::PutChange(unsigned long long number, const char* base, const Change& change) {
  const ChangePath path(base, change.keyPath);
  unsigned int nameLength = change.valueName != nullptr ? RCEString::Length(change.valueName) : 0;
  if (nameLength > kValueNameMax) nameLength = kValueNameMax;
  const unsigned int length = path.Length();
  const bool fits = length < kMostEntry && Rounded(kHead + length + nameLength) <= kMostEntry;
  const unsigned int size = fits ? Rounded(kHead + length + nameLength) : 0;
  while (fits && kRingSize - Used() <= size) {
    if (!DropOldest()) StartRing(number);
  }
  if (!fits) return StartRing(number);
  const unsigned int end = Place(kEnd);
  unsigned int before = 0;
  unsigned long long lead = 0;
  unsigned char entry[kMostEntry];
  if (Used() > 0) {
    before = (end + kRingSize - Place(kNewest)) % kRingSize;
    Transfer(Place(kNewest), entry, kHead, false);
    lead = number - GetU64(entry + kAtNumber);
  }
  PutU32(entry + size - 4, 0);  // what fills it up
  PutU16(entry + kAtSize, static_cast<unsigned short>(size));
  PutU16(entry + kAtBefore, static_cast<unsigned short>(before));
  PutU64(entry + kAtNumber, number);
  PutU32(entry + kAtLead, lead < 0xFFFFFFFF ? static_cast<unsigned int>(lead) : 0xFFFFFFFF);
  entry[kAtKind] = static_cast<unsigned char>(change.kind);
  entry[kAtNameLength] = static_cast<unsigned char>(nameLength);
  PutU16(entry + kAtPathLength, static_cast<unsigned short>(length));
  char* text = path.Write(reinterpret_cast<char*>(entry + kHead));
  if (nameLength > 0) PCMem::Copy(text, change.valueName, nameLength);
  Transfer(end, entry, size, true);
  words_.Set(kNewest, end);
  words_.Set(kEnd, (end + size) % kRingSize);
}

ChangeFeed::Extent ChangeFeed::Look() const {
  Extent extent;
  extent.number = Number();
  extent.isKnown = words_.GetLong(kLast) == extent.number;
  extent.newest = Place(kNewest);
  extent.used = Used();
  return extent;
}

// Where the first of the changes after `since` is, and the bytes from there to the end. False when
// that cannot be told.
bool ChangeFeed::Find(const Extent& extent, unsigned long long since, unsigned int* place,
                      unsigned int* bytes) const {
  unsigned char head[kHead];
  *place = extent.newest;
  *bytes = 0;
  if (extent.used == 0) return true;
  for (unsigned long long number = extent.number; number > since;) {
    const unsigned int size = ReadHead(*place, extent.used - *bytes, head);
    if (size == 0) return false;
    number = GetU64(head + kAtNumber);
    if (number <= since) return *bytes == 0;
    *bytes += size;
    const unsigned int before = GetU16(head + kAtBefore);
    const unsigned int lead = GetU32(head + kAtLead);
    if (before == 0 || number - since <= lead) return true;
    if (before >= kRingSize) return false;
    *place = (*place + kRingSize - before) % kRingSize;
    number -= lead;
  }
  return true;
}

// From the newest back to the first that is wanted: what is before that may be written over
// meanwhile. That nothing else was is seen in the end.
Status ChangeFeed::Read(const Extent& extent, unsigned long long* after,
                        ChangeList* changes) const {
  const unsigned long long since = *after;
  if (since == extent.number) return status::kOk;
  unsigned int place = 0;
  unsigned int left = 0;
  const bool isThere =
      extent.isKnown && since < extent.number && Find(extent, since, &place, &left);
  Status result = isThere ? status::kOk : status::kLimit;
  unsigned char entry[kMostEntry];
  while (left > 0 && result.IsOk()) {
    const unsigned int size = ReadHead(place, left, entry);
    Transfer((place + kHead) % kRingSize, entry + kHead, size > 0 ? size - kHead : 0, false);
    result = size > 0 ? AddFrom(entry, changes) : Status(status::kLimit);
    left -= size;
    place = (place + size) % kRingSize;
  }
  PCWord::LoadBehindReads(words_.At(kFrom));
  if (result.IsOk() && since < words_.GetLong(kFrom)) result = status::kLimit;
  if (result != status::kNoMemory) *after = extent.number;
  return result;
}

Status ChangeFeed::AddFrom(const unsigned char* entry, ChangeList* changes) const {
  char text[kMostEntry + 2];
  const unsigned int pathLength = GetU16(entry + kAtPathLength);
  const unsigned int nameLength = entry[kAtNameLength];
  PCMem::Copy(text, entry + kHead, pathLength);
  text[pathLength] = 0;
  char* const name = text + pathLength + 1;
  PCMem::Copy(name, entry + kHead + pathLength, nameLength);
  name[nameLength] = 0;
  return changes->Add(static_cast<ChangeKind>(entry[kAtKind]), nullptr, text, name);
}

}  // namespace tamu::registry
