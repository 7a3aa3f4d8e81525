// Other implementations of the vector functions, as loops over arrays: the C library's scalar functions, its vector
// ones (libmvec), SLEEF's and Highway's. What an installed library does not have is left out.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tarn::bench {

// Arrays of 2 arguments and 2 results; unused ones are null. n is a multiple of no particular number.
struct Arrays {
  int64_t n;
  const void* in[2];
  void* out[2];
};

struct Peer {
  std::string name;  // "SLEEF u10 SSE4"
  std::string rival; // the class of Tarn's that promises the same accuracy: HA to 1 ulp, LA to 4
  std::function<void(const Arrays&)> run;
};

struct Range {
  double from = 0.1, to = 10;
};

Range argument_range(const std::string& function);
std::vector<Peer> peers(const std::string& function, char type, int inputs, int outputs);

// The pieces, each in the file that is compiled for its instruction set. An address is that of a function of vectors
// of 16 or 32 bytes, called as `function` of that many inputs and outputs by value.
using Loop = std::function<void(const Arrays&)>;
Loop loop_sse4(void* address, char type, int inputs, int outputs);
Loop loop_avx2(void* address, char type, int inputs, int outputs);
Loop plain_loop(const std::string& function, char type);   // null where there is none
Loop highway_loop(const std::string& function, char type); // null where there is none

}
