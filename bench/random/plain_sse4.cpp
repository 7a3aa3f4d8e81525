#include "bench/random/plain.h"

#include <Random123/ars.h>
#include <Random123/philox.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <smmintrin.h>
#include <type_traits>
#include <wmmintrin.h>

namespace tarn::bench {

namespace {

constexpr double two_to_minus_32 = 0x1p-32;

__m128i load(const void* from) { return _mm_loadu_si128(static_cast<const __m128i*>(from)); }
void store(void* to, __m128i x) { _mm_storeu_si128(static_cast<__m128i*>(to), x); }
__m128i all(uint32_t x) { return _mm_set1_epi32(static_cast<int32_t>(x)); }

// How a generator's words become numbers: as signed integers, as unsigned less 2^31, as unsigned.
enum class Reading { Signed, Centred, Unsigned };

template <Reading reading> void convert(const uint32_t* words, double* r, int64_t n) {
  constexpr uint32_t flip = reading == Reading::Signed ? 0 : 0x80000000;
  const __m128d scale = _mm_set1_pd(two_to_minus_32), two31 = _mm_set1_pd(0x1p31);
  const __m128d offset = _mm_set1_pd(reading == Reading::Unsigned ? 0 : 0.5);
  auto put = [&](double* to, __m128i w) {
    __m128d t = _mm_cvtepi32_pd(w);
    if constexpr (reading == Reading::Unsigned) t = _mm_add_pd(t, two31);
    _mm_storeu_pd(to, _mm_add_pd(_mm_mul_pd(t, scale), offset));
  };
  int64_t k = 0;
  for (; k + 4 <= n; k += 4) {
    __m128i w = load(words + k);
    if constexpr (flip != 0) w = _mm_xor_si128(w, all(flip));
    put(r + k, w);
    put(r + k + 2, _mm_shuffle_epi32(w, _MM_SHUFFLE(1, 0, 3, 2)));
  }
  for (; k < n; k++)
    r[k] = reading == Reading::Unsigned ? words[k] * two_to_minus_32
                                        : static_cast<int32_t>(words[k] ^ flip) * two_to_minus_32 + 0.5;
}

// 59-bit integers.
template <Reading> void convert(const uint64_t* words, double* r, int64_t n) {
  for (int64_t k = 0; k < n; k++) r[k] = static_cast<double>(static_cast<int64_t>(words[k])) * 0x1p-59;
}

// A generator of whole blocks; what is left of the last one waits for the next call.
template <class Generator> struct ByBlocks {
  using Word = typename Generator::Word;
  static constexpr int64_t size = Generator::block_size;
  Generator generator;
  alignas(16) Word block[size];
  int64_t at = size;

  int64_t take(int64_t n) {
    if (at == size) {
      generator.fill(block);
      at = 0;
    }
    return std::min(n, size - at);
  }
  void words(Word* r, int64_t n) {
    while (n > 0) {
      int64_t count = size;
      if (at == size && n >= size) {
        generator.fill(r);
      } else {
        count = take(n);
        std::memcpy(r, block + at, static_cast<size_t>(count) * sizeof(Word));
        at += count;
      }
      r += count;
      n -= count;
    }
  }
  void doubles(double* r, int64_t n) {
    while (n > 0) {
      const int64_t count = take(n);
      convert<Generator::reading>(block + at, r, count);
      at += count;
      r += count;
      n -= count;
    }
  }
};

void scramble(uint32_t* words, int64_t n) {
  uint32_t x = 12345;
  for (int64_t k = 0; k < n; k++) words[k] = x = (x ^ x >> 15) * 2891336453u + 97;
}

// ---- Mersenne family

template <int N, int M, int R, int U, uint32_t matrix, uint32_t b, uint32_t c> struct Twister {
  using Word = uint32_t;
  static constexpr int64_t block_size = N;
  static constexpr Reading reading = N == 624 ? Reading::Unsigned : Reading::Centred; // MT19937, MT2203
  uint32_t ring[N];
  Twister() { scramble(ring, N); }

  static uint32_t next(uint32_t here, uint32_t after, uint32_t far) {
    constexpr uint32_t lower = (uint32_t{1} << R) - 1;
    const uint32_t y = (here & ~lower) | (after & lower);
    return far ^ y >> 1 ^ (y & 1 ? matrix : 0);
  }
  static __m128i next(__m128i here, __m128i after, __m128i far) {
    const __m128i lower = all((uint32_t{1} << R) - 1);
    const __m128i y = _mm_or_si128(_mm_andnot_si128(lower, here), _mm_and_si128(lower, after));
    const __m128i odd = _mm_srai_epi32(_mm_slli_epi32(y, 31), 31);
    return _mm_xor_si128(_mm_xor_si128(far, _mm_srli_epi32(y, 1)), _mm_and_si128(odd, all(matrix)));
  }
  void range(int from, int to, int far) {
    int k = from;
    for (; k + 4 <= to; k += 4) store(ring + k, next(load(ring + k), load(ring + k + 1), load(ring + k + far)));
    for (; k < to; k++) ring[k] = next(ring[k], ring[k + 1], ring[k + far]);
  }
  void fill(uint32_t* out) {
    range(0, N - M, M);
    range(N - M, N - 1, M - N);
    ring[N - 1] = next(ring[N - 1], ring[0], ring[M - 1]);
    int k = 0;
    for (; k + 4 <= N; k += 4) {
      __m128i y = load(ring + k);
      y = _mm_xor_si128(y, _mm_srli_epi32(y, U));
      y = _mm_xor_si128(y, _mm_and_si128(_mm_slli_epi32(y, 7), all(b)));
      y = _mm_xor_si128(y, _mm_and_si128(_mm_slli_epi32(y, 15), all(c)));
      store(out + k, _mm_xor_si128(y, _mm_srli_epi32(y, 18)));
    }
    for (; k < N; k++) {
      uint32_t y = ring[k];
      y ^= y >> U;
      y ^= (y << 7) & b;
      y ^= (y << 15) & c;
      out[k] = y ^ y >> 18;
    }
  }
};
using MT19937 = Twister<624, 397, 31, 11, 0x9908B0DF, 0x9D2C5680, 0xEFC60000>;
using MT2203 = Twister<69, 34, 5, 12, 0xAF81055F, 0xDD7EEF80, 0xEFD78000>;

struct SFMT19937 {
  using Word = uint32_t;
  static constexpr int64_t block_size = 624;
  static constexpr Reading reading = Reading::Signed;
  __m128i ring[156];
  SFMT19937() {
    uint32_t words[624];
    scramble(words, 624);
    std::memcpy(ring, words, sizeof ring);
  }
  void fill(uint32_t* out) {
    const __m128i mask = _mm_set_epi32(static_cast<int>(0xBFFFFFF6), static_cast<int>(0xBFFAFFFF),
                                       static_cast<int>(0xDDFECB7F), static_cast<int>(0xDFFFFFEF));
    __m128i before2 = ring[154], before1 = ring[155];
    auto range = [&](int from, int to, int far) {
      for (int k = from; k < to; k++) {
        const __m128i shifted = _mm_and_si128(_mm_srli_epi32(ring[k + far], 11), mask);
        __m128i z = _mm_xor_si128(ring[k], _mm_slli_si128(ring[k], 1));
        z = _mm_xor_si128(_mm_xor_si128(z, shifted), _mm_srli_si128(before2, 1));
        z = _mm_xor_si128(z, _mm_slli_epi32(before1, 18));
        ring[k] = z;
        store(out + 4 * k, z);
        before2 = before1;
        before1 = z;
      }
    };
    range(0, 34, 122);
    range(34, 156, -34);
  }
};

// ---- Congruential, recursive and shift generators

struct MCG31M1 {
  using Word = uint32_t;
  static constexpr int64_t block_size = 1024;
  static constexpr Reading reading = Reading::Signed;
  static constexpr uint32_t modulus = 0x7FFFFFFF, a = 1132489760;
  __m128i lanes[4], step;
  MCG31M1() {
    uint64_t x = 7777, power = 1;
    uint64_t start[8];
    for (uint64_t& value : start) {
      value = x;
      x = x * a % modulus;
      power = power * a % modulus;
    }
    std::memcpy(lanes, start, sizeof start);
    step = _mm_set1_epi64x(static_cast<int64_t>(power));
  }
  void fill(uint32_t* out) {
    const __m128i m = _mm_set1_epi64x(modulus);
    for (int64_t k = 0; k < block_size; k += 8)
      for (int j = 0; j < 4; j += 2) {
        store(out + k + 2 * j,
              _mm_castps_si128(
                  _mm_shuffle_ps(_mm_castsi128_ps(lanes[j]), _mm_castsi128_ps(lanes[j + 1]), _MM_SHUFFLE(2, 0, 2, 0))));
        for (int h = j; h < j + 2; h++) {
          const __m128i p = _mm_mul_epu32(lanes[h], step);
          const __m128i sum = _mm_add_epi64(_mm_and_si128(p, m), _mm_srli_epi64(p, 31));
          lanes[h] = _mm_min_epu32(sum, _mm_sub_epi32(sum, m));
        }
      }
  }
};

struct MCG59 {
  using Word = uint64_t;
  static constexpr int64_t block_size = 1024;
  static constexpr Reading reading = Reading::Signed;
  static constexpr uint64_t mask = (uint64_t{1} << 59) - 1, a = 302875106592253;
  uint64_t lanes[8], step = 1;
  MCG59() {
    uint64_t x = 7777;
    for (uint64_t& value : lanes) {
      value = x;
      x *= a;
      step *= a;
    }
  }
  void fill(uint64_t* out) {
    uint64_t x[8];
    std::copy(lanes, lanes + 8, x);
    const uint64_t power = step;
    for (int64_t k = 0; k < block_size; k += 8)
      for (int j = 0; j < 8; j++) {
        out[k + j] = x[j] & mask;
        x[j] *= power;
      }
    std::copy(x, x + 8, lanes);
  }
};

struct R250 {
  using Word = uint32_t;
  static constexpr int64_t block_size = 2000;
  static constexpr Reading reading = Reading::Unsigned;
  uint32_t history[250];
  R250() { scramble(history, 250); }
  void fill(uint32_t* out) {
    auto range = [&](int64_t from, int64_t to, const uint32_t* first, const uint32_t* second) {
      int64_t k = from;
      for (; k + 4 <= to; k += 4) store(out + k, _mm_xor_si128(load(first + k), load(second + k)));
      for (; k < to; k++) out[k] = first[k] ^ second[k];
    };
    range(0, 147, history, history + 103);
    range(147, 250, history, out - 147);
    range(250, block_size, out - 250, out - 147);
    std::memcpy(history, out + block_size - 250, sizeof history);
  }
};

// Scalar, with remainders: four generators of small prime moduli.
struct WH {
  uint32_t x[4] = {1, 2, 3, 4};
  static constexpr uint32_t a[4] = {125, 117, 127, 126}, m[4] = {16770647, 16770643, 16770623, 16770617};
  void doubles(double* r, int64_t n) {
    for (int64_t k = 0; k < n; k++) {
      double s = 0;
      for (int i = 0; i < 4; i++) {
        s += x[i] * (1.0 / m[i]);
        x[i] = static_cast<uint32_t>(static_cast<uint64_t>(a[i]) * x[i] % m[i]);
      }
      r[k] = s - static_cast<int32_t>(s);
    }
  }
};

// The published program in floating-point arithmetic (L'Ecuyer, Operations Research 47, 1999, figure I).
struct MRG32k3a {
  using Word = uint32_t;
  double s10 = 12345, s11 = 12345, s12 = 12345, s20 = 12345, s21 = 12345, s22 = 12345;
  double next() {
    constexpr double m1 = 4294967087.0, m2 = 4294944443.0;
    double p1 = 1403580.0 * s11 - 810728.0 * s10;
    p1 -= static_cast<double>(static_cast<int64_t>(p1 / m1)) * m1;
    if (p1 < 0.0) p1 += m1;
    s10 = s11, s11 = s12, s12 = p1;
    double p2 = 527612.0 * s22 - 1370589.0 * s20;
    p2 -= static_cast<double>(static_cast<int64_t>(p2 / m2)) * m2;
    if (p2 < 0.0) p2 += m2;
    s20 = s21, s21 = s22, s22 = p2;
    return p1 <= p2 ? p1 - p2 + m1 : p1 - p2;
  }
  void words(uint32_t* r, int64_t n) {
    for (int64_t k = 0; k < n; k++) r[k] = static_cast<uint32_t>(static_cast<int64_t>(next()));
  }
  void doubles(double* r, int64_t n) {
    for (int64_t k = 0; k < n; k++) r[k] = next() * 2.328306549295728e-10;
  }
};

struct MRG32k3aIntegers {
  using Word = uint32_t;
  uint64_t x[3] = {12345, 12345, 12345}, y[3] = {12345, 12345, 12345};
  uint32_t next() {
    constexpr uint64_t m1 = 4294967087, m2 = 4294944443;
    const uint64_t p = (1403580 * x[1] + 810728 * (m1 - x[0])) % m1, q = (527612 * y[2] + 1370589 * (m2 - y[0])) % m2;
    x[0] = x[1], x[1] = x[2], x[2] = p;
    y[0] = y[1], y[1] = y[2], y[2] = q;
    return static_cast<uint32_t>(p >= q ? p - q : p - q + m1);
  }
  void words(uint32_t* r, int64_t n) {
    for (int64_t k = 0; k < n; k++) r[k] = next();
  }
  void doubles(double* r, int64_t n) {
    for (int64_t k = 0; k < n; k++) r[k] = next() * 2.328306549837829e-10;
  }
};

// ---- Counter generators

struct PhiloxSimd {
  using Word = uint32_t;
  static constexpr int64_t block_size = 512;
  static constexpr Reading reading = Reading::Signed;
  uint32_t counter = 0;
  void fill(uint32_t* out) {
    for (int64_t k = 0; k < block_size; k += 16, counter += 4) {
      __m128i c0 = _mm_add_epi32(all(counter), _mm_set_epi32(3, 2, 1, 0)), c1 = all(1), c2 = all(2), c3 = all(3);
      uint32_t k0 = 7777, k1 = 8888;
      for (int round = 0; round < 10; round++, k0 += 0x9E3779B9, k1 += 0xBB67AE85) {
        __m128i high_p, low_p, high_q, low_q;
        multiply(c0, all(0xD2511F53), high_p, low_p);
        multiply(c2, all(0xCD9E8D57), high_q, low_q);
        c0 = _mm_xor_si128(_mm_xor_si128(high_q, c1), all(k0));
        c1 = low_q;
        c2 = _mm_xor_si128(_mm_xor_si128(high_p, c3), all(k1));
        c3 = low_p;
      }
      __m128 r0 = _mm_castsi128_ps(c0), r1 = _mm_castsi128_ps(c1), r2 = _mm_castsi128_ps(c2), r3 = _mm_castsi128_ps(c3);
      _MM_TRANSPOSE4_PS(r0, r1, r2, r3);
      store(out + k, _mm_castps_si128(r0));
      store(out + k + 4, _mm_castps_si128(r1));
      store(out + k + 8, _mm_castps_si128(r2));
      store(out + k + 12, _mm_castps_si128(r3));
    }
  }
  static void multiply(__m128i x, __m128i y, __m128i& high, __m128i& low) {
    const __m128i even = _mm_mul_epu32(x, y), odd = _mm_mul_epu32(_mm_srli_epi64(x, 32), y);
    high = _mm_blend_epi16(_mm_srli_epi64(even, 32), odd, 0xCC);
    low = _mm_blend_epi16(even, _mm_slli_epi64(odd, 32), 0xCC);
  }
};

struct ArsSimd {
  using Word = uint32_t;
  static constexpr int64_t block_size = 512;
  static constexpr Reading reading = Reading::Signed;
  __m128i counter = _mm_setzero_si128();
  void fill(uint32_t* out) {
    __m128i key[6];
    key[0] = _mm_set1_epi32(7777);
    const __m128i weyl =
        _mm_set_epi64x(static_cast<int64_t>(0xBB67AE8584CAA73B), static_cast<int64_t>(0x9E3779B97F4A7C15));
    for (int i = 1; i < 6; i++) key[i] = _mm_add_epi64(key[i - 1], weyl);
    for (int64_t k = 0; k < block_size; k += 16) {
      __m128i b[4];
      for (__m128i& x : b) {
        x = _mm_xor_si128(counter, key[0]);
        counter = _mm_add_epi64(counter, _mm_set_epi64x(0, 1));
      }
      for (int i = 1; i < 5; i++)
        for (__m128i& x : b) x = _mm_aesenc_si128(x, key[i]);
      for (int j = 0; j < 4; j++) store(out + k + 4 * j, _mm_aesenclast_si128(b[j], key[5]));
    }
  }
};

// Random123 as its users write it: a counter, a key and a function.
template <class Function> struct Random123 {
  using Word = uint32_t;
  using Counter = typename Function::ctr_type;
  Counter counter = {{}};
  typename Function::ukey_type user_key = {{7777}};
  template <class Use> void run(int64_t n, Use use) {
    Function function;
    const typename Function::key_type key(user_key);
    int64_t k = 0;
    for (; k + 4 <= n; k += 4) use(k, 4, function(counter, key)), counter.incr();
    if (k < n) use(k, n - k, function(counter, key)), counter.incr();
  }
  void words(uint32_t* r, int64_t n) {
    run(n, [r](int64_t k, int64_t count, const Counter& c) {
      std::memcpy(r + k, &c, static_cast<size_t>(count) * sizeof(uint32_t));
    });
  }
  void doubles(double* r, int64_t n) {
    run(n, [r](int64_t k, int64_t count, const Counter& c) {
      uint32_t words[4];
      std::memcpy(words, &c, sizeof words);
      convert<Reading::Signed>(words, r + k, count);
    });
  }
};

// ---- Points in Gray-code order

struct Points {
  using Word = uint32_t;
  int dimension;
  std::vector<uint32_t> x, rows;
  uint32_t index = 1;
  explicit Points(int d) : dimension(d), x(static_cast<size_t>(d)), rows(32 * static_cast<size_t>(d)) {
    scramble(rows.data(), 32 * d);
  }
  template <class Use> void run(int64_t n, Use use) {
    for (int64_t k = 0; k + dimension <= n; k += dimension) {
      const uint32_t* add = rows.data() + static_cast<std::ptrdiff_t>(__builtin_ctz(~index++)) * dimension;
      int d = 0;
      for (; d + 4 <= dimension; d += 4) {
        const __m128i w = load(x.data() + d);
        use(k + d, 4, w);
        store(x.data() + d, _mm_xor_si128(w, load(add + d)));
      }
      for (; d < dimension; d++) {
        use(k + d, 1, _mm_cvtsi32_si128(static_cast<int32_t>(x[static_cast<size_t>(d)])));
        x[static_cast<size_t>(d)] ^= add[d];
      }
    }
  }
  void words(uint32_t* r, int64_t n) {
    run(n, [r](int64_t k, int count, __m128i w) {
      if (count == 4)
        store(r + k, w);
      else
        r[k] = static_cast<uint32_t>(_mm_cvtsi128_si32(w));
    });
  }
  void doubles(double* r, int64_t n) {
    const __m128d scale = _mm_set1_pd(0x1p-31);
    run(n, [r, scale](int64_t k, int count, __m128i w) {
      w = _mm_srli_epi32(w, 1);
      if (count == 1) {
        r[k] = _mm_cvtsi128_si32(w) * 0x1p-31;
        return;
      }
      _mm_storeu_pd(r + k, _mm_mul_pd(_mm_cvtepi32_pd(w), scale));
      _mm_storeu_pd(r + k + 2, _mm_mul_pd(_mm_cvtepi32_pd(_mm_shuffle_epi32(w, _MM_SHUFFLE(1, 0, 3, 2))), scale));
    });
  }
};

template <class Generator> PlainGenerator plain(const char* name, Generator generator = {}) {
  const auto g = std::make_shared<Generator>(std::move(generator));
  PlainGenerator result = {name, nullptr, [g](double* r, int64_t n) { g->doubles(r, n); }};
  if constexpr (!std::is_same_v<Generator, WH>)
    result.words = [g](void* r, int64_t n) { g->words(static_cast<typename Generator::Word*>(r), n); };
  return result;
}

}

std::vector<PlainGenerator> plain_generators(const std::string& name, int dimension) {
  if (name == "MCG31M1") return {plain<ByBlocks<MCG31M1>>("plain SSE4")};
  if (name == "MCG59") return {plain<ByBlocks<MCG59>>("plain, eight lanes")};
  if (name == "R250") return {plain<ByBlocks<R250>>("plain SSE4")};
  if (name == "WH") return {plain<WH>("plain, scalar")};
  if (name == "MRG32K3A") return {plain<MRG32k3a>("published program"), plain<MRG32k3aIntegers>("plain, integers")};
  if (name == "MT19937") return {plain<ByBlocks<MT19937>>("plain SSE4")};
  if (name == "MT2203") return {plain<ByBlocks<MT2203>>("plain SSE4")};
  if (name == "SFMT19937") return {plain<ByBlocks<SFMT19937>>("plain SSE4")};
  if (name == "ARS5")
    return {plain<ByBlocks<ArsSimd>>("plain SSE4"), plain<Random123<r123::ARS4x32_R<5>>>("Random123")};
  if (name == "PHILOX4X32X10")
    return {plain<ByBlocks<PhiloxSimd>>("plain SSE4"), plain<Random123<r123::Philox4x32>>("Random123")};
  if (dimension > 0) return {plain("plain SSE4", Points(dimension))};
  return {};
}

}
