#include "tools/yaxreg/components/ComponentJson.h"

#include <nlohmann/json.hpp>

#include "tools/yaxreg/text/ByteText.h"
#include "tools/yaxreg/text/JsonText.h"

namespace yaxreg {

namespace {

using Json = nlohmann::ordered_json;

Json NumberJson(const ComponentField& field) {
  return field.isThere() ? JsonNumber(field.number) : Json();
}

Json ComponentJson(const Component& component) {
  Json json = {{"id", JsonText(component.identifier)},
               {"name", FieldJson(component.name)},
               {"type", NumberJson(component.type)},
               {"factoryFn", NumberJson(component.function)},
               {"binaryPath", FieldJson(component.path)},
               {"version", component.offer.version},
               {"interfaces", component.offer.InterfaceNames()},
               {"binarySize", JsonNumber(component.offer.binarySize)},
               {"buildId", ToHex(component.offer.buildId)},
               {"problems", Json::array()}};
  if (!component.isIdentifier) json["problems"].push_back("the key's name is no identifier");
  for (const ComponentField* field :
       {&component.name, &component.type, &component.function, &component.path}) {
    if (!field->isThere()) json["problems"].push_back(field->problem);
  }
  return json;
}

}  // namespace

nlohmann::ordered_json FieldJson(const ComponentField& field) {
  return field.isThere() ? JsonText(field.text) : Json();
}

nlohmann::ordered_json ComponentsJson(const ComponentList& list) {
  Json json = {{"system", nullptr}, {"components", Json::array()}};
  if (list.hasSystem) {
    json["system"] = {{"isSingleBin", NumberJson(list.isSingleBin)},
                      {"binDirectory", FieldJson(list.binDirectory)}};
  }
  for (const Component& component : list.components) {
    json["components"].push_back(ComponentJson(component));
  }
  return json;
}

}  // namespace yaxreg
