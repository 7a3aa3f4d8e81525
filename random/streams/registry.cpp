// The registry: which functions and numbers belong to a generator identifier.
#include "random/streams/stream.h"

#define ROW(Name, size, seeds, zero, word, bits)                                                                       \
  {                                                                                                                    \
    size, seeds, zero, word, bits, 0, __kestBRng##Name##InitStream, __kestsBRng##Name, __kestdBRng##Name,              \
        __kestiBRng##Name                                                                                              \
  }

tarn_brng_properties __RegBrngsNew[512] = {
#define TARN_GENERATOR(Name, members, size, seeds, zero, word, bits) ROW(Name, size, seeds, zero, word, bits),
#include "random/streams/generators.def"
#undef TARN_GENERATOR
};

namespace {

// Rows by name, for the old numbering.
#define TARN_GENERATOR(Name, members, size, seeds, zero, word, bits)                                                   \
  constexpr tarn_brng_properties k##Name = ROW(Name, size, seeds, zero, word, bits);
#include "random/streams/generators.def"
#undef TARN_GENERATOR

constexpr int32_t kOldWhFirst = 4, kOldWhLast = 276;
constexpr int32_t kOldRows = 281;      // two more than are filled: 279 and 280 pass the check
constexpr int32_t kNewBase = 0x100000; // identifiers from here on are of the new numbering
constexpr int kRowShift = 20;

int32_t rows_in_use = 16;

// Members of each row of the new numbering.
int32_t member_counts[512] = {
#define TARN_GENERATOR(Name, members, size, seeds, zero, word, bits) members,
#include "random/streams/generators.def"
#undef TARN_GENERATOR
};

}

#define TIMES4(x) x, x, x, x
#define TIMES16(x) TIMES4(x), TIMES4(x), TIMES4(x), TIMES4(x)
#define TIMES64(x) TIMES16(x), TIMES16(x), TIMES16(x), TIMES16(x)
#define TIMES256(x) TIMES64(x), TIMES64(x), TIMES64(x), TIMES64(x)

// 273 rows of WH, one for each member.
const tarn_brng_properties __RegBrngs[512] = {kMCG31M1,     kR250, kMRG32K3A, kMCG59,  TIMES256(kWH),
                                              TIMES16(kWH), kWH,   kSobol,    kNiederr};

TARN_EXPORT const tarn_brng_properties* __kestGetBrngBaseOffset(int32_t brng, int32_t* row, int32_t* member) {
  if (brng >= kNewBase) {
    *row = (brng >> kRowShift) - 1;
    *member = brng & (kNewBase - 1);
    return __RegBrngsNew;
  }
  const bool wh = brng >= kOldWhFirst && brng <= kOldWhLast;
  *row = wh ? kOldWhFirst : brng;
  *member = wh ? brng - kOldWhFirst : 0;
  return __RegBrngs;
}

TARN_EXPORT int32_t __kestIsBrngValid(const tarn_brng_properties* table, int32_t row, int32_t member) {
  const bool valid = table == __RegBrngs ? row < kOldRows : row < rows_in_use && member < member_counts[row];
  return valid ? TARN_RANDOM_OK : TARN_RANDOM_BAD_GENERATOR;
}

TARN_EXPORT int32_t __kestGetBrngProperties(int32_t brng, tarn_brng_properties* out) {
  int32_t row, member;
  const tarn_brng_properties* table = __kestGetBrngBaseOffset(brng, &row, &member);
  const int32_t status = __kestIsBrngValid(table, row, member);
  if (status == TARN_RANDOM_OK) *out = table[row];
  return status;
}

TARN_EXPORT int32_t __kestGetNumRegBrngs(void) { return rows_in_use; }

TARN_EXPORT int32_t __kestRegisterBrng(const tarn_brng_properties* p) {
  if (p->StreamStateSize < 0) return TARN_RANDOM_BAD_STATE_SIZE;
  if (p->WordSize != 4 && p->WordSize != 8 && p->WordSize != 16) return TARN_RANDOM_BAD_WORD_SIZE;
  if (p->NSeeds < 1) return TARN_RANDOM_BAD_SEED_COUNT;
  if (p->NBits < 1) return TARN_RANDOM_BAD_BIT_COUNT;
  if (!p->dBRng || !p->sBRng || !p->iBRng || !p->InitStream) return TARN_RANDOM_NULL_POINTER;
  const int32_t row = rows_in_use;
  __RegBrngsNew[row] = *p;
  member_counts[row] = 1;
  rows_in_use = row + 1;
  return (row << kRowShift) + kNewBase;
}
