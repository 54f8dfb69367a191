#include "registry/memtree/StringWalk.h"

namespace tamu::registry {

void StringWalk::Start(TernaryString* first) {
  parent_ = nullptr;
  current_ = first;
  entered_ = first != nullptr;
  if (first == nullptr) return;
  first->walkFrom = nullptr;
  first->walkMark = 0;
  first->walkTried = 0;
}

void StringWalk::Next() {
  if (!entered_) {
    current_ = parent_;  // the string that was left may be gone
    if (current_ == nullptr) return;
    parent_ = current_->walkFrom;
  }
  while (current_->walkTried < kNodeLinks) {
    TernaryString* next = SlotOf(*current_, order_[current_->walkTried++]);
    if (next == nullptr) continue;
    next->walkFrom = current_;
    next->walkMark = 0;
    next->walkTried = 0;
    parent_ = current_;
    current_ = next;
    entered_ = true;
    return;
  }
  entered_ = false;
}

}  // namespace tamu::registry
