// 3 by 3 matrices over a modulus below 2^32, row by row.
#pragma once

#include <stdint.h>

namespace tarn::random {

constexpr uint32_t kM1 = 0xFFFFFF2F; // 2^32 - 209
constexpr uint32_t kM2 = 0xFFFFA6BB; // 2^32 - 22853

// The products stay below 2^64 one by one; their sum is taken of the remainders.
constexpr uint32_t row_times(const uint32_t row[3], const uint32_t v[3], uint64_t m) {
  uint64_t sum = 0;
  for (int k = 0; k < 3; k++) sum += static_cast<uint64_t>(row[k]) * v[k] % m;
  return static_cast<uint32_t>(sum % m);
}

struct Matrix3 {
  uint32_t e[9];
};

constexpr Matrix3 product(const Matrix3& p, const Matrix3& q, uint64_t m) {
  Matrix3 r{};
  for (int i = 0; i < 3; i++)
    for (int j = 0; j < 3; j++) {
      const uint32_t column[3] = {q.e[j], q.e[3 + j], q.e[6 + j]};
      r.e[3 * i + j] = row_times(p.e + 3 * i, column, m);
    }
  return r;
}

constexpr void apply(const Matrix3& p, uint32_t v[3], uint64_t m) {
  const uint32_t r[3] = {row_times(p.e, v, m), row_times(p.e + 3, v, m), row_times(p.e + 6, v, m)};
  for (int i = 0; i < 3; i++) v[i] = r[i];
}

}
