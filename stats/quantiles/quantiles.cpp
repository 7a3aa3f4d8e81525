// Exact quantiles and order statistics.
#include "stats/precisions.h"
#include "stats/quantiles/select.h"
#include "stats/quantiles/variables.h"

namespace tarn::stats {
namespace {

// From this number of orders on, sorting costs less than selecting for each.
constexpr int64_t sort_from_orders = 5;

template <class Real> struct QuantilesRun {
  const SSTask* task;
  int64_t n, p, order_count;
  const Real *data, *orders;
  Real *quantiles, *order_statistics; // null when not asked for
  bool rows, output_rows;
  const int64_t* variables;
  Real* work; // 2 n reals for each thread
};

struct Place {
  int64_t rank;
  double fraction;
};
// In double precision for both twins: a float could not tell the ranks of long arrays apart.
inline Place place_of(double order, int64_t n) {
  const int64_t last = n - 1;
  const double at = order * double(last);
  const int64_t rank = minimum(static_cast<int64_t>(at), last);
  return {rank, rank == last ? 0.0 : at - double(rank)};
}

// In double precision as well: a fraction that became 1 as a float would multiply an infinite lower one by zero.
template <class Real> Real between(Real lower, Real upper, double fraction) {
  if (fraction == 0 || lower == upper) return lower; // the upper one may be infinite; equal ones stay what they are
  return static_cast<Real>((1 - fraction) * double(lower) + fraction * double(upper));
}

template <class Real> void quantiles_from_sorted(const QuantilesRun<Real>& run, const Real* sorted, Real* out) {
  if (!out) return; // not asked for
  for (int64_t k = 0; k < run.order_count; ++k) {
    const Place place = place_of(double(run.orders[k]), run.n);
    out[k] = between(sorted[place.rank], sorted[minimum(place.rank + 1, run.n - 1)], place.fraction);
  }
}

template <class Real>
void quantiles_by_selection(const QuantilesRun<Real>& run, const Real* x, Real* buffer, Real* out) {
  using Key = typename RealKeys<Real>::Key;
  if (!out) return; // not asked for
  for (int64_t k = 0; k < run.order_count; ++k) {
    const Place place = place_of(double(run.orders[k]), run.n);
    const NeighbourPair<Real> pair = select_pair(x, run.n, place.rank, reinterpret_cast<Key*>(buffer));
    out[k] = between(pair.lower, pair.upper, place.fraction);
  }
}

template <class Real> void _vSSQuantilesThreader(int64_t iteration, int32_t thread, int32_t, void* context) {
  const QuantilesRun<Real>& run = *static_cast<const QuantilesRun<Real>*>(context);
  const int64_t v = run.variables[iteration], n = run.n;
  const Column<const Real> source = column(run.data, run.rows, v, n, run.p);
  Real *work = run.work + thread * 2 * n, *scratch = work + n;
  Real* out = run.quantiles ? run.quantiles + v * run.order_count : nullptr;
  if (run.order_statistics) {
    const Column<Real> target = column(run.order_statistics, run.output_rows, v, n, run.p);
    Real* sorted = target.step == 1 ? target.base : work;
    copy_column(source, Column<Real>{sorted, 1}, n);
    sort_reals(sorted, scratch, n);
    if (target.step != 1) copy_column(Column<const Real>{sorted, 1}, target, n);
    if (out) quantiles_from_sorted(run, sorted, out);
    return;
  }
  if (run.order_count < sort_from_orders) {
    const Real* x = source.base;
    if (source.step != 1) {
      copy_column(source, Column<Real>{work, 1}, n);
      x = work;
    }
    return quantiles_by_selection(run, x, scratch, out);
  }
  copy_column(source, Column<Real>{work, 1}, n);
  sort_reals(work, scratch, n);
  quantiles_from_sorted(run, work, out);
}

template <class Real> int32_t check(const SSTask* task, uint64_t estimate_mask, uint64_t method_mask) {
  if (!task) return TARN_SS_ERROR_NULL_TASK;
  if (!task->observation_storage) return TARN_SS_ERROR_NULL_STORAGE;
  if (!is_storage(read_integer(task, task->observation_storage))) return TARN_SS_ERROR_STORAGE;
  if (estimate_mask & TARN_SS_QUANTILES) {
    if (!task->quantiles) return -4023;
    if (!task->quantile_orders) return -4021;
    if (!task->quantile_order_count || read_integer(task, task->quantile_order_count) < 0)
      return TARN_SS_ERROR_QUANTILE_ORDERS;
    if (!orders_valid(reals<Real>(task->quantile_orders), read_integer(task, task->quantile_order_count)))
      return TARN_SS_ERROR_QUANTILE_ORDERS;
  }
  if (estimate_mask & TARN_SS_ORDER_STATISTICS) {
    if (!task->order_statistics) return -4024;
    if (!task->order_statistics_storage) return TARN_SS_ERROR_NULL_STORAGE;
    if (!is_storage(read_integer(task, task->order_statistics_storage))) return TARN_SS_ERROR_STORAGE;
  }
  if (!(method_mask & TARN_SS_METHOD_FAST)) return TARN_SS_ERROR_METHOD;
  return check_count_and_data(task);
}

template <class Real>
int32_t quantiles(const SSTask* task, uint64_t estimate_mask, uint64_t method_mask, const tarn_threader* threader) {
  const int32_t status = check<Real>(task, estimate_mask, method_mask);
  if (status != TARN_SS_OK) return status;
  QuantilesRun<Real> run = {};
  run.task = task;
  run.n = read_integer(task, task->observation_count);
  run.p = read_integer(task, task->dimension);
  run.data = reals<Real>(task->observations);
  run.rows = run.p == 1 || stores_rows(read_integer(task, task->observation_storage));
  if (estimate_mask & TARN_SS_QUANTILES) {
    run.quantiles = reals<Real>(task->quantiles);
    run.orders = reals<Real>(task->quantile_orders);
    run.order_count = read_integer(task, task->quantile_order_count);
  }
  if (estimate_mask & TARN_SS_ORDER_STATISTICS) {
    run.order_statistics = reals<Real>(task->order_statistics);
    run.output_rows = run.p == 1 || stores_rows(read_integer(task, task->order_statistics_storage));
  }
  if (run.order_count == 0 && !run.order_statistics) return TARN_SS_OK;

  constexpr int64_t memory = int64_t(1) << 30;
  const int64_t threads = minimum(minimum(max_threads(threader), run.p), maximum(1, memory / 8 / run.n));
  // A caller without memory gets no result and no status here: that is the promise of this entry.
  int64_t* variables = allocate<int64_t>(run.p);
  if (!variables) return TARN_SS_OK;
  run.work = run.n > INT64_MAX / 64 / threads ? nullptr : allocate<Real>(threads * 2 * run.n);
  if (run.work) {
    run.variables = variables;
    const int64_t count = list_selected(task, run.p, variables);
    run_loop(threader, count, static_cast<int32_t>(threads), &run, _vSSQuantilesThreader<Real>);
  }
  tarn_serv_deallocate(run.work);
  tarn_serv_deallocate(variables);
  return TARN_SS_OK;
}

}
}

#define TARN_QUANTILES(t, Real)                                                                                        \
  TARN_EXPORT int32_t _kest##t##SSQuantiles(void* task, uint64_t estimate_mask, uint64_t method_mask,                  \
                                            const tarn_threader* threader) {                                           \
    return tarn::stats::quantiles<Real>(static_cast<const SSTask*>(task), estimate_mask, method_mask, threader);       \
  }
TARN_TWINS(TARN_QUANTILES)
