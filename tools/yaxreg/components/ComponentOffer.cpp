#include "tools/yaxreg/components/ComponentOffer.h"

#include "framework/elf/GuidBytes.h"
#include "registry/base/Value.h"
#include "tools/yaxreg/text/ByteText.h"

namespace yaxreg {

using yax_elf::kGuidBytes;

namespace {

constexpr char kVersion[] = "Version";
constexpr char kBinarySize[] = "BinarySize";
constexpr char kInterfaces[] = "Interfaces";
constexpr char kBuildId[] = "BuildId";
constexpr unsigned int kBytesType = 2;

unsigned long long NumberOf(const ContentKey& key, const char* name) {
  const ContentValue* value = key.FindValue(name);
  const bool isThere =
      value != nullptr && value->type == tamu::registry::kValueTypeInteger && value->isSet;
  return isThere ? value->number : 0;
}

// At most `size` bytes.
std::string BytesOf(const ContentKey& key, const char* name, size_t size) {
  const ContentValue* value = key.FindValue(name);
  const bool isThere = value != nullptr && value->type == kBytesType && value->isSet;
  return isThere ? value->data.substr(0, size) : "";
}

}  // namespace

ContentValue NumberValue(const char* name, unsigned long long number) {
  ContentValue value;
  value.name = name;
  value.isSet = true;
  value.size = ContentValue::kNumberSize;
  value.number = number;
  return value;
}

ContentValue DataValue(const char* name, unsigned int type, const std::string& data) {
  ContentValue value;
  value.name = name;
  value.type = type;
  value.isSet = true;
  value.data = data;
  value.size = static_cast<unsigned int>(data.size());
  return value;
}

bool ComponentOffer::Offers(const std::string& interface) const {
  for (size_t at = 0; at + kGuidBytes <= interfaces.size(); at += kGuidBytes) {
    if (interfaces.compare(at, kGuidBytes, interface) == 0) return true;
  }
  return false;
}

std::vector<std::string> ComponentOffer::InterfaceNames() const {
  std::vector<std::string> names;
  for (size_t at = 0; at + kGuidBytes <= interfaces.size(); at += kGuidBytes) {
    std::string name = "{";
    for (size_t i = 0; i < kGuidBytes; ++i) {
      if (i == 4 || i == 6 || i == 8 || i == 10) name += '-';
      for (const char c : ToHex(interfaces.substr(at + i, 1))) {
        name += c >= 'a' && c <= 'f' ? static_cast<char>(c - 'a' + 'A') : c;
      }
    }
    names.push_back(name + "}");
  }
  return names;
}

const std::vector<std::string>& OfferValueNames() {
  static const std::vector<std::string> kNames = {kVersion, kBinarySize, kInterfaces, kBuildId};
  return kNames;
}

ComponentOffer OfferOf(const ContentKey& key) {
  ComponentOffer offer;
  offer.version = static_cast<unsigned int>(NumberOf(key, kVersion));
  offer.binarySize = NumberOf(key, kBinarySize);
  offer.interfaces = BytesOf(key, kInterfaces, tamu::registry::kValueDataMax);
  offer.buildId = BytesOf(key, kBuildId, yax_elf::ComponentNotes::kMaxBuildId);
  return offer;
}

std::vector<ContentValue> ValuesOf(const ComponentOffer& offer) {
  std::vector<ContentValue> values;
  const auto number = [&](const char* name, unsigned long long stored) {
    if (stored != 0) values.push_back(NumberValue(name, stored));
  };
  const auto bytes = [&](const char* name, const std::string& stored) {
    if (!stored.empty()) values.push_back(DataValue(name, kBytesType, stored));
  };
  number(kVersion, offer.version);
  number(kBinarySize, offer.binarySize);
  bytes(kInterfaces, offer.interfaces);
  bytes(kBuildId, offer.buildId);
  return values;
}

ComponentOffer OfferOf(const yax_elf::ComponentNotes& notes, unsigned long long binarySize) {
  ComponentOffer offer;
  if (notes.version == 0) return offer;
  offer.version = notes.version;
  offer.binarySize = binarySize;
  offer.buildId.assign(reinterpret_cast<const char*>(notes.buildId), notes.buildIdSize);
  for (unsigned int i = 0; i < notes.interfaceCount; ++i) {
    unsigned char bytes[kGuidBytes];
    yax_elf::PutGuid(bytes, notes.interfaces[i]);
    offer.interfaces.append(reinterpret_cast<const char*>(bytes), sizeof bytes);
  }
  return offer;
}

std::string IdentifierBytes(const std::string& identifier) {
  std::string digits;
  for (const char c : identifier) {
    if (c != '{' && c != '}' && c != '-') digits += c;
  }
  std::string bytes;
  return FromHex(digits, &bytes) ? bytes : "";
}

}  // namespace yaxreg
