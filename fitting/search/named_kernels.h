// The kernels of one precision under their names, and their tables by method. Included once in the namespace of each
// precision, where Real is defined and TARN_KERNEL(Name) makes a name; so there is no guard.
//
// The suffixes: 32 and 64 are the width of cells and indices; 64Pack writes 64-bit cells and counts in 32 bits; the form
// without one is told by a word of flags where its cells go.

extern "C" {
#define TARN_SEARCH_METHOD(number, Name, Batch)                                                                        \
  TARN_VISIBLE int32_t TARN_KERNEL(Name##Search1D32)(SearchRun<Real> & run, int64_t count, const Real* site,           \
                                                     void* cell, int64_t) {                                            \
    return search_block<SearchMethod::Name, Real, int32_t, int32_t>(run, count, site, static_cast<int32_t*>(cell));    \
  }                                                                                                                    \
  TARN_VISIBLE int32_t TARN_KERNEL(Name##Search1D64)(SearchRun<Real> & run, int64_t count, const Real* site,           \
                                                     void* cell, int64_t) {                                            \
    return search_block<SearchMethod::Name, Real, int64_t, int64_t>(run, count, site, static_cast<int64_t*>(cell));    \
  }                                                                                                                    \
  TARN_VISIBLE int32_t TARN_KERNEL(Name##Search1D64Pack)(SearchRun<Real> & run, int64_t count, const Real* site,       \
                                                         void* cell, int64_t) {                                        \
    return search_block<SearchMethod::Name, Real, int64_t, int32_t>(run, count, site, static_cast<int64_t*>(cell));    \
  }                                                                                                                    \
  TARN_VISIBLE int32_t TARN_KERNEL(Name##Search1D)(SearchRun<Real> & run, int64_t count, const Real* site, void* cell, \
                                                   int64_t flags) {                                                    \
    if (run.nx >= large_partition) return TARN_KERNEL(Name##Search1D64)(run, count, site, cell, flags);                \
    return (flags & callers_cells) && !(flags & wide_task)                                                             \
               ? TARN_KERNEL(Name##Search1D32)(run, count, site, cell, flags)                                          \
               : TARN_KERNEL(Name##Search1D64Pack)(run, count, site, cell, flags);                                     \
  }
#include "fitting/search/methods.def"
}

#define TARN_SEARCH_METHOD(number, Name, Batch) TARN_KERNEL(Name##Search1D),
constexpr SearchKernel<Real> __Search1DDispatch[] = {
#include "fitting/search/methods.def"
};
#define TARN_SEARCH_METHOD(number, Name, Batch) TARN_KERNEL(Name##Search1D32),
constexpr SearchKernel<Real> __Search1D32Dispatch[] = {
#include "fitting/search/methods.def"
};
#define TARN_SEARCH_METHOD(number, Name, Batch) TARN_KERNEL(Name##Search1D64),
constexpr SearchKernel<Real> __Search1D64Dispatch[] = {
#include "fitting/search/methods.def"
};
#define TARN_SEARCH_METHOD(number, Name, Batch) TARN_KERNEL(Name##Search1D64Pack),
constexpr SearchKernel<Real> __Search1D64PackDispatch[] = {
#include "fitting/search/methods.def"
};

// The rows of the list stand at their numbers.
#define TARN_SEARCH_METHOD(number, Name, Batch)                                                                        \
  static_assert(__Search1DDispatch[number] == TARN_KERNEL(Name##Search1D));
#include "fitting/search/methods.def"

#include "fitting/search/named_batches.h"
