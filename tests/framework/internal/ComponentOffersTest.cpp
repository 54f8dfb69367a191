#include "framework/internal/ComponentOffers.h"
#include "registry/base/RegistryRoom.h"
#include "tests/framework/InfoStoreRig.h"

namespace {

constexpr YAX_GUID_ST kInterfaceA = {
    0x01234567, 0x89AB, 0xCDEF, {0x10, 0x32, 0x54, 0x76, 0x98, 0xBA, 0xDC, 0xFE}};
constexpr YAX_GUID_ST kInterfaceB = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
const std::string kBytesOfA = "\x01\x23\x45\x67\x89\xAB\xCD\xEF\x10\x32\x54\x76\x98\xBA\xDC\xFE";

YAX_COMPONENT_OFFER_ST OfferOf(unsigned int version, const std::vector<YAX_GUID_ST>& interfaces) {
  YAX_COMPONENT_OFFER_ST offer = {};
  offer.version = version;
  for (const YAX_GUID_ST& one : interfaces) offer.interfaces[offer.interfaceCount++] = one;
  return offer;
}

class ComponentOffersTest : public InfoStoreTest<YAXInfoManagerRCEMemory> {
 protected:
  ComponentOffersTest() { Register(10); }

  void Register(unsigned int number) {
    YAX_COMPONENT_INFO_ST info = Player();
    EXPECT_EQ(yax_framework::kOk, store.RegisterComponent(GuidOf(number), &info));
  }
  // The first numbers of the identifiers that are found, in a room for so many.
  std::string Found(const YAX_GUID_ST& iid, unsigned int room = 8) {
    std::vector<YAX_GUID_ST> clsids(room);
    unsigned int count = 99;
    EXPECT_EQ(yax_framework::kOk, offers.Find(iid, clsids.data(), room, &count));
    std::string text = std::to_string(count) + ":";
    for (unsigned int i = 0; i < std::min(room, count); ++i) {
      text += " " + std::to_string(clsids[i].Data1);
    }
    return text;
  }
  unsigned int BlocksInUse() {
    tamu::registry::RegistryRoom room;
    EXPECT_EQ(0u, registry.GetRoom(&room));
    return room.blocks.inUse;
  }

  ComponentOffers offers{registry, store};
};

TEST_F(ComponentOffersTest, StandInTheRegistryBesideTheFourValues) {
  YAX_COMPONENT_OFFER_ST offer = OfferOf(3, {kInterfaceA, kInterfaceB});
  offer.binarySize = 0x123456789Aull;
  offer.buildIdSize = 3;
  std::memcpy(offer.buildId, "abc", 3);
  ASSERT_EQ(yax_framework::kOk, offers.Set(kClsid, offer));
  EXPECT_EQ("type 0: " + tamu::registry::Little(3, 8), Stored(kClsidKey, "Version"));
  EXPECT_EQ("type 0: " + tamu::registry::Little(0x123456789Aull, 8),
            Stored(kClsidKey, "BinarySize"));
  EXPECT_EQ("type 2: " + kBytesOfA + std::string("\0\0\0\1\0\2\0\3\4\5\6\7\x8\x9\xA\xB", 16),
            Stored(kClsidKey, "Interfaces"));
  EXPECT_EQ("type 2: abc", Stored(kClsidKey, "BuildId"));
  YAX_COMPONENT_OFFER_ST read;
  ASSERT_EQ(yax_framework::kOk, offers.Get(kClsid, &read));
  EXPECT_EQ(0, std::memcmp(&offer, &read, sizeof offer));
}

TEST_F(ComponentOffersTest, NothingOfAnOfferStaysWhenItIsTakenBack) {
  const unsigned int before = BlocksInUse();
  YAX_COMPONENT_OFFER_ST offer = OfferOf(3, {kInterfaceA});
  offer.buildIdSize = kYAXBuildIdMax;
  ASSERT_EQ(yax_framework::kOk, offers.Set(kClsid, offer));
  EXPECT_LT(before, BlocksInUse());
  ASSERT_EQ(yax_framework::kOk, offers.Set(kClsid, {}));
  EXPECT_EQ(before, BlocksInUse());
  for (const char* name : {"Version", "BinarySize", "Interfaces", "BuildId"}) {
    EXPECT_EQ("no value", Stored(kClsidKey, name)) << name;
  }
  YAX_COMPONENT_OFFER_ST read = offer;
  ASSERT_EQ(yax_framework::kOk, offers.Get(kClsid, &read));
  EXPECT_EQ(0u, read.version + read.interfaceCount + read.buildIdSize);
}

TEST_F(ComponentOffersTest, RefusesWhatIsTooMuchOrNotRegistered) {
  YAX_COMPONENT_OFFER_ST offer = {};
  offer.interfaceCount = kYAXInterfaceMax + 1;
  EXPECT_EQ(yax_framework::kBadArgument, offers.Set(kClsid, offer));
  offer.interfaceCount = kYAXInterfaceMax;
  EXPECT_EQ(yax_framework::kOk, offers.Set(kClsid, offer));
  offer.buildIdSize = kYAXBuildIdMax + 1;
  EXPECT_EQ(yax_framework::kBadArgument, offers.Set(kClsid, offer));
  EXPECT_EQ(yax_framework::kRegistryFailed, offers.Set(GuidOf(1), {}));
  EXPECT_EQ(yax_framework::kRegistryFailed, offers.Get(GuidOf(1), &offer));
  EXPECT_FALSE(HasKey(KeyOf(GuidOf(1))));
}

TEST_F(ComponentOffersTest, AreFoundByInterfaceTheNewestFirst) {
  EXPECT_EQ("0:", Found(kInterfaceA));
  for (const unsigned int number : {11u, 12u, 13u, 14u}) Register(number);
  ASSERT_EQ(yax_framework::kOk, offers.Set(GuidOf(11), OfferOf(7, {kInterfaceB, kInterfaceA})));
  ASSERT_EQ(yax_framework::kOk, offers.Set(GuidOf(12), OfferOf(256, {kInterfaceA})));
  ASSERT_EQ(yax_framework::kOk, offers.Set(GuidOf(13), OfferOf(0, {kInterfaceA})));
  ASSERT_EQ(yax_framework::kOk, offers.Set(GuidOf(14), OfferOf(7, {kInterfaceA})));
  EXPECT_EQ("4: 12 11 14 13", Found(kInterfaceA));
  EXPECT_EQ("4: 12 11", Found(kInterfaceA, 2));
  EXPECT_EQ("4:", Found(kInterfaceA, 0));
  EXPECT_EQ("1: 11", Found(kInterfaceB));
  EXPECT_EQ("0:", Found(kClsid));
}

TEST_F(ComponentOffersTest, WhatOthersHaveLeftThereCountsAsFarAsItIsOne) {
  Put(kClsidKey, "Interfaces", 2, std::string(8, 'x') + kBytesOfA);  // not where one begins
  EXPECT_EQ("0:", Found(kInterfaceA));
  Put(kClsidKey, "Interfaces", 2, std::string(16, 'x') + kBytesOfA + "tail");
  Put(kClsidKey, "Version", 1, "no number");
  Put(kClsidKey, "BuildId", 2, std::string(100, 'i'));
  YAX_COMPONENT_OFFER_ST read;
  ASSERT_EQ(yax_framework::kOk, offers.Get(kClsid, &read));
  EXPECT_EQ(0u, read.version);
  EXPECT_EQ(2u, read.interfaceCount);
  EXPECT_EQ(kYAXBuildIdMax, read.buildIdSize);
  EXPECT_EQ("1: 10", Found(kInterfaceA));
  const std::string below =
      std::string(kClsidKey).substr(9) + "/{0000000C-BEEF-0102-807F-00FF01020304}";
  for (const std::string& name :
       {std::string("{0000000b-BEEF-0102-807F-00FF01020304}"),
        std::string("{0000000B-BEEF-0102-807F-00FF01020304}x"), std::string("x"), below}) {
    const tamu::registry::ExactValue value(2, kBytesOfA);
    EXPECT_EQ(0u, registry.PutValue(("YAX_ROOT/" + name).c_str(), "Interfaces", value, true));
  }
  EXPECT_EQ("1: 10", Found(kInterfaceA));
}

TEST_F(ComponentOffersTest, CloseNobodysHandle) {
  EXPECT_EQ(0u, registry.CreateKey(0, "app"));
  unsigned int handle = 0;
  EXPECT_EQ(0u, registry.OpenKey("app", &handle));
  YAX_COMPONENT_OFFER_ST offer = OfferOf(1, {kInterfaceA});
  EXPECT_EQ(yax_framework::kOk, offers.Set(kClsid, offer));
  EXPECT_EQ(yax_framework::kOk, offers.Get(kClsid, &offer));
  EXPECT_EQ("1: 10", Found(kInterfaceA));
  EXPECT_EQ(0u, registry.CreateKey(handle, "below"));
}

}  // namespace
