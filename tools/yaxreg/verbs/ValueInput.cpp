#include "tools/yaxreg/verbs/ValueInput.h"

#include <istream>

#include "registry/base/Value.h"
#include "tools/yaxreg/content/PathPattern.h"
#include "tools/yaxreg/image/FileBytes.h"
#include "tools/yaxreg/text/Numbers.h"

namespace yaxreg {

namespace {

constexpr unsigned int kBytesType = 2;  // of data that nothing else is told about
constexpr size_t kMaxData = tamu::registry::kValueDataMax;
constexpr char kTooLong[] = "a value holds at most 1024 bytes";

bool FailUsage(Invocation& call, const std::string& reason, ExitCode* code) {
  *code = call.Fail(kUsage, "", "", reason);
  return false;
}

// The one option that tells the data; empty when there is none or several, which is a failure.
std::string SourceOf(Invocation& call, ExitCode* code) {
  std::string source;
  for (const char* const name : {"--int", "--string", "--hex", "--file", "--unset"}) {
    if (!call.Has(name)) continue;
    if (!source.empty()) {
      FailUsage(call, source + " and " + name + " cannot be given together", code);
      return "";
    }
    source = name;
  }
  if (source.empty()) FailUsage(call, "one of --int, --string, --hex and --file is needed", code);
  return source;
}

bool TakeType(Invocation& call, const std::string& source, unsigned int* type, ExitCode* code) {
  const bool mayBeNumber = source == "--int" || source == "--unset";
  *type = mayBeNumber ? 0 : kBytesType;
  if (source == "--string") *type = tamu::registry::kValueTypeString;
  if (!call.Has("--type")) return true;
  unsigned long long number = 0;
  if (!ParseNumberUpTo(call.Text("--type"), tamu::registry::kValueTypeMax, &number)) {
    return FailUsage(call, "--type: " + Shown(call.Text("--type")) + " is no type from 0 to 5",
                     code);
  }
  if (number == 0 && !mayBeNumber) return FailUsage(call, "type 0 is for --int alone", code);
  if (number != 0 && source == "--int") return FailUsage(call, "--int is of type 0", code);
  *type = static_cast<unsigned int>(number);
  return true;
}

bool TakeFile(Invocation& call, std::string* data, ExitCode* code) {
  const std::string file = call.Text("--file");
  if (file == "-") {
    data->resize(kMaxData + 1);
    call.in.read(&(*data)[0], static_cast<std::streamsize>(data->size()));
    data->resize(static_cast<size_t>(call.in.gcount()));
    if (!call.in.bad()) return true;
    *code = call.Fail(kFailed, "", "", "the standard input cannot be read");
    return false;
  }
  const FileResult read = ReadWholeFile(file, kMaxData, data);
  if (read.isDone()) return true;
  *code = read.tooLarge ? call.Fail(kUsage, file, "", kTooLong)
                        : call.Fail(kFailed, file, "", read.reason);
  return false;
}

bool TakeData(Invocation& call, const std::string& source, ValueInput* input, ExitCode* code) {
  const std::string text = call.Text(source);
  if (source == "--int") {
    if (ParseNumber(text, &input->number)) return true;
    return FailUsage(call, "--int: " + Shown(text) + " is no whole number of 64 bits", code);
  }
  if (source == "--file") return TakeFile(call, &input->data, code);
  if (source == "--hex") {
    if (FromHex(text, &input->data)) return true;
    return FailUsage(call, "--hex: " + Shown(text) + " is no sequence of pairs of digits", code);
  }
  if (source == "--string") input->data = text + '\0';
  input->isSet = source != "--unset";
  return true;
}

}  // namespace

bool ValueInput::IsIn(const ContentValue& value) const {
  if (value.type != type || value.isSet != isSet) return false;
  if (!isSet) return true;
  return isNumber() ? value.number == number : value.data == data;
}

bool TakeValueName(Invocation& call, std::string* name, ExitCode* code) {
  *name = call.Text("NAME");
  if (!call.Has("NAME") && !SplitPlace(call.Text("PATH"), &call.given["PATH"], name)) {
    return FailUsage(call, "the name of the value is missing: PATH NAME, or PATH:NAME", code);
  }
  if (!name->empty() && name->size() <= tamu::registry::kValueNameMax) return true;
  return FailUsage(call, "names of values have 1 to 31 bytes, not " + std::to_string(name->size()),
                   code);
}

bool TakeValueInput(Invocation& call, ValueInput* input, ExitCode* code) {
  const std::string source = SourceOf(call, code);
  if (source.empty()) return false;
  if (!TakeType(call, source, &input->type, code)) return false;
  if (!TakeData(call, source, input, code)) return false;
  if (input->data.size() <= kMaxData) return true;
  return FailUsage(call, kTooLong, code);
}

}  // namespace yaxreg
