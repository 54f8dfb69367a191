// Reading a journal.
#pragma once

#include "registry/format/JournalFormat.h"

namespace tamu::registry {

// The records of a journal whose bytes are in memory, in the order in which they belong into the
// registry. Ends at the first that is not whole; any bytes may be given.
class JournalReader {
 public:
  JournalReader(const unsigned char* bytes, unsigned int size);

  // Goes to the next record, the first at first.
  bool Next();
  const JournalRecord& Record() const { return record_; }
  // Goes to the next range of the record. False when there is none.
  bool NextRange(unsigned int* offset, unsigned int* size, const unsigned char** content);
  // The records are made to be followed after a power cut.
  bool IsForPowerCuts() const { return mode_ == kPower; }
  // There is a record, but the system does not tell whether it is of this start of the machine.
  bool IsUnclear() const { return isUnclear_; }

 private:
  static constexpr unsigned int kProcess = 1;
  static constexpr unsigned int kPower = 2;

  bool IsWhole(unsigned int offset, const JournalRecord& record) const;

  const unsigned char* bytes_;
  unsigned int size_;
  unsigned int mode_ = 0;   // 0: no journal, or none for this start of the machine
  unsigned int next_ = 0;   // offset of the next record; 0 = there is none
  unsigned int range_ = 0;  // offset of the next range
  unsigned int rangesEnd_ = 0;
  unsigned int rangesLeft_ = 0;
  bool isFirst_ = true;
  bool isUnclear_ = false;
  JournalRecord record_;
};

}  // namespace tamu::registry
