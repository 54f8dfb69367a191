// Journals that are put together byte by byte. docs/format.md tells them.
#pragma once

#include <cstdint>
#include <fstream>
#include <string>

namespace journal_bytes {

constexpr size_t kSector = 512;     // bytes
constexpr size_t kRecords = 16384;  // where the first record lies

inline void Put32(std::string* bytes, size_t offset, std::uint32_t value) {
  for (size_t i = 0; i < 4; ++i) (*bytes)[offset + i] = static_cast<char>(value >> (8 * i));
}

inline void Put64(std::string* bytes, size_t offset, std::uint64_t value) {
  for (size_t i = 0; i < 8; ++i) (*bytes)[offset + i] = static_cast<char>(value >> (8 * i));
}

inline std::uint32_t Word(const std::string& bytes, size_t offset) {
  std::uint32_t word = 0;
  for (size_t i = 0; i < 4 && offset + i < bytes.size(); ++i) {
    word |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[offset + i])) << (8 * i);
  }
  return word;
}

inline std::uint64_t ContentHashOf(const std::string& file) {
  std::uint64_t sum = 0;
  for (size_t word = 0; 4 * word < file.size(); ++word) {
    std::uint64_t x = (word + 1) * 0x9E3779B97F4A7C15u;
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9u;
    x = (x ^ (x >> 29)) | 1;
    sum += Word(file, 4 * word) * x;
  }
  return sum;
}

inline std::uint64_t ChecksumOf(const std::string& record) {
  std::uint64_t state = 0xCBF29CE484222325u;
  for (size_t at = 0; at < record.size(); at += 4) {
    if (at == 32 || at == 36) continue;  // the checksum itself
    state = (state ^ Word(record, at)) * 0x9FB21C651E98DF25u;
    state ^= state >> 28;
  }
  return state ^ (state >> 32);
}

// 16 bytes, as the system tells them.
inline std::string BootId() {
  std::ifstream in("/proc/sys/kernel/random/boot_id");
  std::string text;
  in >> text;
  std::string bytes;
  std::string digits;
  for (const char c : text) {
    if (c != '-') digits += c;
  }
  for (size_t i = 0; i + 1 < digits.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
  }
  return bytes;
}

// A record that puts `text`, of a multiple of four bytes, at an offset of the file that is then
// `file`.
inline std::string RecordOf(std::uint32_t offset, const std::string& text, const std::string& file,
                            std::uint64_t sequence) {
  std::string record(48, '\0');
  record.replace(0, 4, "YREC");
  Put32(&record, 4, static_cast<std::uint32_t>(48 + text.size()));
  Put64(&record, 8, sequence);
  Put32(&record, 16, 1);
  Put32(&record, 20, static_cast<std::uint32_t>(file.size()));
  Put64(&record, 24, ContentHashOf(file));
  Put32(&record, 40, offset);
  Put32(&record, 44, static_cast<std::uint32_t>(text.size()));
  return record + text;
}
inline std::string Head(std::uint32_t mode) {
  std::string head(kRecords, '\0');
  head.replace(0, 4, "YAXJ");
  Put32(&head, 4, 2);
  Put32(&head, 8, mode);
  return head;
}
inline std::string ProcessJournal(const std::string& record) {
  std::string head = Head(1);
  head.replace(16, 16, BootId());
  Put32(&head, 32, kRecords);
  return head + record;
}
inline std::string Sealed(std::string record) {
  Put64(&record, 32, ChecksumOf(record));
  record.resize((record.size() + kSector - 1) / kSector * kSector);
  return record;
}

}  // namespace journal_bytes
