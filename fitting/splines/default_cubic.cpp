#include "fitting/splines/default_cubic.h"
#include "fitting/splines/variants.h"

namespace tarn::fitting {
namespace {

constexpr int64_t min_points = 3;

#define TARN_VARIANT(K, L, G, C)                                                                                       \
  template <class Real> int32_t _v1DCS##K##Y##L##G##C(const DFTask* task) {                                            \
    return default_cubic<Real, words::L, words::G, words::at_##C>(task);                                               \
  }
TARN_BY_PLACE_AND_CONDITION(TARN_VARIANT, Default)

using Variant = int32_t (*)(const DFTask*);
#define TARN_ENTRY(K, L, G, C) _v1DCS##K##Y##L##G##C<Real>,
template <class Real>
constexpr Variant __DispatchDefault[places * column_count] = {TARN_BY_PLACE_AND_CONDITION(TARN_ENTRY, Default)};
#define TARN_HOLD(K, L, G, C)                                                                                          \
  static_assert(__DispatchDefault<double>[place_of(words::L, words::G, words::at_##C)] ==                              \
                _v1DCS##K##Y##L##G##C<double>);
TARN_BY_PLACE_AND_CONDITION(TARN_HOLD, Default)

// The method is not asked for here.
template <class Real> int32_t construct(const DFTask* task) {
  if (!task) return TARN_DF_ERROR_NULL_TASK;
  if (task->nx < min_points) return TARN_DF_ERROR_NX;
  if (!is_storage_hint(task->yHint)) return TARN_DF_ERROR_Y_HINT;
  int64_t column;
  if (const int32_t status = find_column(task, false, &column)) return status;
  if (column == periodic && !task->bc) return TARN_DF_ERROR_NULL_BC;
  if (!task->ic) return TARN_DF_ERROR_IC;
  if (const int32_t status = check_pointers(task)) return status;
  return __DispatchDefault<Real>[place_of(is_interleaved(task), is_uniform(task), column)](task);
}

}
}

#define TARN_CONSTRUCTOR(t, Real)                                                                                      \
  TARN_EXPORT int32_t tarn_df_kernel_##t##DFDefaultCubicSpline1D(DFTask* task, int64_t, int64_t,                       \
                                                                 const tarn_threader*) {                               \
    return tarn::fitting::construct<Real>(task);                                                                       \
  }
TARN_DF_TWINS(TARN_CONSTRUCTOR)
