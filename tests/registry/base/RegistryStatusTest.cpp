#include <gtest/gtest.h>

#include <set>
#include <string>

#include "registry/base/RegistryStatus.h"

namespace tamu::registry {
namespace {

constexpr unsigned int kEvery[] = {
    status::kOk,          status::kNoRight,     status::kNotFound, status::kInputOutput,
    status::kCannotOpen,  status::kNoMemory,    status::kBusy,     status::kExists,
    status::kBadArgument, status::kNoSpace,     status::kRange,    status::kNotSupported,
    status::kNoData,      status::kInvalidFile, status::kLimit,    status::kWrongType};

TEST(RegistryStatus, CodesKeepTheirNumbers) {
  const unsigned int numbers[] = {0, 1, 2, 5, 9, 12, 16, 17, 22, 28, 34, 37, 53, 59, 75, 79};
  ASSERT_EQ(std::size(kEvery), std::size(numbers));
  for (std::size_t i = 0; i < std::size(numbers); ++i) EXPECT_EQ(kEvery[i], numbers[i]);
}

TEST(RegistryStatus, EveryCodeHasItsOwnText) {
  std::set<std::string> texts = {StatusText(1000)};
  for (unsigned int code : kEvery) {
    ASSERT_NE(nullptr, StatusText(code)) << code;
    EXPECT_NE(0, *StatusText(code)) << code;
    EXPECT_TRUE(texts.insert(StatusText(code)).second) << code << ": " << StatusText(code);
  }
}

TEST(RegistryStatus, NumbersWithoutAMeaningHaveATextToo) {
  const std::string unknown = StatusText(1000);
  EXPECT_NE("", unknown);
  for (unsigned int code : {3u, 4u, 76u, 0xFFFFFFFFu}) EXPECT_EQ(StatusText(code), unknown) << code;
}

}  // namespace
}  // namespace tamu::registry
