#include "fitting/task.h"

namespace tarn::fitting {
namespace {

constexpr int64_t unset = -1;

// The bin of a distance from the left end. A partition that is out of order, or not finite, has distances that fall
// in no bin: they go to the nearest one, so that nothing is written beside the table.
template <class Real> int64_t bin_of(Real distance, Real scale, int64_t bins) {
  const Real scaled = distance * scale;
  if (!(scaled > 0)) return 0;
  return scaled < Real(bins) ? int64_t(scaled) : bins;
}

}

template <class Real> void fill_bins(DFTask* task) {
  const Real* x = reals<Real>(task->x);
  const int64_t n = task->nx;
  const int64_t bins = minimum(maximum(n / points_per_bin, min_bins), max_bins);
  int64_t(*table)[2] = task->binTable;
  task->binCount = bins;
  for (int64_t k = 0; k < bins; ++k) table[k][low] = table[k][high] = unset;
  const Real scale = Real(bins) / (x[n - 1] - x[0]);
  bin_scale<Real>(task) = scale;
  table[0][low] = 0;
  for (int64_t i = 1; i < n; ++i) {
    const int64_t k = bin_of(x[i] - x[0], scale, bins);
    if (k == 0) continue;
    if (table[k - 1][high] == unset) table[k - 1][high] = i;
    table[k + 1][low] = i;
  }
  table[bins - 1][high] = n - 1;
  for (int64_t k = 1; k < bins; ++k)
    if (table[k][low] == unset) table[k][low] = table[k - 1][low];
  for (int64_t k = bins - 2; k >= 0; --k)
    if (table[k][high] == unset) table[k][high] = table[k + 1][high];
  table[bins][low] = table[bins - 1][low];
  table[bins][high] = table[bins - 1][high];
}

template void fill_bins<double>(DFTask*);
template void fill_bins<float>(DFTask*);

}
