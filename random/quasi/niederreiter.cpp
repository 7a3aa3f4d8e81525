// The Niederreiter sequence in base 2: up to 318 coordinates from the irreducible polynomials in order, any number from
// the caller's parameters.
#include "random/quasi/niederreiter.h"
#include "random/quasi/points.h"

using namespace tarn::random;

namespace {

constexpr uint32_t kBuiltIn = 318;
constexpr int kRowWords = 320;

constexpr bool is_irreducible(uint32_t polynomial) {
  for (uint32_t factor = 2;; factor++) {
    const int degree = 31 - __builtin_clz(factor);
    if (2 * degree > 31 - __builtin_clz(polynomial)) return true;
    uint32_t rest = polynomial;
    while (rest >> degree != 0) rest ^= factor << (__builtin_clz(factor) - __builtin_clz(rest));
    if (rest == 0) return false;
  }
}

struct Polynomials {
  uint32_t mask[kBuiltIn];
};

constexpr Polynomials first_irreducible() {
  Polynomials list{};
  uint32_t count = 0;
  for (uint32_t polynomial = 2; count < kBuiltIn; polynomial++)
    if (is_irreducible(polynomial)) list.mask[count++] = polynomial;
  return list;
}

constexpr Polynomials kPolynomials = first_irreducible();
static_assert(kPolynomials.mask[11] == 55 && kPolynomials.mask[kBuiltIn - 1] == 3047);

using State = PointRecord<kBuiltIn, kRowWords>;
static_assert(sizeof(tarn_stream) + sizeof(State) <= 84288);

// A stream of more coordinates has its rows in a chunk. Its point stays in the record as long as it is among the words
// that a copy of the state takes along; otherwise it follows the rows, so that it is copied with them.
constexpr int64_t kCopiedWords = 10498;
constexpr int64_t kPointRoom = kCopiedWords - sizeof(PointState) / sizeof(uint32_t);

Points points_of(tarn_stream* stream) {
  State& s = state_of<State>(stream);
  auto* rows = static_cast<uint32_t*>(__kestSearchChunk(stream, kNiederrDirections));
  if (!rows) return s.points();
  const int64_t dimen = s.head.dimen;
  uint32_t* in_record = reinterpret_cast<uint32_t*>(&s) + sizeof(PointState) / sizeof(uint32_t);
  return {&s.head, dimen <= kPointRoom ? in_record : rows + kRows * dimen, rows, dimen};
}

template <class Column> int32_t fill_chunk(tarn_stream* stream, int64_t dimen, Column column) {
  const int64_t bytes = 33 * 4 * dimen;
  if (bytes > INT32_MAX) return TARN_RANDOM_NO_MEMORY;
  auto* rows = static_cast<uint32_t*>(tarn_serv_allocate(bytes, kRecordAlignment));
  if (!rows) return TARN_RANDOM_NO_MEMORY;
  for (int64_t d = 0; d < dimen; d++) {
    uint32_t numbers[kRows];
    column(static_cast<uint32_t>(d), numbers);
    for (int k = 0; k < kRows; k++) rows[dimen * k + d] = numbers[k];
    rows[kRows * dimen + d] = 0;
  }
  const int32_t status = __kestAddChunk(stream, kNiederrDirections, nullptr, rows, static_cast<int32_t>(bytes));
  if (status != TARN_RANDOM_OK) {
    tarn_serv_deallocate(rows);
    return status;
  }
  state_of<State>(stream).head.dimen = static_cast<uint32_t>(dimen);
  points_of(stream).start();
  return TARN_RANDOM_OK;
}

void built_in(uint32_t d, uint32_t out[kRows]) { niederreiter_directions(kPolynomials.mask[d], out); }

enum Class : int32_t { kPolynomialList = 1, kTable = 4 };

int32_t seed(tarn_stream* stream, const PointSeeds& seeds) {
  State& state = state_of<State>(stream);
  // Whatever is wrong with the caller's parameters leaves the built-in sequence.
  auto fall_back = [&] {
    state.start(seeds.built_in_dimension(kBuiltIn), built_in);
    return TARN_RANDOM_OK;
  };
  if (!seeds.user(3)) return fall_back();
  const int64_t dimen = seeds.p[0];
  const auto* words = reinterpret_cast<const uint32_t*>(seeds.p) + 3;
  auto fill = [&](auto column) {
    if (dimen > kBuiltIn) { // a stream that gets no chunk is a plain one of one coordinate
      state.start(1, built_in);
      return fill_chunk(stream, dimen, column);
    }
    state.start(static_cast<uint32_t>(dimen), column);
    return int32_t{TARN_RANDOM_OK};
  };
  if (seeds.p[2] == kPolynomialList && seeds.length >= dimen + 3)
    return fill([&](uint32_t d, uint32_t* out) { niederreiter_directions(words[d], out); });
  if (seeds.p[2] == kTable && seeds.length >= kRows * dimen + 3)
    return fill([&](uint32_t d, uint32_t* out) { memcpy(out, words + int64_t{kRows} * d, sizeof(uint32_t) * kRows); });
  return fall_back();
}

template <class Map> int32_t generate(tarn_stream* stream, int32_t n, Map map) {
  return generate_points(points_of(stream), n, map,
                         [](const Points& p, int64_t at, int64_t count, Map to) { whole_points(p, at, count, to); });
}

}

namespace tarn::random {

void niederreiter_directions(uint32_t polynomial, uint32_t out[32]) {
  for (int k = 0; k < kRows; k++) out[k] = 0;
  if (polynomial < 2) return; // no such coordinate
  const int degree = 31 - __builtin_clz(polynomial);
  uint64_t power = 1; // of the polynomial; its degree stays below 64
  int power_degree = 0;
  uint8_t v[2 * kRows + 1] = {};
  for (int j = 0, u = 0; j < kRows; j++, u = u + 1 == degree ? 0 : u + 1) {
    if (u == 0) {
      // The next power, and a solution of the linear recurrence that it defines: zeros up to the degree of the power
      // before, then a one, then free values, all one.
      const int before = power_degree;
      uint64_t product = 0;
      for (int i = 0; i <= degree; i++)
        if (polynomial >> i & 1) product ^= power << i;
      power = product;
      power_degree += degree;
      for (int r = 0; r < power_degree; r++) v[r] = r >= before;
      for (int r = power_degree; r < kRows + degree; r++) {
        uint8_t sum = 0;
        for (int k = 0; k < power_degree; k++) sum ^= static_cast<uint8_t>((power >> k & 1) & v[r - power_degree + k]);
        v[r] = sum;
      }
    }
    for (int r = 0; r < kRows; r++) out[r] |= static_cast<uint32_t>(v[r + u]) << (31 - j);
  }
}

}

TARN_EXPORT int32_t __kestBRngNiederrInitStream(int32_t method, tarn_stream* stream, int32_t n, const void* params) {
  if (method == kSeed) return seed(stream, {n, static_cast<const int32_t*>(params)});
  return point_method(points_of(stream), method, n, params);
}

TARN_OUTPUTS(Niederr, generate, Words, UpperBits<double>, UpperBits<float>)
