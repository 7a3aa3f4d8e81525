// Short hands for the tests of streams.
#pragma once

#include "tarn/random.h"
#include "tarn/service.h"

#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace tarn::test {

struct StreamDeleter {
  void operator()(tarn_stream* stream) const { __kestDeleteStream(&stream); }
};
using StreamPtr = std::unique_ptr<tarn_stream, StreamDeleter>;

inline StreamPtr make(int32_t brng, const std::vector<uint32_t>& seeds = {}, int32_t expected = 0) {
  tarn_stream* stream = nullptr;
  const int32_t status = __kestNewStreamEx(&stream, brng, static_cast<int32_t>(seeds.size()), seeds.data());
  if (status != expected && stream) __kestDeleteStream(&stream);
  return StreamPtr(stream);
}

inline StreamPtr copy(const StreamPtr& from) {
  tarn_stream* stream = nullptr;
  __kestCopyStream(&stream, from.get());
  return StreamPtr(stream);
}

inline tarn_brng_properties properties(const StreamPtr& stream) {
  tarn_brng_properties row;
  __kestGetBrngProperties(stream->brng, &row);
  return row;
}

// Words of 32 bits: WordSize / 4 of them an element.
inline std::vector<uint32_t> words(const StreamPtr& stream, int32_t n) {
  const tarn_brng_properties row = properties(stream);
  std::vector<uint32_t> r(static_cast<size_t>(n * row.WordSize / 4));
  if (row.iBRng(stream.get(), n, r.data()) != 0) r.clear();
  return r;
}

inline std::vector<double> doubles(const StreamPtr& stream, int32_t n, double a = 0, double b = 1) {
  std::vector<double> r(static_cast<size_t>(n));
  if (properties(stream).dBRng(stream.get(), n, r.data(), a, b) != 0) r.clear();
  return r;
}

inline std::vector<float> singles(const StreamPtr& stream, int32_t n, float a = 0, float b = 1) {
  std::vector<float> r(static_cast<size_t>(n));
  if (properties(stream).sBRng(stream.get(), n, r.data(), a, b) != 0) r.clear();
  return r;
}

inline uint32_t* state(const StreamPtr& stream) { return reinterpret_cast<uint32_t*>(stream.get() + 1); }

struct Named {
  const char* name;
  int32_t brng;
  std::vector<uint32_t> seeds;
};

// Every generator whose sequence follows from its seed.
inline const std::vector<Named>& generators() {
  static const std::vector<Named> all = {{"MCG31M1", 0x100000, {777}},
                                         {"R250", 0x200000, {12345}},
                                         {"MRG32K3A", 0x300000, {1, 2, 3, 4, 5, 6}},
                                         {"MCG59", 0x400000, {99, 7}},
                                         {"WH", 0x500000 + 100, {5, 6, 7, 8}},
                                         {"OldWH", 276, {5}},
                                         {"Sobol", 0x600000, {1}},
                                         {"Sobol3", 0x600000, {3}},
                                         {"Sobol7", 0x600000, {7}},
                                         {"Sobol40", 0x600000, {40}},
                                         {"Niederr2", 0x700000, {2}},
                                         {"Niederr13", 0x700000, {13}},
                                         {"Niederr318", 0x700000, {318}},
                                         {"MT19937", 0x800000, {1, 2, 3}},
                                         {"MT2203", 0x900000 + 4711, {11}},
                                         {"SFMT19937", 0xD00000, {21}},
                                         {"ARS5", 0xF00000, {1, 2, 3, 4, 0xFFFFFFF0, 0xFFFFFFFF}},
                                         {"PHILOX4X32X10", 0x1000000, {1, 2, 0xFFFFFFF0, 0xFFFFFFFF}}};
  return all;
}

}
