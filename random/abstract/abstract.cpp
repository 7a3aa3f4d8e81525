// Abstract streams: numbers from a caller's circular buffer, which the caller's function renews.
#include "random/streams/stream.h"

using namespace tarn::random;

namespace {

template <class Value> using Update = int32_t (*)(tarn_stream*, int32_t*, Value*, int32_t*, int32_t*, int32_t*);

struct WordState {
  using Value = uint32_t;
  static constexpr int32_t kIdentifier = 0xA00000;
  int32_t n, idx, used; // used: how many numbers have been read and may be overwritten
  Value* buffer;
  Update<Value> update;
};

template <class Real, int32_t identifier> struct RealState {
  using Value = Real;
  static constexpr int32_t kIdentifier = identifier;
  int32_t n, idx, used;
  Real a, b; // the interval of the buffer's numbers
  Real* buffer;
  Update<Real> update;
};
using DoubleState = RealState<double, 0xB00000>;
using SingleState = RealState<float, 0xC00000>;
static_assert(sizeof(WordState) == 48 - 16 && sizeof(DoubleState) == 64 - 16 && sizeof(SingleState) == 56 - 16);
static_assert(__builtin_offsetof(WordState, buffer) == 16 && __builtin_offsetof(DoubleState, a) == 16 &&
              __builtin_offsetof(DoubleState, buffer) == 32 && __builtin_offsetof(SingleState, a) == 12 &&
              __builtin_offsetof(SingleState, buffer) == 24);

template <class State> int32_t make(tarn_stream** out, const State& state) {
  int32_t row, member;
  const tarn_brng_properties* table = __kestGetBrngBaseOffset(State::kIdentifier, &row, &member);
  int32_t status = __kestIsBrngValid(table, row, member);
  if (status == TARN_RANDOM_OK) status = __kestAllocateStream(out, table, State::kIdentifier, row, member);
  if (status != TARN_RANDOM_OK) return status;
  return table[row].InitStream(kSeed, *out, 1, &state);
}

// The argument block of method 0 is a state. It is copied field by field: its padding is whatever stood there, and the
// whole record goes into images.
template <class State> int32_t init(int32_t method, tarn_stream* stream, const void* params) {
  if (method != kSeed) return no_such_method(method);
  const State& from = *static_cast<const State*>(params);
  State& to = state_of<State>(stream);
  to.n = from.n;
  to.idx = from.idx;
  to.used = from.used;
  if constexpr (!__is_same(State, WordState)) {
    to.a = from.a;
    to.b = from.b;
  }
  to.buffer = from.buffer;
  to.update = from.update;
  return TARN_RANDOM_OK;
}

// map(k, value) takes the k-th value of the call. Place and count are stored at the end of a call that succeeds.
template <class State, class Map> int32_t generate(tarn_stream* stream, int32_t n, Map map) {
  State& state = state_of<State>(stream);
  if (!state.buffer) return TARN_RANDOM_NULL_POINTER;
  int32_t length = state.n, idx = state.idx, used = state.used, done = 0;
  auto take = [&](int32_t count) {
    for (int32_t k = 0; k < count; k++) {
      map(done++, state.buffer[idx]);
      idx = idx + 1 == length ? 0 : idx + 1;
    }
    used += count;
  };
  const int32_t available = length - used;
  int32_t renew_at = static_cast<int32_t>((int64_t{idx} + available) % length);
  take(n < available ? (n > 0 ? n : 0) : available);
  while (done < n) {
    int32_t remaining = n - done, least = used < remaining ? used : remaining, most = used, at = renew_at;
    const int32_t renewed = state.update(stream, &length, state.buffer, &least, &most, &at);
    length = state.n; // whatever the caller's function did to its copy
    if (renewed < 0 || renewed > used) return TARN_RANDOM_UPDATE_COUNT;
    if (renewed == 0) return TARN_RANDOM_UPDATE_NONE;
    used -= renewed;
    renew_at = static_cast<int32_t>((int64_t{renew_at} + renewed) % length);
    take(renewed < remaining ? renewed : remaining);
  }
  state.idx = idx;
  state.used = used;
  return TARN_RANDOM_OK;
}

template <class State>
int32_t generate_real(tarn_stream* stream, int32_t n, typename State::Value* r, typename State::Value lower,
                      typename State::Value upper) {
  using Real = typename State::Value;
  typedef Real Loose __attribute__((aligned(1), may_alias));
  Loose* to = reinterpret_cast<Loose*>(r);
  const State& state = state_of<State>(stream);
  const Real a = state.a, scale = (upper - lower) / (state.b - state.a);
  return generate<State>(stream, n, [=](int32_t k, Real x) { to[k] = (x - a) * scale + lower; });
}

}

TARN_EXPORT int32_t __kestiNewAbstractStream(tarn_stream** out, int32_t n, uint32_t* buffer, tarn_i_update update) {
  if (n == 0 || !buffer || !update) return TARN_RANDOM_BAD_PARAMETER;
  return make(out, WordState{n, 0, n, buffer, update});
}

TARN_EXPORT int32_t __kestdNewAbstractStream(tarn_stream** out, int32_t n, double* buffer, double a, double b,
                                             tarn_d_update update) {
  if (n == 0 || !buffer || !update || !(a < b)) return TARN_RANDOM_BAD_PARAMETER;
  return make(out, DoubleState{n, 0, n, a, b, buffer, update});
}

TARN_EXPORT int32_t __kestsNewAbstractStream(tarn_stream** out, int32_t n, float* buffer, float a, float b,
                                             tarn_s_update update) {
  if (n == 0 || !buffer || !update || !(a < b)) return TARN_RANDOM_BAD_PARAMETER;
  return make(out, SingleState{n, 0, n, a, b, buffer, update});
}

TARN_EXPORT int32_t __kestBRngiAbstractInitStream(int32_t method, tarn_stream* stream, int32_t, const void* params) {
  return init<WordState>(method, stream, params);
}
TARN_EXPORT int32_t __kestBRngdAbstractInitStream(int32_t method, tarn_stream* stream, int32_t, const void* params) {
  return init<DoubleState>(method, stream, params);
}
TARN_EXPORT int32_t __kestBRngsAbstractInitStream(int32_t method, tarn_stream* stream, int32_t, const void* params) {
  return init<SingleState>(method, stream, params);
}

TARN_EXPORT int32_t __kestiBRngiAbstract(tarn_stream* stream, int32_t n, void* r) {
  typedef uint32_t Loose __attribute__((aligned(1), may_alias));
  Loose* to = static_cast<Loose*>(r);
  return generate<WordState>(stream, n, [to](int32_t k, uint32_t w) { to[k] = w; });
}
TARN_EXPORT int32_t __kestdBRngdAbstract(tarn_stream* stream, int32_t n, double* r, double a, double b) {
  return generate_real<DoubleState>(stream, n, r, a, b);
}
TARN_EXPORT int32_t __kestsBRngsAbstract(tarn_stream* stream, int32_t n, float* r, float a, float b) {
  return generate_real<SingleState>(stream, n, r, a, b);
}

// Each row has the output of its own type only.
TARN_EXPORT int32_t __kestdBRngiAbstract(tarn_stream*, int32_t, double*, double, double) {
  return TARN_RANDOM_WRONG_ABSTRACT_FORM;
}
TARN_EXPORT int32_t __kestsBRngiAbstract(tarn_stream*, int32_t, float*, float, float) {
  return TARN_RANDOM_WRONG_ABSTRACT_FORM;
}
TARN_EXPORT int32_t __kestiBRngdAbstract(tarn_stream*, int32_t, void*) { return TARN_RANDOM_WRONG_ABSTRACT_FORM; }
TARN_EXPORT int32_t __kestsBRngdAbstract(tarn_stream*, int32_t, float*, float, float) {
  return TARN_RANDOM_WRONG_ABSTRACT_FORM;
}
TARN_EXPORT int32_t __kestiBRngsAbstract(tarn_stream*, int32_t, void*) { return TARN_RANDOM_WRONG_ABSTRACT_FORM; }
TARN_EXPORT int32_t __kestdBRngsAbstract(tarn_stream*, int32_t, double*, double, double) {
  return TARN_RANDOM_WRONG_ABSTRACT_FORM;
}
