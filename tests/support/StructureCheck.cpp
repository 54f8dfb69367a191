#include "tests/support/StructureCheck.h"

#include "tests/support/RegistryImage.h"

namespace {

using Image = RegistryImage;

constexpr unsigned kEndsHere = 0x10;     // string node flag: a key name ends here
constexpr unsigned kStringFlags = 0x31;  // every flag of a string node
constexpr unsigned kInBlocks = 0x20;     // value flags
constexpr unsigned kSet = 0x40;
constexpr unsigned kTypeBits = 0x1F;

// A string node still to be visited, and what is known about the names below it: the text before
// its segment and the bounds, both excluded, of its first character.
struct Visit {
  unsigned id;
  std::string prefix;
  int above;
  int below;
};

constexpr int kNoLower = -1000;
constexpr int kNoUpper = 1000;

class Walker {
 public:
  explicit Walker(Image& image) : image_(image) {}

  void Run();
  std::map<std::string, DecodedKey> keys;

 private:
  void VisitRoot(unsigned id);
  void VisitNode(const Visit& visit);
  std::string CheckSegment(unsigned node, const std::string& name);
  void CheckFlags(unsigned node, const std::string& name);
  void Follow(unsigned id, const std::string& prefix, int above = kNoLower, int below = kNoUpper);
  void ReadKey(unsigned id, const std::string& path);
  DecodedValue ReadValue(unsigned id, unsigned value);
  void ReadData(unsigned firstBlock, const std::string& name, DecodedValue* value);
  void Expect(bool holds, const std::string& finding) {
    if (!holds) image_.Report(finding);
  }

  Image& image_;
  std::vector<Visit> pending_;
};

void Walker::Run() {
  if (!image_.isUsable()) return;
  if (image_.StartNode() != 0) VisitRoot(image_.StartNode());
  while (!pending_.empty()) {
    const Visit visit = pending_.back();
    pending_.pop_back();
    VisitNode(visit);
  }
}

void Walker::VisitRoot(unsigned id) {
  const unsigned node = image_.Claim(Image::kStrings, id);
  if (node == 0) return;
  const std::string name = "root " + Image::Name(Image::kStrings, id);
  Expect(image_.U8(node + 1) == 0 && image_.U8(node + 3) == 0, name + ": has characters");
  Expect(image_.U32(node + 4) == 0 && image_.U32(node + 8) == 0 && image_.U32(node + 12) == 0,
         name + ": has neighbours");
  CheckFlags(node, name);
  if (image_.U32(node + 20) != 0) ReadKey(image_.U32(node + 20), "");
  Follow(image_.U32(node + 16), "");
}

void Walker::Follow(unsigned id, const std::string& prefix, int above, int below) {
  if (id != 0) pending_.push_back({id, prefix, above, below});
}

void Walker::VisitNode(const Visit& visit) {
  const unsigned node = image_.Claim(Image::kStrings, visit.id);
  if (node == 0) return;
  const std::string name = Image::Name(Image::kStrings, visit.id);
  const std::string segment = CheckSegment(node, name);
  CheckFlags(node, name);
  const char splitChar = static_cast<char>(image_.U8(node + 3));
  const int split = static_cast<signed char>(splitChar);
  const int first = segment.empty() ? split : static_cast<signed char>(segment[0]);
  Expect(first > visit.above && first < visit.below, name + ": out of order");

  // Neighbours branch at the split character's place: behind the segment, if there is one.
  const std::string before = visit.prefix + segment;
  Follow(image_.U32(node + 4), before, segment.empty() ? visit.above : kNoLower, split);
  Follow(image_.U32(node + 8), before, split, segment.empty() ? visit.below : kNoUpper);
  const std::string whole = before + splitChar;
  Follow(image_.U32(node + 12), whole);
  Follow(image_.U32(node + 16), whole + '/');
  if (image_.U32(node + 20) != 0) ReadKey(image_.U32(node + 20), whole);
}

std::string Walker::CheckSegment(unsigned node, const std::string& name) {
  const unsigned length = image_.U8(node + 1);
  Expect(length <= 16, name + ": segment of " + std::to_string(length) + " characters");
  const std::string segment = image_.Bytes(node + 24, length <= 16 ? length : 16);
  const std::string characters = segment + static_cast<char>(image_.U8(node + 3));
  Expect(characters.find('/') == std::string::npos, name + ": a '/' in a name");
  Expect(characters.find('\0') == std::string::npos, name + ": a zero byte in a name");
  return segment;
}

void Walker::CheckFlags(unsigned node, const std::string& name) {
  const unsigned flags = image_.U8(node + 2);
  const bool hasKey = image_.U32(node + 20) != 0;
  Expect(image_.U8(node) == 0, name + ": reserved byte is not 0");
  Expect((flags & ~kStringFlags) == 0, name + ": unknown flags");
  Expect(((flags & kEndsHere) != 0) == hasKey, name + ": flag and key disagree");
}

void Walker::ReadKey(unsigned id, const std::string& path) {
  const unsigned key = image_.Claim(Image::kKeys, id);
  if (key == 0) return;
  const std::string name = Image::Name(Image::kKeys, id);
  DecodedKey decoded = {
      image_.U32(key + 8), image_.U8(key + 6), image_.U8(key + 7), image_.U64(key + 16), {}};
  Expect(((decoded.flags & 2) != 0) == path.empty(), name + ": wrong root flag");
  Expect(image_.U32(key + 12) == 0, name + ": reserved word is not 0");
  for (unsigned next = image_.U32(key); next != 0;) {
    const unsigned value = image_.Claim(Image::kValues, next);
    if (value == 0) break;
    decoded.values.push_back(ReadValue(next, value));
    next = image_.U32(value);
  }
  Expect(image_.U16(key + 4) == decoded.values.size(),
         name + ": counts " + std::to_string(image_.U16(key + 4)) + " values, has " +
             std::to_string(decoded.values.size()));
  const bool isNew = keys.emplace(path, decoded).second;
  Expect(isNew, name + ": a second key at \"" + path + "\"");
}

DecodedValue Walker::ReadValue(unsigned id, unsigned value) {
  const std::string name = Image::Name(Image::kValues, id);
  const unsigned flags = image_.U8(value + 11);
  const std::string text = image_.Bytes(value + 12, 32);
  DecodedValue decoded = {text.substr(0, text.find('\0')),
                          flags & kTypeBits,
                          (flags & kSet) != 0,
                          image_.U16(value + 8),
                          {},
                          0};
  Expect(image_.U8(value + 12 + 31) == 0, name + ": the name has no end");
  Expect(decoded.type <= 5 && (flags & 0x80) == 0, name + ": unknown type or flags");
  Expect(image_.U32(value + 4) == 0 && image_.U8(value + 10) == 0,
         name + ": reserved bytes are not 0");
  Expect(decoded.size <= 1024, name + ": more than 1024 bytes");
  Expect(((flags & kInBlocks) != 0) == (decoded.type != 0), name + ": type and place disagree");
  if ((flags & kInBlocks) != 0) {
    ReadData(image_.U32(value + 44), name, &decoded);
  } else {
    decoded.number = image_.U64(value + 44);
  }
  return decoded;
}

// A value whose data could not be stored is not set and has none; otherwise the chain is as long as
// the size asks for.
void Walker::ReadData(unsigned firstBlock, const std::string& name, DecodedValue* value) {
  unsigned blocks = 0;
  for (unsigned id = firstBlock; id != 0; ++blocks) {
    const unsigned block = image_.Claim(Image::kBlocks, id);
    if (block == 0) return;
    value->bytes += image_.Bytes(block, 64);
    id = image_.NextBlock(id);
  }
  const bool isDropped = !value->isSet && firstBlock == 0;
  const unsigned needed = (value->size + 63) / 64;
  Expect(isDropped || blocks == needed, name + ": " + std::to_string(value->size) + " bytes in " +
                                            std::to_string(blocks) + " blocks");
  value->bytes.resize(isDropped ? 0 : value->size);
}

SlotCounts::Kind Count(const std::vector<Image::Table>& tables) {
  SlotCounts::Kind count;
  count.tables = static_cast<unsigned>(tables.size());
  for (const Image::Table& table : tables) {
    for (unsigned slot = 1; slot < table.entries; ++slot) {
      ++(table.isFree[slot] ? count.free : count.used);
      if (table.isReached[slot]) ++count.reachable;
    }
  }
  return count;
}

}  // namespace

std::vector<std::string> CheckStructure(const std::string& path) {
  Image image(path);
  Walker(image).Run();
  return image.findings();
}

std::string StructureFindings(const std::string& path) {
  std::string text;
  for (const std::string& finding : CheckStructure(path)) text += finding + "\n";
  return text;
}

SlotCounts CountSlots(const std::string& path) {
  Image image(path);
  Walker(image).Run();
  SlotCounts counts;
  counts.strings = Count(image.Tables(Image::kStrings));
  counts.keys = Count(image.Tables(Image::kKeys));
  counts.values = Count(image.Tables(Image::kValues));
  counts.blocks = Count(image.Tables(Image::kBlocks));
  return counts;
}

std::string UsedSlots(const std::string& path) {
  const SlotCounts counts = CountSlots(path);
  return std::to_string(counts.strings.used) + " " + std::to_string(counts.keys.used) + " " +
         std::to_string(counts.values.used) + " " + std::to_string(counts.blocks.used);
}

std::map<std::string, DecodedKey> DecodeTree(const std::string& path) {
  Image image(path);
  Walker walker(image);
  walker.Run();
  return walker.keys;
}
