#include "registry/format/NodeLink.h"

namespace tamu::registry {

void SetLink(TernaryStringNode* node, NodeLink link, StringId id) {
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
