#include "registry/store/FileHold.h"

#include <new>

#include "platform/PCSideFile.h"

namespace tamu::registry {

using Holding = PCSideFile::Holding;

struct FileHold::Held {
  PCSideFile file;
  unsigned long long device = 0;
  unsigned long long number = 0;
  unsigned int count = 1;  // of the objects that have it
  Held* next = nullptr;
};

FileHold::Held* FileHold::sFirst = nullptr;

// One that was there before a fork is the other process's.
bool FileHold::Take(const char* path, bool isAlone) {
  Drop();
  Held* made = new (std::nothrow) Held;
  const Holding how = isAlone ? Holding::kAlone : Holding::kShared;
  if (made == nullptr || !made->file.OpenToHold(path, how)) {
    delete made;
    return true;
  }
  made->file.Identity(&made->device, &made->number);
  for (Held* each = sFirst; each != nullptr; each = each->next) {
    if (each->file.IsOpen() && each->device == made->device && each->number == made->number) {
      delete made;
      ++each->count;
      held_ = each;
      return true;
    }
  }
  if (!made->file.MayHold(PCSideFile::kPresence, how)) {
    delete made;
    return false;
  }
  made->next = sFirst;
  sFirst = made;
  held_ = made;
  return true;
}

// Others of the process may need it alone.
void FileHold::Share() {
  if (held_ != nullptr && held_->count == 1) {
    held_->file.Hold(PCSideFile::kPresence, Holding::kShared);
  }
}

void FileHold::Drop() {
  Held* const held = held_;
  held_ = nullptr;
  if (held == nullptr || --held->count > 0) return;
  Held** link = &sFirst;
  while (*link != held) link = &(*link)->next;
  *link = held->next;
  delete held;
}

}  // namespace tamu::registry
