// The running state of the moments, and how two states become one.
#pragma once

#include <stdint.h>

namespace tarn::stats {

// Sums of the weights and of their squares. The other two words are merged like them and stay zero.
template <class Real> struct Accumulator { Real W, V, third, fourth; };

// Arrays over the variables; null where an estimate set leaves one out. Raw arrays hold moments about zero (raw[0] is
// the mean), central arrays hold running sums of w (x - mean)^k for k = 2, 3, 4.
template <class Real> struct State { Real *raw[4], *central[3]; };

// Merges for variables first to last - 1 the state of weight W2 into that of weight W1; W2 is not 0.
// Chan, Golub and LeVeque, Updating formulae and a pairwise algorithm (1979); Pebay, Formulas for robust, one-pass
// parallel computation of covariances and arbitrary-order statistical moments (2008), here with weights.
// Under a user's mean both sides have the same centre, and the mean itself is left as it is.
template <class Real>
void merge_states(const State<Real>& to, Real W1, const State<Real>& from, Real W2, bool same_centre, int64_t first,
                  int64_t last) {
  const Real i = Real(1) / (W1 + W2), b = W1 * i, a = W2 * i;
  const Real *mean1 = to.raw[0], *mean2 = from.raw[0];
  Real *C2 = to.central[0], *C3 = to.central[1], *C4 = to.central[2];
  for (int64_t j = first; j < last; ++j) {
    // With nothing to merge into there is no difference either; the square of a large one would overflow.
    const Real d = same_centre || W1 == 0 ? Real(0) : mean2[j] - mean1[j];
    // Each order needs the lower ones of both sides as they were, so the highest goes first.
    if (C4) {
      const Real c22 = from.central[0][j], c23 = from.central[1][j], c24 = from.central[2][j];
      const Real id = i * d, X = d * d * W2 * i;
      C4[j] += c24 + id * (4 * (W1 * c23 - W2 * C3[j]) +
                           id * (W1 * (6 * W1 * c22 + ((W1 - W2) * W1 + W2 * W2) * X) + 6 * W2 * W2 * C2[j]));
    }
    if (C3) {
      const Real c22 = from.central[0][j], c23 = from.central[1][j];
      C3[j] += c23 + d * (i * i * W2 * d * d * W1 * (W1 - W2) + 3 * i * (W1 * c22 - W2 * C2[j]));
    }
    if (C2) C2[j] += from.central[0][j] + W1 * a * d * d;
  }
  if (!same_centre) {
    for (int64_t j = first; j < last; ++j) {
      const Real m1 = mean1[j], m2 = mean2[j], d = m2 - m1;
      to.raw[0][j] = d - d == 0 ? m1 + a * d : b * m1 + a * m2; // the second form for a mean that is infinite
    }
  }
  for (int k = 1; k < 4; ++k) {
    if (!to.raw[k]) continue;
    for (int64_t j = first; j < last; ++j) to.raw[k][j] = b * to.raw[k][j] + a * from.raw[k][j];
  }
}

}
