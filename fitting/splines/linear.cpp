#include "fitting/splines/linear.h"
#include "fitting/splines/variants.h"

namespace tarn::fitting {
namespace {

#define TARN_VARIANT(K, L, G)                                                                                          \
  template <class Real> void _v1D##K##ThreaderY##L##G(int64_t item, int32_t, int32_t, void* context) {                 \
    linear_item<Real, words::L, words::G>(item, context);                                                              \
  }                                                                                                                    \
  template <class Real> int32_t _v1DLS##K##Y##L##G(const DFTask* task, const tarn_threader* threader) {                \
    return linear_spline<Real, words::L, words::G>(task, threader, _v1D##K##ThreaderY##L##G<Real>);                    \
  }
TARN_BY_PLACE(TARN_VARIANT, Linear)

using Variant = int32_t (*)(const DFTask*, const tarn_threader*);
#define TARN_ENTRY(K, L, G) _v1DLS##K##Y##L##G<Real>,
template <class Real> constexpr Variant __DispatchLinear[places] = {TARN_BY_PLACE(TARN_ENTRY, Linear)};
#define TARN_HOLD(K, L, G)                                                                                             \
  static_assert(__DispatchLinear<double>[place_of(words::L, words::G)] == _v1DLS##K##Y##L##G<double>);
TARN_BY_PLACE(TARN_HOLD, Linear)

template <class Real> int32_t construct(const DFTask* task, int64_t method, const tarn_threader* threader) {
  if (!task) return TARN_DF_ERROR_NULL_TASK;
  if (method != 0) return TARN_DF_ERROR_METHOD;
  if (task->nx < 2) return TARN_DF_ERROR_NX;
  if (!is_storage_hint(task->yHint)) return TARN_DF_ERROR_Y_HINT;
  if (const int32_t status = check_pointers(task)) return status;
  return __DispatchLinear<Real>[place_of(is_interleaved(task), is_uniform(task))](task, threader);
}

}
}

#define TARN_CONSTRUCTOR(t, Real)                                                                                      \
  TARN_EXPORT int32_t tarn_df_kernel_##t##DFLinearSpline1D(DFTask* task, int64_t, int64_t method,                      \
                                                           const tarn_threader* threader) {                            \
    return tarn::fitting::construct<Real>(task, method, threader);                                                     \
  }
TARN_DF_TWINS(TARN_CONSTRUCTOR)
