// What the statistics are measured against, compiled for the instruction sets that the library itself uses: plain loops
// and the C++ library, Eigen, Armadillo and Highway's sort in their SSE4 form; GSL as it is installed.
#pragma once

#include <cstdint>

namespace tarn::bench {

// Sums of powers 1 to orders of each variable, by the loop that first comes to mind.
void plain_moments(const double* x, int64_t n, int64_t p, bool rows, int orders, double* out);
// Minimum and maximum of each variable.
void plain_minmax(const double* x, int64_t n, int64_t p, bool rows, double* out);
void eigen_moments(const double* x, int64_t n, int64_t p, bool rows, int orders, double* out);
void armadillo_moments(const double* x, int64_t n, int64_t p, bool rows, double* out); // mean and variance
void gsl_moments(const double* x, int64_t n, int64_t p, bool rows, int orders, double* out);
// Mean by a product with ones, then the rank-k update of BLAS.
void blas_covariance(const double* x, int64_t n, int64_t p, bool rows, double* mean, double* out);
void std_sort(double* x, int64_t n);
void highway_sort(double* x, int64_t n);
double std_quantile(double* x, int64_t n, double order);

}
