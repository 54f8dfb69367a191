#include "registry/memtree/StringSearch.h"

#include "registry/memtree/StringWalk.h"

namespace tamu::registry {

namespace {

// Goes from string to string.
class StringCursor {
 public:
  explicit StringCursor(StringMatch* match) : match_(*match), start_(match->string) {}

  const TernaryStringNode& Node() const { return match_.string->node; }
  Status Follow(NodeLink link) {
    match_.link = link;
    TernaryString* next = SlotOf(*match_.string, link);
    if (next == nullptr) return Miss(link);
    match_.previous = match_.string;
    match_.string = next;
    return status::kOk;
  }
  // With a slash a name counts also where it has no key.
  Status Arrive(bool withSlash) {
    if (match_.string->key != nullptr) return status::kOk;
    if (match_.string == start_) return status::kNotFound;
    return withSlash ? Status(status::kOk) : Miss(NodeLink::kEqual);
  }
  void Pass() {
    match_.owner = match_.string;
    if (match_.string->loadCount == 0) return;
    match_.isBelowHandle = true;
    if (match_.string->isComplete) match_.isBelowComplete = true;
  }

 private:
  Status Miss(NodeLink link) {
    match_.nodeId = LinkOf(Node(), link);
    if (match_.string == start_) match_.previous = nullptr;
    return status::kNotFound;
  }

  StringMatch& match_;
  TernaryString* const start_;
};

}  // namespace

Status SearchStrings(TernaryString* start, const char* path, StringMatch* match) {
  match->string = start;
  match->previous = start;
  match->owner = start;
  StringCursor cursor(match);
  return SearchPath(cursor, path != nullptr ? path : "", match);
}

Status ReachString(TernaryString* start, const char* path, TernaryString** string,
                   TernaryString** owner) {
  const PathMemo::Question question(TernaryString::Paths(), TernaryString::Count(),
                                    reinterpret_cast<std::uintptr_t>(start), path);
  PathMemo::Place place;
  if (question.Find(&place)) {
    *string = reinterpret_cast<TernaryString*>(place.end);
    *owner = reinterpret_cast<TernaryString*>(place.extra);
    if ((*string)->key != nullptr) return status::kOk;
  }
  StringMatch match;
  const Status result = SearchStrings(start, path, &match);
  if (!result.IsOk()) return result;
  if (match.string->key == nullptr) return status::kNotFound;
  *string = match.string;
  *owner = match.owner;
  question.Keep(reinterpret_cast<std::uintptr_t>(match.string),
                reinterpret_cast<std::uintptr_t>(match.owner));
  return result;
}

}  // namespace tamu::registry
