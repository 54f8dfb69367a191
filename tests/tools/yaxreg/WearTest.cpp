// What wears a registry out for good, played until the library refuses changes: check and stat tell
// so, and compact makes the file work again.
#include <gtest/gtest.h>

#include <functional>
#include <nlohmann/json.hpp>
#include <string>

#include "registry/Registry.h"
#include "registry/base/RegistryStatus.h"
#include "tests/platform/TestFiles.h"
#include "tests/support/StructureCheck.h"
#include "tests/tools/yaxreg/YaxregRig.h"
#include "tools/yaxreg/image/RegistryImage.h"

namespace {

namespace status = tamu::registry::status;
using tamu::registry::Registry;
using yaxreg::NodeKind;

// The slots that a kind has in all: 364 in the first table, 499 in each of 20 appended ones.
constexpr unsigned kSlots = 364 + 20 * 499;
// Values of 16 blocks that fit: 22 into the first table, 31 into each other one.
constexpr unsigned kLargeValues = 22 + 20 * 31;

class WearTest : public ::testing::Test {
 protected:
  // One repetition; 0 as long as it goes on.
  using Wear = std::function<unsigned int(Registry&, unsigned)>;

  void SetUp() override {
    Registry registry(file_.c_str(), tamu::registry::kAdministratorId);
    ASSERT_EQ(status::kOk, registry.Initialize());
    ASSERT_EQ(status::kOk, registry.CreateKey(0, "k"));
    ASSERT_EQ(status::kOk, registry.CreateKey(0, "kept"));
    ASSERT_EQ(0u, Create(registry, "kept", "text", 100));
  }

  static unsigned int Create(Registry& registry, const char* path, const char* name,
                             unsigned int size) {
    const std::string data(size, 'x');
    auto value = tamu::registry::MakeValue(2, data.data(), size);
    return registry.CreateValue(0, path, name, &value);
  }

  // How often it goes on until it is refused with status 75.
  unsigned PlayToTheEnd(const Wear& wear) {
    Registry registry(file_.c_str(), tamu::registry::kAdministratorId);
    EXPECT_EQ(status::kOk, registry.Initialize());
    for (unsigned i = 0; i <= kSlots; ++i) {
      const unsigned int result = wear(registry, i);
      if (result == status::kOk) continue;
      EXPECT_EQ(status::kLimit, result) << i;
      return i;
    }
    ADD_FAILURE() << "no end";
    return 0;
  }

  yaxreg::RegistryImage Image() const { return yaxreg::RegistryImage(GetFile(file_)); }

  static nlohmann::json Json(const std::vector<std::string>& arguments) {
    const Answer answer = Yaxreg(arguments);
    EXPECT_EQ(0, answer.code) << answer.err;
    return nlohmann::json::parse(answer.out);
  }

  // check and stat tell that at most `left` slots of a kind are left.
  void ExpectWornOut(NodeKind kind, unsigned left) {
    const char* const kindNames[] = {"string node", "key", "value", "data block"};
    const unsigned number = static_cast<unsigned>(kind);
    const nlohmann::json check = Json({"check", file_, "--json"});
    EXPECT_TRUE(check["sound"].get<bool>());
    EXPECT_LE(check["kinds"][kindNames[number]]["left"].get<unsigned>(), left);
    const nlohmann::json stat = Json({"stat", file_, "--json"});
    EXPECT_EQ(kindNames[number], stat["fullFirst"].get<std::string>());
    EXPECT_LE(stat["kinds"][kindNames[number]]["left"].get<unsigned>(), left);
    EXPECT_EQ(21u, stat["kinds"][kindNames[number]]["tables"].get<unsigned>());
    const std::string text = Yaxreg({"check", file_}).out;
    const std::string line = std::string(kindNames[number]) + "s: ";
    EXPECT_NE(std::string::npos, text.find(line)) << text;
    EXPECT_NE(std::string::npos, text.find("left until status 75\n")) << text;
  }

  // compact keeps all of it and gives back what was lost.
  void ExpectCompactHelps() {
    const std::string before = Yaxreg({"export", file_}).out;
    const Answer answer = Yaxreg({"compact", file_});
    EXPECT_EQ(0, answer.code) << answer.err;
    EXPECT_EQ(before, Yaxreg({"export", file_}).out);
    EXPECT_EQ("", StructureFindings(file_));
    ExpectNothingLost();
    Registry registry(file_.c_str(), tamu::registry::kAdministratorId);
    ASSERT_EQ(status::kOk, registry.Initialize());
    EXPECT_EQ(status::kOk, registry.CreateKey(0, "new"));
    EXPECT_EQ(0u, Create(registry, "new", "value", 1024));
  }

  void ExpectNothingLost() {
    const yaxreg::RegistryImage image = Image();
    for (const NodeKind kind :
         {NodeKind::kString, NodeKind::kKey, NodeKind::kValue, NodeKind::kData}) {
      const yaxreg::SlotUse use = image.UseOf(kind);
      EXPECT_EQ(0u, use.leaked);
      EXPECT_EQ(0u, use.stranded);
      EXPECT_EQ(kSlots - use.reached, use.remaining);
    }
    EXPECT_EQ(0u, image.deadNodes());
  }

  TempDir folder_;
  const std::string file_ = folder_ / "device.rce";
};

// The root, "k" and "kept" have taken three string nodes.
TEST_F(WearTest, ByKeysBelowAMissingParentEndsWithoutStringNodes) {
  EXPECT_EQ(kSlots - 3, PlayToTheEnd([](Registry& registry, unsigned) {
              const unsigned int result = registry.CreateKey(0, "missing/x");
              return result == status::kBadArgument ? status::kOk : result;
            }));
  ExpectWornOut(NodeKind::kString, 0);
  EXPECT_EQ(kSlots - 3, Image().UseOf(NodeKind::kString).leaked + Image().deadNodes());
  ExpectCompactHelps();
}

// The names of deleted keys stay: a new one takes one to three string nodes.
TEST_F(WearTest, ByEverNewKeysEndsWithoutStringNodes) {
  const unsigned repetitions = PlayToTheEnd([](Registry& registry, unsigned i) {
    const std::string path = "k/" + std::to_string(100000 + 7919 * i % 1000000);
    const unsigned int result = registry.CreateKey(0, path.c_str());
    if (result != status::kOk) return result;
    registry.DeleteKey(0, path.c_str());
    return status::kOk;
  });
  EXPECT_GT(repetitions, kSlots / 3);
  EXPECT_LT(repetitions, kSlots);
  ExpectWornOut(NodeKind::kString, 0);
  ExpectCompactHelps();
}

TEST_F(WearTest, ByValuesThatComeAndGoEndsWithoutBlocks) {
  EXPECT_EQ(kSlots - 2, PlayToTheEnd([](Registry& registry, unsigned) {
              const unsigned int result = Create(registry, "k", "v", 64);
              return result != status::kOk ? result : registry.DeleteValue(0, "k", "v");
            }));
  ExpectWornOut(NodeKind::kData, 0);
  EXPECT_EQ(kSlots - 2, Image().UseOf(NodeKind::kData).leaked);
  ExpectCompactHelps();
}

// The three blocks that are left in each table are too few.
TEST_F(WearTest, ByLargeValuesThatComeAndGoEndsWithoutBlocks) {
  EXPECT_EQ(kLargeValues, PlayToTheEnd([](Registry& registry, unsigned) {
              const unsigned int result = Create(registry, "k", "v", 1024);
              return result != status::kOk ? result : registry.DeleteValue(0, "k", "v");
            }));
  ExpectWornOut(NodeKind::kData, 15);
  EXPECT_EQ(16 * kLargeValues, Image().UseOf(NodeKind::kData).leaked);
  ExpectCompactHelps();
}

TEST_F(WearTest, ByAKeyThatIsMadeAnewWithItsDataEndsWithoutBlocks) {
  EXPECT_EQ(kLargeValues, PlayToTheEnd([](Registry& registry, unsigned) {
              registry.CreateKey(0, "k");
              const unsigned int result = Create(registry, "k", "v", 1024);
              return result != status::kOk ? result : registry.DeleteKey(0, "k");
            }));
  ExpectWornOut(NodeKind::kData, 15);
  ExpectCompactHelps();
}

// They are all there: only deleting them helps.
TEST_F(WearTest, ByValuesCreatedInsteadOfSetEndsWithoutValues) {
  const unsigned long long number = 1;
  EXPECT_EQ(kSlots - 1, PlayToTheEnd([&](Registry& registry, unsigned) {
              auto value = tamu::registry::MakeValue(0, &number, sizeof number);
              return registry.CreateValue(0, "k", "boots", &value);
            }));
  ExpectWornOut(NodeKind::kValue, 0);
  EXPECT_EQ(0u, Yaxreg({"check", file_})
                    .out.find(file_ + ": sound, but nearly full: 0 values left; nothing can be won "
                                      "back\n"));
  EXPECT_EQ(0, Yaxreg({"compact", file_}).code);
  EXPECT_EQ(0u, Image().UseOf(NodeKind::kValue).remaining);
  EXPECT_EQ(0, Yaxreg({"rm", "-a", file_, "k", "boots"}).code);
  ExpectCompactHelps();
}

// The key is rewritten with all below it.
TEST_F(WearTest, DoesNotComeFromImportingAnotherOwner) {
  for (unsigned owner = 1; owner <= 5; ++owner) {
    const std::string document =
        "{\"keys\":[{\"path\":\"kept\",\"owner\":" + std::to_string(owner) + "}]}";
    EXPECT_EQ(0, Yaxreg({"import", file_}, document).code);
  }
  EXPECT_EQ(0u, Image().UseOf(NodeKind::kData).leaked);
}

// The root, "k" and "kept" have taken three string nodes, and a name that is counted up takes one.
TEST_F(WearTest, ByNumberedKeysEndsWithoutStringNodes) {
  EXPECT_EQ(kSlots - 3, PlayToTheEnd([](Registry& registry, unsigned i) {
              const std::string path = std::to_string(i + 1);
              const unsigned int result = registry.CreateKey(0, path.c_str());
              return result != status::kOk ? result : registry.DeleteKey(0, path.c_str());
            }));
}

// The slot of "kept" lies in the first table.
TEST_F(WearTest, IsToldToBeSmallWhereCompactHardlyHelps) {
  const unsigned long long number = 1;
  PlayToTheEnd([&](Registry& registry, unsigned) {
    auto value = tamu::registry::MakeValue(0, &number, sizeof number);
    return registry.CreateValue(0, "k", "boots", &value);
  });
  ASSERT_EQ(0, Yaxreg({"rm", file_, "kept", "text"}).code);
  const std::string out = Yaxreg({"check", file_}).out;
  EXPECT_EQ(0u, out.find(file_ + ": sound, but nearly full: 0 values left; yaxreg compact wins "
                                 "back only 1\n"))
      << out;
}

TEST_F(WearTest, DoesNotComeFromSettingValues) {
  Registry registry(file_.c_str(), tamu::registry::kAdministratorId);
  ASSERT_EQ(status::kOk, registry.Initialize());
  for (unsigned i = 0; i < 2000; ++i) {
    const std::string data(1 + i * 37 % 1024, 'x');
    auto value = tamu::registry::MakeValue(2, data.data(), static_cast<unsigned int>(data.size()));
    ASSERT_EQ(status::kOk, registry.SetValue(0, "kept", "text", &value)) << i;
  }
  registry.Finalize();
  ExpectNothingLost();
}

// Tells what a single time costs, for those who count.
TEST_F(WearTest, OfAMissingParentGrowsWithItsName) {
  Registry registry(file_.c_str(), tamu::registry::kAdministratorId);
  ASSERT_EQ(status::kOk, registry.Initialize());
  const unsigned before = Image().UseOf(NodeKind::kString).remaining;
  for (unsigned i = 0; i < 50; ++i) {
    EXPECT_EQ(22u, registry.CreateKey(0, (std::string(40, 'm') + "/x").c_str()));
  }
  registry.Finalize();
  EXPECT_EQ(before - 50 * 3, Image().UseOf(NodeKind::kString).remaining);
}

}  // namespace
