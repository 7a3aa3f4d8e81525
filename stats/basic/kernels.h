// The kernels: three families, each one template over storage, weights and the moments kept.
//
//   one pass  each block of observations is summed twice, for its mean and for central sums about that mean, while it
//             is in the cache, and then merged into the running state
//   fast      raw power sums alone
//   two pass  central sums about a mean that the caller gives
#pragma once

#include "stats/basic/cross_products.h"
#include "stats/basic/power_sums.h"
#include "stats/basic/state.h"
#include "stats/task.h"

namespace tarn::stats {

template <class Real> struct KernelArguments {
  int64_t first, end, n, p; // observations first to end - 1 of n; p variables
  const Real *data, *weights;
  Accumulator<Real>* accumulator;
  State<Real> state;
  Real* matrix;  // cross products, or null
  Real* scratch; // kernel_scratch reals
  bool together; // other threads are at the same work
};

template <class Real> using Kernel = void (*)(const KernelArguments<Real>&);

// The words of which kernel names are made, as masks of orders.
namespace words {
constexpr unsigned R____ = 0, R1___ = 1, R12__ = 3, R123_ = 7, R1234 = 15, R_234 = 14;
constexpr unsigned C___ = 0, C2__ = 2, C23_ = 6, C234 = 14;
constexpr bool columns_R = false, columns_C = true;
constexpr bool weighted__ = false, weighted_W = true;
constexpr bool cross__ = false, cross_C = true;
}

// Blocks short enough to stay in the cache for a second look, long enough that merging them costs little.
template <class Real> int64_t moment_block(int64_t p, bool columns) {
  constexpr int64_t bytes = 1 << 16, longest = 1024;
  if (!columns) return longest;
  return minimum(longest, maximum(64, bytes / (int64_t(sizeof(Real)) * p)));
}

template <class Real> Block<Real> block_at(const KernelArguments<Real>& a, bool columns, int64_t first, int64_t count) {
  return {a.data + (columns ? first * a.p : first), a.weights ? a.weights + first : nullptr, count, a.p, a.n};
}

template <class Real> struct WeightSums { Real W, V; };
template <class Real> WeightSums<Real> weight_sums(const Real* weights, int64_t count) {
  if (!weights) return {Real(count), Real(count)};
  using V = Vector<Real>;
  constexpr int width = lanes<V, Real>;
  V w[2] = {}, squares[2] = {};
  int64_t i = 0;
  for (; i + 2 * width <= count; i += 2 * width) {
    for (int u = 0; u < 2; ++u) {
      const V x = load<V>(weights + i + u * width);
      w[u] += x;
      squares[u] += x * x;
    }
  }
  WeightSums<Real> sums = {horizontal_sum<Real>(w[0] + w[1]), horizontal_sum<Real>(squares[0] + squares[1])};
  for (; i < count; ++i) {
    sums.W += weights[i];
    sums.V += weights[i] * weights[i];
  }
  return sums;
}

template <class Real> bool finite(Real x) { return x - x == 0; }

// ---- One pass ----

// The block's own state, in the scratch: raw sums become moments, central sums stand about the block's mean.
template <class Real> SumArrays<Real> block_sums(const KernelArguments<Real>& a) {
  SumArrays<Real> sums;
  for (int k = 0; k < order_count; ++k) {
    sums.raw[k] = a.scratch + k * a.p;
    sums.central[k] = a.scratch + (order_count + k) * a.p;
  }
  return sums;
}
template <class Real> int64_t kernel_scratch(int64_t p, bool cross, bool weighted) {
  return 2 * order_count * p + (cross ? product_scratch<Real>(p, weighted) : 0);
}

// The mean as first computed is off by e, the mean of the deviations from it; the central sums move with it.
template <class Real, unsigned Central> void recentre(const SumArrays<Real>& sums, Real W, Real* mean, int64_t p) {
  for (int64_t j = 0; j < p; ++j) {
    const Real e = sums.central[0][j] / W;
    if (!finite(e)) continue; // an infinite observation: no deviations to speak of
    mean[j] += e;
    const Real c2 = Central & 2 ? sums.central[1][j] : 0, c3 = Central & 4 ? sums.central[2][j] : 0;
    if constexpr (Central & 2) sums.central[1][j] = c2 - W * e * e;
    if constexpr (Central & 4) sums.central[2][j] = c3 - e * (3 * c2 - 2 * W * e * e);
    if constexpr (Central & 8) sums.central[3][j] -= e * (4 * c3 - e * (6 * c2 - 3 * W * e * e));
  }
}

// False, with nothing changed, when a sum overflows although the running moments have not.
template <class Real, bool Columns, bool Weighted, unsigned Raw, unsigned Central, bool Cross>
bool merge_block(const KernelArguments<Real>& a, int64_t first, int64_t count) {
  const Block<Real> block = block_at(a, Columns, first, count);
  const WeightSums<Real> weights = weight_sums<Real>(Weighted ? block.weights : nullptr, count);
  if (weights.W == 0) return true;
  const SumArrays<Real> sums = block_sums(a);
  for (int64_t at = 0; at < 2 * order_count * a.p; ++at) a.scratch[at] = 0;
  add_power_sums<Real, Columns, Weighted, Raw, 0>(block, nullptr, sums);
  for (int k = 0; k < order_count; ++k) {
    if (!(Raw >> k & 1)) continue;
    for (int64_t j = 0; j < a.p; ++j) {
      if (count > 1 && !finite(sums.raw[k][j]) && finite(a.state.raw[k][j])) return false;
      sums.raw[k][j] /= weights.W;
    }
  }
  Real* mean = sums.raw[0];
  add_power_sums<Real, Columns, Weighted, 0, Central | 1>(block, mean, sums);
  recentre<Real, Central>(sums, weights.W, mean, a.p);

  const Real W1 = a.accumulator->W, W2 = weights.W;
  if constexpr (Cross) {
    Real* scratch = a.scratch + 2 * order_count * a.p;
    add_cross_products<Real>({block, Columns, mean, a.together}, a.matrix, scratch);
    if (W1 != 0) {
      for (int64_t j = 0; j < a.p; ++j) scratch[j] = mean[j] - a.state.raw[0][j];
      add_rank_one(a.p, W1 / (W1 + W2) * W2, scratch, a.matrix);
    }
  }
  const State<Real> state = {{sums.raw[0], sums.raw[1], sums.raw[2], sums.raw[3]},
                             {sums.central[1], sums.central[2], sums.central[3]}};
  merge_states(a.state, W1, state, W2, false, 0, a.p);
  a.accumulator->W += W2;
  a.accumulator->V += weights.V;
  return true;
}

template <class Real, bool Columns, bool Weighted, unsigned Raw, unsigned Central, bool Cross>
void one_pass(const KernelArguments<Real>& a) {
  int64_t i = a.first;
  if (Weighted && a.accumulator->W == 0) {
    while (i < a.end && a.weights[i] == 0) ++i; // nothing weighed yet: what stands there does not count at all
  }
  const int64_t length = Cross ? product_block<Real>(a.p, Weighted) : moment_block<Real>(a.p, Columns);
  constexpr auto merge = merge_block<Real, Columns, Weighted, Raw, Central, Cross>;
  while (i < a.end) {
    const int64_t count = minimum(length, a.end - i);
    if (!merge(a, i, count)) {
      for (int64_t k = 0; k < count; ++k) merge(a, i + k, 1); // moments of single observations do not overflow so soon
    }
    i += count;
  }
}

// ---- Fast and two pass ----

template <class Real> void scale(const KernelArguments<Real>& a, unsigned orders, Real factor) {
  for (int k = 0; k < order_count; ++k) {
    if (!(orders >> k & 1)) continue;
    for (int64_t j = 0; j < a.p; ++j) a.state.raw[k][j] *= factor;
  }
}

template <class Real> void clear_state(const KernelArguments<Real>& a, unsigned raw, unsigned central) {
  for (int k = 0; k < order_count; ++k) {
    for (int64_t j = 0; j < a.p; ++j) {
      if (raw >> k & 1) a.state.raw[k][j] = 0;
      if (k > 0 && central >> k & 1) a.state.central[k - 1][j] = 0;
    }
  }
}

// Sums into the state's own arrays: raw moments times W are sums, and turn back into moments at the end. Every block
// is summed on its own, so that rounding errors grow with the number of blocks and not with that of observations.
template <class Real, bool Columns, bool Weighted, unsigned Raw, unsigned Central>
void add_sums(const KernelArguments<Real>& a) {
  Accumulator<Real>& total = *a.accumulator;
  if (total.W > 0) scale(a, Raw, total.W);
  const SumArrays<Real> sums = block_sums(a);
  const int64_t length = moment_block<Real>(a.p, Columns && a.p < wide); // wide observations are read only once
  for (int64_t i = a.first; i < a.end; i += length) {
    const Block<Real> block = block_at(a, Columns, i, minimum(length, a.end - i));
    for (int k = 0; k < order_count; ++k) {
      for (int64_t j = 0; j < a.p; ++j) {
        if (Raw >> k & 1) sums.raw[k][j] = 0;
        if (Central >> k & 1) sums.central[k][j] = 0;
      }
    }
    add_power_sums<Real, Columns, Weighted, Raw, Central>(block, a.state.raw[0], sums);
    for (int k = 0; k < order_count; ++k) {
      for (int64_t j = 0; j < a.p; ++j) {
        if (Raw >> k & 1) a.state.raw[k][j] += sums.raw[k][j];
        if (Central >> k & 1) a.state.central[k - 1][j] += sums.central[k][j];
      }
    }
    const WeightSums<Real> weights = weight_sums<Real>(Weighted ? block.weights : nullptr, block.count);
    total.W += weights.W;
    total.V += weights.V;
  }
  if (total.W > 0) {
    scale(a, Raw, 1 / total.W);
  } else {
    clear_state(a, Raw, Central); // no weight so far, though 0 times an infinite observation may have left a NaN
  }
}

template <class Real, bool Columns, bool Weighted, unsigned Raw> void fast(const KernelArguments<Real>& a) {
  add_sums<Real, Columns, Weighted, Raw, 0>(a);
}

template <class Real, bool Columns, bool Weighted, unsigned Raw, unsigned Central>
void two_pass(const KernelArguments<Real>& a) {
  add_sums<Real, Columns, Weighted, Raw, Central>(a);
}

// ---- The tables ----

template <class Real> Kernel<Real> one_pass_kernel(bool columns, bool weighted, int scenario, bool cross);
template <class Real> Kernel<Real> fast_kernel(bool columns, bool weighted, int scenario);
template <class Real> Kernel<Real> two_pass_kernel(bool columns, bool weighted, int scenario);

// How many raw arrays and central arrays a scenario works on.
struct ArrayCounts {
  int raw, central;
};
constexpr ArrayCounts mapFastScenOnMoms[] = {{1, 0}, {2, 0}, {3, 0}, {4, 0}};
constexpr ArrayCounts map2passScenOnMoms[] = {{1, 1}, {1, 2}, {1, 3}, {4, 3}};
constexpr ArrayCounts map1passScenOnMoms[] = {{1, 0}, {1, 1}, {2, 1}, {4, 3}};

}
