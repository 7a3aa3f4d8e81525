// The seven integrators: integrals of all functions over a block of pairs of limits whose cells are known. Each has a
// form with call-backs, which leaves to them the parts of the ranges that they own.
#pragma once

#include "fitting/callbacks.h"
#include "fitting/integrate/antiderivatives.h"
#include "fitting/interpolate/evaluators.h"

namespace tarn::fitting {

constexpr int64_t block_pairs = 128;

// What an integrator reads of a call.
template <class Real> struct Integration {
  const DFTask* task;
  Real* r;
  int64_t function_step, pair_step; // in r
  Bound<typename Callbacks<Real>::Integrate> callbacks[regions];
};

// Pairs of limits with their cells; the first one is pair number `from` of the call.
template <class Real> struct Limits {
  int64_t from, count;
  const Real *left, *right;
  const int64_t *left_cell, *right_cell;
};

// `scratch` has room for the results of a block; the forms without call-backs do not use it.
template <class Real>
using Integrator = int32_t (*)(const Integration<Real>& call, const Limits<Real>& limits, Real* scratch);
template <class Real> Integrator<Real> integrator(Interpolant kind, bool callbacks);

// The parts of a block's ranges that one call-back owns.
template <class Real> struct Parts {
  int64_t count, place[block_pairs], left_cell[block_pairs], right_cell[block_pairs];
  Real left[block_pairs], right[block_pairs];
};
template <class Real>
void add_part(Parts<Real>& parts, int64_t place, int64_t left_cell, Real left, int64_t right_cell, Real right) {
  const int64_t k = parts.count++;
  parts.place[k] = place;
  parts.left_cell[k] = left_cell, parts.right_cell[k] = right_cell;
  parts.left[k] = left, parts.right[k] = right;
}

// A block in order: limits ascending within a pair, and who integrates what.
template <class Real> struct Arrangement {
  bool negative[block_pairs]; // the limits were exchanged
  int64_t ranges;
  Range<Real> range[2 * block_pairs]; // for the spline itself: two for a pair whose inside is a call-back's
};

template <class Real> struct Pair {
  int64_t left_cell, right_cell;
  Real left, right;
};
// Ascending; tells whether the limits had to be exchanged.
template <class Real> Pair<Real> ascending_pair(const Limits<Real>& limits, int64_t s, bool& exchanged) {
  exchanged = limits.right[s] < limits.left[s];
  if (exchanged) return {limits.right_cell[s], limits.left_cell[s], limits.right[s], limits.left[s]};
  return {limits.left_cell[s], limits.right_cell[s], limits.left[s], limits.right[s]};
}

template <class Real, class Pieces>
void add_range(Arrangement<Real>& block, const Pieces& pieces, int64_t place, const Pair<Real>& pair) {
  block.range[block.ranges++] = {place, pieces.piece(pair.left_cell, pair.left),
                                 pieces.piece(pair.right_cell, pair.right), pair.left, pair.right};
}

template <class Real, class Pieces>
void arrange(const Limits<Real>& limits, const Pieces& pieces, Arrangement<Real>& block) {
  block.ranges = 0;
  for (int64_t s = 0; s < limits.count; ++s) add_range(block, pieces, s, ascending_pair(limits, s, block.negative[s]));
}

// With call-backs: what they own is cut off, at the ends of the partition.
template <class Real, class Pieces>
void arrange_with_callbacks(const Integration<Real>& call, const Limits<Real>& limits, const Pieces& pieces,
                            Arrangement<Real>& block, Parts<Real> (&parts)[regions]) {
  const int64_t first_cell = 1, last_cell = pieces.points.n - 1; // of the two ends
  const Real left_end = pieces.points.left, right_end = pieces.points.right;
  for (Parts<Real>& part : parts) part.count = 0;
  block.ranges = 0;
  for (int64_t s = 0; s < limits.count; ++s) {
    Pair<Real> own = ascending_pair(limits, s, block.negative[s]);
    if (own.left == own.right) continue; // nothing to integrate
    bool left_over = true;
    const auto give = [&](Region region, const Pair<Real>& part) {
      add_part(parts[region], s, part.left_cell, part.left, part.right_cell, part.right);
    };
    // Without a call-back inside, one range takes all that the outer ones leave: the sum is that of the plain form.
    const bool inside = call.callbacks[inside_region].call != nullptr;
    if (own.left < left_end && (inside || call.callbacks[left_region].call)) {
      Pair<Real> outer = own;
      left_over = own.right > left_end;
      if (left_over) outer.right_cell = first_cell, outer.right = left_end;
      if (call.callbacks[left_region].call) {
        give(left_region, outer);
      } else {
        add_range(block, pieces, s, outer);
      }
      own.left_cell = first_cell, own.left = left_end;
    }
    if (left_over && own.right > right_end && (inside || call.callbacks[right_region].call)) {
      Pair<Real> outer = own;
      left_over = own.left < right_end;
      if (left_over) outer.left_cell = last_cell, outer.left = right_end;
      if (call.callbacks[right_region].call) {
        give(right_region, outer);
      } else {
        add_range(block, pieces, s, outer);
      }
      own.right_cell = last_cell, own.right = right_end;
    }
    if (!left_over) continue;
    if (inside) {
      give(inside_region, own);
    } else {
      add_range(block, pieces, s, own);
    }
  }
}

// Calls body(integral of a range), made for function f.
template <Interpolant Kind, class Real, class Pieces, class Body>
void with_integral(const DFTask* task, int64_t f, const Pieces& pieces, Body body) {
  constexpr bool uniform = Pieces::uniform;
  if constexpr (Kind == Interpolant::StepLeft || Kind == Interpolant::StepRight) {
    body(StepIntegral<Kind == Interpolant::StepLeft, Real, uniform>{pieces, samples<Real>(task, f)});
  } else if constexpr (Kind == Interpolant::Subbotin || Kind == Interpolant::Arbitrary) {
    const int64_t terms = task->splineOrder;
    const Real* c = terms == TARN_DF_ORDER_NONE ? nullptr : coefficients<Real>(task, f);
    body(GeneralIntegral<Real, Pieces>{pieces, c, terms});
  } else {
    constexpr int terms = Kind == Interpolant::Linear      ? TARN_DF_ORDER_LINEAR
                          : Kind == Interpolant::Quadratic ? TARN_DF_ORDER_QUADRATIC
                                                           : TARN_DF_ORDER_CUBIC;
    body(PolynomialIntegral<terms, Real, uniform>{pieces, coefficients<Real>(task, f)});
  }
}

template <Interpolant Kind, class Real, class Body> void with_pieces(const DFTask* task, Body body) {
  with_points<Real>(task, [&]<bool Uniform>(Points<Real, Uniform> points) {
    if constexpr (Kind == Interpolant::Subbotin) {
      body(SubbotinPieces<Real, Uniform>{points, task});
    } else {
      body(CellPieces<Real, Uniform>{points});
    }
  });
}

template <Interpolant Kind, class Real> int32_t integrate(const Integration<Real>& call, const Limits<Real>& limits) {
  with_pieces<Kind, Real>(call.task, [&](const auto& pieces) {
    Arrangement<Real> block;
    arrange(limits, pieces, block);
    for (int64_t f = 0; f < function_count(call.task); ++f) {
      Real* r = call.r + f * call.function_step + limits.from * call.pair_step;
      with_integral<Kind, Real>(call.task, f, pieces, [&](const auto& integral) {
        for (int64_t s = 0; s < limits.count; ++s) {
          const Real value = integral(block.range[s]);
          r[s * call.pair_step] = block.negative[s] ? -value : value;
        }
      });
    }
  });
  return TARN_DF_OK;
}

template <Interpolant Kind, class Real>
int32_t integrate_with_callbacks(const Integration<Real>& call, const Limits<Real>& limits, Real* scratch) {
  int32_t status = TARN_DF_OK;
  with_pieces<Kind, Real>(call.task, [&](const auto& pieces) {
    Arrangement<Real> block;
    Parts<Real> parts[regions];
    arrange_with_callbacks(call, limits, pieces, block, parts);
    for (int64_t f = 0; f < function_count(call.task); ++f) {
      Real sum[block_pairs] = {};
      with_integral<Kind, Real>(call.task, f, pieces, [&](const auto& integral) {
        for (int64_t k = 0; k < block.ranges; ++k) sum[block.range[k].place] += integral(block.range[k]);
      });
      for (const Region region : {left_region, inside_region, right_region}) {
        Parts<Real>& part = parts[region];
        const auto& callback = call.callbacks[region];
        if (part.count == 0) continue;
        for (int64_t k = 0; k < part.count; ++k) scratch[k] = 0;
        status = callback.call(&part.count, part.left_cell, part.left, part.right_cell, part.right, scratch,
                               callback.parameter, nullptr);
        if (status < 0) return;
        status = TARN_DF_OK;
        for (int64_t k = 0; k < part.count; ++k) sum[part.place[k]] += scratch[k];
      }
      Real* r = call.r + f * call.function_step + limits.from * call.pair_step;
      for (int64_t s = 0; s < limits.count; ++s) r[s * call.pair_step] = block.negative[s] ? -sum[s] : sum[s];
    }
  });
  return status;
}

}
