// A run of random operations with and without handles, on a registry and on a model of it: every
// answer must agree, and after each batch the file, while handles are open, must be what operations
// without handles leave.
#pragma once

#include <functional>

#include "tests/registry/HandlesModelOperations.h"
#include "tests/registry/TreeText.h"

namespace tamu::registry {

class HandlesModelRun : private HandlesModelOperations {
 public:
  explicit HandlesModelRun(ModelInput input) : HandlesModelOperations(std::move(input)) {}

  // So many batches; ends early at the first operation that is answered differently, or when
  // `goesOn` answers false.
  void Run(unsigned int batches, unsigned int operations, const std::function<bool()>& goesOn) {
    StartOver();
    for (unsigned int batch = 0; batch < batches && MayGoOn(goesOn); ++batch) {
      if (!HasRoom()) StartOver();
      for (unsigned int i = 0; i < operations && MayGoOn(goesOn); ++i) DoOne();
      if (in_.OneIn(4)) OpenAnew();
      CheckFile();
    }
  }

 private:
  static bool MayGoOn(const std::function<bool()>& goesOn) {
    return goesOn() && !::testing::Test::HasFailure();
  }

  void OpenAnew() {
    if (registry_ != nullptr && in_.OneIn(2)) {
      registry_->Finalize();
    } else {
      registry_.reset();
      registry_ = std::make_unique<Registry>(path_.c_str(), kAdmin);
    }
    ASSERT_EQ(status::kOk, registry_->Initialize());
    handles_->Reopen();
  }

  // With a new file; the backups are kept.
  void StartOver() {
    registry_.reset();
    std::filesystem::remove(path_);
    model_ = std::make_unique<ModelRegistry>();
    handles_ = std::make_unique<ModelHandles>(model_.get());
    OpenAnew();
  }

  // ---- the file, which handles may be open on

  // "key node 0x100: counts 3 values, has 2" without the node; of other findings all.
  std::vector<std::string> Findings() const {
    std::vector<std::string> findings;
    for (const std::string& finding : CheckStructure(path_)) {
      const size_t counts = finding.find("counts ");
      findings.push_back(counts != std::string::npos ? finding.substr(counts) : finding);
    }
    std::sort(findings.begin(), findings.end());
    return findings;
  }

  // Deleting a value through a handle leaves the count in the file as it was, unless it was the
  // newest. Nothing else may be wrong with the file.
  void CheckFile() {
    EXPECT_EQ(Findings(), model_->WrongCounts());
    EXPECT_EQ(Describe(DecodeTree(path_)), Describe(model_->Tree()));
    const SlotCounts counts = CountSlots(path_);
    const ModelCounts expected = model_->Counts();
    const ModelCounts lost = handles_->Lost();
    EXPECT_EQ(counts.strings.reachable, expected.strings);
    EXPECT_EQ(counts.strings.used, expected.strings + lost.strings + model_->lostStringNodes());
    EXPECT_EQ(counts.keys.reachable, expected.keys);
    EXPECT_EQ(counts.keys.used, expected.keys + lost.keys);
    EXPECT_EQ(counts.values.reachable, expected.values);
    EXPECT_EQ(counts.values.used, expected.values + lost.values);
    EXPECT_EQ(counts.blocks.reachable, expected.blocks);
    EXPECT_EQ(counts.blocks.used, expected.blocks + lost.blocks + model_->lostBlocks());
    RegistryInfo info = {};
    EXPECT_EQ(status::kOk, registry_->GetRegistryInfo(&info));
    EXPECT_EQ(info.keyCount, counts.keys.used);
    EXPECT_EQ(info.valueCount, counts.values.used);
  }
};

}  // namespace tamu::registry
