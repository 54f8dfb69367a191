// The components that a registry tells of, as the component framework reads them.
#pragma once

#include <string>
#include <vector>

#include "tools/yaxreg/components/ComponentOffer.h"
#include "tools/yaxreg/image/Content.h"

namespace yaxreg {

// One value of a component or of the system's record.
struct ComponentField {
  static constexpr size_t kMaxText = 255;  // bytes that the framework takes of a text

  std::string problem;  // "no CompName", "Type is not set", ...; empty when it can be used
  std::string text;     // of texts: up to the terminator
  unsigned long long number = 0;  // of numbers: as stored

  bool isThere() const { return problem.empty(); }
  bool isTooLong() const { return text.size() > kMaxText; }
  unsigned int word() const { return static_cast<unsigned int>(number); }  // as the framework does
};

struct Component {
  std::string identifier;     // the key's name
  bool isIdentifier = false;  // "{1FBF55FC-0F15-45CC-8F3F-DE86A5640CB5}"; no other name is found
  ComponentField name;
  ComponentField type;
  ComponentField function;
  ComponentField path;
  ComponentOffer offer;

  // In a shared object of its own; every other number stands for the running program.
  bool isBinary() const { return type.isThere() && type.word() == 1; }
};

struct ComponentList {
  bool hasSystem = false;
  ComponentField isSingleBin;
  ComponentField binDirectory;
  std::vector<Component> components;  // in the order of the keys

  // Leaves those that offer an interface, of 16 bytes: the newest version first.
  void KeepThoseWith(const std::string& interface);
  // Nothing is ever loaded.
  bool IsSingleBinary() const { return isSingleBin.isThere() && isSingleBin.word() == 1; }
};

// "{1FBF55FC-0F15-45CC-8F3F-DE86A5640CB5}": in capitals and braces.
bool IsComponentIdentifier(const std::string& name);

// An identifier that a user writes, in capitals and braces, as the framework spells it; "" when it
// is none.
std::string IdentifierOf(std::string text);

// Empty where the registry tells of none.
ComponentList ReadComponents(const Content& content);

}  // namespace yaxreg
