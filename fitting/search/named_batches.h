// The threader functions and batch routines of one precision under their names, and their table by method. Included
// after the kernels, in the same namespace; so there is no guard.

#define TARN_SEARCH_THREADER(Name, suffix)                                                                             \
  void _v1DSearch##Name##Threader##suffix(int64_t k, int32_t, int32_t, void* context) {                                \
    search_share<Real>(context, k, TARN_KERNEL(Name##Search1D##suffix));                                               \
  }
// Packed: the threader of 64-bit cells on a partition that 32 bits count.
#define TARN_SEARCH_BATCH(Name, Packed)                                                                                \
  int32_t _v1DSearch##Name(const SiteBatch<Real>& batch, const tarn_threader* threader) {                              \
    return search_with_threads<SearchMethod::Name>(                                                                    \
        batch, threader, {_v1DSearch##Name##Threader32, _v1DSearch##Name##Threader64, Packed});                        \
  }
#define TARN_SEARCH_BATCH_OF_THREE(Name)                                                                               \
  TARN_SEARCH_THREADER(Name, 32)                                                                                       \
  TARN_SEARCH_THREADER(Name, 64)                                                                                       \
  TARN_SEARCH_THREADER(Name, 64Pack)                                                                                   \
  TARN_SEARCH_BATCH(Name, _v1DSearch##Name##Threader64Pack)
#define TARN_SEARCH_BATCH_OF_CALLER(Name, Batch)                                                                       \
  int32_t _v1DSearch##Batch(const SiteBatch<Real>& batch, const tarn_threader*) {                                      \
    return search_by_caller<SearchMethod::Name>(batch);                                                                \
  }

TARN_SEARCH_BATCH_OF_THREE(Uniform)
TARN_SEARCH_BATCH_OF_THREE(QuasiUniform)
TARN_SEARCH_BATCH_OF_THREE(Sorted)
TARN_SEARCH_BATCH_OF_THREE(Peak)
TARN_SEARCH_THREADER(Hybrid, 32)
TARN_SEARCH_THREADER(Hybrid, 64)
TARN_SEARCH_BATCH(Hybrid, _v1DSearchHybridThreader64)
TARN_SEARCH_BATCH_OF_CALLER(UserDef, UserDef)
TARN_SEARCH_BATCH_OF_CALLER(UniUserDef, UserDefUni)

#define TARN_SEARCH_METHOD(number, Name, Batch) _v1DSearch##Batch,
constexpr BatchSearch<Real> __SearchDispatch[] = {
#include "fitting/search/methods.def"
};
#undef TARN_SEARCH_THREADER
#undef TARN_SEARCH_BATCH
#undef TARN_SEARCH_BATCH_OF_THREE
#undef TARN_SEARCH_BATCH_OF_CALLER
