// du: which keys take the most.
#include <algorithm>
#include <ostream>

#include "registry/format/RecordSize.h"
#include "tools/yaxreg/text/JsonText.h"
#include "tools/yaxreg/text/Numbers.h"
#include "tools/yaxreg/verbs/CommonArguments.h"
#include "tools/yaxreg/verbs/Loading.h"
#include "tools/yaxreg/verbs/VerbTable.h"

namespace yaxreg {

namespace {

// The records that keys take, their names left out: neighbours share these.
struct Share {
  size_t key = 0;  // its index
  size_t keys = 0;
  size_t values = 0;
  size_t blocks = 0;

  size_t bytes() const {
    using tamu::registry::RecordSizeOf;
    return keys * RecordSizeOf(NodeKind::kKey) + values * RecordSizeOf(NodeKind::kValue) +
           blocks * RecordSizeOf(NodeKind::kData);
  }
  void Add(const Share& other) {
    keys += other.keys;
    values += other.values;
    blocks += other.blocks;
  }
};

Share ShareOf(const ContentKey& key, size_t index) {
  Share share = {index, key.isMadeUp ? 0u : 1u, key.values.size(), 0};
  for (const ContentValue& value : key.values) {
    if (value.isNumber()) continue;
    share.blocks += tamu::registry::DataBlocksFor(static_cast<unsigned int>(value.data.size()));
  }
  return share;
}

// Of `top` and each key below it, with all that is below them, in the order of the keys.
std::vector<Share> SharesBelow(const Content& content, size_t top) {
  const size_t end = content.EndOf(top);
  std::vector<Share> shares;
  std::vector<size_t> parents;  // places in `shares`
  std::vector<size_t> way;      // the same by depth below the top
  for (size_t key = top; key < end; ++key) {
    way.resize(content.keys[key].depth - content.keys[top].depth);
    parents.push_back(way.empty() ? 0 : way.back());
    way.push_back(shares.size());
    shares.push_back(ShareOf(content.keys[key], key));
  }
  for (size_t i = shares.size() - 1; i > 0; --i) shares[parents[i]].Add(shares[i]);
  return shares;
}

bool TakeDepth(Invocation& call, unsigned long long* depth, ExitCode* code) {
  const std::string text = call.Text("--depth");
  if (!call.Has("--depth") || ParseNumberUpTo(text, 0xFFFFFFFF, depth)) return true;
  *code = call.Fail(kUsage, "", "", "--depth: " + Shown(text) + " is no number of levels");
  return false;
}

// The shares down to a depth, those that take most first.
std::vector<Share> Sorted(const Content& content, std::vector<Share> shares,
                          unsigned long long depth) {
  const unsigned int top = content.keys[shares.front().key].depth;
  const auto isDeep = [&](const Share& share) {
    return content.keys[share.key].depth - top > depth;
  };
  shares.erase(std::remove_if(shares.begin(), shares.end(), isDeep), shares.end());
  std::stable_sort(shares.begin(), shares.end(),
                   [](const Share& a, const Share& b) { return a.bytes() > b.bytes(); });
  return shares;
}

std::string RightAligned(size_t number) {
  constexpr size_t kWidth = 8;
  const std::string text = std::to_string(number);
  return std::string(kWidth - std::min(kWidth, text.size()), ' ') + text;
}

void PrintShares(Invocation& call, const Content& content, const std::vector<Share>& shares) {
  call.out << call.palette.faint << "   bytes    keys  values  blocks  key" << call.palette.end
           << '\n';
  for (const Share& share : shares) {
    if (!call.out) return;
    call.out << RightAligned(share.bytes()) << RightAligned(share.keys)
             << RightAligned(share.values) << RightAligned(share.blocks) << "  " << call.palette.key
             << Shown(content.PathOf(share.key)) << '/' << call.palette.end << '\n';
  }
}

void PrintJson(Invocation& call, const Content& content, const std::vector<Share>& shares) {
  const char* separator = "{\"keys\":[\n";
  for (const Share& share : shares) {
    if (!call.out) return;
    call.out << separator << "{\"path\":" << TextJson(content.PathOf(share.key))
             << ",\"bytes\":" << std::to_string(share.bytes())
             << ",\"keys\":" << std::to_string(share.keys)
             << ",\"values\":" << std::to_string(share.values)
             << ",\"blocks\":" << std::to_string(share.blocks) << '}';
    separator = ",\n";
  }
  call.out << "\n]}\n";
}

ExitCode RunDu(Invocation& call) {
  unsigned long long depth = 1;
  ExitCode code = kDone;
  if (!TakeDepth(call, &depth, &code)) return code;
  const auto image = LoadImage(call, call.File(), &code);
  if (image == nullptr) return code;
  const Content& content = image->content();
  size_t top = 0;
  if (!FindKey(call, *image, call.File(), call.Path(), &top, &code)) return code;
  const std::vector<Share> shares = Sorted(content, SharesBelow(content, top), depth);
  call.isJson() ? PrintJson(call, content, shares) : PrintShares(call, content, shares);
  return EndOfLook(call, *image, call.File());
}

}  // namespace

Verb DuVerb() {
  return {"du",
          "Tell which keys take the most",
          "Tells what a key and the keys directly below it take of the file, each with all that is "
          "below it, those first that take most: keys, values, blocks of data of 64 bytes, and the "
          "bytes of all these records. Names are not counted, because neighbours share them; stat "
          "counts the string nodes of the whole file.",
          {kFile, kPath},
          {{"-d,--depth", "N", "So many levels below the key; 1 if left out"}},
          "yaxreg du device.rce",
          RunDu};
}

}  // namespace yaxreg
