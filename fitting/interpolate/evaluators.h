// The eight evaluators: results of one function at the sites of a block whose cells are known. Each is a template over
// precision and width of the cells; its form with call-backs leaves to them the regions that they own.
//
// Results of a site stand side by side, one for each selected order: result k of site s at out[s * nder + k].
#pragma once

#include <initializer_list>

#include "fitting/callbacks.h"
#include "fitting/interpolate/polynomials.h"
#include "fitting/pieces.h"

namespace tarn::fitting {

constexpr int64_t block_sites = 320; // the most that an evaluator is given

enum Region { left_region, right_region, inside_region, regions };

// What an evaluator reads of a call.
template <class Real> struct Evaluation {
  const DFTask* task;
  const void* orders; // a flag for each derivative order, 32 or 64 bits wide
  int64_t order_count;
  bool wide;
  bool value_alone; // no order is selected: the value stands in
  int64_t nder;     // selected orders
  Bound<typename Callbacks<Real>::Evaluate> callbacks[regions];
};

template <class Real> bool selected(const Evaluation<Real>& e, int64_t order) {
  if (e.value_alone) return order == 0;
  if (order >= e.order_count) return false;
  return e.wide ? static_cast<const int64_t*>(e.orders)[order] != 0 : static_cast<const int32_t*>(e.orders)[order] != 0;
}

template <class Real> void select_orders(Evaluation<Real>& e) {
  e.value_alone = false;
  e.nder = 0;
  if (!e.orders) e.order_count = 0;
  for (int64_t k = 0; k < e.order_count; ++k) e.nder += selected(e, k);
  e.value_alone = e.nder == 0;
  if (e.value_alone) e.nder = 1;
}

template <class Real>
using Evaluator = int32_t (*)(const Evaluation<Real>& e, int64_t function, int64_t count, const Real* site,
                              const void* cell, Real* out);
// By number; 32 or 64: the width of the cells; callbacks: the forms that honour them.
template <class Real> Evaluator<Real> evaluator(Interpolant kind, bool wide_cells, bool callbacks);

// Zeros for the selected orders from `order` on, of which the first is the k-th selected one.
template <class Real> void clear_orders(const Evaluation<Real>& e, int64_t k, int64_t count, Real* out) {
  if (k == e.nder) return;
  for (int64_t s = 0; s < count; ++s)
    for (int64_t j = k; j < e.nder; ++j) out[s * e.nder + j] = 0;
}

// One order for all sites; `step` from one result to the next. The pieces come by value: no store can change them.
template <int Terms, int Order, class Real, class Cell, class Pieces>
void evaluate_order(Pieces pieces, const Real* c, int64_t count, const Real* site, const Cell* cell, Real* out,
                    int64_t step) {
  constexpr int width = lanes<Vector<Real>, Real>;
  // While a block is at hand the sites and the places of the results of the next one are fetched, a cache line at a time.
  constexpr int64_t line = 64 / sizeof(Real), next_block = block_sites + line * 8;
  // Coefficients beyond the nearer caches are asked for ahead of their use.
  constexpr int64_t near_bytes = 1 << 18;
  const int64_t ahead = pieces.points.n * Terms * int64_t(sizeof(Real)) > near_bytes ? 12 : count;
  int64_t s = 0;
  for (; s + width <= count; s += width) {
    if (s + ahead + width <= count)
      for (int l = 0; l < width; ++l) __builtin_prefetch(c + (int64_t(cell[s + ahead + l]) - 1) * Terms);
    if (s % line == 0) {
      __builtin_prefetch(site + s + next_block);
      __builtin_prefetch(out + (s + next_block) * step);
    }
    int64_t piece[width];
    const Real* at[width];
    Vector<Real> columns[Terms];
#pragma GCC unroll 4
    for (int l = 0; l < width; ++l) {
      piece[l] = pieces.piece(cell[s + l], site[s + l]);
      at[l] = c + piece[l] * Terms;
    }
    gather<Terms>(at, columns);
    const Vector<Real> r = horner<Terms, Order, Real>(columns, load<Vector<Real>>(site + s) - pieces.origins(piece));
    if (step == 1) {
      store(out + s, r);
    } else {
      for (int l = 0; l < width; ++l) out[(s + l) * step] = r[l];
    }
  }
  for (; s < count; ++s) {
    const int64_t piece = pieces.piece(cell[s], site[s]);
    out[s * step] = horner<Terms, Order, Real>(c + piece * Terms, site[s] - pieces.origin(piece));
  }
}

// The orders of a spline of few terms one after the other; those beyond it are 0.
template <int Terms, int Order, class Real, class Cell, class Pieces>
void evaluate_orders_from(const Evaluation<Real>& e, int64_t k, const Pieces& pieces, const Real* c, int64_t count,
                          const Real* site, const Cell* cell, Real* out) {
  if constexpr (Order == Terms) {
    clear_orders(e, k, count, out);
  } else {
    const bool now = selected(e, Order);
    if (now) evaluate_order<Terms, Order>(pieces, c, count, site, cell, out + k, e.nder);
    evaluate_orders_from<Terms, Order + 1>(e, k + now, pieces, c, count, site, cell, out);
  }
}

template <int Terms, class Real, class Cell>
int32_t evaluate_polynomials(const Evaluation<Real>& e, int64_t function, int64_t count, const Real* site,
                             const Cell* cell, Real* out) {
  const Real* c = coefficients<Real>(e.task, function);
  with_points<Real>(e.task, [&]<bool Uniform>(Points<Real, Uniform> points) {
    evaluate_orders_from<Terms, 0>(e, 0, CellPieces<Real, Uniform>{points}, c, count, site, cell, out);
  });
  return TARN_DF_OK;
}

template <class Real, class Cell>
int32_t evaluate_subbotin(const Evaluation<Real>& e, int64_t function, int64_t count, const Real* site,
                          const Cell* cell, Real* out) {
  const Real* c = coefficients<Real>(e.task, function);
  with_points<Real>(e.task, [&]<bool Uniform>(Points<Real, Uniform> points) {
    const SubbotinPieces<Real, Uniform> pieces = {points, e.task};
    evaluate_orders_from<TARN_DF_ORDER_QUADRATIC, 0>(e, 0, pieces, c, count, site, cell, out);
  });
  return TARN_DF_OK;
}

template <class Real, class Cell>
int32_t evaluate_arbitrary(const Evaluation<Real>& e, int64_t function, int64_t count, const Real* site,
                           const Cell* cell, Real* out) {
  const int64_t terms = e.task->splineOrder;
  if (terms == TARN_DF_ORDER_NONE) { // the call-backs know the spline
    clear_orders(e, 0, count, out);
    return TARN_DF_OK;
  }
  const Real* c = coefficients<Real>(e.task, function);
  with_points<Real>(e.task, [&]<bool Uniform>(Points<Real, Uniform> points) {
    const CellPieces<Real, Uniform> pieces = {points};
    int64_t k = 0;
    for (int64_t order = 0; order < terms && k < e.nder; ++order) {
      if (!selected(e, order)) continue;
      for (int64_t s = 0; s < count; ++s) {
        const int64_t piece = pieces.piece(cell[s], site[s]);
        out[s * e.nder + k] = horner(c + piece * terms, terms, order, site[s] - pieces.origin(piece));
      }
      ++k;
    }
    clear_orders(e, k, count, out);
  });
  return TARN_DF_OK;
}

// Steps: the value at the left or the right end of the site's cell. All derivatives are 0.
template <bool Left, class Real, class Cell>
int32_t evaluate_step(const Evaluation<Real>& e, int64_t function, int64_t count, const Real* site, const Cell* cell,
                      Real* out) {
  static_cast<void>(site);
  const bool value = selected(e, 0);
  clear_orders(e, value ? 1 : 0, count, out);
  if (!value) return TARN_DF_OK;
  const Samples<Real> y = samples<Real>(e.task, function);
  const int64_t last = e.task->nx - 1;
  for (int64_t s = 0; s < count; ++s) out[s * e.nder] = y[nearest_index(cell[s] - (Left ? 1 : 0), last)];
  return TARN_DF_OK;
}

// The partition point that a site is, or -1. Points that are not stored are known only to a tolerance.
template <class Real> int64_t point_at(Points<Real, false> points, int64_t i, Real site) {
  if (site == points[i]) return i;
  if (i + 1 < points.n && site == points[i + 1]) return i + 1;
  return site == points[points.n - 1] ? points.n - 1 : -1;
}
template <class Real> int64_t point_at(Points<Real, true> points, int64_t i, Real site) {
  constexpr Real tolerance = Real(0x1p-40);
  const auto near = [&](int64_t k) { return __builtin_fabs(site - points[k]) <= tolerance; };
  if (near(i)) return i;
  return i + 1 < points.n && near(i + 1) ? i + 1 : -1;
}

template <class Real, class Cell>
int32_t look_up(const Evaluation<Real>& e, int64_t function, int64_t count, const Real* site, const Cell* cell,
                Real* out) {
  if (e.order_count != 1) return TARN_DF_ERROR_LOOKUP_ORDER_COUNT;
  if (e.value_alone) return TARN_DF_ERROR_LOOKUP_ORDER; // the one order there is was not asked for
  const Samples<Real> y = samples<Real>(e.task, function);
  return with_points<Real>(e.task, [&](auto points) -> int32_t {
    for (int64_t s = 0; s < count; ++s) {
      const int64_t i = int64_t(cell[s]) - 1;
      const int64_t point = i < 0 || i >= points.n ? -1 : point_at(points, i, site[s]);
      if (point < 0) return TARN_DF_ERROR_LOOKUP_SITE;
      out[s] = y[point];
    }
    return TARN_DF_OK;
  });
}

template <Interpolant Kind, class Real, class Cell>
int32_t evaluate(const Evaluation<Real>& e, int64_t function, int64_t count, const Real* site, const Cell* cell,
                 Real* out) {
  if constexpr (Kind == Interpolant::Linear)
    return evaluate_polynomials<TARN_DF_ORDER_LINEAR>(e, function, count, site, cell, out);
  if constexpr (Kind == Interpolant::Quadratic)
    return evaluate_polynomials<TARN_DF_ORDER_QUADRATIC>(e, function, count, site, cell, out);
  if constexpr (Kind == Interpolant::Cubic)
    return evaluate_polynomials<TARN_DF_ORDER_CUBIC>(e, function, count, site, cell, out);
  if constexpr (Kind == Interpolant::Subbotin) return evaluate_subbotin(e, function, count, site, cell, out);
  if constexpr (Kind == Interpolant::Arbitrary) return evaluate_arbitrary(e, function, count, site, cell, out);
  if constexpr (Kind == Interpolant::StepLeft) return evaluate_step<true>(e, function, count, site, cell, out);
  if constexpr (Kind == Interpolant::StepRight) return evaluate_step<false>(e, function, count, site, cell, out);
  if constexpr (Kind == Interpolant::LookUp) return look_up(e, function, count, site, cell, out);
}

inline Region region_of(int64_t cell, int64_t nx) {
  return cell < 1 ? left_region : cell >= nx ? right_region : inside_region;
}

// Hands the sites of one region to its call-back, as many at once as the buffer has room for their results.
template <class Real, class Cell>
int32_t call_back(const Evaluation<Real>& e, Region region, int64_t count, const Real* site, const Cell* cell,
                  Real* out) {
  constexpr int64_t room = 2048; // results
  const auto& callback = e.callbacks[region];
  const int64_t most = maximum(minimum(block_sites, room / e.nder), 1);
  int64_t place[block_sites], own_cell[block_sites];
  Real own_site[block_sites], results[room];
  int64_t held = 0;
  for (int64_t s = 0; s <= count; ++s) {
    if (s < count && region_of(cell[s], e.task->nx) == region) {
      place[held] = s;
      own_cell[held] = cell[s];
      own_site[held++] = site[s];
    }
    if (held == 0 || (held < most && s < count)) continue;
    // A single site's results have their place in the output as they are, however many.
    Real* r = held == 1 ? out + place[0] * e.nder : results;
    for (int64_t k = 0; k < held * e.nder; ++k) r[k] = 0;
    const int32_t status = callback.call(&held, own_cell, own_site, r, callback.parameter, nullptr);
    if (status < 0) return status;
    if (held > 1)
      for (int64_t h = 0; h < held; ++h)
        for (int64_t k = 0; k < e.nder; ++k) out[place[h] * e.nder + k] = results[h * e.nder + k];
    held = 0;
  }
  return TARN_DF_OK;
}

// The regions without a call-back are evaluated as ever, in runs of neighbouring sites.
template <Interpolant Kind, class Real, class Cell>
int32_t evaluate_with_callbacks(const Evaluation<Real>& e, int64_t function, int64_t count, const Real* site,
                                const Cell* cell, Real* out) {
  // What is wrong whatever the sites are comes first.
  int32_t status = evaluate<Kind>(e, function, 0, site, cell, out);
  const auto owned = [&](int64_t s) { return e.callbacks[region_of(cell[s], e.task->nx)].call != nullptr; };
  for (int64_t s = 0; s < count && status == TARN_DF_OK;) {
    int64_t end = s;
    while (end < count && !owned(end)) ++end;
    if (end > s) status = evaluate<Kind>(e, function, end - s, site + s, cell + s, out + s * e.nder);
    s = end + 1;
  }
  for (const Region region : {left_region, right_region, inside_region})
    if (status == TARN_DF_OK && e.callbacks[region].call) status = call_back(e, region, count, site, cell, out);
  return status;
}

}
