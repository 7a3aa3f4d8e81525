#include "stats/basic/inverse_sqrt.h"

#include "stats/square_root.h"

// Until the vector kernels are there.
namespace tarn::stats {
void inverse_sqrt(int64_t n, double* a) {
  for (int64_t i = 0; i < n; ++i) a[i] = 1 / square_root(a[i]);
}
void inverse_sqrt(int64_t n, float* a) {
  for (int64_t i = 0; i < n; ++i) a[i] = 1 / square_root(a[i]);
}
}
