// The table of functions whose addresses are longer than what the registry keeps of them.
#include "framework/internal/FunctionTable.h"
#include "tests/framework/InfoStoreRig.h"
#include "tests/registry/ManyThreads.h"

namespace {

constexpr bool kAddressesFit = sizeof(void*) == 4;

// A function whose address differs from FunctionAt(word) in its upper half alone.
YAX_FACTORY_FN FunctionElsewhere(unsigned int word) {
  std::uintptr_t address = word;
  if (!kAddressesFit) address |= static_cast<std::uintptr_t>(0x7700ull << 32);
  return reinterpret_cast<YAX_FACTORY_FN>(address);
}

TEST(FunctionTable, KeepsTheLow32BitsOfAnAddress) {
  EXPECT_EQ(0u, FunctionTable::WordOf(nullptr));
  EXPECT_EQ(0x80123450u, FunctionTable::WordOf(FunctionAt(0x80123450)));
  EXPECT_EQ(0x12u, FunctionTable::WordOf(FunctionElsewhere(0x12)));
}

TEST(FunctionTable, FindsWhatWasAdded) {
  EXPECT_EQ(0u, FunctionTable::Add(FunctionAt(0x80123450)));
  EXPECT_EQ(0u, FunctionTable::Add(FunctionAt(0x00000010)));
  EXPECT_EQ(FunctionTable::Find(0x80123450), FunctionAt(0x80123450));
  EXPECT_EQ(FunctionTable::Find(0x00000010), FunctionAt(0x00000010));
}

TEST(FunctionTable, ZeroIsNoFunction) {
  EXPECT_EQ(nullptr, FunctionTable::Find(0));
  EXPECT_EQ(0u, FunctionTable::Add(nullptr));
  EXPECT_EQ(nullptr, FunctionTable::Find(0));
}

// What is stored of it is 0, and that is no function wherever it is read.
TEST(FunctionTable, AnAddressWhoseLow32BitsAreZeroIsNotFound) {
  EXPECT_EQ(0u, FunctionTable::Add(FunctionAt(0)));  // the null pointer where addresses are short
  EXPECT_EQ(nullptr, FunctionTable::Find(0));
}

TEST(FunctionTable, WhatWasNotAddedIsKnownOnlyWhereAddressesAreShort) {
  const YAX_FACTORY_FN found = FunctionTable::Find(0xABCD1230);
  EXPECT_EQ(found, kAddressesFit ? FunctionAt(0xABCD1230) : nullptr);
}

// A library may be loaded where another one was, as far as 32 bits tell.
TEST(FunctionTable, TheNewerOfTwoWithTheSameWordIsFound) {
  EXPECT_EQ(0u, FunctionTable::Add(FunctionAt(0x20)));
  EXPECT_EQ(0u, FunctionTable::Add(FunctionElsewhere(0x20)));
  EXPECT_EQ(FunctionTable::Find(0x20), FunctionElsewhere(0x20));
  EXPECT_EQ(0u, FunctionTable::Add(FunctionAt(0x20)));
  EXPECT_EQ(FunctionTable::Find(0x20), FunctionAt(0x20));
}

TEST(FunctionTable, ThreadsAddAndFindAtOnce) {
  tamu::registry::Watchdog watchdog("the table of functions");
  std::atomic<unsigned int> surprises{0};
  tamu::registry::OnThreads(4, [&](unsigned int thread) {
    for (unsigned int i = 0; i < 200; ++i) {
      const unsigned int word = 0x10000 * (1 + thread) + 16 * i;
      if (FunctionTable::Add(FunctionAt(word)) != 0) ++surprises;
      if (FunctionTable::Find(word) != FunctionAt(word)) ++surprises;
      FunctionTable::Add(FunctionAt(0x40));  // all of them want this one
      if (FunctionTable::Find(0x40) != FunctionAt(0x40)) ++surprises;
    }
  });
  EXPECT_EQ(0u, surprises);
}

}  // namespace
