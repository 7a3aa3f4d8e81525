#include "fitting/splines/quadratic.h"
#include "fitting/splines/subbotin.h"
#include "fitting/splines/variants.h"

namespace tarn::fitting {
namespace {

using Variant = int32_t (*)(const DFTask*);

#define TARN_VARIANT(K, L, G)                                                                                          \
  template <class Real> int32_t _v1DQS##K##Y##L##G(const DFTask* task) {                                               \
    return standard_quadratic<Real, words::L, words::G>(task);                                                         \
  }
TARN_BY_PLACE(TARN_VARIANT, Std)
#undef TARN_VARIANT
#define TARN_ENTRY(K, L, G) _v1DQS##K##Y##L##G<Real>,
template <class Real> constexpr Variant __Dispatch_Std[places] = {TARN_BY_PLACE(TARN_ENTRY, Std)};
#undef TARN_ENTRY
#define TARN_HOLD(K, L, G)                                                                                             \
  static_assert(__Dispatch_Std<double>[place_of(words::L, words::G)] == _v1DQS##K##Y##L##G<double>);
TARN_BY_PLACE(TARN_HOLD, Std)
#undef TARN_HOLD

constexpr EndCondition left_condition(Column column) {
  return column == both_1st || column == left_1st_right_2nd ? EndCondition::first_derivative
                                                            : EndCondition::second_derivative;
}
constexpr EndCondition right_condition(Column column) {
  return column == both_1st || column == left_2nd_right_1st ? EndCondition::first_derivative
                                                            : EndCondition::second_derivative;
}

#define TARN_VARIANT(S, L, G, B)                                                                                       \
  template <class Real> int32_t _v1DQSSubb##S##Y##L##G##B(const DFTask* task) {                                        \
    return subbotin_quadratic<Real, words::S, words::L, words::G, left_condition(words::at_##B),                       \
                              right_condition(words::at_##B)>(task);                                                   \
  }
#define TARN_NO_VARIANT(S, L, G)
TARN_SUBBOTIN(TARN_VARIANT, TARN_NO_VARIANT)
#define TARN_ENTRY(S, L, G, B) _v1DQSSubb##S##Y##L##G##B<Real>,
#define TARN_NULL_ENTRY(S, L, G) nullptr,
template <class Real>
constexpr Variant __Dispatch_Subb[2 * places * column_count] = {TARN_SUBBOTIN(TARN_ENTRY, TARN_NULL_ENTRY)};
#define TARN_HOLD(S, L, G, B)                                                                                          \
  static_assert(__Dispatch_Subb<double>[place_of(words::S, words::L, words::G, words::at_##B)] ==                      \
                _v1DQSSubb##S##Y##L##G##B<double>);
TARN_SUBBOTIN(TARN_HOLD, TARN_NO_VARIANT)

template <class Real> int32_t construct_standard(const DFTask* task) {
  if (task->bcType != TARN_DF_BC_FIRST_MIDDLE) return TARN_DF_ERROR_BC_TYPE;
  if (!task->bc) return TARN_DF_ERROR_NULL_BC;
  if (const int32_t status = check_pointers(task)) return status;
  return __Dispatch_Std<Real>[place_of(is_interleaved(task), is_uniform(task))](task);
}

template <class Real> int32_t construct_subbotin(const DFTask* task) {
  if (!(task->icType & TARN_DF_IC_SUBGRID)) return TARN_DF_ERROR_IC_TYPE;
  int64_t column;
  if (const int32_t status = find_column(task, false, &column)) return status;
  const Variant variant =
      __Dispatch_Subb<Real>[place_of(has_uniform_subgrid(task), is_interleaved(task), is_uniform(task), column)];
  if (!variant) return TARN_DF_ERROR_BC_TYPE;
  if (const int32_t status = check_pointers(task)) return status;
  return variant(task);
}

template <class Real> int32_t construct(const DFTask* task, int64_t method) {
  if (!task) return TARN_DF_ERROR_NULL_TASK;
  if (method != 0) return TARN_DF_ERROR_METHOD;
  if (task->nx < 2) return TARN_DF_ERROR_NX;
  if (!is_storage_hint(task->yHint)) return TARN_DF_ERROR_Y_HINT;
  if (task->splineType == TARN_DF_TYPE_DEFAULT) return construct_standard<Real>(task);
  if (task->splineType == TARN_DF_TYPE_SUBBOTIN) return construct_subbotin<Real>(task);
  return TARN_DF_ERROR_METHOD;
}

}
}

#define TARN_CONSTRUCTOR(t, Real)                                                                                      \
  TARN_EXPORT int32_t tarn_df_kernel_##t##DFQuadraticSpline1D(DFTask* task, int64_t, int64_t method,                   \
                                                              const tarn_threader*) {                                  \
    return tarn::fitting::construct<Real>(task, method);                                                               \
  }
TARN_DF_TWINS(TARN_CONSTRUCTOR)
