// Plain reference loops of the generators: what somebody writes who knows the algorithm and SSE4, block by block.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tarn::bench {

struct PlainGenerator {
  std::string name;
  std::function<void(void*, int64_t)> words; // none where the reference has no words of the same kind
  std::function<void(double*, int64_t)> doubles;
};

// The references of a generator; dimension counts for the quasi-random ones. They start from an arbitrary state: only
// their speed is looked at.
std::vector<PlainGenerator> plain_generators(const std::string& name, int dimension);

}
