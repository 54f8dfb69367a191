// The settings of a program as a table: what there shall be, of which type, and what stands there
// at first.
//
//   const yax::Schema schema = {{"network/eth0", "mtu", 1500, 576, 9000},
//                               {"network/eth0", "name", "uplink"}};
//   const yax::Report report = yax::Apply(registry, schema);
//   if (!report.status) for (const std::string& line : report.unfit) std::puts(line.c_str());
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "yax/Transaction.h"

namespace yax {

// A value of one of the stored types.
class Default {
 public:
  // A truth value, an integer or an enumeration.
  template <class T,
            std::enable_if_t<std::is_integral<T>::value || std::is_enum<T>::value, int> = 0>
  Default(T number) : type_(YAX_INTEGER), number_(static_cast<std::int64_t>(number)) {}
  Default(double real) : type_(YAX_REAL), real_(real) {}
  Default(const char* text) : type_(YAX_TEXT), text_(text) {}
  Default(std::string text) : type_(YAX_TEXT), text_(std::move(text)) {}
  Default(Bytes bytes) : type_(YAX_BYTES), bytes_(std::move(bytes)) {}

  // Its stored type: YAX_INTEGER, YAX_REAL, YAX_TEXT or YAX_BYTES.
  unsigned type() const { return type_; }
  // Sets the value of that name to it.
  Status Write(Key& key, const std::string& name) const {
    if (type_ == YAX_INTEGER) return key.Set(name, number_);
    if (type_ == YAX_REAL) return key.Set(name, real_);
    return type_ == YAX_TEXT ? key.Set(name, text_) : key.Set(name, bytes_);
  }

 private:
  unsigned type_;
  std::int64_t number_ = 0;
  double real_ = 0;
  std::string text_;
  Bytes bytes_;
};

// An end of a range: a number of either kind.
class Bound {
 public:
  // An integer, a truth value or an enumeration.
  template <class T,
            std::enable_if_t<std::is_integral<T>::value || std::is_enum<T>::value, int> = 0>
  Bound(T number) : whole_(static_cast<std::int64_t>(number)), real_(static_cast<double>(whole_)) {}
  // A real number, which integers are compared with as such.
  Bound(double real) : isWhole_(false), real_(real) {}

  // Whether a number is at most the bound.
  bool IsAbove(std::int64_t number) const {
    return isWhole_ ? number <= whole_ : IsAbove(static_cast<double>(number));
  }
  // The same of a real one.
  bool IsAbove(double number) const { return number <= real_; }
  // Whether a number is at least the bound.
  bool IsBelow(std::int64_t number) const {
    return isWhole_ ? number >= whole_ : IsBelow(static_cast<double>(number));
  }
  // The same of a real one.
  bool IsBelow(double number) const { return number >= real_; }

 private:
  bool isWhole_ = true;
  std::int64_t whole_ = 0;
  double real_;
};

// A value that there is to be.
struct Setting {
  std::string key;                  // its path
  std::string name;                 // of the value
  Default value;                    // the first one, and the type
  std::optional<Bound> least = {};  // of a number; none: any
  std::optional<Bound> most = {};   // likewise

  // Whether a number lies in the range.
  template <class Number>
  bool Allows(Number number) const {
    return (!least || least->IsBelow(number)) && (!most || most->IsAbove(number));
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

// Whether a number is there and in its range: YAX_OK, YAX_RANGE, or why it cannot be read.
template <class Number>
Status CheckRange(const Key& key, const Setting& setting) {
  const Result<Number> number = key.Get<Number>(setting.name);
  if (!number) return number.status();
  return setting.Allows(*number) ? Status() : Status(YAX_RANGE);
}

// Whether a value is there and fits: YAX_OK, YAX_NOT_FOUND (also when it is not set),
// YAX_WRONG_TYPE, YAX_RANGE, or why it cannot be read.
inline Status Check(const Registry& registry, const Setting& setting) {
  const Key key = registry[setting.key];
  unsigned type = 0;
  const Status found = yax_value_exists(key.get(), setting.name.c_str(), &type);
  if (found == Status(YAX_NO_DATA)) return YAX_NOT_FOUND;
  if (!found) return found;
  if (type != setting.value.type()) return YAX_WRONG_TYPE;
  if (type == YAX_INTEGER) return CheckRange<std::int64_t>(key, setting);
  return type == YAX_REAL ? CheckRange<double>(key, setting) : found;
}

// Values of the schema's keys that it does not know, a line each.
inline std::vector<std::string> FindExtra(const Registry& registry, const Schema& schema) {
  std::set<std::string> known;
  std::set<std::string> keys;
  std::vector<std::string> extra;
  for (const Setting& s : schema) known.insert(s.key + " " + s.name);
  for (const Setting& s : schema) {
    if (!keys.insert(s.key).second) continue;
    for (const std::string_view name : registry[s.key].Values()) {
      std::string line = s.key + " " + std::string(name);
      if (known.count(line) == 0) extra.push_back(std::move(line));
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

// Those of the settings that are missing; what does not fit goes into the report.
inline std::vector<const Setting*> FindMissing(const Registry& registry,
                                               const std::vector<const Setting*>& settings,
                                               Report* report) {
  std::vector<const Setting*> missing;
  for (const Setting* setting : settings) {
    const Status fits = Check(registry, *setting);
    if (fits == Status(YAX_NOT_FOUND)) missing.push_back(setting);
    if (fits || fits == Status(YAX_NOT_FOUND)) continue;
    if (report->status) report->status = fits;
    report->unfit.push_back(setting->key + " " + setting->name + ": " + fits.text());
  }
  return missing;
}

// All settings of a schema.
inline std::vector<const Setting*> SettingsOf(const Schema& schema) {
  std::vector<const Setting*> all;
  for (const Setting& setting : schema) all.push_back(&setting);
  return all;
}

// Makes what is missing, unless something does not fit: then nothing is made, and the status is
// that of the first that does not. What another program makes meanwhile stays.
inline Report Apply(Registry& registry, const Schema& schema) {
  Report report;
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
  report.extra = FindExtra(registry, schema);
  return report;
}

// Gives every setting its first value: a factory reset.
inline Status Reset(Registry& registry, const Schema& schema) {
  return Write(registry, SettingsOf(schema));
}

}  // namespace yax
