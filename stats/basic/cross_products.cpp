#include "stats/basic/cross_products.h"

#include "service/linear_algebra.h"
#include "stats/task.h"

namespace tarn::stats {
namespace {

namespace blas = tarn::service::blas;

// Narrow problems leave BLAS no room to work in, so they have a kernel of their own: the block is packed into panels of
// `panel` variables, zeros where there are none, with the centre taken off and the weights multiplied in on the way,
// and tiles of panel x tile_columns products stay in registers over the whole block.
template <class Real> constexpr int panel = 32 / sizeof(Real); // two vectors
constexpr int tile_columns = 4;

// Up to this many variables the tiles are faster than BLAS, measured with OpenBLAS 0.3.21.
template <class Real> constexpr int64_t tiles_up_to = sizeof(Real) == 8 ? 32 : 32;

template <class Real> int64_t panels(int64_t p) { return (p + panel<Real> - 1) / panel<Real>; }

constexpr int64_t tile_block = 256;

template <class Real> bool use_tiles(int64_t p) { return p <= tiles_up_to<Real>; }

template <class Real> void pack(const Products<Real>& x, const Real* weights, Real* packed) {
  const int64_t count = x.block.count, p = x.block.p;
  constexpr int width = panel<Real>;
  for (int64_t first = 0; first < p; first += width) {
    Real* to = packed + first * count;
    const int64_t variables = minimum(width, p - first);
    if (variables < width) {
      for (int64_t at = 0; at < width * count; ++at) to[at] = 0;
    }
    if (x.columns) {
      const Real* from = x.block.data + first;
      Real centre[width] = {};
      for (int64_t j = 0; x.centre && j < variables; ++j) centre[j] = x.centre[first + j];
      if (variables == width) {
        using V = Vector<Real>;
        const V c0 = load<V>(centre), c1 = load<V>(centre + width / 2);
        for (int64_t i = 0; i < count; ++i) {
          const V w = broadcast<V>(weights ? weights[i] : Real(1));
          const Real* at = from + i * p;
          store(to + i * width, w * (load<V>(at) - c0));
          store(to + i * width + width / 2, w * (load<V>(at + width / 2) - c1));
        }
      } else {
        for (int64_t i = 0; i < count; ++i)
          for (int64_t j = 0; j < variables; ++j)
            to[i * width + j] = (weights ? weights[i] : Real(1)) * (from[i * p + j] - centre[j]);
      }
    } else {
      for (int64_t j = 0; j < variables; ++j) {
        const Real* from = x.block.data + (first + j) * x.block.n;
        const Real centre = x.centre ? x.centre[first + j] : Real(0);
        for (int64_t i = 0; i < count; ++i) to[i * width + j] = (weights ? weights[i] : Real(1)) * (from[i] - centre);
      }
    }
  }
}

// Columns j to j + Columns - 1, rows i to i + panel - 1. a is the panel of the rows; b points at column j in its panel.
template <class Real, int Columns>
void add_tile(const Real* a, const Real* b, int64_t count, Real* matrix, int64_t p, int64_t i, int64_t j) {
  using V = Vector<Real>;
  constexpr int width = panel<Real>, half = width / 2;
  V sums[Columns][2] = {};
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
    Real rows[width];
    store(rows, sums[c][0]);
    store(rows + half, sums[c][1]);
    Real* to = matrix + (j + c) * p + i;
    for (int64_t r = 0; r < width && i + r <= j + c; ++r) to[r] += rows[r];
  }
}

template <class Real> void add_by_tiles(const Products<Real>& whole, Real* matrix, Real* scratch) {
  const int64_t p = whole.block.p;
  constexpr int width = panel<Real>;
  for (int64_t first = 0; first < whole.block.count; first += tile_block) {
    Products<Real> part = whole;
    part.block.count = minimum(tile_block, whole.block.count - first);
    part.block.data += whole.columns ? first * p : first;
    if (part.block.weights) part.block.weights += first;
    const int64_t count = part.block.count;
    Real* plain = scratch;
    pack<Real>(part, nullptr, plain);
    const Real* weighted = plain;
    if (part.block.weights) {
      Real* to = scratch + panels<Real>(p) * width * count;
      pack<Real>(part, part.block.weights, to);
      weighted = to;
    }
    for (int64_t j = 0; j < p; j += tile_columns) {
      const Real* b = weighted + j / width * width * count + j % width;
      const int64_t columns = minimum(tile_columns, p - j);
      for (int64_t i = 0; i <= j + columns - 1; i += width) {
        const Real* a = plain + i * count;
        switch (columns) {
        case 1: add_tile<Real, 1>(a, b, count, matrix, p, i, j); break;
        case 2: add_tile<Real, 2>(a, b, count, matrix, p, i, j); break;
        case 3: add_tile<Real, 3>(a, b, count, matrix, p, i, j); break;
        default: add_tile<Real, 4>(a, b, count, matrix, p, i, j);
        }
      }
    }
  }
}

// The observations of a block copied side by side, less the centre and times the weights.
template <class Real> void gather(const Products<Real>& x, const Real* weights, Real* to) {
  const int64_t p = x.block.p;
  for (int64_t i = 0; i < x.block.count; ++i) {
    const Real w = weights ? weights[i] : Real(1);
    const Real* from = x.columns ? x.block.data + i * p : x.block.data + i;
    const int64_t step = x.columns ? 1 : x.block.n;
    for (int64_t j = 0; j < p; ++j) to[i * p + j] = w * (from[j * step] - (x.centre ? x.centre[j] : Real(0)));
  }
}

// Upper triangle of A B^T for p x count matrices A, B by columns. BLAS has no such product of one triangle, so it goes
// in column panels, each down to the diagonal.
template <class Real> void add_triangle(const Real* a, const Real* b, int32_t count, int32_t p, Real* matrix) {
  constexpr int32_t width = 64;
  const Real one = 1;
  for (int32_t j = 0; j < p; j += width) {
    const int32_t columns = static_cast<int32_t>(minimum(width, p - j)), rows = j + columns;
    blas::xgemm("N", "T", &rows, &columns, &count, &one, a, &p, b + j, &p, &one, matrix + int64_t(j) * p, &p);
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
    blas::xsyrk("U", "N", &p, &count, &one, scratch, &p, &one, matrix, &p);
    return;
  }
  Real* weighted = scratch + x.block.p * x.block.count;
  gather<Real>(x, x.block.weights, weighted);
  add_triangle<Real>(scratch, weighted, count, p, matrix);
}

}

template <class Real> int64_t product_block(int64_t p, bool weighted) {
  return maximum(64, (int64_t(1) << 18) / (int64_t(sizeof(Real)) * p * (weighted ? 2 : 1)));
}

template <class Real> int64_t product_scratch(int64_t p, bool weighted) {
  const int64_t copies = weighted ? 2 : 1;
  if (use_tiles<Real>(p)) return copies * panels<Real>(p) * panel<Real> * tile_block;
  return copies * p * product_block<Real>(p, weighted);
}

template <class Real> void add_cross_products(const Products<Real>& products, Real* matrix, Real* scratch) {
  if (use_tiles<Real>(products.block.p)) {
    add_by_tiles(products, matrix, scratch);
  } else {
    add_by_blas(products, matrix, scratch);
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
