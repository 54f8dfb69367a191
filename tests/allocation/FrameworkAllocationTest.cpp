// Making the framework with each of its allocations failing in turn.
#include <pthread.h>

#include <cstdint>

#include "framework/YAX.h"
#include "framework/YAXStatus.h"
#include "framework/internal/CYAXCompBase.h"
#include "framework/internal/FunctionTable.h"
#include "platform/PCList.h"
#include "registry/RegistryInstance.h"
#include "tests/allocation/CountedHeap.h"
#include "tests/framework/ChosenDurability.h"
#include "tests/framework/PrintedMessages.h"
#include "tests/platform/TestFiles.h"

namespace status = tamu::registry::status;

namespace {

constexpr char kBegins[] = "3 *********** YAX ***********\n";
constexpr char kEnds[] = "3 *********** ~YAX ***********\n";
constexpr char kUncounted[] = "3 === Can NOT Create CYAXCompBase.\n";

// What the object takes in its order, before its registry.
enum Allocation : unsigned int { kObject = 1, kGuard = 2, kMessage = 3, kRegistry = 4 };

class FrameworkAllocationTest : public ::testing::Test {
 protected:
  // CreateYAX while its nth allocation fails; what was printed is in `text`.
  unsigned int CreateWithout(unsigned int nth) {
    printed.Take();
    heap::sFailing = nth;
    const unsigned int result = CreateYAX(path.c_str());
    isOver = heap::sFailing > 0;
    heap::sFailing = 0;
    text = printed.Take();
    return result;
  }
  // They are on the heap that is counted.
  void ForgetTexts() {
    std::string().swap(text);
    printed.Take();
  }
  static bool IsThere() {
    void* view = nullptr;
    if (GetYAXInstance(IID_IYAX, &view) != 0) return false;
    static_cast<IYAX*>(view)->Release();
    return true;
  }
  // The framework is there and counts; ends it.
  static void ExpectWorks() {
    void* view = nullptr;
    ASSERT_EQ(yax_framework::kOk, GetYAXInstance(IID_IYAXRegistry, &view));
    IYAXRegistry* registry = static_cast<IYAXRegistry*>(view);
    EXPECT_EQ(status::kOk, registry->CreateKey(0, "key"));
    EXPECT_EQ(status::kOk, registry->DeleteKey(0, "key"));
    EXPECT_EQ(3u, registry->AddRef());
    EXPECT_EQ(2u, registry->Release());
    EXPECT_EQ(1u, registry->Release());
    EXPECT_EQ(yax_framework::kOk, DestroyYAX());
    EXPECT_FALSE(IsThere());
  }

  TempDir folder;
  const std::string path = folder / "registry";
  PrintedMessages printed;
  std::string text;
  bool isOver = false;
};

TEST_F(FrameworkAllocationTest, WithoutAnObjectNothingIsPrinted) {
  EXPECT_EQ(yax_framework::kNoMemory, CreateWithout(kObject));
  EXPECT_EQ("", text);
  EXPECT_FALSE(IsThere());
}

TEST_F(FrameworkAllocationTest, WithoutTheCountsSemaphoreTheObjectIsMade) {
  const ChosenDurability withoutJournal(YAX_FRAMEWORK_DURABILITY_NONE);
  EXPECT_EQ(0u, CreateWithout(kGuard));
  EXPECT_EQ(text, std::string(kUncounted) + kBegins);
  ExpectWorks();
}

// Threads of the standard library would take memory, which is counted for one thread only.
void* CountUpAndDown(void* object) {
  for (int i = 0; i < 100000; ++i) {
    static_cast<CYAXCompBase*>(object)->AddRef();
    static_cast<CYAXCompBase*>(object)->Release();
  }
  return nullptr;
}

TEST_F(FrameworkAllocationTest, WithoutItsSemaphoreTheCountServesTwoThreadsAllTheSame) {
  printed.Take();
  heap::sFailing = 1;
  CYAXCompBase* counted = new CYAXCompBase;
  EXPECT_EQ(0u, heap::sFailing);
  EXPECT_EQ(kUncounted, printed.Take());
  pthread_t threads[2] = {};
  for (pthread_t& thread : threads) {
    ASSERT_EQ(0, pthread_create(&thread, nullptr, CountUpAndDown, counted));
  }
  for (pthread_t thread : threads) pthread_join(thread, nullptr);
  EXPECT_EQ(2u, counted->AddRef());
  EXPECT_EQ(1u, counted->Release());
  const unsigned int before = heap::sLive;
  EXPECT_EQ(0u, counted->Release());
  EXPECT_EQ(heap::sLive, before - 1);
}

TEST_F(FrameworkAllocationTest, AMessageThatCannotBeMadeIsNotPrinted) {
  const ChosenDurability withoutJournal(YAX_FRAMEWORK_DURABILITY_NONE);
  EXPECT_EQ(0u, CreateWithout(kMessage));
  EXPECT_EQ("", text);
  ExpectWorks();
}

TEST_F(FrameworkAllocationTest, WithoutARegistryThereIsNoFramework) {
  EXPECT_EQ(yax_framework::kNoMemory, CreateWithout(kRegistry));
  EXPECT_EQ(text, std::string(kBegins) + kEnds);
  EXPECT_FALSE(IsThere());
  EXPECT_FALSE(std::filesystem::exists(path));
}

// With a framework that its message of a missing journal does not concern, and with what every
// program gets.
class FrameworkFailures : public FrameworkAllocationTest,
                          public ::testing::WithParamInterface<YAX_FRAMEWORK_DURABILITY> {
 protected:
  // The registry's own failures come first, then those of the parts behind it.
  void Failed(unsigned int result) {
    EXPECT_EQ(0u, text.rfind(kBegins, 0));
    EXPECT_EQ(text.find(kEnds), text.size() - (sizeof kEnds - 1));
    EXPECT_TRUE(GetParam() != YAX_FRAMEWORK_DURABILITY_NONE || text == std::string(kBegins) + kEnds)
        << text;
    EXPECT_FALSE(IsThere());
    if (result == 0xE000000D) {
      EXPECT_EQ(0u, laterFailures);
      ++registryFailures;
    } else {
      EXPECT_EQ(yax_framework::kNoMemory, result);
      ++laterFailures;
    }
  }

  const ChosenDurability chosen{GetParam()};
  unsigned int registryFailures = 0;
  unsigned int laterFailures = 0;
};

TEST_P(FrameworkFailures, NoneThatFailsLeavesAnythingBehind) {
  ASSERT_EQ(yax_framework::kOk, CreateYAX(path.c_str()));  // what the process takes once
  ExpectWorks();
  const std::string bytes = GetFile(path);
  const int descriptor = NextDescriptor();
  for (unsigned int nth = kRegistry + 1;; ++nth) {
    SCOPED_TRACE("allocation " + std::to_string(nth));
    ForgetTexts();
    const unsigned int before = heap::sLive;
    const unsigned int result = CreateWithout(nth);
    if (result != 0) {
      Failed(result);
      EXPECT_EQ(nullptr, tamu::registry::RegistryInstance::sFirstInstance);
      EXPECT_TRUE(GetFile(path) == bytes);
      ASSERT_EQ(yax_framework::kOk, CreateYAX(path.c_str()));
    }
    ExpectWorks();
    ForgetTexts();
    EXPECT_EQ(heap::sLive, before);
    EXPECT_EQ(NextDescriptor(), descriptor);
    if (isOver) break;
  }
  EXPECT_GT(registryFailures, 5u);
  EXPECT_EQ(3u, laterFailures);  // the information store, the offers, the loader
}

INSTANTIATE_TEST_SUITE_P(, FrameworkFailures,
                         ::testing::Values(YAX_FRAMEWORK_DURABILITY_NONE,
                                           YAX_FRAMEWORK_DURABILITY_DEFAULT));

// Whatever the failure leaves of the file, the next framework on it works, or it is empty.
TEST_F(FrameworkAllocationTest, AFileThatIsNotThereYetIsMadeByTheNextAttempt) {
  unsigned int failures = 0;
  for (unsigned int nth = kObject;; ++nth) {
    SCOPED_TRACE("allocation " + std::to_string(nth));
    std::filesystem::remove(path);
    const unsigned int result = CreateWithout(nth);
    EXPECT_EQ(IsThere(), result == 0);
    if (result != 0) ++failures;
    DestroyYAX();
    std::error_code absent;
    if (std::filesystem::file_size(path, absent) == 0) std::filesystem::remove(path);
    ASSERT_EQ(yax_framework::kOk, CreateYAX(path.c_str()));
    ExpectWorks();
    if (isOver) break;
  }
  EXPECT_GT(failures, 10u);
}

// An offer is kept whole or not at all.
TEST_F(FrameworkAllocationTest, WithoutMemoryAnOfferStaysAsItWas) {
  ASSERT_EQ(yax_framework::kOk, CreateYAX(path.c_str()));
  void* view = nullptr;
  ASSERT_EQ(yax_framework::kOk, GetYAXInstance(IID_IYAXInfoManager, &view));
  IYAXInfoManager* manager = static_cast<IYAXInfoManager*>(view);
  ASSERT_EQ(yax_framework::kOk, GetYAXInstance(IID_IYAXCatalogue, &view));
  IYAXCatalogue* catalogue = static_cast<IYAXCatalogue*>(view);
  const YAX_GUID_ST clsid = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
  YAX_COMPONENT_INFO_ST info = {};
  ASSERT_EQ(yax_framework::kOk, manager->RegisterComponent(clsid, &info));
  YAX_COMPONENT_OFFER_ST offer = {};
  offer.interfaceCount = 1;
  offer.interfaces[0] = clsid;
  unsigned int version = 0;
  unsigned int searchesFailed = 0;
  unsigned int registryFailures = 0;
  unsigned int lastFound = 0;
  for (unsigned int nth = 1, over = 0; over < 2; ++nth) {
    SCOPED_TRACE("allocation " + std::to_string(nth));
    offer.version = version + 1;
    offer.binarySize = offer.buildIdSize = version % 2 + 1;
    heap::sFailing = nth;
    const unsigned int result = catalogue->SetOffer(clsid, &offer);
    over = heap::sFailing > 0 ? 1 : 0;
    heap::sFailing = 0;
    if (result == yax_framework::kOk) version = offer.version;
    YAX_COMPONENT_OFFER_ST kept = {};
    ASSERT_EQ(yax_framework::kOk, catalogue->GetOffer(clsid, &kept));
    EXPECT_EQ(version, kept.version);
    EXPECT_EQ(version == 0 ? 0u : (version - 1) % 2 + 1, kept.buildIdSize);
    YAX_GUID_ST found = {};
    unsigned int count = 9;
    heap::sFailing = nth;
    const unsigned int searched = catalogue->FindComponents(clsid, &found, 1, &count);
    over += heap::sFailing > 0 ? 1 : 0;
    heap::sFailing = 0;
    if (searched == yax_framework::kNoMemory) ++searchesFailed;
    if (searched == yax_framework::kRegistryFailed) ++registryFailures;
    EXPECT_GE(searched == yax_framework::kOk && version > 0 ? 1u : 0u, count);
    lastFound = count;
  }
  EXPECT_LT(0u, version);
  EXPECT_EQ(1u, searchesFailed);
  EXPECT_LT(5u, registryFailures);  // rather than "there are none"
  EXPECT_EQ(1u, lastFound);
  catalogue->Release();
  manager->Release();
  EXPECT_EQ(yax_framework::kOk, DestroyYAX());
}

TEST_F(FrameworkAllocationTest, AListingWithoutMemoryLeavesTheListAsItWas) {
  ASSERT_EQ(yax_framework::kOk, CreateYAX(path.c_str()));
  void* view = nullptr;
  ASSERT_EQ(yax_framework::kOk, GetYAXInstance(IID_IYAXRegistry, &view));
  IYAXRegistry* registry = static_cast<IYAXRegistry*>(view);
  for (const char* key : {"key", "key/a", "key/b", "key/c"}) {
    ASSERT_EQ(status::kOk, registry->CreateKey(0, key));
  }
  for (const char* name : {"x", "y", "z"}) {
    ASSERT_EQ(status::kOk, registry->CreateValue(0, "key", name, YAX_REG_DATA_TYPE_STRING, ""));
  }
  for (const bool ofKeys : {true, false}) {
    unsigned int listFailures = 0;
    for (unsigned int nth = 1;; ++nth) {
      SCOPED_TRACE("allocation " + std::to_string(nth));
      PCList list;
      ASSERT_EQ(1, list.Create());
      unsigned long long first = 5;
      ASSERT_EQ(1, list.Add(&first, PCList::AtEnd));
      ASSERT_EQ(1, list.Seek(0, PCList::First));
      const unsigned int live = heap::sLive;
      heap::sFailing = nth;
      const unsigned int result = ofKeys ? registry->ListKeys(0, "key", 0, 0, &list, 0)
                                         : registry->ListValues(0, "key", 0, 0, &list);
      const bool over = heap::sFailing > 0;
      heap::sFailing = 0;
      ASSERT_EQ(5u, *static_cast<unsigned long long*>(list.Data()));
      if (over) {
        EXPECT_EQ(0u, result);
        EXPECT_EQ(4u, list.Count());
        break;
      }
      EXPECT_EQ(heap::sLive, live);
      EXPECT_EQ(1u, list.Count());
      if (result == 0xE0000003) {
        ++listFailures;
      } else {
        EXPECT_EQ(yax_framework::kRegistryFailed, result);  // the registry's own
      }
    }
    EXPECT_EQ(3u, listFailures);
  }
  registry->Release();
  EXPECT_EQ(yax_framework::kOk, DestroyYAX());
}

TEST_F(FrameworkAllocationTest, AFunctionThatCannotBeKeptIsRefused) {
  const auto function = reinterpret_cast<YAX_FACTORY_FN>(std::uintptr_t{0x12345678});
  const unsigned int word = FunctionTable::WordOf(function);
  if (sizeof(function) == sizeof word) GTEST_SKIP() << "addresses are kept whole";
  heap::sFailing = 1;
  EXPECT_EQ(yax_framework::kNoMemory, FunctionTable::Add(function));
  EXPECT_EQ(0u, heap::sFailing);
  EXPECT_EQ(nullptr, FunctionTable::Find(word));
}

TEST_F(FrameworkAllocationTest, AListKeepsWhatItHasWhenThereIsNoRoomForMore) {
  PCList list;
  ASSERT_EQ(1, list.Create());
  int element = 7;
  const unsigned long long number = 8;
  ASSERT_EQ(1, list.Add(&element, PCList::AtEnd));
  heap::sFailing = 1;
  EXPECT_EQ(0, list.Add(&element, PCList::AtEnd));
  heap::sFailing = 1;
  EXPECT_EQ(0, list.Add(&number, PCList::AtFront));
  EXPECT_EQ(0u, heap::sFailing);
  EXPECT_EQ(1u, list.Count());
  ASSERT_EQ(1, list.Seek(0, PCList::First));
  EXPECT_EQ(&element, list.Data());
}

}  // namespace
