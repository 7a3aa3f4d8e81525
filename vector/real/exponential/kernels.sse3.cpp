#define TARN_EMIT_ONE_TYPE d
#include "vector/frame/emit.h"
#include "vector/real/exponential/exp.h"
#include "vector/real/exponential/ln.h"

#include "vector/real/exponential/exponential.def"
