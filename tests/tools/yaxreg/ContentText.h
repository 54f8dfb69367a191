// Contents and findings as plain text, for comparisons.
#pragma once

#include <cstdio>
#include <string>

#include "tools/yaxreg/image/Content.h"
#include "tools/yaxreg/image/Finding.h"
#include "tools/yaxreg/image/RegistryImage.h"
#include "tools/yaxreg/text/ByteText.h"

// A line for each key, "/a/b OWNER:PERMISSION" in hexadecimal digits with what else it has, and one
// for each value, "  NAME TYPE SIZE" with its number or its data.
inline std::string ContentText(const yaxreg::Content& content) {
  std::string text;
  for (size_t i = 0; i < content.keys.size(); ++i) {
    const yaxreg::ContentKey& key = content.keys[i];
    char rights[32];
    std::snprintf(rights, sizeof rights, " %x:%02x", key.owner, key.permission);
    text += "/" + content.PathOf(i) + rights;
    if (key.hasDefault) text += " default " + std::to_string(key.defaultValue);
    if (key.watch != 0) text += " watch " + std::to_string(key.watch);
    if (key.isMadeUp) text += " made up";
    text += '\n';
    for (const yaxreg::ContentValue& value : key.values) {
      text += "  " + value.name + ' ' + std::to_string(value.type) + ' ' +
              std::to_string(value.size) + ' ' +
              (value.isNumber() ? std::to_string(value.number) : yaxreg::Shown(value.data)) +
              (value.isSet ? "\n" : " unset\n");
    }
  }
  return text;
}

// "SEVERITY: TEXT", or "SEVERITY: /PATH: TEXT", a line each.
inline std::string FindingsText(const yaxreg::RegistryImage& image) {
  std::string text;
  for (const yaxreg::Finding& finding : image.findings()) {
    const char* const names[] = {"note", "damage", "loss"};
    text += names[static_cast<unsigned>(finding.severity)];
    text += ": ";
    if (finding.hasPath) text += "/" + finding.path + ": ";
    text += finding.text + '\n';
  }
  return text;
}
