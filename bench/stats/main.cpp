// tarn_bench_stats: moments, covariance, extremes, sorting and quantiles beside their peers on the same data.
#include "bench/frame.h"
#include "bench/stats/peers.h"
#include "tarn/openmp_threader.h"
#include "tarn/stats.h"

#include <omp.h>

#include <algorithm>
#include <limits>
#include <random>
#include <vector>

using namespace tarn::bench;

namespace {

struct Data {
  int64_t n, p;
  bool rows;
  std::vector<double> x;
};

Data normal_data(int64_t n, int64_t p, bool rows) {
  std::mt19937_64 random(1);
  std::normal_distribution<double> normal(1, 2);
  Data data{n, p, rows, std::vector<double>(static_cast<size_t>(n * p))};
  for (double& x : data.x) x = normal(random);
  return data;
}

// A task over the data with room for every result.
class Statistics {
public:
  explicit Statistics(const Data& data)
      : n(data.n), p(data.p), storage(data.rows ? TARN_SS_STORAGE_ROWS : TARN_SS_STORAGE_COLUMNS),
        results(16, std::vector<double>(static_cast<size_t>(data.p))), covariance(static_cast<size_t>(p * p)) {
    __kestdSSNewTask(&task, &p, &n, &storage, data.x.data(), nullptr, nullptr, 1);
    __kestdSSEditMoments(task, array(0), array(1), array(2), array(3), array(4), array(5), array(6));
    __kestdSSEditTask(task, 14, array(7));
    __kestdSSEditTask(task, 15, array(8));
    __kestdSSEditTask(task, 16, array(9));
    __kestdSSEditTask(task, 17, array(10));
    __kestdSSEditCovCor(task, nullptr, covariance.data(), &full, nullptr, nullptr);
  }
  ~Statistics() { __kestSSDeleteTask(&task); }
  Statistics(const Statistics&) = delete;
  Statistics& operator=(const Statistics&) = delete;
  void basic(uint64_t estimates, uint64_t method, const tarn_threader* threader = nullptr) {
    _kestdSSBasic(task, estimates, method, threader);
  }
  void minmax() {
    std::fill(results[9].begin(), results[9].end(), std::numeric_limits<double>::infinity());
    std::fill(results[10].begin(), results[10].end(), -std::numeric_limits<double>::infinity());
    _kestdSSMinmax(task, TARN_SS_MINIMUM | TARN_SS_MAXIMUM, TARN_SS_METHOD_FAST, nullptr);
  }
  void quantiles(const std::vector<double>& orders) {
    order_count = static_cast<int64_t>(orders.size());
    out.resize(orders.size() * static_cast<size_t>(p));
    __kestdSSEditQuantiles(task, &order_count, orders.data(), out.data(), nullptr, nullptr);
    _kestdSSQuantiles(task, TARN_SS_QUANTILES, TARN_SS_METHOD_FAST, nullptr);
  }

private:
  double* array(size_t i) { return results[i].data(); }
  int64_t n, p, storage, order_count = 0, full = TARN_SS_MATRIX_FULL;
  std::vector<std::vector<double>> results;
  std::vector<double> covariance, out;
  void* task = nullptr;
};

std::string size_of(const Data& data) {
  std::string text = "n = " + std::to_string(data.n);
  if (data.p > 1) text += ", p = " + std::to_string(data.p) + (data.rows ? ", rows" : ", columns");
  return text;
}

void moments(int64_t n, int64_t p, bool rows) {
  for (int orders : {2, 4}) {
    const std::string name = orders == 2 ? "mean and variance" : "moments to order 4";
    if (!wanted(name)) continue;
    const Data data = normal_data(n, p, rows);
    Statistics statistics(data);
    const uint64_t estimates = orders == 2 ? TARN_SS_CENTRAL_MOMENT_2 : TARN_SS_KURTOSIS | TARN_SS_SKEWNESS;
    std::vector<double> out(static_cast<size_t>(4 * p));
    const double* x = data.x.data();
    Comparison comparison{name, size_of(data), "element", static_cast<double>(n * p), {}};
    const auto add = [&](const char* who, std::function<void()> run, const char* rival) {
      comparison.contestants.push_back({who, std::move(run), rival});
    };
    add(
        "Tarn fast", [&] { statistics.basic(estimates, TARN_SS_METHOD_FAST); }, "");
    add(
        "Tarn one pass", [&] { statistics.basic(estimates, TARN_SS_METHOD_ONE_PASS); }, "");
    add(
        "plain loop, SSE4",
        [&] {
          plain_moments(x, n, p, rows, orders, out.data());
          keep(out[0]);
        },
        "Tarn fast");
    add(
        "Eigen, SSE4",
        [&] {
          eigen_moments(x, n, p, rows, orders, out.data());
          keep(out[0]);
        },
        "Tarn fast");
    if (orders == 2)
      add(
          "Armadillo, SSE4",
          [&] {
            armadillo_moments(x, n, p, rows, out.data());
            keep(out[0]);
          },
          "Tarn one pass");
    add(
        "GSL",
        [&] {
          gsl_moments(x, n, p, rows, orders, out.data());
          keep(out[0]);
        },
        "Tarn one pass");
    compare(comparison);
  }
}

void covariance(int64_t n, int64_t p, bool rows) {
  if (!wanted("covariance")) return;
  const Data data = normal_data(n, p, rows);
  Statistics statistics(data);
  std::vector<double> mean(static_cast<size_t>(p)), out(static_cast<size_t>(p * p));
  Comparison comparison{"covariance", size_of(data), "element", static_cast<double>(n * p), {}};
  comparison.contestants = {
      {"Tarn fast", [&] { statistics.basic(TARN_SS_COVARIANCE, TARN_SS_METHOD_FAST); }, ""},
      {"Tarn one pass", [&] { statistics.basic(TARN_SS_COVARIANCE, TARN_SS_METHOD_ONE_PASS); }, ""},
      {"BLAS",
       [&] {
         blas_covariance(data.x.data(), n, p, rows, mean.data(), out.data());
         keep(out[0]);
       },
       "Tarn fast"},
  };
  compare(comparison);
}

// How far a second thread halves the time; the machine of the figures has two processors.
void scaling(const char* name, int64_t n, int64_t p, uint64_t estimates, uint64_t method) {
  if (!wanted(name)) return;
  const Data data = normal_data(n, p, false);
  Statistics statistics(data);
  compare({name,
           size_of(data),
           "element",
           static_cast<double>(n * p),
           {{"Tarn, 1 thread", [&] { statistics.basic(estimates, method); }, ""},
            {"Tarn, 2 threads",
             [&] {
               omp_set_num_threads(2);
               statistics.basic(estimates, method, tarn_openmp_threader());
             },
             "Tarn, 1 thread"}}});
}

void extremes(int64_t n, int64_t p, bool rows) {
  if (!wanted("minimum and maximum")) return;
  const Data data = normal_data(n, p, rows);
  Statistics statistics(data);
  std::vector<double> out(static_cast<size_t>(2 * p));
  compare({"minimum and maximum",
           size_of(data),
           "element",
           static_cast<double>(n * p),
           {{"Tarn", [&] { statistics.minmax(); }, ""},
            {"plain loop, SSE4",
             [&] {
               plain_minmax(data.x.data(), n, p, rows, out.data());
               keep(out[0]);
             },
             "Tarn"}}});
}

// Every contestant sorts a fresh copy; the copy is in all of the times.
void sorting(int64_t n) {
  if (!wanted("sort")) return;
  const Data data = normal_data(n, 1, true);
  std::vector<double> work(data.x.size()), scratch(data.x.size());
  const auto on_copy = [&](auto sort) {
    return [&, sort] {
      std::copy(data.x.begin(), data.x.end(), work.begin());
      sort();
    };
  };
  compare({"sort",
           size_of(data),
           "element",
           static_cast<double>(n),
           {{"Tarn radix", on_copy([&] {
               tarn_dft_mc3_pelsSortRadixAscend_64f_I(work.data(), scratch.data(), static_cast<int32_t>(n));
             }),
             ""},
            {"Tarn quicksort", on_copy([&] { __kestdQSort(n, work.data()); }), ""},
            {"std::sort", on_copy([&] { std_sort(work.data(), n); }), "Tarn radix"},
            {"Highway vqsort, SSE4", on_copy([&] { highway_sort(work.data(), n); }), "Tarn radix"}}});
}

void quantiles(int64_t n, const char* name, std::vector<double> orders) {
  if (!wanted(name)) return;
  const Data data = normal_data(n, 1, true);
  Statistics statistics(data);
  std::vector<double> work(data.x.size());
  compare({name,
           size_of(data),
           "element",
           static_cast<double>(n),
           {{"Tarn", [&] { statistics.quantiles(orders); }, ""},
            {"std::nth_element",
             [&] {
               std::copy(data.x.begin(), data.x.end(), work.begin());
               for (double order : orders) keep(std_quantile(work.data(), n, order));
             },
             "Tarn"}}});
}

void compare_all() {
  for (int64_t n : {100'000, 1'000'000}) {
    moments(n, 1, true);
    extremes(n, 1, true);
    sorting(n);
    quantiles(n, "median", {0.5});
    quantiles(n, "nine deciles", {0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7, 0.8, 0.9});
  }
  for (int64_t p : {2, 10, 100}) {
    const int64_t n = 1'000'000 / p;
    moments(n, p, false);
    extremes(n, p, false);
    for (bool rows : {false, true}) covariance(n, p, rows);
  }
  for (int64_t p : {3, 5, 20, 32, 33, 50, 300}) covariance(1'000'000 / p, p, false);
  for (int64_t p : {10, 100}) {
    const int64_t n = 1'000'000 / p;
    scaling("threads, moments to order 4", n, p, TARN_SS_KURTOSIS | TARN_SS_SKEWNESS, TARN_SS_METHOD_FAST);
    scaling("threads, covariance", n, p, TARN_SS_COVARIANCE, TARN_SS_METHOD_FAST);
    scaling("threads, one-pass covariance", n, p, TARN_SS_COVARIANCE, TARN_SS_METHOD_ONE_PASS);
  }
}

}

int main(int argc, char** argv) { return run_benchmarks(argc, argv, compare_all); }
