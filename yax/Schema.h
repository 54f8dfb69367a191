// The settings of a program as a table: what there shall be, of which type, and what stands there
// at first.
//
//   const yax::Schema schema = {{"network/eth0", "mtu", 1500, 576, 9000},
//                               {"network/eth0", "name", "uplink"}};
//   const yax::Report report = yax::Apply(registry, schema);
//   if (!report.status) for (const std::string& line : report.unfit) std::puts(line.c_str());
#pragma once

#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "yax/Default.h"
#include "yax/Transaction.h"

namespace yax {

// A value that there is to be.
struct Setting {
  std::string key;                  // its path
  std::string name;                 // of the value
  Default value;                    // the first one, and the type
  std::optional<Bound> least = {};  // of a number; none: any
  std::optional<Bound> most = {};   // likewise

  // Whether a number lies in the range.
  bool Allows(const Bound& number) const {
    return (!least || *least <= number) && (!most || number <= *most);
  }
};

// All settings of a program.
using Schema = std::vector<Setting>;

// What Apply has found and done, a line each: key, value and reason.
struct [[nodiscard]] Report {
  Status status;                   // of the whole
  std::vector<std::string> made;   // were missing
  std::vector<std::string> unfit;  // have another type or are out of range
  std::vector<std::string> extra;  // values of the schema's keys that it does not know
};

// Whether a value is there and fits: YAX_OK, YAX_NOT_FOUND (also when it is not set),
// YAX_WRONG_TYPE, YAX_RANGE, or why it cannot be read.
inline Status Check(const Registry& registry, const Setting& setting) {
  const Key key = registry[setting.key];
  unsigned type = 0;
  const Status found = yax_value_exists(key.get(), setting.name.c_str(), &type);
  if (found == Status(YAX_NO_DATA)) return YAX_NOT_FOUND;
  if (!found) return found;
  if (type != setting.value.type()) {
    return yax_note_failure(key.get(), setting.name.c_str(), YAX_WRONG_TYPE, nullptr);
  }
  if (!setting.value.number()) return found;
  const Result<Bound> number = setting.value.ReadNumber(key, setting.name);
  if (!number) return number.status();
  if (setting.Allows(*number)) return found;
  return yax_note_failure(key.get(), setting.name.c_str(), YAX_RANGE, nullptr);
}

// The names of a setting: its key and its value. Paths that begin with "/" name the same key.
inline std::pair<std::string, std::string> NamesOf(const Setting& setting) {
  const bool hasSlash = setting.key.rfind('/', 0) == 0;
  return {setting.key.substr(hasSlash ? 1 : 0), setting.name};
}

// What is wrong with a schema itself, a line each, and the status of the first: YAX_RANGE for a
// first value that is outside its own range, YAX_BAD_ARGUMENT for a value that it names twice. The
// registry names the keys, and is not looked at.
inline Status CheckRows(const Registry& registry, const Schema& schema,
                        std::vector<std::string>* lines) {
  Status first;
  const auto tell = [&](const Setting& setting, unsigned failure, const char* reason) {
    if (first) {
      const Key key = registry[setting.key];
      first = yax_note_failure(key.get(), setting.name.c_str(), failure, reason);
    }
    lines->push_back(setting.key + " " + setting.name + ": " + reason);
  };
  std::set<std::pair<std::string, std::string>> names;
  for (const Setting& setting : schema) {
    const std::optional<Bound> number = setting.value.number();
    if (number && !setting.Allows(*number)) {
      tell(setting, YAX_RANGE, "the first value is outside its range");
    }
    if (!names.insert(NamesOf(setting)).second) {
      tell(setting, YAX_BAD_ARGUMENT, "the schema names it twice");
    }
  }
  return first;
}

// Values of the schema's keys that it does not know, a line each.
inline std::vector<std::string> FindExtra(const Registry& registry, const Schema& schema) {
  std::set<std::pair<std::string, std::string>> known;
  std::set<std::string> keys;
  std::vector<std::string> extra;
  for (const Setting& s : schema) known.insert(NamesOf(s));
  for (const Setting& s : schema) {
    const std::string key = NamesOf(s).first;
    if (!keys.insert(key).second) continue;
    for (const std::string_view name : registry[key].Values()) {
      if (known.count({key, std::string(name)}) == 0)
        extra.push_back(key + " " + std::string(name));
    }
  }
  return extra;
}

// Gives settings their first values, all of them or none.
inline Status Write(Registry& registry, const std::vector<const Setting*>& settings) {
  return Atomically(registry, [&]() -> Status {
    for (const Setting* setting : settings) {
      Key key = registry[setting->key];
      const Status set = setting->value.Write(key, setting->name);
      if (!set) return set;
    }
    return YAX_OK;
  });
}

// Those of the settings that are missing; what does not fit goes into the report, and the first
// of these is what has failed last.
inline std::vector<const Setting*> FindMissing(const Registry& registry,
                                               const std::vector<const Setting*>& settings,
                                               Report* report) {
  std::vector<const Setting*> missing;
  const Setting* unfit = nullptr;
  for (const Setting* setting : settings) {
    const Status fits = Check(registry, *setting);
    if (fits == Status(YAX_NOT_FOUND)) missing.push_back(setting);
    if (fits || fits == Status(YAX_NOT_FOUND)) continue;
    report->unfit.push_back(setting->key + " " + setting->name + ": " + fits.text());
    if (unfit != nullptr) continue;
    unfit = setting;
    report->status = fits;
  }
  if (unfit != nullptr) Check(registry, *unfit).Ignore();
  return missing;
}

// All settings of a schema.
inline std::vector<const Setting*> SettingsOf(const Schema& schema) {
  std::vector<const Setting*> all;
  for (const Setting& setting : schema) all.push_back(&setting);
  return all;
}

// Makes what is missing, unless something does not fit: then nothing is made, and the status is
// that of the first that does not (as is FailureText). What another program makes meanwhile stays.
// A schema whose own rows do not fit (CheckRows) is not looked for in the registry.
inline Report Apply(Registry& registry, const Schema& schema) {
  Report report;
  report.status = CheckRows(registry, schema, &report.unfit);
  if (!report.status) return report;
  report.extra = FindExtra(registry, schema);
  std::vector<const Setting*> missing = FindMissing(registry, SettingsOf(schema), &report);
  if (report.status && !missing.empty()) {
    report.status = Atomically(registry, [&]() -> Status {
      missing = FindMissing(registry, missing, &report);
      return report.status ? Write(registry, missing) : report.status;
    });
  }
  if (report.status) {
    for (const Setting* setting : missing) {
      report.made.push_back(setting->key + " " + setting->name);
    }
  }
  return report;
}

// Gives every setting its first value: a factory reset.
inline Status Reset(Registry& registry, const Schema& schema) {
  std::vector<std::string> unfit;
  const Status fits = CheckRows(registry, schema, &unfit);
  return fits ? Write(registry, SettingsOf(schema)) : fits;
}

}  // namespace yax
