// What the formula files claim of themselves: the lines TARN_CLAIM(tName, class, ulp, from, to).
#pragma once

#include <string>
#include <vector>

namespace tarn::accuracy {

struct Claim {
  std::string type_and_name, class_name, file;
  double ulp;
  double from, to; // of the first argument
};

// All claims in the headers below a folder. Throws on a line that cannot be read.
std::vector<Claim> read_claims(const std::string& folder);

}
