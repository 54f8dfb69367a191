// The catalogue as a view of the framework.
#include "tests/framework/ComponentRig.h"

namespace {

constexpr YAX_GUID_ST kSound = ClsidOf(1);
constexpr YAX_GUID_ST kPlain = ClsidOf(2);
constexpr YAX_GUID_ST kNone = ClsidOf(3);
constexpr YAX_GUID_ST kFeature = ClsidOf(100);

void Ignore(void*, YAX_COMPONENT_EVENT_ENUM, const YAX_GUID_ST&) {}

void CountEvents(void* count, YAX_COMPONENT_EVENT_ENUM, const YAX_GUID_ST&) {
  ++*static_cast<unsigned int*>(count);
}

class CYAXCatalogueTest : public ComponentRig {
 protected:
  CYAXCatalogueTest() {
    Register(kSound, "sound");
    Register(kPlain, "", &NoFactory, YAX_COMPONENT_TYPE_FUNCTION);
  }
  static unsigned int NoFactory(const YAX_GUID_ST&, const YAX_GUID_ST&, void**) { return 0; }

  View<IYAXCatalogue> catalogue_{IID_IYAXCatalogue};
};

TEST_F(CYAXCatalogueTest, IsAViewOfTheFrameworkLikeTheOthers) {
  void* view = nullptr;
  ASSERT_EQ(yax_framework::kOk, catalogue_->GetInterface(IID_IYAX, &view));
  const unsigned int before = yax_->AddRef();
  EXPECT_EQ(before + 1, catalogue_->AddRef());
  EXPECT_EQ(before, catalogue_->Release());
  EXPECT_EQ(before - 1, yax_->Release());
  static_cast<IYAX*>(view)->Release();
  EXPECT_EQ(yax_framework::kNoInterface, catalogue_->GetInterface(kNone, &view));
}

TEST_F(CYAXCatalogueTest, RefusesNullArguments) {
  YAX_COMPONENT_OFFER_ST offer = {};
  YAX_GUID_ST clsid = {};
  unsigned int count = 7;
  const unsigned int bad = yax_framework::kBadArgument;
  EXPECT_EQ(bad, catalogue_->ReadOffer(nullptr, &offer));
  EXPECT_EQ(bad, catalogue_->ReadOffer("/", nullptr));
  EXPECT_EQ(bad, catalogue_->GetOffer(kSound, nullptr));
  EXPECT_EQ(bad, catalogue_->FindComponents(kFeature, nullptr, 1, &count));
  EXPECT_EQ(bad, catalogue_->FindComponents(kFeature, &clsid, 1, nullptr));
  EXPECT_EQ(bad, catalogue_->AddListener(nullptr, nullptr));
  EXPECT_EQ(bad, catalogue_->RemoveListener(Ignore, nullptr));
  EXPECT_EQ(7u, count);
}

TEST_F(CYAXCatalogueTest, ReadsAnOfferWithoutRegisteringAnything) {
  YAX_COMPONENT_OFFER_ST offer = {};
  ASSERT_EQ(yax_framework::kOk, catalogue_->ReadOffer(ComponentFile("sound").c_str(), &offer));
  EXPECT_EQ(0u, offer.version);
  EXPECT_EQ(GetFile(ComponentFile("sound")).size(), offer.binarySize);
  offer.version = 1;
  EXPECT_EQ(yax_framework::kCannotLoad,
            catalogue_->ReadOffer(ComponentFile("no_factory_entry").c_str(), &offer));
  EXPECT_STREQ("does not export EntryFn_getFactory", YAXReason());
  EXPECT_EQ(0ull, offer.version + offer.binarySize);
  ASSERT_EQ(yax_framework::kOk, catalogue_->ReadOffer(ComponentFile("sound").c_str(), &offer));
  EXPECT_STREQ("", YAXReason());
}

TEST_F(CYAXCatalogueTest, CountsWhatItHasNoRoomFor) {
  YAX_COMPONENT_OFFER_ST offer = {};
  offer.interfaceCount = 1;
  offer.interfaces[0] = kFeature;
  EXPECT_EQ(yax_framework::kOk, catalogue_->SetOffer(kSound, &offer));
  offer.version = 1;
  EXPECT_EQ(yax_framework::kOk, catalogue_->SetOffer(kPlain, &offer));
  unsigned int count = 0;
  EXPECT_EQ(yax_framework::kOk, catalogue_->FindComponents(kFeature, nullptr, 0, &count));
  EXPECT_EQ(2u, count);
  YAX_GUID_ST first = {};
  EXPECT_EQ(yax_framework::kOk, catalogue_->FindComponents(kFeature, &first, 1, &count));
  EXPECT_TRUE(kPlain == first);
}

TEST_F(CYAXCatalogueTest, ComparesNothingOfAComponentInTheProgramOrOfNoOffer) {
  YAX_COMPONENT_OFFER_ST offer = {};
  offer.binarySize = 1;
  EXPECT_EQ(yax_framework::kOk, catalogue_->CheckComponent(kSound));
  EXPECT_EQ(yax_framework::kOk, catalogue_->SetOffer(kPlain, &offer));
  EXPECT_EQ(yax_framework::kOk, catalogue_->CheckComponent(kPlain));
  EXPECT_EQ(yax_framework::kRegistryFailed, catalogue_->CheckComponent(kNone));
  EXPECT_EQ(yax_framework::kOk, catalogue_->SetOffer(kSound, &offer));
  EXPECT_EQ(yax_framework::kCannotLoad, catalogue_->CheckComponent(kSound));
  EXPECT_EQ(yax_framework::kOk, catalogue_->SetOffer(kSound, nullptr));
  EXPECT_EQ(yax_framework::kOk, catalogue_->CheckComponent(kSound));
}

// The offer of a component at a path that the loader searches for.
TEST_F(CYAXCatalogueTest, ComparesNothingThatOnlyTheLoaderFinds) {
  Register(kNone, "libno-such-thing.so", nullptr, YAX_COMPONENT_TYPE_BINARY);
  YAX_COMPONENT_OFFER_ST offer = {};
  offer.binarySize = 1;
  EXPECT_EQ(yax_framework::kOk, catalogue_->SetOffer(kNone, &offer));
  EXPECT_EQ(yax_framework::kOk, catalogue_->CheckComponent(kNone));
  void* handle = nullptr;
  EXPECT_EQ(yax_framework::kCannotLoad, loader_->LoadComponent(kNone, &handle));
  EXPECT_NE(nullptr, std::strstr(YAXReason(), "libno-such-thing.so"));
}

TEST_F(CYAXCatalogueTest, EachPartOfAnOfferIsComparedByItself) {
  YAX_COMPONENT_OFFER_ST offer = {};
  ASSERT_EQ(yax_framework::kOk, catalogue_->ReadOffer(ComponentFile("sound").c_str(), &offer));
  offer.version = 1;
  EXPECT_EQ(yax_framework::kOk, catalogue_->SetOffer(kSound, &offer));
  EXPECT_EQ(yax_framework::kOk, catalogue_->CheckComponent(kSound));
  offer.binarySize = 0;
  offer.buildIdSize = 5;
  EXPECT_EQ(yax_framework::kOk, catalogue_->SetOffer(kSound, &offer));
  EXPECT_EQ(yax_framework::kCannotLoad, catalogue_->CheckComponent(kSound));
  EXPECT_STREQ("has another build id than is registered", YAXReason());
  offer.buildIdSize = 0;
  EXPECT_EQ(yax_framework::kOk, catalogue_->SetOffer(kSound, &offer));
  EXPECT_EQ(yax_framework::kOk, catalogue_->CheckComponent(kSound));
}

TEST_F(CYAXCatalogueTest, TellsOfAllThatAreRegisteredAtOnce) {
  unsigned int events = 0;
  ASSERT_EQ(yax_framework::kOk, catalogue_->AddListener(CountEvents, &events));
  YAX_COMPONENT_INFO_ST one = {};
  one.pGuid = &kNone;
  YAX_COMPONENT_INFO_ST other = {};
  other.pGuid = &kFeature;
  YAX_COMPONENT_INFO_ST* both[] = {&one, &other, nullptr};
  EXPECT_EQ(yax_framework::kOk, manager_->RegisterAllComponent(both));
  EXPECT_EQ(2u, events);
  EXPECT_EQ(yax_framework::kRegistryFailed, manager_->RegisterAllComponent(both));
  EXPECT_EQ(yax_framework::kBadArgument, manager_->RegisterAllComponent(nullptr));
  EXPECT_EQ(2u, events);
  Load(kSound);
  EXPECT_EQ(3u, events);
  EXPECT_EQ(yax_framework::kOk, catalogue_->RemoveListener(CountEvents, &events));
  EXPECT_EQ(yax_framework::kOk, loader_->UnloadComponent(kSound));
  EXPECT_EQ(3u, events);
}

}  // namespace
