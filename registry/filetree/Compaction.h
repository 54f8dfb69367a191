// The same content in a fresh file.
#pragma once

#include <memory>

#include "registry/filetree/FileSurvey.h"
#include "registry/format/FileImage.h"

namespace tamu::registry {

// Copies all that the tree leads to into the lowest slots of new tables, in the order in which a
// search meets it; names that no key ends at and none goes on from stay behind, as do slots that
// are in use without reason. Counts of values become those that there are.
class Compaction {
 public:
  enum class Strays { kLeftBehind, kRefused };

  // Nobody writes the file meanwhile.
  Compaction(const LockedAccess& access, const FileStore& store, Strays strays)
      : access_(access), strays_(strays), survey_(access, store) {}

  // kInvalidFile: the file is damaged, or holds strays (FileSurvey::HasStrays) that are not to be
  // left behind, and what is lost could not be saved any more; kLimit: the data does not fit in the
  // tables as it comes; kInputOutput, kNoMemory.
  Status Run();
  // The file, this object's.
  const unsigned char* Bytes() const { return bytes_.get(); }
  unsigned int Size() const { return size_; }

 private:
  // New ids by the old ones; 0 for what stays behind.
  class Ids {
   public:
    Status Prepare(const TernaryNodeDescriptor& descriptor);
    unsigned int& Of(unsigned int id) { return *ids_[first_[TableOf(id)] + SlotOf(id)]; }
    unsigned int OfAny(unsigned int id) { return id == 0 ? 0 : Of(id); }

   private:
    Array<unsigned int> ids_;
    unsigned int first_[kTablesMax] = {};
  };
  Ids& IdsOf(NodeKind kind) { return ids_[static_cast<unsigned int>(kind)]; }

  unsigned int FirstEntries() const;
  Status ChooseStrings();
  Status Number(FileImage* image);
  Status NumberData(FileImage* image);
  Status CopyStrings(FileImage* image);
  Status CopyKeys(FileImage* image);
  Status CopyValues(FileImage* image);

  const LockedAccess& access_;
  const Strays strays_;
  FileSurvey survey_;
  Ids ids_[kNodeKinds];
  std::unique_ptr<unsigned char[]> bytes_;
  unsigned int size_ = 0;
};

}  // namespace tamu::registry
