// The parts of a run. Everything lies in the working folder; each part closes what it has opened.
#pragma once

#include "bench/peers/Rows.h"

namespace tamu::bench {

// Until no least time has become a good deal less for a while, or so often.
struct Effort {
  unsigned int most;
  unsigned int still;  // rounds without one that is better
};

// The rows, in all columns in turn.
void MeasureRows(const DataSet& set, const Effort& effort, Results* results);
// Making everything anew.
void MeasureBuilding(const DataSet& set, unsigned int rounds, Results* results);
// Opening, one value and closing, in this process and in new ones.
void MeasureOpening(const DataSet& set, unsigned int rounds, const char* program, Results* results);
// What a new process of MeasureOpening does: prints the nanoseconds.
void OpenOnce(unsigned int column, const char* key);
// Loading all keys, which is OpenKey on the root.
void MeasureLoading(unsigned int rounds, Results* results);
// Changes that survive a power cut.
void MeasureDurable(const DataSet& set, unsigned int rounds, Results* results);
// Several threads that read together, as times of what one does.
void MeasureThreads(const DataSet& set, unsigned int rounds, Results* results);
// The cost of an operation by the number of keys.
void MeasureSizes(const char* rowName, unsigned int rounds, Results* results);

}  // namespace tamu::bench
