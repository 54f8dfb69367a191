#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "platform/PCString.h"

namespace {

// A buffer of exactly `capacity` bytes on the heap, where a sanitizer sees every byte beyond it.
std::unique_ptr<char[]> Buffer(unsigned int capacity, const char* text = nullptr) {
  std::unique_ptr<char[]> buffer(new char[capacity]);
  for (unsigned int i = 0; i < capacity; ++i) buffer[i] = '#';
  if (text != nullptr) PCString::Copy(buffer.get(), text);
  return buffer;
}

TEST(PCString, LengthCountsTheBytesBeforeTheTerminator) {
  EXPECT_EQ(0u, PCString::Length(""));
  EXPECT_EQ(3u, PCString::Length("abc"));
  EXPECT_EQ(1u, PCString::Length("a\0b"));
  EXPECT_EQ(0u, PCString::Length(nullptr));
}

TEST(PCString, DiffIsTheDifferenceOfTheFirstBytesThatDiffer) {
  EXPECT_EQ(0, PCString::Diff("abc", "abc"));
  EXPECT_EQ(1, PCString::Diff("abd", "abc"));
  EXPECT_EQ(PCString::Diff("axz", "aba"), 'x' - 'b');
  EXPECT_EQ(-98, PCString::Diff("a", "ab"));
  EXPECT_EQ(98, PCString::Diff("ab", "a"));
  EXPECT_EQ(0, PCString::Diff("", ""));
}

TEST(PCString, DiffComparesSignedBytes) {
  EXPECT_EQ(PCString::Diff("\x80", "a"), -128 - 97);
  EXPECT_EQ(-1, PCString::Diff("\xFF", ""));
  EXPECT_EQ(PCString::Diff("\x7F", "\x80"), 127 + 128);
  EXPECT_EQ(1, PCString::Diff("\xFF", "\xFE"));
}

TEST(PCString, NullComparesAsTheEmptyString) {
  EXPECT_EQ(0, PCString::Diff(nullptr, nullptr));
  EXPECT_EQ(0, PCString::Diff(nullptr, ""));
  EXPECT_EQ(97, PCString::Diff("a", nullptr));
  EXPECT_EQ(-97, PCString::Diff(nullptr, "a"));
}

TEST(PCString, CopyTakesTheTerminatorAlong) {
  auto dest = Buffer(4);
  EXPECT_EQ(PCString::Copy(dest.get(), "abc"), dest.get());
  EXPECT_STREQ(dest.get(), "abc");
  PCString::Copy(dest.get(), nullptr);
  EXPECT_STREQ(dest.get(), "");
}

TEST(PCString, BoundedCopyCutsAndTerminates) {
  auto dest = Buffer(4);
  EXPECT_EQ(PCString::Copy(dest.get(), 4, "abc"), dest.get());
  EXPECT_STREQ(dest.get(), "abc");
  PCString::Copy(dest.get(), 4, "vwxyz");
  EXPECT_STREQ(dest.get(), "vwx");
  PCString::Copy(dest.get(), 1, "abc");
  EXPECT_STREQ(dest.get(), "");
  PCString::Copy(dest.get(), 4, nullptr);
  EXPECT_STREQ(dest.get(), "");
}

TEST(PCString, BoundedCopyReadsNoFurtherThanItCopies) {
  auto source = Buffer(3);
  auto dest = Buffer(4);
  PCString::Copy(dest.get(), 4, source.get());
  EXPECT_STREQ(dest.get(), "###");
}

TEST(PCString, BoundedCopyWithoutCapacityWritesNothing) {
  auto dest = Buffer(1);
  EXPECT_EQ(PCString::Copy(dest.get(), 0, "abc"), dest.get());
  EXPECT_EQ('#', dest[0]);
  EXPECT_EQ(nullptr, PCString::Copy(nullptr, 0, "abc"));
}

TEST(PCString, ConcateAppends) {
  auto dest = Buffer(7, "abc");
  EXPECT_EQ(PCString::Concate(dest.get(), "def"), dest.get());
  EXPECT_STREQ(dest.get(), "abcdef");
  PCString::Concate(dest.get(), "");
  PCString::Concate(dest.get(), nullptr);
  EXPECT_STREQ(dest.get(), "abcdef");
}

TEST(PCString, BoundedConcateCutsAndTerminates) {
  auto dest = Buffer(6, "abc");
  EXPECT_EQ(PCString::Concate(dest.get(), 6, "d"), dest.get());
  EXPECT_STREQ(dest.get(), "abcd");
  PCString::Concate(dest.get(), 6, "efgh");
  EXPECT_STREQ(dest.get(), "abcde");
  PCString::Concate(dest.get(), 6, "x");
  EXPECT_STREQ(dest.get(), "abcde");
  PCString::Concate(dest.get(), 6, nullptr);
  EXPECT_STREQ(dest.get(), "abcde");
}

TEST(PCString, BoundedConcateLeavesATextWithoutTerminator) {
  auto dest = Buffer(3);
  EXPECT_EQ(PCString::Concate(dest.get(), 3, "abc"), dest.get());
  EXPECT_EQ("###", std::string(dest.get(), 3));
  PCString::Concate(dest.get(), 0, "abc");
  EXPECT_EQ('#', dest[0]);
}

TEST(PCString, PrintFormatsWithinTheCapacity) {
  auto dest = Buffer(8);
  EXPECT_EQ(4, PCString::Print(dest.get(), 8, "%s=%d", "a", 12));
  EXPECT_STREQ(dest.get(), "a=12");
  EXPECT_EQ(10, PCString::Print(dest.get(), 8, "%s", "0123456789"));
  EXPECT_STREQ(dest.get(), "0123456");
  EXPECT_EQ(3, PCString::Print(dest.get(), 1, "abc"));
  EXPECT_STREQ(dest.get(), "");
  EXPECT_EQ(3, PCString::Print(nullptr, 0, "abc"));
}

// A wide character that the C locale cannot show.
TEST(PCString, PrintAnswersNegativeAndLeavesNoTextWhenItCannotFormat) {
  const wchar_t unshowable[] = {0x20AC, 0};
  auto dest = Buffer(8);
  EXPECT_LT(PCString::Print(dest.get(), 8, "ab%ls", unshowable), 0);
  EXPECT_STREQ(dest.get(), "");
}

}  // namespace
