// Streams of several shapes through the quantile sketch, and how far off its answers are.
#pragma once

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "stats/dataset.h"
#include "support/pthread_threader.h"

namespace tarn::test {

constexpr uint64_t Query = 0x40, Update = 0x80;

template <class Real, class Int> struct StreamTask : TaskOf<Real, Int> {
  Int order_count, param_count = 1;
  std::vector<Real> orders, out;
  Real epsilon;
  const tarn_threader* threader = nullptr;

  StreamTask(const Dataset<Real>& set, std::vector<Real> orders_, Real epsilon_)
      : TaskOf<Real, Int>(set), order_count(Int(orders_.size())), orders(orders_), out(set.p * orders_.size(), -777),
        epsilon(epsilon_) {
    SSTask* record = this->record();
    if (!record) return;
    record->stream_order_count = &order_count;
    record->stream_orders = orders.data();
    record->stream_quantiles = out.data();
    record->stream_param_count = &param_count;
    record->stream_params = &epsilon;
  }
  int32_t call(uint64_t method) { return Api<Real>::stream(this->task, 0, method, threader); }
};

// How far the true ranks of the value are from q N, in elements.
template <class Real> double rank_error(const std::vector<Real>& sorted, Real value, double q) {
  const double N = double(sorted.size()), target = q * N;
  const auto range = std::equal_range(sorted.begin(), sorted.end(), value);
  if (range.first == range.second) return INFINITY; // not an element of the stream
  const double low = double(range.first - sorted.begin()) + 1, high = double(range.second - sorted.begin());
  return target < low ? low - target : target > high ? target - high : 0;
}

enum class Shape { random, sorted, reversed, organ_pipe, constant, few };

template <class Real> inline std::vector<Real> stream_of(Shape shape, int64_t n) {
  std::mt19937_64 random(n);
  std::vector<Real> x(n);
  for (int64_t i = 0; i < n; ++i) {
    switch (shape) {
    case Shape::random: x[i] = Real(random() >> 40); break;
    case Shape::sorted: x[i] = Real(i); break;
    case Shape::reversed: x[i] = Real(n - i); break;
    case Shape::organ_pipe: x[i] = Real(std::min(2 * i, 2 * (n - i) - 1)); break;
    case Shape::constant: x[i] = Real(5); break;
    case Shape::few: x[i] = Real(random() % 10); break;
    }
  }
  return x;
}

struct Outcome {
  double worst; // rank error over epsilon N
  int64_t bytes;
};

// Bytes that the sketch of the first variable takes, by the published layout.
inline int64_t sketch_bytes(const SSTask* task) {
  const int64_t* header = static_cast<const int64_t*>(task->stream_state);
  int64_t bytes = 0;
  const int64_t* stages = reinterpret_cast<const int64_t*>(header[3]);
  for (int64_t k = 0; k < header[0]; ++k) {
    const int64_t b = stages[9 * k + 1], L = stages[9 * k + 2];
    bytes += (8 * b + 8) * (L + 1) * 3 + 8 * L + 8;
  }
  return bytes;
}

template <class Real, class Int>
Outcome run_stream(Shape shape, int64_t n, double epsilon, int64_t block, const tarn_threader* threader = nullptr) {
  Dataset<Real> whole = {n, 1, true, stream_of<Real>(shape, n), {}, {}};
  std::vector<Real> orders;
  for (int k = 0; k <= 40; ++k) orders.push_back(Real(k / 40.0));
  Dataset<Real> none = {1, 1, true, {Real(0)}, {}, {}};
  StreamTask<Real, Int> task(none, orders, Real(epsilon));
  task.threader = threader;
  for (int64_t first = 0; first < n; first += block) {
    task.n = Int(std::min(block, n - first));
    task.set_real(3, whole.data.data() + first);
    EXPECT_EQ(task.call(Update), 0);
  }
  task.n = 0;
  task.record()->observations = nullptr; // a query of what is there needs no data
  EXPECT_EQ(task.call(Query), 0);
  std::vector<Real> sorted = whole.data;
  std::sort(sorted.begin(), sorted.end());
  Outcome outcome = {0, sketch_bytes(task.record())};
  for (size_t k = 0; k < orders.size(); ++k)
    outcome.worst = std::max(outcome.worst, rank_error(sorted, task.out[k], double(orders[k])) / (epsilon * double(n)));
  return outcome;
}

}
