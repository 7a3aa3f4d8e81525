// Generator matrices of Niederreiter's base-2 sequence.
// P. Bratley, B. L. Fox, H. Niederreiter, ACM Trans. Math. Softw. 20 (1994), algorithm 738.
#pragma once

#include <stdint.h>

namespace tarn::random {

// The 32 direction numbers for an irreducible polynomial (a bit mask), bit 31 of a number being one half.
void niederreiter_directions(uint32_t polynomial, uint32_t out[32]);

}
