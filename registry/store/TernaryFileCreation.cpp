// Making a new, empty registry file.
#include "registry/base/RCEString.h"
#include "registry/format/FileHeader.h"
#include "registry/format/FileLayout.h"
#include "registry/store/ProcessFile.h"
#include "registry/store/TernaryFile.h"

namespace tamu::registry {

// The store is held from the first to the last write: the zero fill writes at the position that the
// write before it has left.
unsigned int TernaryFile::CreateRegistryFile(const char* path, unsigned int budget) {
  if (path == nullptr) return status::kBadArgument;
  const FileLayout layout(budget);
  if (!layout.IsPossible()) return status::kNoSpace;
  char* copy = RCEString::Duplicate(path);
  if (copy == nullptr) return status::kNoMemory;
  AccessScope access(*this);
  if (!PCFile::Make(copy)) {
    delete[] copy;
    return status::kNoSpace;
  }
  // Nobody goes on with what has just been emptied.
  if (IsAccessible() || ProcessFile::File().SameFile(copy)) ProcessFile::Close();
  FreeTables();
  delete[] path_;
  path_ = copy;
  ProcessFile::Opening opening;
  unsigned int result = opening.Open(path_, &generation_, &pathMissing_);
  if (result == status::kCannotOpen) result = status::kNoSpace;
  if (result == status::kOk) result = WriteEmptyFile(layout);
  if (result == status::kOk) {
    opening.Keep();
    ProcessFile::Close();
  } else {
    AbandonFile();  // an empty file is refused from then on; half a one might open
  }
  generation_ = 0;
  return result;
}

unsigned int TernaryFile::WriteEmptyFile(const FileLayout& layout) {
  FileHeader fileHeader;
  fileHeader.Stamp();
  if (WriteHeld(FileHeader::kOffset, FileHeader::kSize, fileHeader.bytes()) != status::kOk) {
    return status::kNoSpace;
  }
  const unsigned char reserved[FileHeader::kReservedSize] = {};
  if (WriteHeld(FileHeader::kReservedArea, FileHeader::kReservedSize, reserved) != status::kOk) {
    return status::kInvalidFile;
  }
  header_ = TernaryHeader();
  header_.setHeaderOffset(TernaryHeader::kFileOffset);
  header_.setHeaderVersion(TernaryHeader::kVersion);
  for (unsigned int i = 0; i < kNodeKinds; ++i) {
    const NodeKind kind = static_cast<NodeKind>(i);
    header_.setFirstTable(kind, layout.tableOffset(kind));
  }
  header_.setFileSize(layout.fileSize());
  if (WriteHeader(0, &header_) != status::kOk) return status::kInputOutput;
  for (unsigned int i = 0; i < kNodeKinds; ++i) {
    const unsigned int result = WriteFirstTable(layout, static_cast<NodeKind>(i));
    if (result != status::kOk) return result;
  }
  // The last table's entries end where the first area begins.
  return FileFillZero(layout.areaOffset(NodeKind::kString), layout.areasSize());
}

unsigned int TernaryFile::WriteFirstTable(const FileLayout& layout, NodeKind kind) {
  NodeAllocationTable table;
  table.setTableOffset(layout.tableOffset(kind));
  table.setAreaOffset(layout.areaOffset(kind));
  table.setEntryCount(layout.entryCount());
  table.setFreeCount(layout.entryCount() - 1);
  if (WriteHeld(table.tableOffset(), NodeAllocationTable::kSize, table.bytes()) != status::kOk) {
    return status::kInputOutput;
  }
  return FileFillSequence(table.entriesOffset(), 0, 1, layout.entryCount());
}

}  // namespace tamu::registry
