#include "tools/yaxreg/verbs/NewKeys.h"

#include <algorithm>

#include "registry/format/TernaryStringNode.h"
#include "tools/yaxreg/content/ExactKey.h"

namespace yaxreg {

namespace status = tamu::registry::status;
using tamu::registry::Registry;

namespace {

size_t CountPresent(const Content& content, const std::vector<std::string>& names) {
  size_t key = 0;
  for (size_t count = 0; count < names.size(); ++count) {
    const size_t child = content.FindChild(key, names[count]);
    if (child == Content::kNone || content.keys[child].isMadeUp) return count;
    key = child;
  }
  return names.size();
}

}  // namespace

bool TakeNames(Invocation& call, const std::string& path, std::vector<std::string>* names,
               ExitCode* code) {
  for (size_t begin = 0; !path.empty() && begin <= path.size();) {
    const size_t end = std::min(path.find('/', begin), path.size());
    names->push_back(path.substr(begin, end - begin));
    if (names->back().empty()) {
      *code = call.Fail(kUsage, "", "", Shown(call.Text("PATH")) + " has an empty name in it");
      return false;
    }
    begin = end + 1;
  }
  return true;
}

NewKeys::NewKeys(Session& session, const std::vector<std::string>& names)
    : session_(session), names_(names), present_(0) {
  const Content& content = session.image().content();
  if (!content.keys.empty()) present_ = CountPresent(content, names);
  before_.reserve(content.keys.size());
  for (const ContentKey& key : content.keys) before_.push_back({key.depth, key.name});
}

// The first missing name may be spelled already, by a neighbour or since a key of that name was
// deleted. Below it nothing is: each name takes a string node for 17 bytes begun.
bool NewKeys::MayFit() const {
  constexpr size_t kNameBytesPerNode = tamu::registry::TernaryStringNode::kSegmentMax + 1;
  const RegistryImage& image = session_.image();
  size_t nodes = 0;
  for (size_t i = present_ + 1; i < names_.size(); ++i) {
    nodes += (names_[i].size() + kNameBytesPerNode - 1) / kNameBytesPerNode;
  }
  return names_.size() - present_ <= image.UseOf(NodeKind::kKey).room() &&
         nodes <= image.UseOf(NodeKind::kString).room();
}

unsigned int NewKeys::Create(const unsigned long long* defaultValue) {
  std::string path;
  std::string first;
  for (size_t i = 0; i < names_.size(); ++i) {
    path += (i == 0 ? "" : "/") + names_[i];
    if (i < present_) continue;
    if (i == present_) first = path;
    const bool isLast = i + 1 == names_.size();
    const unsigned int result =
        CreateExactKey(session_.registry(), path, isLast ? defaultValue : nullptr);
    if (result == status::kOk) continue;
    if (i > present_) Delete(first);  // dropped: the failure of the creation is told
    return result;
  }
  return status::kOk;
}

bool NewKeys::DeleteStrays(unsigned int* result) {
  if (!session_.LookAgain()) return false;
  *result = status::kOk;
  for (const std::string& path : Strays(session_.image().content())) {
    const unsigned int deleted = Delete(path);
    if (deleted != status::kOk) *result = deleted;
  }
  return true;
}

// Nothing was deleted meanwhile: what was there before is found again in the same order.
std::vector<std::string> NewKeys::Strays(const Content& after) const {
  std::vector<std::string> strays;
  PathWalk walk;
  size_t next = 0;
  for (const ContentKey& key : after.keys) {
    const std::string& path = walk.Enter(key);
    const bool wasThere =
        next < before_.size() && before_[next].depth == key.depth && before_[next].name == key.name;
    if (wasThere) {
      ++next;
    } else if (!IsOnTheWay(path)) {
      strays.push_back(path);
    }
  }
  return strays;
}

bool NewKeys::IsOnTheWay(const std::string& path) const {
  const std::string& target = session_.path();
  return target.compare(0, path.size(), path) == 0 &&
         (target.size() == path.size() || target[path.size()] == '/');
}

// The user owns what was made, but may have inherited no right to delete it.
unsigned int NewKeys::Delete(const std::string& path) {
  Registry& registry = session_.registry();
  registry.SetKeyPermission(0, path.c_str(), tamu::registry::kRightsAll);
  return registry.DeleteKey(0, path.c_str());
}

}  // namespace yaxreg
