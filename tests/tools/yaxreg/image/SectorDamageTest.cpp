// Every sector of a registry file is overwritten in turn: nothing is lost in silence, and what has
// its bytes elsewhere is read all the same.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "registry/base/UserId.h"
#include "tests/platform/TestFiles.h"
#include "tests/tools/yaxreg/ContentText.h"
#include "tests/tools/yaxreg/HandMadeFile.h"
#include "tests/tools/yaxreg/RegistryFile.h"
#include "tools/yaxreg/content/ExactKey.h"
#include "tools/yaxreg/image/ImageWriter.h"

namespace status = tamu::registry::status;

namespace yaxreg {

namespace {

using tamu::registry::MakeValue;

constexpr unsigned kSector = 512;
constexpr unsigned kFileSize = 75888;
constexpr unsigned kFirstData = HandMadeFile::kBlocks + 64;  // slot 0 holds none

// Names that begin alike, long ones, ten levels; the default value of each is its number.
std::vector<std::string> Paths() {
  std::vector<std::string> paths = {"m", "net", "network", "display",
                                    "a name of 30 characters in all"};
  for (unsigned i = 0; i < 30; ++i) paths.push_back("net/eth" + std::to_string(i));
  for (unsigned i = 0; i < 30; ++i) paths.push_back("display/screen number " + std::to_string(i));
  std::string deep = "m";
  for (unsigned i = 0; i < 10; ++i) paths.push_back(deep += "/level");
  return paths;
}

// Every third key with six values, no two of them alike; holes in the tables.
std::string RichFile() {
  const TempDir folder;
  {
    RegistryFile file(folder / "r");
    unsigned long long number = 0;
    file.AddKey("hole");
    for (const std::string& path : Paths()) {
      ++number;
      const char* const key = path.c_str();
      EXPECT_EQ(0u, CreateExactKey(file.Calls(), path, &number)) << path;
      if (number % 3 != 0) continue;
      file.AddNumber(key, "number", 1000000 + number);
      file.AddText(key, "text", ("the text of " + path).c_str());
      file.AddText(key, "text", ("a newer text of " + path).c_str());
      file.AddText(key, "long", (path + std::string(200, 'x')).c_str());
      file.AddNumber(key, "deleted", 1);
      file.AddValue(key, "bytes",
                    MakeValue(5, std::string(3, static_cast<char>(number)).c_str(), 3));
      file.AddValue(key, "full", MakeValue(2, (path + std::string(128, 'y')).c_str(), 128));
      EXPECT_EQ(status::kOk, file.Calls().DeleteValue(0, key, "deleted")) << path;
    }
    EXPECT_EQ(status::kOk, file.Calls().DeleteKey(0, "hole"));
  }
  return GetFile(folder / "r");
}

// What can be told of a key or a value wherever it is.
std::string LookOf(const ContentKey& key) {
  return std::to_string(key.owner) + ' ' + std::to_string(key.permission) + ' ' +
         std::to_string(key.defaultValue);
}

std::string LookOf(const ContentValue& value) {
  return value.name + ' ' + std::to_string(value.type) + ' ' + std::to_string(value.number) + ' ' +
         value.data;
}

std::set<std::string> LooksOf(const Content& content) {
  std::set<std::string> looks;
  for (const ContentKey& key : content.keys) {
    if (!key.isMadeUp) looks.insert(LookOf(key));
    for (const ContentValue& value : key.values) looks.insert(LookOf(value));
  }
  return looks;
}

// A key or a value and the bytes that hold it: of a value also its data and the entries that lead
// from one block to the next.
struct Held {
  struct Range {
    unsigned begin;
    unsigned end;
  };
  std::string look;
  std::vector<Range> ranges;

  bool IsTouchedBy(unsigned sector) const {
    return std::any_of(ranges.begin(), ranges.end(), [&](const Range& range) {
      return range.begin < (sector + 1) * kSector && range.end > sector * kSector;
    });
  }
};

Held HeldKey(const HandMadeFile& file, unsigned at) {
  const unsigned permission = file.WordAt(at + 4) >> 16 & 0xFF;
  return {std::to_string(file.WordAt(at + 8)) + ' ' + std::to_string(permission) + ' ' +
              std::to_string(file.WordAt(at + 16)),
          {{at, at + 24}}};
}

Held HeldValue(const HandMadeFile& file, unsigned at) {
  Held value = {"", {{at, at + 52}}};
  const unsigned flags = file.WordAt(at + 8) >> 24;
  const bool isInBlocks = (flags & 0x20) != 0;
  std::string data;
  unsigned slot = isInBlocks ? file.WordAt(at + 44) >> 8 : 0;
  while (slot != 0) {
    const unsigned block = HandMadeFile::kBlocks + 64 * slot;
    const unsigned entry = HandMadeFile::kBlockTable + 32 + 4 * slot;
    data += file.bytes.substr(block, 64);
    value.ranges.push_back({block, block + 64});
    slot = file.WordAt(entry);
    if (slot != 0) value.ranges.push_back({entry, entry + 4});
  }
  if (isInBlocks) data.resize(file.WordAt(at + 8) & 0xFFFF);
  value.look = file.bytes.c_str() + at + 12;
  value.look += ' ' + std::to_string(flags & 0x1F) + ' ' +
                std::to_string(isInBlocks ? 0 : file.WordAt(at + 44)) + ' ' + data;
  return value;
}

// All keys and values in use, found by the tables alone: the entry of a used slot is 0.
std::vector<Held> AllOf(const std::string& bytes) {
  HandMadeFile file;
  file.bytes = bytes;
  std::vector<Held> all;
  for (unsigned slot = 1; slot < 365; ++slot) {
    if (file.WordAt(HandMadeFile::kKeyTable + 32 + 4 * slot) == 0) {
      all.push_back(HeldKey(file, HandMadeFile::kKeys + 24 * slot));
    }
    if (file.WordAt(HandMadeFile::kValueTable + 32 + 4 * slot) == 0) {
      all.push_back(HeldValue(file, HandMadeFile::kValues + 52 * slot));
    }
  }
  return all;
}

std::string PseudoRandom(unsigned seed, size_t size) {
  std::string bytes;
  for (size_t i = 0; i < size; ++i) {
    seed = seed * 1664525 + 1013904223;
    bytes += static_cast<char>(seed >> 24);
  }
  return bytes;
}

// What the sector is overwritten with.
enum class Fill { kZeros, kOnes, kPseudoRandom };

class SectorDamage : public ::testing::TestWithParam<Fill> {
 protected:
  SectorDamage() : bytes_(RichFile()), sound_(bytes_), all_(AllOf(bytes_)) {}

  std::string Overwritten(unsigned sector) const {
    const size_t at = sector * kSector;
    const size_t size = std::min<size_t>(kSector, bytes_.size() - at);
    std::string changed = bytes_;
    switch (GetParam()) {
      case Fill::kZeros:
        return changed.replace(at, size, size, '\0');
      case Fill::kOnes:
        return changed.replace(at, size, size, '\xFF');
      case Fill::kPseudoRandom:
        break;
    }
    return changed.replace(at, size, PseudoRandom(sector, size));
  }

  std::string bytes_;
  RegistryImage sound_;
  std::vector<Held> all_;
};

std::string FillName(const ::testing::TestParamInfo<Fill>& info) {
  const char* const names[] = {"Zeros", "Ones", "PseudoRandom"};
  return names[static_cast<unsigned>(info.param)];
}

std::vector<std::string> Missing(const Content& was, const Content& is) {
  std::vector<std::string> missing;
  for (size_t i = 0; i < was.keys.size(); ++i) {
    const std::string path = was.PathOf(i);
    const size_t index = is.Find(path);
    if (index == Content::kNone) {
      missing.push_back(path);
      continue;
    }
    const std::vector<ContentValue>& values = is.keys[index].values;
    for (const ContentValue& value : was.keys[i].values) {
      if (std::find(values.begin(), values.end(), value) == values.end()) {
        missing.push_back(path + ": " + value.name);
      }
    }
  }
  return missing;
}

// Bytes of data may be anything, so nothing tells that they were others.
TEST_P(SectorDamage, AreNotLostInSilence) {
  ASSERT_TRUE(sound_.IsSound());
  ASSERT_EQ(kFileSize, bytes_.size());
  for (unsigned sector = 0; (sector + 1) * kSector <= kFirstData; ++sector) {
    const RegistryImage image(Overwritten(sector));
    EXPECT_TRUE(image.IsRegistry()) << sector;
    const std::vector<std::string> missing = Missing(sound_.content(), image.content());
    if (missing.empty()) continue;
    EXPECT_FALSE(image.IsComplete()) << "sector " << sector << ": " << missing[0];
  }
}

// A value of several blocks also needs the entries that lead from one to the next. Nothing else in
// the tables and their free lists is needed: the tree leads to all.
TEST_P(SectorDamage, CostNothingThatLiesElsewhere) {
  ASSERT_GT(all_.size(), 200u);
  const std::set<std::string> known = LooksOf(sound_.content());
  for (const Held& held : all_) ASSERT_EQ(1u, known.count(held.look)) << held.look;
  for (unsigned sector = 0; sector * kSector < kFileSize; ++sector) {
    const RegistryImage image(Overwritten(sector), Orphans::kAlways);
    const std::set<std::string> looks = LooksOf(image.content());
    std::string lost;
    size_t count = 0;
    for (const Held& held : all_) {
      if (held.IsTouchedBy(sector) || looks.count(held.look) == 1) continue;
      lost += held.look + '\n';
      ++count;
    }
    EXPECT_EQ(0u, count) << "sector " << sector << ":\n" << lost;
  }
}

TEST_P(SectorDamage, AreRepairedToASoundFile) {
  for (unsigned sector = 0; sector * kSector < kFileSize; ++sector) {
    const RegistryImage image(Overwritten(sector), Orphans::kAlways);
    const RegistryImage written(ImageWriter(image.content()).bytes());
    EXPECT_EQ("", FindingsText(written)) << "sector " << sector;
    EXPECT_EQ(image.content().keys.size(), written.content().keys.size()) << "sector " << sector;
    EXPECT_EQ(image.content().ValueCount(), written.content().ValueCount()) << "sector " << sector;
  }
}

INSTANTIATE_TEST_SUITE_P(Fills, SectorDamage,
                         ::testing::Values(Fill::kZeros, Fill::kOnes, Fill::kPseudoRandom),
                         FillName);

}  // namespace

}  // namespace yaxreg
