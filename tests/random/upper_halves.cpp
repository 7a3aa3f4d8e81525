// Doubles of [0, 1) on standard input to 32-bit words on standard output, each of the upper 16 bits of two numbers: for
// the statistical batteries, which read words, and for generators whose own words are not 32 good bits.
#include <cstdint>
#include <cstdio>
#include <vector>

int main() {
  constexpr size_t pairs = 1 << 14;
  std::vector<double> numbers(2 * pairs);
  std::vector<uint32_t> words(pairs);
  const auto upper = [](double u) { return static_cast<uint32_t>(u * 65536.0); };
  for (;;) {
    const size_t count = std::fread(numbers.data(), sizeof(double), numbers.size(), stdin) / 2;
    for (size_t k = 0; k < count; k++) words[k] = upper(numbers[2 * k]) << 16 | upper(numbers[2 * k + 1]);
    if (std::fwrite(words.data(), sizeof(uint32_t), count, stdout) != count || count < pairs) return 0;
  }
}
