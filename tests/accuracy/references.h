// The exact functions, by MPFR.
#pragma once

#include "command/input.h"

#include <mpfr.h>

#include <string_view>

namespace tarn::accuracy {

using command::Real;

struct Reference {
  std::string_view name;
  int thin;
  // Sets r and r2 from a, b and the scalars; what a function does not have is not touched.
  void (*set)(mpfr_ptr r, mpfr_ptr r2, mpfr_srcptr a, mpfr_srcptr b, const mpfr_t* s, Real f);
};

const Reference* find_reference(std::string_view name);

}
