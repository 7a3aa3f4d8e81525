// Low-discrepancy points in Gray-code order, for tables of direction numbers that come from anywhere: point `index` is
// the exclusive or of the rows at the set bits of the Gray code of index, and the step to the next point adds one row.
#pragma once

#include "random/streams/maps.h"
#include "random/streams/stream.h"

#include <string.h>

namespace tarn::random {

constexpr int kRows = 32; // bits of an index
constexpr uint32_t kAllCoordinates = 0xFFFFFFFF;
constexpr int32_t kSelectCoordinate = 0x7FFFFFFF; // the stream count that asks for one coordinate

struct PointState {
  uint32_t index;   // number of the current point, from 1
  uint32_t dimen;   // coordinates of a point
  uint32_t leap;    // the one coordinate to which the stream is narrowed, or kAllCoordinates
  uint32_t pending; // coordinates of the current point still to be given out; 0 between points
};

// The table's rows with the current point; row k has the k-th direction number of every coordinate.
struct Points {
  PointState* state;
  uint32_t* x;
  const uint32_t* rows;
  int64_t stride;

  const uint32_t* row(int k) const { return rows + stride * k; }

  static int step_row(uint32_t index) { return index != 0xFFFFFFFF ? __builtin_ctz(~index) : kRows - 1; }

  void step() const {
    const uint32_t* add = row(step_row(state->index++));
    for (uint32_t d = 0; d < state->dimen; d++) x[d] ^= add[d];
  }

  void step_coordinate(uint32_t d) const { x[d] ^= row(step_row(state->index++))[d]; }

  void make_coordinate(uint32_t d) const {
    x[d] = 0;
    for (uint32_t gray = state->index ^ state->index >> 1; gray != 0; gray &= gray - 1)
      x[d] ^= row(__builtin_ctz(gray))[d];
  }

  void make_point() const {
    memset(x, 0, sizeof(uint32_t) * state->dimen);
    for (uint32_t gray = state->index ^ state->index >> 1; gray != 0; gray &= gray - 1) {
      const uint32_t* add = row(__builtin_ctz(gray));
      for (uint32_t d = 0; d < state->dimen; d++) x[d] ^= add[d];
    }
  }

  void start() const {
    state->index = 1;
    state->leap = kAllCoordinates;
    state->pending = 0;
    memcpy(x, rows, sizeof(uint32_t) * state->dimen);
  }
};

// The state of a generator with room for its built-in coordinates. A row of the table may be padded.
template <uint32_t kCoordinates, int kRowWords> struct PointRecord {
  PointState head;
  uint32_t x[kCoordinates];
  uint32_t m[kCoordinates][33]; // direction numbers by coordinate, 32 in use
  uint32_t v[kRows][kRowWords];

  Points points() { return {&head, x, v[0], kRowWords}; }

  // column(d, out) makes the 32 numbers of coordinate d.
  template <class Column> void start(uint32_t dimen, Column column) {
    memset(this, 0, sizeof *this);
    head.dimen = dimen;
    for (uint32_t d = 0; d < dimen; d++) {
      column(d, m[d]);
      for (int k = 0; k < kRows; k++) v[k][d] = m[d][k];
    }
    points().start();
  }
};

// w 2^-32 from the upper 31 bits, which a signed conversion takes.
template <class Real> struct UpperBits;

template <> struct UpperBits<double> : LinearDouble<Reading::Signed, double> {
  using Base = LinearDouble<Reading::Signed, double>;
  UpperBits(void* to, double a, double b) : Base(to, (b - a) * 0x1p-31, a) {}
  void put4(int64_t k, UInt4 w) const { Base::put4(k, w >> 1); }
  void put1(int64_t k, uint32_t w) const { Base::put1(k, w >> 1); }
};

template <> struct UpperBits<float> : LinearFloat<Reading::Signed> {
  using Base = LinearFloat<Reading::Signed>;
  UpperBits(void* to, float a, float b) : Base(to, static_cast<float>((static_cast<double>(b) - a) * 0x1p-31), a) {}
  void put4(int64_t k, UInt4 w) const { Base::put4(k, w >> 1); }
  void put1(int64_t k, uint32_t w) const { Base::put1(k, w >> 1); }
};

// ---- Whole points

// One to three coordinates: four points at a time, as `dimen` vectors. Points i to i + 3 with i a multiple of 4 differ
// by fixed offsets, and the step from one four to the next adds row 1 and one more row to all of them.
template <int dimen, class Map> void points_by_fours(const Points& p, int64_t at, int64_t count, Map map) {
  uint32_t* x = p.x;
  uint32_t index = p.state->index;
  auto single = [&] {
    const uint32_t* add = p.row(Points::step_row(index++));
    for (int d = 0; d < dimen; d++) {
      map.put1(at++, x[d]);
      x[d] ^= add[d];
    }
    count--;
  };
  while (count > 0 && index % 4 != 0) single();
  if (count >= 4) {
    alignas(16) uint32_t base[4 * dimen], offset[4 * dimen], steps[kRows][4 * dimen];
    const uint32_t *row0 = p.row(0), *row1 = p.row(1);
    for (int d = 0; d < dimen; d++) {
      const uint32_t offsets[4] = {0, row0[d], row0[d] ^ row1[d], row1[d]};
      for (int i = 0; i < 4; i++) {
        base[i * dimen + d] = x[d];
        offset[i * dimen + d] = offsets[i];
        for (int k = 2; k < kRows; k++) steps[k][i * dimen + d] = row1[d] ^ p.row(k)[d];
      }
    }
    UInt4 now[dimen], add[dimen];
    for (int j = 0; j < dimen; j++) {
      now[j] = load4(base + 4 * j);
      add[j] = load4(offset + 4 * j);
    }
    for (; count >= 4; count -= 4) {
      const uint32_t* step = steps[Points::step_row(index + 3)];
      for (int j = 0; j < dimen; j++) {
        map.put4(at + 4 * j, now[j] ^ add[j]);
        now[j] ^= load4(step + 4 * j);
      }
      at += 4 * dimen;
      index += 4;
    }
    for (int d = 0; d < dimen; d++) x[d] = now[d / 4][d % 4];
  }
  while (count > 0) single();
  p.state->index = index;
}

// kVectors vectors of coordinates from `first` on in registers, through `count` points. The last vector stands `last`
// coordinates on, so that it may overlap the one before it.
template <int kVectors, class Map>
void coordinates_in_registers(const Points& p, uint32_t index, int64_t first, int64_t last, int64_t at, int64_t count,
                              Map map) {
  const auto place = [last](int j) { return j + 1 < kVectors ? int64_t{4} * j : last; };
  const int64_t dimen = p.state->dimen;
  UInt4 x[kVectors];
  for (int j = 0; j < kVectors; j++) x[j] = load4(p.x + first + place(j));
  for (int64_t to = at + first; count > 0; count--, to += dimen) {
    const uint32_t* add = p.row(Points::step_row(index++)) + first;
    for (int j = 0; j < kVectors; j++) {
      map.put4(to + place(j), x[j]);
      x[j] ^= load4(add + place(j));
    }
  }
  for (int j = 0; j < kVectors; j++) store4(p.x + first + place(j), x[j]);
}

// Four and more coordinates: groups of them in turn, each through all points of a stretch whose output stays in the
// cache. The last group is of 4 to 11.
constexpr int64_t kStretch = 2048;
template <class Map> void points_by_groups(const Points& p, int64_t at, int64_t count, Map map) {
  const int64_t dimen = p.state->dimen, most = kStretch / dimen > 0 ? kStretch / dimen : 1;
  while (count > 0) {
    const int64_t stretch = count < most ? count : most;
    const uint32_t index = p.state->index;
    int64_t first = 0, left = dimen;
    for (; left >= 36; first += 32, left -= 32) coordinates_in_registers<8>(p, index, first, 28, at, stretch, map);
    for (; left >= 20; first += 16, left -= 16) coordinates_in_registers<4>(p, index, first, 12, at, stretch, map);
    for (; left >= 12; first += 8, left -= 8) coordinates_in_registers<2>(p, index, first, 4, at, stretch, map);
    switch ((left + 3) / 4) {
    case 1: coordinates_in_registers<1>(p, index, first, 0, at, stretch, map); break;
    case 2: coordinates_in_registers<2>(p, index, first, left - 4, at, stretch, map); break;
    default: coordinates_in_registers<3>(p, index, first, left - 4, at, stretch, map); break;
    }
    p.state->index = index + static_cast<uint32_t>(stretch);
    at += stretch * dimen;
    count -= stretch;
  }
}

template <class Map> void whole_points(const Points& p, int64_t at, int64_t count, Map map) {
  switch (p.state->dimen) {
  case 1: return points_by_fours<1>(p, at, count, map);
  case 2: return points_by_fours<2>(p, at, count, map);
  case 3: return points_by_fours<3>(p, at, count, map);
  default: return points_by_groups(p, at, count, map);
  }
}

// ---- One output call. points(p, at, count, map) gives whole points.

template <class Map> void narrowed(const Points& p, int32_t n, Map map) {
  const uint32_t d = p.state->leap;
  uint32_t column[kRows];
  for (int k = 0; k < kRows; k++) column[k] = p.row(k)[d];
  uint32_t x = p.x[d], index = p.state->index;
  for (int32_t k = 0; k < n; k++) {
    map.put1(k, x);
    x ^= column[Points::step_row(index++)];
  }
  p.x[d] = x;
  p.state->index = index;
}

template <class Map, class Whole> int32_t generate_points(const Points& p, int32_t n, Map map, Whole points) {
  PointState& s = *p.state;
  if (static_cast<int64_t>(s.index) + n > int64_t{0xFFFFFFFF}) return TARN_RANDOM_QUASI_EXHAUSTED;
  if (n <= 0) return TARN_RANDOM_OK;
  if (s.leap != kAllCoordinates) {
    narrowed(p, n, map);
    return TARN_RANDOM_OK;
  }
  int64_t k = 0;
  if (s.pending != 0) {
    for (; k < n && s.pending > 0; s.pending--) map.put1(k++, p.x[s.dimen - s.pending]);
    if (s.pending == 0) p.step();
  }
  if (const int64_t count = (n - k) / s.dimen; count > 0) {
    points(p, k, count, map);
    k += count * s.dimen;
  }
  if (k < n) { // k stands at a whole point, so this is a new one
    s.pending = s.dimen - static_cast<uint32_t>(n - k);
    put_words(map, k, p.x, n - k);
  }
  return TARN_RANDOM_OK;
}

// ---- Leapfrog and skip ahead

inline int32_t select_coordinate(const Points& p, int32_t nstreams, uint32_t k) {
  PointState& s = *p.state;
  if (nstreams != kSelectCoordinate || k >= s.dimen) return TARN_RANDOM_NO_LEAPFROG;
  if (s.leap == k) return TARN_RANDOM_OK;
  if (s.leap != kAllCoordinates) {
    s.index++;
    p.make_coordinate(k);
  } else if (s.pending != 0 && k < s.dimen - s.pending) { // already given out at this point
    p.step_coordinate(k);
  }
  s.pending = 0;
  s.leap = k;
  return TARN_RANDOM_OK;
}

inline int32_t skip_scalars(const Points& p, int32_t n, uint64_t nskip) {
  PointState& s = *p.state;
  const uint64_t whole = nskip / s.dimen;
  if (n < 1 || whole >= 0xFFFFFFFF || s.index + whole >= 0xFFFFFFFF) return TARN_RANDOM_NO_SKIP;
  if (s.pending > nskip) {
    s.pending -= static_cast<uint32_t>(nskip);
    return TARN_RANDOM_OK;
  }
  const uint64_t beyond = nskip - s.pending;
  const uint64_t steps = beyond / s.dimen + (s.pending != 0), rest = beyond % s.dimen;
  if (steps != 0) {
    s.index += static_cast<uint32_t>(steps);
    p.make_point();
  }
  s.pending = rest == 0 ? 0 : s.dimen - static_cast<uint32_t>(rest);
  return TARN_RANDOM_OK;
}

inline int32_t point_method(const Points& p, int32_t method, int32_t n, const void* params) {
  switch (method) {
  case kLeapfrog: return select_coordinate(p, n, static_cast<uint32_t>(*static_cast<const int32_t*>(params)));
  case kSkipAhead: return skip_scalars(p, n, *static_cast<const uint64_t*>(params));
  default: return no_such_method(method);
  }
}

// The seed words of both generators: p[0] the dimension, p[1] = 1 asks for the caller's parameters, of class p[2].
struct PointSeeds {
  int64_t length;
  const int32_t* p;
  bool user(int64_t least) const { return length >= least && p[0] >= 1 && p[1] == 1; }
  uint32_t built_in_dimension(uint32_t limit) const {
    return length >= 1 && p[0] >= 1 && static_cast<uint32_t>(p[0]) <= limit ? static_cast<uint32_t>(p[0]) : 1;
  }
  uint32_t word(int64_t k) const { return static_cast<uint32_t>(p[k]); }
};

}
