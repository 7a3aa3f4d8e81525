// The sequences of the generators: against plain recurrences written here, whatever the cuts, the alignment and the
// output form; skip ahead and leapfrog by brute force.
#include "random/streams.h"

#include <gtest/gtest.h>

#include <array>
#include <cfenv>
#include <cmath>
#include <functional>
#include <random>

using namespace tarn::test;

namespace {

__extension__ typedef unsigned __int128 Wide;

// ---- Plain recurrences: a function gives element after element

using Next = std::function<std::vector<uint32_t>()>;

Next plain_mcg31m1(uint64_t x) {
  return [x]() mutable {
    const auto out = static_cast<uint32_t>(x);
    x = x * 1132489760 % 2147483647;
    return std::vector<uint32_t>{out};
  };
}

Next plain_mcg59(uint64_t x) {
  return [x]() mutable {
    const uint64_t out = x;
    x = static_cast<uint64_t>(static_cast<Wide>(x) * 302875106592253 % (uint64_t{1} << 59));
    return std::vector<uint32_t>{static_cast<uint32_t>(out), static_cast<uint32_t>(out >> 32)};
  };
}

Next plain_wh(int member, std::vector<uint64_t> x) {
  return [=]() mutable {
    std::vector<uint32_t> out(x.begin(), x.end());
    for (int i = 0; i < 4; i++) x[i] = x[i] * __kest_WH_A[member][i] % __kest_WH_M[member][i];
    return out;
  };
}

Next plain_mrg32k3a(std::vector<int64_t> s) {
  return [s]() mutable {
    constexpr int64_t m1 = 4294967087, m2 = 4294944443;
    int64_t x = (1403580 * s[1] - 810728 * s[0]) % m1, y = (527612 * s[5] - 1370589 * s[3]) % m2;
    if (x < 0) x += m1;
    if (y < 0) y += m2;
    s = {s[1], s[2], x, s[4], s[5], y};
    return std::vector<uint32_t>{static_cast<uint32_t>(x < y ? x - y + m1 : x - y)};
  };
}

Next plain_r250(uint32_t s) {
  std::vector<uint32_t> w;
  for (int k = 0; k < 250; k++) w.push_back(s *= 69069);
  for (int t = 0; t < 32; t++) {
    uint32_t& v = w[7 * t + 3];
    v = (v & ((1u << (31 - t)) - 1)) | 1u << (31 - t);
  }
  return [w]() mutable {
    w.push_back(w[w.size() - 250] ^ w[w.size() - 147]);
    return std::vector<uint32_t>{w.back()};
  };
}

std::vector<uint32_t> plain_array_seed(size_t n, std::vector<uint32_t> key) {
  std::vector<uint32_t> mt(n);
  mt[0] = 19650218;
  for (size_t i = 1; i < n; i++) mt[i] = static_cast<uint32_t>(1812433253u * (mt[i - 1] ^ mt[i - 1] >> 30) + i);
  size_t i = 1, j = 0;
  for (size_t k = std::max(n, key.size()); k > 0; k--) {
    mt[i] = static_cast<uint32_t>((mt[i] ^ (mt[i - 1] ^ mt[i - 1] >> 30) * 1664525u) + key[j] + j);
    if (++i == n) mt[0] = mt[n - 1], i = 1;
    if (++j == key.size()) j = 0;
  }
  for (size_t k = n - 1; k > 0; k--) {
    mt[i] = static_cast<uint32_t>((mt[i] ^ (mt[i - 1] ^ mt[i - 1] >> 30) * 1566083941u) - i);
    if (++i == n) mt[0] = mt[n - 1], i = 1;
  }
  mt[0] = 0x80000000;
  return mt;
}

Next plain_mt2203(int member, std::vector<uint32_t> key) {
  std::vector<uint32_t> x = plain_array_seed(69, key);
  return [=]() mutable {
    const size_t k = x.size() - 69;
    uint32_t y = (x[k] & 0xFFFFFFE0) | (x[k + 1] & 0x1F);
    x.push_back(x[k + 34] ^ y >> 1 ^ (y & 1 ? __kest_mt2203_table[member][0] : 0));
    y = x.back();
    y ^= y >> 12;
    y ^= y << 7 & __kest_mt2203_table[member][1];
    y ^= y << 15 & __kest_mt2203_table[member][2];
    return std::vector<uint32_t>{y ^ y >> 18};
  };
}

Next plain_mt19937(std::vector<uint32_t> key) {
  std::seed_seq unused;
  std::vector<uint32_t> x = plain_array_seed(624, key);
  return [=]() mutable {
    const size_t k = x.size() - 624;
    uint32_t y = (x[k] & 0x80000000) | (x[k + 1] & 0x7FFFFFFF);
    x.push_back(x[k + 397] ^ y >> 1 ^ (y & 1 ? 0x9908B0DF : 0));
    y = x.back();
    y ^= y >> 11;
    y ^= y << 7 & 0x9D2C5680;
    y ^= y << 15 & 0xEFC60000;
    return std::vector<uint32_t>{y ^ y >> 18};
  };
}

Next plain_philox(std::vector<uint32_t> seeds) {
  seeds.resize(6);
  Wide counter = 0;
  for (int i = 3; i >= 0; i--) counter = counter << 32 | seeds[2 + i];
  return [=, block = std::vector<uint32_t>()]() mutable {
    if (block.empty()) {
      uint32_t c[4], k0 = seeds[0], k1 = seeds[1];
      for (int i = 0; i < 4; i++) c[i] = static_cast<uint32_t>(counter >> 32 * i);
      for (int round = 0; round < 10; round++) {
        const uint64_t p = uint64_t{0xD2511F53} * c[0], q = uint64_t{0xCD9E8D57} * c[2];
        const uint32_t next[4] = {static_cast<uint32_t>(q >> 32) ^ c[1] ^ k0, static_cast<uint32_t>(q),
                                  static_cast<uint32_t>(p >> 32) ^ c[3] ^ k1, static_cast<uint32_t>(p)};
        std::memcpy(c, next, sizeof c);
        k0 += 0x9E3779B9;
        k1 += 0xBB67AE85;
      }
      block.assign(c, c + 4);
      counter++;
    }
    const uint32_t out = block.front();
    block.erase(block.begin());
    return std::vector<uint32_t>{out};
  };
}

// From the ring of a new stream: the seeding has its published outputs.
Next plain_sfmt19937(std::vector<uint32_t> x) {
  auto wide = [](const uint32_t* w) {
    Wide value = 0;
    for (int i = 3; i >= 0; i--) value = value << 32 | w[i];
    return value;
  };
  return [=, at = x.size()]() mutable {
    static constexpr uint32_t mask[4] = {0xDFFFFFEF, 0xDDFECB7F, 0xBFFAFFFF, 0xBFFFFFF6};
    if (at == x.size()) {
      const size_t k = at - 624;
      const Wide left = wide(&x[k]) << 8, right = wide(&x[at - 8]) >> 8;
      for (int i = 0; i < 4; i++)
        x.push_back(x[k + i] ^ static_cast<uint32_t>(left >> 32 * i) ^ (x[k + 488 + i] >> 11 & mask[i]) ^
                    static_cast<uint32_t>(right >> 32 * i) ^ x[at - 4 + i] << 18);
    }
    return std::vector<uint32_t>{x[at++]};
  };
}

// The cipher's round as FIPS 197 defines it, byte by byte.
struct Aes {
  using Block = std::array<uint8_t, 16>; // columns of four bytes
  uint8_t sbox[256];

  static uint8_t multiply(uint8_t a, uint8_t b) {
    uint8_t product = 0;
    for (; b != 0; b >>= 1, a = static_cast<uint8_t>(a << 1 ^ (a & 0x80 ? 0x1B : 0)))
      if (b & 1) product ^= a;
    return product;
  }
  Aes() {
    for (int x = 0; x < 256; x++) {
      uint8_t inverse = 0;
      for (int y = 1; y < 256 && x != 0; y++)
        if (multiply(static_cast<uint8_t>(x), static_cast<uint8_t>(y)) == 1) inverse = static_cast<uint8_t>(y);
      uint8_t b = 0;
      for (int i = 0; i < 8; i++) {
        int bit = 0x63 >> i & 1;
        for (int j : {0, 4, 5, 6, 7}) bit ^= inverse >> (i + j) % 8 & 1;
        b = static_cast<uint8_t>(b | bit << i);
      }
      sbox[x] = b;
    }
  }
  Block round(const Block& in, const Block& key, bool mix_columns) const {
    Block shifted, out;
    for (size_t c = 0; c < 4; c++)
      for (size_t r = 0; r < 4; r++) shifted[4 * c + r] = sbox[in[4 * ((c + r) % 4) + r]];
    for (size_t c = 0; c < 4; c++)
      for (size_t r = 0; r < 4; r++) {
        auto s = [&](size_t i) { return shifted[4 * c + (r + i) % 4]; };
        out[4 * c + r] = mix_columns ? static_cast<uint8_t>(multiply(s(0), 2) ^ multiply(s(1), 3) ^ s(2) ^ s(3))
                                     : shifted[4 * c + r];
        out[4 * c + r] ^= key[4 * c + r];
      }
    return out;
  }
};

Next plain_ars5(std::vector<uint32_t> seeds) {
  seeds.resize(8);
  Wide counter = 0;
  for (int i = 3; i >= 0; i--) counter = counter << 32 | seeds[4 + static_cast<size_t>(i)];
  return [=, aes = Aes(), left = std::vector<uint32_t>()]() mutable {
    if (left.empty()) {
      uint64_t key[2];
      std::memcpy(key, seeds.data(), sizeof key);
      Aes::Block block, round_key;
      std::memcpy(block.data(), &counter, 16);
      std::memcpy(round_key.data(), key, 16);
      for (size_t i = 0; i < 16; i++) block[i] ^= round_key[i];
      for (int round = 1; round <= 5; round++) {
        key[0] += 0x9E3779B97F4A7C15; // the golden ratio and the root of 3 less 1
        key[1] += 0xBB67AE8584CAA73B;
        std::memcpy(round_key.data(), key, 16);
        block = aes.round(block, round_key, round < 5);
      }
      left.resize(4);
      std::memcpy(left.data(), block.data(), 16);
      counter++;
    }
    const uint32_t out = left.front();
    left.erase(left.begin());
    return std::vector<uint32_t>{out};
  };
}

Next plain_of(const Named& g) {
  const std::string name = g.name;
  if (name == "MCG31M1") return plain_mcg31m1(777);
  if (name == "R250") return plain_r250(12345);
  if (name == "MRG32K3A") return plain_mrg32k3a({1, 2, 3, 4, 5, 6});
  if (name == "MCG59") return plain_mcg59(uint64_t{7} << 32 | 99);
  if (name == "WH") return plain_wh(100, {5, 6, 7, 8});
  if (name == "OldWH") return plain_wh(272, {5, 1, 1, 1});
  if (name == "MT19937") return plain_mt19937(g.seeds);
  if (name == "MT2203") return plain_mt2203(4711, g.seeds);
  if (name == "SFMT19937") {
    const auto stream = make(g.brng, g.seeds);
    return plain_sfmt19937({state(stream), state(stream) + 624});
  }
  if (name == "ARS5") return plain_ars5(g.seeds);
  if (name == "PHILOX4X32X10") return plain_philox(g.seeds);
  return {};
}

TEST(Sequences, EqualThePlainRecurrences) {
  int compared = 0;
  for (const Named& g : generators()) {
    Next next = plain_of(g);
    if (!next || (g.brng == 0xF00000 && !__kestCPUisAES())) continue;
    compared++;
    std::vector<uint32_t> expected;
    for (int k = 0; k < 7001; k++)
      for (uint32_t w : next()) expected.push_back(w);
    EXPECT_EQ(words(make(g.brng, g.seeds), 7001), expected) << g.name;
  }
  EXPECT_EQ(compared, __kestCPUisAES() ? 11 : 10);
}

TEST(Sequences, AesRoundOfTheStandard) {
  // FIPS 197, appendix B, round 1.
  const Aes::Block start = {0x19, 0x3d, 0xe3, 0xbe, 0xa0, 0xf4, 0xe2, 0x2b,
                            0x9a, 0xc6, 0x8d, 0x2a, 0xe9, 0xf8, 0x48, 0x08},
                   key = {0xa0, 0xfa, 0xfe, 0x17, 0x88, 0x54, 0x2c, 0xb1,
                          0x23, 0xa3, 0x39, 0x39, 0x2a, 0x6c, 0x76, 0x05},
                   end = {0xa4, 0x9c, 0x7f, 0xf2, 0x68, 0x9f, 0x35, 0x2b,
                          0x6b, 0x5b, 0xea, 0x43, 0x02, 0x6a, 0x50, 0x49};
  EXPECT_EQ(Aes().round(start, key, true), end);
}

TEST(Sequences, PublishedFirstOutputs) {
  EXPECT_EQ(words(make(0x800000, {0x123, 0x234, 0x345, 0x456}), 3),
            (std::vector<uint32_t>{1067595299, 955945823, 477289528}));
  EXPECT_EQ(words(make(0xD00000, {0x1234, 0x5678, 0x9abc, 0xdef0}), 3),
            (std::vector<uint32_t>{2920711183, 3885745737, 3501893680}));
  // L'Ecuyer's package prints 0.1270111 for six seeds of 12345.
  EXPECT_NEAR(doubles(make(0x300000, {12345, 12345, 12345, 12345, 12345, 12345}), 1)[0], 0.127011122046577, 1e-9);
  // Known-answer vectors published with the counter-based generators.
  EXPECT_EQ(words(make(0x1000000), 4), (std::vector<uint32_t>{0x6627e8d5, 0xe169c58d, 0xbc57ac4c, 0x9b00dbd8}));
  const std::vector<uint32_t> ones(6, 0xFFFFFFFF);
  EXPECT_EQ(words(make(0x1000000, ones), 4), (std::vector<uint32_t>{0x408f276d, 0x41c83b0e, 0xa20bc7c6, 0x6d5451fd}));
  if (!__kestCPUisAES()) return;
  // What their authors' own program gives for ars4x32 of five rounds.
  EXPECT_EQ(words(make(0xF00000), 4), (std::vector<uint32_t>{0x7ecce06f, 0x7cdc3bca, 0x15513c87, 0x29d24c9b}));
  const std::vector<uint32_t> more_ones(8, 0xFFFFFFFF);
  EXPECT_EQ(words(make(0xF00000, more_ones), 4),
            (std::vector<uint32_t>{0x524f3d4c, 0x870acd82, 0x835b5954, 0x915b1320}));
  EXPECT_EQ(words(make(0xF00000, {0xa4093822, 0x299f31d0, 0x082efa98, 0xec4e6c89, 0x243f6a88, 0x85a308d3, 0x13198a2e,
                                  0x03707344}),
                  4),
            (std::vector<uint32_t>{0x9150862d, 0x525af535, 0x6612f4fa, 0xe2a60648}));
}

TEST(Sequences, Mt19937EqualsTheStandardLibrary) {
  // The ring of std::mt19937 seeded by a word is a state like any other.
  std::mt19937 reference(5489);
  auto stream = make(0x800000, {1});
  uint32_t* mt = state(stream);
  mt[0] = 5489;
  for (uint32_t k = 1; k < 624; k++) mt[k] = 1812433253u * (mt[k - 1] ^ mt[k - 1] >> 30) + k;
  for (uint32_t w : words(stream, 5000)) ASSERT_EQ(w, reference());
}

// ---- Any cut of a request gives the same values, and nothing around the destination is touched

template <class Element, class Give> void expect_cuts_do_not_matter(const Named& g, size_t per_element, Give give) {
  std::mt19937 random(7);
  const int n = 5003;
  for (int trial = 0; trial < 4; trial++) {
    auto whole = make(g.brng, g.seeds), cut = copy(whole);
    const size_t bytes = sizeof(Element) * per_element * n;
    const size_t shift = trial; // odd addresses too
    std::vector<unsigned char> a(bytes + 64, 0xA5), b(bytes + 64, 0xA5);
    give(whole, n, a.data() + shift);
    for (int k = 0; k < n;) {
      int m = 1 + static_cast<int>(random() % (trial % 2 ? 37 : 2200));
      m = std::min(m, n - k);
      give(cut, m, b.data() + shift + sizeof(Element) * per_element * k);
      k += m;
    }
    ASSERT_EQ(a, b) << g.name << " trial " << trial;
    for (size_t k = 0; k < shift; k++) ASSERT_EQ(a[k], 0xA5);
    for (size_t k = bytes + shift; k < a.size(); k++) ASSERT_EQ(a[k], 0xA5) << g.name;
    ASSERT_EQ(words(whole, 100), words(cut, 100)) << g.name;
  }
}

TEST(Sequences, DoNotDependOnCuts) {
  for (const Named& g : generators()) {
    const tarn_brng_properties row = properties(make(g.brng, g.seeds));
    expect_cuts_do_not_matter<uint32_t>(g, static_cast<size_t>(row.WordSize / 4),
                                        [&](StreamPtr& s, int n, void* r) { row.iBRng(s.get(), n, r); });
    expect_cuts_do_not_matter<double>(
        g, 1, [&](StreamPtr& s, int n, void* r) { row.dBRng(s.get(), n, static_cast<double*>(r), -1.25, 3.5); });
    expect_cuts_do_not_matter<float>(
        g, 1, [&](StreamPtr& s, int n, void* r) { row.sBRng(s.get(), n, static_cast<float*>(r), -1.25f, 3.5f); });
  }
}

// Some recurrences run in floating-point arithmetic; none of their words may depend on its rounding.
TEST(Sequences, WordsDoNotDependOnTheRoundingMode) {
  for (const Named& g : generators()) {
    const auto expected = words(make(g.brng, g.seeds), 9001);
    for (int mode : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
      auto stream = make(g.brng, g.seeds);
      std::fesetround(mode);
      const auto rounded = words(stream, 9001);
      std::fesetround(FE_TONEAREST);
      EXPECT_EQ(rounded, expected) << g.name << " mode " << mode;
    }
  }
  // Where both components of MRG32K3A come to 0, a product is a multiple of its modulus, and its quotient on the edge.
  const uint64_t m1 = 4294967087, m2 = 4294944443;
  const auto ratio = [](uint64_t a, uint64_t b, uint64_t m) { // a / b
    return a * __kestiPowMod(static_cast<uint32_t>(b), m - 2, static_cast<uint32_t>(m)) % m;
  };
  const uint64_t x = ratio(810728, 1403580, m1), y = ratio(1370589, 527612, m2);
  for (uint64_t t = 1; t < 400; t++) {
    const auto stream = make(0x300000, {static_cast<uint32_t>(t), static_cast<uint32_t>(t * x % m1), 3,
                                        static_cast<uint32_t>(t), 4, static_cast<uint32_t>(t * y % m2)});
    for (int mode : {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
      auto again = copy(stream);
      std::fesetround(mode);
      const auto rounded = words(again, 200);
      std::fesetround(FE_TONEAREST);
      ASSERT_EQ(rounded[0], 0u) << t << " mode " << mode;
    }
  }
}

// ---- Mapping

struct Value {
  double real;
  float single;
};

// What an output in [a, b) has to be for an element of words.
Value value_of(const std::string& name, const uint32_t* w, double a, double b) {
  const auto fa = static_cast<float>(a), fb = static_cast<float>(b);
  const double two32 = std::ldexp(1.0, -32), inverse31 = 4.656612875245797e-10, inverse_m1 = 2.328306549837829e-10;
  const auto rounded_once = [](double value) { return Value{value, static_cast<float>(value)}; };
  const auto t = static_cast<int32_t>(*w);
  const double about_middle = t * ((b - a) * two32) + (a + b) * 0.5;
  if (name == "MCG31M1") return rounded_once(*w * ((b - a) * inverse31) + a);
  if (name == "MCG59") {
    const auto x = static_cast<int64_t>(uint64_t{w[1]} << 32 | w[0]);
    return rounded_once(static_cast<double>(x) * ((b - a) * std::ldexp(1.0, -59)) + a);
  }
  if (name == "WH" || name == "OldWH") {
    double sum = 0;
    for (int c = 0; c < 4; c++) sum += w[c] * (1.0 / __kest_WH_M[name == "WH" ? 100 : 272][c]);
    return rounded_once((sum - std::floor(sum)) * (b - a) + a);
  }
  if (name == "MRG32K3A") return rounded_once(*w * ((b - a) * inverse_m1) + a);
  if (name == "R250") return rounded_once(*w * ((b - a) * two32) + a);
  if (name == "MT19937") return {*w * ((b - a) * two32) + a, static_cast<float>(*w) * ((fb - fa) * 0x1p-32f) + fa};
  if (name == "MT2203") {
    const auto c = static_cast<int32_t>(*w - 0x80000000u);
    return {c * ((b - a) * two32) + (a + b) * 0.5,
            static_cast<float>(c) * static_cast<float>((b - a) * two32) + static_cast<float>((a + b) * 0.5)};
  }
  if (name == "SFMT19937" || name == "PHILOX4X32X10" || name == "ARS5")
    return {about_middle, static_cast<float>(t) * static_cast<float>((b - a) * two32) + (fa + fb) * 0.5f};
  const auto upper = static_cast<int32_t>(*w >> 1); // quasi-random
  return {upper * ((b - a) * 0x1p-31) + a, static_cast<float>(upper) * static_cast<float>((b - a) * 0x1p-31) + fa};
}

TEST(Sequences, MapOfWordsToValues) {
  const double a = -1.25, b = 3.5;
  for (const Named& g : generators()) {
    auto i = make(g.brng, g.seeds), d = copy(i), s = copy(i);
    const int n = 1003;
    const auto w = words(i, n);
    const auto x = doubles(d, n, a, b);
    const auto y = singles(s, n, static_cast<float>(a), static_cast<float>(b));
    for (int k = 0; k < n; k++) {
      const Value value = value_of(g.name, &w[w.size() / n * static_cast<size_t>(k)], a, b);
      ASSERT_EQ(x[k], value.real) << g.name << " " << k;
      ASSERT_EQ(y[k], value.single) << g.name << " " << k;
    }
  }
}

// A stream that is read in all three forms by turns, skipped, copied, saved and loaded at any place of its blocks and
// buffers still gives the plain sequence.
TEST(Sequences, AnyWalkEqualsThePlainRecurrence) {
  std::mt19937 random(11);
  const auto below = [&](size_t n) { return static_cast<int>(random() % n); };
  const int edges[] = {4, 8, 16, 24, 32, 64, 69, 103, 128, 147, 207, 250, 256, 483, 512, 624, 1000, 1024, 1250, 2048};
  const int total = 40000;
  for (const Named& g : generators()) {
    if (g.brng == 0xF00000 && !__kestCPUisAES()) continue;
    auto stream = make(g.brng, g.seeds);
    const auto row = properties(stream);
    const auto per = static_cast<size_t>(row.WordSize / 4);
    std::vector<uint32_t> w;
    if (Next next = plain_of(g))
      while (w.size() < total * per)
        for (uint32_t word : next()) w.push_back(word);
    else // quasi-random: compared with the definition elsewhere
      w = words(copy(stream), total);
    const bool skips = __kestSkipAheadStream(copy(stream).get(), 1) == 0;
    for (int k = 0, turn = 0; turn < 160; turn++) {
      const int what = below(12);
      if (what == 0 && skips) {
        const int count = below(below(3) == 0 ? 2000 : 12);
        ASSERT_EQ(__kestSkipAheadStream(stream.get(), count), 0);
        k += count;
      } else if (what == 1) {
        stream = copy(stream);
      } else if (what == 2) {
        std::vector<char> image(static_cast<size_t>(__kestGetStreamSize(stream.get())));
        ASSERT_EQ(__kestSaveStreamM(stream.get(), image.data()), 0);
        tarn_stream* loaded = nullptr;
        ASSERT_EQ(__kestLoadStreamM(&loaded, image.data()), 0);
        stream.reset(loaded);
      }
      int n = below(2) ? below(40) : edges[below(std::size(edges))] + below(7) - 3;
      if (turn == 20) n = 8192 + 130; // the longest segments of MRG32K3A
      if (n == 0 && g.brng == 0x100000) n = 1;
      if (k + n > total) break;
      const uint32_t* expected = &w[static_cast<size_t>(k) * per];
      const double a = below(2) ? 0 : -1.25, b = below(2) ? 1 : 3.5;
      const int form = below(3), shift = below(17);
      const size_t size = form == 0 ? 4 * per : form == 1 ? sizeof(double) : sizeof(float), bytes = size * n;
      std::vector<unsigned char> r(bytes + 64, 0xA5), want = r;
      unsigned char* to = r.data() + shift;
      for (int i = 0; i < n; i++) {
        const Value value = value_of(g.name, expected + per * i, a, b);
        const void* element = expected + per * i;
        if (form > 0) element = form == 1 ? static_cast<const void*>(&value.real) : &value.single;
        std::memcpy(want.data() + shift + size * i, element, size);
      }
      int32_t status;
      if (form == 0)
        status = row.iBRng(stream.get(), n, to);
      else if (form == 1)
        status = row.dBRng(stream.get(), n, reinterpret_cast<double*>(to), a, b);
      else
        status = row.sBRng(stream.get(), n, reinterpret_cast<float*>(to), static_cast<float>(a), static_cast<float>(b));
      ASSERT_EQ(status, 0);
      const auto differs = std::mismatch(r.begin(), r.end(), want.begin()).first - r.begin();
      ASSERT_EQ(r, want) << g.name << " form " << form << " n " << n << " from " << k << " byte " << differs - shift;
      k += n;
    }
  }
}

// ---- Skip ahead

TEST(Skip, EqualsRunning) {
  std::mt19937 random(3);
  for (const Named& g : generators()) {
    for (int trial = 0; trial < 12; trial++) {
      auto run = make(g.brng, g.seeds);
      if (const int before = static_cast<int>(random() % 700)) words(run, before);
      auto skip = copy(run);
      const int count = static_cast<int>(random() % (trial < 6 ? 12 : 30000));
      const int32_t status = __kestSkipAheadStream(skip.get(), count);
      const bool none = g.brng == 0x200000 || (g.brng & 0xF00000) == 0x900000;
      ASSERT_EQ(status, none ? -1003 : 0) << g.name;
      if (!none && count > 0) words(run, count);
      ASSERT_EQ(words(run, 700), words(skip, 700)) << g.name << " by " << count;
    }
  }
}

// Counts beyond running, as sums of parts: near 2^32, 2^63 and 2^64.
TEST(Skip, LargeCountsCompose) {
  for (const Named& g : generators()) {
    const std::string name = g.name;
    const bool quasi = name.find("Sobol") == 0 || name.find("Niederr") == 0;
    const bool none = g.brng == 0x200000 || (g.brng & 0xF00000) == 0x900000;
    if (quasi || none) continue;
    for (uint64_t count : {uint64_t{0xFFFFFFFF}, uint64_t{1} << 32, (uint64_t{1} << 63) - 5, (uint64_t{1} << 63) + 3,
                           ~uint64_t{0}, uint64_t{0x100000}, uint64_t{19968}, uint64_t{19967}}) {
      auto once = make(g.brng, g.seeds);
      words(once, 5);
      auto parts = copy(once);
      ASSERT_EQ(__kestSkipAheadStream(once.get(), static_cast<int64_t>(count)), 0);
      const uint64_t first = count / 3, second = count / 2 - 1, third = count - first - second;
      for (uint64_t part : {first, second, third})
        ASSERT_EQ(__kestSkipAheadStream(parts.get(), static_cast<int64_t>(part)), 0);
      ASSERT_EQ(words(once, 50), words(parts, 50)) << name << " by " << count;
    }
  }
}

TEST(Skip, LimbsEqualOneWordAndCompose) {
  for (int32_t brng : {0x300000, 0xF00000, 0x1000000}) {
    for (uint64_t count : {uint64_t{0}, uint64_t{1}, uint64_t{7}, ~uint64_t{0}}) {
      auto one = make(brng, {1, 2, 3, 4, 5, 6}), limbs = copy(one);
      words(one, 2), words(limbs, 2);
      const uint64_t array[3] = {count, 0, 0};
      ASSERT_EQ(__kestSkipAheadStream(one.get(), static_cast<int64_t>(count)), 0);
      ASSERT_EQ(__kestSkipAheadStreamEx(limbs.get(), 3, array), 0);
      ASSERT_EQ(words(one, 20), words(limbs, 20)) << std::hex << brng << " " << count;
    }
    // 2^64 = (2^64 - 1) + 1, and 2^128 - 1 = 2^127 + (2^127 - 1)
    auto once = make(brng, {1, 2, 3, 4, 5, 6}), parts = copy(once);
    const uint64_t two64[2] = {0, 1}, all[2] = {~uint64_t{0}, ~uint64_t{0}}, top[2] = {0, uint64_t{1} << 63},
                   rest[2] = {~uint64_t{0}, ~uint64_t{0} >> 1};
    ASSERT_EQ(__kestSkipAheadStreamEx(once.get(), 2, two64), 0);
    ASSERT_EQ(__kestSkipAheadStream(parts.get(), -1), 0);
    ASSERT_EQ(__kestSkipAheadStream(parts.get(), 1), 0);
    ASSERT_EQ(words(once, 9), words(parts, 9));
    ASSERT_EQ(__kestSkipAheadStreamEx(once.get(), 2, all), 0);
    ASSERT_EQ(__kestSkipAheadStreamEx(parts.get(), 2, top), 0);
    ASSERT_EQ(__kestSkipAheadStreamEx(parts.get(), 2, rest), 0);
    ASSERT_EQ(words(once, 9), words(parts, 9));
  }
}

TEST(Skip, MrgHelpersAgreeForAnyLength) {
  std::mt19937_64 random(5);
  const uint32_t m[2] = {0xFFFFFF2F, 0xFFFFA6BB};
  const uint32_t row[2][3] = {{0, 1403580, m[0] - 810728}, {527612, 0, m[1] - 1370589}};
  for (int half = 0; half < 2; half++)
    for (int n = 1; n <= 3; n++) {
      std::vector<uint64_t> limbs;
      for (int k = 0; k < n; k++) limbs.push_back(random());
      uint32_t v[3] = {1, 2, 3}, w[3] = {1, 2, 3}, u[3] = {1, 2, 3};
      __kestiVect3PowArrayMod(v, row[half], m[half], n, limbs.data());
      (half == 0 ? __kestiVect3PowArrayMod_M1 : __kestiVect3PowArrayMod_M2)(w, n, limbs.data(),
                                                                            __kest_mrg32k3a_skipahead_table[half][0]);
      EXPECT_TRUE(std::equal(v, v + 3, w)) << half << n;
      if (n == 1) {
        __kestiVect3PowMod(u, row[half], m[half], limbs[0]);
        EXPECT_TRUE(std::equal(v, v + 3, u));
      }
    }
  // A fifth limb that is zero still goes by the table; one that is not goes by squaring.
  auto a = make(0x300000), b = copy(a);
  const uint64_t padded[6] = {5, 6, 7, 0, 0, 0}, plain[3] = {5, 6, 7}, five[5] = {0, 0, 0, 0, 1};
  __kestSkipAheadStreamEx(a.get(), 6, padded);
  __kestSkipAheadStreamEx(b.get(), 3, plain);
  EXPECT_EQ(words(a, 9), words(b, 9));
  auto c = make(0x300000), d = copy(c);
  EXPECT_EQ(__kestSkipAheadStreamEx(c.get(), 5, five), 0); // 2^256 = 2^192 sixty-four doublings: compare by squaring
  const uint64_t half_way[4] = {0, 0, 0, uint64_t{1} << 63};
  uint32_t x[3] = {1, 1, 1};
  __kestiVect3PowArrayMod(x, row[0], m[0], 4, half_way);
  __kestiVect3PowArrayMod(x, row[0], m[0], 4, half_way);
  EXPECT_TRUE(std::equal(x, x + 3, state(c)));
}

// ---- Leapfrog

TEST(Leapfrog, TakesEveryNth) {
  for (int32_t brng : {0x100000, 0x400000, 0x500000 + 9}) {
    for (int32_t nstreams : {1, 2, 3, 7}) {
      auto all = make(brng, {321});
      words(all, 3);
      const size_t per = static_cast<size_t>(properties(all).WordSize / 4);
      const auto base = copy(all);
      const auto sequence = words(all, 400 * nstreams);
      for (int32_t k = 0; k < nstreams + 2; k++) {
        auto part = copy(base);
        ASSERT_EQ(__kestLeapfrogStream(part.get(), k, nstreams), 0);
        const auto got = words(part, 390);
        for (size_t i = 0; i < 390 && k + i * nstreams < 400u * nstreams; i++)
          for (size_t w = 0; w < per; w++) ASSERT_EQ(got[i * per + w], sequence[(k + i * nstreams) * per + w]);
      }
    }
    auto stream = make(brng, {5});
    ASSERT_EQ(__kestLeapfrogStream(stream.get(), 1, 3), 0);
    auto skipped = copy(stream);
    ASSERT_EQ(__kestSkipAheadStream(skipped.get(), 1), 0);
    words(stream, 1);
    EXPECT_EQ(words(stream, 40), words(skipped, 40)); // counts in outputs of the substream
  }
  auto mcg = make(0x100000, {5});
  __kestLeapfrogStream(mcg.get(), 0, 3);
  EXPECT_EQ(state(mcg)[1], __kestiPowMod2P31M1(1132489760, 3));
}

TEST(Leapfrog, StatusesOfEveryRow) {
  for (const Named& g : generators()) {
    auto stream = make(g.brng, g.seeds);
    EXPECT_EQ(__kestLeapfrogStream(stream.get(), 0, -1), -1013) << g.name;
    const int32_t row = g.brng < 0x100000 ? 4 : (g.brng >> 20) - 1;
    const bool leaps = row == 0 || row == 3 || row == 4;
    EXPECT_EQ(__kestLeapfrogStream(stream.get(), 0, 1), leaps ? 0 : -1002) << g.name;
    const uint64_t limb = 0;
    const bool limbs = row == 2 || row == 14 || row == 15;
    EXPECT_EQ(__kestSkipAheadStreamEx(stream.get(), 1, &limb), limbs ? 0 : -1004) << g.name;
    EXPECT_EQ(properties(stream).InitStream(4, stream.get(), 1, &limb), -2) << g.name;
    EXPECT_EQ(properties(stream).InitStream(-1, stream.get(), 1, &limb), -2) << g.name;
  }
  auto trng = make(0xE00000);
  const uint64_t one = 1;
  EXPECT_EQ(__kestLeapfrogStream(trng.get(), 0, 1), -1002);
  EXPECT_EQ(__kestSkipAheadStream(trng.get(), 1), -1003);
  EXPECT_EQ(__kestSkipAheadStreamEx(trng.get(), 1, &one), -1004);
  EXPECT_EQ(properties(trng).InitStream(9, trng.get(), 1, &one), -2);
}

// ---- Edges of single generators

TEST(Mcg31m1, SeedsAndEmptyCalls) {
  for (const std::vector<uint32_t>& seeds : {std::vector<uint32_t>{}, {0}, {0x7FFFFFFF}, {1, 99}})
    EXPECT_EQ(words(make(0x100000, seeds), 1)[0], 1u);
  auto stream = make(0x100000, {5});
  uint32_t r[2] = {9, 9};
  EXPECT_EQ(__kestiBRngMCG31M1(stream.get(), 0, r), 0);
  EXPECT_EQ(r[0], 5u);
  EXPECT_EQ(r[1], 9u);
  EXPECT_EQ(words(stream, 1)[0], 5ull * 1132489760 % 2147483647);
}

TEST(Mcg59, Seeds) {
  EXPECT_EQ(words(make(0x400000, {5, 0}), 9), words(make(0x400000, {5}), 9));
  EXPECT_EQ(words(make(0x400000, {0, 1u << 27}), 9), words(make(0x400000, {1}), 9));
  EXPECT_EQ(words(make(0x400000), 9), words(make(0x400000, {0}), 9));
  auto stream = make(0x400000, {5});
  uint64_t r = 77;
  __kestiBRngMCG59(stream.get(), 0, &r);
  EXPECT_EQ(r, 77u);
  EXPECT_EQ(words(stream, 1)[0], 5u);
}

TEST(Wh, Seeds) {
  EXPECT_EQ(words(make(4, {3, 4}), 9), words(make(0x500000, {3, 4}), 9));
  EXPECT_EQ(words(make(0x500000, {16770647, 4}), 1), (std::vector<uint32_t>{1, 4, 1, 1}));
  EXPECT_EQ(words(make(0x500000, {0, 4, 5, 6, 7}), 1), (std::vector<uint32_t>{1, 4, 5, 6}));
  EXPECT_EQ(words(make(0x500000), 1), (std::vector<uint32_t>{1, 1, 1, 1}));
  auto stream = make(0x500000, {3});
  double r = 77;
  __kestdBRngWH(stream.get(), 0, &r, 0, 1);
  EXPECT_EQ(r, 77);
}

TEST(Mrg32k3a, Seeds) {
  auto none = make(0x300000);
  for (int k = 0; k < 6; k++) EXPECT_EQ(state(none)[k], 1u);
  auto zeros = make(0x300000, {0, 0, 0, 0, 0, 0});
  EXPECT_EQ(std::vector<uint32_t>(state(zeros), state(zeros) + 6), (std::vector<uint32_t>{1, 0, 0, 1, 0, 0}));
  auto moduli = make(0x300000, {0xFFFFFF2F, 2, 3, 0xFFFFA6BB, 5, 6, 7});
  EXPECT_EQ(std::vector<uint32_t>(state(moduli), state(moduli) + 6), (std::vector<uint32_t>{0, 2, 3, 0, 5, 6}));
}

TEST(R250, SeedsAndCuts) {
  std::vector<uint32_t> seeds(260);
  for (uint32_t k = 0; k < 260; k++) seeds[k] = k * 77 + 3;
  auto stream = make(0x200000, seeds);
  EXPECT_TRUE(std::equal(seeds.begin(), seeds.begin() + 250, state(stream)));
  EXPECT_EQ(words(make(0x200000, {0}), 300), words(make(0x200000, {1}), 300));
  EXPECT_EQ(words(make(0x200000), 300), words(make(0x200000, {1}), 300));
  auto once = make(0x200000, {5}), twice = copy(once);
  auto first = words(twice, 249);
  const auto second = words(twice, 251);
  first.insert(first.end(), second.begin(), second.end());
  EXPECT_EQ(words(once, 500), first);
  EXPECT_EQ(state(once)[250], 0u);
  EXPECT_EQ(state(once)[251], 103u);
}

TEST(Mersenne, SeedOfNoWordsIsOne) {
  for (int32_t brng : {0x800000, 0x900000, 0xD00000})
    EXPECT_EQ(words(make(brng), 999), words(make(brng, {1}), 999)) << brng;
  std::vector<uint32_t> many(700, 5), other = many;
  other[699] = 6;
  for (int32_t brng : {0x800000, 0x900000, 0xD00000})
    EXPECT_NE(words(make(brng, many), 9), words(make(brng, other), 9));
}

TEST(Mersenne, Mt2203Members) {
  EXPECT_NE(words(make(0x900000, {1}), 9), words(make(0x900000 + 6023, {1}), 9));
  auto a = make(0x900000, {1}), b = make(0x900000 + 6023, {2});
  ASSERT_EQ(__kestCopyStreamState(b.get(), a.get()), 0);
  EXPECT_EQ(state(b)[70], 0xE8761D4Bu); // the parameters are left alone
  EXPECT_TRUE(std::equal(state(a), state(a) + 70, state(b)));
}

TEST(Mersenne, SfmtCarry) {
  auto stream = make(0xD00000, {3}), whole = copy(stream);
  const auto expected = words(whole, 12);
  words(stream, 5);
  EXPECT_EQ(state(stream)[629], 3u); // carryCount
  EXPECT_EQ(state(stream)[628], 0u);
  EXPECT_EQ(state(stream)[624], 8u);
  auto other = make(0xD00000, {9});
  ASSERT_EQ(__kestCopyStreamState(other.get(), stream.get()), 0);
  EXPECT_EQ(state(other)[629], 0u); // the carry is not copied
  EXPECT_EQ(words(stream, 3), (std::vector<uint32_t>{expected[5], expected[6], expected[7]}));
  EXPECT_EQ(state(stream)[624], 8u);
  EXPECT_EQ(words(stream, 4), std::vector<uint32_t>(expected.begin() + 8, expected.end()));
}

TEST(Mersenne, JumpsLeaveNothingOfTheRing) {
  for (int64_t count : {int64_t{0x100000}, int64_t{1} << 62}) {
    auto stream = make(0x800000, {5});
    words(stream, 100);
    ASSERT_EQ(__kestSkipAheadStream(stream.get(), count), 0);
    EXPECT_EQ(state(stream)[624], 624u); // the next output makes it anew
  }
  auto near = make(0x800000, {5}); // within the ring only the place moves
  words(near, 1);
  const std::vector<uint32_t> ring(state(near), state(near) + 624);
  ASSERT_EQ(__kestSkipAheadStream(near.get(), 623), 0);
  EXPECT_EQ(std::vector<uint32_t>(state(near), state(near) + 624), ring);
  EXPECT_EQ(state(near)[624], 624u);
  auto none = copy(near);
  ASSERT_EQ(__kestSkipAheadStream(none.get(), 0), 0);
  EXPECT_EQ(state(none)[624], 624u);
}

TEST(Mersenne, PolynomialRemainders) {
  uint64_t g[624];
  ASSERT_EQ(__kestPolyRem(0, 19937, 135, nullptr, 624, g), 0);
  EXPECT_EQ(g[0], 1u);
  ASSERT_EQ(__kestPolyRem(1, 19937, 135, nullptr, 624, g), 0);
  EXPECT_EQ(g[0], 2u);
  EXPECT_EQ(g[623], 0u);
  // t^3 + t + 1: t^7 = 1, t^10 = t^3 = t + 1. And t^2 + t + 1, t^65 + t^18 + 1 with gaps of 1 and 47.
  const uint32_t cubic[] = {0, 1, 3}, square[] = {0, 1, 2};
  uint64_t small[4];
  ASSERT_EQ(__kestPolyRem(10, 3, 3, cubic, 1, small), 0);
  EXPECT_EQ(small[0], 3u);
  ASSERT_EQ(__kestPolyRem(5, 2, 3, square, 1, small), 0);
  EXPECT_EQ(small[0], 3u);
  const uint32_t long_one[] = {0, 18, 65};
  ASSERT_EQ(__kestPolyRem(65, 65, 3, long_one, 3, small), 0);
  EXPECT_EQ(small[0], (uint64_t{1} << 18) + 1);
  EXPECT_EQ(small[1], 0u);
  ASSERT_EQ(__kestPolyRem(130, 65, 3, long_one, 3, small), 0); // the square of it
  EXPECT_EQ(small[0], (uint64_t{1} << 36) + 1);
}

TEST(Counter, LeftWordsAndCarries) {
  for (int32_t brng : {0x1000000, 0xF00000}) {
    const size_t left = brng == 0x1000000 ? 6 : 8;
    auto stream = make(brng, {1, 2, 3});
    const auto sequence = words(copy(stream), 16);
    words(stream, 1);
    EXPECT_EQ(state(stream)[left], 3u);
    auto by4 = copy(stream);
    const std::vector<uint32_t> before(state(stream), state(stream) + left);
    __kestSkipAheadStream(stream.get(), 3);
    EXPECT_EQ(state(stream)[left], 0u);
    EXPECT_EQ(std::vector<uint32_t>(state(stream), state(stream) + left), before); // no block was made
    __kestSkipAheadStream(by4.get(), 4);
    EXPECT_EQ(state(by4)[left], 3u);
    EXPECT_EQ(words(by4, 4), std::vector<uint32_t>(sequence.begin() + 5, sequence.begin() + 9));
  }
  auto wrap = make(0x1000000, {0, 0, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF});
  words(wrap, 4);
  for (int k = 2; k < 6; k++) EXPECT_EQ(state(wrap)[k], 0u);
  EXPECT_EQ(words(wrap, 4), words(make(0x1000000), 4));
  auto ars = make(0xF00000, {0, 0, 0, 0, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF});
  words(ars, 4);
  EXPECT_EQ(words(ars, 400), words(make(0xF00000), 400));
}

TEST(Trng, SeedsAndOutput) {
  EXPECT_EQ(state(make(0xE00000))[1], 10u);
  EXPECT_EQ(state(make(0xE00000, {0}))[1], 10u);
  EXPECT_EQ(state(make(0xE00000, {7, 0}))[1], 10u);
  EXPECT_EQ(state(make(0xE00000, {7, 5}))[1], 5u);
  EXPECT_EQ(state(make(0xE00000, {7, 5}))[0], 0u);
  auto stream = make(0xE00000);
  uint32_t one;
  if (!__kestCPUisRDRAND()) { // then every output is refused, and there is nothing else to see
    double real;
    float single;
    EXPECT_EQ(__kestiBRngTRNG(stream.get(), 1, &one), -1130);
    EXPECT_EQ(__kestdBRngTRNG(stream.get(), 1, &real, 0, 1), -1130);
    EXPECT_EQ(__kestsBRngTRNG(stream.get(), 1, &single, 0, 1), -1130);
    return;
  }
  const auto a = words(stream, 1001), b = words(stream, 1001);
  ASSERT_EQ(a.size(), 1001u);
  EXPECT_NE(a, b);
  for (double x : doubles(stream, 1001, 2, 3)) {
    EXPECT_GE(x, 2);
    EXPECT_LE(x, 3);
  }
  for (float x : singles(stream, 7, 2, 3)) EXPECT_TRUE(x >= 2 && x <= 3);
  EXPECT_EQ(words(make(0xE00000, {0, 1}), 100).size(), 100u); // one attempt is enough where the instruction succeeds
  // A value that comes on the last permitted attempt is lost: with no attempts allowed, every one.
  state(stream)[1] = 0;
  EXPECT_EQ(__kestiBRngTRNG(stream.get(), 1, &one), -1131);
}

}
