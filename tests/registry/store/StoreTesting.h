// A registry file in a folder of its own, and its bytes read without the library's help.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "registry/store/TernaryFile.h"
#include "tests/platform/TestFiles.h"
#include "tests/support/StoreCalls.h"

namespace status = tamu::registry::status;

namespace tamu::registry::storetests {

// The places of a file made with the default budget of 65536 bytes: 364 slots of each kind.
constexpr unsigned int kNewFileSize = 75888;
constexpr unsigned int kTables[4] = {4220, 5712, 7204, 8696};     // strings, keys, values, data
constexpr unsigned int kAreas[4] = {10188, 24788, 33548, 52528};  // their slot 0
constexpr unsigned int kAreaEnds[4] = {24788, 33548, 52528, 75888};
constexpr unsigned int kRecordSizes[4] = {40, 24, 52, 64};
constexpr NodeKind kKinds[4] = {NodeKind::kString, NodeKind::kKey, NodeKind::kValue,
                                NodeKind::kData};

inline unsigned int U32At(const std::string& bytes, size_t offset) {
  unsigned int value = 0;
  for (unsigned int i = 4; i > 0; --i) {
    const bool there = offset + i <= bytes.size();
    value = value << 8 | (there ? static_cast<unsigned char>(bytes[offset + i - 1]) : 0u);
  }
  return value;
}

// Writes over four bytes of the text, which must be there.
inline void SetU32(std::string& bytes, unsigned int offset, unsigned int value) {
  for (unsigned int i = 0; i < 4; ++i) {
    bytes.at(offset + i) = static_cast<char>(value >> (8 * i) & 0xFF);
  }
}

// Appends four bytes.
inline void AddU32(std::string& bytes, unsigned int value) {
  bytes.resize(bytes.size() + 4);
  SetU32(bytes, static_cast<unsigned int>(bytes.size() - 4), value);
}

inline std::string Zeros(unsigned int count) {
  return std::string(count, '\0');
}

// What is wrong with the free lists of the file; empty when nothing is: every list has freeCount
// different slots, all of them inside the table.
inline std::string FreeListFindings(const std::string& bytes) {
  std::string findings;
  for (unsigned int kind = 0; kind < 4; ++kind) {
    unsigned int table = U32At(bytes, 4180 + 12 + 4 * kind);
    for (unsigned int number = 0; table != 0 && number < 21; ++number) {
      const unsigned int entries = U32At(bytes, table + 12);
      const unsigned int freeCount = U32At(bytes, table + 28);
      const std::string where = "kind " + std::to_string(kind) + " table " + std::to_string(number);
      if (freeCount >= entries) findings += where + ": freeCount too large\n";
      std::vector<bool> seen(entries);
      unsigned int slot = U32At(bytes, table + 32);
      for (unsigned int i = 0; i < freeCount && i < entries; ++i) {
        if (slot == 0 || slot >= entries || seen[slot]) {
          findings +=
              where + ": free slot " + std::to_string(slot) + " at " + std::to_string(i) + "\n";
          break;
        }
        seen[slot] = true;
        slot = U32At(bytes, table + 32 + 4 * slot);
      }
      table = U32At(bytes, table);
    }
  }
  return findings;
}

// A new registry file of the default budget, open in `store`.
class StoreTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(status::kOk, store.CreateRegistryFile(path.c_str(), 65536));
    ASSERT_EQ(status::kOk, store.Initialize(path.c_str()));
  }
  void TearDown() override { store.Finalize(); }

  std::string Bytes() const { return GetFile(path); }
  unsigned int U32(unsigned int offset) const { return U32At(Bytes(), offset); }
  // Entry `slot` of a kind's first table, and its freeCount.
  unsigned int Entry(unsigned int kind, unsigned int slot) const {
    return U32(kTables[kind] + 32 + 4 * slot);
  }
  unsigned int FreeCount(unsigned int kind) const { return U32(kTables[kind] + 28); }

  // Closes the store, writes a word into the file, opens it again.
  void Damage(unsigned int offset, unsigned int value) {
    std::string bytes = Bytes();
    SetU32(bytes, offset, value);
    Reopen(bytes);
  }
  void Reopen(const std::string& bytes) {
    store.Finalize();
    PutFile(path, bytes);
    ASSERT_EQ(status::kOk, store.Initialize(path.c_str()));
  }

  // What the store knows of its file: the header, and the heads and counts of each kind.
  std::string Known() {
    std::string known(reinterpret_cast<const char*>(store.Header().bytes()), TernaryHeader::kSize);
    for (const NodeKind kind : kKinds) {
      const TernaryNodeDescriptor& descriptor = store.Descriptor(kind);
      for (unsigned int i = 0; i < descriptor.tableCount; ++i) {
        known.append(reinterpret_cast<const char*>(descriptor.tables[i]->bytes()),
                     NodeAllocationTable::kSize);
      }
      AddU32(known, descriptor.usedNodes);
      AddU32(known, descriptor.totalNodes);
    }
    return known;
  }
  // The same as a store that opens the file now would know it.
  std::string KnownAnew() {
    store.Finalize();
    EXPECT_EQ(status::kOk, store.Initialize(path.c_str()));
    return Known();
  }

  unsigned int Acquire(NodeKind kind, unsigned int* id) { return AcquireSlot(store, kind, id); }
  // The id of the next slot; 0 when there is none.
  unsigned int Take(NodeKind kind) {
    unsigned int id = 0;
    EXPECT_EQ(status::kOk, Acquire(kind, &id));
    return id;
  }
  void TakeMany(NodeKind kind, unsigned int count) {
    for (unsigned int i = 0; i < count; ++i) ASSERT_NE(0u, Take(kind)) << "slot " << i;
  }

  TempDir dir;
  std::string path = dir / "store.rce";
  TernaryFile store;
};

}  // namespace tamu::registry::storetests
