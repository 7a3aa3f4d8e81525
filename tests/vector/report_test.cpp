// The four error routines and all their routes.
#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <csetjmp>
#include <csignal>
#include <cstddef>
#include <cstring>
#include <limits>
#include <pthread.h>
#include <string>
#include <thread>
#include <vector>

#include "support/failing_allocator.h"
#include "tarn/vector.h"

namespace {

static_assert(sizeof(ErrorContext) == 144 && offsetof(ErrorContext, code) == 0 && offsetof(ErrorContext, index) == 4 &&
              offsetof(ErrorContext, arg1) == 8 && offsetof(ErrorContext, arg2) == 16 &&
              offsetof(ErrorContext, res1) == 24 && offsetof(ErrorContext, res2) == 32 &&
              offsetof(ErrorContext, funcName) == 40 && offsetof(ErrorContext, funcNameLen) == 104 &&
              offsetof(ErrorContext, reserved) == 108 && offsetof(ErrorContext, arg1Im) == 112 &&
              offsetof(ErrorContext, arg2Im) == 120 && offsetof(ErrorContext, res1Im) == 128 &&
              offsetof(ErrorContext, res2Im) == 136);

// One routine of the four, with elements made from two doubles.
struct S {
  using T = float;
  static constexpr bool complex = false;
  static T make(double re, double) { return static_cast<T>(re); }
  static double re(T v) { return v; }
  static double im(T) { return 0; }
  static constexpr auto routine = tarn_lume_kernel_sError;
};
struct D {
  using T = double;
  static constexpr bool complex = false;
  static T make(double re, double) { return re; }
  static double re(T v) { return v; }
  static double im(T) { return 0; }
  static constexpr auto routine = tarn_lume_kernel_dError;
};
struct C {
  using T = tarn_c32;
  static constexpr bool complex = true;
  static T make(double re, double im) { return {static_cast<float>(re), static_cast<float>(im)}; }
  static double re(T v) { return v.re; }
  static double im(T v) { return v.im; }
  static constexpr auto routine = tarn_lume_kernel_cError;
};
struct Z {
  using T = tarn_c64;
  static constexpr bool complex = true;
  static T make(double re, double im) { return {re, im}; }
  static double re(T v) { return v.re; }
  static double im(T v) { return v.im; }
  static constexpr auto routine = tarn_lume_kernel_zError;
};

thread_local std::vector<ErrorContext> seen;
thread_local int32_t answer = 0;
thread_local void (*change)(ErrorContext*) = nullptr;
int32_t callback(ErrorContext* context) {
  seen.push_back(*context);
  if (change) change(context);
  return answer;
}

template <class R> class Report : public testing::Test {
protected:
  using T = typename R::T;
  T a[4] = {R::make(1, -1), R::make(2, -2), R::make(3, -3), R::make(4, -4)};
  T b[4] = {R::make(11, -11), R::make(12, -12), R::make(13, -13), R::make(14, -14)};
  T r[4] = {R::make(21, -21), R::make(22, -22), R::make(23, -23), R::make(24, -24)};
  T q[4] = {R::make(31, -31), R::make(32, -32), R::make(33, -33), R::make(34, -34)};

  void SetUp() override {
    kept_ = __lumeSetMode(0x200);
    __lumeClearErrStatus();
    seen.clear();
    answer = 0;
    change = nullptr;
    errno = 0;
  }
  void TearDown() override {
    __lumeClearErrorCallBack();
    __lumeSetInterfInputVectorPointer(nullptr);
    __lumeSetMode(kept_);
    __lumeClearErrStatus();
  }
  void report(int32_t code, int32_t index = 2) { R::routine(code, index, a, b, r, q, "vxName"); }
  std::string report_on_stderr(int32_t code, T arg2, T res2) {
    b[2] = arg2;
    q[2] = res2;
    testing::internal::CaptureStderr();
    report(code);
    return testing::internal::GetCapturedStderr();
  }

private:
  uint32_t kept_ = 0;
};
using Routines = testing::Types<S, D, C, Z>;
TYPED_TEST_SUITE(Report, Routines);

TYPED_TEST(Report, ContextHoldsTheElement) {
  __lumeSetErrorCallBack(callback);
  this->report(1);
  ASSERT_EQ(seen.size(), 1u);
  const ErrorContext& c = seen[0];
  EXPECT_EQ(c.code, 1);
  EXPECT_EQ(c.index, 2);
  EXPECT_EQ(c.arg1, 3);
  EXPECT_EQ(c.arg2, 13);
  EXPECT_EQ(c.res1, 23);
  EXPECT_EQ(c.res2, 33);
  EXPECT_STREQ(c.funcName, "vxName");
  EXPECT_EQ(c.funcNameLen, 6);
  if (TypeParam::complex) {
    EXPECT_EQ(c.arg1Im, -3);
    EXPECT_EQ(c.arg2Im, -13);
    EXPECT_EQ(c.res1Im, -23);
    EXPECT_EQ(c.res2Im, -33);
  }
}

TYPED_TEST(Report, StatusKeepsTheLast) {
  for (int32_t code : {1, 2, 3, 4, 7, -1, -2}) {
    this->report(code);
    EXPECT_EQ(__lumeGetErrStatus(), code);
  }
}

TYPED_TEST(Report, NoerrAloneDoesNothing) {
  __lumeSetErrorCallBack(callback);
  __lumeSetMode(0x2000);
  __lumeSetErrStatus(99);
  this->report(1);
  EXPECT_EQ(__lumeGetErrStatus(), 99);
  EXPECT_EQ(errno, 0);
  EXPECT_TRUE(seen.empty());
  __lumeSetMode(0x2200); // with another bit the field is not exactly NOERR
  this->report(1);
  EXPECT_EQ(__lumeGetErrStatus(), 1);
  EXPECT_EQ(errno, EDOM);
}

TYPED_TEST(Report, IgnoreAloneStoresTheStatusOnly) {
  __lumeSetErrorCallBack(callback);
  __lumeSetMode(0x100);
  this->report(2);
  EXPECT_EQ(__lumeGetErrStatus(), 2);
  EXPECT_EQ(errno, 0);
  EXPECT_TRUE(seen.empty());
  __lumeSetMode(0x300);
  this->report(2);
  EXPECT_EQ(errno, ERANGE);
}

TYPED_TEST(Report, ErrnoOfEachStatus) {
  const std::pair<int32_t, int> rows[] = {{-2, 13}, {-1, 22}, {0, 0},  {1, 33}, {2, 34},
                                          {3, 34},  {4, 34},  {5, 14}, {77, 14}};
  for (const auto& [code, value] : rows) {
    errno = 99;
    this->report(code);
    EXPECT_EQ(errno, value) << code;
  }
  __lumeSetMode(0x1000);
  errno = 99;
  this->report(1);
  EXPECT_EQ(errno, 99) << "without the ERRNO bit";
}

TYPED_TEST(Report, IndexCountsFromTheRegisteredVector) {
  __lumeSetErrorCallBack(callback);
  __lumeSetInterfInputVectorPointer(this->a - 1000);
  this->report(1, 3);
  ASSERT_EQ(seen.size(), 1u);
  EXPECT_EQ(seen[0].index, 1003);
  EXPECT_EQ(seen[0].arg1, 4) << "values come from the index passed in";
  __lumeSetInterfInputVectorPointer(nullptr);
  this->report(1, 3);
  EXPECT_EQ(seen[1].index, 3);
}

TYPED_TEST(Report, LongNamesAreCut) {
  __lumeSetErrorCallBack(callback);
  const std::string name(60, 'n'), fits(47, 'm');
  TypeParam::routine(1, 0, this->a, this->b, this->r, this->q, name.c_str());
  TypeParam::routine(1, 0, this->a, this->b, this->r, this->q, fits.c_str());
  ASSERT_EQ(seen.size(), 2u);
  EXPECT_EQ(std::string(seen[0].funcName), name.substr(0, 47));
  EXPECT_EQ(seen[0].funcNameLen, 47);
  EXPECT_EQ(std::string(seen[1].funcName), fits);
  EXPECT_EQ(seen[1].funcNameLen, 47);
}

TYPED_TEST(Report, CallbackWritesBack) {
  __lumeSetErrorCallBack(callback);
  change = [](ErrorContext* c) { c->res1 = 0.1, c->res1Im = 0.3, c->res2 = 0.7, c->res2Im = 0.9; };
  this->report(1);
  const auto expected1 = TypeParam::make(0.1, 0.3), expected2 = TypeParam::make(0.7, 0.9);
  EXPECT_EQ(memcmp(&this->r[2], &expected1, sizeof expected1), 0);
  EXPECT_EQ(memcmp(&this->q[2], &expected2, sizeof expected2), 0);
  EXPECT_EQ(TypeParam::re(this->r[1]), 22);
  EXPECT_EQ(TypeParam::re(this->a[2]), 3) << "arguments are not written";
  EXPECT_EQ(errno, EDOM) << "the other routes run after it";
}

TYPED_TEST(Report, FirstResultWinsInOneArray) {
  __lumeSetErrorCallBack(callback);
  change = [](ErrorContext* c) { c->res1 = 5, c->res2 = 6; };
  TypeParam::routine(1, 2, this->a, this->a, this->r, this->r, "vxName");
  EXPECT_EQ(TypeParam::re(this->r[2]), 5);
}

TYPED_TEST(Report, CallbackThatReturnsNonzeroEndsTheReport) {
  __lumeSetErrorCallBack(callback);
  change = [](ErrorContext* c) { c->res1 = 0.1; };
  answer = -1;
  this->report(1);
  EXPECT_EQ(TypeParam::re(this->r[2]), 23);
  EXPECT_EQ(errno, 0);
  EXPECT_EQ(__lumeGetErrStatus(), 1);
}

TYPED_TEST(Report, CallbackMayChangeTheMode) {
  __lumeSetErrorCallBack(callback);
  change = [](ErrorContext*) { __lumeSetMode(0x1000); };
  this->report(1);
  EXPECT_EQ(errno, 0) << "the routes follow the mode that the callback left";
}

TYPED_TEST(Report, SetBitWithoutACallback) {
  __lumeSetMode(0x1200);
  this->report(1);
  EXPECT_EQ(errno, EDOM);
}

TYPED_TEST(Report, RefusedArgumentsHaveNoElement) {
  __lumeSetErrorCallBack(callback);
  for (int32_t code : {-1, -2}) TypeParam::routine(code, 5, nullptr, nullptr, nullptr, nullptr, "vxName");
  ASSERT_EQ(seen.size(), 2u);
  EXPECT_EQ(seen[0].index, 5);
}

// ---- STDERR ----

TYPED_TEST(Report, StderrLinesOfEachStatus) {
  __lumeSetMode(0x400);
  const auto same_arg = this->a[2], same_res = this->r[2];
  std::string first_lines[6];
  for (int32_t code : {1, 2, 3, 4, 5}) {
    const std::string text = this->report_on_stderr(code, same_arg, same_res);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 3) << text;
    EXPECT_NE(text.find("vxName"), std::string::npos);
    EXPECT_NE(text.find(" 2: argument = 3\n"), std::string::npos) << text;
    EXPECT_NE(text.find(" 2: result = 23\n"), std::string::npos) << text;
    first_lines[code] = text.substr(0, text.find('\n'));
    for (int32_t other = 1; other < code; ++other) EXPECT_NE(first_lines[other], first_lines[code]);
  }
  EXPECT_EQ(this->report_on_stderr(0, same_arg, same_res), "");
  const std::string bad_argument = this->report_on_stderr(-1, same_arg, same_res);
  EXPECT_EQ(std::count(bad_argument.begin(), bad_argument.end(), '\n'), 1);
  EXPECT_NE(bad_argument.find("vxName: argument 2 "), std::string::npos) << "the position";
  const std::string bad_memory = this->report_on_stderr(-2, same_arg, same_res);
  EXPECT_EQ(std::count(bad_memory.begin(), bad_memory.end(), '\n'), 1);
}

TYPED_TEST(Report, StderrCountsArgumentsAndResults) {
  __lumeSetMode(0x400);
  const auto zero = TypeParam::make(0, 5), minus_zero = TypeParam::make(-0.0, 5);
  const auto arg = this->a[2], res = this->r[2], other = TypeParam::make(7, 7);
  const auto lines = [&](auto arg2, auto res2) {
    const std::string text = this->report_on_stderr(1, arg2, res2);
    return std::count(text.begin(), text.end(), '\n');
  };
  EXPECT_EQ(lines(arg, res), 3);
  EXPECT_EQ(lines(zero, minus_zero), 3) << "a second value of zero counts as none";
  EXPECT_EQ(lines(arg, other), 4);
  EXPECT_EQ(lines(other, res), 4);
  EXPECT_EQ(lines(other, other), 5);
  const std::string all = this->report_on_stderr(1, other, TypeParam::make(8, 8));
  EXPECT_NE(all.find("first argument = 3\n"), std::string::npos) << all;
  EXPECT_NE(all.find("second argument = 7\n"), std::string::npos) << all;
  EXPECT_NE(all.find("first result = 23\n"), std::string::npos) << all;
  EXPECT_NE(all.find("second result = 8\n"), std::string::npos) << all;
}

TYPED_TEST(Report, StderrGivesTheWholeIndex) {
  __lumeSetMode(0x400);
  __lumeSetInterfInputVectorPointer(this->a - 40);
  const std::string text = this->report_on_stderr(1, this->a[2], this->r[2]);
  EXPECT_NE(text.find(" 42: argument"), std::string::npos) << text;
}

// ---- EXCEPT ----

uint16_t x87_status() {
  uint16_t word;
  asm volatile("fnstsw %0" : "=m"(word));
  return word;
}
uint16_t x87_control() {
  uint16_t word;
  asm volatile("fnstcw %0" : "=m"(word));
  return word;
}

TYPED_TEST(Report, ExceptRaisesTheFlagAndLeavesAllMasked) {
  __lumeSetMode(0x800);
  const uint16_t flags[] = {0, 0x01, 0x04, 0x08, 0x10, 0};
  for (int32_t code = 0; code <= 5; ++code) {
    asm volatile("fninit");
    const uint16_t unmasked = 0x37D; // the caller lets denormal operands trap, which no status raises
    asm volatile("fldcw %0" ::"m"(unmasked));
    this->report(code);
    EXPECT_EQ(x87_status() & 0x3F, flags[code]) << code;
    EXPECT_EQ(x87_control(), 0x37F) << code;
  }
  asm volatile("fninit");
}

sigjmp_buf back;
volatile sig_atomic_t signal_code = 0;
void on_fpe(int, siginfo_t* info, void*) {
  signal_code = info->si_code;
  siglongjmp(back, 1);
}

template <class Body> __attribute__((noinline)) bool ends_in_trap(Body body) {
  if (sigsetjmp(back, 1) != 0) return true;
  body();
  return false;
}

TYPED_TEST(Report, ExceptTrapsWhereTheModeLetsIt) {
  struct sigaction action = {}, kept;
  action.sa_sigaction = on_fpe;
  action.sa_flags = SA_SIGINFO;
  sigaction(SIGFPE, &action, &kept);
  const uint32_t traps[] = {0, 0x1000000, 0x2000000, 0x4000000, 0x8000000};
  const int codes[] = {0, FPE_FLTINV, FPE_FLTDIV, FPE_FLTOVF, FPE_FLTUND};
  std::thread([&] { // a thread's traps are set once and for all
    for (int32_t code = 1; code <= 4; ++code)
      for (int trap = 1; trap <= 4; ++trap) {
        __lumeSetMode(0x800 | traps[trap]);
        signal_code = 0;
        const bool trapped = ends_in_trap([&] { this->report(code); });
        asm volatile("fninit");
        EXPECT_EQ(trapped, code == trap) << code << " under trap " << trap;
        EXPECT_EQ(signal_code, trapped ? codes[code] : 0);
      }
  })
      .join();
  sigaction(SIGFPE, &kept, nullptr);
}

// ---- No memory for a cell ----

TEST(CellMemory, EndsTheProcessWithThree) {
  const auto without_memory = [](auto use) {
    std::thread([use] {
      tarn::test::AllocationFailure failure(0, true);
      use();
    }).join();
  };
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_EXIT(without_memory([] { __lumeGetMode(); }), testing::ExitedWithCode(3), "");
  EXPECT_EXIT(without_memory([] { __lumeGetErrStatus(); }), testing::ExitedWithCode(3), "");
  EXPECT_EXIT(without_memory([] { __lumeGetErrorCallBack(); }), testing::ExitedWithCode(3), "");
  EXPECT_EXIT(without_memory([] { __lumeSetInterfInputVectorPointer(nullptr); }), testing::ExitedWithCode(3), "");
}

// With every key of the process in use, whatever number the library went on with would be another's.
TEST(CellMemory, WithoutAKeyTheProcessEndsWithThree) {
  const auto without_keys = [](auto use) {
    static char others[256];
    pthread_key_t key;
    while (pthread_key_create(&key, nullptr) == 0) pthread_setspecific(key, others);
    use();
  };
  testing::FLAGS_gtest_death_test_style = "threadsafe"; // a process in which no key of the library exists
  EXPECT_EXIT(without_keys([] { __lumeGetMode(); }), testing::ExitedWithCode(3), "");
  EXPECT_EXIT(without_keys([] { __lumeGetErrStatus(); }), testing::ExitedWithCode(3), "");
  EXPECT_EXIT(without_keys([] { __lumeGetErrorCallBack(); }), testing::ExitedWithCode(3), "");
}

TEST(CellMemory, NothingIsTakenAfterTheFirstUse) {
  double a[1] = {-1}, r[1];
  __lumeSetErrorCallBack(callback);
  __lumeSetInterfInputVectorPointer(a);
  tarn_lume_kernel_dError(1, 0, a, a, r, r, "vdLn");
  tarn::test::AllocationFailure count(-1);
  for (int i = 0; i < 100; ++i) tarn_lume_kernel_dError(1, 0, a, a, r, r, "vdLn");
  __lumeSetInterfInputVectorPointer(nullptr);
  __lumeClearErrorCallBack();
  EXPECT_EQ(count.seen(), 0);
  seen.clear();
}

}
