// Dynamic creation of the MT2203 family: finds matrix words a whose twisted recurrence has full period 2^2203 - 1, and
// tempering masks b, c for each, and prints the table of 6024 rows.
//
//   mt2203_search CHECKPOINT > mt2203_table.inc
//
// Every irreducible word is appended to CHECKPOINT with its masks, so a stopped search goes on where it stood. The
// search is deterministic; on one core it takes about an hour.
//
// Sources: M. Matsumoto, T. Nishimura, Dynamic creation of pseudorandom number generators, MCQMC 1998 (2000);
//          S. Harase, M. Matsumoto, M. Saito, Fast lattice reduction for F2-linear pseudorandom number generators,
//          Math. Comp. 80 (2011), for the dimensions of equidistribution.
#include <wmmintrin.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr int kDegree = 2203; // n * w - r = 69 * 32 - 5
constexpr int kWords = 69;    // n
constexpr int kLag = 34;      // m
constexpr int kLowBits = 5;   // r
constexpr int kRows = 6024;
constexpr int kWorstDefect = 713; // the quality of the worst of the fixed rows
constexpr int kLibrarySize = 64;
constexpr int kLibraryDefect = 705;
constexpr int kHopeless = 350; // at 16 bits: the next bits cost at least 381 more
constexpr int kBlockBits = 22; // words sieved at a time
constexpr int kSpaceBits = 24; // dimension of the whole search space
constexpr int kSieveDegree = 24;

struct Row {
  uint32_t a, b, c;
};
constexpr Row kFirst{0xAF81055F, 0xDD7EEF80, 0xEFD78000};
constexpr Row kSecond{0x832604E1, 0x66AD7F80, 0xEBD58000};
constexpr Row kLast{0xE8761D4B, 0x72967680, 0xEFEB0000};

uint64_t mix(uint64_t x) { // splitmix64
  x += 0x9E3779B97F4A7C15;
  x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9;
  x = (x ^ (x >> 27)) * 0x94D049BB133111EB;
  return x ^ (x >> 31);
}

[[noreturn]] void fail(const char* what) {
  std::fprintf(stderr, "mt2203_search: %s\n", what);
  std::exit(1);
}

// ---------------------------------------------------------------------------------------------------------------------
// The search space: words a with bit 31 set, a = 2^31 + sum of i_k * column_k. The columns are random, so that the rows
// of the table differ in all bits: members whose words shared their upper bits would start alike from equal seeds.

std::array<uint32_t, kSpaceBits> make_columns() {
  std::array<uint32_t, kSpaceBits> columns{};
  std::array<uint32_t, kSpaceBits> reduced{};
  uint64_t counter = 0;
  for (int k = 0; k < kSpaceBits;) {
    const uint32_t column = static_cast<uint32_t>(mix(++counter)) & 0x7FFFFFFF;
    uint32_t rest = column;
    for (int j = 0; j < k; j++) rest = std::min(rest, rest ^ reduced[j]);
    if (rest == 0) continue;
    reduced[k] = rest;
    columns[k++] = column;
  }
  return columns;
}

uint32_t word_of(const std::array<uint32_t, kSpaceBits>& columns, uint32_t index) {
  uint32_t a = 0x80000000;
  for (int k = 0; k < kSpaceBits; k++) a ^= (index >> k & 1) != 0 ? columns[k] : 0;
  return a;
}

// ---------------------------------------------------------------------------------------------------------------------
// Characteristic polynomial in closed form. With X = t^69 + t^34 and Y = t^68 + t^33,
//   phi_a = X^27 Y^5 + sum_{i < 5} a_i X^27 Y^(4-i) + sum_{i >= 5} a_i X^(31-i).

// Calls term(exponent) for every term of X^i Y^j = t^(33 (i + j) + i) (t^35 + 1)^(i + j).
template <class Term> void power_terms(int i, int j, Term term) {
  const int power = i + j;
  for (int k = 0; k <= power; k++)
    if ((k & ~power) == 0) term(33 * power + i + 35 * k); // binomial(power, k) is odd
}

// The polynomial that bit i of a multiplies; i = 32 is the part without a.
template <class Term> void coefficient_terms(int i, Term term) {
  if (i == 32)
    power_terms(27, 5, term);
  else if (i < kLowBits)
    power_terms(27, 4 - i, term);
  else
    power_terms(31 - i, 0, term);
}

constexpr int kPolyWords = 35; // 64-bit words for 2203 bits and a spare
using Poly = std::array<uint64_t, kPolyWords>;

Poly characteristic(uint32_t a) {
  Poly phi{};
  auto toggle = [&](int e) { phi[e / 64] ^= uint64_t{1} << (e % 64); };
  coefficient_terms(32, toggle);
  for (int i = 0; i < 32; i++)
    if ((a >> i & 1) != 0) coefficient_terms(i, toggle);
  return phi;
}

// phi is irreducible if t^(2^2203) = t modulo phi: 2203 is prime, and the sieve has taken out all factors of degree 1.
// All terms but the leading one have degree 2135 or less, so one pass of phi clears a whole word.
__attribute__((target("pclmul"))) bool is_irreducible(uint32_t a) {
  constexpr int kTop = kDegree / 64, kShift = kDegree % 64; // 34, 27
  const Poly phi = characteristic(a);
  __m128i tail[(kPolyWords + 1) / 2];
  {
    std::array<uint64_t, kPolyWords + 1> low{};
    std::copy(phi.begin(), phi.end(), low.begin());
    low[kTop] = 0; // the leading term stands alone in its word
    if (phi[kTop] != uint64_t{1} << kShift) fail("unexpected form of the characteristic polynomial");
    std::memcpy(tail, low.data(), sizeof low);
  }
  alignas(64) uint64_t x[kPolyWords + 1] = {2};
  alignas(64) uint64_t square[2 * kPolyWords + 4];
  for (int step = 0; step < kDegree; step++) {
    for (int k = 0; k < kPolyWords; k++) {
      const __m128i v = _mm_cvtsi64_si128(static_cast<long long>(x[k]));
      _mm_storeu_si128(reinterpret_cast<__m128i*>(square + 2 * k), _mm_clmulepi64_si128(v, v, 0));
    }
    for (int k = 2 * kTop + 1; k >= kTop; k--) {
      // The bits from 64 k + kShift up: those of word k above the shift and the lower ones of word k + 1, which is
      // already reduced below kShift bits. They multiply phi shifted down by 64 (k - kTop).
      const uint64_t above = k == 2 * kTop + 1 ? 0 : square[k + 1] << (64 - kShift);
      const uint64_t factor = square[k] >> kShift | above;
      if (factor == 0) continue;
      square[k] &= (uint64_t{1} << kShift) - 1;
      if (k != 2 * kTop + 1) square[k + 1] = 0;
      uint64_t* at = square + (k - kTop);
      const __m128i f = _mm_cvtsi64_si128(static_cast<long long>(factor));
      // Even and odd words of the tail give products that lie at even and odd words: two interleaved sums.
      __m128i carry = _mm_setzero_si128();
      for (int j = 0; j < kPolyWords / 2; j++) {
        const __m128i even = _mm_clmulepi64_si128(tail[j], f, 0x00);
        const __m128i odd = _mm_clmulepi64_si128(tail[j], f, 0x01);
        __m128i sum = _mm_xor_si128(even, carry);
        sum = _mm_xor_si128(sum, _mm_slli_si128(odd, 8));
        carry = _mm_srli_si128(odd, 8);
        auto* to = reinterpret_cast<__m128i*>(at + 2 * j);
        _mm_storeu_si128(to, _mm_xor_si128(_mm_loadu_si128(to), sum));
      }
      auto* to = reinterpret_cast<__m128i*>(at + kPolyWords - 1);
      _mm_storeu_si128(to, _mm_xor_si128(_mm_loadu_si128(to), carry));
    }
    std::memcpy(x, square, kPolyWords * sizeof(uint64_t));
  }
  if (x[0] != 2) return false;
  return std::all_of(x + 1, x + kPolyWords, [](uint64_t word) { return word == 0; });
}

// ---------------------------------------------------------------------------------------------------------------------
// Sieve: "f divides phi_a" is an affine condition on the bits of the index; its solutions are struck out.

std::vector<uint32_t> irreducible_polynomials(int degree) {
  std::vector<bool> composite(size_t{1} << (degree + 1));
  std::vector<uint32_t> found;
  for (uint32_t f = 2; f < uint32_t{1} << (degree + 1); f++) {
    if (composite[f]) continue;
    found.push_back(f);
    const int df = std::bit_width(f) - 1;
    if (2 * df > degree) continue;
    // all multiples f * g, g in Gray code order
    uint64_t product = f;
    for (uint32_t g = 1; df + static_cast<int>(std::bit_width(g)) - 1 <= degree; g++) {
      if (g > 1) composite[product] = true;
      const uint32_t changed = (g ^ g >> 1) ^ ((g + 1) ^ (g + 1) >> 1);
      product ^= static_cast<uint64_t>(f) << (std::bit_width(changed) - 1);
    }
  }
  return found;
}

void strike(std::vector<bool>& struck, const std::array<uint32_t, kSpaceBits>& columns, uint32_t base,
            const std::vector<uint32_t>& factors) {
  for (const uint32_t f : factors) {
    const int d = std::bit_width(f) - 1;
    auto times = [&](uint32_t x, uint32_t y) {
      uint64_t r = 0;
      for (int i = 0; i < d; i++)
        if ((y >> i & 1) != 0) r ^= static_cast<uint64_t>(x) << i;
      for (int i = 2 * d - 2; i >= d; i--)
        if ((r >> i & 1) != 0) r ^= static_cast<uint64_t>(f) << (i - d);
      return static_cast<uint32_t>(r);
    };
    auto power_of_t = [&](int e) {
      uint32_t r = 1;
      for (int bit = 6; bit >= 0; bit--) {
        r = times(r, r);
        if ((e >> bit & 1) != 0) {
          r <<= 1;
          if ((r >> d & 1) != 0) r ^= f;
        }
      }
      return r;
    };
    const uint32_t x = d == 1 ? 0 : power_of_t(69) ^ power_of_t(34);
    const uint32_t y = d == 1 ? 0 : power_of_t(68) ^ power_of_t(33);
    // the 33 coefficients modulo f
    std::array<uint32_t, 33> q{};
    std::array<uint32_t, 28> px{};
    px[0] = 1;
    for (int k = 1; k <= 27; k++) px[k] = times(px[k - 1], x);
    for (int i = 5; i < 32; i++) q[i] = px[31 - i];
    q[4] = px[27];
    for (int i = 3; i >= 0; i--) q[i] = times(q[i + 1], y);
    q[32] = times(q[0], y);

    auto image = [&](uint32_t a) {
      uint32_t r = 0;
      for (int i = 0; i < 32; i++) r ^= (a >> i & 1) != 0 ? q[i] : 0;
      return r;
    };
    const uint32_t target = image(word_of(columns, base)) ^ q[32];
    // Eliminate over the images of the index bits: a pivot list with the index combinations that make them.
    std::array<uint32_t, kBlockBits> pivot{}, combination{}, kernel{};
    int rank = 0, nullity = 0;
    for (int k = 0; k < kBlockBits; k++) {
      uint32_t r = image(columns[k]), made_of = uint32_t{1} << k;
      for (int j = 0; j < rank; j++)
        if ((r ^ pivot[j]) < r) {
          r ^= pivot[j];
          made_of ^= combination[j];
        }
      if (r == 0) {
        kernel[nullity++] = made_of;
      } else {
        pivot[rank] = r;
        combination[rank++] = made_of;
      }
    }
    uint32_t rest = target, solution = 0;
    for (int j = 0; j < rank; j++)
      if ((rest ^ pivot[j]) < rest) {
        rest ^= pivot[j];
        solution ^= combination[j];
      }
    if (rest != 0) continue;
    for (uint32_t g = 0;; g++) {
      struck[solution] = true;
      if (g + 1 == uint32_t{1} << nullity) break;
      solution ^= kernel[std::countr_zero(g + 1)];
    }
  }
}

// ---------------------------------------------------------------------------------------------------------------------
// Equidistribution. A vector of the lattice is a state, advanced until its output in the leading v bits is not zero;
// `count` tells how far. One vector for each bit position is kept so that the lowest set bit of its output stands
// there.
//
// The words of a state are made a block ahead and live in aligned blocks, so that a vector which is added to again and
// again is stored and loaded in the same pieces.

constexpr int kBlock = 16;
using Block = uint32_t __attribute__((vector_size(4 * kBlock)));
using LooseBlock = uint32_t __attribute__((vector_size(4 * kBlock), aligned(4), may_alias));
Block load(const uint32_t* from) { return *reinterpret_cast<const LooseBlock*>(from); }

constexpr int kRoom = 256;
struct Vector {
  alignas(64) uint32_t x[kBlock + kRoom + 8 * kBlock];
  int at;  // place of the state's first word, from kBlock on: what stands before it is read, but has no meaning
  int end; // a multiple of kBlock; all words below are valid
  int count;
  uint32_t next;
};

void make_block(Vector& s, uint32_t a) {
  const uint32_t* w = s.x + s.end - kWords;
  const Block y = (load(w) & 0xFFFFFFE0) | (load(w + 1) & 0x1F);
  *reinterpret_cast<Block*>(s.x + s.end) = load(w + kLag) ^ y >> 1 ^ (-(y & 1) & a);
  s.end += kBlock;
}

void need_words(Vector& s, int words, uint32_t a) {
  if (s.at >= kRoom) {
    const int by = s.at / kBlock * kBlock - kBlock;
    std::memmove(s.x, s.x + by, sizeof(uint32_t) * (s.end - by));
    s.at -= by;
    s.end -= by;
  }
  while (s.end < s.at + words) make_block(s, a);
}

uint32_t temper(uint32_t y, uint32_t b, uint32_t c) {
  y ^= y >> 12;
  y ^= y << 7 & b;
  y ^= y << 15 & c;
  return y ^ y >> 18;
}

int dimension(const Row& row, int v) {
  static std::array<Vector, 33> store;
  std::array<Vector*, 32> basis{};
  if (v == 1) return kDegree; // any one bit of a full-period generator
  const uint32_t mask = ~uint32_t{0} << (32 - v);
  constexpr int kStart = kBlock, kFilled = (kStart + kWords + kBlock - 1) / kBlock * kBlock;
  for (int i = 0; i <= 32; i++) {
    std::memset(store[i].x, 0, kFilled * sizeof(uint32_t));
    store[i].at = kStart;
    store[i].end = kFilled;
    store[i].count = 0;
  }
  for (int i = 0; i < v; i++) {
    basis[i] = &store[i];
    store[i].next = uint32_t{1} << (31 - i);
  }
  Vector* extra = &store[32];
  for (int k = 0; k < kWords; k++) extra->x[kStart + k] = static_cast<uint32_t>(mix(k));
  extra->end = kStart + kWords; // the words up to the block's end must fit the recurrence
  for (; extra->end < kFilled; extra->end++) {
    uint32_t* w = extra->x + extra->end - kWords;
    const uint32_t y = (w[0] & 0xFFFFFFE0) | (w[1] & 0x1F);
    w[kWords] = w[kLag] ^ y >> 1 ^ (-(y & 1) & row.a);
  }
  auto advance = [&](Vector& s) {
    do {
      need_words(s, kWords + 1, row.a);
      s.next = temper(s.x[s.at + kWords], row.b, row.c) & mask;
      s.at++;
      s.count++;
    } while (s.next == 0);
  };
  advance(*extra);
  std::array<const uint32_t*, 64> pending;
  int n_pending = 0, sum = 0;
  auto add_pending = [&] {
    if (n_pending == 0) return;
    for (int at = extra->at / kBlock * kBlock; at < extra->end; at += kBlock) {
      Block total = load(extra->x + at);
      for (int k = 0; k < n_pending; k++) total ^= load(pending[k] + at);
      *reinterpret_cast<Block*>(extra->x + at) = total;
    }
    n_pending = 0;
  };
  need_words(*extra, kWords, row.a);
  for (;;) {
    Vector*& pivot = basis[31 - std::countr_zero(extra->next)];
    if (extra->count > pivot->count) {
      add_pending();
      sum += extra->count - pivot->count;
      std::swap(extra, pivot);
      if (sum >= kDegree) break; // the determinant is reached: this is a basis of the whole lattice
      need_words(*extra, kWords, row.a);
      extra->end = (extra->at + kWords + kBlock - 1) / kBlock * kBlock;
    }
    need_words(*pivot, extra->end - extra->at, row.a);
    pending[n_pending++] = pivot->x + pivot->at - extra->at;
    extra->next ^= pivot->next;
    if (extra->next == 0) {
      add_pending();
      advance(*extra);
    }
  }
  if (sum != kDegree) fail("lattice determinant missed");
  int least = basis[0]->count;
  for (int i = 1; i < v; i++) least = std::min(least, basis[i]->count);
  return least;
}

int total_defect(const Row& row) {
  int sum = 0;
  for (int v = 1; v <= 32; v++) sum += kDegree / v - dimension(row, v);
  return sum;
}

// Both searches set the masks of a row and return its total defect, or kWorstDefect + 1 if nothing good enough is
// found.
//
// Beam search over the output bits from the top: bit i depends on c_i and b_i and, where c_i = 1, on b_(i+15) (counted
// from the top).
int beam_search(Row& row) {
  struct Candidate {
    uint32_t b = 0, c = 0, decided = 0;
    int defect = 0;
    uint64_t tie = 0;
  };
  constexpr uint32_t kFreeB = 0xFFFFFF80, kFreeC = 0xFFFF8000;
  std::vector<Candidate> beam(1), wider;
  for (int i = 0; i < 32; i++) {
    const uint32_t bit = uint32_t{1} << (31 - i), partner = bit >> 15;
    wider.clear();
    for (const Candidate& from : beam)
      for (int choice = 0; choice < 8; choice++) {
        Candidate to = from;
        const bool c = (choice & 1) != 0, b = (choice & 2) != 0, b_partner = (choice & 4) != 0;
        if (c && (kFreeC & bit) == 0) continue;
        if (b && ((kFreeB & bit) == 0 || (from.decided & bit) != 0)) continue;
        if (b_partner && (!c || (kFreeB & partner) == 0 || (from.decided & partner) != 0)) continue;
        to.c |= c ? bit : 0;
        to.b |= (b ? bit : 0) | (b_partner ? partner : 0);
        to.decided |= bit | (c ? partner : 0);
        to.defect += kDegree / (i + 1) - dimension({row.a, to.b, to.c}, i + 1);
        to.tie = mix(mix(static_cast<uint64_t>(row.a) << 32 | to.b) ^ to.c);
        if (to.defect <= kWorstDefect) wider.push_back(to);
      }
    std::sort(wider.begin(), wider.end(), [](const Candidate& p, const Candidate& q) {
      return std::pair(p.defect, p.tie) < std::pair(q.defect, q.tie);
    });
    const size_t width = i < 17 ? 16 : 2; // from bit 17 on the masks hardly matter
    if (wider.size() > width) wider.resize(width);
    beam = wider;
    if (beam.empty() || (i == 15 && beam[0].defect > kHopeless)) return kWorstDefect + 1;
  }
  row.b = beam[0].b;
  row.c = beam[0].c;
  return beam[0].defect;
}

// Masks that the beam found for one word serve about one word in eight as well. A library of them is tried with little
// work: the dimensions that vary most come first, and a pair is dropped when the rest cannot make up for what is lost.
struct Library {
  std::vector<Row> rows;
  std::array<int, 33> least{}; // the smallest defect seen for each v

  void add(const Row& row) {
    for (int v = 2; v <= 32; v++) {
      const int defect = kDegree / v - dimension(row, v);
      least[v] = rows.empty() ? defect : std::min(least[v], defect);
    }
    rows.push_back(row);
  }

  int find(Row& row) const {
    int floor = 0;
    for (int v = 2; v <= 32; v++) floor += least[v];
    const size_t start = mix(row.a) % rows.size();
    for (size_t k = 0; k < rows.size(); k++) {
      const Row& from = rows[(start + k) % rows.size()];
      const Row trial{row.a, from.b, from.c};
      int bound = floor;
      for (int v = 16; v >= 2 && bound <= kWorstDefect; v--) bound += kDegree / v - dimension(trial, v) - least[v];
      for (int v = 17; v <= 32 && bound <= kWorstDefect; v++) bound += kDegree / v - dimension(trial, v) - least[v];
      if (bound <= kWorstDefect) { // all defects are counted by now
        row = trial;
        return bound;
      }
    }
    return kWorstDefect + 1;
  }
};

// ---------------------------------------------------------------------------------------------------------------------

void check_method() {
  const std::array<std::pair<Row, int>, 3> known{{{kFirst, 699}, {kSecond, 700}, {kLast, 713}}};
  for (const auto& [row, defect] : known) {
    if (!is_irreducible(row.a)) fail("a fixed row is not irreducible");
    if (total_defect(row) != defect) fail("a fixed row has another defect");
  }
  if (is_irreducible(kFirst.a ^ 0x100)) fail("a composite passes");
}

struct Progress {
  std::vector<Row> rows; // accepted, in order
  std::vector<int> defects;
  uint32_t next = 0; // first index not yet examined
};

Progress read_checkpoint(const char* path) {
  Progress progress;
  if (FILE* file = std::fopen(path, "r")) {
    unsigned index = 0;
    Row row{};
    int defect = 0;
    while (std::fscanf(file, "%u %x %x %x %d", &index, &row.a, &row.b, &row.c, &defect) == 5) {
      progress.next = index + 1;
      if (defect > kWorstDefect) continue;
      progress.rows.push_back(row);
      progress.defects.push_back(defect);
    }
    std::fclose(file);
  }
  return progress;
}

} // namespace

int main(int argc, char** argv) {
  if (argc != 2) fail("usage: mt2203_search CHECKPOINT > table");
  if (!__builtin_cpu_supports("pclmul")) fail("this program needs the carry-less multiplication instruction");
  check_method();
  const auto columns = make_columns();
  const auto factors = irreducible_polynomials(kSieveDegree);
  Progress progress = read_checkpoint(argv[1]);
  FILE* log = std::fopen(argv[1], "a");
  if (log == nullptr) fail("cannot write the checkpoint");
  Library library;
  auto consider = [&](const Row& row, int defect) {
    if (library.rows.size() < kLibrarySize && defect <= kLibraryDefect) library.add(row);
  };
  for (size_t k = 0; k < progress.rows.size(); k++) consider(progress.rows[k], progress.defects[k]);
  const size_t wanted = kRows - 3;
  std::vector<bool> struck;
  for (uint32_t index = progress.next; progress.rows.size() < wanted; index++) {
    if (index >> kSpaceBits != 0) fail("the search space is exhausted");
    if (struck.empty() || index % (uint32_t{1} << kBlockBits) == 0) {
      struck.assign(size_t{1} << kBlockBits, false);
      strike(struck, columns, index >> kBlockBits << kBlockBits, factors);
    }
    if (struck[index % (uint32_t{1} << kBlockBits)]) continue;
    Row row{word_of(columns, index), 0, 0};
    if (row.a == kFirst.a || row.a == kSecond.a || row.a == kLast.a || !is_irreducible(row.a)) continue;
    const int defect = library.rows.size() < kLibrarySize ? beam_search(row) : library.find(row);
    std::fprintf(log, "%u %08x %08x %08x %d\n", index, row.a, row.b, row.c, defect);
    std::fflush(log);
    if (defect > kWorstDefect) continue;
    progress.rows.push_back(row);
    consider(row, defect);
  }
  std::fclose(log);

  std::vector<Row> table{kFirst, kSecond};
  table.insert(table.end(), progress.rows.begin(), progress.rows.end());
  table.push_back(kLast);
  for (const Row& row : table) std::printf("{0x%08X, 0x%08X, 0x%08X},\n", row.a, row.b, row.c);
  return 0;
}
