// A walk along the values of a key, newest first.
#pragma once

#include "registry/store/NodeSet.h"
#include "registry/store/StoreAccess.h"

namespace tamu::registry {

//   for (ValueWalk walk(access, first); !walk.IsOver(); walk.Advance()) {
//     result = walk.Read(); ... walk.Id(), walk.Record() ...
//   }
class ValueWalk {
 public:
  // `first` is the id of the chain's first value, 0 for none. With `met`, which has room for the
  // store's value nodes, chains that run together are found over several walks.
  ValueWalk(const StoreAccess& access, ValueId first, NodeSet* met = nullptr)
      : access_(access),
        id_(first),
        left_(access.Descriptor(NodeKind::kValue).totalNodes),
        met_(met) {}

  bool IsOver() const { return id_ == 0; }
  ValueId Id() const { return id_; }
  // Reads the value that the walk has come to. kInvalidFile: there are more than the file can have,
  // the links form a circle, or the value was met before. Else the statuses of a read.
  Status Read() {
    if (left_ == 0 || (met_ != nullptr && !met_->Add(id_))) return status::kInvalidFile;
    --left_;
    return access_.ReadHere(id_, &record_);
  }
  const TernaryValueNode& Record() const { return record_; }
  void Advance() { id_ = record_.nextValue(); }

 private:
  const StoreAccess& access_;
  TernaryValueNode record_;
  ValueId id_;
  unsigned int left_;  // reads
  NodeSet* met_;
};

}  // namespace tamu::registry
