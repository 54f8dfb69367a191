// A registry file as a whole: its tables, its free lists and everything that its tree leads to.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "registry/format/NodeId.h"
#include "tools/yaxreg/image/Content.h"
#include "tools/yaxreg/image/Finding.h"

namespace yaxreg {

using tamu::registry::kNodeKinds;
using tamu::registry::NodeKind;

// The slots of one kind, all tables together.
struct SlotUse {
  unsigned int tables = 0;    // of at most 21
  unsigned int slots = 0;     // that can be handed out; slot 0 of a table is none
  unsigned int reached = 0;   // the tree leads to them
  unsigned int leaked = 0;    // in use, but nothing leads to them
  unsigned int free = 0;      // on a free list, and not reached
  // Of the free ones those in older tables, which are handed out with SpacePolicy::kReuse alone.
  unsigned int stranded = 0;
  // Slots that can still be handed out with kExact until the kind is full for good: what is free in
  // the newest table, and what the tables bring that may still be appended.
  unsigned int remaining = 0;
  // The same with kReuse, as the tool does it.
  unsigned int room() const { return remaining + stranded; }
};

// What becomes of keys that are in use, but that nothing leads to: the library leaves such behind
// when a key is deleted while it is open, and damage does.
enum class Orphans {
  kIfDamaged,  // they are left out unless the tree is damaged
  kAlways      // they are content
};

// Makes the path of the key that a finding is about, when it is needed.
using PathMaker = std::function<std::string()>;

// Decodes a file in memory, whatever is in it: every record is checked as it is decoded, every walk
// is bounded, nothing is written and nothing is asked of the system. docs/format.md tells the file.
class RegistryImage {
 public:
  static constexpr size_t kMaxSize = 2u << 20;  // bytes; a usual registry has 2,038,448 at most
  static constexpr size_t kMaxFindings = 2000;  // further ones are counted
  static constexpr size_t kMaxPath = 1000;      // bytes of a path in a finding, see ShortPath

  // One allocation table and its area, as far as they could be made out.
  struct Table {
    unsigned int offset = 0;      // of the table in the file
    unsigned int area = 0;        // of slot 0 of its area
    unsigned int entries = 0;     // slot 0 included
    unsigned int freeCount = 0;   // as stored
    std::vector<bool> isFree;     // by slot: on the free list
    std::vector<bool> isReached;  // by slot: the tree leads to it
  };

  // Orphans that are content are below "lost+found", by the numbers of their nodes; what can be
  // told of their names is the end.
  // `isCompleted`: the bytes are those that the next opening makes of the file.
  explicit RegistryImage(std::string bytes, Orphans orphans = Orphans::kIfDamaged,
                         bool isCompleted = false);

  // False when the bytes are no registry file at all; nothing else is known then.
  bool IsRegistry() const { return isRegistry_; }
  // No finding but notes.
  bool IsSound() const { return worst_ == Severity::kNote; }
  // Everything that the file holds is in content(): there may be damage, but none that matters to
  // keys and values.
  bool IsComplete() const { return worst_ != Severity::kLoss; }

  const Content& content() const { return content_; }
  const std::vector<Finding>& findings() const { return findings_; }
  // Findings that did not fit into findings().
  size_t moreFindings() const { return moreFindings_; }
  // Keys or values are in use that nothing leads to. They are content if the file is damaged or
  // Orphans::kAlways was asked for.
  bool HasStrays() const { return hasStrays_; }
  // A program has died in a change that the next one completes; here it is complete already.
  bool HasPendingChange() const { return isCompleted_; }
  // The file; empty once it was dropped, which saves memory where only the rest is needed.
  const std::string& bytes() const { return bytes_; }
  void DropBytes() {
    bytes_.clear();
    bytes_.shrink_to_fit();
  }
  const std::vector<Table>& Tables(NodeKind kind) const {
    return tables_[static_cast<unsigned int>(kind)];
  }
  SlotUse UseOf(NodeKind kind) const;
  // String nodes that the tree leads to, but that lead to no key: left behind by deleted keys and
  // failed creations.
  unsigned int deadNodes() const { return deadNodes_; }
  // The names that are left without a key, by their paths; the first kMaxFindings of them.
  const std::vector<std::string>& deadNames() const { return deadNames_; }

  // "string node", "key", "value" or "data block".
  static const char* KindName(NodeKind kind);
  // "string node 0x100", and the end of it.
  static std::string NodeName(NodeKind kind, unsigned int id);
  static std::string IdText(unsigned int id);
  // The path, or of a very long one its beginning, "/.../" and its end.
  static std::string ShortPath(const std::string& path);

 private:
  friend class TableReader;
  friend class NodeGraph;
  friend class KeyReader;
  friend class TreeReader;

  // Little-endian number at a file offset; 0 where the file has ended.
  unsigned int Word(unsigned long long offset) const;
  bool HasSlot(NodeKind kind, unsigned int id) const;
  // The record of an id; null when there is no such slot or the file ends before it.
  const unsigned char* Record(NodeKind kind, unsigned int id) const;
  // The same, copied into a record of the store. False: *record is as it was.
  template <class Stored>
  bool Read(NodeKind kind, unsigned int id, Stored* record) const {
    const unsigned char* const bytes = Record(kind, id);
    if (bytes == nullptr) return false;
    for (unsigned int i = 0; i < Stored::kSize; ++i) record->bytes()[i] = bytes[i];
    return true;
  }
  // The entry of a slot in the table at an offset.
  unsigned int EntryAt(unsigned int table, unsigned int slot) const;
  // The slot's entry in its table. The slot exists.
  unsigned int Entry(NodeKind kind, unsigned int id) const;
  bool IsFree(NodeKind kind, unsigned int id) const;
  // Handed out: not on the free list, nor, where that is damaged, linked as a free slot is.
  bool IsInUse(NodeKind kind, unsigned int id) const;
  bool IsReached(NodeKind kind, unsigned int id) const;
  void MarkReached(NodeKind kind, unsigned int id);
  const Table& TableOf(NodeKind kind, unsigned int id) const {
    return Tables(kind)[tamu::registry::TableOf(id)];
  }
  void Report(Severity severity, const std::string& text);
  void Report(Severity severity, const std::string& text, const PathMaker& path);
  // True when a finding is to be kept, not only counted.
  bool Count(Severity severity);
  // All bytes of a record are 0.
  template <class Stored>
  static bool IsEmpty(const Stored& record) {
    for (unsigned int i = 0; i < Stored::kSize; ++i) {
      if (record.bytes()[i] != 0) return false;
    }
    return true;
  }

  std::string bytes_;
  bool isCompleted_ = false;
  bool isRegistry_ = false;
  unsigned int startNode_ = 0;  // as stored
  std::vector<Table> tables_[kNodeKinds];
  Content content_;
  Severity worst_ = Severity::kNote;
  std::vector<Finding> findings_;
  size_t moreFindings_ = 0;
  bool hasStrays_ = false;
  unsigned int deadNodes_ = 0;
  std::vector<std::string> deadNames_;
};

}  // namespace yaxreg
