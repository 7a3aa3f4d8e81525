// The seven methods. Each is one template over precision, width of the cells written and width of the index; a method
// finds the cell of one site, or of a block where that is faster.
#pragma once

#include <emmintrin.h>

#include "fitting/lanes.h"
#include "fitting/search/scan.h"
#include "fitting/search/search.h"

namespace tarn::fitting {

typedef int32_t Int4 __attribute__((vector_size(16)));

inline Int4 halves(__m128d a, __m128d b) { // one word each of four double-width masks
  return reinterpret_cast<Int4>(_mm_shuffle_ps(_mm_castpd_ps(a), _mm_castpd_ps(b), _MM_SHUFFLE(2, 0, 2, 0)));
}

// Four sites to a step, for indices of 32 bits: guesses and comparisons as vectors of four integers.
struct FourSites {
  Int4 guess;   // truncated scaled distance plus 1, within 1 to n - 1
  Int4 outside; // -1 where the site is below the left end, 1 where it is above the right end, else 0
};

inline FourSites four_sites(const double* site, double left, double right, double scale, double top) {
  const __m128d a = _mm_loadu_pd(site), b = _mm_loadu_pd(site + 2), zero = _mm_setzero_pd();
  const __m128d l = _mm_set1_pd(left), r = _mm_set1_pd(right), s = _mm_set1_pd(scale), t = _mm_set1_pd(top);
  const __m128i ga = _mm_cvttpd_epi32(smaller(larger((a - l) * s, zero), t));
  const __m128i gb = _mm_cvttpd_epi32(smaller(larger((b - l) * s, zero), t));
  return {reinterpret_cast<Int4>(_mm_unpacklo_epi64(ga, gb)) + 1,
          halves(_mm_cmplt_pd(a, l), _mm_cmplt_pd(b, l)) - halves(_mm_cmplt_pd(r, a), _mm_cmplt_pd(r, b))};
}
inline FourSites four_sites(const float* site, float left, float right, float scale, float top) {
  const __m128 a = _mm_loadu_ps(site), l = _mm_set1_ps(left), r = _mm_set1_ps(right);
  const __m128i g = _mm_cvttps_epi32(smaller(larger((a - l) * _mm_set1_ps(scale), _mm_setzero_ps()), _mm_set1_ps(top)));
  return {reinterpret_cast<Int4>(g) + 1,
          reinterpret_cast<Int4>(_mm_cmplt_ps(a, l)) - reinterpret_cast<Int4>(_mm_cmplt_ps(r, a))};
}

inline void store_four(int32_t* out, Int4 v) { __builtin_memcpy(out, &v, sizeof v); }
inline void store_four(int64_t* out, Int4 v) { // none is negative
  const __m128i words = reinterpret_cast<__m128i>(v), zero = _mm_setzero_si128();
  const __m128i first = _mm_unpacklo_epi32(words, zero), second = _mm_unpackhi_epi32(words, zero);
  __builtin_memcpy(out, &first, sizeof first);
  __builtin_memcpy(out + 2, &second, sizeof second);
}

// Whether four_sites serves: n - 2 is a value of the type, and the scaled distance of the right end is at least that,
// rounded as it is.
template <class Real, class Index> bool serves_four(const SearchRun<Real>& run) {
  return sizeof(Index) == 4 && (sizeof(Real) == 8 || run.nx <= int64_t(1) << 22);
}

// The guess for one site, 1 to n - 1; 1 for a NaN.
template <class Real> int64_t guess(const SearchRun<Real>& run, Real distance) {
  const Real scaled = distance * run.scale;
  if (!(scaled > 0)) return 1;
  const int64_t last = run.nx - 1;
  return scaled < Real(last) ? minimum(int64_t(scaled) + 1, last) : last;
}

// The rule for sites at the ends, which does not ask the partition: true where it holds.
template <class Real> bool cell_at_ends(const SearchRun<Real>& run, Real site, int64_t& cell) {
  if (site < run.left) {
    cell = 0;
  } else if (site >= run.right) {
    cell = site > run.right ? run.nx : run.nx - 1;
  } else {
    return false;
  }
  return true;
}

// 0: the guess is the answer.
template <class Real> int64_t uniform_cell(const SearchRun<Real>& run, Real site) {
  int64_t cell;
  if (cell_at_ends(run, site, cell)) return cell;
  return guess(run, site * run.unit - run.left * run.unit);
}

template <class Real, class Cell, class Index>
int32_t search_uniform(SearchRun<Real>& run, int64_t count, const Real* site, Cell* cell) {
  int64_t i = 0;
  if (serves_four<Real, Index>(run) && run.unit == 1) {
    const Real top = Real(run.nx - 2);
    for (; i + 4 <= count; i += 4) { // at the right end and above the guess is the last inner cell
      const FourSites four = four_sites(site + i, run.left, run.right, run.scale, top);
      store_four(cell + i, four.guess + four.outside);
    }
  }
  for (; i < count; ++i) cell[i] = static_cast<Cell>(uniform_cell(run, site[i]));
  return 0;
}

// 1: the guess is close, scans correct it.
template <class Real, class Index> Index corrected(const SearchRun<Real>& run, Real site, Index at) {
  const Index n = static_cast<Index>(run.nx);
  if (site < run.left) return 0;
  if (site == run.right) return n - 1;
  if (at >= n) return scan_left(run.x, n, site);
  if (site < run.x[at]) return scan_left(run.x, at, site);
  return scan_right(run.x, n, at, site);
}

template <class Real, class Cell, class Index>
int32_t search_quasi_uniform(SearchRun<Real>& run, int64_t count, const Real* site, Cell* cell) {
  constexpr int64_t block = 32;
  int64_t i = 0;
  if (serves_four<Real, Index>(run)) {
    const Real top = Real(run.nx - 2);
    int32_t guesses[block];
    for (; i + block <= count; i += block) {
      for (int64_t k = 0; k < block; k += 4)
        store_four(guesses + k, four_sites(site + i + k, run.left, run.right, run.scale, top).guess);
      for (int64_t k = 0; k < block; ++k)
        cell[i + k] = static_cast<Cell>(corrected(run, site[i + k], static_cast<Index>(guesses[k])));
    }
  }
  for (; i < count; ++i)
    cell[i] = static_cast<Cell>(corrected(run, site[i], static_cast<Index>(guess(run, site[i] - run.left))));
  return 0;
}

// 2: a cursor that moves right. The sites are taken to be ascending; one below its predecessor gets the cursor's cell.
template <class Real, class Index> Index move_cursor(const SearchRun<Real>& run, Index cursor, Real site) {
  const Index n = static_cast<Index>(run.nx);
  return site == run.right ? n - 1 : scan_right(run.x, n, cursor, site);
}

// Whether four sites ascend; false when one is NaN.
inline bool four_ascend(const double* site) {
  const __m128d a = _mm_loadu_pd(site), b = _mm_loadu_pd(site + 2), between = _mm_loadu_pd(site + 1);
  return _mm_movemask_pd(_mm_and_pd(_mm_cmple_pd(a, between), _mm_cmple_pd(b, _mm_unpackhi_pd(b, b)))) == 3;
}
inline bool four_ascend(const float* site) {
  const __m128 a = _mm_loadu_ps(site), next = _mm_shuffle_ps(a, a, _MM_SHUFFLE(3, 3, 2, 1));
  return _mm_movemask_ps(_mm_cmple_ps(a, next)) == 15;
}
// Whether every site of a run of 32 lies below a point.
constexpr int64_t run_of_sites = 32;
inline bool all_below(const double* site, double point) {
  const __m128d p = _mm_set1_pd(point);
  __m128d below = _mm_cmplt_pd(_mm_loadu_pd(site), p);
  for (int k = 2; k < run_of_sites; k += 2) below = _mm_and_pd(below, _mm_cmplt_pd(_mm_loadu_pd(site + k), p));
  return _mm_movemask_pd(below) == 3;
}
inline bool all_below(const float* site, float point) {
  const __m128 p = _mm_set1_ps(point);
  __m128 below = _mm_cmplt_ps(_mm_loadu_ps(site), p);
  for (int k = 4; k < run_of_sites; k += 4) below = _mm_and_ps(below, _mm_cmplt_ps(_mm_loadu_ps(site + k), p));
  return _mm_movemask_ps(below) == 15;
}
// All bits set where a site is not below a point.
inline Int4 four_from(const double* site, double point) {
  const __m128d p = _mm_set1_pd(point);
  return halves(_mm_cmpge_pd(_mm_loadu_pd(site), p), _mm_cmpge_pd(_mm_loadu_pd(site + 2), p));
}
inline Int4 four_from(const float* site, float point) {
  return reinterpret_cast<Int4>(_mm_cmpge_ps(_mm_loadu_ps(site), _mm_set1_ps(point)));
}

template <class Real, class Cell, class Index>
int32_t search_sorted(SearchRun<Real>& run, int64_t count, const Real* site, Cell* cell) {
  if (count <= 0) return 0;
  const Real* x = run.x;
  const Index n = static_cast<Index>(run.nx);
  Index cursor = static_cast<Index>(run.cursor);
  // The first site may be anywhere.
  cursor = site[0] == run.right ? n - 1 : bisect(x, cursor, n, site[0]);
  cell[0] = static_cast<Cell>(cursor);
  for (int64_t i = 1; i < count;) {
    // Sites that crowd in one cell leave the cursor where it is.
    if (i + run_of_sites <= count && cursor < n && site[i + run_of_sites - 1] < x[cursor] &&
        all_below(site + i, x[cursor])) {
      const Cell here = static_cast<Cell>(cursor);
      for (int64_t k = 0; k < run_of_sites; ++k) cell[i + k] = here;
      i += run_of_sites;
      continue;
    }
    // Four sites that pass at most two points need no branch for each.
    if (sizeof(Index) == 4 && i + 4 <= count && cursor < n - 2 && site[i + 3] < x[cursor + 2] &&
        four_ascend(site + i)) {
      const Real first = x[cursor], second = x[cursor + 1], last = site[i + 3];
      const int32_t c = static_cast<int32_t>(cursor);
      store_four(cell + i, Int4{c, c, c, c} - four_from(site + i, first) - four_from(site + i, second));
      cursor += (last >= first) + (last >= second);
      i += 4;
      continue;
    }
    for (const int64_t end = minimum(i + 4, count); i < end; ++i) {
      cursor = move_cursor(run, cursor, site[i]);
      cell[i] = static_cast<Cell>(cursor);
    }
  }
  run.cursor = cursor;
  return 0;
}

// 3: scans from the peak.
template <class Real, class Index> Index cell_near_peak(const SearchRun<Real>& run, Index peak, Real site) {
  const Index n = static_cast<Index>(run.nx);
  const Real* x = run.x;
  if (site == run.right) return n - 1;
  if (peak >= n) return site > run.right ? n : scan_left(x, Index(n - 1), site);
  if (site >= x[peak]) return scan_right(x, n, peak, site);
  return scan_left(x, peak, site);
}

template <class Real, class Cell, class Index>
int32_t search_peak(SearchRun<Real>& run, int64_t count, const Real* site, Cell* cell) {
  const Index peak = static_cast<Index>(run.peak);
  for (int64_t i = 0; i < count; ++i) cell[i] = static_cast<Cell>(cell_near_peak(run, peak, site[i]));
  return 0;
}

// 4: the bin table, then a bisection without branches. Several sites go together, so that their loads overlap: each in
// a window of the same length that ends where its bin ends. A window that starts left of its bin does no harm.
template <class Real> const int64_t* bin_of(const SearchRun<Real>& run, Real site) {
  const Real scaled = (site - run.left) * run.bin_scale;
  const int64_t bin = !(scaled > 0) ? 0 : scaled < Real(run.bin_count) ? int64_t(scaled) : run.bin_count;
  return run.bins[bin];
}

template <int Sites, class Real, class Cell, class Index>
void search_bins(const SearchRun<Real>& run, const Real* site, Cell* cell) {
  const Real* x = run.x;
  const Index n = static_cast<Index>(run.nx);
  Index at[Sites], length = 1;
  for (int k = 0; k < Sites; ++k) {
    const int64_t* bin = bin_of(run, site[k]);
    at[k] = static_cast<Index>(bin[high]);
    const Index own = static_cast<Index>(bin[high] - bin[low]);
    length = own > length ? own : length;
  }
  for (int k = 0; k < Sites; ++k) at[k] = at[k] > length ? at[k] - length : 0;
  while (length > 1) { // the last point that is not above the site is one of x[at] to x[at + length - 1]
    const Index half = length / 2;
    for (int k = 0; k < Sites; ++k) at[k] += x[at[k] + half] <= site[k] ? half : 0;
    length -= half;
  }
  for (int k = 0; k < Sites; ++k) {
    const Index inside = at[k] + 1;
    const Index right_end = site[k] > run.right ? n : n - 1;
    cell[k] = static_cast<Cell>(site[k] < run.left ? 0 : site[k] >= run.right ? right_end : inside);
  }
}

template <class Real, class Cell, class Index>
int32_t search_hybrid(SearchRun<Real>& run, int64_t count, const Real* site, Cell* cell) {
  constexpr int together = 8;
  int64_t i = 0;
  for (; i + together <= count; i += together) search_bins<together, Real, Cell, Index>(run, site + i, cell + i);
  for (; i < count; ++i) search_bins<1, Real, Cell, Index>(run, site + i, cell + i);
  return 0;
}

// 5 and 6: the caller's search, its guesses refined.
template <class Real, class Index> Index refined(const SearchRun<Real>& run, Real site, int64_t guessed) {
  return corrected(run, site, static_cast<Index>(minimum(maximum(guessed, 0), run.nx)));
}

template <class Real, class Cell, class Index, bool UniformPartition>
int32_t search_user_defined(SearchRun<Real>& run, int64_t count, const Real* site, Cell* cell) {
  constexpr int64_t most = 1024; // sites of a batch; all callers keep below it
  int64_t guesses[most];
  int32_t final[most];
  // What a call-back leaves unwritten is a guess of 0.
  __builtin_memset(guesses, 0, static_cast<size_t>(count) * sizeof(int64_t));
  __builtin_memset(final, 0, static_cast<size_t>(count) * sizeof(int32_t));
  const int32_t answer = run.search.call(&count, site, guesses, final, run.search.parameter);
  if (answer < 0) return answer;
  for (int64_t i = 0; i < count; ++i) {
    int64_t found = guesses[i];
    if (answer != TARN_DF_CELLS_ARE_FINAL && final[i] == 0)
      found = UniformPartition ? uniform_cell(run, site[i]) : refined<Real, Index>(run, site[i], found);
    cell[i] = static_cast<Cell>(found);
  }
  return 0;
}

template <SearchMethod Method, class Real, class Cell, class Index>
int32_t search_block(SearchRun<Real>& run, int64_t count, const Real* site, Cell* cell) {
  if constexpr (Method == SearchMethod::Uniform) return search_uniform<Real, Cell, Index>(run, count, site, cell);
  if constexpr (Method == SearchMethod::QuasiUniform)
    return search_quasi_uniform<Real, Cell, Index>(run, count, site, cell);
  if constexpr (Method == SearchMethod::Sorted) return search_sorted<Real, Cell, Index>(run, count, site, cell);
  if constexpr (Method == SearchMethod::Peak) return search_peak<Real, Cell, Index>(run, count, site, cell);
  if constexpr (Method == SearchMethod::Hybrid) return search_hybrid<Real, Cell, Index>(run, count, site, cell);
  if constexpr (Method == SearchMethod::UserDef)
    return search_user_defined<Real, Cell, Index, false>(run, count, site, cell);
  if constexpr (Method == SearchMethod::UniUserDef)
    return search_user_defined<Real, Cell, Index, true>(run, count, site, cell);
}

}
