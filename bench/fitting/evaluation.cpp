// Cell search, interpolation and integration beside the standard library, GSL and Boost: a million sites, on 1,000 and
// on 100,000 points.
#include "bench/fitting/benchmarks.h"
#include "bench/frame.h"
#include "tarn/fitting.h"
#include "tarn/openmp_threader.h"

#include <omp.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include <boost/math/interpolators/cardinal_cubic_b_spline.hpp>
#include <boost/math/interpolators/makima.hpp>
#include <gsl/gsl_interp.h>
#include <gsl/gsl_spline.h>

namespace tarn::bench {

namespace {

constexpr size_t all_sites = 1'000'000;
size_t site_count() { return quick() ? 10'000 : all_sites; }

double f(double t) { return std::sin(t) + 0.1 * t; }

// Points with gaps between a tenth and twice the mean, from 0 to 100; or the ends of equal ones.
std::vector<double> random_partition(size_t n) {
  std::mt19937_64 random(1);
  std::uniform_real_distribution<double> unit(0.1, 2);
  std::vector<double> x(n);
  for (size_t i = 1; i < n; ++i) x[i] = x[i - 1] + unit(random);
  for (double& v : x) v *= 100 / x.back();
  return x;
}

std::vector<double> random_sites(size_t count) {
  std::mt19937_64 random(2);
  std::uniform_real_distribution<double> unit(0, 100);
  std::vector<double> t(count);
  for (double& v : t) v = unit(random);
  return t;
}

// A natural cubic spline through f.
class NaturalSpline {
public:
  NaturalSpline(std::vector<double> partition, size_t n, int64_t hint)
      : x(std::move(partition)), y(n), coefficients(4 * (n - 1)) {
    for (size_t i = 0; i < n; ++i)
      y[i] = f(hint == TARN_DF_PARTITION_UNIFORM ? 100 * static_cast<double>(i) / static_cast<double>(n - 1) : x[i]);
    tarn_df_kernel_dNewTask1D(&task, static_cast<int64_t>(n), x.data(), hint, 1, y.data(), TARN_DF_STORAGE_ROWS, 0);
    tarn_df_kernel_dEditPPSpline1D(task, TARN_DF_ORDER_CUBIC, TARN_DF_TYPE_NATURAL, TARN_DF_BC_FREE_END, nullptr,
                                   TARN_DF_IC_NONE, nullptr, coefficients.data(), TARN_DF_STORAGE_ROWS);
    tarn_df_kernel_dDFNaturalCubicSpline1D(task, 0, 0, nullptr);
  }
  ~NaturalSpline() { tarn_df_kernel_DeleteTask(&task); }
  NaturalSpline(const NaturalSpline&) = delete;
  NaturalSpline& operator=(const NaturalSpline&) = delete;

  void search(const std::vector<double>& sites, int64_t hint, std::vector<int32_t>& cells,
              const tarn_threader* threader = nullptr) {
    tarn_df_kernel_dDFSearch1D(task, 0, static_cast<int64_t>(sites.size()), sites.data(), hint, nullptr, cells.data(),
                               nullptr, nullptr, threader);
  }
  void evaluate(const std::vector<double>& sites, int64_t hint, std::vector<double>& r,
                const tarn_threader* threader = nullptr) {
    tarn_df_kernel_dDFInterpolate1D(task, TARN_DF_COMPUTE, 0, static_cast<int64_t>(sites.size()), sites.data(), hint, 0,
                                    nullptr, nullptr, r.data(), 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                    nullptr, nullptr, nullptr, threader);
  }
  void integrate(const std::vector<double>& a, const std::vector<double>& b, std::vector<double>& r,
                 const tarn_threader* threader = nullptr) {
    tarn_df_kernel_dDFIntegrate1D(task, 0, static_cast<int64_t>(a.size()), a.data(), 0, b.data(), 0, nullptr, nullptr,
                                  r.data(), 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                  threader);
  }

  std::vector<double> x, y, coefficients;

private:
  DFTask* task = nullptr;
};

class GslSpline {
public:
  explicit GslSpline(const NaturalSpline& of)
      : spline(gsl_spline_alloc(gsl_interp_cspline, of.x.size())), accelerator(gsl_interp_accel_alloc()) {
    gsl_spline_init(spline, of.x.data(), of.y.data(), of.x.size());
  }
  ~GslSpline() {
    gsl_spline_free(spline);
    gsl_interp_accel_free(accelerator);
  }
  GslSpline(const GslSpline&) = delete;
  GslSpline& operator=(const GslSpline&) = delete;
  gsl_spline* spline;
  gsl_interp_accel* accelerator;
};

std::string points(size_t n) { return "n = " + std::to_string(n); }

void searches(size_t n) {
  std::vector<double> sites = random_sites(site_count());
  std::vector<int32_t> cells(sites.size());
  std::vector<size_t> peer_cells(sites.size());
  NaturalSpline spline(random_partition(n), n, TARN_DF_PARTITION_GENERAL);
  const std::vector<double>& x = spline.x;
  const auto units = static_cast<double>(sites.size());
  compare({"search, random sites",
           points(n),
           "site",
           units,
           {{"Tarn", [&] { spline.search(sites, 0, cells); }, ""},
            {"std::upper_bound",
             [&] {
               for (size_t i = 0; i < sites.size(); ++i)
                 peer_cells[i] = static_cast<size_t>(std::upper_bound(x.begin(), x.end(), sites[i]) - x.begin());
               keep(peer_cells[0]);
             },
             "Tarn"}}});
  std::sort(sites.begin(), sites.end());
  GslSpline gsl(spline);
  compare({"search, sorted sites",
           points(n),
           "site",
           units,
           {{"Tarn", [&] { spline.search(sites, TARN_DF_SITES_SORTED, cells); }, ""},
            {"GSL accelerator",
             [&] {
               for (size_t i = 0; i < sites.size(); ++i)
                 peer_cells[i] = gsl_interp_accel_find(gsl.accelerator, x.data(), x.size(), sites[i]);
               keep(peer_cells[0]);
             },
             "Tarn"}}});
  const std::vector<double> random = random_sites(site_count());
  NaturalSpline uniform({0, 100}, n, TARN_DF_PARTITION_UNIFORM);
  compare({"search, uniform partition",
           points(n),
           "site",
           units,
           {{"Tarn", [&] { uniform.search(random, 0, cells); }, ""}}});
}

void evaluations(size_t n) {
  std::vector<double> sites = random_sites(site_count());
  std::vector<double> r(sites.size()), peer(sites.size());
  const auto units = static_cast<double>(sites.size());
  NaturalSpline spline(random_partition(n), n, TARN_DF_PARTITION_GENERAL);
  GslSpline gsl(spline);
  std::vector<double> x = spline.x, y = spline.y;
  const boost::math::interpolators::makima<std::vector<double>> makima(std::move(x), std::move(y));
  const auto by_gsl = [&] {
    for (size_t i = 0; i < sites.size(); ++i) peer[i] = gsl_spline_eval(gsl.spline, sites[i], gsl.accelerator);
    keep(peer[0]);
  };
  const auto by_boost = [&] {
    for (size_t i = 0; i < sites.size(); ++i) peer[i] = makima(sites[i]);
    keep(peer[0]);
  };
  compare({"evaluation, random sites",
           points(n),
           "site",
           units,
           {{"Tarn", [&] { spline.evaluate(sites, 0, r); }, ""},
            {"Boost makima", by_boost, "Tarn"},
            {"GSL", by_gsl, "Tarn"}}});
  std::sort(sites.begin(), sites.end());
  compare({"evaluation, sorted sites",
           points(n),
           "site",
           units,
           {{"Tarn", [&] { spline.evaluate(sites, TARN_DF_SITES_SORTED, r); }, ""},
            {"GSL", by_gsl, "Tarn"},
            {"Boost makima", by_boost, "Tarn"}}});
  const std::vector<double> random = random_sites(site_count());
  NaturalSpline uniform({0, 100}, n, TARN_DF_PARTITION_UNIFORM);
  const boost::math::interpolators::cardinal_cubic_b_spline<double> b_spline(uniform.y.begin(), uniform.y.end(), 0.0,
                                                                             100 / static_cast<double>(n - 1));
  compare({"evaluation, uniform partition",
           points(n),
           "site",
           units,
           {{"Tarn", [&] { uniform.evaluate(random, 0, r); }, ""},
            {"Boost cardinal B-spline",
             [&] {
               for (size_t i = 0; i < random.size(); ++i) peer[i] = b_spline(random[i]);
               keep(peer[0]);
             },
             "Tarn"}}});
}

// The right ends of ranges of up to eight cells.
std::vector<double> right_limits(const std::vector<double>& left, size_t n) {
  std::vector<double> right(left.size());
  std::mt19937_64 random(3);
  std::uniform_real_distribution<double> unit(0, 800 / static_cast<double>(n));
  for (size_t i = 0; i < left.size(); ++i) right[i] = std::min(100.0, left[i] + unit(random));
  return right;
}

// Ranges at random places.
void integrations(size_t n) {
  const std::vector<double> a = random_sites(site_count()), b = right_limits(a, n);
  std::vector<double> r(a.size()), peer(a.size());
  NaturalSpline spline(random_partition(n), n, TARN_DF_PARTITION_GENERAL);
  GslSpline gsl(spline);
  NaturalSpline uniform({0, 100}, n, TARN_DF_PARTITION_UNIFORM);
  compare({"integration",
           points(n),
           "pair of limits",
           static_cast<double>(a.size()),
           {{"Tarn", [&] { spline.integrate(a, b, r); }, ""},
            {"Tarn, uniform partition", [&] { uniform.integrate(a, b, r); }, ""},
            {"GSL",
             [&] {
               for (size_t i = 0; i < a.size(); ++i)
                 peer[i] = gsl_spline_eval_integ(gsl.spline, a[i], b[i], gsl.accelerator);
               keep(peer[0]);
             },
             "Tarn"}}});
}

// How far a second thread halves the time.
void threads(size_t n) {
  const std::vector<double> sites = random_sites(site_count()), b = right_limits(sites, n);
  std::vector<int32_t> cells(sites.size());
  std::vector<double> r(sites.size());
  NaturalSpline spline(random_partition(n), n, TARN_DF_PARTITION_GENERAL);
  const auto scaling = [&](const char* name, const char* unit, auto work) {
    if (!wanted(name)) return;
    compare({name,
             points(n),
             unit,
             static_cast<double>(sites.size()),
             {{"Tarn, 1 thread", [=] { work(nullptr); }, ""},
              {"Tarn, 2 threads",
               [=] {
                 omp_set_num_threads(2);
                 work(tarn_openmp_threader());
               },
               "Tarn, 1 thread"}}});
  };
  using Threader = const tarn_threader*;
  scaling("threads, search", "site", [&](Threader threader) { spline.search(sites, 0, cells, threader); });
  scaling("threads, evaluation", "site", [&](Threader threader) { spline.evaluate(sites, 0, r, threader); });
  scaling("threads, integration", "pair of limits",
          [&](Threader threader) { spline.integrate(sites, b, r, threader); });
}

}

void evaluation_benchmarks() {
  for (const size_t n : {size_t(1000), size_t(100'000)}) {
    if (wanted("search, random sites") || wanted("search, sorted sites") || wanted("search, uniform partition"))
      searches(n);
    if (wanted("evaluation, random sites") || wanted("evaluation, sorted sites") ||
        wanted("evaluation, uniform partition"))
      evaluations(n);
    if (wanted("integration")) integrations(n);
    if (wanted("threads, search") || wanted("threads, evaluation") || wanted("threads, integration")) threads(n);
  }
}

}
