// Interpolation and integration of splines that GSL knows too: the natural and the periodic cubic spline, and the
// linear one.
#include <cmath>
#include <random>

#include <gsl/gsl_spline.h>
#include <gtest/gtest.h>

#include "fitting/cells/fitting_task.h"

namespace {

using namespace tarn::test;

struct Peer {
  const char* name;
  const gsl_interp_type* type;
  int64_t order, bc_type;
  int32_t (*construct)(DFTask*, int64_t, int64_t, const tarn_threader*);
};

TEST(FittingPeers, ValuesDerivativesAndIntegralsOfGsl) {
  const Peer peers[] = {
      {"natural", gsl_interp_cspline, 4, TARN_DF_BC_FREE_END, tarn_df_kernel_dDFNaturalCubicSpline1D},
      {"periodic", gsl_interp_cspline_periodic, 4, TARN_DF_BC_PERIODIC, tarn_df_kernel_dDFNaturalCubicSpline1D},
      {"linear", gsl_interp_linear, 2, TARN_DF_BC_NONE, tarn_df_kernel_dDFLinearSpline1D},
  };
  std::mt19937_64 random(9);
  std::uniform_real_distribution<double> unit(0.1, 1);
  const size_t n = 200;
  for (const Peer& peer : peers) {
    std::vector<double> x(n), y(n);
    for (size_t i = 1; i < n; ++i) x[i] = x[i - 1] + unit(random);
    for (double& v : y) v = unit(random);
    y.back() = y.front();
    FittingTask<double> task(x, int64_t(n), 1, false, 1, y, 16);
    task.coefficients.resize(4 * n);
    ASSERT_EQ(
        Api<double>::edit_spline(task, peer.order, 2, peer.bc_type, nullptr, 0, nullptr, task.coefficients.data(), 16),
        0);
    ASSERT_EQ(peer.construct(task, 0, 0, nullptr), 0);
    gsl_spline* spline = gsl_spline_alloc(peer.type, n);
    gsl_spline_init(spline, x.data(), y.data(), n);
    gsl_interp_accel* accelerator = gsl_interp_accel_alloc();

    std::uniform_real_distribution<double> inside(x.front(), x.back());
    std::vector<double> sites(1000), right(1000), r(3000), integrals(1000);
    for (double& t : sites) t = inside(random);
    for (double& t : right) t = inside(random);
    const int32_t orders[] = {1, 1, 1};
    ASSERT_EQ(Api<double>::interpolate(task, 1, 0, 1000, sites.data(), 0, 3, orders, nullptr, r.data(), 0, nullptr,
                                       nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
              0);
    ASSERT_EQ(Api<double>::integrate(task, 0, 1000, sites.data(), 0, right.data(), 0, nullptr, nullptr,
                                     integrals.data(), 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                     nullptr, nullptr),
              0);
    for (size_t s = 0; s < sites.size(); ++s) {
      EXPECT_NEAR(r[3 * s], gsl_spline_eval(spline, sites[s], accelerator), 1e-13) << peer.name;
      EXPECT_NEAR(r[3 * s + 1], gsl_spline_eval_deriv(spline, sites[s], accelerator), 1e-11) << peer.name;
      EXPECT_NEAR(r[3 * s + 2], gsl_spline_eval_deriv2(spline, sites[s], accelerator), 1e-9) << peer.name;
      const double low = std::min(sites[s], right[s]), high = std::max(sites[s], right[s]);
      const double integral = gsl_spline_eval_integ(spline, low, high, accelerator);
      EXPECT_NEAR(integrals[s], right[s] < sites[s] ? -integral : integral, 1e-11) << peer.name;
    }
    gsl_spline_free(spline);
    gsl_interp_accel_free(accelerator);
  }
}

}
