#include "tools/yaxreg/components/ComponentList.h"

#include <algorithm>
#include <cctype>

#include "registry/base/Value.h"

namespace yaxreg {

namespace {

// The newest value of the name if it is set and has that type; otherwise the problem is told.
const ContentValue* Usable(const ContentKey& key, const std::string& name, unsigned int type,
                           const char* kind, ComponentField* field) {
  const ContentValue* value = key.FindValue(name);
  if (value == nullptr) {
    field->problem = "no " + name;
  } else if (value->type != type) {
    field->problem = name + " is no " + kind + " (type " + std::to_string(value->type) + ")";
  } else if (!value->isSet) {
    field->problem = name + " is not set";
  }
  return field->isThere() ? value : nullptr;
}

ComponentField TextOf(const ContentKey& key, const std::string& name) {
  ComponentField field;
  const ContentValue* value = Usable(key, name, tamu::registry::kValueTypeString, "text", &field);
  if (value != nullptr) field.text = value->data.substr(0, value->data.find('\0'));
  return field;
}

ComponentField NumberOf(const ContentKey& key, const std::string& name) {
  ComponentField field;
  const ContentValue* value =
      Usable(key, name, tamu::registry::kValueTypeInteger, "number", &field);
  if (value != nullptr) field.number = value->number;
  return field;
}

Component ComponentOf(const ContentKey& key) {
  Component component;
  component.identifier = key.name;
  component.isIdentifier = IsComponentIdentifier(key.name);
  component.name = TextOf(key, "CompName");
  component.type = NumberOf(key, "Type");
  component.function = NumberOf(key, "FactoryFn");
  component.path = TextOf(key, "BinaryPath");
  component.offer = OfferOf(key);
  return component;
}

}  // namespace

bool IsComponentIdentifier(const std::string& name) {
  const std::string pattern = "{00000000-0000-0000-0000-000000000000}";
  if (name.size() != pattern.size()) return false;
  for (size_t i = 0; i < pattern.size(); ++i) {
    const char c = name[i];
    const bool isDigit = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F');
    if (pattern[i] == '0' ? !isDigit : c != pattern[i]) return false;
  }
  return true;
}

std::string IdentifierOf(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  if (!text.empty() && text.front() != '{') text = '{' + text + '}';
  return IsComponentIdentifier(text) ? text : "";
}

void ComponentList::KeepThoseWith(const std::string& interface) {
  components.erase(std::remove_if(components.begin(), components.end(),
                                  [&](const Component& one) {
                                    return !one.isIdentifier || !one.offer.Offers(interface);
                                  }),
                   components.end());
  std::stable_sort(
      components.begin(), components.end(),
      [](const Component& a, const Component& b) { return a.offer.version > b.offer.version; });
}

ComponentList ReadComponents(const Content& content) {
  ComponentList list;
  const size_t system = content.Find("YAX_SYSTEM");
  if (system != Content::kNone) {
    list.hasSystem = true;
    list.isSingleBin = NumberOf(content.keys[system], "isSingleBin");
    list.binDirectory = TextOf(content.keys[system], "BinDirectory");
  } else {
    list.isSingleBin.problem = "no isSingleBin";
    list.binDirectory.problem = "no BinDirectory";
  }
  const size_t top = content.Find("YAX_ROOT");
  if (top == Content::kNone) return list;
  const size_t end = content.EndOf(top);
  for (size_t key = top + 1; key < end; ++key) {
    if (content.keys[key].depth != content.keys[top].depth + 1) continue;
    list.components.push_back(ComponentOf(content.keys[key]));
  }
  return list;
}

}  // namespace yaxreg
