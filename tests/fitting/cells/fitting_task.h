// A task that goes away with its scope.
#pragma once

#include <cstdint>
#include <vector>

#include "fitting/api.h"

namespace tarn::test {

// Owns copies of the partition, the values and the coefficients that it describes.
template <class Real> class FittingTask {
public:
  FittingTask(std::vector<Real> partition, int64_t points, int64_t x_hint, bool wide, int64_t functions = 0,
              std::vector<Real> values = {}, int64_t y_hint = 0)
      : x(std::move(partition)), y(std::move(values)) {
    status = Api<Real>::new_task(&record, points, x.data(), x_hint, functions, y.empty() ? nullptr : y.data(), y_hint,
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
