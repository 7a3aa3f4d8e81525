#pragma once

#include <stdint.h>

namespace tarn::stats {

// a[i] = 1 / sqrt(a[i]) by the vector kernels.
void inverse_sqrt(int64_t n, double* a);
void inverse_sqrt(int64_t n, float* a);

}
