#include "bench/stats/peers.h"

#include <gsl/gsl_statistics_double.h>

namespace tarn::bench {

void gsl_moments(const double* x, int64_t n, int64_t p, bool rows, int orders, double* out) {
  const size_t step = rows ? 1 : size_t(p), count = size_t(n);
  for (int64_t j = 0; j < p; ++j) {
    const double* from = rows ? x + j * n : x + j;
    out[j] = gsl_stats_mean(from, step, count);
    out[p + j] = gsl_stats_variance_m(from, step, count, out[j]);
    if (orders < 4) continue;
    const double deviation = gsl_stats_sd_m(from, step, count, out[j]);
    out[2 * p + j] = gsl_stats_skew_m_sd(from, step, count, out[j], deviation);
    out[3 * p + j] = gsl_stats_kurtosis_m_sd(from, step, count, out[j], deviation);
  }
}

}
