#include <gtest/gtest.h>

#include <sstream>

#include "tests/platform/TestFiles.h"
#include "tests/tools/yaxreg/ContentBuilder.h"
#include "tests/tools/yaxreg/HandMadeFile.h"
#include "tools/yaxreg/image/ImageWriter.h"
#include "tools/yaxreg/text/WatchText.h"
#include "tools/yaxreg/view/PageFiles.h"
#include "tools/yaxreg/view/ViewPage.h"

namespace {

using yaxreg::RegistryImage;

std::string PageOfFile(const std::string& name, const std::string& bytes) {
  const RegistryImage image(bytes);
  std::ostringstream out;
  yaxreg::WriteViewPage({name, &image}, nullptr, out);
  return out.str();
}

size_t TimesIn(const std::string& text, const std::string& part) {
  size_t count = 0;
  for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

TEST(ViewPage, IsOnePageThatLoadsNothing) {
  const std::string page = PageOfFile("device.rce", SmallTree().bytes);
  EXPECT_EQ(0u, page.find("<!doctype html>\n<!-- yaxreg view -->\n<html lang=\"en\">\n"));
  EXPECT_EQ(1u, TimesIn(page, "</html>\n"));
  EXPECT_EQ(1u, TimesIn(page, "default-src 'none'; style-src 'sha256-"));
  for (const char* loading : {" src=", "url(", "@import", "http:", "https:", "fetch(", "innerHTML",
                              "outerHTML", "document.write", "eval(", "{{"}) {
    EXPECT_EQ(0u, TimesIn(page, loading)) << loading;
  }
  EXPECT_EQ(TimesIn(page, "href=\""), TimesIn(page, "href=\"#"));
  EXPECT_EQ(5u, TimesIn(page, "<svg "));
}

// A build puts the sources of the page together; what a browser checks is the bytes of them all.
TEST(ViewPage, HoldsTheSourcesOfThePageByteForByte) {
  const std::string folder = YAX_SOURCE_DIR "/tools/yaxreg/pages/view/";
  std::string script;
  for (const char* name :
       {"text.js", "model.js", "tree.js", "details.js", "sections.js", "main.js"}) {
    script += GetFile(folder + name);
  }
  EXPECT_TRUE(script == yaxreg::PageScript());
  EXPECT_TRUE(GetFile(folder + "page.css") == yaxreg::PageStyle());
  EXPECT_TRUE(GetFile(folder + "page.html") == yaxreg::PageFrame());
  const std::string page = PageOfFile("device.rce", SmallTree().bytes);
  EXPECT_EQ(1u, TimesIn(page, "<script>" + script + "</script>"));
  EXPECT_EQ(1u, TimesIn(page, "script-src '" + std::string(yaxreg::kPageScriptHash) + "'"));
}

TEST(ViewPage, TellsWatchBitsInTheWordsOfTheTool) {
  const std::string script = yaxreg::PageScript();
  for (unsigned int bit = 1; bit < 64; bit *= 2) {
    const std::string text = yaxreg::WatchText(static_cast<unsigned char>(bit));
    const std::string words = text.substr(text.find(": ") + 2);
    EXPECT_EQ(1u, TimesIn(script, '\'' + words + '\'')) << words;
  }
}

TEST(ViewPage, LetsNothingOutOfItsTexts) {
  const std::string hostile = "</script></title><script>alert(1)</script><!--\"'";
  const yaxreg::Content content =
      ContentOf({KeyOf(0, ""),
                 KeyOf(1, "<script><!--", {TextOf("</script>", hostile), NumberOf("{{map}}", 1)})});
  const std::string bytes = yaxreg::ImageWriter(content).bytes();
  const std::string page = PageOfFile(hostile + "\x1B\xFF", bytes);
  EXPECT_EQ(2u, TimesIn(page, "</script>"));
  EXPECT_EQ(2u, TimesIn(page, "<script"));
  EXPECT_EQ(
      1u, TimesIn(page, "</title>") - TimesIn(page, "</title><rect") - TimesIn(page, "</title></"));
  EXPECT_EQ(1u, TimesIn(page, "<!--"));
  EXPECT_EQ(1u, TimesIn(page, "</title>\n<style>"));
  EXPECT_EQ(2u, TimesIn(page,
                        "&lt;/script&gt;&lt;/title&gt;&lt;script&gt;alert(1)&lt;/script&gt;"
                        "&lt;!--\"'\\x1b\\xff"));
  EXPECT_EQ(std::string::npos, page.find('\x1B'));
}

// The page is put together in one pass: what stands for a part of it is nothing in a name.
TEST(ViewPage, TakesNoNameForAPartOfItself) {
  const std::string page = PageOfFile("{{script}}", SmallTree().bytes);
  EXPECT_EQ(1u, TimesIn(page, "class Tree {"));
  EXPECT_EQ(2u, TimesIn(page, ">{{script}}<"));
}

}  // namespace
