// What every kernel of the roll promises, whatever it computes.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <dlfcn.h>
#include <limits>
#include <numeric>
#include <random>
#include <xmmintrin.h>

#include "vector/guarded.h"
#include "vector/roll.h"
#include "vector/special_arguments.h"

using namespace tarn::test;

namespace {

// Arguments of every kind: ordinary ones, any bit pattern, the special values.
template <class T> std::vector<T> arguments(size_t count, unsigned seed) {
  using Bits = std::conditional_t<sizeof(T) == 8, uint64_t, uint32_t>;
  constexpr const auto& specials = special_arguments<T>;
  std::mt19937_64 random(seed);
  std::vector<T> values(count);
  for (T& v : values) {
    switch (random() % 8) {
    case 0: v = specials[random() % std::size(specials)]; break;
    case 1: {
      const Bits bits = static_cast<Bits>(random());
      memcpy(&v, &bits, sizeof v);
      break;
    }
    case 2:
      v = std::ldexp(std::uniform_real_distribution<T>(-1, 1)(random), static_cast<int>(random() % 60) - 30);
      break;
    default: v = std::uniform_real_distribution<T>(T(0.01), 20)(random);
    }
  }
  return values;
}

template <class T> struct Data {
  std::vector<T> a, b, r, q;
  explicit Data(size_t n, unsigned seed = 1) : a(arguments<T>(n, seed)), b(arguments<T>(n, seed + 1)), r(n), q(n) {}
  Call<T> call() { return {static_cast<int32_t>(a.size()), a.data(), b.data(), r.data(), q.data()}; }
};

// The results of one element a call: what no neighbour can have changed.
template <class T> Data<T> one_by_one(const Function& f, int slot, Data<T> d) {
  for (size_t i = 0; i < d.a.size(); ++i) call_plain<T>(f, f.plain[slot], {1, &d.a[i], &d.b[i], &d.r[i], &d.q[i]});
  return d;
}

template <class T> void expect_same(const Function& f, const Data<T>& x, const Data<T>& y, const std::string& what) {
  for (size_t i = 0; i < x.r.size(); ++i) {
    if (same(x.r[i], y.r[i]) && (f.outputs() == 1 || same(x.q[i], y.q[i]))) continue;
    ADD_FAILURE() << what << ", element " << i << ": f(" << x.a[i] << ", " << x.b[i] << ") = " << x.r[i] << " and "
                  << y.r[i];
    return;
  }
}

std::string label(const Function& f, int slot, const char* law) {
  return f.full_name() + " " + class_names[slot] + ": " + law;
}

class Laws : public testing::Test {
protected:
  void SetUp() override { previous_ = __lumeSetMode(0x2000); } // most arguments below are reported otherwise
  void TearDown() override { __lumeSetMode(previous_); }

private:
  uint32_t previous_ = 0;
};

TEST_F(Laws, AnySplitGivesTheSameBits) {
  for_each_kernel([](const Function& f, int slot, auto type) {
    using T = decltype(type);
    Data<T> whole(300);
    const Data<T> single = one_by_one(f, slot, whole);
    call_plain(f, f.plain[slot], whole.call());
    expect_same(f, whole, single, label(f, slot, "whole against one by one"));
    const int B = f.block[static_cast<size_t>(slot)];
    for (int n : {0, 1, B - 1, B, B + 1, 2 * B + 1}) {
      Data<T> part(static_cast<size_t>(n));
      std::copy_n(whole.a.begin() + 7, n, part.a.begin());
      std::copy_n(whole.b.begin() + 7, n, part.b.begin());
      call_plain(f, f.plain[slot], part.call());
      for (size_t i = 0; i < part.r.size(); ++i)
        EXPECT_TRUE(same(part.r[i], whole.r[i + 7])) << label(f, slot, "n = ") << n << " element " << i;
    }
  });
}

// Every length up to past two blocks, at every step of the result's alignment.
TEST_F(Laws, EveryLengthGivesTheSameBits) {
  for_each_kernel([](const Function& f, int slot, auto type) {
    using T = decltype(type);
    const int longest = 2 * f.block[static_cast<size_t>(slot)] + 5;
    const Data<T> single = one_by_one(f, slot, Data<T>(static_cast<size_t>(longest), 11));
    for (int n = 0; n <= longest; ++n)
      for (int step = 0; step < static_cast<int>(16 / sizeof(T)); ++step) {
        const T untouched = T(77.25);
        std::vector<T> r(static_cast<size_t>(longest + 8), untouched), q = r;
        call_plain<T>(f, f.plain[slot], {n, single.a.data(), single.b.data(), r.data() + step, q.data() + step});
        for (int i = -step; i < longest + 8 - step; ++i) {
          const size_t at = static_cast<size_t>(i + step), element = static_cast<size_t>(i);
          const bool inside = i >= 0 && i < n;
          ASSERT_TRUE(same(r[at], inside ? single.r[element] : untouched))
              << label(f, slot, "n = ") << n << " step " << step << " element " << i;
          ASSERT_TRUE(same(q[at], inside && f.outputs() == 2 ? single.q[element] : untouched))
              << label(f, slot, "second result, n = ") << n << " step " << step << " element " << i;
        }
      }
  });
}

TEST_F(Laws, StridedGivesTheBitsOfThePlainForm) {
  for_each_kernel([](const Function& f, int slot, auto type) {
    using T = decltype(type);
    Data<T> plain(101);
    call_plain(f, f.plain[slot], plain.call());
    for (int32_t inc : {1, 2, 3, 7, -1, -2}) {
      const size_t width = plain.a.size() * static_cast<size_t>(std::abs(inc));
      const T untouched = T(77.25);
      std::vector<T> a(width, untouched), b(width, untouched), r(width, untouched), q(width, untouched);
      const auto at = [&](size_t i) {
        return inc > 0 ? i * static_cast<size_t>(inc) : width - 1 - i * static_cast<size_t>(-inc);
      };
      for (size_t i = 0; i < plain.a.size(); ++i) a[at(i)] = plain.a[i], b[at(i)] = plain.b[i];
      call_strided<T>(f, f.strided[slot], {101, &a[at(0)], &b[at(0)], &r[at(0)], &q[at(0)], inc, inc, inc, inc});
      Data<T> strided = plain;
      for (size_t i = 0; i < plain.a.size(); ++i) {
        strided.r[i] = std::exchange(r[at(i)], untouched);
        strided.q[i] = std::exchange(q[at(i)], untouched);
      }
      expect_same(f, plain, strided, label(f, slot, "stride ") + std::to_string(inc));
      for (const T& v : r) EXPECT_EQ(v, untouched) << label(f, slot, "wrote between the strides");
    }
  });
}

TEST_F(Laws, InPlaceEqualsApart) {
  for_each_kernel([](const Function& f, int slot, auto type) {
    using T = decltype(type);
    Data<T> apart(133);
    call_plain(f, f.plain[slot], apart.call());
    Data<T> over_a(133), over_b(133), strided(133);
    Call<T> c = over_a.call();
    c.r = over_a.a.data();
    call_plain(f, f.plain[slot], c);
    over_a.r = over_a.a;
    expect_same(f, apart, over_a, label(f, slot, "over a"));
    c = strided.call();
    c.r = strided.a.data();
    call_strided(f, f.strided[slot], c);
    strided.r = strided.a;
    expect_same(f, apart, strided, label(f, slot, "strided over a"));
    if (f.inputs() == 2) {
      c = over_b.call();
      c.r = over_b.b.data();
      call_plain(f, f.plain[slot], c);
      over_b.r = over_b.b;
      expect_same(f, apart, over_b, label(f, slot, "over b"));
    }
    if (f.outputs() == 2) {
      Data<T> second(133);
      c = second.call();
      c.q = second.a.data();
      call_plain(f, f.plain[slot], c);
      second.q = second.a;
      expect_same(f, apart, second, label(f, slot, "second result over a"));
    }
  });
}

TEST_F(Laws, AnyByteAddress) {
  for_each_kernel([](const Function& f, int slot, auto type) {
    using T = decltype(type);
    constexpr size_t n = 53, bytes = n * sizeof(T);
    Data<T> aligned(n);
    call_plain(f, f.plain[slot], aligned.call());
    alignas(64) char a[bytes + 16], b[bytes + 16], r[bytes + 16], q[bytes + 16];
    for (size_t to = 0; to < 16; ++to)
      for (size_t from : {size_t{0}, size_t{1}, size_t{4}, size_t{8}, size_t{15}}) {
        memcpy(a + from, aligned.a.data(), bytes);
        memcpy(b + (from + to) % 16, aligned.b.data(), bytes);
        memset(r, 0x11, sizeof r);
        call_plain<T>(f, f.plain[slot],
                      {n, reinterpret_cast<T*>(a + from), reinterpret_cast<T*>(b + (from + to) % 16),
                       reinterpret_cast<T*>(r + to), reinterpret_cast<T*>(q + to)});
        Data<T> got = aligned;
        memcpy(got.r.data(), r + to, bytes);
        memcpy(got.q.data(), q + to, bytes);
        expect_same(f, aligned, got, label(f, slot, "addresses ") + std::to_string(from) + ", " + std::to_string(to));
        for (size_t i = 0; i < to; ++i) EXPECT_EQ(r[i], 0x11);
        for (size_t i = to + bytes; i < sizeof r; ++i) EXPECT_EQ(r[i], 0x11);
      }
  });
}

TEST_F(Laws, NothingOutsideTheArraysIsTouched) {
  for_each_kernel([](const Function& f, int slot, auto type) {
    using T = decltype(type);
    const int B = f.block[static_cast<size_t>(slot)];
    for (int n : {1, 2, 3, B - 1, B, B + 1, 2 * B + 1})
      for (auto side : {Guarded<T>::at_end, Guarded<T>::at_start}) {
        const size_t count = static_cast<size_t>(n);
        Guarded<T> a(count, side), b(count, side), r(count, side), q(count, side);
        const Data<T> d(count);
        std::copy(d.a.begin(), d.a.end(), a.data());
        std::copy(d.b.begin(), d.b.end(), b.data());
        call_plain<T>(f, f.plain[slot], {n, a.data(), b.data(), r.data(), q.data()});
        call_strided<T>(f, f.strided[slot], {n, a.data(), b.data(), r.data(), q.data()});
      }
  });
}

TEST_F(Laws, EntriesAreTheSlots) {
  for_each_kernel([](const Function& f, int slot, auto type) {
    using T = decltype(type);
    const size_t entry = slot == EP ? 3 : static_cast<size_t>(slot);
    Data<T> table(57), entered(57), plain_name(57), strided(57);
    call_plain(f, f.plain[slot], table.call());
    call_plain(f, f.plain_entries[entry], entered.call());
    call_strided(f, f.strided_entries[entry], strided.call());
    expect_same(f, table, entered, label(f, slot, "entry"));
    expect_same(f, table, strided, label(f, slot, "strided entry"));
    if (slot == HA) {
      call_plain(f, f.plain_entries[2], plain_name.call());
      expect_same(f, table, plain_name, label(f, slot, "plain name"));
      call_strided(f, f.strided_entries[2], plain_name.call());
      expect_same(f, table, plain_name, label(f, slot, "plain strided name"));
    }
  });
}

TEST_F(Laws, KernelsHaveAddressesOfTheirOwn) {
  std::vector<std::pair<tarn_kernel, std::string>> seen;
  for (const Function& f : roll())
    for (int slot = 0; slot < 3; ++slot)
      for (bool strided : {false, true}) {
        const tarn_kernel kernel = strided ? f.strided[slot] : f.plain[slot];
        const std::string name = f.kernel_names[static_cast<size_t>(slot)] + (strided ? "I" : "");
        for (const auto& [other, its_name] : seen)
          EXPECT_EQ(other == kernel, its_name == name) << name << " and " << its_name;
        seen.emplace_back(kernel, name);
      }
}

TEST_F(Laws, CostTablesStandBehindTheKernels) {
  // Looked up in the library: a program that names both tables may hold copies of its own.
  void* library = dlopen("libtarn.so.0", RTLD_NOW | RTLD_NOLOAD);
  ASSERT_NE(library, nullptr) << dlerror();
  for (const Function& f : roll())
    for (const char* form : {"", "I"}) {
      const std::string name = "tarn_lume_kernel_" + f.full_name() + form;
      const char* kernels = static_cast<const char*>(dlvsym(library, (name + "_ttab").c_str(), "TARN_0.1"));
      const char* costs = static_cast<const char*>(dlvsym(library, (name + "_ctab").c_str(), "TARN_0.1"));
      ASSERT_NE(kernels, nullptr) << name;
      EXPECT_EQ(reinterpret_cast<uintptr_t>(kernels) % 16, 0u)
          << name << ": compilers take global arrays to be aligned";
      EXPECT_EQ(costs, kernels + 24) << name;
      EXPECT_EQ(memcmp(costs, f.plain_cost, 16), 0) << name;
      for (float cost : f.plain_cost->cost) EXPECT_GT(cost, 0) << name;
      EXPECT_EQ(f.plain_cost->zero, 0u) << name;
    }
  dlclose(library);
}

// ---- Control words ----

uint16_t x87_control() {
  uint16_t word;
  asm volatile("fnstcw %0" : "=m"(word));
  return word;
}
void set_x87_control(uint16_t word) { asm volatile("fnclex\n\tfldcw %0" ::"m"(word)); }

TEST_F(Laws, ControlWordsComeBackWithTheFlagsMerged) {
  const unsigned kept_mxcsr = _mm_getcsr();
  const uint16_t kept_x87 = x87_control();
  for_each_kernel([](const Function& f, int slot, auto type) {
    using T = decltype(type);
    Data<T> ordinary(40);
    for (T& v : ordinary.a) v = T(1.25);
    for (T& v : ordinary.b) v = T(0.75);
    // Unmasked exceptions, another rounding mode, flushing: all as the caller has it.
    for (unsigned mxcsr : {0x1F80u, 0x0000u, 0x1F80u | 0x8040u, 0x0040u, 0x1F80u | 0x6000u, 0x1FA0u})
      for (uint16_t x87 : {uint16_t{0x37F}, uint16_t{0x360}, uint16_t{0x27F}, uint16_t{0xC7F}}) {
        for (bool strided : {false, true}) {
          set_x87_control(x87);
          _mm_setcsr(mxcsr);
          if (strided)
            call_strided(f, f.strided[slot], ordinary.call());
          else
            call_plain(f, f.plain[slot], ordinary.call());
          const unsigned after = _mm_getcsr();
          const uint16_t x87_after = x87_control();
          _mm_setcsr(0x1F80);
          set_x87_control(0x37F);
          EXPECT_EQ(after & ~0x3Fu, mxcsr & ~0x3Fu) << label(f, slot, "mxcsr");
          EXPECT_EQ(after & mxcsr & 0x3F, mxcsr & 0x3F) << label(f, slot, "lost a flag");
          EXPECT_EQ(x87_after, x87) << label(f, slot, "x87");
        }
      }
  });
  _mm_setcsr(kept_mxcsr);
  set_x87_control(kept_x87);
}

TEST_F(Laws, FlagsRaisedInsideSurvive) {
  // 1/3 and e^1.25 are inexact; the flag must be there after a kernel that had to change MXCSR.
  for (const char* name : {"dExp", "sExp", "dLn", "sLn"}) {
    const Function& f = function(name);
    for (int slot = 0; slot < 3; ++slot) {
      double a[3] = {1.25, 2.5, 3.75}, r[3];
      float af[3] = {1.25f, 2.5f, 3.75f}, rf[3];
      _mm_setcsr(0x0000 | 0x1000); // all but inexact unmasked
      if (f.type == 'd')
        call_plain<double>(f, f.plain[slot], {3, a, a, r, r});
      else
        call_plain<float>(f, f.plain[slot], {3, af, af, rf, rf});
      const unsigned after = _mm_getcsr();
      _mm_setcsr(0x1F80);
      EXPECT_TRUE(after & 0x20) << label(f, slot, "inexact flag");
      EXPECT_EQ(after & 0x1F80, 0x1000u) << label(f, slot, "masks");
    }
  }
}

unsigned flags_of(auto call) {
  _mm_setcsr(0x1F80);
  call();
  const unsigned flags = _mm_getcsr() & 0x3F;
  _mm_setcsr(0x1F80);
  return flags;
}

// A call raises what its elements raise, wherever they stand. Not compared: a denormal's flag, which a graver one of the
// same instruction hides; inexact, which lanes past the end may raise; invalid, since compilers differ in which compares
// with a NaN they make.
TEST_F(Laws, FlagsAreThoseOfTheElements) {
  constexpr unsigned compared = 0x1C;
  __lumeSetMode(0x100); // without reports Exp settles overflows in a block as constants
  for_each_kernel([](const Function& f, int slot, auto type) {
    using T = decltype(type);
    const auto check = [&](const Data<T>& data) {
      Data<T> d = data;
      unsigned of_elements = 0;
      for (size_t i = 0; i < d.a.size(); ++i)
        of_elements |= flags_of([&] { call_plain<T>(f, f.plain[slot], {1, &d.a[i], &d.b[i], &d.r[i], &d.q[i]}); });
      EXPECT_EQ(flags_of([&] { call_plain(f, f.plain[slot], d.call()); }) & compared, of_elements & compared)
          << label(f, slot, "flags with ") << d.a[17] << ", " << d.b[17];
      EXPECT_EQ(flags_of([&] { call_strided(f, f.strided[slot], d.call()); }) & compared, of_elements & compared)
          << label(f, slot, "strided flags with ") << d.a[17] << ", " << d.b[17];
    };
    check(Data<T>(49, 20));
    Data<T> ordinary(49);
    std::fill(ordinary.a.begin(), ordinary.a.end(), T(1));
    std::fill(ordinary.b.begin(), ordinary.b.end(), T(2));
    for (T special : special_arguments<T>)
      for (bool second : {false, true}) {
        Data<T> d = ordinary;
        (second ? d.b : d.a)[17] = special;
        check(d);
      }
  });
}

// 2/(3 - 1): exact for every element, though 1/(1 - 1) would divide by zero.
TEST_F(Laws, NoFlagComesFromOutsideTheArrays) {
  const double a[17] = {2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2};
  const double b[17] = {3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3};
  double r[17];
  const std::vector<float> af(17, 2), bf(17, 3);
  std::vector<float> rf(17);
  for (int n = 0; n <= 17; ++n) {
    EXPECT_EQ(flags_of([&] { __lumedLinearFrac(n, a, b, 1, 0, 1, -1, r); }), 0u) << n;
    EXPECT_EQ(flags_of([&] { __lumesLinearFrac(n, af.data(), bf.data(), 1, 0, 1, -1, rf.data()); }), 0u) << n;
  }
}

// The result does not depend on the caller's rounding mode, but for the functions whose business it is.
TEST_F(Laws, KernelsRoundToNearest) {
  for_each_kernel([](const Function& f, int slot, auto type) {
    using T = decltype(type);
    if (f.frames[static_cast<size_t>(slot)] != "aware") return;
    Data<T> nearest(64), upward(64);
    call_plain(f, f.plain[slot], nearest.call());
    _mm_setcsr(0x1F80 | 0x4000);
    call_plain(f, f.plain[slot], upward.call());
    _mm_setcsr(0x1F80);
    expect_same(f, nearest, upward, label(f, slot, "rounding mode"));
  });
}

// With the denormal field at flush, what an aware kernel makes of a denormal is what it makes of a zero.
TEST_F(Laws, DenormalFieldReachesAwareKernels) {
  for (const char* name : {"dExp", "sExp", "dLn", "sLn"}) {
    const Function& f = function(name);
    for (int slot = 0; slot < 3; ++slot) {
      double zero = 0, tiny = 5e-324, of_zero, of_tiny;
      float zerof = 0, tinyf = 1e-45f, of_zerof, of_tinyf;
      const uint32_t kept = __lumeSetMode(0x280000);
      if (f.type == 'd') {
        call_plain<double>(f, f.plain[slot], {1, &zero, &zero, &of_zero, &of_zero});
        call_plain<double>(f, f.plain[slot], {1, &tiny, &tiny, &of_tiny, &of_tiny});
      } else {
        call_plain<float>(f, f.plain[slot], {1, &zerof, &zerof, &of_zerof, &of_zerof});
        call_plain<float>(f, f.plain[slot], {1, &tinyf, &tinyf, &of_tinyf, &of_tinyf});
        of_zero = of_zerof, of_tiny = of_tinyf;
      }
      __lumeSetMode(kept | 0x40000); // any other value of the field means no flushing
      const bool aware = f.frames[static_cast<size_t>(slot)] == "aware";
      EXPECT_EQ(same(of_zero, of_tiny), aware) << label(f, slot, "denormals are zero");
    }
  }
}

template <class T> T flushed(T v) { return std::fpclassify(v) == FP_SUBNORMAL ? std::copysign(T(0), v) : v; }

// In all aware kernels and on all their routes: what a denormal gives is what a zero of its sign gives, and no result
// is a denormal.
TEST_F(Laws, TheFlushModeKnowsNoDenormals) {
  __lumeSetMode(0x280000);
  for_each_kernel([](const Function& f, int slot, auto type) {
    using T = decltype(type);
    using Limits = std::numeric_limits<T>;
    const std::string& frame = f.frames[static_cast<size_t>(slot)];
    if (frame != "aware" && frame != "rounding") return;
    std::vector<T> values(std::begin(special_arguments<T>), std::end(special_arguments<T>));
    for (T v : {Limits::denorm_min(), Limits::min() / 2, Limits::min() / 7, Limits::min() * T(1.25),
                Limits::min() * T(1.75), Limits::min() * 3})
      values.insert(values.end(), {v, -v});
    const size_t count = values.size() * values.size();
    Data<T> denormal(count), zero(count);
    for (size_t i = 0; i < count; ++i) {
      denormal.a[i] = values[i / values.size()], denormal.b[i] = values[i % values.size()];
      zero.a[i] = flushed(denormal.a[i]), zero.b[i] = flushed(denormal.b[i]);
    }
    call_plain(f, f.plain[slot], zero.call());
    for (T r : zero.r) EXPECT_NE(std::fpclassify(r), FP_SUBNORMAL) << label(f, slot, "result");
    for (T q : zero.q) EXPECT_NE(std::fpclassify(q), FP_SUBNORMAL) << label(f, slot, "second result");
    const std::vector<T> r = zero.r, q = zero.q;
    Data<T> strided = denormal;
    call_plain(f, f.plain[slot], denormal.call());
    call_strided(f, f.strided[slot], strided.call());
    zero = denormal, zero.r = r, zero.q = q;
    expect_same(f, zero, denormal, label(f, slot, "denormals"));
    expect_same(f, zero, strided, label(f, slot, "denormals, strided"));
  });
  __lumeSetMode(0x40000);
}

// A signaling NaN goes in, a quiet one comes out; but Abs, CopySign and Logb move bits.
TEST_F(Laws, NaNsComeOutQuiet) {
  for_each_kernel([](const Function& f, int slot, auto type) {
    using T = decltype(type);
    using Bits = std::conditional_t<sizeof(T) == 8, uint64_t, uint32_t>;
    if (f.name == "Abs" || f.name == "CopySign" || f.name == "Logb") return;
    const auto bits = [](T v) { return std::bit_cast<Bits>(v); };
    const T infinity = std::numeric_limits<T>::infinity(), quiet = std::numeric_limits<T>::quiet_NaN();
    const T signaling = std::bit_cast<T>(bits(infinity) | 5); // set as bits: a move through the x87 unit would quiet it
    const Bits quiet_bit = bits(quiet) & ~bits(infinity);
    for (auto [a, b] : {std::pair{signaling, T(1)},
                        {T(1), signaling},
                        {quiet, signaling},
                        {signaling, quiet},
                        {signaling, signaling},
                        {infinity, signaling},
                        {signaling, infinity}}) {
      Data<T> d(37);
      std::fill(d.a.begin(), d.a.end(), a);
      std::fill(d.b.begin(), d.b.end(), b);
      call_plain(f, f.plain[slot], d.call());
      for (const std::vector<T>& results : {d.r, d.q})
        for (T v : results)
          EXPECT_TRUE(v == v || bits(v) & quiet_bit) << label(f, slot, "a signaling NaN for ") << a << ", " << b;
    }
  });
}

// ---- Reports ----

struct Seen {
  ErrorContext context;
};
thread_local std::vector<Seen> reports;
int32_t collect(ErrorContext* context) {
  reports.push_back({*context});
  return 0;
}

TEST_F(Laws, ReportsNameTheFunctionAndTheElement) {
  const uint32_t kept = __lumeSetMode(0x1000);
  for_each_kernel([](const Function& f, int slot, auto type) {
    using T = decltype(type);
    Data<T> d(90, 5);
    reports.clear();
    __lumeSetErrorCallBack(collect);
    __lumeClearErrStatus();
    call_plain(f, f.plain[slot], d.call());
    const std::vector<Seen> plain = reports;
    EXPECT_EQ(__lumeGetErrStatus(), plain.empty() ? 0 : plain.back().context.code) << f.full_name();
    int32_t last = -1;
    for (const Seen& seen : plain) {
      const ErrorContext& c = seen.context;
      EXPECT_GT(c.index, last) << label(f, slot, "not ascending");
      last = c.index;
      ASSERT_LT(c.index, 90);
      const size_t i = static_cast<size_t>(c.index);
      EXPECT_EQ(std::string(c.funcName), "v" + f.full_name());
      EXPECT_EQ(c.funcNameLen, static_cast<int32_t>(f.full_name().size() + 1));
      EXPECT_TRUE(same(c.arg1, static_cast<double>(d.a[i]))) << label(f, slot, "first argument");
      EXPECT_TRUE(same(c.arg2, static_cast<double>(f.inputs() == 2 ? d.b[i] : d.a[i])))
          << label(f, slot, "second argument");
      EXPECT_TRUE(same(c.res1, static_cast<double>(d.r[i]))) << label(f, slot, "result");
      EXPECT_TRUE(same(c.res2, static_cast<double>(f.outputs() == 2 ? d.q[i] : d.r[i])))
          << label(f, slot, "second result");
    }
    // The strided form reports the same elements under its own name.
    reports.clear();
    Data<T> s = d;
    call_strided(f, f.strided[slot], s.call());
    ASSERT_EQ(reports.size(), plain.size()) << label(f, slot, "strided reports");
    for (size_t k = 0; k < plain.size(); ++k) {
      EXPECT_EQ(reports[k].context.index, plain[k].context.index);
      EXPECT_EQ(reports[k].context.code, plain[k].context.code);
      EXPECT_EQ(std::string(reports[k].context.funcName), "v" + f.full_name() + "I");
    }
    // All classes agree on the statuses: they share thresholds and rare routine.
    reports.clear();
    call_plain(f, f.plain[HA], d.call());
    ASSERT_EQ(reports.size(), plain.size()) << label(f, slot, "reports differ from HA's");
    for (size_t k = 0; k < plain.size(); ++k) EXPECT_EQ(reports[k].context.code, plain[k].context.code);
  });
  __lumeClearErrorCallBack();
  __lumeSetMode(kept);
}

int32_t replace(ErrorContext* context) {
  context->res1 = 4711;
  return 0;
}
int32_t replace_and_end(ErrorContext* context) {
  context->res1 = 4711;
  return 1;
}

TEST_F(Laws, CallbackReplacesTheResultUnlessItEndsTheReport) {
  const uint32_t kept = __lumeSetMode(0x1000);
  for_each_kernel([](const Function& f, int slot, auto type) {
    using T = decltype(type);
    Data<T> d(90, 5);
    reports.clear();
    __lumeSetErrorCallBack(collect);
    call_plain(f, f.plain[slot], d.call());
    const std::vector<Seen> plain = reports;
    const Data<T> before = d;
    for (bool in_place : {false, true}) {
      Data<T> replaced(90, 5);
      Call<T> c = replaced.call();
      if (in_place) c.r = replaced.a.data();
      __lumeSetErrorCallBack(replace);
      call_plain(f, f.plain[slot], c);
      Data<T> expected = before, got = before;
      for (const Seen& seen : plain) expected.r[static_cast<size_t>(seen.context.index)] = 4711;
      std::copy_n(c.r, 90, got.r.begin());
      expect_same(f, expected, got, label(f, slot, "replaced"));
    }
    Data<T> ended(90, 5);
    __lumeSetErrorCallBack(replace_and_end);
    call_plain(f, f.plain[slot], ended.call());
    expect_same(f, before, ended, label(f, slot, "ended"));
  });
  __lumeClearErrorCallBack();
  __lumeSetMode(kept);
}

// A strided kernel reports with the base pointers: what is read and replaced is array element k, not the strided one.
TEST_F(Laws, StridedReportsReadTheBaseArrays) {
  const uint32_t kept = __lumeSetMode(0x1000);
  double a[9] = {1, 10, 2, 20, -3, 30, 4, 40, 5}, r[9];
  for (int slot = 0; slot < 3; ++slot) {
    const Function& f = function("dLn");
    std::fill(r, r + 9, 100.0);
    reports.clear();
    __lumeSetErrorCallBack(collect);
    call_strided<double>(f, f.strided[slot], {5, a, a, r, r, 2, 2, 2, 2});
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].context.index, 2);
    EXPECT_EQ(reports[0].context.arg1, 2) << "a[2], though the bad argument is a[4]";
    EXPECT_TRUE(std::isnan(r[4]));
    __lumeSetErrorCallBack(replace);
    call_strided<double>(f, f.strided[slot], {5, a, a, r, r, 2, 2, 2, 2});
    EXPECT_TRUE(std::isnan(r[4])) << "the replacement went to r[2]";
  }
  __lumeClearErrorCallBack();
  __lumeSetMode(kept);
}

// Between the strides nothing is written unless a callback replaces a result: there another thread may be at work.
TEST_F(Laws, ReportsLeaveWhatLiesBetweenTheStrides) {
  const uint32_t kept = __lumeSetMode(0x281000); // flushing must not reach the floats in between either
  for (const ErrorCallback callback : {ErrorCallback{nullptr}, collect})
    for (uint32_t between : {0x7F800005u, 0x00000001u}) { // a signaling NaN, a denormal
      const std::vector<float> a(40, -1.0f);
      std::vector<uint32_t> r(40, between);
      reports.clear();
      __lumeSetErrorCallBack(callback);
      __lumeSetMode(0x1000);
      __lumesLnI(20, a.data(), 2, reinterpret_cast<float*>(r.data()), 2);
      EXPECT_EQ(reports.size(), callback ? 20u : 0u);
      for (size_t i = 1; i < 40; i += 2) EXPECT_EQ(r[i], between) << i;
      for (size_t i = 0; i < 40; i += 2) EXPECT_TRUE(std::isnan(std::bit_cast<float>(r[i]))) << i;
    }
  __lumeClearErrorCallBack();
  __lumeSetMode(kept | 0x40000);
}

// An element that goes wrong is reported once and leaves its neighbours alone, wherever in block or tail it stands.
TEST_F(Laws, ASpecialArgumentMayStandAnywhere) {
  const uint32_t kept = __lumeSetMode(0x1000);
  __lumeSetErrorCallBack(collect);
  for_each_kernel([](const Function& f, int slot, auto type) {
    using T = decltype(type);
    using Limits = std::numeric_limits<T>;
    const size_t n = static_cast<size_t>(f.block[static_cast<size_t>(slot)]) + 7;
    Data<T> ordinary(n);
    for (size_t i = 0; i < n; ++i) ordinary.a[i] = T(1) + T(i) / 16, ordinary.b[i] = T(2) + T(i) / 32;
    call_plain(f, f.plain[slot], ordinary.call());
    for (T special : {T(0), -T(0), T(-1), Limits::max(), Limits::lowest(), Limits::infinity(), Limits::quiet_NaN(),
                      Limits::denorm_min()})
      for (size_t place = 0; place < n; ++place)
        for (bool second : {false, true}) {
          if (second && f.inputs() == 1) continue;
          Data<T> expected = ordinary;
          (second ? expected.b : expected.a)[place] = special;
          Data<T> got = expected, strided = expected;
          reports.clear();
          call_plain<T>(f, f.plain[slot],
                        {1, &expected.a[place], &expected.b[place], &expected.r[place], &expected.q[place]});
          std::vector<Seen> of_one = reports;
          for (bool with_stride : {false, true}) {
            Data<T>& d = with_stride ? strided : got;
            reports.clear();
            if (with_stride)
              call_strided(f, f.strided[slot], d.call());
            else
              call_plain(f, f.plain[slot], d.call());
            expect_same(f, expected, d, label(f, slot, "one special argument"));
            ASSERT_EQ(reports.size(), of_one.size()) << label(f, slot, "place ") << place << " of " << special;
            if (of_one.empty()) continue;
            EXPECT_EQ(reports[0].context.index, static_cast<int32_t>(place)) << label(f, slot, "place");
            EXPECT_EQ(reports[0].context.code, of_one[0].context.code) << label(f, slot, "code");
          }
        }
  });
  __lumeClearErrorCallBack();
  __lumeSetMode(kept);
}

TEST_F(Laws, NoReportLeavesTheStatusAlone) {
  for_each_kernel([](const Function& f, int slot, auto type) {
    using T = decltype(type);
    const uint32_t kept = __lumeSetMode(0x1000);
    __lumeSetErrStatus(1234);
    Data<T> d(30);
    std::fill(d.a.begin(), d.a.end(), T(1.5));
    std::fill(d.b.begin(), d.b.end(), T(0.25));
    call_plain(f, f.plain[slot], d.call());
    EXPECT_EQ(__lumeGetErrStatus(), 1234) << label(f, slot, "no bad element");
    __lumeSetMode(0x2000);
    Data<T> any(90);
    call_plain(f, f.plain[slot], any.call());
    EXPECT_EQ(__lumeGetErrStatus(), 1234) << label(f, slot, "NOERR");
    __lumeSetMode(kept);
  });
  __lumeClearErrStatus();
}

TEST_F(Laws, NegativeCountTouchesNothing) {
  for_each_kernel([](const Function& f, int slot, auto type) {
    using T = decltype(type);
    T a[2] = {1, 2}, b[2] = {3, 4}, r[2] = {T(9.5), T(9.5)}, q[2] = {T(9.5), T(9.5)};
    for (int32_t n : {0, -1, -1000}) {
      call_plain<T>(f, f.plain[slot], {n, a, b, r, q});
      call_strided<T>(f, f.strided[slot], {n, a, b, r, q});
    }
    for (int i = 0; i < 2; ++i) EXPECT_TRUE(r[i] == T(9.5) && q[i] == T(9.5)) << label(f, slot, "n below 1");
  });
}

}
