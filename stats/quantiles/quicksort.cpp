#include "stats/quantiles/quicksort.h"

#include "service/service.h"
#include "stats/precisions.h"
#include "tarn/stats.h"

using namespace tarn::stats;

#define TARN_QUICKSORT(t, Real)                                                                                        \
  TARN_EXPORT void __kest##t##QSort(int64_t n, Real* array) { quicksort(Strided<Real, 1>{array, 1}, n); }              \
  TARN_EXPORT void __kest##t##QSortStep(int64_t n, Real* array, int64_t stride) {                                      \
    quicksort(Strided<Real, 0>{array, stride}, n);                                                                     \
  }                                                                                                                    \
  TARN_EXPORT Real __kest##t##QSortSelect(int64_t n, Real* array, int64_t k) {                                         \
    return quickselect(Strided<Real, 1>{array, 1}, n, k);                                                              \
  }
TARN_TWINS(TARN_QUICKSORT)
