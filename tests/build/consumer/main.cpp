// Calls something of each kind that libYAX.so exports.
#include <cstdint>
#include <cstring>

#include "platform/CVekforTamu.h"
#include "platform/PCList.h"
#include "registry/base/NameList.h"
#include "registry/base/RCEString.h"
#include "registry/base/RegistryStatus.h"

namespace {

bool gSeen = false;

void See(int /*level*/, const char* text) {
  gSeen = std::strstr(text, "number 7") != nullptr;
}

bool ListKeepsACopy() {
  PCList list;
  std::uint64_t entry = 5;
  if (list.Create() == 0 || list.Add(&entry, PCList::AtEnd) == 0) return false;
  entry = 6;
  list.Lock();
  const bool found = list.Seek(0, PCList::First) != 0;
  const bool same = found && *static_cast<std::uint64_t*>(list.Data()) == 5;
  list.Unlock();
  return same;
}

bool NamesComeBack() {
  tamu::registry::NameList names(1);
  char* name = tamu::registry::RCEString::Concate("a", "b", true);
  if (name == nullptr || names.AddName(name, 9) != 0) return false;
  unsigned long long tag = 0;
  return std::strcmp(names.GetName(0, &tag), "a/b") == 0 && tag == 9;
}

bool MessagesReachTheSink() {
  CVekforTamu::SetSink(See);
  CVekforTamu::Print(1, VekMessage::CreateVekMessage(__FILE__, __LINE__, "number %d", 7));
  CVekforTamu::SetSink(nullptr);
  return gSeen;
}

}  // namespace

int main() {
  const bool text = tamu::registry::StatusText(0)[0] != '\0';
  return text && ListKeepsACopy() && NamesComeBack() && MessagesReachTheSink() ? 0 : 1;
}
