// The entries of both precisions under one name each, for tests written once over Real and the width of integers; and a
// task that goes away with its scope.
#pragma once

#include <cstdint>
#include <vector>

#include "tarn/fitting.h"

namespace tarn::test {

template <class Real> struct Fitting;
#define TARN_TEST_FITTING(t, Type)                                                                                     \
  template <> struct Fitting<Type> {                                                                                   \
    static constexpr auto make = tarn_df_kernel_##t##NewTask1D;                                                        \
    static constexpr auto edit = tarn_df_kernel_##t##EditPPSpline1D;                                                   \
    static constexpr auto edit_pointer = tarn_df_kernel_##t##EditPtr;                                                  \
    static constexpr auto edit_indexed = tarn_df_kernel_##t##EditIdxPtr;                                               \
    static constexpr auto search = tarn_df_kernel_##t##DFSearch1D;                                                     \
    static constexpr auto interpolate = tarn_df_kernel_##t##DFInterpolate1D;                                           \
    static constexpr auto integrate = tarn_df_kernel_##t##DFIntegrate1D;                                               \
    using SearchCallback = tarn_df_##t##search_cb;                                                                     \
    using EvalCallback = tarn_df_##t##eval_cb;                                                                         \
    using IntegrCallback = tarn_df_##t##integr_cb;                                                                     \
  };
TARN_TEST_FITTING(d, double)
TARN_TEST_FITTING(s, float)

// Owns copies of the partition, the values and the coefficients that it describes.
template <class Real> class FittingTask {
public:
  FittingTask(std::vector<Real> partition, int64_t points, int64_t x_hint, bool wide, int64_t functions = 0,
              std::vector<Real> values = {}, int64_t y_hint = 0)
      : x(std::move(partition)), y(std::move(values)) {
    status = Fitting<Real>::make(&record, points, x.data(), x_hint, functions, y.empty() ? nullptr : y.data(), y_hint,
                                 wide ? 1 : 0);
  }
  FittingTask(std::vector<Real> partition, int64_t x_hint, bool wide)
      : FittingTask(partition, static_cast<int64_t>(partition.size()), x_hint, wide) {}
  ~FittingTask() {
    if (record) tarn_df_kernel_DeleteTask(&record);
  }
  FittingTask(const FittingTask&) = delete;
  FittingTask& operator=(const FittingTask&) = delete;
  operator DFTask*() { return record; }
  DFTask* operator->() { return record; }

  std::vector<Real> x, y, coefficients;
  int32_t status = 0;

private:
  DFTask* record = nullptr;
};

}
