// What a kernel does with an element that went wrong: status, callback, errno, standard error, trap.
#include <errno.h>
#include <string.h>

#include "service/service.h"
#include "vector/frame/mode.h"

namespace tarn::vector {

namespace {

enum Status : int32_t {
  LumeStatusBadMemory = -2,
  LumeStatusBadArgument = -1,
  LumeStatusOk = 0,
  LumeStatusDomain = 1,
  LumeStatusSingularity = 2,
  LumeStatusOverflow = 3,
  LumeStatusUnderflow = 4,
};

int32_t errno_of(int32_t code) {
  switch (code) {
  case LumeStatusBadMemory: return EACCES;
  case LumeStatusBadArgument: return EINVAL;
  case LumeStatusOk: return 0;
  case LumeStatusDomain: return EDOM;
  case LumeStatusSingularity:
  case LumeStatusOverflow:
  case LumeStatusUnderflow: return ERANGE;
  default: return EFAULT;
  }
}

int32_t message_of(int32_t code) {
  switch (code) {
  case LumeStatusBadArgument: return 0x2EC;
  case LumeStatusBadMemory: return 0x2ED;
  case LumeStatusDomain: return 0x2EE;
  case LumeStatusSingularity: return 0x2EF;
  case LumeStatusOverflow: return 0x2F0;
  case LumeStatusUnderflow: return 0x2F1;
  default: return 0x2F2;
  }
}

// A refused argument or pointer: no element stands behind the report.
bool has_element(int32_t code) { return code != LumeStatusBadArgument && code != LumeStatusBadMemory; }

// How an element type fills the context and takes results back.
void put(double& re, double&, double v) { re = v; }
void put(double& re, double&, float v) { re = v; }
void put(double& re, double& im, tarn_c64 v) { re = v.re, im = v.im; }
void put(double& re, double& im, tarn_c32 v) { re = v.re, im = v.im; }
void take(double& to, double re, double) { to = re; }
void take(float& to, double re, double) { to = static_cast<float>(re); }
void take(tarn_c64& to, double re, double im) { to = {re, im}; }
void take(tarn_c32& to, double re, double im) { to = {static_cast<float>(re), static_cast<float>(im)}; }

// Elements stand at any byte address.
template <class T> T element(const T* array, int32_t index) {
  T v;
  memcpy(&v, array + index, sizeof v);
  return v;
}
template <class T> void put_back(T* array, int32_t index, double re, double im) {
  T v;
  take(v, re, im);
  memcpy(array + index, &v, sizeof v);
}

bool same_bits(double x, double y) { return __builtin_bit_cast(uint64_t, x) == __builtin_bit_cast(uint64_t, y); }

bool results_differ(const ErrorContext& x, const ErrorContext& y) {
  return !same_bits(x.res1, y.res1) || !same_bits(x.res2, y.res2) || !same_bits(x.res1Im, y.res1Im) ||
         !same_bits(x.res2Im, y.res2Im);
}

bool counts_as_one(double first, double second) { return second == 0.0 || same_bits(first, second); }

// Messages with the values; the numbers of a row follow each other.
void print_element(const ErrorContext& c) {
  const bool one_argument = counts_as_one(c.arg1, c.arg2), one_result = counts_as_one(c.res1, c.res2);
  int32_t message = one_argument ? (one_result ? 0x2F3 : 0x2F5) : (one_result ? 0x2F8 : 0x2FB);
  tarn_serv_print(1, message++, 2, c.index, c.arg1);
  if (!one_argument) tarn_serv_print(1, message++, 2, c.index, c.arg2);
  tarn_serv_print(1, message++, 2, c.index, c.res1);
  if (!one_result) tarn_serv_print(1, message, 2, c.index, c.res2);
}

void print_report(const ErrorContext& c, const char* name) {
  if (c.code == LumeStatusOk) return;
  if (c.code == LumeStatusBadArgument)
    tarn_serv_print(1, message_of(c.code), 2, name, c.index);
  else
    tarn_serv_print(1, message_of(c.code), 1, name);
  if (has_element(c.code)) print_element(c);
}

// Delivers the exception of the code through the x87 unit: with the bits of the mode's trap field unmasked a loaded
// flag traps at the next x87 instruction. The flag stays raised, and all exceptions end masked.
void raise_x87(int32_t code) {
  struct Environment {
    uint16_t control, unused1, status, unused2;
    uint32_t rest[5];
  } kept, loaded;
  static const uint16_t flag_of_code[] = {0, 0x01, 0x04, 0x08, 0x10};
  static const uint16_t unmask_of_trap[] = {0x01, 0x04, 0x08, 0x10};
  const uint32_t mode = get_mode();
  uint16_t unmask = 0;
  for (int i = 0; i < 4; ++i)
    if (mode >> (24 + i) & 1) unmask = static_cast<uint16_t>(unmask | unmask_of_trap[i]);
  const uint16_t flag = code >= 1 && code <= 4 ? flag_of_code[code] : uint16_t{0};

  asm volatile("fnstenv %0" : "=m"(kept)::"memory"); // masks all exceptions as it stores
  loaded = kept;
  loaded.control = static_cast<uint16_t>(loaded.control & ~unmask);
  loaded.status = static_cast<uint16_t>((loaded.status & ~0x3Fu) | flag);
  asm volatile("fldenv %0\n\tfwait" ::"m"(loaded) : "memory");

  kept.control |= 0x3F;
  kept.status = static_cast<uint16_t>(kept.status | flag);
  asm volatile("fldenv %0" ::"m"(kept) : "memory");
}

void run_routes(const ErrorContext& context, const char* name) {
  const uint32_t mode = get_mode(); // once more: the callback may have changed it
  if (mode & route_errno) errno = errno_of(context.code);
  if (mode & route_stderr) print_report(context, name);
  if (mode & route_except) raise_x87(context.code);
}

template <class T>
void report(int32_t code, int32_t index, const T* arg1, const T* arg2, T* res1, T* res2, const char* name) {
  const uint32_t mode = get_mode();
  const uint32_t routes = mode & error_field;
  if (routes == route_noerr) return;
  set_status(code);
  if (routes == route_ignore) return;

  ErrorContext context{};
  context.code = code;
  context.index = index;
  if (const void* start = get_input_start()) {
    const uint64_t bytes = reinterpret_cast<uint64_t>(arg1) - reinterpret_cast<uint64_t>(start);
    context.index = static_cast<int32_t>(static_cast<uint32_t>(index) + static_cast<uint32_t>(bytes / sizeof(T)));
  }
  constexpr int32_t longest_name = 47;
  int32_t length = 0;
  while (length < longest_name && name[length]) ++length;
  memcpy(context.funcName, name, static_cast<size_t>(length));
  context.funcName[length] = '\0';
  context.funcNameLen = length;
  if (has_element(code)) {
    put(context.arg1, context.arg1Im, element(arg1, index));
    put(context.arg2, context.arg2Im, element(arg2, index));
    put(context.res1, context.res1Im, element(res1, index));
    put(context.res2, context.res2Im, element(res2, index));
  }

  const ErrorContext told = context;
  if (mode & route_callback)
    if (const ErrorCallback callback = get_callback())
      if (callback(&context) != 0) return;
  if (mode & (route_ignore | route_errno | route_stderr | route_except | route_noerr)) run_routes(context, name);
  // Results that the callback left alone stay untouched in memory: a strided kernel's number names another element,
  // which a second thread may own, and a float would not survive the way through double as a signaling NaN.
  if (has_element(code) && results_differ(told, context)) { // with one array for both results the first one wins
    put_back(res2, index, context.res2, context.res2Im);
    put_back(res1, index, context.res1, context.res1Im);
  }
}

}

}

#define TARN_ERROR_ROUTINE(t, T)                                                                                       \
  TARN_EXPORT void tarn_lume_kernel_##t##Error(int32_t code, int32_t index, const T* arg1, const T* arg2, T* res1,     \
                                               T* res2, const char* name) {                                            \
    tarn::vector::report(code, index, arg1, arg2, res1, res2, name);                                                   \
  }
TARN_ERROR_ROUTINE(s, float)
TARN_ERROR_ROUTINE(d, double)
TARN_ERROR_ROUTINE(c, tarn_c32)
TARN_ERROR_ROUTINE(z, tarn_c64)
