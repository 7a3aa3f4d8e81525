// Splines made: from values to coefficients, in cycles per knot.
//
// GSL's and Boost's constructors stop at derivatives or second derivatives, from which they evaluate; Tarn's go on to
// the coefficients of every cell. Boost takes its points by value, so its figures include a copy of them, which is
// measured by itself beside.
#include "bench/fitting/benchmarks.h"
#include "bench/frame.h"
#include "tarn/fitting.h"
#include "tarn/openmp_threader.h"

#include <boost/math/interpolators/cardinal_cubic_b_spline.hpp>
#include <boost/math/interpolators/makima.hpp>
#include <boost/math/interpolators/pchip.hpp>
#include <gsl/gsl_interp.h>

#include <omp.h>

#include <random>
#include <vector>

namespace tarn::bench {
namespace {

struct Data {
  std::vector<double> x, y;
};

Data points(int64_t n, bool uniform) {
  std::mt19937_64 random(7);
  std::uniform_real_distribution<double> gap(0.5, 1.5), value(-1, 1);
  Data data;
  double at = 0;
  for (int64_t i = 0; i < n; ++i, at += uniform ? 1 : gap(random)) {
    data.x.push_back(at);
    data.y.push_back(value(random));
  }
  return data;
}

// A task over the points, ready for any cubic or linear constructor.
class Task {
public:
  Task(const Data& data, bool uniform, int64_t condition, bool columns = false, int64_t functions = 1)
      : ends{data.x.front(), data.x.back()} {
    const int64_t n = static_cast<int64_t>(data.x.size());
    for (int64_t j = 0; j < functions; ++j) y.insert(y.end(), data.y.begin(), data.y.end());
    coeff.resize(static_cast<size_t>(4 * n * functions));
    tarn_df_kernel_dNewTask1D(&task, n, uniform ? ends : data.x.data(), uniform ? TARN_DF_PARTITION_UNIFORM : 0,
                              functions, y.data(), columns ? TARN_DF_STORAGE_COLUMNS : TARN_DF_STORAGE_ROWS, 1);
    tarn_df_kernel_dEditPPSpline1D(task, 4, TARN_DF_TYPE_NATURAL, condition, bc, TARN_DF_IC_1ST, data.y.data(),
                                   coeff.data(), TARN_DF_STORAGE_ROWS);
  }
  ~Task() { tarn_df_kernel_DeleteTask(&task); }
  Task(const Task&) = delete;
  Task& operator=(const Task&) = delete;

  DFTask* task = nullptr;

private:
  double ends[2], bc[2] = {0.5, -0.5};
  std::vector<double> y, coeff;
};

using Constructor = int32_t (*)(DFTask*, int64_t, int64_t, const tarn_threader*);

std::function<void()> tarn_run(const Task& task, Constructor construct) {
  return [&task, construct] { construct(task.task, 0, 0, nullptr); };
}

// Second derivatives of the natural spline by Thomas's algorithm, the loop that first comes to mind.
void plain_natural(const Data& data, std::vector<double>& scratch, std::vector<double>& m) {
  const size_t n = data.x.size();
  m[0] = scratch[0] = 0;
  for (size_t i = 1; i + 1 < n; ++i) {
    const double h0 = data.x[i] - data.x[i - 1], h1 = data.x[i + 1] - data.x[i];
    const double pivot = 2 * (h0 + h1) - h0 * scratch[i - 1];
    scratch[i] = h1 / pivot;
    m[i] = (6 * ((data.y[i + 1] - data.y[i]) / h1 - (data.y[i] - data.y[i - 1]) / h0) - h0 * m[i - 1]) / pivot;
  }
  m[n - 1] = 0;
  for (size_t i = n - 1; i-- > 1;) m[i] -= scratch[i] * m[i + 1];
}

Contestant gsl_contestant(const char* name, const gsl_interp_type* type, const Data& data,
                          std::vector<gsl_interp*>& owned) {
  gsl_interp* interp = gsl_interp_alloc(type, data.x.size());
  owned.push_back(interp);
  return {name, [interp, &data] { gsl_interp_init(interp, data.x.data(), data.y.data(), data.x.size()); }, "Tarn"};
}

void compare_natural(int64_t n, bool uniform) {
  const std::string name = uniform ? "natural, uniform" : "natural";
  if (!wanted(name)) return;
  const Data data = points(n, uniform);
  const Task task(data, uniform, TARN_DF_BC_FREE_END);
  std::vector<double> scratch(data.x.size()), m(data.x.size());
  std::vector<gsl_interp*> owned;
  Comparison comparison{name, "n = " + std::to_string(n), "knot", double(n), {}};
  comparison.contestants.push_back({"Tarn", tarn_run(task, tarn_df_kernel_dDFNaturalCubicSpline1D), ""});
  comparison.contestants.push_back(gsl_contestant("GSL", gsl_interp_cspline, data, owned));
  comparison.contestants.push_back({"plain Thomas",
                                    [&] {
                                      plain_natural(data, scratch, m);
                                      keep(m[0]);
                                    },
                                    "Tarn"});
  if (uniform)
    comparison.contestants.push_back({"Boost cardinal_cubic_b_spline",
                                      [&] {
                                        const boost::math::interpolators::cardinal_cubic_b_spline<double> spline(
                                            data.y.data(), data.y.size(), 0.0, 1.0);
                                        keep(spline);
                                      },
                                      "Tarn"});
  compare(comparison);
  for (gsl_interp* interp : owned) gsl_interp_free(interp);
}

Contestant copying(const Data& data) {
  return {"copy of the points",
          [&data] {
            const std::vector<double> x = data.x, y = data.y;
            keep(x[0]);
            keep(y[0]);
          },
          ""};
}

void compare_akima(int64_t n, bool uniform) {
  const std::string name = uniform ? "Akima, uniform" : "Akima";
  if (!wanted(name)) return;
  const Data data = points(n, uniform);
  const Task task(data, uniform, TARN_DF_BC_NONE);
  std::vector<gsl_interp*> owned;
  Comparison comparison{name, "n = " + std::to_string(n), "knot", double(n), {}};
  comparison.contestants.push_back({"Tarn", tarn_run(task, tarn_df_kernel_dDFAkimaCubicSpline1D), ""});
  comparison.contestants.push_back(gsl_contestant("GSL", gsl_interp_akima, data, owned));
  comparison.contestants.push_back({"Boost makima",
                                    [&] {
                                      std::vector<double> x = data.x, y = data.y;
                                      const boost::math::interpolators::makima<std::vector<double>> spline(
                                          std::move(x), std::move(y));
                                      keep(spline);
                                    },
                                    "Tarn"});
  comparison.contestants.push_back(copying(data));
  compare(comparison);
  for (gsl_interp* interp : owned) gsl_interp_free(interp);
}

void compare_hyman(int64_t n, bool uniform) {
  const std::string name = uniform ? "Hyman, uniform" : "Hyman";
  if (!wanted(name)) return;
  const Data data = points(n, uniform);
  const Task task(data, uniform, TARN_DF_BC_NONE);
  Comparison comparison{name, "n = " + std::to_string(n), "knot", double(n), {}};
  comparison.contestants.push_back({"Tarn", tarn_run(task, tarn_df_kernel_dDFHymanCubicSpline1D), ""});
  comparison.contestants.push_back({"Boost pchip",
                                    [&] {
                                      std::vector<double> x = data.x, y = data.y;
                                      const boost::math::interpolators::pchip<std::vector<double>> spline(std::move(x),
                                                                                                          std::move(y));
                                      keep(spline);
                                    },
                                    "Tarn"});
  comparison.contestants.push_back(copying(data));
  compare(comparison);
}

// The other kinds, beside each other, on both partitions.
void compare_rest(int64_t n) {
  if (!wanted("other kinds")) return;
  const Data general = points(n, false), even = points(n, true);
  const Task free(general, false, TARN_DF_BC_FREE_END), uniform(even, true, TARN_DF_BC_FREE_END);
  const Task periodic(general, false, TARN_DF_BC_PERIODIC), columns(general, false, TARN_DF_BC_FREE_END, true, 4);
  Comparison comparison{"other kinds", "n = " + std::to_string(n), "knot", double(n), {}};
  const auto add = [&](const char* who, const Task& task, Constructor construct) {
    comparison.contestants.push_back({who, tarn_run(task, construct), ""});
  };
  add("linear", free, tarn_df_kernel_dDFLinearSpline1D);
  add("linear, uniform", uniform, tarn_df_kernel_dDFLinearSpline1D);
  add("Bessel", free, tarn_df_kernel_dDFBesselCubicSpline1D);
  add("Bessel, uniform", uniform, tarn_df_kernel_dDFBesselCubicSpline1D);
  add("Hermite", free, tarn_df_kernel_dDFHermiteCubicSpline1D);
  add("default", free, tarn_df_kernel_dDFDefaultCubicSpline1D);
  add("natural, periodic", periodic, tarn_df_kernel_dDFNaturalCubicSpline1D);
  add("natural, 4 interleaved functions", columns, tarn_df_kernel_dDFNaturalCubicSpline1D);
  add("Akima, 4 interleaved functions", columns, tarn_df_kernel_dDFAkimaCubicSpline1D);
  compare(comparison);
}

// How far a second thread halves the time: cells of one function are shared, and functions of a natural spline.
void compare_threads(int64_t n) {
  const auto scaling = [n](const char* name, const Task& task, Constructor construct, int64_t functions) {
    if (!wanted(name)) return;
    compare({name,
             "n = " + std::to_string(n),
             "knot",
             double(n * functions),
             {{"Tarn, 1 thread", tarn_run(task, construct), ""},
              {"Tarn, 2 threads",
               [&task, construct] {
                 omp_set_num_threads(2);
                 construct(task.task, 0, 0, tarn_openmp_threader());
               },
               "Tarn, 1 thread"}}});
  };
  const Data data = points(n, false);
  const Task one(data, false, TARN_DF_BC_FREE_END), four(data, false, TARN_DF_BC_FREE_END, false, 4);
  scaling("threads, linear", one, tarn_df_kernel_dDFLinearSpline1D, 1);
  scaling("threads, Akima", one, tarn_df_kernel_dDFAkimaCubicSpline1D, 1);
  scaling("threads, Hyman", one, tarn_df_kernel_dDFHymanCubicSpline1D, 1);
  scaling("threads, natural, 4 functions", four, tarn_df_kernel_dDFNaturalCubicSpline1D, 4);
}

}

void construction_benchmarks() {
  for (int64_t n : {int64_t(1000), int64_t(100000)}) {
    if (quick() && n > 1000) continue;
    for (bool uniform : {false, true}) {
      compare_natural(n, uniform);
      compare_akima(n, uniform);
      compare_hyman(n, uniform);
    }
    compare_rest(n);
    compare_threads(n);
  }
}

}
