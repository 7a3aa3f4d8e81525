// The functions of both precisions under one name each, so that a test is written once: Api<double>, Api<float>.
#pragma once

#include "tarn/fitting.h"

namespace tarn::test {

using Constructor = int32_t (*)(DFTask*, int64_t, int64_t, const tarn_threader*);

template <class Real> struct Api;
#define TARN_TEST_API(t, Real)                                                                                         \
  template <> struct Api<Real> {                                                                                       \
    static constexpr auto new_task = tarn_df_kernel_##t##NewTask1D;                                                    \
    static constexpr auto edit_spline = tarn_df_kernel_##t##EditPPSpline1D;                                            \
    static constexpr auto edit_pointer = tarn_df_kernel_##t##EditPtr;                                                  \
    static constexpr auto edit_pointer_at = tarn_df_kernel_##t##EditIdxPtr;                                            \
    static constexpr auto query_pointer = tarn_df_kernel_##t##QueryPtr;                                                \
    static constexpr auto query_pointer_at = tarn_df_kernel_##t##QueryIdxPtr;                                          \
    static constexpr Constructor linear = tarn_df_kernel_##t##DFLinearSpline1D;                                        \
    static constexpr Constructor quadratic = tarn_df_kernel_##t##DFQuadraticSpline1D;                                  \
    static constexpr Constructor akima = tarn_df_kernel_##t##DFAkimaCubicSpline1D;                                     \
    static constexpr Constructor bessel = tarn_df_kernel_##t##DFBesselCubicSpline1D;                                   \
    static constexpr Constructor hyman = tarn_df_kernel_##t##DFHymanCubicSpline1D;                                     \
    static constexpr Constructor hermite = tarn_df_kernel_##t##DFHermiteCubicSpline1D;                                 \
    static constexpr Constructor natural = tarn_df_kernel_##t##DFNaturalCubicSpline1D;                                 \
    static constexpr Constructor default_cubic = tarn_df_kernel_##t##DFDefaultCubicSpline1D;                           \
    static constexpr auto search = tarn_df_kernel_##t##DFSearch1D;                                                     \
    static constexpr auto interpolate = tarn_df_kernel_##t##DFInterpolate1D;                                           \
    static constexpr auto integrate = tarn_df_kernel_##t##DFIntegrate1D;                                               \
    using SearchCallback = tarn_df_##t##search_cb;                                                                     \
    using EvalCallback = tarn_df_##t##eval_cb;                                                                         \
    using IntegrCallback = tarn_df_##t##integr_cb;                                                                     \
    static constexpr auto solve_directly = t##dtsvb_4dfl;                                                              \
    static constexpr auto factor = t##dttrfb_4dfl;                                                                     \
    static constexpr auto solve_factored = t##dttrsb_4dfl;                                                             \
  }
TARN_TEST_API(d, double);
TARN_TEST_API(s, float);
#undef TARN_TEST_API

}
