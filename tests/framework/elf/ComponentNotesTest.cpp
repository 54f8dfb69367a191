#include <algorithm>

#include "framework/elf/ComponentNotes.h"
#include "framework/elf/GuidBytes.h"
#include "tests/support/ElfImage.h"

namespace {

using yax_elf::ComponentNotes;

constexpr YAX_GUID_ST kClockGuid = {
    0x01234567, 0x89AB, 0xCDEF, {0x10, 0x32, 0x54, 0x76, 0x98, 0xBA, 0xDC, 0xFE}};
constexpr char kClockBytes[] = "\x01\x23\x45\x67\x89\xAB\xCD\xEF\x10\x32\x54\x76\x98\xBA\xDC\xFE";

ComponentNotes NotesOf(const ElfImage& image) {
  const ElfBytes source(image.Bytes());
  yax_elf::ElfReader elf(source);
  EXPECT_STREQ("", elf.problem());
  ComponentNotes notes;
  ReadComponentNotes(elf, &notes);
  return notes;
}

// As the compiler of such a machine lays the identifier out.
std::string GuidInFile(const ElfImage& image) {
  std::string bytes(kClockBytes, 16);
  if (image.isBigEndian) return bytes;
  std::reverse(bytes.begin(), bytes.begin() + 4);
  std::reverse(bytes.begin() + 4, bytes.begin() + 6);
  std::reverse(bytes.begin() + 6, bytes.begin() + 8);
  return bytes;
}

TEST(ComponentNotes, AreReadInTheOrderOfTheMachine) {
  for (const bool isBigEndian : {false, true}) {
    ElfImage image;
    image.isBigEndian = isBigEndian;
    std::string version(4, 0);
    version[isBigEndian ? 3 : 0] = 7;
    image.notes = image.Note("YAX", 1, version + GuidInFile(image)) + image.Note("GNU", 3, "id");
    const ComponentNotes notes = NotesOf(image);
    EXPECT_EQ(7u, notes.version);
    ASSERT_EQ(1u, notes.interfaceCount);
    EXPECT_TRUE(kClockGuid == notes.interfaces[0]);
    ASSERT_EQ(2u, notes.buildIdSize);
    EXPECT_EQ(0, std::memcmp("id", notes.buildId, 2));
  }
}

TEST(ComponentNotes, AreCutWhereThereIsNoMoreRoom) {
  ElfImage image;
  EXPECT_EQ(0u, NotesOf(image).version);
  image.notes = image.Note("YAX", 1, "abc");
  EXPECT_EQ(0u, NotesOf(image).version);
  image.notes = image.Note("YAX", 1, std::string(4 + 16 * 100, 'x')) +
                image.Note("GNU", 3, std::string(100, 'i'));
  const ComponentNotes notes = NotesOf(image);
  EXPECT_EQ(ComponentNotes::kMaxInterfaces, notes.interfaceCount);
  EXPECT_EQ(ComponentNotes::kMaxBuildId, notes.buildIdSize);
}

TEST(ComponentNotes, IdentifiersGoIntoBytesAndBack) {
  unsigned char bytes[yax_elf::kGuidBytes];
  yax_elf::PutGuid(bytes, kClockGuid);
  EXPECT_EQ(0, std::memcmp(kClockBytes, bytes, sizeof bytes));
  EXPECT_TRUE(kClockGuid == yax_elf::GuidOf(bytes));
}

}  // namespace
