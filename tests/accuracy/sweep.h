// Measures one function of one type: all its kernels against the exact function at the same points.
#pragma once

#include "accuracy/claims.h"
#include "accuracy/references.h"
#include "command/functions.h"

#include <string>
#include <vector>

namespace tarn::accuracy {

struct SweepOptions {
  int64_t points = 1'000'000; // before the reference's own thinning
  uint64_t seed = 1;
  int threads = 2;
  bool exhaustive = false; // every finite float, for a function of one float
};

// One claim and what was found of it, in units in the last place of the exact result: 2^(e - p + 1) for a result in
// [2^e, 2^(e+1)), and the smallest denormal for one below the normal range. Infinity stands for 2^(largest exponent +
// 1).
struct Finding {
  Claim claim;
  double max_ulp = 0, mean_ulp = 0;
  double worst_bits = 0; // -log2 of the largest relative error of a normal result
  double at[2] = {0, 0}; // arguments of the largest error
  double result = 0;     // what the kernel gave there
  int64_t points = 0;    // points in the claim's range
  bool holds() const { return max_ulp <= claim.ulp; }
};

struct Sweep {
  std::vector<Finding> findings;   // one a claim
  std::vector<std::string> faults; // NaN, infinity or a number where the exact function has something else
};

// `claims` are those of this function and type, of any class.
Sweep sweep(const command::Function& function, const Reference& reference, const std::vector<Claim>& claims,
            const SweepOptions& options);

}
