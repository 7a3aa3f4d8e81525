// The Sobol sequence: up to 40 coordinates from built-in tables, any number from the caller's.
#include "random/quasi/points.h"
#include "random/quasi/sobol_threads.h"

using namespace tarn::random;

namespace {

constexpr uint32_t kBuiltIn = 40;
constexpr int kRowWords = 48; // a row of the record's table, padded
constexpr int kMostDegree = 8;

// Coordinates from 2 on: a primitive polynomial as a bit mask, and as many initial integers as its degree.
struct Coordinate {
  uint32_t polynomial, initial[kMostDegree];
};
constexpr Coordinate kCoordinates[kBuiltIn - 1] = {
#include "random/quasi/sobol_table.inc"
};

using State = PointRecord<kBuiltIn, kRowWords>;
static_assert(sizeof(tarn_stream) + sizeof(State) <= 11712);

int degree_of(uint32_t polynomial) { return polynomial > 1 ? 31 - __builtin_clz(polynomial) : 0; }

// initial[0 .. degree) are odd integers m_k below 2^(k+1); numbers not given count as 1.
void make_directions(uint32_t polynomial, const uint32_t* initial, int given, uint32_t out[kRows]) {
  const int degree = degree_of(polynomial);
  uint32_t m[kRows];
  for (int k = 0; k < kRows; k++) {
    if (degree == 0 || k < degree) {
      m[k] = k < given ? initial[k] : 1;
      continue;
    }
    m[k] = m[k - degree];
    for (int i = 0; i < degree; i++)
      if (polynomial >> i & 1) m[k] ^= m[k - degree + i] << (degree - i);
  }
  for (int k = 0; k < kRows; k++) out[k] = m[k] << (31 - k);
}

// ---- Tables in chunks: the direction numbers by coordinate, then transposed with padded rows.

int64_t chunk_row_words(int64_t dimen) { return (4 * dimen / 64 * 64 + 64) / 4; }

// Room for more than both tables: the padding counts four times.
int64_t chunk_bytes(int64_t dimen) { return 4 * ((64 - 4 * dimen % 64) * 32 + 64 * dimen); }

bool points_in_chunks(tarn_stream* stream, Points& points) {
  auto* table = static_cast<uint32_t*>(__kestSearchChunk(stream, kSobolDirections));
  auto* x = static_cast<uint32_t*>(__kestSearchChunk(stream, kSobolPoint));
  if (!table || !x) return false;
  PointState& head = state_of<State>(stream).head;
  points = {&head, x, table + int64_t{kRows} * head.dimen, chunk_row_words(head.dimen)};
  return true;
}

Points points_of(tarn_stream* stream) {
  Points points;
  return points_in_chunks(stream, points) ? points : state_of<State>(stream).points();
}

// ---- Seeding

void built_in(uint32_t d, uint32_t out[kRows]) {
  if (d == 0)
    make_directions(0, nullptr, 0, out);
  else
    make_directions(kCoordinates[d - 1].polynomial, kCoordinates[d - 1].initial, kMostDegree, out);
}

template <class Column> int32_t fill_chunks(tarn_stream* stream, int64_t dimen, Column column) {
  const int64_t bytes = chunk_bytes(dimen);
  if (bytes > INT32_MAX) return TARN_RANDOM_NO_MEMORY;
  auto* table = static_cast<uint32_t*>(tarn_serv_allocate(bytes, kRecordAlignment));
  if (!table) return TARN_RANDOM_NO_MEMORY;
  memset(table, 0, static_cast<size_t>(bytes));
  uint32_t* rows = table + kRows * dimen;
  const int64_t stride = chunk_row_words(dimen);
  for (int64_t d = 0; d < dimen; d++) {
    column(static_cast<uint32_t>(d), table + kRows * d);
    for (int k = 0; k < kRows; k++) rows[stride * k + d] = table[kRows * d + k];
  }
  uint64_t key[2];
  __kestGenerateNewGlobalRODataTableEntryId(key, reinterpret_cast<uint64_t>(table));
  int32_t status = __kestAddChunk(stream, kSobolDirections, key, table, static_cast<int32_t>(bytes));
  if (status != TARN_RANDOM_OK) {
    tarn_serv_deallocate(table);
    return status;
  }
  const int64_t point_bytes = 4 * dimen;
  void* x = tarn_serv_allocate(point_bytes, kRecordAlignment);
  if (!x) return TARN_RANDOM_NO_MEMORY;
  status = __kestAddChunk(stream, kSobolPoint, nullptr, x, static_cast<int32_t>(point_bytes));
  if (status != TARN_RANDOM_OK) {
    tarn_serv_deallocate(x);
    return status;
  }
  state_of<State>(stream).head.dimen = static_cast<uint32_t>(dimen);
  points_of(stream).start();
  return TARN_RANDOM_OK;
}

// The classes of parameters.
enum Class : int32_t { kPolynomials = 1, kInitial = 2, kBoth = 3, kBothFromFirst = 11, kTable = 4 };

int32_t seed(tarn_stream* stream, const PointSeeds& seeds) {
  State& state = state_of<State>(stream);
  // Whatever is wrong with the caller's parameters leaves the built-in sequence.
  state.start(seeds.built_in_dimension(kBuiltIn), built_in);
  if (!seeds.user(4)) return TARN_RANDOM_OK;
  const int64_t dimen = seeds.p[0], length = seeds.length;
  const int32_t kind = seeds.p[2];
  const auto* words = reinterpret_cast<const uint32_t*>(seeds.p);

  switch (kind) {
  case kPolynomials:
    if (dimen > kBuiltIn || length < dimen + 2) return TARN_RANDOM_OK;
    for (int64_t d = 1; d < dimen; d++)
      if (degree_of(words[d + 2]) > kMostDegree) return TARN_RANDOM_BAD_PARAMETER;
    state.start(static_cast<uint32_t>(dimen), [&](uint32_t d, uint32_t* out) {
      if (d == 0) return built_in(0, out);
      const Coordinate& known = kCoordinates[d - 1];
      make_directions(words[d + 2], known.initial, degree_of(known.polynomial), out);
    });
    return TARN_RANDOM_OK;

  case kInitial: {
    const int64_t most = seeds.p[3];
    if (dimen > kBuiltIn || most < 0 || length < (dimen - 1) * most + 4) return TARN_RANDOM_OK;
    for (int64_t d = 1; d < dimen; d++)
      if (degree_of(kCoordinates[d - 1].polynomial) > most) return TARN_RANDOM_OK;
    state.start(static_cast<uint32_t>(dimen), [&](uint32_t d, uint32_t* out) {
      if (d == 0) return built_in(0, out);
      make_directions(kCoordinates[d - 1].polynomial, words + 4 + (d - 1) * most, static_cast<int>(most), out);
    });
    return TARN_RANDOM_OK;
  }

  case kBoth:
  case kBothFromFirst: {
    const int64_t first = kind == kBoth ? 1 : 0; // the first coordinate that has data
    const int64_t count = dimen - first, most_at = 3 + count;
    if (length < most_at + 1) return TARN_RANDOM_OK;
    const int64_t most = seeds.p[most_at];
    if (most < 0 || length < count * (most + 1) + 4) return TARN_RANDOM_OK;
    for (int64_t d = 0; d < count; d++)
      if (degree_of(words[3 + d]) > most) return TARN_RANDOM_OK;
    return fill_chunks(stream, dimen, [&](uint32_t d, uint32_t* out) {
      if (d < first) return built_in(0, out);
      const int64_t k = d - first;
      make_directions(words[3 + k], words + most_at + 1 + k * most, most < kRows ? static_cast<int>(most) : kRows, out);
    });
  }

  case kTable:
    if (length < kRows * dimen + 3) return TARN_RANDOM_OK;
    return fill_chunks(stream, dimen, [&](uint32_t d, uint32_t* out) {
      memcpy(out, words + 3 + int64_t{kRows} * d, sizeof(uint32_t) * kRows);
    });

  default: return TARN_RANDOM_OK;
  }
}

template <class Map, class AllBits> int32_t generate(tarn_stream* stream, int32_t n, Map map, const AllBits& threaded) {
  return generate_points(points_of(stream), n, map, [&](const Points& p, int64_t at, int64_t count, Map serial) {
    if (!points_by_threads(p, at, count, threaded)) whole_points(p, at, count, serial);
  });
}

// All 32 bits, in the threaded loops.
struct AllBitsFloat : LinearFloat<Reading::Unsigned> {
  AllBitsFloat(void* to, float a, float b)
      : LinearFloat<Reading::Unsigned>(to, static_cast<float>((static_cast<double>(b) - a) * kTwoToMinus32), a) {}
};

}

TARN_EXPORT int32_t __kestBRngSobolInitStream(int32_t method, tarn_stream* stream, int32_t n, const void* params) {
  if (method == kSeed) return seed(stream, {n, static_cast<const int32_t*>(params)});
  return point_method(points_of(stream), method, n, params);
}

TARN_EXPORT int32_t __kestiBRngSobol(tarn_stream* stream, int32_t n, void* r) {
  return generate(stream, n, Words(r), Words(r));
}

TARN_EXPORT int32_t __kestdBRngSobol(tarn_stream* stream, int32_t n, double* r, double a, double b) {
  return generate(stream, n, UpperBits<double>(r, a, b), FromLower<double>(r, a, b));
}

TARN_EXPORT int32_t __kestsBRngSobol(tarn_stream* stream, int32_t n, float* r, float a, float b) {
  return generate(stream, n, UpperBits<float>(r, a, b), AllBitsFloat(r, a, b));
}
