// What is done with each piece of a document while it is parsed.
#pragma once

#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "tools/yaxreg/content/ContentJsonReader.h"
#include "tools/yaxreg/content/UserNames.h"
#include "tools/yaxreg/content/ValueFields.h"

namespace yaxreg {

// Takes the parser's events one after the other. Nothing but the key at hand is kept besides those
// that are complete, and whatever does not belong into a document ends the parsing at once, so that
// it does not matter how deep a document is.
class ContentJsonHandler : public nlohmann::json_sax<nlohmann::json> {
 public:
  // An owner's name must be one of `users`, if they are told.
  explicit ContentJsonHandler(const UserNames* users = nullptr) : users_(users) {}

  // Hands the keys out, in the order of the document.
  std::vector<KeyUpdate> TakeKeys() { return std::move(keys_); }
  // Why parsing ended, with the position. Empty when the text is no JSON, from errorByte() on
  // (counted from 1).
  const std::string& reason() const { return reason_; }
  size_t errorByte() const { return errorByte_; }

  bool null() override;
  bool boolean(bool flag) override;
  bool number_integer(number_integer_t number) override;
  bool number_unsigned(number_unsigned_t number) override;
  bool number_float(number_float_t number, const string_t& digits) override;
  bool string(string_t& text) override;
  bool binary(binary_t& bytes) override;
  bool start_object(size_t elements) override;
  bool key(string_t& name) override;
  bool end_object() override;
  bool start_array(size_t elements) override;
  bool end_array() override;
  bool parse_error(size_t position, const std::string& token,
                   const nlohmann::json::exception& error) override;

 private:
  enum class Place { kOutside, kDocument, kKeys, kKey, kValues, kValue, kBytes };
  enum class Field {
    kNone,
    kFormat,
    kVersion,
    kKeys,
    kPath,
    kMissing,
    kOwner,
    kRights,
    kWatch,
    kDefault,
    kValues,
    kName,
    kType,
    kSet,
    kSize,
    kNumber,
    kText,
    kHex,
    kPathHex
  };
  // What a field is called and takes.
  struct FieldEntry {
    Place place;
    const char* name;
    Field field;
    const char* kind;
  };
  // An object or a list that the parser is in.
  struct Frame {
    Place place = Place::kOutside;
    const FieldEntry* field = nullptr;  // at hand
    unsigned int seen = 0;              // bits of the fields that it had so far
  };
  static const FieldEntry kFields[];

  Field AtHand() const;
  bool Enter(Place place);
  void Leave();
  bool FinishKey();
  bool FinishValue();

  // A negative one comes as its eight bytes, which no field with a limit takes.
  bool TakeNumber(unsigned long long number);
  bool TakeDigits(const std::string& digits);
  bool TakeBytes(const std::string& digits);
  bool TakePath(const std::string& path);
  bool TakeName(const std::string& name);
  bool TakeRights(const std::string& text);
  bool TakeOwner(const std::string& text);
  // Keeps a number where at most `limit` is possible.
  template <typename T>
  bool Keep(unsigned long long number, unsigned long long limit, T* target);

  // "keys[3].values[2].type"
  std::string Position() const;
  // Keeps the reason and answers false.
  bool Fail(const std::string& why);
  // What is there is not what the field takes.
  bool FailWithKind();

  const UserNames* users_;
  std::vector<Frame> frames_ = {Frame()};
  std::vector<KeyUpdate> keys_;
  KeyUpdate key_;
  ValueFields value_;
  std::string reason_;
  size_t errorByte_ = 0;
};

}  // namespace yaxreg
