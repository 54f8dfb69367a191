// The kinds of work that are measured.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "bench/peers/DataSet.h"
#include "bench/peers/Peer.h"
#include "bench/peers/Results.h"

namespace tamu::bench {

// One operation, the i-th of a row.
using Operation = void (*)(Peer& peer, const DataSet& set, unsigned int i);

struct Row {
  const char* name;
  double goalFile;  // times LMDB map; 0: none
  double goalRoot;  // negative: not measured so
  double goalKey;   // zero or negative: not measured so
  unsigned int count;  // operations of one measurement
  Operation run;
  bool isFirst = false;  // else all of them are done once before the clock starts
};

const std::vector<Row>& AllRows();
const Row& RowNamed(const std::string& name);

// Fills an empty store with the data set.
void Build(Peer& peer, const DataSet& set);
// A few values of 1,000 bytes beside it.
void MakeLargeValues(Peer& peer, const DataSet& set);

// The stores by columns, and in the last three the library.
std::vector<std::unique_ptr<Peer>> AllPeers();

// Nanoseconds since some time.
double Now();
// Nanoseconds of one operation of the row, from the `start`th on.
double Measure(const Row& row, Peer& peer, const DataSet& set, unsigned int start);

}  // namespace tamu::bench
