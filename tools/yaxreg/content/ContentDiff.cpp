#include "tools/yaxreg/content/ContentDiff.h"

#include <utility>

#include "tools/yaxreg/image/ValueOrder.h"

namespace yaxreg {

namespace {

// The keys of one side that are still to be compared.
class Side {
 public:
  Side(const Content& content, size_t key) : content_(content), next_(key) {
    if (key == Content::kNone) return;
    base_ = content.keys[key].depth;
    end_ = content.EndOf(key);
  }
  bool isAtEnd() const { return next_ == Content::kNone || next_ >= end_; }
  const ContentKey& Front() const { return content_.keys[next_]; }
  // Of the front, from the key that was given.
  unsigned int Depth() const { return Front().depth - base_; }
  const ContentKey* Take() { return &content_.keys[next_++]; }

 private:
  const Content& content_;
  size_t next_;
  size_t end_ = 0;
  unsigned int base_ = 0;
};

// Which of the two fronts comes first in the order of both contents: below 0 the first one, above 0
// the second one, 0 when they are the same key. Both have the same parent when they lie equally
// deep, because whatever lies below a key that one side alone has, is taken before its next
// neighbour.
int OrderOf(const Side& first, const Side& second) {
  if (first.isAtEnd() || second.isAtEnd()) return first.isAtEnd() ? 1 : -1;
  if (first.Depth() != second.Depth()) return first.Depth() > second.Depth() ? -1 : 1;
  return first.Depth() == 0 ? 0 : first.Front().name.compare(second.Front().name);
}

// The paths of the keys that are compared.
class Paths {
 public:
  explicit Paths(std::string prefix) : prefix_(std::move(prefix)) {}
  // `base`: the depth of the key that was given.
  void Enter(const ContentKey& key, unsigned int base) {
    const unsigned int depth = key.depth - base;
    below_.resize(depth);
    if (depth > 0) below_[depth - 1] = &key.name;
  }
  std::string Text() const {
    std::string path = prefix_;
    for (const std::string* name : below_) {
      if (!path.empty()) path += '/';
      path += *name;
    }
    return path;
  }

 private:
  std::string prefix_;
  std::vector<const std::string*> below_;
};

// Tells the differences of one pair of keys, of which one may be null.
class KeyComparison {
 public:
  KeyComparison(const ContentKey* first, const ContentKey* second, const Paths& paths,
                const DifferenceVisitor& visit)
      : first_(first), second_(second), paths_(paths), visit_(visit) {}

  // False when the visitor ended it.
  bool Run() {
    if (first_ != nullptr && second_ != nullptr && first_->IsSameAs(*second_)) return true;
    return CompareFields() && CompareValues();
  }

 private:
  bool Tell(DifferenceKind kind) { return Tell(kind, NamedValues(), ""); }

  bool Tell(DifferenceKind kind, const NamedValues& values, const std::string& name) {
    Difference difference;
    difference.kind = kind;
    difference.path = paths_.Text();
    difference.first = first_;
    difference.second = second_;
    difference.name = name;
    difference.firstValues = values.first;
    difference.secondValues = values.second;
    return visit_(difference);
  }

  bool CompareFields() {
    if (first_ == nullptr || second_ == nullptr) return Tell(DifferenceKind::kKey);
    if (first_->isMadeUp != second_->isMadeUp) return Tell(DifferenceKind::kMissing);
    if (first_->isMadeUp) return true;
    const bool isSameDefault =
        first_->hasDefault == second_->hasDefault && first_->defaultValue == second_->defaultValue;
    return (first_->owner == second_->owner || Tell(DifferenceKind::kOwner)) &&
           (first_->permission == second_->permission || Tell(DifferenceKind::kRights)) &&
           (first_->watch == second_->watch || Tell(DifferenceKind::kWatch)) &&
           (isSameDefault || Tell(DifferenceKind::kDefault));
  }

  bool CompareValues() {
    const std::vector<ContentValue> none;
    return VisitNames(first_ != nullptr ? first_->values : none,
                      second_ != nullptr ? second_->values : none, [&](const NamedValues& values) {
                        return values.AreSame() ||
                               Tell(DifferenceKind::kValue, values, values.name());
                      });
  }

  const ContentKey* first_;
  const ContentKey* second_;
  const Paths& paths_;
  const DifferenceVisitor& visit_;
};

std::string PrefixOf(const Content& first, size_t firstKey, const Content& second,
                     size_t secondKey) {
  if (firstKey != Content::kNone) return first.PathOf(firstKey);
  return secondKey != Content::kNone ? second.PathOf(secondKey) : std::string();
}

unsigned int DepthOf(const Content& content, size_t key) {
  return key == Content::kNone ? 0 : content.keys[key].depth;
}

}  // namespace

void VisitKeyPairs(const Content& first, size_t firstKey, const Content& second, size_t secondKey,
                   const KeyPairVisitor& visit) {
  Side firstSide(first, firstKey);
  Side secondSide(second, secondKey);
  while (!firstSide.isAtEnd() || !secondSide.isAtEnd()) {
    const int order = OrderOf(firstSide, secondSide);
    const ContentKey* const firstNow = order <= 0 ? firstSide.Take() : nullptr;
    const ContentKey* const secondNow = order >= 0 ? secondSide.Take() : nullptr;
    if (!visit(firstNow, secondNow)) return;
  }
}

bool AreSameKeys(const ContentKey& first, const ContentKey& second) {
  bool isSame = true;
  const Paths paths("");
  const DifferenceVisitor visit = [&](const Difference&) {
    isSame = false;
    return false;
  };
  KeyComparison(&first, &second, paths, visit).Run();
  return isSame;
}

void CompareContents(const Content& first, size_t firstKey, const Content& second, size_t secondKey,
                     const DifferenceVisitor& visit) {
  Paths paths(PrefixOf(first, firstKey, second, secondKey));
  const unsigned int firstBase = DepthOf(first, firstKey);
  const unsigned int secondBase = DepthOf(second, secondKey);
  VisitKeyPairs(first, firstKey, second, secondKey,
                [&](const ContentKey* firstNow, const ContentKey* secondNow) {
                  if (firstNow != nullptr) {
                    paths.Enter(*firstNow, firstBase);
                  } else {
                    paths.Enter(*secondNow, secondBase);
                  }
                  return KeyComparison(firstNow, secondNow, paths, visit).Run();
                });
}

std::vector<Difference> DifferencesOf(const Content& first, size_t firstKey, const Content& second,
                                      size_t secondKey) {
  std::vector<Difference> differences;
  CompareContents(first, firstKey, second, secondKey, [&](const Difference& difference) {
    differences.push_back(difference);
    return true;
  });
  return differences;
}

bool AreSame(const Content& first, size_t firstKey, const Content& second, size_t secondKey) {
  bool isSame = true;
  CompareContents(first, firstKey, second, secondKey, [&](const Difference&) {
    isSame = false;
    return false;
  });
  return isSame;
}

}  // namespace yaxreg
