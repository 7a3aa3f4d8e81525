// The integral of one function of a spline over a range of its pieces: the part of the first piece, the whole pieces
// between, the part of the last one. Whole pieces are added eight at a time; the order of additions depends on the
// range alone.
#pragma once

#include "fitting/interpolate/polynomials.h"
#include "fitting/pieces.h"

namespace tarn::fitting {

// From `low` in piece `first` to `high` in piece `last`.
template <class Real> struct Range {
  int64_t place; // of the pair of limits in its block
  int64_t first, last;
  Real low, high;
};

// c[0] u + c[1] u^2/2 + c[2] u^3/3 + ...; V is a real or a vector of them.
template <int Terms, class Real, class V> inline V antiderivative(const V* c, V u) {
  V sum = c[Terms - 1] * (1 / Real(Terms));
#pragma GCC unroll 4
  for (int j = Terms - 2; j >= 0; --j) sum = sum * u + c[j] * (1 / Real(j + 1));
  return sum * u;
}

template <class Real> Real antiderivative(const Real* c, int64_t terms, Real u) {
  Real sum = 0;
  for (int64_t j = terms - 1; j >= 0; --j) sum = sum * u + c[j] / Real(j + 1);
  return sum * u;
}

constexpr int64_t pieces_at_once = 8;

// The whole pieces from `first` to before `end`. On a uniform partition they have one length, so that it is enough to
// add up each coefficient: element e of a run of pieces belongs to coefficient e mod Terms.
template <int Terms, class Real>
Real whole_pieces(const CellPieces<Real, true>& pieces, const Real* c, int64_t first, int64_t end) {
  using V = Vector<Real>;
  constexpr int width = lanes<V, Real>;
  const Real* at = c + first * Terms;
  V columns[Terms] = {};
  int64_t left = end - first;
  for (; left >= pieces_at_once; left -= pieces_at_once, at += pieces_at_once * Terms)
#pragma GCC unroll 4
    for (int k = 0; k < pieces_at_once / width; ++k)
      for (int t = 0; t < Terms; ++t) columns[t] += load<V>(at + (k * Terms + t) * width);
  Real sums[Terms] = {};
  for (int e = 0; e < Terms * width; ++e) sums[e % Terms] += columns[e / width][e % width];
  for (; left > 0; --left, at += Terms)
    for (int t = 0; t < Terms; ++t) sums[t] += at[t];
  return antiderivative<Terms, Real>(sums, pieces.points.step);
}

template <int Terms, class Real>
Real whole_pieces(const CellPieces<Real, false>& pieces, const Real* c, int64_t first, int64_t end) {
  using V = Vector<Real>;
  constexpr int width = lanes<V, Real>;
  const Real* x = pieces.points.x;
  int64_t i = first;
  Real total = 0;
  if (end - i >= pieces_at_once) {
    V sum = {};
    for (; end - i >= pieces_at_once; i += pieces_at_once)
#pragma GCC unroll 4
      for (int64_t k = i; k < i + pieces_at_once; k += width) {
        const Real* at[width];
        V columns[Terms];
        for (int l = 0; l < width; ++l) at[l] = c + (k + l) * Terms;
        gather<Terms>(at, columns);
        sum += antiderivative<Terms, Real>(columns, load<V>(x + k + 1) - load<V>(x + k));
      }
    for (int l = 0; l < width; ++l) total += sum[l];
  }
  for (; i < end; ++i) total += antiderivative<Terms, Real>(c + i * Terms, x[i + 1] - x[i]);
  return total;
}

// A spline of few terms on the cells of the partition, where pieces start at their origin.
template <int Terms, class Real, bool Uniform> struct PolynomialIntegral {
  CellPieces<Real, Uniform> pieces;
  const Real* c;
  Real operator()(const Range<Real>& range) const {
    const int64_t i = range.first, j = range.last;
    const Real* ci = c + i * Terms;
    const Real xi = pieces.origin(i);
    const Real before = antiderivative<Terms, Real>(ci, range.low - xi);
    if (i == j) return antiderivative<Terms, Real>(ci, range.high - xi) - before;
    const Real length = Uniform ? pieces.points.step : pieces.end(i) - xi;
    const Real head = antiderivative<Terms, Real>(ci, length) - before;
    const Real tail = antiderivative<Terms, Real>(c + j * Terms, range.high - pieces.origin(j));
    return i + 1 == j ? head + tail : (head + whole_pieces<Terms>(pieces, c, i + 1, j)) + tail;
  }
};

// Any number of terms, any pieces.
template <class Real, class Pieces> struct GeneralIntegral {
  Pieces pieces;
  const Real* c;
  int64_t terms;
  Real between(int64_t piece, Real low, Real high) const {
    const Real* at = c + piece * terms;
    const Real origin = pieces.origin(piece);
    return antiderivative(at, terms, high - origin) - antiderivative(at, terms, low - origin);
  }
  Real operator()(const Range<Real>& range) const {
    const int64_t i = range.first, j = range.last;
    if (i == j) return between(i, range.low, range.high);
    Real sum = between(i, range.low, pieces.end(i));
    for (int64_t k = i + 1; k < j; ++k) sum += between(k, pieces.begin(k), pieces.end(k));
    return sum + between(j, pieces.begin(j), range.high);
  }
};

// Steps: the value at the left or the right end of a cell times its length.
template <bool Left, class Real, bool Uniform> struct StepIntegral {
  CellPieces<Real, Uniform> pieces;
  Samples<Real> y;
  Real value(int64_t piece) const { return y[Left ? piece : piece + 1]; }
  Real operator()(const Range<Real>& range) const {
    const int64_t i = range.first, j = range.last;
    if (i == j) return value(i) * (range.high - range.low);
    const Real head = value(i) * (pieces.end(i) - range.low), tail = value(j) * (range.high - pieces.begin(j));
    Real whole = 0;
    for (int64_t k = i + 1; k < j; ++k) whole += Uniform ? value(k) : value(k) * (pieces.end(k) - pieces.begin(k));
    return (head + (Uniform ? whole * pieces.points.step : whole)) + tail;
  }
};

}
