// Pictures of what was measured, as SVG.
#pragma once

#include "bench/peers/Results.h"

namespace tamu::bench {

// Each row's times as multiples of those of LMDB map, as bars over a logarithmic axis.
std::string BarsOf(const Results& results);
// One line for each column. Logarithmic axes when `isTime`, else from 0.
std::string LinesOf(const Course& course, bool isTime);

}  // namespace tamu::bench
