// Opening and closing the store.
#include "registry/store/TernaryFile.h"

#include "registry/base/RCEString.h"
#include "registry/format/FileHeader.h"
#include "registry/store/ProcessFile.h"

namespace tamu::registry {

TernaryFile::~TernaryFile() {
  delete[] path_;
}

unsigned int TernaryFile::Initialize(const char* path) {
  if (path == nullptr) return status::kBadArgument;
  if (!lock_.IsCreated() && !lock_.Create()) return status::kInputOutput;
  if (!ProcessFile::Lock().IsCreated()) return status::kInputOutput;
  char* copy = RCEString::Duplicate(path);
  if (copy == nullptr) return status::kNoMemory;
  AccessScope access(*this);
  const bool wasOpen = IsAccessible();
  delete[] path_;
  path_ = copy;
  const unsigned int result = LoadFile();
  if (result == status::kOk) return status::kOk;
  FreeTables();
  generation_ = 0;
  if (wasOpen) ProcessFile::Close();  // what this store had open; another store's stays
  return result;
}

// Nothing of what is open is given up before the new file has all that is needed.
unsigned int TernaryFile::LoadFile() {
  FreeTables();
  generation_ = 0;
  pathMissing_ = false;
  ProcessFile::Opening opening;
  unsigned int result = opening.Open(path_, &generation_, &pathMissing_);
  if (result == status::kOk) result = LoadHeaders();
  if (result == status::kOk) opening.Keep();
  return result;
}

// A file that exists and cannot be opened must not be emptied by making it.
unsigned int TernaryFile::OpenOrCreate(const char* path, bool* made) {
  if (made != nullptr) *made = false;
  unsigned int result = Initialize(path);
  if (result != status::kCannotOpen) return result;
  if (!PathMissing()) return status::kNoSpace;
  AccessScope access(*this);
  ProcessFile::Opening opening;
  result = CreateRegistryFile(path, kDefaultBudget);
  if (result != status::kOk) return result;
  if (made != nullptr) *made = true;
  result = Initialize(path);
  if (result == status::kOk) opening.Keep();
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
    // Damage is kept in the descriptor.
    const unsigned int loaded = LoadAllNAT(header_.firstTable(kind), &Descriptor(kind));
    if (loaded == status::kNoMemory) return loaded;
  }
  return status::kOk;
}

unsigned int TernaryFile::Finalize() {
  if (!lock_.IsCreated()) return status::kOk;
  {
    AccessScope access(*this);
    if (IsAccessible()) ProcessFile::Close();
    generation_ = 0;
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
  if (!IsHeaderInPlace()) return status::kInvalidFile;
  const unsigned int before = header_.startNode();
  header_.setStartNode(id);
  const unsigned int result = WriteHeader(0, &header_);
  if (result != status::kOk) header_.setStartNode(before);
  return result;
}

}  // namespace tamu::registry
