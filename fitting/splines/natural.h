// The cubic spline with two continuous derivatives: the derivatives at all points from one tridiagonal system, whose
// matrix depends on the partition alone and so is factored once for all functions.
// C. de Boor, A Practical Guide to Splines (1978), ch. IV.
#pragma once

#include "fitting/splines/boundaries.h"
#include "fitting/splines/constant_rows.h"
#include "fitting/splines/grid.h"
#include "fitting/splines/threading.h"
#include "fitting/splines/tridiagonal.h"

namespace tarn::fitting {

// A call on a task. The derivatives are the unknowns, but for the last one of a periodic spline, which is the first.
template <class Real, bool interleaved, bool uniform, Column column> struct NaturalCubic {
  explicit NaturalCubic(const DFTask* of)
      : task(of), grid(of), n(of->nx), unknowns(column == periodic ? n - 1 : n),
        straight(n == 2 && (column == not_a_knot || column == periodic)),
        constant(uniform && unknowns >= ConstantRows<Real>::min_rows) {}

  // Scratch for the partition, and for so many functions at a time.
  static int64_t scratch_size(int64_t n, int64_t functions) {
    return (2 * functions + 3) * (n - 1) + 2 * n + (functions + 2) * n - 2;
  }

  // Sets up the matrix in the scratch, and its factors when several right-hand sides will follow. Whether there is a
  // solution: with three points and no knot both end conditions say the same.
  bool prepare(Real* scratch, bool several) {
    if (straight) return true;
    if (column == not_a_knot && n == 3) return false;
    length = scratch;
    inverse = length + (n - 1);
    sub = inverse + (n - 1);
    super = sub + (n - 1);
    correction = super + (n - 1);
    diag = correction + (n - 1);
    derivatives = diag + n;
    factored = several;
    if constexpr (!uniform) {
      for_lanes<Real>(0, n - 1, [&](auto lane, int64_t i) {
        using V = decltype(lane);
        const V h = grid.template length<V>(i);
        store(length + i, h);
        store(inverse + i, broadcast<V>(Real(1)) / h);
      });
    }
    if (constant) {
      rows = ConstantRows<Real>(unknowns, end_row(left), end_row(right));
    } else {
      fill_matrix();
      if (several && !eliminate<false, Real>(unknowns, sub, diag, super, nullptr)) return false;
    }
    if (column == periodic) find_correction();
    return true;
  }

  // The cells of function j, in the share of the scratch with that number. False when a pivot is 0.
  bool write(int64_t j, int64_t share) const {
    const Values<Real, interleaved> y(task, j);
    Real line[2];
    Real* d = straight ? line : derivatives + share * n;
    if (straight) {
      line[0] = line[1] = slope<Real>(y, 0);
    } else {
      fill_right_hand_side(y, d);
      if (!solve(d)) return false;
      if (column == periodic) close_period(d);
    }
    Real* cells = coefficients<Real>(task, j);
    for_lanes<Real>(0, n - 1, [&](auto lane, int64_t i) {
      using V = decltype(lane);
      const V reciprocal = inverse_at<V>(i), value = y.template at<V>(i);
      write_cubic(cells + i * TARN_DF_ORDER_CUBIC, value, (y.template at<V>(i + 1) - value) * reciprocal, reciprocal,
                  load<V>(d + i), load<V>(d + i + 1));
    });
    return true;
  }

  const DFTask* task;
  Grid<Real, uniform> grid;
  int64_t n, unknowns;
  bool straight; // two points whose conditions ask for the line through them
  bool constant, factored = false;
  ConstantRows<Real> rows;
  Real *length = nullptr, *inverse = nullptr, *sub = nullptr, *super = nullptr, *diag = nullptr;
  Real *correction = nullptr, *derivatives = nullptr;

  static constexpr bool gives_1st(Side side) {
    return column == both_1st || column == (side == left ? left_1st_right_2nd : left_2nd_right_1st);
  }
  static constexpr bool gives_2nd(Side side) {
    return column == both_2nd || column == (side == left ? left_2nd_right_1st : left_1st_right_2nd);
  }

  template <class V> V inverse_at(int64_t i) const {
    return uniform || straight ? grid.template inverse<V>(i) : load<V>(inverse + i);
  }
  // On a uniform partition rows are divided by the length of its cells.
  template <class V> V length_at(int64_t i) const { return uniform ? broadcast<V>(Real(1)) : load<V>(length + i); }
  template <class V> V slope(const Values<Real, interleaved>& y, int64_t i) const {
    return (y.template at<V>(i + 1) - y.template at<V>(i)) * inverse_at<V>(i);
  }

  // The row of an end. Where no knot is, the uniform rule has a right-hand side of its own, not the limit of the general
  // one. A periodic spline's cyclic matrix is a tridiagonal one and a product u v with v = 1, 0, ..., 0, 1: u has the
  // corner entries, which the tridiagonal part's ends therefore lack.
  EndRow<Real> end_row(Side side) const {
    const Real outer = length_at<Real>(side == left ? 0 : n - 2);
    if constexpr (column == not_a_knot) {
      const Real inner = length_at<Real>(side == left ? 1 : n - 3);
      return {inner, outer + inner};
    } else if constexpr (column == periodic) {
      const Real across = length_at<Real>(n - 2);
      return {2 * across + corner(side), across};
    }
    return gives_1st(side) ? EndRow<Real>{1, 0} : EndRow<Real>{2, 1};
  }
  Real corner(Side side) const { return length_at<Real>(side == left ? 0 : n - 3); }

  Real end_value(const Values<Real, interleaved>& y, Side side) const {
    const int64_t outer = side == left ? 0 : n - 2;
    const Real m0 = slope<Real>(y, outer);
    if constexpr (column == not_a_knot) {
      if constexpr (uniform) return (side == left ? y[2] - y[0] : y[n - 1] - y[n - 3]) * (Real(0.5) * grid.inverse_h);
      const int64_t inner = side == left ? 1 : n - 3;
      const Real h0 = length_at<Real>(outer), h1 = length_at<Real>(inner), both = h0 + h1;
      return (h0 * h0 * slope<Real>(y, inner) + (h0 + 2 * both) * h1 * m0) / both;
    }
    if (column == free_end) return 3 * m0;
    const Real given = reals<Real>(task->bc)[side == left ? 0 : 1];
    if (gives_1st(side)) return given;
    const Real bend = grid.template length<Real>(outer) * given / 2;
    return side == left ? 3 * m0 - bend : 3 * m0 + bend;
  }

  void fill_matrix() {
    const EndRow<Real> first = end_row(left), last = end_row(right);
    for_lanes<Real>(1, unknowns - 1, [&](auto lane, int64_t i) {
      using V = decltype(lane);
      const V before = length_at<V>(i - 1), after = length_at<V>(i);
      store(sub + i - 1, after);
      store(super + i, before);
      store(diag + i, broadcast<V>(Real(2)) * (before + after));
    });
    diag[0] = first.diagonal;
    super[0] = first.beside;
    diag[unknowns - 1] = last.diagonal;
    sub[unknowns - 2] = last.beside;
  }

  // Twice continuous differentiability at point i, where the cells meet that are given.
  template <class V> static V bending(V before_length, V before_slope, V after_length, V after_slope) {
    return broadcast<V>(Real(3)) * (after_length * before_slope + before_length * after_slope);
  }

  void fill_right_hand_side(const Values<Real, interleaved>& y, Real* d) const {
    if constexpr (uniform) {
      const Real scale = 3 * grid.inverse_h;
      for_lanes<Real>(1, n - 1, [&](auto lane, int64_t i) {
        using V = decltype(lane);
        store(d + i, (y.template at<V>(i + 1) - y.template at<V>(i - 1)) * broadcast<V>(scale));
      });
    } else {
      for_lanes<Real>(1, n - 1, [&](auto lane, int64_t i) {
        using V = decltype(lane);
        store(d + i, bending(length_at<V>(i - 1), slope<V>(y, i - 1), length_at<V>(i), slope<V>(y, i)));
      });
    }
    if constexpr (column == periodic) {
      d[0] = bending(length_at<Real>(n - 2), slope<Real>(y, n - 2), length_at<Real>(0), slope<Real>(y, 0));
    } else {
      d[0] = end_value(y, left);
      d[n - 1] = end_value(y, right);
    }
  }

  bool solve(Real* d) const {
    if (constant) {
      rows.solve(d);
      return true;
    }
    if (factored) {
      reduce(unknowns, sub, diag, super, d);
    } else if (!eliminate<true>(unknowns, sub, diag, super, d)) {
      return false;
    }
    substitute_back(unknowns, sub, super, d);
    return true;
  }

  // The rank-one correction of J. Sherman and W. J. Morrison, Ann. Math. Statist. 21 (1950).
  void find_correction() {
    for (int64_t i = 0; i < unknowns; ++i) correction[i] = 0;
    correction[0] = corner(left);
    correction[unknowns - 1] = corner(right);
    solve(correction);
  }
  void close_period(Real* d) const {
    const Real share = (d[0] + d[unknowns - 1]) / (1 + correction[0] + correction[unknowns - 1]);
    for (int64_t i = 0; i < unknowns; ++i) d[i] -= share * correction[i];
    d[unknowns] = d[0];
  }
};

// What the workers share; each takes a slice of the functions.
template <class Real, bool interleaved, bool uniform, Column column> struct vDFNaturalCubSplineThreadingStruct {
  const NaturalCubic<Real, interleaved, uniform, column>* spline;
  int64_t functions;
  int64_t slices;
  int32_t* statuses;
};

template <class Real, bool interleaved, bool uniform, Column column> void natural_slice(int64_t slice, void* context) {
  const auto& work = *static_cast<vDFNaturalCubSplineThreadingStruct<Real, interleaved, uniform, column>*>(context);
  const int64_t end = (slice + 1) * work.functions / work.slices;
  for (int64_t j = slice * work.functions / work.slices; j < end; ++j)
    if (!work.spline->write(j, slice)) work.statuses[slice] = TARN_DF_ERROR_SOLVER;
}

template <class Real, bool interleaved, bool uniform, Column column>
int32_t natural_cubic(const DFTask* task, const tarn_threader* threader, tarn_loop_body body) {
  const int64_t n = task->nx, functions = function_count(task);
  const int64_t threads = threads_for(threader, functions);
  const bool threaded = functions > 1 && threads > 1 && n >= 300 && (n >= 600 || threads >= 8);
  NaturalCubic<Real, interleaved, uniform, column> spline(task);
  Real* scratch = allocate<Real>(spline.scratch_size(n, threaded ? threads : functions));
  if (!scratch) return TARN_DF_ERROR_ALLOCATION;
  int32_t status = spline.prepare(scratch, functions > 1 || column == periodic) ? TARN_DF_OK : TARN_DF_ERROR_SOLVER;
  if (threaded && !status) {
    int32_t* statuses = allocate<int32_t>(threads);
    if (statuses) {
      for (int32_t i = 0; i < threads; ++i) statuses[i] = TARN_DF_OK;
      vDFNaturalCubSplineThreadingStruct<Real, interleaved, uniform, column> work = {&spline, functions, threads,
                                                                                     statuses};
      run_loop(threader, threads, threads, &work, body);
      for (int32_t i = 0; i < threads && !status; ++i) status = statuses[i];
      tarn_serv_deallocate(statuses);
    } else {
      status = TARN_DF_ERROR_ALLOCATION;
    }
  } else {
    for (int64_t j = 0; j < functions && !status; ++j)
      if (!spline.write(j, 0)) status = TARN_DF_ERROR_SOLVER;
  }
  tarn_serv_deallocate(scratch);
  return status;
}

}
