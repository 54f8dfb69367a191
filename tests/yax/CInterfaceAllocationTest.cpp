// What the C interface does when the heap gives nothing, and that it gives everything back.
#include <functional>
#include <string>

#include "tests/allocation/CountedHeap.h"
#include "tests/platform/TestFiles.h"
#include "tests/support/StructureCheck.h"
#include "yax/yax.h"

namespace yax {
namespace {

class CInterfaceAllocationTest : public ::testing::Test {
 protected:
  CInterfaceAllocationTest() {
    Open();
    EXPECT_EQ(YAX_OK, yax_key_at(registry, "k", &key));
    EXPECT_EQ(YAX_OK, yax_set_text(key, "t", "text", YAX_ZERO_ENDED));
    EXPECT_EQ(YAX_OK, yax_set_int(key, "n", 1));
    Close();
    start = GetFile(path);
  }
  void Open() { ASSERT_EQ(YAX_OK, yax_open(path.c_str(), nullptr, &registry)); }
  void Close() {
    yax_key_free(key);
    key = nullptr;
    yax_close(registry);
    registry = nullptr;
  }

  // Runs an operation on the file as it was at the start, each of its allocations failing in turn.
  // It answers YAX_NO_MEMORY and changes nothing, or it is done; nothing is lost. Returns how often
  // an allocation failed.
  unsigned int FailEverywhere(const std::function<yax_status()>& operation) {
    for (unsigned int nth = 1;; ++nth) {
      SCOPED_TRACE("allocation " + std::to_string(nth));
      PutFile(path, start);
      const unsigned int live = heap::sLive;
      Open();
      EXPECT_EQ(YAX_OK, yax_key_at(registry, "k", &key));
      heap::sFailing = nth;
      const yax_status result = operation();
      const bool isOver = heap::sFailing != 0;
      heap::sFailing = 0;
      const bool isUnchanged = start == GetFile(path);
      Close();
      EXPECT_EQ(live, heap::sLive);
      if (result != YAX_OK) {
        EXPECT_EQ(YAX_NO_MEMORY, result);
        EXPECT_TRUE(isUnchanged);
      }
      EXPECT_EQ("", StructureFindings(path));
      if (isOver) {
        EXPECT_EQ(YAX_OK, result);
        return nth - 1;
      }
      if (HasFailure()) return nth;
    }
  }

  TempDir dir;
  const std::string path = dir / "a.rce";
  std::string start;
  yax_registry* registry = nullptr;
  yax_key* key = nullptr;
};

TEST_F(CInterfaceAllocationTest, ThatFailAreToldAndChangeNothing) {
  EXPECT_GT(FailEverywhere([&] { return yax_set_text(key, "t", "more", YAX_ZERO_ENDED); }), 0u);
  EXPECT_GT(FailEverywhere([&] {
              char text[16];
              return yax_get_text(key, "t", text, sizeof text, nullptr);
            }),
            0u);
  EXPECT_GT(FailEverywhere([&] {
              yax_names* names = nullptr;
              const yax_status result = yax_key_values(key, &names);
              yax_names_free(names);
              return result;
            }),
            0u);
  EXPECT_GT(FailEverywhere([&] {
              yax_key* below = nullptr;
              const yax_status result = yax_key_below(key, "a/b", &below);
              yax_key_free(below);
              return result;
            }),
            0u);
  EXPECT_GT(FailEverywhere([&] { return yax_key_copy(key, "copy/of/it"); }), 0u);
  EXPECT_GT(FailEverywhere([&] { return yax_key_move(key, "moved/to"); }), 0u);
  EXPECT_GT(FailEverywhere([&] { return yax_key_remove(key); }), 0u);
}

TEST_F(CInterfaceAllocationTest, ThatFailInAnOpeningLeaveNothing) {
  for (unsigned int nth = 1;; ++nth) {
    SCOPED_TRACE("allocation " + std::to_string(nth));
    const unsigned int live = heap::sLive;
    heap::sFailing = nth;
    const yax_status result = yax_open(path.c_str(), nullptr, &registry);
    const bool isOver = heap::sFailing != 0;
    heap::sFailing = 0;
    if (result == YAX_OK) Close();
    EXPECT_EQ(live, heap::sLive);
    if (isOver) break;
    EXPECT_NE(YAX_BUSY, result);
    ASSERT_LT(nth, 1000u);
  }
}

TEST_F(CInterfaceAllocationTest, AWatchIsMadeOrNot) {
  const unsigned int failed = FailEverywhere([this] {
    yax_watch* watch = nullptr;
    yax_change change = {};
    yax_status result = yax_watch_key(key, &watch);
    if (result == YAX_OK) result = yax_watch_next(watch, 0, &change);
    yax_watch_free(watch);
    return result == YAX_NO_DATA ? yax_status{YAX_OK} : result;
  });
  EXPECT_LE(2u, failed);
}

TEST_F(CInterfaceAllocationTest, ATransactionIsBegunOrNot) {
  const unsigned int failed = FailEverywhere([this] {
    yax_transaction* transaction = nullptr;
    const yax_status result = yax_begin(registry, &transaction);
    EXPECT_EQ(result == YAX_OK, transaction != nullptr);
    yax_cancel(transaction);
    return result;
  });
  EXPECT_LE(1u, failed);
}

}  // namespace
}  // namespace yax
