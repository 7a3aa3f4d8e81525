// The bits that kernels give: one hash a kernel over arguments of every kind, the same with every compiler and at every
// level of optimisation. Kernels on hardware estimates are left out; their last bits are the processor's.
//
//   test_bits            compares with hashes.txt
//   test_bits --write    writes it
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <limits>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "vector/roll.h"
#include "vector/special_arguments.h"

using namespace tarn::test;

namespace {

const std::set<std::string> estimates = {
#define TARN_ESTIMATE(tName, cls) #tName " " #cls,
#include "vector/functions.def"
};

uint64_t random_state = 0x9E3779B97F4A7C15;
uint64_t next_random() {
  random_state ^= random_state << 13;
  random_state ^= random_state >> 7;
  return random_state ^= random_state << 17;
}

// Made by integer operations alone, so that they are the same everywhere.
template <class T> T argument(size_t i) {
  using Bits = std::conditional_t<sizeof(T) == 8, uint64_t, uint32_t>;
  constexpr const auto& specials = special_arguments<T>;
  constexpr int mantissa = std::numeric_limits<T>::digits - 1;
  constexpr Bits one = Bits(sizeof(T) == 8 ? 1023 : 127) << mantissa;
  const uint64_t r = next_random();
  Bits bits;
  T value;
  switch (i % 8) {
  case 0: return specials[r % std::size(specials)];
  case 1: bits = static_cast<Bits>(r); break;
  default: // magnitudes from 2^-16 to 2^16, mostly positive
    bits = one + (Bits(r >> 40) % 32 << mantissa) - (Bits{16} << mantissa) +
           (static_cast<Bits>(r) & ((Bits{1} << mantissa) - 1));
    if (i % 8 == 7) bits |= Bits{1} << (8 * sizeof(T) - 1);
  }
  memcpy(&value, &bits, sizeof value);
  return value;
}

uint64_t mixed(uint64_t hash, uint64_t word) { // FNV-1a over words
  return (hash ^ word) * 0x100000001B3;
}
template <class T> uint64_t hash_of(const std::vector<T>& results, uint64_t hash) {
  for (const T& v : results) {
    uint64_t word = 0;
    if (v == v)
      memcpy(&word, &v, sizeof v);
    else
      word = 0x7FF8000000000000; // which NaN it is, is no promise
    hash = mixed(hash, word);
  }
  return hash;
}

template <class T> uint64_t kernel_hash(const Function& f, int slot) {
  random_state = 0x9E3779B97F4A7C15;
  constexpr int32_t n = 300007; // enough that a last bit of a constant shows
  std::vector<T> a(n), b(n), r(n), q(n);
  for (size_t i = 0; i < n; ++i) a[i] = argument<T>(i), b[i] = argument<T>(i * 5 + i / 8);
  Call<T> call{n, a.data(), b.data(), r.data(), q.data()};
  call_plain(f, f.plain[slot], call);
  uint64_t hash = hash_of(r, 0xCBF29CE484222325);
  if (f.outputs() == 2) hash = hash_of(q, hash);
  return hash;
}

}

int main(int argc, char** argv) {
  const bool write = argc > 1 && std::string(argv[1]) == "--write";
  __lumeSetMode(0x2000);
  std::map<std::string, uint64_t> hashes;
  for_each_kernel([&](const Function& f, int slot, auto type) {
    const std::string& name = f.kernel_names[static_cast<size_t>(slot)]; // dExp_Y8LA
    const std::string cls = name.substr(name.size() - 2);
    if (!estimates.count(f.full_name() + " " + cls)) hashes[name] = kernel_hash<decltype(type)>(f, slot);
  });
  if (write) {
    std::ofstream file(TARN_HASHES);
    file << "# What every kernel without hardware estimates gives, hashed. Made by test_bits --write; a change here is "
            "a\n"
            "# change of results.\n";
    for (const auto& [name, hash] : hashes) {
      char text[17];
      std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(hash));
      file << name << ' ' << text << '\n';
    }
    return 0;
  }
  int passed = 0, failed = 0;
  std::ifstream file(TARN_HASHES);
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#') continue;
    const size_t blank = line.find(' ');
    const auto found = hashes.find(line.substr(0, blank));
    const uint64_t expected = std::stoull(line.substr(blank + 1), nullptr, 16);
    if (found != hashes.end() && found->second == expected)
      ++passed;
    else
      ++failed, std::cout << "FAILED " << line.substr(0, blank) << '\n';
    if (found != hashes.end()) hashes.erase(found);
  }
  for (const auto& [name, hash] : hashes) ++failed, std::cout << "FAILED " << name << " has no hash in the file\n";
  std::cout << passed << " passed, " << failed << " failed\n";
  return failed || !passed;
}
