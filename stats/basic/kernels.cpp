#include "stats/basic/kernels.h"

#include "stats/precisions.h"

namespace tarn::stats {

constexpr int one_pass_index(bool columns, bool weighted, int scenario, bool cross) {
  return (columns ? 16 : 0) + (weighted ? 8 : 0) + scenario * 2 + (cross ? 1 : 0);
}
constexpr int scenario_index(bool columns, bool weighted, int scenario) {
  return (columns ? 8 : 0) + (weighted ? 4 : 0) + scenario;
}

namespace d {
using Real = double;
#include "stats/basic/named_kernels.h"
}
namespace s {
using Real = float;
#include "stats/basic/named_kernels.h"
}

#define TARN_FIND_KERNELS(t, Real)                                                                                     \
  static_assert(sizeof(t::_kernel_1pass_funcs_table) == 32 * sizeof(Kernel<Real>));                                    \
  static_assert(sizeof(t::_kernel_fast_funcs_table) == 16 * sizeof(Kernel<Real>));                                     \
  static_assert(sizeof(t::_kernel_2pass_funcs_table) == 16 * sizeof(Kernel<Real>));                                    \
  template <> Kernel<Real> one_pass_kernel<Real>(bool columns, bool weighted, int scenario, bool cross) {              \
    return t::_kernel_1pass_funcs_table[one_pass_index(columns, weighted, scenario, cross)];                           \
  }                                                                                                                    \
  template <> Kernel<Real> fast_kernel<Real>(bool columns, bool weighted, int scenario) {                              \
    return t::_kernel_fast_funcs_table[scenario_index(columns, weighted, scenario)];                                   \
  }                                                                                                                    \
  template <> Kernel<Real> two_pass_kernel<Real>(bool columns, bool weighted, int scenario) {                          \
    return t::_kernel_2pass_funcs_table[scenario_index(columns, weighted, scenario)];                                  \
  }
TARN_TWINS(TARN_FIND_KERNELS)

}
