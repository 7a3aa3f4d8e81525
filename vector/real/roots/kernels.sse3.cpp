#include "vector/frame/emit.h"
#include "vector/real/roots/cbrt.h"
#include "vector/real/roots/sqrt.h"

#include "vector/real/roots/roots.def"
