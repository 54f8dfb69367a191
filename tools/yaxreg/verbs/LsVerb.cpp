// ls: the values and keys of one key, or all keys below it.
#include <algorithm>
#include <array>
#include <ostream>

#include "tools/yaxreg/content/ContentJson.h"
#include "tools/yaxreg/content/PathPattern.h"
#include "tools/yaxreg/content/ValueText.h"
#include "tools/yaxreg/image/ValueOrder.h"
#include "tools/yaxreg/text/JsonText.h"
#include "tools/yaxreg/text/Numbers.h"
#include "tools/yaxreg/text/RightsText.h"
#include "tools/yaxreg/verbs/CommonArguments.h"
#include "tools/yaxreg/verbs/Loading.h"
#include "tools/yaxreg/verbs/VerbTable.h"

namespace yaxreg {

namespace {

constexpr size_t kListDataWidth = 40;  // of a value's data, in characters

// What is listed: the keys directly below a key, or all below it.
struct Listing {
  const Content* content;
  size_t top;
  bool isRecursive;
  std::vector<size_t> keys;
  std::vector<size_t> subKeys;  // of each key from `top` on, how many are directly below it
};

Listing ListingOf(const Content& content, size_t top, bool isRecursive) {
  Listing listing = {&content, top, isRecursive, {}, {}};
  const size_t end = content.EndOf(top);
  listing.subKeys.resize(end - top);
  std::vector<size_t> parents = {top};  // by depth below the top
  for (size_t key = top + 1; key < end; ++key) {
    const size_t depth = content.keys[key].depth - content.keys[top].depth;
    parents.resize(depth);
    ++listing.subKeys[parents[depth - 1] - top];
    parents.push_back(key);
    if (isRecursive || depth == 1) listing.keys.push_back(key);
  }
  return listing;
}

// The columns of a line before the name, and how wide they are.
using Cells = std::array<std::string, 4>;
using Widths = std::array<size_t, 4>;

void Widen(const Cells& cells, Widths* widths) {
  for (size_t i = 0; i < cells.size(); ++i) {
    (*widths)[i] = std::max((*widths)[i], WidthOf(cells[i]));
  }
}

void PrintCells(Invocation& call, const Cells& cells, const Widths& widths, size_t firstRight,
                size_t behindRight) {
  call.out << call.palette.faint;
  for (size_t i = 0; i < cells.size(); ++i) {
    if (widths[i] == 0) continue;
    const std::string blanks(widths[i] - WidthOf(cells[i]), ' ');
    const bool isRight = i >= firstRight && i < behindRight;
    call.out << (isRight ? blanks + cells[i] : cells[i] + blanks) << "  ";
  }
  call.out << call.palette.end;
}

Cells CellsOf(const Listing& listing, size_t index) {
  const ContentKey& key = listing.content->keys[index];
  const std::string counts = Counted(listing.subKeys[index - listing.top], "key") + ", " +
                             Counted(key.values.size(), "value");
  if (key.isMadeUp) return {"?", "?", "?", counts};
  return {RightsText(key.permission), std::to_string(key.owner),
          key.hasDefault ? NumberText(key.defaultValue) : "-", counts};
}

Cells CellsOf(const ContentValue& value, bool isHidden) {
  return {"type " + std::to_string(value.type), std::to_string(value.size),
          ValueText(value, kListDataWidth), isHidden ? "hidden" : ""};
}

void PrintKeys(Invocation& call, const Listing& listing) {
  Widths widths = {};
  if (call.Has("--long")) {
    for (const size_t index : listing.keys) Widen(CellsOf(listing, index), &widths);
  }
  PathWalk walk(listing.content->keys[listing.top].depth);
  for (const size_t index : listing.keys) {
    if (!call.out) return;
    const ContentKey& key = listing.content->keys[index];
    if (call.Has("--long")) PrintCells(call, CellsOf(listing, index), widths, 1, 3);
    call.out << call.palette.key << Shown(listing.isRecursive ? walk.Enter(key) : key.name) << '/'
             << call.palette.end << '\n';
  }
}

// One name a line; with --long also the values that are hidden by others.
void PrintValues(Invocation& call, const ContentKey& key) {
  const std::vector<const ContentValue*> values = ValuesByName(key);
  const bool isLong = call.Has("--long");
  const auto isHidden = [&](size_t i) { return i > 0 && values[i - 1]->name == values[i]->name; };
  Widths widths = {};
  for (size_t i = 0; i < values.size() && isLong; ++i) {
    Widen(CellsOf(*values[i], isHidden(i)), &widths);
  }
  for (size_t i = 0; i < values.size() && call.out; ++i) {
    if (isHidden(i) && !isLong) continue;
    if (isLong) PrintCells(call, CellsOf(*values[i], isHidden(i)), widths, 1, 2);
    call.out << call.palette.value << Shown(values[i]->name) << call.palette.end << '\n';
  }
}

void PrintKeyJson(Invocation& call, const Listing& listing, size_t index, const std::string& name) {
  const ContentKey& key = listing.content->keys[index];
  call.out << (listing.isRecursive ? "{\"path\":" : "{\"name\":") << TextJson(name);
  if (key.isMadeUp) {
    call.out << ",\"missing\":true";
  } else {
    call.out << ",\"owner\":" << std::to_string(key.owner)
             << ",\"rights\":" << std::to_string(key.permission)
             << ",\"watch\":" << std::to_string(key.watch)
             << ",\"default\":" << (key.hasDefault ? JsonNumberText(key.defaultValue) : "null");
  }
  call.out << ",\"keyCount\":" << std::to_string(listing.subKeys[index - listing.top])
           << ",\"valueCount\":" << std::to_string(key.values.size()) << '}';
}

void PrintValuesJson(Invocation& call, const ContentKey& key) {
  call.out << ",\"values\":[";
  const char* separator = "\n";
  for (const ContentValue* value : ValuesByName(key)) {
    call.out << separator << ValueJson(*value);
    separator = ",\n";
  }
  call.out << (key.values.empty() ? "]" : "\n]");
}

void PrintJson(Invocation& call, const Listing& listing) {
  const ContentKey& top = listing.content->keys[listing.top];
  call.out << "{\"path\":" << TextJson(listing.content->PathOf(listing.top));
  if (!listing.isRecursive) PrintValuesJson(call, top);
  call.out << ",\"keys\":[";
  PathWalk walk(top.depth);
  const char* separator = "\n";
  for (const size_t index : listing.keys) {
    if (!call.out) return;
    const ContentKey& key = listing.content->keys[index];
    call.out << separator;
    PrintKeyJson(call, listing, index, listing.isRecursive ? walk.Enter(key) : key.name);
    separator = ",\n";
  }
  call.out << (listing.keys.empty() ? "]}" : "\n]}");
}

void PrintListing(Invocation& call, const Listing& listing) {
  if (!listing.isRecursive) PrintValues(call, listing.content->keys[listing.top]);
  PrintKeys(call, listing);
}

// Each key that a pattern matches under its own path.
void PrintMatches(Invocation& call, const Content& content, const std::vector<size_t>& matches) {
  const char* separator = "";
  if (call.isJson()) call.out << "{\"matches\":[\n";
  for (const size_t match : matches) {
    if (!call.out) return;
    const Listing listing = ListingOf(content, match, call.Has("--recursive"));
    call.out << separator;
    if (call.isJson()) {
      PrintJson(call, listing);
      separator = ",\n";
      continue;
    }
    call.out << call.palette.key << Shown(content.PathOf(match)) << "/:" << call.palette.end
             << '\n';
    PrintListing(call, listing);
    separator = "\n";
  }
  if (call.isJson()) call.out << "\n]}\n";
}

ExitCode RunLs(Invocation& call) {
  ExitCode code = kDone;
  const auto image = LoadImage(call, call.File(), &code);
  if (image == nullptr) return code;
  size_t key = image->content().Find(call.Path());
  if (key == Content::kNone && HasWildcard(call.Path())) {
    const std::vector<size_t> matches = PathPattern(call.Path()).Find(image->content());
    if (matches.empty()) return FailWithoutMatch(call, *image);
    PrintMatches(call, image->content(), matches);
    return EndOfLook(call, *image, call.File());
  }
  if (!FindKey(call, *image, call.File(), call.Path(), &key, &code)) return code;
  const Listing listing = ListingOf(image->content(), key, call.Has("--recursive"));
  if (call.isJson()) {
    PrintJson(call, listing);
    call.out << '\n';
  } else {
    PrintListing(call, listing);
  }
  return EndOfLook(call, *image, call.File());
}

}  // namespace

Verb LsVerb() {
  return {"ls",
          "List the values and keys of a key",
          "Lists the values of a key, sorted, and then the keys directly below it. Keys end in a "
          "slash. A value that is hidden by a newer one of its name is listed with --long only. Of "
          "a pattern each key that matches is listed under its path.",
          {kFile, kPathPattern},
          {{"-r,--recursive", nullptr, "List all keys below by their paths, and no values"},
           {"-l,--long", nullptr,
            "Tell owner, rights, default value and counts of keys, type, size and data of values"}},
          "yaxreg ls -l device.rce network",
          RunLs};
}

}  // namespace yaxreg
