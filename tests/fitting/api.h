// The functions of both precisions under one name each, so that a test is written once: Api<double>, Api<float>.
#pragma once

#include "tarn/fitting.h"

namespace tarn::test {

template <class Real> struct Api;
#define TARN_TEST_API(t, Real)                                                                                         \
  template <> struct Api<Real> {                                                                                       \
    static constexpr auto new_task = tarn_df_kernel_##t##NewTask1D;                                                    \
    static constexpr auto edit_spline = tarn_df_kernel_##t##EditPPSpline1D;                                            \
    static constexpr auto edit_pointer = tarn_df_kernel_##t##EditPtr;                                                  \
    static constexpr auto edit_pointer_at = tarn_df_kernel_##t##EditIdxPtr;                                            \
    static constexpr auto query_pointer = tarn_df_kernel_##t##QueryPtr;                                                \
    static constexpr auto query_pointer_at = tarn_df_kernel_##t##QueryIdxPtr;                                          \
  }
TARN_TEST_API(d, double);
TARN_TEST_API(s, float);
#undef TARN_TEST_API

}
