#include <elf.h>

#include <algorithm>
#include <cstring>

#include "framework/elf/ElfReader.h"

namespace yax_elf {

namespace {

constexpr unsigned int kHead = 12;        // bytes before a note's name
constexpr unsigned int kMaxNotes = 256;   // of a file; some five are usual
constexpr unsigned int kMaxNoteName = 8;  // characters of the names that are looked for

}  // namespace

struct ElfReader::Note {
  unsigned int type = 0;
  char name[kMaxNoteName + 1] = {};
  unsigned long long data = 0;  // its offset in the file
  unsigned int size = 0;
  unsigned long long end = 0;  // where the next one begins within the segment
};

// False at the end of the segment, and where it does not hold the whole note.
bool ElfReader::ReadNote(const Segment& segment, unsigned long long at, Note* note) {
  unsigned char head[kHead];
  const unsigned long long left = segment.part.size - at;
  if (left < kHead || !Read(segment.part.offset + at, kHead, head)) return false;
  const unsigned long long nameSize = Number(head, 4);
  note->size = static_cast<unsigned int>(Number(head + 4, 4));
  note->type = static_cast<unsigned int>(Number(head + 8, 4));
  const unsigned long long step = segment.alignment == 8 ? 8 : 4;
  const unsigned long long data = (kHead + nameSize + step - 1) / step * step;
  if (data > left || note->size > left - data) return false;
  note->data = segment.part.offset + at + data;
  note->end = at + std::min(left, (data + note->size + step - 1) / step * step);
  std::memset(note->name, 0, sizeof note->name);
  if (nameSize > kMaxNoteName) return true;  // none that anybody looks for
  return Read(segment.part.offset + at + kHead, static_cast<std::size_t>(nameSize),
              reinterpret_cast<unsigned char*>(note->name));
}

unsigned int ElfReader::FindNote(const char* name, unsigned int type, unsigned char* to,
                                 unsigned int room) {
  unsigned int count = 0;
  for (unsigned int i = 0; i < keptSegments_; ++i) {
    const Segment& segment = segments_[i];
    if (segment.type != PT_NOTE) continue;
    Note note;
    for (; count < kMaxNotes && ReadNote(segment, note.end, &note); ++count) {
      if (note.type != type || std::strcmp(note.name, name) != 0) continue;
      return Read(note.data, std::min(note.size, room), to) ? note.size : 0;
    }
  }
  return 0;
}

}  // namespace yax_elf
