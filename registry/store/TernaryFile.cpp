// Opening and closing the store.
#include "registry/store/TernaryFile.h"

#include "registry/RCEString.h"
#include "registry/store/FileHeader.h"
#include "registry/store/ProcessFile.h"

namespace tamu::registry {

TernaryFile::~TernaryFile() { delete[] path_; }

unsigned int TernaryFile::Initialize(const char* path) {
  if (path == nullptr) return status::kBadArgument;
  if (!lock_.IsCreated() && !lock_.Create()) return status::kInputOutput;
  if (!ProcessFile::Lock().IsCreated()) return status::kInputOutput;
  char* copy = RCEString::Duplicate(path);
  if (copy == nullptr) return status::kNoMemory;
  AccessScope access(*this);
  delete[] path_;
  path_ = copy;
  FreeTables();
  const unsigned int opened = ProcessFile::Open(path_, &generation_);
  pathMissing_ = opened == status::kCannotOpen && file.Missing();
  if (opened != status::kOk) return opened;
  const unsigned int result = LoadHeaders();
  if (result != status::kOk) ProcessFile::Close();
  return result;
}

// The file header, the reserved area behind it and the TernaryHeader follow each other. Then the
// chains of tables: damage there is remembered kind by kind and does not fail the opening.
unsigned int TernaryFile::LoadHeaders() {
  FileHeader fileHeader;
  if (ReadHeld(FileHeader::kOffset, FileHeader::kSize, fileHeader.bytes()) != status::kOk ||
      !fileHeader.IsValid()) {
    return status::kInvalidFile;
  }
  unsigned char reserved[FileHeader::kReservedSize];
  if (ReadHeld(FileHeader::kReservedArea, FileHeader::kReservedSize, reserved) != status::kOk ||
      ReadHeld(TernaryHeader::kFileOffset, TernaryHeader::kSize, header_.bytes()) != status::kOk) {
    return status::kInvalidFile;
  }
  for (unsigned int i = 0; i < kNodeKinds; ++i) {
    const NodeKind kind = static_cast<NodeKind>(i);
    LoadAllNAT(header_.firstTable(kind), &Descriptor(kind));  // the descriptor keeps the damage
  }
  return status::kOk;
}

unsigned int TernaryFile::Finalize() {
  if (!lock_.IsCreated()) return status::kOk;
  {
    AccessScope access(*this);
    if (IsAccessible()) ProcessFile::Close();
    FreeTables();
  }
  lock_.Destroy();
  return status::kOk;
}

void TernaryFile::FreeTables() {
  for (unsigned int i = kNodeKinds; i > 0; --i) Descriptor(static_cast<NodeKind>(i - 1)).Clear();
}

unsigned int TernaryFile::GetStartNode(char) {
  AccessScope access(*this);
  return header_.startNode();
}

unsigned int TernaryFile::SetStartNode(char, unsigned int id) {
  AccessScope access(*this);
  header_.setStartNode(id);
  return WriteHeader(0, &header_);
}

}  // namespace tamu::registry
