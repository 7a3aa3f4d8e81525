// Jumping ahead in a generator that is linear over GF(2): the state after n steps is g(T) s, with g = x^n modulo a
// polynomial that annihilates the transition T. Horner's form, and a sliding window of 8 bits after H. Haramoto,
// M. Matsumoto, T. Nishimura, F. Panneton, P. L'Ecuyer, INFORMS J. Comput. 20 (2008).
#include "random/streams/stream.h"

#include <string.h>

using namespace tarn::random;

namespace {

bool bit(const uint64_t* array, int64_t k) { return array[k / 64] >> (k % 64) & 1; }
void flip(uint64_t* array, int64_t k) { array[k / 64] ^= uint64_t{1} << (k % 64); }

int64_t top_bit(const uint64_t* array, int64_t from) {
  while (from > 0 && !bit(array, from)) from--;
  return from;
}

// The 32 bits of half, spread to the even places of 64.
uint64_t spread(uint32_t half) {
  uint64_t v = half;
  v = (v | v << 16) & 0x0000FFFF0000FFFF;
  v = (v | v << 8) & 0x00FF00FF00FF00FF;
  v = (v | v << 4) & 0x0F0F0F0F0F0F0F0F;
  v = (v | v << 2) & 0x3333333333333333;
  return (v | v << 1) & 0x5555555555555555;
}

// Arithmetic modulo a polynomial given by its exponents. Polynomials of few terms are reduced term by term, those of
// many by multiples from a table, which stands in the block.
struct Modulus {
  static constexpr int kBytesPerWord = 200;

  Modulus(void* block, int32_t degree, int32_t terms, const uint32_t* exponents)
      : degree_(degree), terms_(terms), exponents_(exponents), words_(degree / 64 + 1), dense_(terms > kManyTerms),
        table_(static_cast<uint64_t*>(block)), even_(table_ + 16 * row_words()), odd_(even_ + 2 * row_words()) {
    if (dense_) fill_table();
  }

  void square(uint64_t* g) const {
    for (int64_t k = (degree_ - 1) / 64; k >= 0; k--) {
      const uint64_t word = g[k];
      if (word >> 32 != 0 || 2 * k + 1 < 2 * (degree_ - 1) / 64)
        g[2 * k + 1] = spread(static_cast<uint32_t>(word >> 32));
      g[2 * k] = spread(static_cast<uint32_t>(word));
    }
    if (dense_)
      reduce_by_table(g);
    else
      reduce_by_terms(g);
  }

  void times_x(uint64_t* g) const {
    for (int64_t k = words_ - 1; k > 0; k--) g[k] = g[k] << 1 | g[k - 1] >> 63;
    g[0] <<= 1;
    if (bit(g, degree_))
      for (int32_t t = 0; t < terms_; t++) flip(g, exponents_[t]);
  }

  static constexpr int32_t kManyTerms = 1024;
  static constexpr int kChunkWords = 8;

  int64_t row_words() const { return words_ + 1; }
  int64_t top() const { return 2 * (int64_t{degree_} - 1); } // of a square

  // Clears the bits from the top down to degree, a chunk at a time: a chunk no wider than the gap below the leading
  // term is known as a whole before the first term is added.
  void reduce_by_terms(uint64_t* g) const {
    const int64_t gap = terms_ > 1 ? degree_ - exponents_[terms_ - 2] : degree_;
    const int64_t width = gap < 64 * kChunkWords ? gap : 64 * kChunkWords;
    for (int64_t end = top() + 1; end > degree_;) {
      const int64_t begin = end - width > degree_ ? end - width : degree_;
      uint64_t chunk[kChunkWords];
      const int64_t count = (end - begin + 63) / 64;
      uint64_t any = 0;
      for (int64_t k = 0; k < count; k++) any |= chunk[k] = take(g, begin + 64 * k, end);
      if (any != 0)
        for (int32_t t = 0; t < terms_; t++) add(g, chunk, count, begin - degree_ + exponents_[t]);
      end = begin;
    }
  }

  // The bits from `from` up, at most 64 and none from `end` on.
  static uint64_t take(const uint64_t* g, int64_t from, int64_t end) {
    const int shift = static_cast<int>(from % 64);
    uint64_t v = g[from / 64] >> shift;
    if (shift != 0 && from / 64 < (end - 1) / 64) v |= g[from / 64 + 1] << (64 - shift);
    return end - from < 64 ? v & ((uint64_t{1} << (end - from)) - 1) : v;
  }

  static void add(uint64_t* g, const uint64_t* chunk, int64_t count, int64_t at) {
    uint64_t* to = g + at / 64;
    const int shift = static_cast<int>(at % 64);
    uint64_t carry = 0;
    for (int64_t k = 0; k < count; k++) {
      const uint64_t low = chunk[k] << shift | carry;
      if (low != 0) to[k] ^= low;
      carry = shift != 0 ? chunk[k] >> (64 - shift) : 0;
    }
    if (carry != 0) to[count] ^= carry;
  }

  uint64_t* row(int64_t k) const { return table_ + k * row_words(); }

  // Row h is the multiple of the polynomial whose bits degree .. degree + 3 are h.
  void fill_table() const {
    memset(table_, 0, sizeof(uint64_t) * static_cast<size_t>(16 * row_words()));
    for (int j = 0; j < 4; j++) {
      uint64_t* power = row(int64_t{1} << j);
      for (int32_t t = 0; t < terms_; t++) flip(power, exponents_[t] + static_cast<uint32_t>(j));
      for (int i = 0; i < j; i++)
        if (bit(power, degree_ + i)) add_bytes(power, row(int64_t{1} << i));
    }
    for (int64_t h = 1; h < 16; h++) {
      const int64_t lowest = h & -h;
      if (h == lowest) continue;
      memcpy(row(h), row(h ^ lowest), sizeof(uint64_t) * static_cast<size_t>(row_words()));
      add_bytes(row(h), row(lowest));
    }
  }

  void add_bytes(void* to, const uint64_t* from) const {
    typedef uint64_t Loose __attribute__((aligned(1), may_alias));
    Loose* sum = static_cast<Loose*>(to); // auto would drop the attributes
    for (int64_t k = 0; k < row_words(); k++) sum[k] ^= from[k];
  }

  // Four bits at a time. Multiples by even powers of x^4 lie at byte offsets of one sum; those by odd powers go to a
  // second sum, which counts shifted up by 4.
  void reduce_by_table(uint64_t* g) const {
    const size_t sum_bytes = sizeof(uint64_t) * static_cast<size_t>(2 * row_words());
    const size_t square_bytes = sizeof(uint64_t) * static_cast<size_t>(top() / 64 + 1);
    memset(even_, 0, 2 * sum_bytes);
    memcpy(even_, g, square_bytes);
    const int64_t last = 2 * row_words() * 64;
    for (int64_t i = (top() - degree_) / 4; i >= 0; i--) {
      const int64_t at = degree_ + 4 * i;
      const uint64_t h = (take(even_, at, last) ^ take(odd_, at - 4, last)) & 15;
      if (h != 0) add_bytes(reinterpret_cast<char*>(i % 2 == 0 ? even_ : odd_) + i / 2, row(static_cast<int64_t>(h)));
    }
    memset(g, 0, square_bytes);
    for (int64_t k = 0; k < words_; k++) g[k] = even_[k] ^ odd_[k] << 4 ^ (k > 0 ? odd_[k - 1] >> 60 : 0);
  }

  int32_t degree_, terms_;
  const uint32_t* exponents_;
  int64_t words_;
  bool dense_;
  uint64_t* table_;
  uint64_t *even_, *odd_;
};

}

TARN_EXPORT int32_t __kestPolyRem(uint64_t n, int32_t degree, int32_t terms, const uint32_t* exponents, int32_t words,
                                  uint64_t* out) {
  memset(out, 0, sizeof(uint64_t) * static_cast<size_t>(words));
  if (n < static_cast<uint64_t>(degree)) {
    flip(out, static_cast<int64_t>(n));
    return TARN_RANDOM_OK;
  }
  void* block = tarn_serv_allocate(int64_t{Modulus::kBytesPerWord} * ((degree + 64) / 64), kRecordAlignment);
  if (!block) return TARN_RANDOM_NO_MEMORY;
  const Modulus modulus(block, degree, terms, exponents);
  out[0] = 2; // x
  for (int k = 62 - __builtin_clzll(n); k >= 0; k--) {
    modulus.square(out);
    if (n >> k & 1) modulus.times_x(out);
  }
  tarn_serv_deallocate(block);
  return TARN_RANDOM_OK;
}

namespace {

struct Jump {
  void (*zero_state)(void*);
  void (*add_state)(void*, const void*);
  void (*copy_state1)(void*, const void*);
  void (*update_s)(void*);
  void (*copy_state2)(void*, const void*, int32_t);
};

struct Block {
  void* data;
  explicit Block(int64_t size) : data(tarn_serv_allocate(size, kRecordAlignment)) {}
  ~Block() { tarn_serv_deallocate(data); }
  Block(const Block&) = delete;
  Block& operator=(const Block&) = delete;
};

void horner(const Jump& jump, const void* state, const uint64_t* g, int64_t top, void* work) {
  if (top == 0) { // g = 1: the loop below starts from x
    jump.copy_state1(work, state);
    return;
  }
  jump.copy_state1(work, state);
  jump.update_s(work);
  for (int64_t k = top - 1; k >= 1; k--) {
    if (bit(g, k)) jump.add_state(work, state);
    jump.update_s(work);
  }
  if (bit(g, 0)) jump.add_state(work, state);
}

constexpr int kWindow = 8, kWindowStates = 128;

struct Windows {
  char* states;
  int64_t size;
  void* at(int e) const { return states + size * e; }
};

// State e becomes (x^7 + sum of x^j for the bits j of e) s, in the order of a Gray code.
void fill_windows(const Jump& jump, const void* state, const Windows& windows, void* scratch) {
  auto advanced = [&](void* work, int steps) {
    jump.copy_state1(work, state);
    for (int k = 0; k < steps; k++) jump.update_s(work);
  };
  int gray[kWindowStates] = {};
  for (int k = 0, filled = 1; k < kWindow - 1; k++)
    for (int i = filled - 1; i >= 0; i--) gray[filled++] = gray[i] ^ (64 >> k);
  advanced(windows.at(0), kWindow - 1);
  for (int i = 1; i < kWindowStates; i++) {
    advanced(scratch, __builtin_ctz(static_cast<unsigned>(gray[i] ^ gray[i - 1])));
    jump.copy_state1(windows.at(gray[i]), windows.at(gray[i - 1]));
    jump.add_state(windows.at(gray[i]), scratch);
  }
}

void sliding_window(const Jump& jump, const void* state, const uint64_t* g, int64_t top, const Windows& windows,
                    void* sum) {
  jump.zero_state(sum);
  int64_t i = top;
  while (i >= kWindow - 1) {
    if (!bit(g, i)) {
      jump.update_s(sum);
      i--;
      continue;
    }
    for (int k = 0; k < kWindow; k++) jump.update_s(sum);
    int e = 0;
    for (int k = 1; k < kWindow; k++) e = e << 1 | bit(g, i - k);
    jump.add_state(sum, windows.at(e));
    i -= kWindow;
  }
  for (; i >= 0; i--) {
    jump.update_s(sum);
    if (bit(g, i)) jump.add_state(sum, state);
  }
}

}

#define JUMP_PARAMETERS                                                                                                \
  void *state, void (*zero_state)(void*), void (*add_state)(void*, const void*),                                       \
      void (*copy_state1)(void*, const void*), void (*update_s)(void*),                                                \
      void (*copy_state2)(void*, const void*, int32_t), int32_t (*process_idx)(void*, uint64_t*, int32_t*),            \
      uint64_t nskip, int32_t ring_words, int32_t degree, int32_t work_state_size, int32_t terms,                      \
      const uint32_t *polynomial

TARN_EXPORT int32_t __kest_SkipAheadHorner(JUMP_PARAMETERS) {
  int32_t remainder = 0;
  if (nskip == 0 || process_idx(state, &nskip, &remainder) == 0) return TARN_RANDOM_OK;
  const Block g(int64_t{8} * ring_words), work(work_state_size);
  if (!g.data || !work.data) return TARN_RANDOM_NO_MEMORY;
  auto* rest = static_cast<uint64_t*>(g.data);
  const int32_t status = __kestPolyRem(nskip, degree, terms, polynomial, ring_words, rest);
  if (status != TARN_RANDOM_OK) return status;
  const Jump jump = {zero_state, add_state, copy_state1, update_s, copy_state2};
  horner(jump, state, rest, top_bit(rest, degree - 1), work.data);
  copy_state2(state, work.data, remainder);
  return TARN_RANDOM_OK;
}

TARN_EXPORT int32_t __kest_SkipAheadSWin(JUMP_PARAMETERS) {
  int32_t remainder = 0;
  if (nskip == 0 || process_idx(state, &nskip, &remainder) == 0) return TARN_RANDOM_OK;
  const Block g(int64_t{8} * ring_words), scratch(work_state_size), sum(work_state_size),
      table(int64_t{kWindowStates} * work_state_size);
  if (!g.data || !scratch.data || !sum.data || !table.data) return TARN_RANDOM_NO_MEMORY;
  auto* rest = static_cast<uint64_t*>(g.data);
  const int32_t status = __kestPolyRem(nskip, degree, terms, polynomial, ring_words, rest);
  if (status != TARN_RANDOM_OK) return status;
  const Jump jump = {zero_state, add_state, copy_state1, update_s, copy_state2};
  const Windows windows = {static_cast<char*>(table.data), work_state_size};
  fill_windows(jump, state, windows, scratch.data);
  sliding_window(jump, state, rest, top_bit(rest, degree - 1), windows, sum.data);
  copy_state2(state, sum.data, remainder);
  return TARN_RANDOM_OK;
}
