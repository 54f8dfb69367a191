#include "tools/yaxreg/image/PendingChange.h"

#include "registry/format/ContentHash.h"
#include "registry/format/JournalReader.h"
#include "registry/store/JournalPath.h"
#include "tools/yaxreg/image/FileBytes.h"
#include "tools/yaxreg/image/SideFolder.h"

namespace yaxreg {

namespace {

using tamu::registry::JournalReader;

const unsigned char* Unsigned(const std::string& bytes) {
  return reinterpret_cast<const unsigned char*>(bytes.data());
}

// Puts the ranges of all records into the bytes. False when one lies beyond their end.
bool Apply(JournalReader& reader, std::string* bytes) {
  do {
    unsigned int offset = 0;
    unsigned int size = 0;
    const unsigned char* content = nullptr;
    while (reader.NextRange(&offset, &size, &content)) {
      if (offset > bytes->size() || size > bytes->size() - offset) return false;
      bytes->replace(offset, size, reinterpret_cast<const char*>(content), size);
    }
  } while (reader.Next());
  return true;
}

// CompletePendingChange with the journal in one folder; null: beside the file.
bool CompleteFrom(const char* sideFolder, const std::string& path, std::string* bytes) {
  tamu::registry::JournalPath place;
  std::string journal;
  if (!place.Find(path.c_str(), sideFolder) ||
      !ReadWholeFile(place.Text(), 2 * size_t{tamu::registry::kJournalMax}, &journal).isDone()) {
    return false;
  }
  JournalReader reader(Unsigned(journal), static_cast<unsigned int>(journal.size()));
  if (!reader.Next()) return false;
  std::string completed = *bytes;
  if (!Apply(reader, &completed)) return false;
  const unsigned int length = reader.Record().fileLength();
  if (length > completed.size() ||
      tamu::registry::ContentHash::Of(0, Unsigned(completed), length) !=
          reader.Record().contentHash()) {
    return false;
  }
  if (completed == *bytes) return false;
  bytes->swap(completed);
  return true;
}

}  // namespace

bool CompletePendingChange(const std::string& path, std::string* bytes) {
  return (SideFolder() != nullptr && CompleteFrom(SideFolder(), path, bytes)) ||
         CompleteFrom(nullptr, path, bytes);
}

}  // namespace yaxreg
