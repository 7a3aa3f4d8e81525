// The characteristic polynomial of a member of MT2203, and whether it is irreducible, by NTL.
#pragma once

#include "tarn/random.h"

#include <NTL/GF2X.h>

namespace tarn::test {

inline NTL::GF2X characteristic(uint32_t a) {
  const NTL::GF2X x = NTL::GF2X(69, 1) + NTL::GF2X(34, 1), y = NTL::GF2X(68, 1) + NTL::GF2X(33, 1);
  NTL::GF2X phi = NTL::power(x, 27) * NTL::power(y, 5);
  for (int i = 0; i < 5; i++)
    if (a >> i & 1) phi += NTL::power(x, 27) * NTL::power(y, 4 - i);
  for (int i = 5; i < 32; i++)
    if (a >> i & 1) phi += NTL::power(x, 31 - i);
  return phi;
}

// t^(2^2203) = t modulo phi, and no factor t or t + 1: then phi is irreducible, since 2203 is a prime.
inline bool is_irreducible(uint32_t a) {
  const NTL::GF2X phi = characteristic(a);
  if (NTL::deg(phi) != 2203 || NTL::IsZero(NTL::coeff(phi, 0)) || NTL::weight(phi) % 2 == 0) return false;
  const NTL::GF2XModulus modulus(phi);
  NTL::GF2X power(1, 1);
  for (int k = 0; k < 2203; k++) NTL::SqrMod(power, power, modulus);
  return power == NTL::GF2X(1, 1);
}

}
