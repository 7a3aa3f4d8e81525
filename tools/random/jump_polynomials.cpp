// Writes the exponents of the polynomials by which MT19937 and SFMT19937 jump, in ascending order.
//
//   jump_polynomials mt19937 > mt19937_poly.inc
//   jump_polynomials sfmt19937 > sfmt19937_poly.inc
//
// MT19937: the characteristic polynomial in closed form (M. Matsumoto, T. Nishimura, ACM TOMACS 8 (1998)).
// SFMT19937: a polynomial of degree 19968 that annihilates the recurrence on its 156 blocks, as the minimal polynomial
// of one bit of the successive blocks. Needs NTL.
#include <NTL/GF2X.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

namespace {

using NTL::GF2X;

GF2X mt19937() {
  constexpr uint32_t a = 0x9908B0DF;
  const GF2X x = GF2X(624, 1) + GF2X(397, 1), y = GF2X(623, 1) + GF2X(396, 1);
  GF2X phi = x * NTL::power(y, 31);
  for (int i = 0; i < 31; i++)
    if (a >> i & 1) phi += x * NTL::power(y, 30 - i);
  if (a >> 31) phi += 1;
  return phi;
}

using Block = std::array<uint32_t, 4>;

Block shift_bytes(const Block& b, bool up) {
  __extension__ unsigned __int128 v;
  std::memcpy(&v, b.data(), sizeof v);
  v = up ? v << 8 : v >> 8;
  Block r;
  std::memcpy(r.data(), &v, sizeof v);
  return r;
}

GF2X sfmt19937() {
  constexpr int kDegree = 19968;
  constexpr uint32_t mask[4] = {0xDFFFFFEF, 0xDDFECB7F, 0xBFFAFFFF, 0xBFFFFFF6};
  std::vector<Block> x(156);
  uint64_t w = 1;
  for (Block& block : x)
    for (uint32_t& lane : block)
      lane = static_cast<uint32_t>((w = w * 6364136223846793005 + 1442695040888963407) >> 32);
  const size_t count = 2 * kDegree + 256;
  for (size_t k = 0; k < count; k++) {
    const Block up = shift_bytes(x[k], true), down = shift_bytes(x[k + 154], false);
    Block next;
    for (int i = 0; i < 4; i++)
      next[i] = x[k][i] ^ up[i] ^ (x[k + 122][i] >> 11 & mask[i]) ^ down[i] ^ x[k + 155][i] << 18;
    x.push_back(next);
  }
  for (int bit = 0; bit < 128; bit++) { // some bits miss a small factor
    NTL::vec_GF2 sequence;
    sequence.SetLength(static_cast<long>(count));
    for (size_t k = 0; k < count; k++) sequence.put(static_cast<long>(k), x[156 + k][bit / 32] >> bit % 32 & 1);
    const GF2X polynomial = NTL::MinPolySeq(sequence, kDegree + 64);
    if (NTL::deg(polynomial) == kDegree) return polynomial;
  }
  return GF2X();
}

}

int main(int argc, char** argv) {
  if (argc != 2) return 1;
  const GF2X polynomial = std::strcmp(argv[1], "mt19937") == 0 ? mt19937() : sfmt19937();
  int column = 0;
  for (long k = 0; k <= NTL::deg(polynomial); k++)
    if (NTL::IsOne(NTL::coeff(polynomial, k))) std::printf("%ld,%s", k, ++column % 16 == 0 ? "\n" : " ");
  std::printf("\n");
  return column == 0;
}
