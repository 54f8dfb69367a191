// A file that may be a shared object, open for reading.
#pragma once

#include "framework/elf/ElfReader.h"

namespace yax_elf {

// Nothing but a regular file is opened: no pipe keeps us waiting, no device does something.
class ElfFile final : public ElfSource {
 public:
  explicit ElfFile(const char* path);
  ~ElfFile();
  ElfFile(const ElfFile&) = delete;
  ElfFile& operator=(const ElfFile&) = delete;

  // 0 when it is open; why not, as of errno; kNotRegular.
  int error() const { return error_; }
  static constexpr int kNotRegular = -1;

  bool Read(unsigned long long offset, std::size_t size, unsigned char* to) const override;
  unsigned long long length() const override { return length_; }

 private:
  int error_ = 0;
  unsigned long long length_ = 0;
  int fd_;  // after what its opening sets
};

}  // namespace yax_elf
