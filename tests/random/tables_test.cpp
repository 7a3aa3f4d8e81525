// The tables that were made by programs: their defining properties, checked with other means.
#include "random/mt2203_polynomial.h"

#include <NTL/GF2X.h>
#include <NTL/GF2XFactoring.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <set>
#include <vector>

namespace {

using NTL::GF2X;
using namespace tarn::test;

// A caller's compiler may load 16 bytes at a time from an exported array, as the ABI aligns it so.
TEST(ExportedTables, AreAlignedAsArrays) {
  for (const void* table : std::initializer_list<const void*>{
           __kest_WH_A, __kest_WH_M, __kestdWH_IM_Tab, __kest_mrg32k3a_skipahead_table, __kest_mt19937_poly,
           __kest_sfmt19937_poly, __kest_mt2203_table, __RegBrngs, __RegBrngsNew}) {
    asm volatile("" : "+r"(table)); // else the compiler answers by the rule itself
    EXPECT_EQ(reinterpret_cast<uintptr_t>(table) % 16, 0u);
  }
}

// ---- MT2203

TEST(Mt2203Table, FixedRowsAndShape) {
  const uint32_t fixed[3][4] = {{0, 0xAF81055F, 0xDD7EEF80, 0xEFD78000},
                                {1, 0x832604E1, 0x66AD7F80, 0xEBD58000},
                                {6023, 0xE8761D4B, 0x72967680, 0xEFEB0000}};
  for (const auto& row : fixed) EXPECT_TRUE(std::equal(row + 1, row + 4, __kest_mt2203_table[row[0]]));
  std::set<uint32_t> words;
  for (const auto& row : __kest_mt2203_table) {
    words.insert(row[0]);
    EXPECT_NE(row[0] >> 31, 0u);
    EXPECT_EQ(row[1] & 0x7F, 0u);
    EXPECT_EQ(row[2] & 0x7FFF, 0u);
  }
  EXPECT_EQ(words.size(), 6024u);
}

// The closed form against the definition: the minimal polynomial of a bit of the sequence.
TEST(Mt2203Table, ClosedFormOfThePolynomial) {
  for (int row : {1, 500}) {
    const uint32_t a = __kest_mt2203_table[row][0];
    std::mt19937 random(1);
    std::vector<uint32_t> x(69);
    for (uint32_t& w : x) w = random();
    NTL::vec_GF2 bits;
    bits.SetLength(2 * 2203 + 40);
    for (long k = 0; k < bits.length(); k++) {
      const uint32_t y = (x[k] & 0xFFFFFFE0) | (x[k + 1] & 0x1F);
      x.push_back(x[k + 34] ^ y >> 1 ^ (y & 1 ? a : 0));
      bits.put(k, x.back() & 1);
    }
    EXPECT_EQ(NTL::MinPolySeq(bits, 2203), characteristic(a)) << row;
  }
}

TEST(Mt2203Table, SampleIsIrreducible) {
  std::mt19937 random(20);
  for (int k = 0; k < 20; k++) {
    const int row = static_cast<int>(random() % 6024);
    EXPECT_TRUE(is_irreducible(__kest_mt2203_table[row][0])) << row;
  }
  EXPECT_FALSE(is_irreducible(__kest_mt2203_table[0][0] ^ 0x100));
}

// Dimension of equidistribution by its definition: the first k outputs to v bits are linearly independent functions of
// the 2203 bits of the state.
int dimension(const uint32_t* row, int v) {
  using Form = std::vector<uint64_t>; // 2203 coefficients
  constexpr size_t kWords = 35;
  auto add = [](Form& p, const Form& q) {
    for (size_t i = 0; i < kWords; i++) p[i] ^= q[i];
  };
  // bits[k][j]: bit j of word k
  std::vector<std::vector<Form>> x(69, std::vector<Form>(32, Form(kWords)));
  for (int k = 0, n = 0; k < 69; k++)
    for (int j = k == 0 ? 5 : 0; j < 32; j++, n++) x[k][j][n / 64] |= uint64_t{1} << (n % 64);
  std::vector<Form> pivots;
  std::vector<size_t> leads;
  for (int k = 0;; k++) {
    if ((k + 1) * v > 2203) return k;
    std::vector<Form> next = x[k + 34];
    auto y = [&](int j) -> const Form& { return j >= 5 ? x[k][j] : x[k + 1][j]; };
    for (int j = 0; j < 32; j++) {
      if (j < 31) add(next[j], y(j + 1));
      if (row[0] >> j & 1) add(next[j], y(0));
    }
    x.push_back(next);
    std::vector<Form> t = next;
    for (int j = 0; j + 12 < 32; j++) add(t[j], next[j + 12]);
    for (int j = 31; j >= 7; j--)
      if (row[1] >> j & 1) add(t[j], t[j - 7]);
    for (int j = 31; j >= 15; j--)
      if (row[2] >> j & 1) add(t[j], t[j - 15]);
    for (int j = 0; j + 18 < 32; j++) add(t[j], t[j + 18]);
    for (int j = 31; j > 31 - v; j--) {
      Form form = t[j];
      for (size_t p = 0; p < pivots.size(); p++)
        if (form[leads[p] / 64] >> (leads[p] % 64) & 1) add(form, pivots[p]);
      size_t lead = 0;
      while (lead < 64 * kWords && !(form[lead / 64] >> (lead % 64) & 1)) lead++;
      if (lead == 64 * kWords) return k;
      pivots.push_back(form);
      leads.push_back(lead);
    }
  }
}

TEST(Mt2203Table, SampleIsEquidistributed) {
  const int known[][2] = {{2, 1101}, {3, 705}, {4, 550}, {8, 274}, {16, 137}, {17, 71}, {32, 68}};
  for (const auto& [v, k] : known) EXPECT_EQ(dimension(__kest_mt2203_table[0], v), k) << v;
  for (int row : {777, 5000}) {
    int defect = 0;
    for (int v = 2; v <= 32; v++) defect += 2203 / v - dimension(__kest_mt2203_table[row], v);
    EXPECT_LE(defect, 713) << row; // the worst of the fixed rows
  }
}

// ---- WH

uint64_t power(uint64_t base, uint64_t exponent, uint64_t m) {
  uint64_t result = 1;
  for (; exponent; exponent >>= 1, base = base * base % m)
    if (exponent & 1) result = result * base % m;
  return result;
}

TEST(WhTables, PrimesAndPrimitiveRoots) {
  std::set<uint32_t> all;
  for (int k = 0; k < 273; k++) {
    for (int i = 0; i < 4; i++) {
      const uint32_t m = __kest_WH_M[k][i], a = __kest_WH_A[k][i];
      all.insert(m);
      ASSERT_TRUE(m >= 16718909 && m <= 16776971);
      ASSERT_TRUE(a >= 112 && a <= 127);
      ASSERT_EQ(__kestdWH_IM_Tab[k][i], 1.0 / m);
      uint32_t rest = m - 1;
      for (uint32_t p = 2; p * p <= m; p++) {
        ASSERT_NE(m % p, 0u);
        if (rest % p) continue;
        ASSERT_NE(power(a, (m - 1) / p, m), 1u) << k;
        while (rest % p == 0) rest /= p;
      }
      if (rest > 1) {
        ASSERT_NE(power(a, (m - 1) / rest, m), 1u) << k;
      }
      for (int j = 0; j < i; j++) {
        ASSERT_EQ(std::gcd((m - 1) / 2, (__kest_WH_M[k][j] - 1) / 2), 1u) << k;
        ASSERT_NE(a, __kest_WH_A[k][j]);
      }
    }
  }
  EXPECT_EQ(all.size(), 4u * 273);
  const uint32_t fixed[4][9] = {{0, 125, 117, 127, 126, 16770647, 16770643, 16770623, 16770617},
                                {1, 127, 126, 125, 123, 0xFFE507, 0xFFE4EB, 0xFFE4D7, 0xFFE4A1},
                                {2, 125, 119, 123, 126, 0xFFE30F, 0xFFE2EB, 0xFFE2D5, 0xFFE27F},
                                {272, 126, 127, 125, 124, 16766363, 16766359, 16766327, 16766231}};
  for (const auto& row : fixed)
    for (int i = 0; i < 4; i++) {
      EXPECT_EQ(__kest_WH_A[row[0]][i], row[1 + i]);
      EXPECT_EQ(__kest_WH_M[row[0]][i], row[5 + i]);
    }
}

// ---- MRG32K3A

TEST(MrgTable, PowersByPlainProducts) {
  const uint64_t m[2] = {4294967087, 4294944443};
  const uint64_t first[2][9] = {{0, 1, 0, 0, 0, 1, 4294967087 - 810728, 1403580, 0},
                                {0, 1, 0, 0, 0, 1, 4294944443 - 1370589, 0, 527612}};
  for (int half = 0; half < 2; half++) {
    std::vector<uint64_t> a(first[half], first[half] + 9);
    for (int k = 0; k <= 192; k++) {
      ASSERT_TRUE(std::equal(a.begin(), a.end(), __kest_mrg32k3a_skipahead_table[half][k])) << k;
      std::vector<uint64_t> square(9);
      for (int i = 0; i < 9; i++)
        for (int j = 0; j < 3; j++) square[i] = (square[i] + a[3 * (i / 3) + j] * a[3 * j + i % 3] % m[half]) % m[half];
      a = square;
    }
  }
}

// ---- Jump polynomials

template <size_t n> GF2X polynomial(const uint32_t (&exponents)[n]) {
  EXPECT_TRUE(std::is_sorted(exponents, exponents + n));
  GF2X p;
  for (uint32_t e : exponents) NTL::SetCoeff(p, e);
  return p;
}

// The sum over the exponents of x_(k + e) vanishes, for every bit of the words.
TEST(JumpPolynomials, AnnihilateTheirSequences) {
  std::mt19937 random(9);
  std::vector<uint32_t> x(624);
  for (uint32_t& w : x) w = random();
  for (size_t k = 0; k < 19937 + 700; k++) {
    const uint32_t y = (x[k] & 0x80000000) | (x[k + 1] & 0x7FFFFFFF);
    x.push_back(x[k + 397] ^ y >> 1 ^ (y & 1 ? 0x9908B0DF : 0));
  }
  for (size_t k = 1; k < 1300; k++) {
    uint32_t sum = 0;
    for (uint32_t e : __kest_mt19937_poly) sum ^= x[k + e];
    ASSERT_EQ(sum, 0u);
  }
  EXPECT_EQ(NTL::deg(polynomial(__kest_mt19937_poly)), 19937);

  tarn_stream* stream;
  ASSERT_EQ(__kestNewStreamEx(&stream, 0xD00000, 0, nullptr), 0);
  std::vector<uint32_t> w(4 * (19968 + 400));
  ASSERT_EQ(__kestiBRngSFMT19937(stream, static_cast<int32_t>(w.size()), w.data()), 0);
  __kestDeleteStream(&stream);
  for (size_t k = 0; k < 4 * 300; k++) {
    uint32_t sum = 0;
    for (uint32_t e : __kest_sfmt19937_poly) sum ^= w[k + 4 * e];
    ASSERT_EQ(sum, 0u);
  }
  EXPECT_EQ(NTL::deg(polynomial(__kest_sfmt19937_poly)), 19968);
}

TEST(JumpPolynomials, RemaindersEqualNtl) {
  const GF2X p = polynomial(__kest_mt19937_poly), q = polynomial(__kest_sfmt19937_poly);
  for (uint64_t n : {uint64_t{19936}, uint64_t{19937}, uint64_t{40000}, uint64_t{1} << 40, ~uint64_t{0} - 12345}) {
    for (int which = 0; which < 2; which++) {
      std::vector<uint64_t> got(624, 0x55);
      ASSERT_EQ(which == 0 ? __kestPolyRem(n, 19937, 135, __kest_mt19937_poly, 624, got.data())
                           : __kestPolyRem(n, 19968, 6711, __kest_sfmt19937_poly, 624, got.data()),
                0);
      const NTL::GF2XModulus modulus(which == 0 ? p : q);
      GF2X expected;
      NTL::PowerXMod(expected, NTL::conv<NTL::ZZ>(std::to_string(n).c_str()), modulus);
      GF2X result;
      for (int k = 0; k < 64 * 624; k++)
        if (got[k / 64] >> (k % 64) & 1) NTL::SetCoeff(result, k);
      EXPECT_EQ(result, expected) << n << " " << which;
    }
  }
}

}
