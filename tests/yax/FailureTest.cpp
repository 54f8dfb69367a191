// What is told of the last failure: key, value and reason.
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "tests/platform/TestFiles.h"
#include "yax/Settings.h"

namespace yax {
namespace {

const std::string kWrong = " invalid argument or handle, or the parent key is missing";

class FailureTest : public ::testing::Test {
 protected:
  FailureTest() {
    Key key = registry["network/eth0"];
    EXPECT_TRUE(key.Set("name", "uplink"));
    EXPECT_TRUE(key.Set("mtu", 1500));
    EXPECT_TRUE(key.Set("load", 0.5));
    EXPECT_TRUE(key.Set("mac", Bytes{0, 27}));
    EXPECT_TRUE(registry["k"].Make());
  }

  // The text behind a failure.
  std::string After(const Status& status) {
    EXPECT_FALSE(status);
    return FailureText();
  }
  template <class T>
  std::string After(const Result<T>& result) {
    return After(result.status());
  }

  TempDir folder;
  const std::string path = folder / "settings.rce";
  Registry registry{path};
  const Key eth0 = registry["network/eth0"];
};

TEST_F(FailureTest, AnotherTypeIsToldWithWhatItIs) {
  const std::string words = ": the value has another type, ";
  EXPECT_EQ("network/eth0:name" + words + "it is a text", After(eth0.Get<int>("name")));
  EXPECT_EQ("network/eth0:mtu" + words + "it is an integer", After(eth0.Get<std::string>("mtu")));
  EXPECT_EQ("network/eth0:load" + words + "it is a real number", After(eth0.Get<int>("load")));
  EXPECT_EQ("network/eth0:mac" + words + "it is bytes", After(eth0.Get<double>("mac")));
}

TEST_F(FailureTest, WhatIsMissingOrTooLargeIsNamed) {
  EXPECT_EQ("network/eth0:speed: key or value not found", After(eth0.Get<int>("speed")));
  EXPECT_EQ("none: key or value not found", After(registry["none"].Remove()));
  EXPECT_EQ("network/eth0:mtu: the number is outside the range", After(eth0.Get<char>("mtu")));
  Key key = registry["network/eth0"];
  const std::string text = After(key.Set("name", std::string(1024, 'x')));
  EXPECT_NE(std::string::npos, text.find("network/eth0:name: ")) << text;
  EXPECT_NE(std::string::npos, text.find(", more than 1023 bytes")) << text;
}

TEST_F(FailureTest, AWrongNameIsToldWithItsReason) {
  Key key = registry["k"];
  EXPECT_EQ("k::" + kWrong + ", a name has 1 to 31 bytes", After(key.Set("", 1)));
  EXPECT_EQ("k:a:" + kWrong + ", a zero byte is in the name",
            After(key.Set(std::string("a\0b", 3), 1)));
}

// A key that could not be named has no path: what it should have been stands in its place.
TEST_F(FailureTest, APathThatNamesNoKeyIsTold) {
  Key key = registry["a//b"];
  EXPECT_EQ(
      "(no key):n:" + kWrong +
          "; \"a//b\" could not be named, a component of the path is empty",
      After(key.Set("n", 1)));
}

TEST_F(FailureTest, TwoNamesAreBothTold) {
  EXPECT_EQ("network to k: already exists", After(registry["network"].CopyTo("k")));
  const std::string file = folder / "none";
  EXPECT_EQ(0u, After(registry["network"].Restore(file)).find("network from " + file + ": "));
}

TEST_F(FailureTest, AFileThatCannotBeOpenedIsNamed) {
  registry = Registry("");  // closes it
  Options options;
  options.readOnly = true;
  const std::string text = After(Registry(folder / "none.rce", options).status());
  EXPECT_NE(std::string::npos, text.find("none.rce: key or value not found")) << text;
}

// Of a long path the end tells most; the name is whole.
TEST_F(FailureTest, LongPathsAreCutAtTheirBeginning) {
  std::string deep = "first";
  for (int i = 0; i < 100; ++i) deep += "/abcdefgh";
  const std::string name(31, 'n');
  const std::string text = After(registry[deep].Get<int>(name));
  EXPECT_EQ(0u, text.find("...")) << text;
  EXPECT_NE(std::string::npos, text.find("/abcdefgh:" + name + ": key or value not found")) << text;
}

TEST_F(FailureTest, SuccessLeavesItAndThreadsHaveTheirOwn) {
  const std::string before = After(eth0.Get<int>("speed"));
  EXPECT_TRUE(eth0.Get<int>("mtu"));
  EXPECT_EQ(before, FailureText());
  std::string at, behind;
  std::thread([&] {
    at = FailureText();
    behind = After(eth0.Get<int>("other"));
  }).join();
  EXPECT_EQ("", at);
  EXPECT_EQ("network/eth0:other: key or value not found", behind);
  EXPECT_EQ(before, FailureText());
}

TEST_F(FailureTest, OtherInterfacesKeepTheirs) {
  EXPECT_EQ(YAX_OK, yax_note_failure(eth0.get(), "mtu", YAX_OK, "nothing"));
  EXPECT_EQ(YAX_RANGE, yax_note_failure(eth0.get(), "mtu", YAX_RANGE, "too fast"));
  EXPECT_EQ("network/eth0:mtu: the number is outside the range, too fast", FailureText());
  EXPECT_EQ(YAX_BUSY, yax_note_failure(eth0.get(), nullptr, YAX_BUSY, nullptr));
  EXPECT_EQ(0u, FailureText().find("network/eth0: "));
}

}  // namespace
}  // namespace yax
