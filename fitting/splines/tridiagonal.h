// Tridiagonal systems, diagonally dominant, without pivoting.
//
// Gaussian elimination of such a system is a chain of divisions, each waiting for the one before. Here the rows are
// eliminated from both ends at once, towards a middle row ("burning at both ends", H. A. van der Vorst, Parallel
// Computing 5, 1987): two chains, one in each half of a vector.
//
// Rows 0 to left - 1 are eliminated downward and n - 1 to left + 1 upward; row left is the middle one. A row's entry
// towards the middle couples it to the next row of its chain, its entry from the end to the row before. The factors
// stand where the matrix stood: reciprocal pivots in diag; in the entries towards the middle, these times the
// reciprocal pivot; in the entries from the end, the multiples of the previous row that were taken off.
#pragma once

#include <stdint.h>

namespace tarn::fitting {

// The two chains: lane 0 from the upper end, lane 1 from the lower end.
template <class Real> struct PairOf;
template <> struct PairOf<double> { typedef double Type __attribute__((vector_size(16))); };
template <> struct PairOf<float> { typedef float Type __attribute__((vector_size(8))); };
template <class Real> using Pair = typename PairOf<Real>::Type;

struct Chains {
  int64_t n, left, right;
  explicit Chains(int64_t order) : n(order), left(order / 2), right(order - 1 - order / 2) {}
};

// Eliminates, and with a right-hand side solves along: rhs is left with what the chains make of it, times the
// reciprocal pivots. Returns whether all pivots differ from 0.
template <bool with_rhs, class Real>
bool eliminate(int64_t n, Real* sub, Real* diag, Real* super, [[maybe_unused]] Real* rhs) {
  const Chains chains(n);
  bool regular = true;
  Pair<Real> pivot = {1, 1}, towards{}, reciprocal{}, coupling{}, value{};
  for (int64_t s = 0; s < chains.right; ++s) {
    const int64_t t = n - 1 - s;
    const Pair<Real> from = s ? Pair<Real>{sub[s - 1], super[t]} : Pair<Real>{};
    // From pivot to pivot the chain is one division and one subtraction; nothing waits for the reciprocals.
    pivot = Pair<Real>{diag[s], diag[t]} - from * towards / pivot;
    const Pair<Real> multiple = from * reciprocal;
    towards = Pair<Real>{super[s], sub[t - 1]};
    reciprocal = Real(1) / pivot;
    coupling = towards * reciprocal;
    regular = regular && pivot[0] != 0 && pivot[1] != 0;
    diag[s] = reciprocal[0], diag[t] = reciprocal[1];
    super[s] = coupling[0], sub[t - 1] = coupling[1];
    if (s) sub[s - 1] = multiple[0], super[t] = multiple[1];
    if constexpr (with_rhs) {
      value = Pair<Real>{rhs[s], rhs[t]} - multiple * value;
      const Pair<Real> scaled = value * reciprocal;
      rhs[s] = scaled[0], rhs[t] = scaled[1];
    }
  }
  Real upper_reciprocal = reciprocal[0], upper_coupling = coupling[0], upper_value = value[0];
  if (chains.left > chains.right) { // an even number of rows: one more from above
    const int64_t s = chains.left - 1;
    const Real from = s ? sub[s - 1] : 0;
    const Real upper_pivot = diag[s] - from * upper_coupling, multiple = from * upper_reciprocal;
    upper_reciprocal = 1 / upper_pivot;
    upper_coupling = super[s] * upper_reciprocal;
    regular = regular && upper_pivot != 0;
    diag[s] = upper_reciprocal;
    super[s] = upper_coupling;
    if (s) sub[s - 1] = multiple;
    if constexpr (with_rhs) {
      upper_value = rhs[s] - multiple * upper_value;
      rhs[s] = upper_value * upper_reciprocal;
    }
  }
  const int64_t k = chains.left;
  const Real above = k > 0 ? sub[k - 1] : 0, below = k < n - 1 ? super[k] : 0;
  const Real middle_pivot = diag[k] - above * upper_coupling - below * coupling[1];
  const Real multiple_above = above * upper_reciprocal, multiple_below = below * reciprocal[1];
  diag[k] = 1 / middle_pivot;
  if (k > 0) sub[k - 1] = multiple_above;
  if (k < n - 1) super[k] = multiple_below;
  if constexpr (with_rhs) rhs[k] = (rhs[k] - multiple_above * upper_value - multiple_below * value[1]) * diag[k];
  return regular && middle_pivot != 0;
}

// What eliminate<true> does to a right-hand side, by the factors: the same operations.
template <class Real> void reduce(int64_t n, const Real* sub, const Real* diag, const Real* super, Real* rhs) {
  const Chains chains(n);
  Pair<Real> value{};
  for (int64_t s = 0; s < chains.right; ++s) {
    const int64_t t = n - 1 - s;
    const Pair<Real> multiple = s ? Pair<Real>{sub[s - 1], super[t]} : Pair<Real>{};
    value = Pair<Real>{rhs[s], rhs[t]} - multiple * value;
    const Pair<Real> scaled = value * Pair<Real>{diag[s], diag[t]};
    rhs[s] = scaled[0], rhs[t] = scaled[1];
  }
  Real upper_value = value[0];
  if (chains.left > chains.right) {
    const int64_t s = chains.left - 1;
    upper_value = rhs[s] - (s ? sub[s - 1] : 0) * upper_value;
    rhs[s] = upper_value * diag[s];
  }
  const int64_t k = chains.left;
  const Real multiple_above = k > 0 ? sub[k - 1] : 0, multiple_below = k < n - 1 ? super[k] : 0;
  rhs[k] = (rhs[k] - multiple_above * upper_value - multiple_below * value[1]) * diag[k];
}

// From the middle row outward.
template <class Real> void substitute_back(int64_t n, const Real* sub, const Real* super, Real* rhs) {
  const Chains chains(n);
  const int64_t k = chains.left;
  Pair<Real> value = {rhs[k], rhs[k]};
  if (chains.left > chains.right) {
    value[0] = rhs[k - 1] - super[k - 1] * value[0];
    rhs[k - 1] = value[0];
  }
  for (int64_t s = chains.right - 1; s >= 0; --s) {
    const int64_t t = n - 1 - s;
    value = Pair<Real>{rhs[s], rhs[t]} - Pair<Real>{super[s], sub[t - 1]} * value;
    rhs[s] = value[0], rhs[t] = value[1];
  }
}

}
