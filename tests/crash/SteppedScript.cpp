#include "tests/crash/SteppedScript.h"

namespace crash {
namespace {

constexpr unsigned int kLookOneIn = 16;  // instructions

}  // namespace

SteppedScript::SteppedScript(const Script& script, Durability durability, Verdicts* verdicts,
                             unsigned int seed)
    : expected_(script),
      durability_(durability),
      judge_(expected_, durability, verdicts),
      verdicts_(*verdicts),
      random_(seed) {}

void SteppedScript::LookEverywhere() {
  expected_.script().start.PutInto(folder_.path());
  SteppedChild child(folder_.path(), expected_.script(), durability_);
  for (unsigned int step = 0; step <= expected_.script().count() + 1; ++step) {
    unsigned int instruction = 0;
    last_ = FolderImage();
    while (child.DoInstruction()) {
      ++instruction;
      if (random_.IsOneIn(kLookOneIn)) Look(step, instruction);
    }
    instructions_.push_back(instruction);
  }
}

void SteppedScript::Kill() {
  expected_.script().start.PutInto(folder_.path());
  const unsigned int step = random_.Below(static_cast<unsigned int>(instructions_.size()));
  SteppedChild child(folder_.path(), expected_.script(), durability_);
  for (unsigned int i = 0; i < step; ++i) child.FinishStep();
  const unsigned int instruction = random_.Below(instructions_[step] + 1);
  for (unsigned int i = 0; i < instruction && child.DoInstruction(); ++i) {
  }
  child.Kill();
  judge_.LookInto(folder_.path(), step, "killed behind instruction " + std::to_string(instruction));
}

// Equal files need not be opened twice.
void SteppedScript::Look(unsigned int step, unsigned int instruction) {
  FolderImage now = FolderImage::Of(folder_.path());
  if (now.names == last_.names && now.files == last_.files) {
    ++verdicts_.states;
    return;
  }
  judge_.Look(now, step, "behind instruction " + std::to_string(instruction));
  last_ = std::move(now);
}

}  // namespace crash
