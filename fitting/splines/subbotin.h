// Subbotin's quadratic spline: its pieces join, with one continuous derivative, not at the partition points but at a
// subgrid of knots between them (Yu. N. Subbotin, "Interpolation by functions with n-th derivative of minimum norm",
// Proc. Steklov Inst. Math. 88, 1967).
//
// Unknown are the derivatives d at the partition points. Around the knot between points i - 1 and i, at the distances
// a[i] from the one and b[i] from the other, the derivative is linear on both sides, so that its value there is
//   e[i] = 2 m[i-1] - (a[i] d[i-1] + b[i] d[i]) / h[i-1],
// m and h being slope and length of the cell. Piece i is straight in the derivative from e[i] through d[i] to e[i+1]:
//   d[i] = p e[i] + q e[i+1],   p = a[i+1] / (b[i] + a[i+1]),   q = b[i] / (b[i] + a[i+1]).
// Together these are the rows of a diagonally dominant tridiagonal system. At the ends b[0] = a[n] = 0.
#pragma once

#include "fitting/splines/boundaries.h"
#include "fitting/splines/grid.h"
#include "fitting/splines/quadratic.h"
#include "fitting/splines/tridiagonal.h"
#include "fitting/subgrid.h"

namespace tarn::fitting {

enum class EndCondition { first_derivative, second_derivative };

// A call on a task. The matrix serves all functions.
template <class Real, bool uniform_subgrid, bool interleaved, bool uniform, EndCondition at_left, EndCondition at_right>
struct Subbotin {
  explicit Subbotin(const DFTask* of) : task(of), grid(of), n(of->nx) {}

  static int64_t scratch_size(int64_t n) { return 8 * n + 8; }

  // Distances and factored matrix in the scratch. The subgrid must run from end to end of the partition with one knot
  // strictly between any two points.
  int32_t prepare(Real* scratch) {
    before = scratch;       // a, of knots 0 to n
    after = before + n + 1; // b, likewise
    inverse = after + n + 1;
    sub = inverse + n, super = sub + n, diag = super + n;
    derivative = diag + n;
    if (!measure()) return TARN_DF_ERROR_IC;
    fill_matrix();
    return eliminate<false, Real>(n, sub, diag, super, nullptr) ? TARN_DF_OK : TARN_DF_ERROR_SOLVER;
  }

  void write(int64_t j) const {
    const Values<Real, interleaved> y(task, j);
    const Real* bc = reals<Real>(task->bc);
    Real* d = derivative;
    d[0] = is_first(at_left) ? bc[0] : 2 * slope(y, 0) - before[1] * bc[0];
    d[n - 1] = is_first(at_right) ? bc[1] : 2 * slope(y, n - 2) + after[n - 1] * bc[1];
    for (int64_t i = 1; i + 1 < n; ++i) {
      const Real span = after[i] + before[i + 1];
      d[i] = 2 * (before[i + 1] / span * slope(y, i - 1) + after[i] / span * slope(y, i));
    }
    reduce(n, sub, diag, super, d);
    substitute_back(n, sub, super, d);
    Real* cells = coefficients<Real>(task, j);
    Real at_knot = d[0]; // e, of the piece's left knot
    for (int64_t i = 0; i < n; ++i) {
      const Real at_next = i + 1 < n ? derivative_at_knot(y, i + 1) : d[n - 1];
      Real* piece = cells + i * TARN_DF_ORDER_QUADRATIC;
      piece[0] = y[i];
      piece[1] = d[i];
      piece[2] = (at_next - at_knot) / (2 * (after[i] + before[i + 1]));
      at_knot = at_next;
    }
  }

  const DFTask* task;
  Grid<Real, uniform> grid;
  int64_t n;
  Real *before = nullptr, *after = nullptr, *inverse = nullptr;
  Real *sub = nullptr, *diag = nullptr, *super = nullptr, *derivative = nullptr;

  static constexpr bool is_first(EndCondition condition) { return condition == EndCondition::first_derivative; }
  Real point(int64_t i) const { return partition_point<Real, uniform>(task, i); }
  Real knot(int64_t i) const { return subgrid_knot<Real, uniform, uniform_subgrid>(task, i); }
  Real slope(const Values<Real, interleaved>& y, int64_t i) const { return (y[i + 1] - y[i]) * inverse[i]; }
  Real derivative_at_knot(const Values<Real, interleaved>& y, int64_t i) const {
    return 2 * slope(y, i - 1) - (before[i] * derivative[i - 1] + after[i] * derivative[i]) * inverse[i - 1];
  }

  bool measure() {
    if (knot(0) != point(0) || knot(n) != point(n - 1)) return false;
    before[0] = after[0] = before[n] = after[n] = 0;
    for (int64_t i = 1; i < n; ++i) {
      before[i] = knot(i) - point(i - 1);
      after[i] = point(i) - knot(i);
      if (!(before[i] > 0 && after[i] > 0)) return false;
    }
    for (int64_t i = 0; i + 1 < n; ++i) inverse[i] = grid.template inverse<Real>(i);
    return true;
  }

  void fill_matrix() {
    diag[0] = is_first(at_left) ? 1 : 1 + before[1] * inverse[0];
    super[0] = is_first(at_left) ? 0 : after[1] * inverse[0];
    diag[n - 1] = is_first(at_right) ? 1 : 1 + after[n - 1] * inverse[n - 2];
    sub[n - 2] = is_first(at_right) ? 0 : before[n - 1] * inverse[n - 2];
    for (int64_t i = 1; i + 1 < n; ++i) {
      const Real span = after[i] + before[i + 1], p = before[i + 1] / span, q = after[i] / span;
      sub[i - 1] = p * before[i] * inverse[i - 1];
      diag[i] = 1 + p * after[i] * inverse[i - 1] + q * before[i + 1] * inverse[i];
      super[i] = q * after[i + 1] * inverse[i];
    }
  }
};

template <class Real, bool uniform_subgrid, bool interleaved, bool uniform, EndCondition at_left, EndCondition at_right>
int32_t subbotin_quadratic(const DFTask* task) {
  Subbotin<Real, uniform_subgrid, interleaved, uniform, at_left, at_right> spline(task);
  Real* scratch = allocate<Real>(spline.scratch_size(task->nx));
  if (!scratch) return TARN_DF_ERROR_ALLOCATION;
  const int32_t status = spline.prepare(scratch);
  for (int64_t j = 0; j < function_count(task) && !status; ++j) spline.write(j);
  tarn_serv_deallocate(scratch);
  return status;
}

}
