#include "vector/frame/emit.h"
#include "vector/real/arithmetic/compare.h"
#include "vector/real/arithmetic/divide.h"
#include "vector/real/arithmetic/light.h"
#include "vector/real/arithmetic/linear_frac.h"
#include "vector/real/arithmetic/modulus.h"
#include "vector/real/arithmetic/next_after.h"

#include "vector/real/arithmetic/arithmetic.def"
