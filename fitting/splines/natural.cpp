#include "fitting/splines/natural.h"
#include "fitting/splines/variants.h"

namespace tarn::fitting {
namespace {

#define TARN_VARIANT(K, L, G, C)                                                                                       \
  template <class Real> void _v1DCS##K##Y##L##G##C##Threader(int64_t slice, int32_t, int32_t, void* context) {         \
    natural_slice<Real, words::L, words::G, words::at_##C>(slice, context);                                            \
  }                                                                                                                    \
  template <class Real> int32_t _v1DCS##K##Y##L##G##C(const DFTask* task, const tarn_threader* threader) {             \
    return natural_cubic<Real, words::L, words::G, words::at_##C>(task, threader,                                      \
                                                                  _v1DCS##K##Y##L##G##C##Threader<Real>);              \
  }
TARN_BY_PLACE_AND_CONDITION(TARN_VARIANT, Natural)

using Variant = int32_t (*)(const DFTask*, const tarn_threader*);
#define TARN_ENTRY(K, L, G, C) _v1DCS##K##Y##L##G##C<Real>,
template <class Real>
constexpr Variant __DispatchNatural[places * column_count] = {TARN_BY_PLACE_AND_CONDITION(TARN_ENTRY, Natural)};
#define TARN_HOLD(K, L, G, C)                                                                                          \
  static_assert(__DispatchNatural<double>[place_of(words::L, words::G, words::at_##C)] ==                              \
                _v1DCS##K##Y##L##G##C<double>);
TARN_BY_PLACE_AND_CONDITION(TARN_HOLD, Natural)

template <class Real> int32_t construct(const DFTask* task, int64_t method, const tarn_threader* threader) {
  if (!task) return TARN_DF_ERROR_NULL_TASK;
  if (method != 0) return TARN_DF_ERROR_METHOD;
  if (task->nx < 2 || (task->nx == 2 && task->bcType == TARN_DF_BC_FREE_END)) return TARN_DF_ERROR_NX;
  if (!is_storage_hint(task->yHint)) return TARN_DF_ERROR_Y_HINT;
  int64_t column;
  if (const int32_t status = find_column(task, false, &column)) return status;
  if (const int32_t status = check_pointers(task)) return status;
  return __DispatchNatural<Real>[place_of(is_interleaved(task), is_uniform(task), column)](task, threader);
}

}
}

#define TARN_CONSTRUCTOR(t, Real)                                                                                      \
  TARN_EXPORT int32_t tarn_df_kernel_##t##DFNaturalCubicSpline1D(DFTask* task, int64_t, int64_t method,                \
                                                                 const tarn_threader* threader) {                      \
    return tarn::fitting::construct<Real>(task, method, threader);                                                     \
  }
TARN_DF_TWINS(TARN_CONSTRUCTOR)
