// MRG32K3A: z = x - y mod m1, x[n] = a12 x[n-2] - a13 x[n-3] mod m1, y[n] = a21 y[n-1] - a23 y[n-3] mod m2.
#include "random/recursive/matrix3.h"
#include "random/streams/maps.h"
#include "random/streams/stream.h"

using namespace tarn::random;

namespace {

constexpr uint32_t kA12 = 1403580, kA13 = 810728, kA21 = 527612, kA23 = 1370589;
constexpr double kInverseM1 = 0x1.000000d10000bp-32; // nearest to 1 / m1
static_assert(__builtin_bit_cast(uint64_t, kInverseM1) == 0x3DF000000D10000B);

struct State {
  uint32_t x[3], y[3]; // oldest first
};

template <class Real> struct Scaled : LinearDouble<Reading::Unsigned, Real> {
  Scaled(void* to, double a, double b) : LinearDouble<Reading::Unsigned, Real>(to, (b - a) * kInverseM1, a) {}
};

// The constants of one component: next = p * mul - q * sub mod m, with a multiple of m added that keeps it positive.
template <uint32_t mul_, uint32_t sub_, uint32_t m_> struct Component {
  static constexpr uint64_t mul = mul_, sub = sub_, m = m_, excess = (uint64_t{1} << 32) - m;
  static constexpr uint64_t positive = m * sub;

  static uint32_t next(uint32_t p, uint32_t q) {
    uint64_t v = mul * p + (positive - sub * q);
    v = (v & 0xFFFFFFFF) + (v >> 32) * excess; // 2^32 = excess mod m
    v = (v & 0xFFFFFFFF) + (v >> 32) * excess;
    return static_cast<uint32_t>(v >= m ? v - m : v);
  }

  // Two lanes; operands and results in the low halves, upper halves zero.
  static ULong2 next(ULong2 p, ULong2 q) {
    const ULong2 low_half = ULong2{0xFFFFFFFF, 0xFFFFFFFF};
    ULong2 v = times(p, mul) + (positive - times(q, sub));
    v = (v & low_half) + times(v >> 32, excess);
    v = (v & low_half) + times(v >> 32, excess);
    v -= m;
    return v + ((ULong2)_mm_shuffle_epi32(_mm_srai_epi32((__m128i)v, 31), _MM_SHUFFLE(3, 3, 1, 1)) & m);
  }

  static ULong2 times(ULong2 a, uint64_t b) { return (ULong2)_mm_mul_epu32((__m128i)a, (__m128i)ULong2{b, b}); }
};
using X = Component<kA12, kA13, kM1>;
using Y = Component<kA21, kA23, kM2>;

uint32_t step(State& s) {
  const uint32_t x = X::next(s.x[1], s.x[0]), y = Y::next(s.y[2], s.y[0]);
  s = {{s.x[1], s.x[2], x}, {s.y[1], s.y[2], y}};
  return x >= y ? x - y : static_cast<uint32_t>(x - y + kM1);
}

ULong2 combine(ULong2 x, ULong2 y) {
  const ULong2 z = x - y;
  return z + ((ULong2)_mm_shuffle_epi32(_mm_srai_epi32((__m128i)z, 31), _MM_SHUFFLE(3, 3, 1, 1)) & uint64_t{kM1});
}

void multiply(const uint32_t matrix[9], uint32_t v[3], uint64_t m) {
  uint32_t result[3];
  for (int i = 0; i < 3; i++) result[i] = row_times(matrix + 3 * i, v, m);
  for (int i = 0; i < 3; i++) v[i] = result[i];
}

constexpr int kLanes = 8;
constexpr int kLongestLog = 10; // segments of up to 2^10 outputs
constexpr int kShortestLog = 4;

// kLanes segments of 2^log outputs each, side by side: lane j starts 2^log outputs after lane j - 1, by a matrix of the
// skip-ahead table. The outputs of four steps are transposed, so that they go out four at a time.
template <class Map> void generate_segments(State& state, int64_t at, int log, const Map& map) {
  uint32_t start[6][kLanes];
  for (int j = 0; j < kLanes; j++) {
    for (int i = 0; i < 3; i++) {
      start[i][j] = state.x[i];
      start[3 + i][j] = state.y[i];
    }
    multiply(__kest_mrg32k3a_skipahead_table[0][log], state.x, kM1);
    multiply(__kest_mrg32k3a_skipahead_table[1][log], state.y, kM2);
  }
  const int64_t length = int64_t{1} << log;
  for (int j = 0; j < kLanes; j += 4) {
    ULong2 lane[6][2];
    for (int i = 0; i < 6; i++)
      for (int h = 0; h < 2; h++) lane[i][h] = ULong2{start[i][j + 2 * h], start[i][j + 2 * h + 1]};
    ULong2 *x0 = lane[0], *x1 = lane[1], *x2 = lane[2], *y0 = lane[3], *y1 = lane[4], *y2 = lane[5];
    for (int64_t t = 0; t < length; t += 4) {
      UInt4 z[4];
      for (int u = 0; u < 4; u++) {
        ULong2 out[2];
        for (int h = 0; h < 2; h++) {
          const ULong2 x = X::next(x1[h], x0[h]), y = Y::next(y2[h], y0[h]);
          x0[h] = x1[h], x1[h] = x2[h], x2[h] = x;
          y0[h] = y1[h], y1[h] = y2[h], y2[h] = y;
          out[h] = combine(x, y);
        }
        z[u] = (UInt4)_mm_shuffle_ps((Float4)out[0], (Float4)out[1], _MM_SHUFFLE(2, 0, 2, 0));
      }
      __m128 r0 = (Float4)z[0], r1 = (Float4)z[1], r2 = (Float4)z[2], r3 = (Float4)z[3];
      _MM_TRANSPOSE4_PS(r0, r1, r2, r3);
      const int64_t to = at + j * length + t;
      map.put4(to, (UInt4)r0);
      map.put4(to + length, (UInt4)r1);
      map.put4(to + 2 * length, (UInt4)r2);
      map.put4(to + 3 * length, (UInt4)r3);
    }
  }
}

template <class Map> int32_t generate(tarn_stream* stream, int32_t n, Map map) {
  State& stored = state_of<State>(stream);
  State state = stored;
  int64_t k = 0;
  for (int log = kLongestLog; log >= kShortestLog; log--)
    for (; n - k >= int64_t{kLanes} << log; k += int64_t{kLanes} << log) generate_segments(state, k, log, map);
  for (; k < n; k++) map.put1(k, step(state));
  stored = state;
  return TARN_RANDOM_OK;
}

void seed(State& state, int32_t n, const uint32_t* seeds) {
  uint32_t word[6];
  for (int i = 0; i < 6; i++) {
    const uint64_t m = i < 3 ? kM1 : kM2;
    word[i] = i < n ? seeds[i] : 1;
    if (word[i] >= m) word[i] -= static_cast<uint32_t>(m);
  }
  if ((word[0] | word[1] | word[2]) == 0) word[0] = 1;
  if ((word[3] | word[4] | word[5]) == 0) word[3] = 1;
  state = {{word[0], word[1], word[2]}, {word[3], word[4], word[5]}};
}

constexpr int kTableLimbs = 4;

void advance(State& state, int32_t n, const uint64_t* limbs) {
  static const uint32_t row_x[3] = {0, kA12, kM1 - kA13}, row_y[3] = {kA21, 0, kM2 - kA23};
  bool fits = true;
  for (int32_t i = kTableLimbs; i < n; i++) fits = fits && limbs[i] == 0;
  if (!fits) {
    __kestiVect3PowArrayMod(state.x, row_x, kM1, n, limbs);
    __kestiVect3PowArrayMod(state.y, row_y, kM2, n, limbs);
  } else {
    __kestiVect3PowArrayMod_M1(state.x, n, limbs, __kest_mrg32k3a_skipahead_table[0][0]);
    __kestiVect3PowArrayMod_M2(state.y, n, limbs, __kest_mrg32k3a_skipahead_table[1][0]);
  }
}

void advance(State& state, uint64_t count) {
  static const uint32_t row_x[3] = {0, kA12, kM1 - kA13}, row_y[3] = {kA21, 0, kM2 - kA23};
  __kestiVect3PowMod(state.x, row_x, kM1, count);
  __kestiVect3PowMod(state.y, row_y, kM2, count);
}

}

TARN_EXPORT int32_t __kestBRngMRG32K3AInitStream(int32_t method, tarn_stream* stream, int32_t n, const void* params) {
  State& state = state_of<State>(stream);
  switch (method) {
  case kSeed: seed(state, n, static_cast<const uint32_t*>(params)); return TARN_RANDOM_OK;
  case kSkipAhead: advance(state, *static_cast<const uint64_t*>(params)); return TARN_RANDOM_OK;
  case kSkipAheadEx: advance(state, n, static_cast<const uint64_t*>(params)); return TARN_RANDOM_OK;
  default: return no_such_method(method);
  }
}

TARN_OUTPUTS(MRG32K3A, generate, Words, Scaled<double>, Scaled<float>)
