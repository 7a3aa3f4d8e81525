// The natural logarithm by the x87 unit, rounded once from 64 bits.
#pragma once

namespace tarn::stats {

inline double natural_log(double x) {
  long double result;
  asm("fldln2\n\tfxch\n\tfyl2x" : "=t"(result) : "0"(static_cast<long double>(x)) : "st(1)");
  return static_cast<double>(result);
}

}
