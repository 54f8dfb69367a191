#include "registry/format/NodeLink.h"

namespace tamu::registry {

unsigned int LinkOf(const TernaryStringNode& node, NodeLink link) {
  switch (link) {
    case NodeLink::kLo:
      return node.lo();
    case NodeLink::kHi:
      return node.hi();
    case NodeLink::kEqual:
      return node.equal();
    case NodeLink::kChild:
      return node.child();
  }
  return 0;
}

void SetLink(TernaryStringNode* node, NodeLink link, unsigned int id) {
  switch (link) {
    case NodeLink::kLo:
      node->setLo(id);
      break;
    case NodeLink::kHi:
      node->setHi(id);
      break;
    case NodeLink::kEqual:
      node->setEqual(id);
      break;
    case NodeLink::kChild:
      node->setChild(id);
      break;
  }
}

}  // namespace tamu::registry
