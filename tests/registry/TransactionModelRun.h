// Random transactions, ended and cancelled, nested, with handles and without. What they answer and
// the file that they leave must be what the operations that have stayed give one by one, without
// transactions, on a file as it was at the start.
#pragma once

#include <functional>

#include "tests/registry/ModelInput.h"
#include "tests/registry/ModelOperation.h"
#include "tests/support/PossibleModes.h"

namespace tamu::registry {

class TransactionModelRun {
 public:
  explicit TransactionModelRun(ModelInput input) : in_(std::move(input)) {}

  // So many rounds; ends early at a difference, or when `goesOn` answers false.
  void Run(unsigned int rounds, unsigned int transactions, const std::function<bool()>& goesOn) {
    for (unsigned int round = 0; round < rounds && MayGoOn(goesOn); ++round) {
      Start(modes_[in_.Below(static_cast<unsigned int>(modes_.size()))]);
      for (unsigned int i = 0; i < transactions && MayGoOn(goesOn); ++i) {
        DoTransaction(0);
        // Some changes of their own between, which close the handle.
        for (unsigned int n = in_.OneIn(3) ? in_.Below(3) : 0; n > 0; --n) DoOne(false);
      }
      CompareWithSingleOperations();
    }
  }

 private:
  static bool MayGoOn(const std::function<bool()>& goesOn) {
    return goesOn() && !::testing::Test::HasFailure();
  }

  void Open() {
    registry_ = std::make_unique<Registry>(path_.c_str(), kAdmin);
    RegistryOptions options;
    options.durability = durability_;
    ASSERT_EQ(status::kOk, registry_->SetOptions(options));
    ASSERT_EQ(status::kOk, registry_->Initialize());
  }

  void Start(Durability durability) {
    durability_ = durability;
    registry_.reset();
    std::remove(path_.c_str());
    Open();
    in_.ForgetPaths();
    stayed_.clear();
    handle_ = 0;
    for (const char* key : {"a", "ab", "abc", "b", "b/a", "b/a/a"}) {
      ASSERT_EQ(status::kOk, registry_->CreateKey(0, key));
      in_.AddPath(key);
    }
    ASSERT_EQ(status::kOk, registry_->BackupKey(0, "b", backup_.c_str()));
    registry_->Finalize();
    start_ = GetFile(path_);
    ASSERT_EQ(status::kOk, registry_->Initialize());
  }

  void DoTransaction(unsigned int depth) {
    const size_t stayed = stayed_.size();
    const bool isChecked = in_.OneIn(8);
    if (!IsHandleOpen() && in_.OneIn(2)) {
      ASSERT_EQ(status::kOk, registry_->OpenKey("", &handle_));
    }
    const unsigned int handle = IsHandleOpen() ? handle_ : 0;
    const std::string before = isChecked ? Seen(handle) : "";
    ASSERT_EQ(status::kOk, registry_->BeginTransaction());
    for (unsigned int n = in_.Below(8); n > 0; --n) {
      if (depth < 3 && in_.OneIn(8)) DoTransaction(depth + 1);
      DoOne(true);
    }
    const std::string inside = isChecked ? Seen(handle) : "";
    if (in_.OneIn(3)) {
      ASSERT_EQ(status::kOk, registry_->CancelTransaction());
      stayed_.resize(stayed);
      if (isChecked) {
        EXPECT_EQ(Seen(handle), before);
      }
    } else {
      ASSERT_EQ(status::kOk, registry_->EndTransaction());
      if (isChecked) {
        EXPECT_EQ(Seen(handle), inside);
      }
    }
  }

  bool IsHandleOpen() {
    unsigned char rights = 0;
    return handle_ != 0 && registry_->GetKeyPermission(handle_, "", &rights) == 0;
  }

  // All keys, as far as the handle lists them.
  std::string Seen(unsigned int handle) {
    NameList keys(3000);
    const unsigned int listed = registry_->ListKeys(handle, "", 0, 0, &keys, 0);
    EXPECT_TRUE(listed == 0 || (handle != 0 && listed == 75)) << listed;
    std::vector<std::string> paths;
    for (unsigned int i = 0; i < keys.Count(); ++i) paths.push_back(keys.GetName(i, nullptr));
    std::sort(paths.begin(), paths.end());
    std::string text;
    for (const std::string& path : paths) {
      unsigned char rights = 0;
      unsigned long long number = 0;
      EXPECT_EQ(status::kOk, registry_->GetKeyPermission(handle, path.c_str(), &rights)) << path;
      const unsigned int isSet = registry_->GetDefaultValue(handle, path.c_str(), &number);
      text += path + " " + std::to_string(rights) + " " + std::to_string(isSet) + " " +
              std::to_string(number);
      NameList names(3000);
      registry_->ListValues(handle, path.c_str(), 0, 0, &names);
      for (unsigned int i = 0; i < names.Count(); ++i) {
        const char* name = names.GetName(i, nullptr);
        ReadValue value;
        registry_->GetValue(handle, path.c_str(), name, &value);
        // A number is handed out in two widths.
        const std::string bytes = BytesOf(value);
        text += std::string(" ") + name + "=" + (value.type == 0 ? bytes.substr(0, 4) : bytes);
      }
      text += "\n";
    }
    return text;
  }

  void DoOne(bool isInTransaction) {
    ModelOperation operation;
    operation.kind = in_.Below(12);
    // How many values a key has is stored in another way when a handle that deletes one stays open.
    const bool mayHaveHandle = isInTransaction && operation.kind != 8;
    operation.isThroughHandle = mayHaveHandle && in_.OneIn(2) && IsHandleOpen();
    operation.path = in_.Path(operation.kind < 3);
    operation.name = in_.ValueName();
    operation.type = in_.Type();
    operation.data = in_.Data();
    operation.number = in_.Number();
    // A number without a size has eight bytes.
    if (operation.type == 0 && operation.data.empty()) operation.data = Little(operation.number, 8);
    operation.answer =
        Apply(*registry_, operation, operation.isThroughHandle ? handle_ : 0, backup_);
    if (operation.kind < 3 && operation.answer == 0) in_.AddPath(operation.path);
    stayed_.push_back(operation);
  }

  void CompareWithSingleOperations() {
    const std::string seen = Seen(0);
    registry_->Finalize();
    const std::string file = GetFile(path_);
    PutFile(path_, start_);
    ASSERT_EQ(status::kOk, registry_->Initialize());
    for (size_t i = 0; i < stayed_.size(); ++i) {
      const ModelOperation& operation = stayed_[i];
      unsigned int handle = 0;
      if (operation.isThroughHandle) {
        ASSERT_EQ(status::kOk, registry_->OpenKey("", &handle));
      }
      ASSERT_EQ(Apply(*registry_, operation, handle, backup_), operation.answer)
          << "operation " << i << ", kind " << operation.kind << ", handle "
          << operation.isThroughHandle << ", " << operation.path;
      if (handle != 0) {
        ASSERT_EQ(status::kOk, registry_->CloseKey(handle));
      }
    }
    handle_ = 0;
    EXPECT_EQ(Seen(0), seen);
    registry_->Finalize();
    EXPECT_TRUE(GetFile(path_) == file);
  }

  ModelInput in_;
  TempDir folder_;
  const std::string path_ = folder_ / "registry";
  const std::string backup_ = folder_ / "backup";
  const std::vector<Durability> modes_ = PossibleModes();
  Durability durability_ = Durability::kNone;
  std::unique_ptr<Registry> registry_;
  unsigned int handle_ = 0;
  std::string start_;
  std::vector<ModelOperation> stayed_;
};

}  // namespace tamu::registry
