// Keys and values that are in use, but that nothing leads to.
#include <algorithm>
#include <utility>

#include "registry/base/UserId.h"
#include "tools/yaxreg/image/TreeReader.h"

namespace yaxreg {

namespace {

constexpr char kLostAndFound[] = "lost+found";

}  // namespace

bool TreeReader::HasStrays() const {
  return !graph_.orphans().empty() || keys_.HasStrays();
}

// The root's sub-keys lie side by side, so the place is taken before it is known whether it will be
// needed.
void TreeReader::ReserveLostAndFound() {
  if (!HasStrays()) return;
  std::string name = kLostAndFound;
  const auto hasName = [&](const Found& found) {
    return found.parent == 0 && found.key.name == name;
  };
  while (std::any_of(found_.begin() + 1, found_.end(), hasName)) name += '+';
  AddMadeUp(name, 0, 0);
  const auto first = found_.begin() + 1;
  std::stable_sort(first, found_.end(),
                   [](const Found& a, const Found& b) { return a.key.name < b.key.name; });
  lostAndFound_ = static_cast<size_t>(std::find_if(first, found_.end(), hasName) - found_.begin());
}

// The library leaves such things when a key is deleted while it is open below. In a damaged file
// they may belong to what cannot be read.
void TreeReader::ReportStrays() {
  const bool isDamaged = image_.worst_ != Severity::kNote;
  takesStrays_ = lostAndFound_ != Content::kNone && (isDamaged || orphans_ == Orphans::kAlways);
  if (!takesStrays_) {
    image_.Report(Severity::kNote,
                  "there are keys or values in use that nothing leads to: deleted while they were "
                  "open, or lost; yaxreg repair saves them, too");
    return;
  }
  image_.Report(Severity::kLoss,
                "keys or values that nothing leads to; where they were is not known",
                [&] { return PathOf(lostAndFound_); });
}

// Below "lost+found" each has the number of its record. Of a subtree the number is that of the
// string node from which on the name is known.
void TreeReader::ReadLostAndFound() {
  const size_t known = graph_.nodes().size();
  graph_.TakeOrphans();
  keys_.Claim(KeyIds(known));
  std::vector<unsigned int> orphans = graph_.orphans();
  std::sort(orphans.begin(), orphans.end());
  const size_t first = found_.size();
  for (const unsigned int id : orphans) {
    AddMadeUp('(' + RegistryImage::IdText(id) + ')', lostAndFound_, id);
  }
  AddStrayKeys();
  AddStrayValues();
  std::stable_sort(found_.begin() + static_cast<std::ptrdiff_t>(first), found_.end(),
                   [](const Found& a, const Found& b) { return a.key.name < b.key.name; });
  found_[lostAndFound_].firstChild = first;
  found_[lostAndFound_].children = found_.size() - first;
}

void TreeReader::AddStrayKeys() {
  for (const unsigned int id : keys_.StrayKeys()) {
    AddMadeUp("(key " + RegistryImage::IdText(id) + ')', lostAndFound_, 0);
    keys_.Claim({id});
    const size_t index = found_.size() - 1;
    const auto path = [&] { return PathOf(index); };
    found_[index].key.isMadeUp = !keys_.Read(id, false, path, &found_[index].key);
  }
}

void TreeReader::AddStrayValues() {
  for (const unsigned int id : keys_.StrayValues()) {
    AddMadeUp("(value " + RegistryImage::IdText(id) + ')', lostAndFound_, 0);
    const size_t index = found_.size() - 1;
    keys_.ReadStrayValues(
        id, [&] { return PathOf(index); }, &found_[index].key);
  }
}

}  // namespace yaxreg
