// tree: keys and values as a tree.
#include <ostream>

#include "tools/yaxreg/content/ContentJson.h"
#include "tools/yaxreg/content/ValueText.h"
#include "tools/yaxreg/image/ValueOrder.h"
#include "tools/yaxreg/text/JsonText.h"
#include "tools/yaxreg/text/Numbers.h"
#include "tools/yaxreg/verbs/CommonArguments.h"
#include "tools/yaxreg/verbs/Loading.h"
#include "tools/yaxreg/verbs/VerbTable.h"

namespace yaxreg {

namespace {

constexpr size_t kTreeDataWidth = 60;  // of a value's data, in characters

// The keys to show, in their order: `top` and what lies at most `levels` below it.
struct Excerpt {
  const Content* content;
  size_t top;
  std::vector<size_t> keys;
  size_t valueCount;
};

Excerpt ExcerptOf(const Content& content, size_t top, unsigned long long levels) {
  Excerpt excerpt = {&content, top, {}, 0};
  const size_t end = content.EndOf(top);
  for (size_t key = top; key < end; ++key) {
    if (content.keys[key].depth - content.keys[top].depth > levels) continue;
    excerpt.keys.push_back(key);
    excerpt.valueCount += content.keys[key].values.size();
  }
  return excerpt;
}

// For each key of an excerpt whether it is the last one below its parent.
std::vector<bool> LastOnes(const Excerpt& excerpt) {
  std::vector<bool> isLast(excerpt.keys.size());
  std::vector<bool> isFollowed;  // by depth below the top: a neighbour of that depth comes later
  for (size_t i = excerpt.keys.size(); i-- > 0;) {
    const size_t depth =
        excerpt.content->keys[excerpt.keys[i]].depth - excerpt.content->keys[excerpt.top].depth;
    isFollowed.resize(depth + 1);  // forgets what is below another parent
    isLast[i] = !isFollowed[depth];
    isFollowed[depth] = true;
  }
  return isLast;
}

// Draws an excerpt line by line. Only the lines' beginnings are kept between the keys, so that a
// tree of any depth takes no more than its longest line.
class TreePrinter {
 public:
  TreePrinter(Invocation& call, const Excerpt& excerpt)
      : call_(call), excerpt_(excerpt), withValues_(!call.Has("--keys")) {}

  void Print(const std::string& topPath) {
    const std::vector<bool> isLast = LastOnes(excerpt_);
    for (size_t i = 0; i < excerpt_.keys.size() && call_.out; ++i) {
      const ContentKey& key = excerpt_.content->keys[excerpt_.keys[i]];
      const size_t depth = key.depth - excerpt_.content->keys[excerpt_.top].depth;
      BeginKey(depth, isLast[i]);
      PrintKey(depth == 0 ? topPath : key.name, key);
      const bool hasMore = i + 1 < excerpt_.keys.size() &&
                           excerpt_.content->keys[excerpt_.keys[i + 1]].depth > key.depth;
      if (withValues_) PrintValues(key, hasMore);
    }
  }

 private:
  // Puts the lines of the parents and the branch to the key before the line.
  void BeginKey(size_t depth, bool isLast) {
    lengths_.resize(depth);
    if (depth == 0) return;
    beginning_.resize(depth > 1 ? lengths_[depth - 2] : 0);
    call_.out << beginning_ << (isLast ? "└── " : "├── ");
    beginning_ += isLast ? "    " : "│   ";
    lengths_[depth - 1] = beginning_.size();
  }

  void PrintKey(const std::string& name, const ContentKey& key) {
    const Palette& palette = call_.palette;
    call_.out << palette.key << Shown(name) << '/' << palette.end;
    if (key.isMadeUp) call_.out << palette.bad << " (no key record)" << palette.end;
    if (key.hasDefault) {
      call_.out << palette.faint << " (default " << NumberText(key.defaultValue) << ')'
                << palette.end;
    }
    call_.out << '\n';
  }

  void PrintValues(const ContentKey& key, bool hasMore) {
    const Palette& palette = call_.palette;
    const std::vector<const ContentValue*> values = ValuesByName(key);
    for (size_t i = 0; i < values.size(); ++i) {
      const ContentValue& value = *values[i];
      const bool isLast = i + 1 == values.size() && !hasMore;
      call_.out << beginning_ << (isLast ? "└── " : "├── ") << palette.value << Shown(value.name)
                << palette.end;
      PrintData(value, i > 0 && values[i - 1]->name == value.name);
      call_.out << '\n';
    }
  }

  // " = 001bff (type 2, hidden)"
  void PrintData(const ContentValue& value, bool isHidden) {
    const Palette& palette = call_.palette;
    std::string notes;
    const auto add = [&](const std::string& note) { notes += (notes.empty() ? "" : ", ") + note; };
    if (value.isSet) {
      const std::string text = ValueText(value, kTreeDataWidth);
      call_.out << " = " << text;
      const bool isCut = text.back() == '.';  // a number, hexadecimal digits or quoted otherwise
      if (isCut) add(Counted(value.size, "byte"));
    } else {
      add("not set");
    }
    const std::string more = ValueNotes(value, isHidden);
    if (!more.empty()) add(more);
    if (!notes.empty()) call_.out << palette.faint << " (" << notes << ')' << palette.end;
  }

  Invocation& call_;
  const Excerpt& excerpt_;
  const bool withValues_;
  std::string beginning_;
  std::vector<size_t> lengths_;  // of the beginnings at each depth
};

void PrintPlain(Invocation& call, const Excerpt& excerpt) {
  const std::string path = excerpt.content->PathOf(excerpt.top);
  TreePrinter(call, excerpt).Print(path);
  call.out << call.palette.faint << '\n' << Counted(excerpt.keys.size(), "key");
  if (!call.Has("--keys")) call.out << ", " << Counted(excerpt.valueCount, "value");
  call.out << call.palette.end << '\n';
}

// "path":...,"depth":...,"values":[...] of a key, and what it has besides.
void PrintKeyJson(Invocation& call, const ContentKey& key, const std::string& path, size_t depth) {
  call.out << "{\"path\":" << TextJson(path) << ",\"depth\":" << depth;
  if (key.isMadeUp) call.out << ",\"missing\":true";
  if (key.hasDefault) call.out << ",\"default\":" << JsonNumberText(key.defaultValue);
  if (!call.Has("--keys")) {
    call.out << ",\"values\":[";
    const char* separator = "";
    for (const ContentValue* value : ValuesByName(key)) {
      call.out << separator << ValueJson(*value);
      separator = ",";
    }
    call.out << ']';
  }
  call.out << '}';
}

void PrintJson(Invocation& call, const Excerpt& excerpt) {
  const std::vector<ContentKey>& keys = excerpt.content->keys;
  const std::string base = excerpt.content->PathOf(excerpt.top);
  PathWalk walk(keys[excerpt.top].depth);
  call.out << "{\"keys\":[";
  const char* separator = "\n";
  for (size_t i = 0; i < excerpt.keys.size() && call.out; ++i) {
    const ContentKey& key = keys[excerpt.keys[i]];
    const std::string& below = walk.Enter(key);
    const std::string between = base.empty() || below.empty() ? "" : "/";
    call.out << separator;
    PrintKeyJson(call, key, base + between + below, key.depth - keys[excerpt.top].depth);
    separator = ",\n";
  }
  call.out << "\n],\"keyCount\":" << excerpt.keys.size();
  if (!call.Has("--keys")) call.out << ",\"valueCount\":" << excerpt.valueCount;
  call.out << "}\n";
}

ExitCode RunTree(Invocation& call) {
  unsigned long long levels = ~0ull;
  if (call.Has("--depth") && !ParseNumberUpTo(call.Text("--depth"), ~0ull, &levels)) {
    return call.Fail(kUsage, "", "", "--depth takes a whole number from 0");
  }
  ExitCode code = kDone;
  const auto image = LoadImage(call, call.File(), &code);
  if (image == nullptr) return code;
  size_t key = 0;
  if (!FindKey(call, *image, call.File(), call.Path(), &key, &code)) return code;
  const Excerpt excerpt = ExcerptOf(image->content(), key, levels);
  if (call.isJson()) {
    PrintJson(call, excerpt);
  } else {
    PrintPlain(call, excerpt);
  }
  return EndOfLook(call, *image, call.File());
}

}  // namespace

Verb TreeVerb() {
  return {
      "tree",
      "Show the keys as a tree",
      "Shows a key and all keys below it, sorted by name, each with its values first. Data of the "
      "types 2 to 5 that is a text is shown as one. In parentheses stand the type of all but "
      "numbers and texts of type 1, and what else is to be told.",
      {kFile, kPath},
      {{"-d,--depth", "N", "Show only so many levels below the key"},
       {"-k,--keys", nullptr, "Show no values"}},
      "yaxreg tree device.rce network",
      RunTree};
}

}  // namespace yaxreg
