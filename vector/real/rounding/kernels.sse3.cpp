#include "vector/frame/emit.h"
#include "vector/real/rounding/logb.h"
#include "vector/real/rounding/parts.h"
#include "vector/real/rounding/round.h"

#include "vector/real/rounding/rounding.def"
