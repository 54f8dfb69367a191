#include "tools/yaxreg/content/ContentJsonHandler.h"

#include "registry/base/UserId.h"
#include "registry/base/Value.h"
#include "tools/yaxreg/text/ByteText.h"
#include "tools/yaxreg/text/Numbers.h"
#include "tools/yaxreg/text/RightsText.h"

namespace yaxreg {

namespace {

constexpr char kWholeNumber[] = "a whole number";
constexpr char kText[] = "a text";
constexpr char kTextOrBytes[] = "a text or {\"hex\": DIGITS}";
constexpr char kFormatName[] = "yax-registry";
constexpr unsigned int kFormatVersion = 1;
constexpr unsigned int kMaxWatch = 0x3F;
constexpr unsigned int kMaxRights = 0xFF;
constexpr unsigned int kMaxOwner = 0xFFFFFFFF;
constexpr size_t kShownName = 40;  // bytes of an unknown name in a message

// Written as a number, however large.
bool IsMadeOfDigits(const std::string& text) {
  size_t begin = text[0] == '+' || text[0] == '-' ? 1 : 0;
  const bool isHex = text.compare(begin, 2, "0x") == 0 || text.compare(begin, 2, "0X") == 0;
  if (isHex) begin += 2;
  const char* const digits = isHex ? "0123456789abcdefABCDEF" : "0123456789";
  return begin < text.size() && text.find_first_not_of(digits, begin) == std::string::npos;
}

}  // namespace

const ContentJsonHandler::FieldEntry ContentJsonHandler::kFields[] = {
    {Place::kDocument, "format", Field::kFormat, kText},
    {Place::kDocument, "version", Field::kVersion, kWholeNumber},
    {Place::kDocument, "keys", Field::kKeys, "a list"},
    {Place::kKey, "path", Field::kPath, kTextOrBytes},
    {Place::kKey, "missing", Field::kMissing, "true or false"},
    {Place::kKey, "owner", Field::kOwner, "a whole number or a user's name"},
    {Place::kKey, "rights", Field::kRights, "a whole number or letters such as rwcd:r"},
    {Place::kKey, "watch", Field::kWatch, kWholeNumber},
    {Place::kKey, "default", Field::kDefault, "a whole number or null"},
    {Place::kKey, "values", Field::kValues, "a list"},
    {Place::kValue, "name", Field::kName, kTextOrBytes},
    {Place::kValue, "type", Field::kType, kWholeNumber},
    {Place::kValue, "set", Field::kSet, "true or false"},
    {Place::kValue, "size", Field::kSize, kWholeNumber},
    {Place::kValue, "number", Field::kNumber, kWholeNumber},
    {Place::kValue, "text", Field::kText, kText},
    {Place::kValue, "hex", Field::kHex, kText},
    {Place::kBytes, "hex", Field::kPathHex, kText},
};

ContentJsonHandler::Field ContentJsonHandler::AtHand() const {
  const FieldEntry* const entry = frames_.back().field;
  return entry != nullptr ? entry->field : Field::kNone;
}

bool ContentJsonHandler::null() {
  if (AtHand() != Field::kDefault) return FailWithKind();
  key_.tellsDefault = true;
  return true;
}

bool ContentJsonHandler::boolean(bool flag) {
  if (AtHand() == Field::kMissing) {
    key_.isMissing = flag;
  } else if (AtHand() == Field::kSet) {
    value_.isSet = flag;
  } else {
    return FailWithKind();
  }
  return true;
}

bool ContentJsonHandler::number_integer(number_integer_t number) {
  return TakeNumber(static_cast<unsigned long long>(number));
}

bool ContentJsonHandler::number_unsigned(number_unsigned_t number) {
  return TakeNumber(number);
}

// Also for whole numbers that 64 bits cannot hold.
bool ContentJsonHandler::number_float(number_float_t, const string_t&) {
  return FailWithKind();
}

bool ContentJsonHandler::string(string_t& text) {
  switch (AtHand()) {
    case Field::kFormat:
      return text == kFormatName || Fail(std::string("must be ") + kFormatName);
    case Field::kPath:
      return TakePath(text);
    case Field::kName:
      return TakeName(text);
    case Field::kRights:
      return TakeRights(text);
    case Field::kOwner:
      return TakeOwner(text);
    case Field::kText:
      value_.text = text;
      return true;
    case Field::kHex:
    case Field::kPathHex:
      return TakeBytes(text);
    default:
      return TakeDigits(text);
  }
}

bool ContentJsonHandler::binary(binary_t&) {
  return FailWithKind();  // JSON has none
}

bool ContentJsonHandler::start_object(size_t) {
  switch (frames_.back().place) {
    case Place::kOutside:
      return Enter(Place::kDocument);
    case Place::kKeys:
      key_ = KeyUpdate();
      return Enter(Place::kKey);
    case Place::kValues:
      value_ = ValueFields();
      return Enter(Place::kValue);
    default:
      break;
  }
  const Field field = AtHand();
  return field == Field::kPath || field == Field::kName ? Enter(Place::kBytes) : FailWithKind();
}

bool ContentJsonHandler::key(string_t& name) {
  Frame& frame = frames_.back();
  frame.field = nullptr;
  unsigned int bit = 1;
  for (const FieldEntry& entry : kFields) {
    if (entry.place == frame.place && name == entry.name) {
      frame.field = &entry;
      if ((frame.seen & bit) != 0) return Fail("is there twice");
      frame.seen |= bit;
      return true;
    }
    bit <<= 1;
  }
  return Fail("a field \"" + Shown(name.substr(0, kShownName)) + "\" is not known");
}

bool ContentJsonHandler::end_object() {
  Frame& frame = frames_.back();
  frame.field = nullptr;
  if (frame.place == Place::kKey && !FinishKey()) return false;
  if (frame.place == Place::kValue && !FinishValue()) return false;
  if (frame.place == Place::kBytes && frame.seen == 0) return Fail("the field hex is left out");
  Leave();
  return true;
}

bool ContentJsonHandler::start_array(size_t) {
  if (AtHand() == Field::kKeys) return Enter(Place::kKeys);
  if (AtHand() != Field::kValues) return FailWithKind();
  key_.tellsValues = true;
  return Enter(Place::kValues);
}

bool ContentJsonHandler::end_array() {
  Leave();
  return true;
}

bool ContentJsonHandler::parse_error(size_t position, const std::string&,
                                     const nlohmann::json::exception&) {
  errorByte_ = position;
  return false;
}

bool ContentJsonHandler::Enter(Place place) {
  frames_.emplace_back();
  frames_.back().place = place;
  return true;
}

void ContentJsonHandler::Leave() {
  frames_.pop_back();
}

bool ContentJsonHandler::FinishKey() {
  bool hasPath = false;
  for (size_t i = 0; i < sizeof kFields / sizeof kFields[0]; ++i) {
    if (kFields[i].field == Field::kPath) hasPath = (frames_.back().seen >> i & 1) != 0;
  }
  if (!hasPath) return Fail("the path is left out");
  const bool tellsFields = key_.owner.has_value() || key_.rights.has_value() ||
                           key_.watch.has_value() || key_.tellsDefault || !key_.values.empty();
  if (key_.isMissing && tellsFields) return Fail("a key that is missing has only a path");
  keys_.push_back(std::move(key_));
  return true;
}

bool ContentJsonHandler::FinishValue() {
  ContentValue value;
  const std::string why = value_.MakeValue(&value);
  if (!why.empty()) return Fail(why);
  key_.values.push_back(std::move(value));
  return true;
}

bool ContentJsonHandler::TakeNumber(unsigned long long number) {
  switch (AtHand()) {
    case Field::kVersion:
      return number == kFormatVersion || Fail("must be " + std::to_string(kFormatVersion));
    case Field::kOwner:
      return Keep(number, kMaxOwner, &key_.owner);
    case Field::kRights:
      return Keep(number, kMaxRights, &key_.rights);
    case Field::kWatch:
      return Keep(number, kMaxWatch, &key_.watch);
    case Field::kDefault:
      key_.tellsDefault = true;
      key_.defaultValue = number;
      return true;
    case Field::kType:
      return Keep(number, ValueFields::kMaxType, &value_.type);
    case Field::kSize:
      return Keep(number, ValueFields::kMaxSize, &value_.size);
    case Field::kNumber:
      value_.number = number;
      return true;
    default:
      return FailWithKind();
  }
}

bool ContentJsonHandler::TakeDigits(const std::string& digits) {
  unsigned long long number = 0;
  if (!ParseNumber(digits, &number)) return FailWithKind();
  return TakeNumber(number);
}

bool ContentJsonHandler::TakeBytes(const std::string& digits) {
  std::string bytes;
  if (!FromHex(digits, &bytes)) return Fail("must be hexadecimal digits, two a byte");
  if (AtHand() == Field::kHex) {
    value_.bytes = bytes;
    return true;
  }
  const bool isPath = frames_[frames_.size() - 2].place == Place::kKey;
  return isPath ? TakePath(bytes) : TakeName(bytes);
}

bool ContentJsonHandler::TakePath(const std::string& path) {
  if (path.find('\0') != std::string::npos) return Fail("holds a zero byte");
  if (!path.empty() && path.front() == '/') return Fail("begins with a /");
  if (!path.empty() && path.back() == '/') return Fail("ends in a /");
  if (path.find("//") != std::string::npos) return Fail("has an empty component");
  key_.path = path;
  return true;
}

bool ContentJsonHandler::TakeName(const std::string& name) {
  if (name.find('\0') != std::string::npos) return Fail("holds a zero byte");
  if (name.size() > tamu::registry::kValueNameMax) {
    return Fail("has " + std::to_string(name.size()) + " bytes, " +
                std::to_string(tamu::registry::kValueNameMax) + " are possible");
  }
  value_.name = name;
  return true;
}

bool ContentJsonHandler::TakeRights(const std::string& text) {
  unsigned char rights = 0;
  if (!ParseRights(text, &rights)) return FailWithKind();
  key_.rights = rights;
  return true;
}

// A text that is no number is the name of a user.
bool ContentJsonHandler::TakeOwner(const std::string& text) {
  if (text.empty()) return FailWithKind();
  if (IsMadeOfDigits(text)) return TakeDigits(text);
  if (text.find('\0') != std::string::npos) return Fail("holds a zero byte");
  if (users_ == nullptr) {
    key_.owner = tamu::registry::UserIdOf(text.c_str());
    return true;
  }
  const unsigned int* const number = users_->NumberOf(text);
  if (number == nullptr)
    return Fail("the user " + Shown(text.substr(0, kShownName)) + " is not in the list");
  key_.owner = *number;
  return true;
}

template <typename T>
bool ContentJsonHandler::Keep(unsigned long long number, unsigned long long limit, T* target) {
  if (number > limit) return Fail("must be from 0 to " + std::to_string(limit));
  *target = static_cast<typename T::value_type>(number);
  return true;
}

std::string ContentJsonHandler::Position() const {
  std::string position;
  const auto add = [&](const std::string& part) {
    if (!position.empty()) position += '.';
    position += part;
  };
  for (size_t i = 0; i < frames_.size(); ++i) {
    const Frame& frame = frames_[i];
    const Place inner = i + 1 < frames_.size() ? frames_[i + 1].place : Place::kOutside;
    if (frame.place == Place::kKeys) add("keys[" + std::to_string(keys_.size()) + ']');
    if (frame.place == Place::kValues) add("values[" + std::to_string(key_.values.size()) + ']');
    const bool isList = inner == Place::kKeys || inner == Place::kValues;
    if (frame.field != nullptr && !isList) add(frame.field->name);
  }
  return position;
}

bool ContentJsonHandler::Fail(const std::string& why) {
  const std::string position = Position();
  reason_ = position.empty() ? why : position + ": " + why;
  return false;
}

bool ContentJsonHandler::FailWithKind() {
  const Frame& frame = frames_.back();
  return Fail(std::string("must be ") + (frame.field != nullptr ? frame.field->kind : "an object"));
}

}  // namespace yaxreg
