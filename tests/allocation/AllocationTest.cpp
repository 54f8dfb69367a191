// What operations take from the heap. This program counts every new.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "registry/Registry.h"
#include "tests/platform/TestFiles.h"

namespace {

unsigned int sAllocations = 0;

void* CountedAllocation(size_t size) {
  ++sAllocations;
  return std::malloc(size > 0 ? size : 1);
}

}  // namespace

void* operator new(size_t size) {
  return CountedAllocation(size);
}
void* operator new[](size_t size) {
  return CountedAllocation(size);
}
void* operator new(size_t size, const std::nothrow_t&) noexcept {
  return CountedAllocation(size);
}
void* operator new[](size_t size, const std::nothrow_t&) noexcept {
  return CountedAllocation(size);
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete[](void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, size_t) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, size_t) noexcept {
  std::free(memory);
}

namespace tamu::registry {

namespace {

class Allocations : public ::testing::Test {
 protected:
  Allocations() : registry((folder / "counted.rce").c_str(), kAdministratorId) {
    EXPECT_EQ(registry.Initialize(), 0u);
    for (const char* key : {"a", "a/b", "a/b/c", "a/b/c/d"}) {
      EXPECT_EQ(registry.CreateKey(0, key, 7), 0u);
    }
    Value value = MakeValue(kValueTypeInteger, &number, sizeof number);
    EXPECT_EQ(registry.CreateValue(0, kKey, "number", &value), 0u);
    Value text = TextValue("some text");
    EXPECT_EQ(registry.CreateValue(0, kKey, "text", &text), 0u);
  }

  // How often the operation takes memory.
  template <class Operation>
  unsigned int Count(Operation operation) {
    const unsigned int before = sAllocations;
    const unsigned int result = operation();
    const unsigned int taken = sAllocations - before;
    EXPECT_EQ(result, expected);
    return taken;
  }

  static constexpr char kKey[] = "a/b/c/d";
  TempDir folder;
  Registry registry;
  unsigned long long number = 5;
  unsigned int expected = 0;  // status
};

constexpr char Allocations::kKey[];

TEST_F(Allocations, AreCounted) {
  EXPECT_EQ(Count([] {
              delete new int;
              return 0u;
            }),
            1u);
}

TEST_F(Allocations, AValueReadTakesItsBufferOnly) {
  for (const char* name : {"number", "text"}) {
    ReadValue value;
    EXPECT_EQ(Count([&] { return registry.GetValue(0, kKey, name, &value); }), 1u);
  }
}

TEST_F(Allocations, ASearchTakesNothing) {
  unsigned long long value = 0;
  EXPECT_EQ(Count([&] { return registry.GetDefaultValue(0, kKey, &value); }), 0u);
  expected = status::kNotFound;
  ReadValue missing;
  EXPECT_EQ(Count([&] { return registry.GetValue(0, "a/b/x/d", "number", &missing); }), 0u);
  EXPECT_EQ(Count([&] { return registry.GetValue(0, kKey, "missing", &missing); }), 0u);
}

TEST_F(Allocations, ChangesTakeNothing) {
  Value integer = MakeValue(kValueTypeInteger, &number, sizeof number);
  Value text = TextValue("another text");
  EXPECT_EQ(Count([&] { return registry.SetValue(0, kKey, "number", &integer); }), 0u);
  EXPECT_EQ(Count([&] { return registry.SetValue(0, kKey, "text", &text); }), 0u);
  EXPECT_EQ(Count([&] { return registry.CreateValue(0, kKey, "new", &text); }), 0u);
  EXPECT_EQ(Count([&] { return registry.DeleteValue(0, kKey, "new"); }), 0u);
  EXPECT_EQ(Count([&] { return registry.CreateKey(0, "a/b/c/e"); }), 0u);
}

}  // namespace

}  // namespace tamu::registry
