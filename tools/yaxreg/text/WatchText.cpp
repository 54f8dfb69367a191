#include "tools/yaxreg/text/WatchText.h"

#include <sstream>

#include "registry/base/Watch.h"
#include "tools/yaxreg/text/Numbers.h"

namespace yaxreg {

namespace {

constexpr unsigned int kAllWatchBits = 63;

struct WatchMeaning {
  unsigned char bit;
  const char* word;
  const char* meaning;
};

constexpr WatchMeaning kWatchMeanings[] = {
    {tamu::registry::kWatchValues, "values", "values are created, set or deleted"},
    {tamu::registry::kWatchDefault, "default", "the default value is set"},
    {tamu::registry::kWatchKeys, "keys", "keys directly below are created or deleted"},
    {tamu::registry::kWatchRights, "rights", "rights or watch bits are set"},
    {tamu::registry::kWatchRestored, "restored", "the key is restored"},
    {tamu::registry::kWatchBelow, "below", "all that for the keys below, too"},
};

unsigned char WatchBitOf(const std::string& word) {
  for (const WatchMeaning& bit : kWatchMeanings) {
    if (word == bit.word) return bit.bit;
  }
  return 0;
}

}  // namespace

std::vector<std::string> WatchWords(unsigned char watch) {
  std::vector<std::string> words;
  for (const WatchMeaning& bit : kWatchMeanings) {
    if ((watch & bit.bit) != 0) words.emplace_back(bit.word);
  }
  return words;
}

std::string WatchText(unsigned char watch) {
  std::string text = std::to_string(watch);
  const char* separator = ": ";
  for (const WatchMeaning& bit : kWatchMeanings) {
    if ((watch & bit.bit) == 0) continue;
    text += separator;
    text += bit.meaning;
    separator = "; ";
  }
  return (watch & kAllWatchBits) == 0 ? text + ": nothing" : text;
}

bool ParseWatch(const std::string& text, unsigned char* watch) {
  unsigned long long number = 0;
  if (ParseNumberUpTo(text, kAllWatchBits, &number)) {
    *watch = static_cast<unsigned char>(number);
    return true;
  }
  if (text.empty() || text.back() == ',') return false;
  unsigned int bits = 0;
  std::istringstream words(text);
  for (std::string word; std::getline(words, word, ',');) {
    if (WatchBitOf(word) == 0) return false;
    bits |= WatchBitOf(word);
  }
  *watch = static_cast<unsigned char>(bits);
  return true;
}

}  // namespace yaxreg
