#include "bench/stats/peers.h"

#include <algorithm>
#include <vector>

#define ARMA_DONT_USE_WRAPPER
#define ARMA_DONT_USE_LAPACK
#define ARMA_DONT_USE_OPENMP
#include <Eigen/Core>
#include <armadillo>

extern "C" void dsyrk_(const char*, const char*, const int*, const int*, const double*, const double*, const int*,
                       const double*, double*, const int*);
extern "C" void dgemv_(const char*, const int*, const int*, const double*, const double*, const int*, const double*,
                       const int*, const double*, double*, const int*);
extern "C" void dsyr_(const char*, const int*, const double*, const double*, const int*, double*, const int*);

namespace tarn::bench {

namespace {

// Four sums side by side, which is what it takes to keep the adders busy.
template <int Orders> void row_sums(const double* x, int64_t n, double* out) {
  double sums[Orders][8] = {};
  int64_t i = 0;
  for (; i + 8 <= n; i += 8) {
    for (int u = 0; u < 8; ++u) {
      double power = 1;
      for (int k = 0; k < Orders; ++k) sums[k][u] += power *= x[i + u];
    }
  }
  for (int k = 0; k < Orders; ++k) {
    out[k] = 0;
    for (double sum : sums[k]) out[k] += sum;
  }
  for (; i < n; ++i) {
    double power = 1;
    for (int k = 0; k < Orders; ++k) out[k] += power *= x[i];
  }
}

template <int Orders> void column_sums(const double* x, int64_t n, int64_t p, double* out) {
  std::fill(out, out + Orders * p, 0.0);
  for (int64_t i = 0; i < n; ++i) {
    for (int64_t j = 0; j < p; ++j) {
      double power = 1;
      for (int k = 0; k < Orders; ++k) out[k * p + j] += power *= x[i * p + j];
    }
  }
}

}

void plain_moments(const double* x, int64_t n, int64_t p, bool rows, int orders, double* out) {
  if (!rows && p > 1) return orders == 2 ? column_sums<2>(x, n, p, out) : column_sums<4>(x, n, p, out);
  for (int64_t j = 0; j < p; ++j)
    orders == 2 ? row_sums<2>(x + j * n, n, out + j * orders) : row_sums<4>(x + j * n, n, out + j * orders);
}

void plain_minmax(const double* x, int64_t n, int64_t p, bool rows, double* out) {
  if (rows) {
    for (int64_t j = 0; j < p; ++j) {
      double low[8], high[8];
      for (int u = 0; u < 8; ++u) low[u] = high[u] = x[j * n];
      for (int64_t i = 0; i + 8 <= n; i += 8) {
        for (int u = 0; u < 8; ++u) {
          const double value = x[j * n + i + u];
          low[u] = value < low[u] ? value : low[u];
          high[u] = value > high[u] ? value : high[u];
        }
      }
      out[2 * j] = *std::min_element(low, low + 8);
      out[2 * j + 1] = *std::max_element(high, high + 8);
    }
    return;
  }
  std::copy(x, x + p, out);
  std::copy(x, x + p, out + p);
  for (int64_t i = 0; i < n; ++i) {
    for (int64_t j = 0; j < p; ++j) {
      out[j] = std::min(out[j], x[i * p + j]);
      out[p + j] = std::max(out[p + j], x[i * p + j]);
    }
  }
}

void eigen_moments(const double* x, int64_t n, int64_t p, bool rows, int orders, double* out) {
  using Matrix = Eigen::Map<const Eigen::ArrayXXd>;
  Eigen::Map<Eigen::ArrayXd> result[4] = {{out, p}, {out + p, p}, {out + 2 * p, p}, {out + 3 * p, p}};
  if (rows) {
    const Matrix m(x, n, p);
    for (int64_t j = 0; j < p; ++j) {
      result[0][j] = m.col(j).sum();
      result[1][j] = m.col(j).square().sum();
      if (orders == 4) result[2][j] = m.col(j).cube().sum();
      if (orders == 4) result[3][j] = m.col(j).square().square().sum();
    }
    return;
  }
  const Matrix m(x, p, n);
  result[0] = m.rowwise().sum();
  result[1] = m.square().rowwise().sum();
  if (orders == 4) result[2] = m.cube().rowwise().sum();
  if (orders == 4) result[3] = m.square().square().rowwise().sum();
}

void armadillo_moments(const double* x, int64_t n, int64_t p, bool rows, double* out) {
  const arma::mat m(const_cast<double*>(x), arma::uword(rows ? n : p), arma::uword(rows ? p : n), false, true);
  const arma::mat mean = arma::mean(m, rows ? 0 : 1), variance = arma::var(m, 0, rows ? 0 : 1);
  std::copy(mean.begin(), mean.end(), out);
  std::copy(variance.begin(), variance.end(), out + p);
}

void blas_covariance(const double* x, int64_t n, int64_t p, bool rows, double* mean, double* out) {
  static std::vector<double> ones;
  ones.resize(size_t(n), 1.0);
  const int np = int(p), nn = int(n), one = 1, leading = rows ? nn : np;
  const double scale = 1.0 / double(n), unit = 1, zero = 0, minus = -double(n), factor = 1.0 / double(n - 1);
  const int m = rows ? nn : np, k = rows ? np : nn;
  dgemv_(rows ? "T" : "N", &m, &k, &scale, x, &leading, ones.data(), &one, &zero, mean, &one);
  dsyrk_("U", rows ? "T" : "N", &np, &nn, &unit, x, &leading, &zero, out, &np);
  dsyr_("U", &np, &minus, mean, &one, out, &np);
  for (int64_t i = 0; i < p * p; ++i) out[i] *= factor;
}

void std_sort(double* x, int64_t n) { std::sort(x, x + n); }

double std_quantile(double* x, int64_t n, double order) {
  const double at = order * double(n - 1);
  const int64_t rank = int64_t(at);
  std::nth_element(x, x + rank, x + n);
  const double lower = x[rank];
  if (rank == n - 1) return lower;
  return lower + (at - double(rank)) * (*std::min_element(x + rank + 1, x + n) - lower);
}

}
