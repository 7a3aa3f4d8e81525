// Powers of companion matrices: how MRG32K3A skips ahead.
#include "random/recursive/matrix3.h"
#include "random/streams/stream.h"

#include <string.h>

using namespace tarn::random;

namespace tarn::random {

constexpr int kPowers = 193; // A^(2^k), k = 0 .. 192

struct PowerTable {
  uint32_t e[2][kPowers][9];
};

constexpr void fill(uint32_t half[kPowers][9], Matrix3 a, uint64_t m) {
  for (int k = 0; k < kPowers; k++) {
    for (int i = 0; i < 9; i++) half[k][i] = a.e[i];
    a = product(a, a, m);
  }
}

constexpr PowerTable make_table() {
  PowerTable table{};
  fill(table.e[0], {{0, 1, 0, 0, 0, 1, kM1 - 810728, 1403580, 0}}, kM1);
  fill(table.e[1], {{0, 1, 0, 0, 0, 1, kM2 - 1370589, 0, 527612}}, kM2);
  return table;
}

// The array of the public header by its linkage name: a table that is computed has to be wrapped in a record, and that
// aligned as the x86-64 ABI aligns an array of its size.
extern __attribute__((visibility("default"), aligned(16)))
const PowerTable skipahead_table asm("__kest_mrg32k3a_skipahead_table");
constexpr PowerTable skipahead_table = make_table();

}

namespace {

void power_of_companion(uint32_t v[3], const uint32_t row[3], uint64_t m, int32_t n, const uint64_t* limbs) {
  Matrix3 square = {{0, 1, 0, 0, 0, 1, row[2], row[1], row[0]}};
  int32_t top = n - 1;
  while (top >= 0 && limbs[top] == 0) top--;
  for (int32_t i = 0; i <= top; i++)
    for (int bit = 0; bit < 64 && (i < top || limbs[i] >> bit != 0); bit++) {
      // Powers of one matrix commute, so they may be applied to the vector one by one.
      if (limbs[i] >> bit & 1) apply(square, v, m);
      square = product(square, square, m);
    }
}

// Only the powers of set bits are read: a table half ends at bit 192.
void power_from_table(uint32_t v[3], uint64_t m, int32_t n, const uint64_t* limbs, const uint32_t* half) {
  for (int32_t i = 0; i < n; i++)
    for (uint64_t rest = limbs[i]; rest != 0; rest &= rest - 1) {
      Matrix3 power;
      memcpy(power.e, half + 9 * (64 * int64_t{i} + __builtin_ctzll(rest)), sizeof power.e);
      apply(power, v, m);
    }
}

}

TARN_EXPORT int32_t __kestiVect3PowMod(uint32_t v[3], const uint32_t row[3], uint32_t modulus, uint64_t exponent) {
  power_of_companion(v, row, modulus, 1, &exponent);
  return TARN_RANDOM_OK;
}

TARN_EXPORT int32_t __kestiVect3PowArrayMod(uint32_t v[3], const uint32_t row[3], uint32_t modulus, int32_t n,
                                            const uint64_t* limbs) {
  power_of_companion(v, row, modulus, n, limbs);
  return TARN_RANDOM_OK;
}

TARN_EXPORT int32_t __kestiVect3PowArrayMod_M1(uint32_t v[3], int32_t n, const uint64_t* limbs,
                                               const uint32_t* table_half) {
  power_from_table(v, kM1, n, limbs, table_half);
  return TARN_RANDOM_OK;
}

TARN_EXPORT int32_t __kestiVect3PowArrayMod_M2(uint32_t v[3], int32_t n, const uint64_t* limbs,
                                               const uint32_t* table_half) {
  power_from_table(v, kM2, n, limbs, table_half);
  return TARN_RANDOM_OK;
}
