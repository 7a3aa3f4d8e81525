// MRG32K3A: z = x - y mod m1, x[n] = a12 x[n-2] - a13 x[n-3] mod m1, y[n] = a21 y[n-1] - a23 y[n-3] mod m2.
#include "random/recursive/matrix3.h"
#include "random/streams/maps.h"
#include "random/streams/stream.h"

#include <string.h>
#include <xmmintrin.h>

using namespace tarn::random;

namespace {

constexpr uint32_t kA12 = 1403580, kA13 = 810728, kA21 = 527612, kA23 = 1370589;
constexpr double kInverseM1 = 0x1.000000d10000bp-32; // nearest to 1 / m1
static_assert(__builtin_bit_cast(uint64_t, kInverseM1) == 0x3DF000000D10000B);

struct State {
  uint32_t x[3], y[3]; // oldest first
};

// Outputs come as doubles, two of a sequence at a time, or as single words.
template <class Real> struct Scaled : LinearDouble<Reading::Unsigned, Real> {
  Scaled(void* to, double a, double b) : LinearDouble<Reading::Unsigned, Real>(to, (b - a) * kInverseM1, a) {}
  void put2(int64_t k, Double2 z) const {
    const Double2 y = z * this->scale + this->offset;
    if constexpr (sizeof(Real) == sizeof(double))
      store2(this->r + k, y);
    else
      _mm_storel_epi64(reinterpret_cast<__m128i*>(this->r + k), _mm_castps_si128(_mm_cvtpd_ps(y)));
  }
};

struct Raw : Words {
  using Words::Words;
  void put2(int64_t k, Double2 z) const {
    const __m128i w = (__m128i)(z + 0x1p52); // the low halves are the words
    _mm_storel_epi64(reinterpret_cast<__m128i*>(r + k), _mm_shuffle_epi32(w, _MM_SHUFFLE(3, 1, 2, 0)));
  }
};

// The constants of one component: next = p * mul - q * sub mod m.
template <uint32_t mul_, uint32_t sub_, uint32_t m_> struct Component {
  static constexpr uint64_t mul = mul_, sub = sub_, m = m_, excess = (uint64_t{1} << 32) - m;
  static constexpr uint64_t positive = m * sub;

  static uint32_t next(uint32_t p, uint32_t q) { return remainder(mul * p + (positive - sub * q)); }

  // Of a number below 2^53.
  static uint32_t remainder(uint64_t v) {
    v = (v & 0xFFFFFFFF) + (v >> 32) * excess; // 2^32 = excess mod m
    v = (v & 0xFFFFFFFF) + (v >> 32) * excess;
    return static_cast<uint32_t>(v >= m ? v - m : v);
  }

  // Two lanes in doubles, as residues about 0: of at most m / 2 + 2, so that products and their difference stay below
  // 2^53 and everything is exact. The quotient is rounded to the nearest by adding 1.5 * 2^52, which takes the rounding
  // mode to be to nearest.
  static Double2 next(Double2 p, Double2 q) {
    constexpr double kMul = mul_, kSub = sub_, kModulus = m_, kToInteger = 0x1.8p52;
    const Double2 v = p * kMul - q * kSub;
    const Double2 quotient = (v * (1.0 / kModulus) + kToInteger) - kToInteger;
    return v - quotient * kModulus;
  }

  static double about_zero(uint32_t x) { return x > m / 2 ? static_cast<double>(x) - m_ : static_cast<double>(x); }
  static Double2 from_zero(Double2 x) { return add_where_negative(x, m_); }
  static Double2 add_where_negative(Double2 x, double modulus) {
    return x + (Double2)((ULong2)(x < 0.0) & (ULong2)Double2{modulus, modulus});
  }
};
using X = Component<kA12, kA13, kM1>;
using Y = Component<kA21, kA23, kM2>;

uint32_t step(State& s) {
  const uint32_t x = X::next(s.x[1], s.x[0]), y = Y::next(s.y[2], s.y[0]);
  s = {{s.x[1], s.x[2], x}, {s.y[1], s.y[2], y}};
  return x >= y ? x - y : static_cast<uint32_t>(x - y + kM1);
}

Double2 combine(Double2 x, Double2 y) { return X::from_zero(X::from_zero(x) - Y::from_zero(y)); }

template <class Component> void multiply(const uint32_t matrix[9], uint32_t v[3]) {
  uint32_t result[3];
  for (int i = 0; i < 3; i++) {
    uint64_t low = 0, high = 0; // halves of the sum of products
    for (int k = 0; k < 3; k++) {
      const uint64_t product = static_cast<uint64_t>(matrix[3 * i + k]) * v[k];
      low += product & 0xFFFFFFFF;
      high += product >> 32;
    }
    result[i] = Component::remainder(low + high * Component::excess);
  }
  for (int i = 0; i < 3; i++) v[i] = result[i];
}

constexpr int kLanes = 8;
constexpr int kLongestLog = 10; // segments of up to 2^10 outputs
constexpr int kShortestLog = 4;

// A component in all lanes: three rows of history, then the rows of the next steps. They stand in memory, as there are
// more of them than registers.
constexpr int kPairs = kLanes / 2, kSteps = 8;
struct Rows {
  Double2 row[3 + kSteps][kPairs];
  template <class Component> void set(int lane, const uint32_t history[3], Component) {
    for (int i = 0; i < 3; i++) row[i][lane / 2][lane % 2] = Component::about_zero(history[i]);
  }
  void keep_last() { memcpy(row, row + kSteps, sizeof(Double2) * 3 * kPairs); }
};

// kLanes segments of 2^log outputs each, side by side: lane j starts 2^log outputs after lane j - 1, by a matrix of the
// skip-ahead table.
template <class Map> void generate_segments(State& state, int64_t at, int log, Map map) {
  Rows x, y;
  for (int j = 0; j < kLanes; j++) {
    x.set(j, state.x, X());
    y.set(j, state.y, Y());
    multiply<X>(__kest_mrg32k3a_skipahead_table[0][log], state.x);
    multiply<Y>(__kest_mrg32k3a_skipahead_table[1][log], state.y);
  }
  Double2 last_y[kPairs]; // each step waits for the one before, so this row stays in registers
  memcpy(last_y, y.row[2], sizeof last_y);
  const int64_t length = int64_t{1} << log;
  for (int64_t t = 0; t < length; t += kSteps) {
    for (int u = 0; u < kSteps; u++) {
      for (int h = 0; h < kPairs; h++) {
        x.row[u + 3][h] = X::next(x.row[u + 1][h], x.row[u][h]);
        y.row[u + 3][h] = last_y[h] = Y::next(last_y[h], y.row[u][h]);
      }
      asm volatile("" ::: "memory"); // else the compiler carries the rows along in further copies on the stack
    }
    for (int h = 0; h < kPairs; h++)
      for (int u = 3; u < kSteps + 3; u += 2) {
        const Double2 z0 = combine(x.row[u][h], y.row[u][h]), z1 = combine(x.row[u + 1][h], y.row[u + 1][h]);
        const int64_t to = at + 2 * h * length + t + u - 3;
        map.put2(to, _mm_unpacklo_pd(z0, z1));
        map.put2(to + length, _mm_unpackhi_pd(z0, z1));
      }
    x.keep_last();
    y.keep_last();
  }
}

template <class Map> int32_t generate(tarn_stream* stream, int32_t n, Map map) {
  State& stored = state_of<State>(stream);
  State state = stored;
  int64_t k = 0;
  if (_MM_GET_ROUNDING_MODE() == _MM_ROUND_NEAREST)
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

TARN_OUTPUTS(MRG32K3A, generate, Raw, Scaled<double>, Scaled<float>)
