// Minimum and maximum: running results against which every observation is compared.
#include "stats/lanes.h"
#include "stats/precisions.h"
#include "stats/task.h"

#include <emmintrin.h>

namespace tarn::stats {
namespace {

// x below m gives x; a tie or a NaN in x keeps m. The instructions themselves: no operator has just this meaning.
inline double lesser(double x, double m) { return x < m ? x : m; }
inline float lesser(float x, float m) { return x < m ? x : m; }
inline Vector<double> lesser(Vector<double> x, Vector<double> m) { return _mm_min_pd(x, m); }
inline Vector<float> lesser(Vector<float> x, Vector<float> m) { return _mm_min_ps(x, m); }
inline double greater(double x, double m) { return x > m ? x : m; }
inline float greater(float x, float m) { return x > m ? x : m; }
inline Vector<double> greater(Vector<double> x, Vector<double> m) { return _mm_max_pd(x, m); }
inline Vector<float> greater(Vector<float> x, Vector<float> m) { return _mm_max_ps(x, m); }

template <class Real> struct Extremes {
  Real *minimum, *maximum; // null when not asked for
};

constexpr int units = 4; // comparisons in flight

template <class Real> void scan_row(const Real* x, int64_t n, Real* lowest, Real* highest) {
  using V = Vector<Real>;
  constexpr int width = lanes<V, Real>;
  V low[units], high[units];
  for (int u = 0; u < units; ++u) {
    low[u] = broadcast<V>(*lowest);
    high[u] = broadcast<V>(*highest);
  }
  int64_t i = 0;
  for (; i + units * width <= n; i += units * width) {
#pragma GCC unroll 4
    for (int u = 0; u < units; ++u) {
      const V value = load<V>(x + i + u * width);
      low[u] = lesser(value, low[u]);
      high[u] = greater(value, high[u]);
    }
  }
  Real l = *lowest, h = *highest;
  for (int u = 0; u < units; ++u) {
    for (int lane = 0; lane < width; ++lane) {
      l = lesser(Real(low[u][lane]), l);
      h = greater(Real(high[u][lane]), h);
    }
  }
  for (; i < n; ++i) {
    l = lesser(x[i], l);
    h = greater(x[i], h);
  }
  *lowest = l;
  *highest = h;
}

// Units vectors of neighbouring variables, from the first observation to the last.
template <class Real, class V, int Units>
void scan_columns(const Real* x, int64_t n, int64_t p, Real* lowest, Real* highest) {
  constexpr int width = lanes<V, Real>;
  V low[Units], high[Units];
  for (int u = 0; u < Units; ++u) {
    low[u] = load<V>(lowest + u * width);
    high[u] = load<V>(highest + u * width);
  }
  for (int64_t i = 0; i < n; ++i, x += p) {
#pragma GCC unroll 4
    for (int u = 0; u < Units; ++u) {
      const V value = load<V>(x + u * width);
      low[u] = lesser(value, low[u]);
      high[u] = greater(value, high[u]);
    }
  }
  for (int u = 0; u < Units; ++u) {
    store(lowest + u * width, low[u]);
    store(highest + u * width, high[u]);
  }
}

// A run of selected variables side by side, in blocks of observations that stay in the cache.
template <class Real>
void scan_run(const Real* data, int64_t n, int64_t p, int64_t first, int64_t last, const Extremes<Real>& out) {
  constexpr int width = lanes<Vector<Real>, Real>, group = units * width;
  constexpr int64_t block = 256;
  Real low[group], high[group];
  const auto scan = [&](auto scanner, int64_t i, int64_t j, int64_t count) {
    for (int64_t k = 0; k < count; ++k) {
      low[k] = out.minimum ? out.minimum[j + k] : Real(0);
      high[k] = out.maximum ? out.maximum[j + k] : Real(0);
    }
    scanner(data + i * p + j, minimum(block, n - i), p, low, high);
    for (int64_t k = 0; k < count; ++k) {
      if (out.minimum) out.minimum[j + k] = low[k];
      if (out.maximum) out.maximum[j + k] = high[k];
    }
  };
  for (int64_t i = 0; i < n; i += block) {
    int64_t j = first;
    for (; j + group <= last; j += group) scan(scan_columns<Real, Vector<Real>, units>, i, j, group);
    for (; j + width <= last; j += width) scan(scan_columns<Real, Vector<Real>, 1>, i, j, width);
    for (; j < last; ++j) scan(scan_columns<Real, Real, 1>, i, j, 1);
  }
}

template <class Real> int32_t check(const SSTask* task, uint64_t estimate_mask, uint64_t method_mask) {
  if (!task) return TARN_SS_ERROR_NULL_TASK;
  if (!task->observation_storage) return TARN_SS_ERROR_NULL_STORAGE;
  if (!is_storage(read_integer(task, task->observation_storage))) return TARN_SS_ERROR_STORAGE;
  if (estimate_mask & TARN_SS_MINIMUM && !task->minimum) return -4015;
  if (estimate_mask & TARN_SS_MAXIMUM && !task->maximum) return -4016;
  if (!(method_mask & (TARN_SS_METHOD_FAST | TARN_SS_METHOD_ONE_PASS))) return TARN_SS_ERROR_METHOD;
  if (!task->observation_count || read_integer(task, task->observation_count) < 1) return TARN_SS_ERROR_OBSERVATIONS;
  if (!task->observations) return TARN_SS_ERROR_NULL_DATA;
  if (!task->dimension || read_integer(task, task->dimension) < 1) return TARN_SS_ERROR_DIMENSION;
  return TARN_SS_OK;
}

template <class Real> int32_t minmax(const SSTask* task, uint64_t estimate_mask, uint64_t method_mask) {
  const int32_t status = check<Real>(task, estimate_mask, method_mask);
  if (status != TARN_SS_OK) return status;
  const int64_t p = read_integer(task, task->dimension), n = read_integer(task, task->observation_count);
  const Real* data = reals<Real>(task->observations);
  const Extremes<Real> out = {estimate_mask & TARN_SS_MINIMUM ? reals<Real>(task->minimum) : nullptr,
                              estimate_mask & TARN_SS_MAXIMUM ? reals<Real>(task->maximum) : nullptr};
  if (!out.minimum && !out.maximum) return TARN_SS_OK;
  const bool rows = stores_rows(read_integer(task, task->observation_storage));
  for (int64_t j = 0; j < p; ++j) {
    if (!selected(task, j)) continue;
    if (rows) {
      Real unused = 0;
      scan_row(data + j * n, n, out.minimum ? out.minimum + j : &unused, out.maximum ? out.maximum + j : &unused);
    } else {
      const int64_t first = j;
      while (j < p && selected(task, j)) ++j;
      scan_run(data, n, p, first, j, out);
    }
  }
  return TARN_SS_OK;
}

}
}

#define TARN_MINMAX(t, Real)                                                                                           \
  TARN_EXPORT int32_t _kest##t##SSMinmax(void* task, uint64_t estimate_mask, uint64_t method_mask,                     \
                                         const tarn_threader*) {                                                       \
    return tarn::stats::minmax<Real>(static_cast<const SSTask*>(task), estimate_mask, method_mask);                    \
  }
TARN_TWINS(TARN_MINMAX)
