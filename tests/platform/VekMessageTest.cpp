#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "platform/VekMessage.h"

namespace {

typedef std::unique_ptr<VekMessage> Message;

TEST(VekMessage, FormatsItsText) {
  Message message(VekMessage::CreateVekMessage("Loader.cpp", 12, "%s is %d", "answer", 42));
  ASSERT_NE(nullptr, message);
  EXPECT_STREQ(message->Text(), "answer is 42");
  EXPECT_STREQ(message->File(), "Loader.cpp");
  EXPECT_EQ(12, message->Line());
}

TEST(VekMessage, ANullFileCountsAsNone) {
  Message message(VekMessage::CreateVekMessage(nullptr, 0, "text"));
  ASSERT_NE(nullptr, message);
  EXPECT_STREQ(message->File(), "");
}

TEST(VekMessage, CutsOffWhatDoesNotFit) {
  const std::string file(100, 'f');
  const std::string text(1000, 't');
  Message message(VekMessage::CreateVekMessage(file.c_str(), -1, "%s", text.c_str()));
  ASSERT_NE(nullptr, message);
  EXPECT_EQ(message->File(), std::string(VekMessage::kFileCapacity - 1, 'f'));
  EXPECT_EQ(message->Text(), std::string(VekMessage::kTextCapacity - 1, 't'));
}

TEST(VekMessage, HasNoTextWhenItCannotBeFormatted) {
  const wchar_t unshowable[] = {0x20AC, 0};
  Message message(VekMessage::CreateVekMessage("", 0, "ab%ls", unshowable));
  ASSERT_NE(nullptr, message);
  EXPECT_STREQ(message->Text(), "");
}

}  // namespace
