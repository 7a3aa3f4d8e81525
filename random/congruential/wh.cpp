// WH: the fractional part of x1/m1 + x2/m2 + x3/m3 + x4/m4, each xi = ai xi mod mi. The member of the family chooses
// the moduli and the multipliers; the multipliers in use stand in the state, so that a leapfrogged stream goes on.
#include "random/streams/maps.h"
#include "random/streams/stream.h"

using namespace tarn::random;

namespace {

struct State {
  uint32_t x[4], a[4];
};

// Components are doubles. A product a x stays below 2^48, so it is exact, and its quotient by m is at least 2^-24 away
// from every integer, so that truncating the product with 1 / m is exact too, however 1 / m was rounded.
struct Modulus {
  double m, inverse;
  Double2 multiply(Double2 x, Double2 y) const {
    const Double2 p = x * y;
    const Double2 quotient = _mm_cvtepi32_pd(_mm_cvttpd_epi32(p * inverse));
    return p - quotient * m;
  }
};

struct Raw {
  LooseWord* r;
  explicit Raw(void* to) : r(static_cast<LooseWord*>(to)) {}
  // Two elements: component i of both stands in x[i].
  void put2(int64_t k, const Double2 x[4], const double*) const {
    const __m128 x01 = _mm_movelh_ps((Float4)_mm_cvttpd_epi32(x[0]), (Float4)_mm_cvttpd_epi32(x[1]));
    const __m128 x23 = _mm_movelh_ps((Float4)_mm_cvttpd_epi32(x[2]), (Float4)_mm_cvttpd_epi32(x[3]));
    store4(r + 4 * k, (UInt4)_mm_shuffle_ps(x01, x23, _MM_SHUFFLE(2, 0, 2, 0)));
    store4(r + 4 * k + 4, (UInt4)_mm_shuffle_ps(x01, x23, _MM_SHUFFLE(3, 1, 3, 1)));
  }
  void put1(int64_t k, const Double2 x[4], const double*) const {
    for (int i = 0; i < 4; i++) r[4 * k + i] = static_cast<uint32_t>(static_cast<int32_t>(x[i][0]));
  }
};

template <class Real> struct Scaled {
  typename Loose<Real>::type* r;
  double scale, offset;
  Scaled(void* to, double a, double b) : r(static_cast<typename Loose<Real>::type*>(to)), scale(b - a), offset(a) {}
  Double2 value(const Double2 x[4], const double* inverse) const {
    const Double2 s = x[0] * inverse[0] + x[1] * inverse[1] + x[2] * inverse[2] + x[3] * inverse[3];
    return (s - (Double2)_mm_cvtepi32_pd(_mm_cvttpd_epi32(s))) * scale + offset;
  }
  void put2(int64_t k, const Double2 x[4], const double* inverse) const {
    if constexpr (sizeof(Real) == sizeof(double))
      store2(r + k, value(x, inverse));
    else
      _mm_storel_epi64(reinterpret_cast<__m128i*>(r + k), _mm_castps_si128(_mm_cvtpd_ps(value(x, inverse))));
  }
  void put1(int64_t k, const Double2 x[4], const double* inverse) const {
    r[k] = static_cast<Real>(value(x, inverse)[0]);
  }
};

// Lanes (x, a x) and (a^2 x, a^3 x) of each component, moved on by a^4.
template <class Map> int32_t generate(tarn_stream* stream, int32_t n, Map map) {
  if (n <= 0) return TARN_RANDOM_OK;
  State& state = state_of<State>(stream);
  const int32_t member = member_of(stream);
  const double* inverse = __kestdWH_IM_Tab[member];
  Modulus modulus[4];
  Double2 even[4], odd[4], step[4];
  for (int i = 0; i < 4; i++) {
    const double m = __kest_WH_M[member][i], a = state.a[i], x = state.x[i];
    modulus[i] = {m, 1.0 / m};
    const Double2 a2 = modulus[i].multiply(Double2{a, a}, Double2{a, a});
    even[i] = modulus[i].multiply(Double2{x, x}, Double2{1.0, a});
    odd[i] = modulus[i].multiply(even[i], a2);
    step[i] = modulus[i].multiply(a2, a2);
  }
  int64_t k = 0;
  for (; k + 4 <= n; k += 4) {
    map.put2(k, even, inverse);
    map.put2(k + 2, odd, inverse);
    for (int i = 0; i < 4; i++) {
      even[i] = modulus[i].multiply(even[i], step[i]);
      odd[i] = modulus[i].multiply(odd[i], step[i]);
    }
  }
  for (; k < n; k++) {
    map.put1(k, even, inverse);
    for (int i = 0; i < 4; i++) { // the four lanes move down by one
      even[i] = _mm_shuffle_pd(even[i], odd[i], 1);
      odd[i] = _mm_shuffle_pd(odd[i], odd[i], 1);
    }
  }
  for (int i = 0; i < 4; i++) state.x[i] = static_cast<uint32_t>(static_cast<int32_t>(even[i][0]));
  return TARN_RANDOM_OK;
}

void seed(State& state, int32_t member, int32_t n, const uint32_t* seeds) {
  const int given = n < 0 || n > 4 ? 4 : n;
  for (int i = 0; i < 4; i++) {
    state.x[i] = i < given ? seeds[i] % __kest_WH_M[member][i] : 1;
    if (state.x[i] == 0) state.x[i] = 1;
    state.a[i] = __kest_WH_A[member][i];
  }
}

void advance(State& state, int32_t member, uint64_t count) {
  for (int i = 0; i < 4; i++) {
    const uint32_t m = __kest_WH_M[member][i];
    state.x[i] = static_cast<uint32_t>(static_cast<uint64_t>(__kestiPowMod(state.a[i], count, m)) * state.x[i] % m);
  }
}

}

TARN_EXPORT uint32_t __kestiPowMod(uint32_t base, uint64_t exponent, uint32_t modulus) {
  uint64_t result = 1, square = base;
  for (; exponent != 0; exponent >>= 1) {
    if (exponent & 1) result = result * square % modulus;
    square = square * square % modulus;
  }
  return static_cast<uint32_t>(result);
}

TARN_EXPORT int32_t __kestBRngWHInitStream(int32_t method, tarn_stream* stream, int32_t n, const void* params) {
  State& state = state_of<State>(stream);
  const int32_t member = member_of(stream);
  switch (method) {
  case kSeed: seed(state, member, n, static_cast<const uint32_t*>(params)); return TARN_RANDOM_OK;
  case kLeapfrog:
    advance(state, member, static_cast<uint64_t>(static_cast<int64_t>(*static_cast<const int32_t*>(params))));
    for (int i = 0; i < 4; i++)
      state.a[i] = __kestiPowMod(state.a[i], static_cast<uint64_t>(static_cast<int64_t>(n)), __kest_WH_M[member][i]);
    return TARN_RANDOM_OK;
  case kSkipAhead: advance(state, member, *static_cast<const uint64_t*>(params)); return TARN_RANDOM_OK;
  default: return no_such_method(method);
  }
}

TARN_OUTPUTS(WH, generate, Raw, Scaled<double>, Scaled<float>)
