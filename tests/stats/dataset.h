// A random data set with everything around it that a statistics task needs, in both precisions and integer widths.
#pragma once

#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "tarn/stats.h"

namespace tarn::test {

template <class R, class I> struct Case {
  using Real = R;
  using Int = I;
};

template <class Real> struct Api;
#define TARN_TEST_API(t, T)                                                                                            \
  template <> struct Api<T> {                                                                                          \
    static constexpr auto create = __kest##t##SSNewTask;                                                               \
    static constexpr auto edit = __kest##t##SSEditTask;                                                                \
    static constexpr auto basic = _kest##t##SSBasic;                                                                   \
    static constexpr auto minmax = _kest##t##SSMinmax;                                                                 \
    static constexpr auto quantiles = _kest##t##SSQuantiles;                                                           \
    static constexpr auto sort = _kest##t##SSSort;                                                                     \
    static constexpr auto stream = _kest##t##SSStreamQuantiles;                                                        \
  };
TARN_TEST_API(d, double)
TARN_TEST_API(s, float)
#undef TARN_TEST_API

enum class Weights { none, positive, with_zeros };

template <class Real> struct Dataset {
  int64_t n, p;
  bool rows;
  std::vector<Real> data;    // in its storage
  std::vector<Real> weights; // empty without
  std::vector<int> mask;     // empty takes all

  Real at(int64_t j, int64_t i) const { return rows ? data[j * n + i] : data[i * p + j]; }
  Real weight(int64_t i) const { return weights.empty() ? Real(1) : weights[i]; }
  bool taken(int64_t j) const { return mask.empty() || mask[j] != 0; }
  int64_t storage() const { return rows ? 0x10000 : 0x20000; }

  // Observations first to last - 1 as a data set of their own.
  Dataset part(int64_t first, int64_t last) const {
    Dataset piece = {last - first, p, rows, std::vector<Real>((last - first) * p), {}, mask};
    for (int64_t j = 0; j < p; ++j)
      for (int64_t i = first; i < last; ++i)
        piece.data[rows ? j * piece.n + i - first : (i - first) * p + j] = at(j, i);
    if (!weights.empty()) piece.weights.assign(weights.begin() + first, weights.begin() + last);
    return piece;
  }
};

template <class Real>
Dataset<Real> random_dataset(int64_t n, int64_t p, bool rows, Weights kind, bool masked, uint64_t seed,
                             double offset = 1.5) {
  std::mt19937_64 random(seed);
  std::normal_distribution<double> normal;
  std::exponential_distribution<double> skewed;
  Dataset<Real> set = {n, p, rows, std::vector<Real>(n * p), {}, {}};
  for (int64_t j = 0; j < p; ++j) {
    for (int64_t i = 0; i < n; ++i) {
      const double value = offset + 0.25 * double(j) + (j % 3 == 2 ? skewed(random) : normal(random) * (1 + j % 4));
      set.data[rows ? j * n + i : i * p + j] = static_cast<Real>(value);
    }
  }
  if (kind != Weights::none) {
    std::uniform_real_distribution<double> uniform(0.25, 3);
    set.weights.resize(n);
    for (int64_t i = 0; i < n; ++i) set.weights[i] = static_cast<Real>(uniform(random));
    if (kind == Weights::with_zeros)
      for (int64_t i = 0; i < n; ++i)
        if (i < 3 || random() % 4 == 0) set.weights[i] = 0;
  }
  if (masked)
    for (int64_t j = 0; j < p; ++j) set.mask.push_back(j % 3 == 1 ? 0 : 1 + int(j));
  return set;
}

// A task over a data set, with the integers that it points at.
template <class Real, class Int> struct TaskOf {
  Int p = 0, n = 0, storage = 0;
  std::vector<Int> mask;
  void* task = nullptr;

  explicit TaskOf(const Dataset<Real>& set) : p(Int(set.p)), n(Int(set.n)), storage(Int(set.storage())) {
    for (int word : set.mask) // the high half of a 64-bit word must not count
      mask.push_back(sizeof(Int) == 8 ? static_cast<Int>(uint64_t(word) | (word ? 0 : 1ull << 40 * (sizeof(Int) == 8)))
                                      : static_cast<Int>(word));
    Api<Real>::create(&task, &p, &n, &storage, set.data.data(), set.weights.empty() ? nullptr : set.weights.data(),
                      mask.empty() ? nullptr : mask.data(), sizeof(Int) == 8);
  }
  TaskOf(const TaskOf&) = delete;
  TaskOf& operator=(const TaskOf&) = delete;
  ~TaskOf() {
    if (task) __kestSSDeleteTask(&task);
  }
  void turn_to(const Dataset<Real>& set) {
    n = Int(set.n);
    set_real(3, set.data.data());
    if (!set.weights.empty()) set_real(6, set.weights.data());
  }
  void set_real(int32_t id, const Real* value) { Api<Real>::edit(task, id, value); }
  void set_integer(int32_t id, const Int* value) { __kestiSSEditTask(task, id, value); }
  SSTask* record() { return static_cast<SSTask*>(task); }
};

}
