#include "stats/basic/cross_products.h"

#include "service/linear_algebra.h"
#include "stats/task.h"

namespace tarn::stats {
namespace {

namespace blas = tarn::service::blas;

// Narrow problems leave BLAS no room to work in, so they have kernels of their own, in which a tile of products stays
// in registers over a whole block of observations. Up to this many variables they are the faster ones. Beyond, BLAS is;
// but its calls take turns (service/linear_algebra.h), so that threads at work together use the tiles at any width.
constexpr int64_t tiles_up_to = 20;
constexpr int64_t longest_tile_block = 256;

// Observations that a tile runs through, so that those of all variables stay in the first-level cache.
template <class Real> int64_t tile_block(int64_t p) {
  return minimum(longest_tile_block, maximum(32, (24 << 10) / (p * int64_t(sizeof(Real)))));
}

bool use_tiles(int64_t p, bool together) { return together || p <= tiles_up_to; }

// ---- Observations side by side: a tile of `panel` rows by four columns, vectors along the rows ----

template <class Real> constexpr int panel = 32 / sizeof(Real); // two vectors
constexpr int tile_columns = 4;

template <class Real> int64_t padded_width(int64_t p) { return (p + panel<Real> - 1) / panel<Real> * panel<Real>; }

// Rows i to i + panel - 1, columns j to j + Columns - 1, of which those on and above the diagonal are added. Variable v
// of observation k stands at a[k * width + v], and at b with the weights multiplied in; width is at least i + panel.
template <class Real, int Columns>
void add_tile(const Real* a, const Real* b, int64_t width, int64_t count, Real* matrix, int64_t p, int64_t i,
              int64_t j) {
  using V = Vector<Real>;
  constexpr int half = panel<Real> / 2;
  V sums[Columns][2] = {};
  a += i;
  b += j;
  for (int64_t at = 0; at < count; ++at, a += width, b += width) {
    const V low = load<V>(a), high = load<V>(a + half);
#pragma GCC unroll 4
    for (int c = 0; c < Columns; ++c) {
      const V other = broadcast<V>(b[c]);
      sums[c][0] += low * other;
      sums[c][1] += high * other;
    }
  }
  for (int c = 0; c < Columns; ++c) {
    Real rows[panel<Real>];
    store(rows, sums[c][0]);
    store(rows + half, sums[c][1]);
    Real* to = matrix + (j + c) * p + i;
    for (int64_t r = 0; r < panel<Real> && i + r <= j + c; ++r) to[r] += rows[r];
  }
}

template <class Real>
void add_tiles(const Real* a, const Real* b, int64_t width, int64_t count, Real* matrix, int64_t p) {
  for (int64_t j = 0; j < p; j += tile_columns) {
    const int64_t columns = minimum(tile_columns, p - j);
    for (int64_t i = 0; i <= j + columns - 1; i += panel<Real>) {
      switch (columns) {
      case 1: add_tile<Real, 1>(a, b, width, count, matrix, p, i, j); break;
      case 2: add_tile<Real, 2>(a, b, width, count, matrix, p, i, j); break;
      case 3: add_tile<Real, 3>(a, b, width, count, matrix, p, i, j); break;
      default: add_tile<Real, 4>(a, b, width, count, matrix, p, i, j);
      }
    }
  }
}

// Copies observations into rows of `width`, zeros behind them, less the centre and times the weights.
template <class Real, bool Weighted, bool Centred> void pack(const Products<Real>& x, int64_t width, Real* to) {
  using V = Vector<Real>;
  constexpr int lane_count = lanes<V, Real>;
  const int64_t p = x.block.p;
  const Real* from = x.block.data;
  for (int64_t i = 0; i < x.block.count; ++i, from += p, to += width) {
    const Real w = Weighted ? x.block.weights[i] : Real(1);
    int64_t j = 0;
    for (; j + lane_count <= p; j += lane_count) {
      V d = load<V>(from + j);
      if constexpr (Centred) d -= load<V>(x.centre + j);
      if constexpr (Weighted) d *= broadcast<V>(w);
      store(to + j, d);
    }
    for (; j < p; ++j) to[j] = w * (Centred ? from[j] - x.centre[j] : from[j]);
    for (; j < width; ++j) to[j] = 0;
  }
}

// Narrow observations less the centre, one behind the other: as many at a time as a vector has lanes, so that the
// centre, repeated that often, is a row of whole vectors.
template <class Real> void subtract_centre(const Products<Real>& x, Real* to) {
  using V = Vector<Real>;
  constexpr int lane_count = lanes<V, Real>;
  const int64_t p = x.block.p, count = x.block.count;
  Real centres[lane_count * tiles_up_to];
  for (int64_t at = 0; at < lane_count * p; ++at) centres[at] = x.centre[at % p];
  const Real* from = x.block.data;
  int64_t i = 0;
  for (; i + lane_count <= count; i += lane_count, from += lane_count * p, to += lane_count * p)
    for (int64_t v = 0; v < lane_count * p; v += lane_count) store(to + v, load<V>(from + v) - load<V>(centres + v));
  for (int64_t at = 0; at < (count - i) * p; ++at) to[at] = from[at] - x.centre[at % p];
}

template <class Real> Products<Real> part_of(const Products<Real>& x, int64_t first, int64_t count) {
  Products<Real> part = x;
  part.block.count = count;
  part.block.data += x.columns ? first * x.block.p : first;
  if (part.block.weights) part.block.weights += first;
  return part;
}

template <class Real> void add_columns_by_tiles(const Products<Real>& x, Real* matrix, Real* scratch) {
  const int64_t p = x.block.p, width = padded_width<Real>(p), length = tile_block<Real>(p);
  int64_t first = 0;
  if (!x.centre && !x.block.weights) {
    // A tile reads up to a panel beyond the last variable: into the next observation, whose products are not kept.
    // There is none behind the last, so the last ones are packed.
    const int64_t end = maximum(0, x.block.count - width);
    for (; first < end; first += minimum(length, end - first)) {
      const Real* data = x.block.data + first * p;
      add_tiles(data, data, p, minimum(length, end - first), matrix, p);
    }
  }
  while (first < x.block.count) {
    const Products<Real> part = part_of(x, first, minimum(length, x.block.count - first));
    const int64_t count = part.block.count;
    first += count;
    if (x.centre && !x.block.weights && p <= tiles_up_to) {
      subtract_centre(part, scratch);
      for (int64_t at = 0; at < panel<Real>; ++at) scratch[count * p + at] = 0; // what a tile reads beyond the last
      add_tiles(scratch, scratch, p, count, matrix, p);
      continue;
    }
    x.centre ? pack<Real, false, true>(part, width, scratch) : pack<Real, false, false>(part, width, scratch);
    const Real* weighted = scratch;
    if (part.block.weights) {
      Real* to = scratch + width * count;
      x.centre ? pack<Real, true, true>(part, width, to) : pack<Real, true, false>(part, width, to);
      weighted = to;
    }
    add_tiles(scratch, weighted, width, count, matrix, p);
  }
}

// ---- Variables side by side: inner products of rows, vectors along the observations ----

constexpr int product_rows = 4, product_columns = 2;

template <int Rows, class Real, bool Weighted, bool Centred>
void add_inner_products(const Products<Real>& x, Real* matrix, int64_t i, int64_t j) {
  using V = Vector<Real>;
  constexpr int width = lanes<V, Real>;
  const int64_t p = x.block.p, n = x.block.n, count = x.block.count;
  // Rows beyond the last stand for the last; what they give is not kept.
  const Real *a[Rows], *b[product_columns];
  Real centre_a[Rows] = {}, centre_b[product_columns] = {};
  for (int r = 0; r < Rows; ++r) {
    const int64_t variable = minimum(i + r, p - 1);
    a[r] = x.block.data + variable * n;
    if (Centred) centre_a[r] = x.centre[variable];
  }
  for (int c = 0; c < product_columns; ++c) {
    const int64_t variable = minimum(j + c, p - 1);
    b[c] = x.block.data + variable * n;
    if (Centred) centre_b[c] = x.centre[variable];
  }
  V sums[Rows][product_columns] = {};
  Real tail[Rows][product_columns] = {};
  const auto add = [&](auto zero, auto& to, int64_t k) {
    using T = decltype(zero);
    T other[product_columns];
    for (int c = 0; c < product_columns; ++c) {
      other[c] = load<T>(b[c] + k);
      if constexpr (Centred) other[c] -= broadcast<T>(centre_b[c]);
      if constexpr (Weighted) other[c] *= load<T>(x.block.weights + k);
    }
#pragma GCC unroll 4
    for (int r = 0; r < Rows; ++r) {
      T own = load<T>(a[r] + k);
      if constexpr (Centred) own -= broadcast<T>(centre_a[r]);
      for (int c = 0; c < product_columns; ++c) to[r][c] += own * other[c];
    }
  };
  int64_t k = 0;
  for (; k + width <= count; k += width) add(V{}, sums, k);
  for (; k < count; ++k) add(Real(0), tail, k);
  for (int c = 0; c < product_columns && j + c < p; ++c)
    for (int r = 0; r < Rows && i + r <= j + c; ++r)
      matrix[(j + c) * p + i + r] += horizontal_sum<Real>(sums[r][c]) + tail[r][c];
}

template <int Rows, class Real> void add_inner_products(const Products<Real>& x, Real* matrix, int64_t i, int64_t j) {
  if (x.block.weights) {
    x.centre ? add_inner_products<Rows, Real, true, true>(x, matrix, i, j)
             : add_inner_products<Rows, Real, true, false>(x, matrix, i, j);
  } else {
    x.centre ? add_inner_products<Rows, Real, false, true>(x, matrix, i, j)
             : add_inner_products<Rows, Real, false, false>(x, matrix, i, j);
  }
}

template <class Real> void add_rows_by_tiles(const Products<Real>& whole, Real* matrix) {
  const int64_t length = tile_block<Real>(whole.block.p);
  for (int64_t first = 0; first < whole.block.count; first += length) {
    const Products<Real> x = part_of(whole, first, minimum(length, whole.block.count - first));
    for (int64_t j = 0; j < x.block.p; j += product_columns) {
      const int64_t rows = minimum(j + product_columns, x.block.p); // down to the diagonal
      int64_t i = 0;
      for (; i + product_rows / 2 < rows; i += product_rows) add_inner_products<product_rows>(x, matrix, i, j);
      if (i < rows) add_inner_products<product_rows / 2>(x, matrix, i, j);
    }
  }
}

// ---- BLAS ----

// The block copied in its own storage, less the centre and times the weights.
template <class Real> void gather(const Products<Real>& x, const Real* weights, Real* to) {
  const int64_t p = x.block.p, count = x.block.count;
  const int64_t outer = x.columns ? count : p, inner = x.columns ? p : count, step = x.columns ? p : x.block.n;
  for (int64_t o = 0; o < outer; ++o) {
    const Real* from = x.block.data + o * step;
    Real* row = to + o * inner;
    if (x.columns) {
      const Real w = weights ? weights[o] : Real(1);
      if (x.centre) {
        for (int64_t j = 0; j < inner; ++j) row[j] = w * (from[j] - x.centre[j]);
      } else {
        for (int64_t j = 0; j < inner; ++j) row[j] = w * from[j];
      }
    } else {
      const Real centre = x.centre ? x.centre[o] : Real(0);
      if (weights) {
        for (int64_t i = 0; i < inner; ++i) row[i] = weights[i] * (from[i] - centre);
      } else {
        for (int64_t i = 0; i < inner; ++i) row[i] = from[i] - centre;
      }
    }
  }
}

// Upper triangle of the products of two gathered blocks. BLAS has no such product of one triangle, so it goes in column
// panels, each down to the diagonal.
template <class Real>
void add_triangle(bool by_columns, const Real* a, const Real* b, int32_t count, int32_t p, Real* matrix) {
  constexpr int32_t width = 64;
  const Real one = 1;
  for (int32_t j = 0; j < p; j += width) {
    const int32_t columns = static_cast<int32_t>(minimum(width, p - j)), rows = j + columns;
    Real* to = matrix + int64_t(j) * p;
    if (by_columns) {
      blas::xgemm("N", "T", &rows, &columns, &count, &one, a, &p, b + j, &p, &one, to, &p);
    } else {
      blas::xgemm("T", "N", &rows, &columns, &count, &one, a, &count, b + int64_t(j) * count, &count, &one, to, &p);
    }
  }
}

template <class Real> void add_by_blas(const Products<Real>& x, Real* matrix, Real* scratch) {
  const int32_t p = static_cast<int32_t>(x.block.p), count = static_cast<int32_t>(x.block.count);
  const Real one = 1;
  const bool as_it_stands = !x.centre && !x.block.weights && (x.columns || x.block.n <= INT32_MAX);
  if (as_it_stands) {
    const int32_t leading = x.columns ? p : static_cast<int32_t>(x.block.n);
    blas::xsyrk("U", x.columns ? "N" : "T", &p, &count, &one, x.block.data, &leading, &one, matrix, &p);
    return;
  }
  gather<Real>(x, nullptr, scratch);
  if (!x.block.weights) {
    const int32_t leading = x.columns ? p : count;
    blas::xsyrk("U", x.columns ? "N" : "T", &p, &count, &one, scratch, &leading, &one, matrix, &p);
    return;
  }
  Real* weighted = scratch + x.block.p * x.block.count;
  gather<Real>(x, x.block.weights, weighted);
  add_triangle<Real>(x.columns, scratch, weighted, count, p, matrix);
}

}

template <class Real> int64_t product_block(int64_t p, bool weighted) {
  return maximum(64, (int64_t(1) << 18) / (int64_t(sizeof(Real)) * p * (weighted ? 2 : 1)));
}

template <class Real> int64_t product_scratch(int64_t p, bool weighted) {
  const int64_t copies = weighted ? 2 : 1;
  const int64_t tiles = copies * padded_width<Real>(p) * tile_block<Real>(p) + panel<Real>;
  return p <= tiles_up_to ? tiles : maximum(tiles, copies * p * product_block<Real>(p, weighted));
}

template <class Real> void add_cross_products(const Products<Real>& products, Real* matrix, Real* scratch) {
  if (!use_tiles(products.block.p, products.together)) {
    add_by_blas(products, matrix, scratch);
  } else if (products.columns) {
    add_columns_by_tiles(products, matrix, scratch);
  } else {
    add_rows_by_tiles(products, matrix);
  }
}

template <class Real> void add_rank_one(int64_t p, Real factor, const Real* v, Real* matrix) {
  const int32_t order = static_cast<int32_t>(p), one = 1;
  blas::xsyr("U", &order, &factor, v, &one, matrix, &order);
}

#define TARN_INSTANTIATE(Real)                                                                                         \
  template int64_t product_block<Real>(int64_t, bool);                                                                 \
  template int64_t product_scratch<Real>(int64_t, bool);                                                               \
  template void add_cross_products<Real>(const Products<Real>&, Real*, Real*);                                         \
  template void add_rank_one<Real>(int64_t, Real, const Real*, Real*);
TARN_INSTANTIATE(double)
TARN_INSTANTIATE(float)

}
