#include "tools/yaxreg/content/ContentJsonReader.h"

#include <algorithm>
#include <cstring>
#include <istream>
#include <iterator>
#include <numeric>
#include <string_view>

#include "tools/yaxreg/content/ContentJsonHandler.h"

namespace yaxreg {

namespace {

bool Refuse(const std::string& why, std::string* reason) {
  *reason = why;
  return false;
}

// Where byte `position` is, counted from 1; the parser may name the one behind the last.
std::string LineOf(const std::string& json, size_t position) {
  const size_t before = position == 0 ? 0 : std::min(position - 1, json.size());
  const std::string_view text(json.data(), before);
  const size_t lines = static_cast<size_t>(std::count(text.begin(), text.end(), '\n'));
  const size_t lineBegin = text.rfind('\n');
  const size_t column = before - (lineBegin == std::string_view::npos ? 0 : lineBegin + 1);
  return "line " + std::to_string(lines + 1) + ", column " + std::to_string(column + 1);
}

// Walks over a text and counts the lines that it has come to.
class LineCounter {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  LineCounter(const char* place, size_t* lines) : place_(place), lines_(lines) {}
  const char& operator*() const { return *place_; }
  LineCounter& operator++() {
    if (*place_++ == '\n') ++*lines_;
    return *this;
  }
  bool operator==(const LineCounter& other) const { return place_ == other.place_; }
  bool operator!=(const LineCounter& other) const { return place_ != other.place_; }

 private:
  const char* place_;
  size_t* lines_;
};

// The keys in the order of Content. False when two have the same path.
bool SortKeys(std::vector<KeyUpdate> keys, ContentUpdate* update, std::string* reason) {
  std::vector<size_t> order(keys.size());
  std::iota(order.begin(), order.end(), size_t{0});
  std::stable_sort(order.begin(), order.end(),
                   [&](size_t a, size_t b) { return IsPathBefore(keys[a].path, keys[b].path); });
  for (size_t i = 1; i < order.size(); ++i) {
    if (keys[order[i - 1]].path != keys[order[i]].path) continue;
    return Refuse("keys[" + std::to_string(order[i]) + "].path: is the path of keys[" +
                      std::to_string(order[i - 1]) + "], too",
                  reason);
  }
  update->keys.clear();
  update->keys.reserve(keys.size());
  for (const size_t i : order) update->keys.push_back(std::move(keys[i]));
  return true;
}

// Nothing but what may stand between the parts of a document.
bool IsBlank(const std::string& json) {
  return json.find_first_not_of(" \t\r\n") == std::string::npos;
}

}  // namespace

bool IsPathBefore(const std::string& a, const std::string& b) {
  const size_t shared = std::min(a.size(), b.size());
  const auto ends =
      std::mismatch(a.begin(), a.begin() + static_cast<std::ptrdiff_t>(shared), b.begin());
  const size_t i = static_cast<size_t>(ends.first - a.begin());
  if (i == shared) return a.size() < b.size();
  const auto rank = [](char c) { return c == '/' ? 0u : static_cast<unsigned char>(c) + 0u; };
  return rank(a[i]) < rank(b[i]);
}

bool ReadContentJson(const std::string& json, ContentUpdate* update, std::string* reason,
                     const UserNames* users, size_t* line) {
  if (line != nullptr) *line = 0;
  if (json.size() > kMaxJsonSize) return Refuse("has more than 64 MB", reason);
  if (IsBlank(json)) return Refuse("is empty", reason);
  ContentJsonHandler handler(users);
  size_t lines = 1;
  const LineCounter begin(json.data(), &lines);
  const LineCounter end(json.data() + json.size(), nullptr);
  if (!nlohmann::json::sax_parse(begin, end, &handler)) {
    if (handler.reason().empty()) {
      return Refuse(LineOf(json, handler.errorByte()) + ": is no JSON", reason);
    }
    if (line != nullptr) *line = lines;
    return Refuse(handler.reason(), reason);
  }
  return SortKeys(handler.TakeKeys(), update, reason);
}

bool ReadJsonText(std::istream& in, std::string* json, std::string* reason) {
  char piece[4096];
  while (json->size() <= kMaxJsonSize && (in.read(piece, sizeof piece) || in.gcount() > 0)) {
    json->append(piece, static_cast<size_t>(in.gcount()));
  }
  return !in.bad() || Refuse("cannot be read", reason);
}

bool ReadContentJson(std::istream& in, ContentUpdate* update, std::string* reason) {
  std::string json;
  return ReadJsonText(in, &json, reason) && ReadContentJson(json, update, reason);
}

}  // namespace yaxreg
