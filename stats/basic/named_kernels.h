// The kernels of one precision under their names, and its tables. Included once in the namespace of each precision,
// where Real is defined; so there is no guard.
//
// A name is _vSSBasic, the family, R or C for the storage, W or _ for weights, the raw and the central moments kept,
// and for one pass C or _ for cross products: the words are the template's arguments.

#define TARN_ONE_PASS(storage, weight, scenario, raw, central, cross)                                                  \
  void _vSSBasic1p##storage##weight##raw##central##cross(const KernelArguments<Real>& a) {                             \
    one_pass<Real, words::columns_##storage, words::weighted_##weight, words::raw, words::central,                     \
             words::cross_##cross>(a);                                                                                 \
  }
#define TARN_FAST(storage, weight, scenario, raw)                                                                      \
  void _vSSBasicFast##storage##weight##raw(const KernelArguments<Real>& a) {                                           \
    fast<Real, words::columns_##storage, words::weighted_##weight, words::raw>(a);                                     \
  }
#define TARN_TWO_PASS(storage, weight, scenario, raw, central)                                                         \
  void _vSSBasic2p##storage##weight##raw##central(const KernelArguments<Real>& a) {                                    \
    two_pass<Real, words::columns_##storage, words::weighted_##weight, words::raw, words::central>(a);                 \
  }
#include "stats/basic/kernels.def"

#define TARN_ONE_PASS(storage, weight, scenario, raw, central, cross) _vSSBasic1p##storage##weight##raw##central##cross,
constexpr Kernel<Real> _kernel_1pass_funcs_table[] = {
#include "stats/basic/kernels.def"
};
#define TARN_FAST(storage, weight, scenario, raw) _vSSBasicFast##storage##weight##raw,
constexpr Kernel<Real> _kernel_fast_funcs_table[] = {
#include "stats/basic/kernels.def"
};
#define TARN_TWO_PASS(storage, weight, scenario, raw, central) _vSSBasic2p##storage##weight##raw##central,
constexpr Kernel<Real> _kernel_2pass_funcs_table[] = {
#include "stats/basic/kernels.def"
};

// The rows of the list stand where the index formulas look for them.
#define TARN_ONE_PASS(storage, weight, scenario, raw, central, cross)                                                  \
  static_assert(_kernel_1pass_funcs_table[one_pass_index(words::columns_##storage, words::weighted_##weight, scenario, \
                                                         words::cross_##cross)] ==                                     \
                _vSSBasic1p##storage##weight##raw##central##cross);
#define TARN_FAST(storage, weight, scenario, raw)                                                                      \
  static_assert(                                                                                                       \
      _kernel_fast_funcs_table[scenario_index(words::columns_##storage, words::weighted_##weight, scenario)] ==        \
      _vSSBasicFast##storage##weight##raw);
#define TARN_TWO_PASS(storage, weight, scenario, raw, central)                                                         \
  static_assert(                                                                                                       \
      _kernel_2pass_funcs_table[scenario_index(words::columns_##storage, words::weighted_##weight, scenario)] ==       \
      _vSSBasic2p##storage##weight##raw##central);
#include "stats/basic/kernels.def"
