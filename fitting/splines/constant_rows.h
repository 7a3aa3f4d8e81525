// The tridiagonal system of a uniform partition: rows 1, 4, 1 between a first and a last row of their own.
//
// Eliminated from both ends (tridiagonal.h), the pivots go to 2 + sqrt(3) and stand there to the last bit after a few
// rows, since their error falls by the factor 0.07 a row. From then on both passes are the recurrence
//   out[i] = scale * in[i] - w * out[i -+ 1],   w = 1 / (2 + sqrt(3)) = 2 - sqrt(3),
// without a division; and since w is constant it can look ahead: out[i] is scale * (in[i] - w * in[i-1]) + w^2 *
// out[i-2] as well, so that a vector of outputs follows from the vector before it (P. M. Kogge and H. S. Stone, IEEE
// Trans. Comput. C-22, 1973).
#pragma once

#include "fitting/lanes.h"
#include "fitting/splines/tridiagonal.h"

namespace tarn::fitting {

// The first or the last row of a system: its diagonal entry and the one beside it.
template <class Real> struct EndRow { Real diagonal, beside; };

template <class Real> struct ConstantRows {
  static constexpr int64_t min_rows = 64; // of a system worth it
  ConstantRows() = default;               // of no system
  // The first row has first.diagonal and first.beside, the last one last.beside and last.diagonal.
  ConstantRows(int64_t order, EndRow<Real> first, EndRow<Real> last) : chains(order) {
    for (int chain = 0; chain < 2; ++chain) {
      const EndRow<Real> row = chain == 0 ? first : last;
      reciprocal[chain][0] = 1 / row.diagonal;
      coupling[chain][0] = row.beside * reciprocal[chain][0];
      for (int64_t s = 1; s < settling; ++s)
        reciprocal[chain][s] = coupling[chain][s] = 1 / (4 - coupling[chain][s - 1]);
    }
    middle = 1 / (4 - 2 * settled);
  }

  void solve(Real* rhs) const {
    const int64_t n = chains.n, k = chains.left;
    for (int64_t s = 1; s < settling; ++s) {
      rhs[s] -= reciprocal[0][s - 1] * rhs[s - 1];
      rhs[n - 1 - s] -= reciprocal[1][s - 1] * rhs[n - s];
    }
    const int64_t both = chains.right - settling;
    run<false>(rhs, settling, n - 1 - settling, both);
    if (chains.left > chains.right) rhs[k - 1] -= settled * rhs[k - 2];
    rhs[k] = (rhs[k] - settled * rhs[k - 1] - settled * rhs[k + 1]) * middle;
    run<true>(rhs, k + 1, k - 1, both);
    if (chains.left > chains.right) rhs[settling] = settled * rhs[settling] - settled * rhs[settling + 1];
    for (int64_t s = settling - 1; s >= 0; --s) {
      rhs[s] = reciprocal[0][s] * rhs[s] - coupling[0][s] * rhs[s + 1];
      rhs[n - 1 - s] = reciprocal[1][s] * rhs[n - 1 - s] - coupling[1][s] * rhs[n - 2 - s];
    }
  }

  static constexpr int64_t settling = 24;
  static constexpr Real settled = Real(0.26794919243112270647); // 2 - sqrt(3), the lesser root of w^2 - 4 w + 1
  static_assert(settled * (4 - settled) - 1 < __FLT_EPSILON__ && 1 - settled * (4 - settled) < __FLT_EPSILON__);
  Chains chains{0};
  Real reciprocal[2][settling], coupling[2][settling], middle;

  // The vector of elements one (or two) places before those of current, in the direction of the recurrence.
  template <bool upward, int places, class V> static V before(V previous, V current) {
    if constexpr (lanes<V, Real> == 2) {
      return upward ? __builtin_shufflevector(previous, current, 1, 2)
                    : __builtin_shufflevector(current, previous, 1, 2);
    } else if constexpr (places == 1) {
      return upward ? __builtin_shufflevector(previous, current, 3, 4, 5, 6)
                    : __builtin_shufflevector(current, previous, 1, 2, 3, 4);
    } else {
      return upward ? __builtin_shufflevector(previous, current, 2, 3, 4, 5)
                    : __builtin_shufflevector(current, previous, 2, 3, 4, 5);
    }
  }

  // One chain: where it stands, and the last vectors of inputs, of inputs less w times their forerunners, of outputs.
  template <bool upward, bool scaled> struct Chain {
    static constexpr int step = lanes<Vector<Real>, Real>;
    using V = Vector<Real>;
    V input{}, reduced{}, output{};
    explicit Chain(Real start) {
      // As if nothing had come before the start but the start itself.
      input[upward ? step - 1 : 0] = reduced[upward ? step - 1 : 0] = output[upward ? step - 1 : 0] = start;
    }
    void advance(Real* at) {
      V next = load<V>(at);
      if constexpr (scaled) next *= broadcast<V>(settled);
      V next_reduced = next - broadcast<V>(settled) * before<upward, 1>(input, next), steady = next_reduced;
      if constexpr (step == 4) steady += broadcast<V>(settled * settled) * before<upward, 2>(reduced, next_reduced);
      constexpr Real power = step == 4 ? settled * settled * settled * settled : settled * settled;
      output = steady + broadcast<V>(power) * output;
      input = next, reduced = next_reduced;
      store(at, output);
    }
  };

  // The recurrence upward from rhs[up] and downward from rhs[down], count rows each; the rows before have their outputs.
  template <bool scaled> static void run(Real* rhs, int64_t up, int64_t down, int64_t count) {
    constexpr int64_t step = lanes<Vector<Real>, Real>;
    Chain<true, scaled> rising(rhs[up - 1]);
    Chain<false, scaled> falling(rhs[down + 1]);
    int64_t done = 0;
    for (; done + step <= count; done += step) {
      rising.advance(rhs + up + done);
      falling.advance(rhs + down - done - step + 1);
    }
    const Real scale = scaled ? settled : 1;
    for (; done < count; ++done) {
      rhs[up + done] = scale * rhs[up + done] - settled * rhs[up + done - 1];
      rhs[down - done] = scale * rhs[down - done] - settled * rhs[down - done + 1];
    }
  }
};

}
