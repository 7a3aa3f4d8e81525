// Failing allocations on demand. Every test program replaces posix_memalign, through which the library takes all its
// memory, and so decides which allocation fails.
#pragma once

#include <cstdint>

namespace tarn::test {

// While it lives, the allocation number `fail_at` (from 0) on this thread fails, and so do all after it when
// `all_after`; -1 fails none and only counts.
class AllocationFailure {
public:
  explicit AllocationFailure(int64_t fail_at, bool all_after = false);
  ~AllocationFailure();
  AllocationFailure(const AllocationFailure&) = delete;
  AllocationFailure& operator=(const AllocationFailure&) = delete;
  int64_t seen() const;  // allocations asked for since the start
  bool happened() const; // whether one was refused
};

// Blocks taken through posix_memalign by any thread so far, less the failed ones.
int64_t blocks_taken();

// Calls body(k) with the k-th allocation failing, for k = 0, 1, 2, ... until a run in which none failed.
// Returns the number of failing runs, that is, of allocation sites in the order they are reached.
template <class Body> int64_t for_each_allocation_failure(Body body) {
  for (int64_t k = 0;; ++k) {
    AllocationFailure failure(k);
    body(k);
    if (!failure.happened()) return k;
  }
}

}
