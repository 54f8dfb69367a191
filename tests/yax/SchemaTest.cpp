#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "tests/platform/TestFiles.h"
#include "yax/Schema.h"

namespace yax {
namespace {

enum class Mode { kAuto = 3 };
using Lines = std::vector<std::string>;

class SchemaTest : public ::testing::Test {
 protected:
  const Schema schema = {{"net/eth0", "mtu", 1500, 576, 9000},
                         {"net/eth0", "name", "uplink"},
                         {"net/eth0", "mac", Bytes{0, 27}},
                         {"net/eth0", "load", 0.5},
                         {"net", "up", true, 0, 1},
                         {"net", "mode", Mode::kAuto}};
  TempDir folder;
  Registry registry{folder / "a.rce"};
};

TEST_F(SchemaTest, AnEmptyRegistryMakesEverythingOnce) {
  const Report first = Apply(registry, schema);
  EXPECT_TRUE(first.status) << first.status.text();
  EXPECT_EQ(first.made, (Lines{"net/eth0 mtu", "net/eth0 name", "net/eth0 mac", "net/eth0 load",
                               "net up", "net mode"}));
  EXPECT_EQ(1500, registry["net/eth0"].Get("mtu", 0));
  EXPECT_EQ("uplink", registry["net/eth0"].Get("name", ""));
  EXPECT_EQ(0.5, registry["net/eth0"].Get("load", 0.0));
  EXPECT_TRUE(registry["net"].Get("up", false));
  const Report second = Apply(registry, schema);
  EXPECT_TRUE(second.status);
  EXPECT_EQ(second.made, Lines());
  EXPECT_EQ(second.extra, Lines());
}

TEST_F(SchemaTest, WhatIsThereStays) {
  ASSERT_TRUE(registry["net/eth0"].Set("mtu", 1400));
  EXPECT_EQ(Apply(registry, schema).made.size(), schema.size() - 1);
  EXPECT_EQ(1400, registry["net/eth0"].Get("mtu", 0));
}

TEST_F(SchemaTest, WhatDoesNotFitIsToldAndNothingIsMade) {
  ASSERT_TRUE(registry["net/eth0"].Set("name", 5));
  ASSERT_TRUE(registry["net/eth0"].Set("mtu", 9001));
  const Report report = Apply(registry, schema);
  EXPECT_EQ(report.status, Status(YAX_RANGE));
  EXPECT_EQ(report.unfit, (Lines{"net/eth0 mtu: the number is outside the range",
                                 "net/eth0 name: the value has another type"}));
  EXPECT_EQ(report.made, Lines());
  EXPECT_FALSE(registry["net"].Has("up"));
  EXPECT_EQ(9001, registry["net/eth0"].Get("mtu", 0));
}

TEST_F(SchemaTest, WhatDoesNotFitIsTheLastFailure) {
  ASSERT_TRUE(registry["net/eth0"].Set("name", 5));
  ASSERT_FALSE(Apply(registry, schema).status);
  EXPECT_EQ("net/eth0:name: the value has another type", FailureText());
}

TEST_F(SchemaTest, ANumberBelowTheLeastDoesNotFit) {
  ASSERT_TRUE(registry["net/eth0"].Set("mtu", 575));
  const Report report = Apply(registry, schema);
  EXPECT_EQ(Status(YAX_RANGE), report.status);
  EXPECT_EQ((Lines{"net/eth0 mtu: the number is outside the range"}), report.unfit);
}

TEST_F(SchemaTest, ARealNumberHasARangeToo) {
  const Schema real = {{"audio", "gain", 0.5, 0, 1.5}, {"audio", "left", -0.5, -1.0, 1.0}};
  EXPECT_TRUE(Apply(registry, real).status);
  for (const double gain : {-0.1, 1.6, std::nan("")}) {
    ASSERT_TRUE(registry["audio"].Set("gain", gain));
    EXPECT_EQ((Lines{"audio gain: the number is outside the range"}), Apply(registry, real).unfit);
  }
  ASSERT_TRUE(registry["audio"].Set("gain", 1.5));
  EXPECT_TRUE(Apply(registry, real).status);
}

TEST_F(SchemaTest, TheEndsOfARangeAreExact) {
  constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
  const Schema wide = {{"n", "n", kMost - 1, 0, kMost - 1}, {"n", "half", 1, 0.5, 1.5}};
  EXPECT_TRUE(Apply(registry, wide).status);
  ASSERT_TRUE(registry["n"].Set("n", kMost));
  ASSERT_TRUE(registry["n"].Set("half", 2));
  EXPECT_EQ(2u, Apply(registry, wide).unfit.size());
}

// A number below zero and one above 2^63 have the same bits.
TEST_F(SchemaTest, NumbersWithoutASignAreComparedAsSuch) {
  constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();
  const Schema wide = {{"n", "large", kMost - 1, kMost / 2, kMost - 1}, {"n", "small", -2, -3, -1}};
  EXPECT_TRUE(Apply(registry, wide).status);
  EXPECT_EQ(kMost - 1, registry["n"].Get("large", std::uint64_t{0}));
  ASSERT_TRUE(registry["n"].Set("large", kMost));
  ASSERT_TRUE(registry["n"].Set("small", 0));
  EXPECT_EQ((Lines{"n large: the number is outside the range",
                   "n small: the number is outside the range"}),
            Apply(registry, wide).unfit);
  ASSERT_TRUE(registry["n"].Set("large", kMost / 2));
  ASSERT_TRUE(registry["n"].Set("small", -3));
  EXPECT_TRUE(Apply(registry, wide).status);
}

TEST_F(SchemaTest, ATruthValueIsNoOtherNumber) {
  ASSERT_TRUE(Apply(registry, {{"n", "on", true}}).status);
  ASSERT_TRUE(registry["n"].Set("on", 2));
  EXPECT_EQ(Status(YAX_RANGE), Apply(registry, {{"n", "on", true}}).status);
}

TEST_F(SchemaTest, AFloatIsMadeAsItIsWritten) {
  EXPECT_TRUE(Apply(registry, {{"n", "gain", 0.1f, 0.1, 1}}).status);
  EXPECT_EQ(0.1, registry["n"].Get("gain", 0.0));
}

// What is told of a key that could not be named before stays.
TEST_F(SchemaTest, TheFirstRowThatDoesNotFitIsTheLastFailure) {
  EXPECT_FALSE(registry["a//b"].Make());
  const std::string unnamed = FailureText();
  EXPECT_NE(std::string::npos, unnamed.find("\"a//b\" could not be named"));
  EXPECT_FALSE(Reset(registry, {{"n", "low", 1, 2, 3}, {"n", "high", 4, 2, 3}}));
  EXPECT_EQ("n:low: the number is outside the range, the first value is outside its range",
            FailureText());
  EXPECT_FALSE(Key().Make());
  EXPECT_EQ(unnamed, FailureText());
}

// Before anything is looked for: also where it would not have been made.
TEST_F(SchemaTest, RowsThatDoNotFitThemselvesAreRefused) {
  const Schema wrong = {{"n", "low", 1, 2, 3},
                        {"n", "twice", 1},
                        {"/n", "twice", 2},
                        {"n", "real", std::nan(""), 0, 1}};
  const Lines lines = {"n low: the first value is outside its range",
                       "/n twice: the schema names it twice",
                       "n real: the first value is outside its range"};
  ASSERT_TRUE(registry["n"].Set("low", 2));
  const Report report = Apply(registry, wrong);
  EXPECT_EQ(Status(YAX_RANGE), report.status);
  EXPECT_EQ(lines, report.unfit);
  EXPECT_EQ(Lines(), report.made);
  EXPECT_EQ(Status(YAX_RANGE), Reset(registry, wrong));
  EXPECT_EQ(2, registry["n"].Get("low", 0));
  EXPECT_FALSE(registry["n"].Has("twice"));
  EXPECT_EQ(Status(YAX_BAD_ARGUMENT), Apply(registry, {{"n", "a", 1}, {"n", "a", 1}}).status);
}

// "a b" with the value "c" is not "a" with "b c".
TEST_F(SchemaTest, WhatIsTooMuchIsToldByKeyAndValue) {
  ASSERT_TRUE(registry["a"].Set("b c", 1));
  EXPECT_EQ(Lines{"a b c"}, Apply(registry, {{"a b", "c", 1}, {"a", "d", 1}}).extra);
}

TEST_F(SchemaTest, NothingIsChangedWhereNothingIsMissing) {
  ASSERT_TRUE(Apply(registry, schema).status);
  Options options;
  options.readOnly = true;
  registry = Registry("");  // closes it
  registry = Registry(folder / "a.rce", options);
  EXPECT_TRUE(Apply(registry, schema).status);
}

TEST_F(SchemaTest, WhatAnotherMakesMeanwhileStays) {
  std::thread other;
  {
    Transaction transaction(registry);
    ASSERT_TRUE(registry["net/eth0"].Set("mtu", 1400));
    std::atomic<bool> isThere{false};
    other = std::thread([&] {
      isThere = true;
      const Report mine = Apply(registry, schema);
      EXPECT_TRUE(mine.status);
    });
    while (!isThere) std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));  // it has looked, and waits
    ASSERT_TRUE(transaction.Commit());
  }
  other.join();
  EXPECT_EQ(1400, registry["net/eth0"].Get("mtu", 0));
  EXPECT_TRUE(registry["net"].Has("up"));
}

TEST_F(SchemaTest, WhatIsTooMuchIsToldOnce) {
  ASSERT_TRUE(registry["net/eth0"].Set("speed", 100));
  ASSERT_TRUE(registry["other"].Set("n", 1));
  EXPECT_EQ(Apply(registry, schema).extra, Lines{"net/eth0 speed"});
}

TEST_F(SchemaTest, AResetBringsAllFirstValuesBack) {
  ASSERT_TRUE(Apply(registry, schema).status);
  ASSERT_TRUE(registry["net/eth0"].Set("mtu", 1400));
  ASSERT_TRUE(registry["net/eth0"].Set("name", 7));
  EXPECT_TRUE(Reset(registry, schema));
  EXPECT_EQ(1500, registry["net/eth0"].Get("mtu", 0));
  EXPECT_EQ("uplink", registry["net/eth0"].Get("name", ""));
}

TEST_F(SchemaTest, AFailureIsToldWithItsStatus) {
  EXPECT_EQ(Apply(registry, {{"a//b", "n", 1}}).status, Status(YAX_BAD_ARGUMENT));
  EXPECT_EQ(Reset(registry, {{"a", "n", std::string(1024, 'x')}}), Status(YAX_LIMIT));
  ASSERT_TRUE(Apply(registry, schema).status);
  ASSERT_TRUE(registry.SetUser("guest"));
  EXPECT_EQ(Apply(registry, schema).status, Status(YAX_NO_RIGHT));
}

}  // namespace
}  // namespace yax
