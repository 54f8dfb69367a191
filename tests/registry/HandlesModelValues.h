// Random operations on the values of keys, on a registry and on a model of it.
#pragma once

#include "tests/registry/HandlesModelChoices.h"

namespace tamu::registry {

class HandlesModelValues : public HandlesModelChoices {
 protected:
  using HandlesModelChoices::HandlesModelChoices;

  void ChangeOrReadValues() {
    switch (in_.Below(10)) {
      case 0:
      case 1:
      case 2:
        return CreateValue();
      case 3:
      case 4:
        return SetValue();
      case 5:
      case 6:
        return GetValue();
      case 7:
        return DeleteValue();
      case 8:
        return SetDefaultValue();
      default:
        return GetDefaultValue();
    }
  }

 private:
  void CreateValue() {
    const std::string path = ValuePath(), name = in_.ValueName();
    if (in_.OneIn(8)) {
      EXPECT_EQ(registry_->CreateValue(handle_, path.c_str(), name.c_str(), nullptr),
                handles_->CreateValue(handle_, user_, path, name, 0, nullptr))
          << Text("CreateValue unset", path, name);
      return;
    }
    const NewValue made(in_);
    NewExactValue value(made);
    EXPECT_EQ(registry_->CreateValue(handle_, path.c_str(), name.c_str(), &value),
              handles_->CreateValue(handle_, user_, path, name, made.type, &made.data))
        << Text("CreateValue", path, name);
  }

  void SetValue() {
    const std::string path = ValuePath(), name = in_.ValueName(), data = in_.Data();
    const unsigned int type = in_.Type();
    ExactValue value(type, data);
    EXPECT_EQ(registry_->SetValue(handle_, path.c_str(), name.c_str(), &value),
              handles_->SetValue(handle_, user_, path, name, type, data))
        << Text("SetValue", path, name);
  }

  // Mostly of any type; never the offset, which is another operation.
  void GetValue() {
    const std::string path = ValuePath(), name = in_.ValueName();
    const unsigned int wanted = in_.OneIn(4) ? in_.Below(kValueTypeOffset) : kValueTypeAny;
    unsigned int type = wanted;
    std::string bytes = "(none)";
    ReadValue value(wanted);
    EXPECT_EQ(registry_->GetValue(handle_, path.c_str(), name.c_str(), &value),
              handles_->GetValue(handle_, user_, path, name, &type, &bytes))
        << Text("GetValue", path, name);
    EXPECT_EQ(value.type, type) << Text("GetValue", path, name);
    EXPECT_EQ(BytesOf(value), bytes) << Text("GetValue", path, name);
  }

  void DeleteValue() {
    const std::string path = ValuePath(), name = in_.ValueName();
    EXPECT_EQ(registry_->DeleteValue(handle_, path.c_str(), name.c_str()),
              handles_->DeleteValue(handle_, user_, path, name))
        << Text("DeleteValue", path, name);
  }

  void SetDefaultValue() {
    const std::string path = in_.Path(false);
    const unsigned long long number = in_.Number();
    EXPECT_EQ(registry_->SetDefaultValue(handle_, path.c_str(), number),
              handles_->SetDefaultValue(handle_, user_, path, number))
        << Text("SetDefaultValue", path);
  }

  void GetDefaultValue() {
    const std::string path = in_.Path(false);
    unsigned long long number = 1, expectedNumber = 1;
    EXPECT_EQ(registry_->GetDefaultValue(handle_, path.c_str(), &number),
              handles_->GetDefaultValue(handle_, user_, path, &expectedNumber))
        << Text("GetDefaultValue", path);
    EXPECT_EQ(number, expectedNumber) << Text("GetDefaultValue", path);
  }
};

}  // namespace tamu::registry
