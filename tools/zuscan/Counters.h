// What a scan has done so far, updated by the traversal's workers and read
// by the progress line and the summary.
#pragma once

#include <atomic>

namespace zuscan {

struct TScanCounters {
  std::atomic<unsigned long long> entries{0};  // catalogued
  std::atomic<unsigned long long> files{0};
  std::atomic<unsigned long long> folders{0};  // entered
  std::atomic<unsigned long long> bytes{0};    // sizes of the catalogued files
  std::atomic<unsigned long long> checksummed{0};  // bytes read for checksums
  std::atomic<unsigned long long> skipped{0};  // entries excluded by the rules
  std::atomic<unsigned long long> pruned{0};   // folders not entered at all
  std::atomic<unsigned long long> errors{0};
};

}  // namespace zuscan
