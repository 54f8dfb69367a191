#include "framework/internal/ComponentOffers.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "framework/YAXStatus.h"
#include "framework/elf/GuidBytes.h"
#include "framework/internal/ComponentKeyPath.h"
#include "framework/internal/OneChange.h"
#include "framework/internal/RegistryResult.h"
#include "framework/internal/TopKey.h"
#include "registry/base/WalkVisitor.h"

namespace status = tamu::registry::status;

using tamu::registry::MakeValue;
using tamu::registry::ReadValue;
using tamu::registry::Registry;
using tamu::registry::Value;
using tamu::registry::WalkedKey;
using tamu::registry::WalkedValue;
using yax_elf::GuidOf;
using yax_elf::kGuidBytes;
using yax_elf::PutGuid;

namespace {

constexpr char kVersion[] = "Version";
constexpr char kBinarySize[] = "BinarySize";
constexpr char kInterfaces[] = "Interfaces";
constexpr char kBuildId[] = "BuildId";
constexpr char kItself[] = "/";  // the opened key
constexpr unsigned int kBytesType = 2;

// The values of a key that is open.
class OfferValues {
 public:
  OfferValues(Registry& registry, unsigned int key) : registry_(registry), key_(key) {}

  // Nothing, size 0, removes it. What is removed is made a number first, which gives its blocks
  // back.
  unsigned int Put(const char* name, unsigned int type, const void* data, unsigned int size) const {
    static constexpr unsigned char kZero[8] = {};
    Value value = size != 0 ? MakeValue(type, data, size)
                            : MakeValue(tamu::registry::kValueTypeInteger, kZero, sizeof kZero);
    unsigned int result = registry_.SetValue(key_, kItself, name, &value);
    if (result == status::kNotFound) {
      return size != 0 ? StatusOf(registry_.CreateValue(key_, kItself, name, &value))
                       : yax_framework::kOk;
    }
    if (result == status::kOk && size == 0) result = registry_.DeleteValue(key_, kItself, name);
    return StatusOf(result);
  }
  unsigned int PutNumber(const char* name, unsigned long long number) const {
    unsigned char bytes[8];
    for (unsigned int i = 0; i < sizeof bytes; ++i) {
      bytes[i] = static_cast<unsigned char>(number >> (8 * i));
    }
    return Put(name, tamu::registry::kValueTypeInteger, bytes, number != 0 ? sizeof bytes : 0);
  }
  // The number, 0 for none.
  unsigned int GetNumber(const char* name, unsigned long long* number) const {
    ReadValue value(tamu::registry::kValueTypeInteger);
    const unsigned int result = Get(name, &value);
    *number = value.number();
    return result;
  }
  unsigned int Get(const char* name, ReadValue* value) const {
    const unsigned int result = registry_.GetValue(key_, kItself, name, value);
    return result == status::kNotFound ? yax_framework::kOk : StatusOf(result);
  }

 private:
  Registry& registry_;
  unsigned int key_;
};

unsigned int WriteOffer(const OfferValues& values, const YAX_COMPONENT_OFFER_ST& offer) {
  unsigned char interfaces[kYAXInterfaceMax * kGuidBytes];
  for (unsigned int i = 0; i < offer.interfaceCount; ++i) {
    PutGuid(interfaces + i * kGuidBytes, offer.interfaces[i]);
  }
  unsigned int result = values.PutNumber(kVersion, offer.version);
  if (result == yax_framework::kOk) result = values.PutNumber(kBinarySize, offer.binarySize);
  if (result == yax_framework::kOk) {
    result = values.Put(kInterfaces, kBytesType, interfaces, offer.interfaceCount * kGuidBytes);
  }
  if (result == yax_framework::kOk) {
    result = values.Put(kBuildId, kBytesType, offer.buildId, offer.buildIdSize);
  }
  return result;
}

// What is longer than it may be counts as far as there is room.
unsigned int ReadOffer(const OfferValues& values, YAX_COMPONENT_OFFER_ST* offer) {
  unsigned long long version = 0;
  unsigned int result = values.GetNumber(kVersion, &version);
  offer->version = static_cast<unsigned int>(version);
  if (result == yax_framework::kOk) result = values.GetNumber(kBinarySize, &offer->binarySize);
  ReadValue interfaces(kBytesType);
  if (result == yax_framework::kOk) result = values.Get(kInterfaces, &interfaces);
  if (interfaces.bytes() != nullptr) {
    offer->interfaceCount = std::min(kYAXInterfaceMax, interfaces.size / kGuidBytes);
    for (unsigned int i = 0; i < offer->interfaceCount; ++i) {
      offer->interfaces[i] = GuidOf(interfaces.bytes() + i * kGuidBytes);
    }
  }
  ReadValue buildId(kBytesType);
  if (result == yax_framework::kOk) result = values.Get(kBuildId, &buildId);
  if (buildId.bytes() != nullptr) {
    offer->buildIdSize = std::min(kYAXBuildIdMax, buildId.size);
    std::memcpy(offer->buildId, buildId.bytes(), offer->buildIdSize);
  }
  return result;
}

// Finds the components that offer an interface, and sorts the first of them.
class Search : public tamu::registry::WalkVisitor {
 public:
  struct Found {
    YAX_GUID_ST clsid;
    unsigned int version;
  };

  // `found` has room for so many, and is the caller's.
  Search(const YAX_GUID_ST& iid, Found* found, unsigned int room) : found_(found), room_(room) {
    PutGuid(wanted_, iid);
  }

  Then VisitKey(const WalkedKey& key) override {
    End();
    if (key.depth == 0) return Then::kGoOn;
    isComponent_ = key.depth == 1 && Parse(key.path);
    return isComponent_ ? Then::kGoOn : Then::kSkip;
  }
  Then VisitValue(const WalkedKey&, const WalkedValue& value) override {
    if (!isComponent_ || !value.isSet) return Then::kGoOn;
    const unsigned char* bytes = static_cast<const unsigned char*>(value.data);
    if (value.type == tamu::registry::kValueTypeInteger && std::strcmp(value.name, kVersion) == 0) {
      if (!hasVersion_) {
        current_.version = 0;
        for (unsigned int i = 4; i > 0; --i)
          current_.version = current_.version << 8 | bytes[i - 1];
      }
      hasVersion_ = true;
    }
    if (value.type == kBytesType && std::strcmp(value.name, kInterfaces) == 0) {
      for (unsigned int at = 0; at + kGuidBytes <= value.size; at += kGuidBytes) {
        offers_ = offers_ || std::memcmp(bytes + at, wanted_, kGuidBytes) == 0;
      }
    }
    return Then::kGoOn;
  }
  // Takes the last component in.
  void End() {
    if (isComponent_ && offers_) Insert();
    isComponent_ = offers_ = hasVersion_ = false;
    current_.version = 0;
  }
  unsigned int count() const { return count_; }

 private:
  // "{1FBF55FC-0F15-45CC-8F3F-DE86A5640CB5}"; a key of another name is no component.
  bool Parse(const char* name) {
    static constexpr char kPattern[] = "{00000000-0000-0000-0000-000000000000}";
    unsigned char bytes[kGuidBytes] = {};
    unsigned int digits = 0;
    for (const char* at = kPattern; *at != '\0'; ++at, ++name) {
      const bool isDigit = *name >= '0' && *name <= '9';
      if (*at != '0') {
        if (*name != *at) return false;
        continue;
      }
      if (!isDigit && (*name < 'A' || *name > 'F')) return false;
      const int digit = isDigit ? *name - '0' : *name - 'A' + 10;
      unsigned char& byte = bytes[digits++ / 2];
      byte = static_cast<unsigned char>(byte << 4 | digit);
    }
    current_.clsid = GuidOf(bytes);
    return *name == '\0';
  }
  // The keys come in the order of their names: of one version the later ones stay behind.
  void Insert() {
    ++count_;
    unsigned int place = kept_;
    while (place > 0 && found_[place - 1].version < current_.version) --place;
    if (place == room_) return;
    if (kept_ < room_) ++kept_;
    for (unsigned int i = kept_ - 1; i > place; --i) found_[i] = found_[i - 1];
    found_[place] = current_;
  }

  unsigned char wanted_[kGuidBytes];
  Found* found_;
  unsigned int room_;
  unsigned int kept_ = 0;
  unsigned int count_ = 0;
  Found current_ = {};
  bool isComponent_ = false;
  bool offers_ = false;
  bool hasVersion_ = false;  // the newest value of the name comes first
};

}  // namespace

unsigned int ComponentOffers::Set(const YAX_GUID_ST& clsid, const YAX_COMPONENT_OFFER_ST& offer) {
  if (offer.interfaceCount > kYAXInterfaceMax || offer.buildIdSize > kYAXBuildIdMax) {
    return yax_framework::kBadArgument;
  }
  PCMutexGuard guard(lock_);
  const ComponentKeyPath path(names_, clsid);
  const unsigned int result = AsOneChange(registry_, [&]() -> unsigned int {
    const TopKey key(registry_, path.text, TopKey::Missing::kFail);
    if (!key.IsOpen()) return yax_framework::kRegistryFailed;
    return WriteOffer(OfferValues(registry_, key.Handle()), offer);
  });
  if (result == yax_framework::kOk) registry_.Flush();
  return result;
}

unsigned int ComponentOffers::Get(const YAX_GUID_ST& clsid, YAX_COMPONENT_OFFER_ST* offer) {
  *offer = {};
  PCMutexGuard guard(lock_);
  const ComponentKeyPath path(names_, clsid);
  const TopKey key(registry_, path.text, TopKey::Missing::kFail);
  if (!key.IsOpen()) return yax_framework::kRegistryFailed;
  return ReadOffer(OfferValues(registry_, key.Handle()), offer);
}

unsigned int ComponentOffers::Find(const YAX_GUID_ST& iid, YAX_GUID_ST* clsids, unsigned int room,
                                   unsigned int* count) {
  *count = 0;
  Search::Found* found = room != 0 ? new (std::nothrow) Search::Found[room] : nullptr;
  if (room != 0 && found == nullptr) return yax_framework::kNoMemory;
  Search search(iid, found, room);
  unsigned int result = yax_framework::kOk;
  {
    PCMutexGuard guard(lock_);
    const TopKey top(registry_, RegistryRecords::kComponentsKey, TopKey::Missing::kFail);
    if (top.IsOpen()) {
      result = StatusOf(registry_.Walk(top.Handle(), kItself, search));
    } else if (!top.IsMissing()) {
      result = yax_framework::kRegistryFailed;
    }
  }
  search.End();
  if (result == yax_framework::kOk) {
    *count = search.count();
    for (unsigned int i = 0; i < std::min(room, *count); ++i) clsids[i] = found[i].clsid;
  }
  delete[] found;
  return result;
}
