// Power sums over a block of observations: sums of w x^k, and of w (x - c)^k about a given centre c.
//
// All of the basic statistics stand on this one loop. The orders wanted are a mask (bit k - 1 for order k), so that
// every kernel holds just its own sums in registers.
#pragma once

#include "stats/lanes.h"

namespace tarn::stats {

constexpr int order_count = 4;
constexpr int orders_in(unsigned mask) { return __builtin_popcount(mask); }

// A block of the data: observation i of variable j stands at data[i * p + j] by columns, data[j * n + i] by rows.
template <class Real> struct Block {
  const Real* data;    // at the first observation of the block
  const Real* weights; // null without weights
  int64_t count, p, n;
};

// One set of sums for lanes of type V.
template <class V, unsigned Raw, unsigned Central> struct PowerSums {
  V raw[order_count] = {}, central[order_count] = {};

  template <bool Weighted> void add(V x, V w, V centre) {
    if constexpr (Raw != 0) accumulate<Weighted, Raw>(raw, x, w);
    if constexpr (Central != 0) accumulate<Weighted, Central>(central, x - centre, w);
  }
  void add(const PowerSums& other) {
    for (int k = 0; k < order_count; ++k) {
      if (Raw >> k & 1) raw[k] += other.raw[k];
      if (Central >> k & 1) central[k] += other.central[k];
    }
  }

  template <bool Weighted, unsigned Orders> static void accumulate(V* sums, V x, V w) {
    const V first = Weighted ? w * x : x;
    if constexpr (Orders & 1) sums[0] += first;
    const V second = first * x;
    if constexpr (Orders & 2) sums[1] += second;
    if constexpr (Orders & 4) sums[2] += second * x;
    if constexpr (Orders & 8) sums[3] += second * x * x;
  }
};

// Where the sums of variable j go: they are added to raw[k - 1][j] and central[k - 1][j].
template <class Real> struct SumArrays { Real *raw[order_count], *central[order_count]; };

template <class Real, unsigned Raw, unsigned Central>
inline void add_to(const SumArrays<Real>& out, int64_t j, const PowerSums<Real, Raw, Central>& sums) {
  for (int k = 0; k < order_count; ++k) {
    if (Raw >> k & 1) out.raw[k][j] += sums.raw[k];
    if (Central >> k & 1) out.central[k][j] += sums.central[k];
  }
}

// The chains of additions that run side by side: enough to hide the latency of an addition, few enough for sixteen
// registers.
constexpr int chains_wanted = 8, registers_for_sums = 12;

// One variable whose observations stand side by side: vectors along the observations.
template <class Real, bool Weighted, unsigned Raw, unsigned Central>
void sum_row(const Real* x, const Real* w, int64_t count, Real centre, const SumArrays<Real>& out, int64_t j) {
  using V = Vector<Real>;
  constexpr int width = lanes<V, Real>, orders = orders_in(Raw) + orders_in(Central);
  constexpr int units = (chains_wanted + orders - 1) / orders;
  PowerSums<V, Raw, Central> sums[units];
  const V centres = broadcast<V>(centre);
  const auto weights_at = [&](int64_t i) { return Weighted ? load<V>(w + i) : V{}; };
  int64_t i = 0;
  for (; i + units * width <= count; i += units * width) {
#pragma GCC unroll 8
    for (int u = 0; u < units; ++u) {
      const int64_t at = i + u * width;
      sums[u].template add<Weighted>(load<V>(x + at), weights_at(at), centres);
    }
  }
  for (; i + width <= count; i += width) sums[0].template add<Weighted>(load<V>(x + i), weights_at(i), centres);
  for (int u = 1; u < units; ++u) sums[0].add(sums[u]);
  PowerSums<Real, Raw, Central> total;
  for (; i < count; ++i) total.template add<Weighted>(x[i], Weighted ? w[i] : Real(1), centre);
  for (int k = 0; k < order_count; ++k) {
    if (Raw >> k & 1) total.raw[k] += horizontal_sum<Real>(sums[0].raw[k]);
    if (Central >> k & 1) total.central[k] += horizontal_sum<Real>(sums[0].central[k]);
  }
  add_to(out, j, total);
}

// Units neighbouring lanes-full of variables from j on, observation by observation. Rows observations go side by side
// where the variables alone would leave the adders waiting.
template <class Real, class V, bool Weighted, unsigned Raw, unsigned Central, int Units>
void sum_column_group(const Block<Real>& block, const Real* centres, const SumArrays<Real>& out, int64_t j) {
  constexpr int width = lanes<V, Real>, orders = orders_in(Raw) + orders_in(Central);
  constexpr int rows = Units * orders * 4 <= chains_wanted ? 4 : Units * orders * 2 <= chains_wanted ? 2 : 1;
  PowerSums<V, Raw, Central> sums[rows][Units];
  V centre[Units] = {};
  if constexpr (Central != 0) {
    for (int u = 0; u < Units; ++u) centre[u] = load<V>(centres + j + u * width);
  }
  const Real* x = block.data + j;
  const auto add_observation = [&](PowerSums<V, Raw, Central>* to, int64_t i) {
    const V w = Weighted ? broadcast<V>(block.weights[i]) : V{};
#pragma GCC unroll 8
    for (int u = 0; u < Units; ++u) to[u].template add<Weighted>(load<V>(x + i * block.p + u * width), w, centre[u]);
  };
  int64_t i = 0;
  for (; i + rows <= block.count; i += rows) {
#pragma GCC unroll 4
    for (int r = 0; r < rows; ++r) add_observation(sums[r], i + r);
  }
  for (; i < block.count; ++i) add_observation(sums[0], i);
  for (int u = 0; u < Units; ++u) {
    for (int r = 1; r < rows; ++r) sums[0][u].add(sums[r][u]);
    for (int k = 0; k < order_count; ++k) {
      const int64_t at = j + u * width;
      if (Raw >> k & 1) store(out.raw[k] + at, load<V>(out.raw[k] + at) + sums[0][u].raw[k]);
      if (Central >> k & 1) store(out.central[k] + at, load<V>(out.central[k] + at) + sums[0][u].central[k]);
    }
  }
}

template <class Real, bool Weighted, unsigned Raw, unsigned Central, int Units>
void sum_column_groups(const Block<Real>& block, const Real* centres, const SumArrays<Real>& out, int64_t j,
                       int64_t vectors) {
  using V = Vector<Real>;
  if constexpr (Units > 1) {
    if (vectors < Units)
      return sum_column_groups<Real, Weighted, Raw, Central, Units - 1>(block, centres, out, j, vectors);
  }
  sum_column_group<Real, V, Weighted, Raw, Central, Units>(block, centres, out, j);
}

// The vector V of variables from j on in Rows observations from x on. The sums go through memory: wide observations are
// read in order, which the processor foresees, where a group of variables at a time would stride over them.
template <class V, int Rows, class Real, bool Weighted, unsigned Raw, unsigned Central>
inline void sum_across(const Real* x, const Real* w, int64_t p, const Real* centres, const SumArrays<Real>& out,
                       int64_t j) {
  PowerSums<V, Raw, Central> sums;
  for (int k = 0; k < order_count; ++k) {
    if (Raw >> k & 1) sums.raw[k] = load<V>(out.raw[k] + j);
    if (Central >> k & 1) sums.central[k] = load<V>(out.central[k] + j);
  }
  const V centre = Central != 0 ? load<V>(centres + j) : V{};
#pragma GCC unroll 8
  for (int r = 0; r < Rows; ++r)
    sums.template add<Weighted>(load<V>(x + r * p + j), Weighted ? broadcast<V>(w[r]) : V{}, centre);
  for (int k = 0; k < order_count; ++k) {
    if (Raw >> k & 1) store(out.raw[k] + j, sums.raw[k]);
    if (Central >> k & 1) store(out.central[k] + j, sums.central[k]);
  }
}

template <int Rows, class Real, bool Weighted, unsigned Raw, unsigned Central>
void sum_wide_observations(const Block<Real>& block, int64_t i, const Real* centres, const SumArrays<Real>& out) {
  using V = Vector<Real>;
  const Real *x = block.data + i * block.p, *w = Weighted ? block.weights + i : nullptr;
  int64_t j = 0;
  for (; j + lanes<V, Real> <= block.p; j += lanes<V, Real>)
    sum_across<V, Rows, Real, Weighted, Raw, Central>(x, w, block.p, centres, out, j);
  for (; j < block.p; ++j) sum_across<Real, Rows, Real, Weighted, Raw, Central>(x, w, block.p, centres, out, j);
}

constexpr int64_t wide = 32; // variables

// Adds the power sums of the block, for all variables, to the arrays.
template <class Real, bool Columns, bool Weighted, unsigned Raw, unsigned Central>
void add_power_sums(const Block<Real>& block, const Real* centres, const SumArrays<Real>& out) {
  if constexpr (!Columns) {
    for (int64_t j = 0; j < block.p; ++j)
      sum_row<Real, Weighted, Raw, Central>(block.data + j * block.n, block.weights, block.count,
                                            Central != 0 ? centres[j] : Real(0), out, j);
  } else if (block.p >= wide) {
    constexpr int rows_across = orders_in(Raw) + orders_in(Central) > 2 ? 16 : 8; // more sums, more to load and store
    int64_t i = 0;
    for (; i + rows_across <= block.count; i += rows_across)
      sum_wide_observations<rows_across, Real, Weighted, Raw, Central>(block, i, centres, out);
    for (; i < block.count; ++i) sum_wide_observations<1, Real, Weighted, Raw, Central>(block, i, centres, out);
  } else {
    constexpr int width = lanes<Vector<Real>, Real>;
    constexpr int most = registers_for_sums / (orders_in(Raw) + orders_in(Central));
    int64_t j = 0;
    for (int64_t vectors = block.p / width; vectors > 0;) {
      const int64_t groups = (vectors + most - 1) / most, units = (vectors + groups - 1) / groups; // of even size
      sum_column_groups<Real, Weighted, Raw, Central, most>(block, centres, out, j, units);
      j += units * width;
      vectors -= units;
    }
    for (; j < block.p; ++j) sum_column_group<Real, Real, Weighted, Raw, Central, 1>(block, centres, out, j);
  }
}

}
