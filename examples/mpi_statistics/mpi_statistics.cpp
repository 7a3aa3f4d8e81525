// Statistics of a data set whose rows are spread over the ranks of an MPI job.
//
//   mpirun -n 4 mpi_statistics data.csv      columns of numbers, a header line, no gaps
//   mpirun -n 4 mpi_statistics               a made-up data set
//
// Each rank reads its share of the rows and computes sums, central sums and cross products by the one-pass method. Rank
// 0 merges them in the order of the ranks, by the formulas with which the library itself merges the shares of threads
// (Chan, Golub and LeVeque 1979; Pebay 2008), and turns the merged sums into moments, covariance and correlation by
// a conversion of the library. It then repeats the work in one piece and tells the largest relative difference, which
// is rounding; the exit code is 1 when it is more than that.
#include <mpi.h>

#include <tarn/serial_threader.h>
#include <tarn/stats.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

// What one rank knows: everything that continues or merges. One message of doubles.
struct State {
  explicit State(int64_t variables) : p(variables), values(static_cast<size_t>(2 + 7 * p + p * p)) {}
  int64_t p;
  std::vector<double> values;
  double* weights() { return values.data(); } // sums of weights and of their squares
  double* raw(int order) { return values.data() + 2 + (order - 1) * p; }
  double* central(int order) { return values.data() + 2 + (order + 2) * p; }
  double* products() { return values.data() + 2 + 7 * p; }
};

[[noreturn]] void fail(const std::string& why) {
  std::fprintf(stderr, "mpi_statistics: %s\n", why.c_str());
  MPI_Abort(MPI_COMM_WORLD, 2);
  std::abort();
}

void must(int32_t status) {
  if (status != 0) fail("statistics failed with status " + std::to_string(status));
}

constexpr uint64_t all_sums = TARN_SS_MEAN | TARN_SS_RAW_MOMENT_2 | TARN_SS_RAW_MOMENT_3 | TARN_SS_RAW_MOMENT_4 |
                              TARN_SS_CENTRAL_SUM_2 | TARN_SS_CENTRAL_SUM_3 | TARN_SS_CENTRAL_SUM_4 |
                              TARN_SS_CROSS_PRODUCT;

State summarise(const std::vector<double>& rows, int64_t p) {
  State state(p);
  const int64_t n = static_cast<int64_t>(rows.size()) / p, storage = TARN_SS_STORAGE_COLUMNS,
                full = TARN_SS_MATRIX_FULL;
  if (n == 0) return state;
  void* task = nullptr;
  must(__kestdSSNewTask(&task, &p, &n, &storage, rows.data(), nullptr, nullptr, 1));
  __kestdSSEditTask(task, 23, state.weights());
  __kestdSSEditMoments(task, state.raw(1), state.raw(2), state.raw(3), state.raw(4), nullptr, nullptr, nullptr);
  __kestdSSEditSums(task, nullptr, nullptr, nullptr, nullptr, state.central(2), state.central(3), state.central(4));
  __kestdSSEditCP(task, nullptr, nullptr, state.products(), &full);
  must(_kestdSSBasic(task, all_sums, TARN_SS_METHOD_ONE_PASS, tarn_serial_threader()));
  __kestSSDeleteTask(&task);
  return state;
}

// Adds what `other` knows to `to`.
void merge(State& to, State& other) {
  const double W1 = to.weights()[0], W2 = other.weights()[0], W = W1 + W2;
  if (W2 == 0) return;
  const int64_t p = to.p;
  const double* mean1 = to.raw(1);
  const double* mean2 = other.raw(1);
  for (int64_t j = 0; j < p; ++j)
    for (int64_t k = 0; k < p; ++k)
      to.products()[j * p + k] +=
          other.products()[j * p + k] + W1 * W2 / W * (mean2[j] - mean1[j]) * (mean2[k] - mean1[k]);
  for (int64_t j = 0; j < p; ++j) {
    const double d = mean2[j] - mean1[j], d2 = d * d;
    const double a2 = to.central(2)[j], a3 = to.central(3)[j], b2 = other.central(2)[j], b3 = other.central(3)[j];
    to.central(4)[j] += other.central(4)[j] + d2 * d2 * W1 * W2 * (W1 * W1 - W1 * W2 + W2 * W2) / (W * W * W) +
                        6 * d2 * (W1 * W1 * b2 + W2 * W2 * a2) / (W * W) + 4 * d * (W1 * b3 - W2 * a3) / W;
    to.central(3)[j] += b3 + d * d2 * W1 * W2 * (W1 - W2) / (W * W) + 3 * d * (W1 * b2 - W2 * a2) / W;
    to.central(2)[j] += b2 + d2 * W1 * W2 / W;
    for (int order = 1; order <= 4; ++order) {
      double& r = to.raw(order)[j];
      r += W2 / W * (other.raw(order)[j] - r);
    }
  }
  to.weights()[0] += W2;
  to.weights()[1] += other.weights()[1];
}

struct Estimates {
  std::vector<double> mean, variance, third, fourth, kurtosis, skewness, covariance, correlation;
};

// Moments, covariance and correlation from the merged sums: a conversion reads no data.
Estimates convert(State& state) {
  const size_t p = static_cast<size_t>(state.p);
  Estimates e = {std::vector<double>(state.raw(1), state.raw(1) + p),
                 std::vector<double>(p),
                 std::vector<double>(p),
                 std::vector<double>(p),
                 std::vector<double>(p),
                 std::vector<double>(p),
                 std::vector<double>(p * p),
                 std::vector<double>(p * p)};
  const int64_t full = TARN_SS_MATRIX_FULL;
  void* task = nullptr;
  must(__kestdSSNewTask(&task, &state.p, nullptr, nullptr, nullptr, nullptr, nullptr, 1));
  __kestdSSEditTask(task, 23, state.weights());
  __kestdSSEditMoments(task, e.mean.data(), nullptr, nullptr, nullptr, e.variance.data(), e.third.data(),
                       e.fourth.data());
  __kestdSSEditSums(task, nullptr, nullptr, nullptr, nullptr, state.central(2), state.central(3), state.central(4));
  __kestdSSEditTask(task, 14, e.kurtosis.data());
  __kestdSSEditTask(task, 15, e.skewness.data());
  __kestdSSEditCP(task, nullptr, nullptr, state.products(), &full);
  __kestdSSEditCovCor(task, nullptr, e.covariance.data(), &full, e.correlation.data(), &full);
  must(_kestdSSBasic(task,
                     TARN_SS_CENTRAL_MOMENT_2 | TARN_SS_CENTRAL_MOMENT_3 | TARN_SS_CENTRAL_MOMENT_4 | TARN_SS_KURTOSIS |
                         TARN_SS_SKEWNESS | TARN_SS_COVARIANCE | TARN_SS_CORRELATION,
                     TARN_SS_METHOD_FROM_SUMS, nullptr));
  __kestSSDeleteTask(&task);
  return e;
}

struct Rows {
  std::vector<std::string> names;
  std::vector<double> values;
};

// Rows first to last - 1 of the file, or of the made-up data; all with every rank the same columns.
Rows read_rows(const char* path, int rank, int ranks, bool all) {
  Rows rows;
  if (!path) {
    constexpr int64_t n = 100'000;
    rows.names = {"normal", "skewed", "far from zero"};
    std::mt19937_64 random(1);
    std::normal_distribution<double> normal;
    for (int64_t i = 0; i < n; ++i) {
      const double a = normal(random), row[3] = {a, std::exp(normal(random)), 1e6 + a + normal(random)};
      if (all || (i >= n * rank / ranks && i < n * (rank + 1) / ranks))
        rows.values.insert(rows.values.end(), row, row + 3);
    }
    return rows;
  }
  std::ifstream file(path);
  if (!file) fail(std::string("cannot open ") + path);
  std::string line;
  std::getline(file, line);
  std::istringstream header(line);
  for (std::string name; std::getline(header, name, ',');) rows.names.push_back(name);
  if (rows.names.empty()) fail(std::string(path) + " has no header line");
  // Each rank takes the lines that begin in its part of the file.
  const std::streamoff begin = file.tellg();
  file.seekg(0, std::ios::end);
  const std::streamoff size = static_cast<std::streamoff>(file.tellg()) - begin;
  const std::streamoff from = all ? 0 : size * rank / ranks, to = all ? size : size * (rank + 1) / ranks;
  file.seekg(begin + std::max<std::streamoff>(from - 1, 0));
  if (from > 0) std::getline(file, line); // up to the end of the line that began before
  while (file.tellg() - begin < to && std::getline(file, line)) {
    if (line.empty() || line == "\r") continue;
    std::istringstream cells(line);
    size_t count = 0;
    for (std::string cell; std::getline(cells, cell, ','); ++count) {
      char* end = nullptr;
      rows.values.push_back(std::strtod(cell.c_str(), &end));
      if (end == cell.c_str() || end[std::strspn(end, " \t\r")] != '\0') fail("not a number: " + cell);
    }
    if (count != rows.names.size()) fail("not as many cells as in the header: " + line);
  }
  return rows;
}

double largest_difference(const Estimates& a, const Estimates& b) {
  double largest = 0;
  const auto compare = [&](const std::vector<double>& x, const std::vector<double>& y) {
    for (size_t i = 0; i < x.size(); ++i) {
      const double difference = std::fabs(x[i] - y[i]) / std::max(1.0, std::fabs(y[i]));
      if (std::isnan(largest)) return;
      if (!(difference <= largest)) largest = difference; // a NaN stays: it is no agreement
    }
  };
  compare(a.mean, b.mean);
  compare(a.variance, b.variance);
  compare(a.kurtosis, b.kurtosis);
  compare(a.skewness, b.skewness);
  compare(a.covariance, b.covariance);
  compare(a.correlation, b.correlation);
  return largest;
}

}

int main(int argc, char** argv) {
  MPI_Init(&argc, &argv);
  int rank = 0, ranks = 1;
  MPI_Comm_rank(MPI_COMM_WORLD, &rank);
  MPI_Comm_size(MPI_COMM_WORLD, &ranks);
  const char* path = argc > 1 ? argv[1] : nullptr;

  const Rows mine = read_rows(path, rank, ranks, false);
  const int64_t p = static_cast<int64_t>(mine.names.size());
  State state = summarise(mine.values, p);
  int code = 0;
  if (rank != 0) {
    MPI_Send(state.values.data(), static_cast<int>(state.values.size()), MPI_DOUBLE, 0, 0, MPI_COMM_WORLD);
  } else {
    for (int from = 1; from < ranks; ++from) {
      State other(p);
      MPI_Recv(other.values.data(), static_cast<int>(other.values.size()), MPI_DOUBLE, from, 0, MPI_COMM_WORLD,
               MPI_STATUS_IGNORE);
      merge(state, other);
    }
    const double n = state.weights()[0];
    if (n < 2) fail("a variance takes two rows at least");
    const Estimates merged = convert(state);
    std::printf("%.0f rows on %d ranks\n%-16s%14s%14s%12s%12s\n", n, ranks, "variable", "mean", "sd", "skewness",
                "kurtosis");
    for (size_t j = 0; j < mine.names.size(); ++j)
      std::printf("%-16s%14.6g%14.6g%12.4f%12.4f\n", mine.names[j].c_str(), merged.mean[j],
                  std::sqrt(merged.variance[j]), merged.skewness[j], merged.kurtosis[j]);
    State whole = summarise(read_rows(path, 0, 1, true).values, p);
    const double difference = largest_difference(merged, convert(whole));
    std::printf("largest relative difference from one pass over all rows: %.1e\n", difference);
    code = difference < 1e-9 ? 0 : 1; // of the far mean, eps |mean| / sigma is left
  }
  MPI_Bcast(&code, 1, MPI_INT, 0, MPI_COMM_WORLD);
  MPI_Finalize();
  return code;
}
