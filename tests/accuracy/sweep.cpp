#include "accuracy/sweep.h"

#include "accuracy/points.h"
#include "command/failure.h"
#include "command/output.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cmath>
#include <limits>
#include <memory>
#include <thread>

namespace tarn::accuracy {

namespace {

using command::Class;
using command::Function;

constexpr int chunk = 4096;       // points of one kernel call
constexpr size_t worst_kept = 12; // starting points of the refinement
constexpr int refinements = 40;   // rounds of it
constexpr int neighbours = 128;   // points a round and start
constexpr mpfr_rnd_t N = MPFR_RNDN;

struct Worst {
  double ulp;
  std::array<double, 2> argument;
  double result;
};
// Largest first; ties by the argument, so that the order of the threads does not show.
bool before(const Worst& a, const Worst& b) { return a.ulp != b.ulp ? a.ulp > b.ulp : a.argument < b.argument; }

void keep_worst(std::vector<Worst>& worst, const Worst& candidate) {
  if (worst.size() == worst_kept && !before(candidate, worst.back())) return;
  for (const Worst& known : worst)
    if (known.argument == candidate.argument) return;
  worst.insert(std::upper_bound(worst.begin(), worst.end(), candidate, before), candidate);
  if (worst.size() > worst_kept) worst.pop_back();
}

// What one thread has seen of one claim.
struct Seen {
  std::vector<Worst> worst;
  double sum = 0, relative = 0;
  int64_t count = 0;
  void join(const Seen& other) {
    for (const Worst& candidate : other.worst) keep_worst(worst, candidate);
    sum += other.sum;
    count += other.count;
    relative = std::max(relative, other.relative);
  }
};

class Number {
public:
  explicit Number(mpfr_prec_t precision) { mpfr_init2(value, precision); }
  ~Number() { mpfr_clear(value); }
  Number(const Number&) = delete;
  Number& operator=(const Number&) = delete;
  operator mpfr_ptr() { return value; }
  mpfr_t value;
};

template <class T> struct Format;
template <> struct Format<float> {
  static constexpr Real real = Real::Single;
  static constexpr mpfr_prec_t working = 72;
};
template <> struct Format<double> {
  static constexpr Real real = Real::Double;
  static constexpr mpfr_prec_t working = 128;
};

// One thread's arrays and numbers for one function.
template <class T> class Bench {
public:
  Bench(const Function& called, const Reference& exact_function, const std::vector<Claim>& all_claims)
      : function(called), reference(exact_function), claims(all_claims), seen(all_claims.size()) {
    for (auto& array : in) array.resize(chunk);
    for (auto& results : out)
      for (auto& array : results) array.resize(chunk);
    scalars.assign(4, 0);
    for (mpfr_t& s : exact_scalars) mpfr_init2(s, 64);
  }
  ~Bench() {
    for (mpfr_t& s : exact_scalars) mpfr_clear(s);
  }
  Bench(const Bench&) = delete;
  Bench& operator=(const Bench&) = delete;

  void set_scalars(Points<T>& points) {
    for (size_t i = 0; i < scalars.size(); ++i) {
      scalars[i] = points.scalar();
      mpfr_set_d(exact_scalars[i], scalars[i], N);
    }
  }

  // Runs the first n points of `in` through every kernel.
  void run(int n) {
    const std::array<Class, 3> slots = {Class::LA, Class::HA, Class::EP};
    for (Class slot : slots) {
      command::Arguments arguments{};
      for (size_t i = 0; i < 2; ++i) {
        arguments.in[i] = in[i].data();
        arguments.out[i] = out[static_cast<size_t>(slot)][i].data();
      }
      arguments.scalars = scalars.data();
      function.call(function.kernels[static_cast<size_t>(slot)], n, arguments);
    }
    for (int i = 0; i < n; ++i) compare(static_cast<size_t>(i));
  }

  const Function& function;
  const Reference& reference;
  const std::vector<Claim>& claims;
  std::array<std::vector<T>, 2> in;
  std::vector<Seen> seen; // one a claim
  std::vector<std::string> faults;
  bool average = true; // points count for the mean; those around the worst ones do not

private:
  void compare(size_t i) {
    mpfr_set_d(a, in[0][i], N);
    if (function.inputs == 2) mpfr_set_d(b, in[1][i], N);
    reference.set(exact[0], exact[1], a, b, exact_scalars, Format<T>::real);
    for (size_t result = 0; result < static_cast<size_t>(function.outputs); ++result) {
      const bool number = mpfr_number_p(exact[result].value) != 0;
      if (number) confine(exact[result]);
      for (size_t slot = 0; slot < 3; ++slot) {
        const T y = out[slot][result][i];
        double ulp = 0, relative = 0;
        if (number && !std::isnan(y)) {
          ulp = error(y, exact[result], relative);
        } else if (number || !same_special(y, exact[result])) {
          fault(i, slot, y, exact[result]);
          continue;
        }
        enter(i, slot, ulp, relative, y);
      }
    }
  }

  // An exact result beyond the type's range counts as the power of two behind its largest number.
  void confine(mpfr_ptr x) {
    constexpr auto beyond = std::numeric_limits<T>::max_exponent; // 2^beyond has the exponent beyond + 1 in MPFR
    if (mpfr_zero_p(x) || mpfr_get_exp(x) <= beyond) return;
    const int sign = mpfr_sgn(x);
    mpfr_set_si_2exp(x, sign, beyond, N);
  }

  double error(T y, mpfr_srcptr x, double& relative) {
    if (std::isinf(y)) {
      mpfr_set_si_2exp(difference, std::signbit(y) ? -1 : 1, std::numeric_limits<T>::max_exponent, N);
    } else {
      mpfr_set_d(difference, y, N);
    }
    mpfr_sub(difference, difference, x, N);
    if (mpfr_zero_p(difference.value)) return 0;
    constexpr mpfr_exp_t smallest = std::numeric_limits<T>::min_exponent - std::numeric_limits<T>::digits;
    const mpfr_exp_t exponent = mpfr_zero_p(x) ? smallest : mpfr_get_exp(x) - std::numeric_limits<T>::digits;
    // At the power of two behind the largest number, units are those of the largest number.
    constexpr mpfr_exp_t largest = std::numeric_limits<T>::max_exponent - std::numeric_limits<T>::digits;
    const mpfr_exp_t unit = std::clamp(exponent, smallest, largest);
    if (exponent > smallest && exponent <= largest) {
      mpfr_div(quotient, difference, x, N);
      relative = std::abs(mpfr_get_d(quotient, N));
    }
    mpfr_mul_2si(difference, difference, -unit, N);
    return std::abs(mpfr_get_d(difference, N));
  }

  static bool same_special(T y, mpfr_srcptr x) {
    if (mpfr_nan_p(x)) return std::isnan(y);
    return std::isinf(y) && std::signbit(y) == (mpfr_signbit(x) != 0);
  }

  void enter(size_t i, size_t slot, double ulp, double relative, T y) {
    const std::string_view class_name =
        command::class_names[static_cast<size_t>(command::kernel_class(function, static_cast<Class>(slot)))];
    if (class_name != command::class_names[slot]) return; // its kernel is seen in the slot of its own class
    const double first = in[0][i];
    for (size_t c = 0; c < claims.size(); ++c) {
      if (claims[c].class_name != class_name || !(first >= claims[c].from && first <= claims[c].to)) continue;
      Seen& s = seen[c];
      if (average) {
        s.sum += ulp;
        ++s.count;
      }
      s.relative = std::max(s.relative, relative);
      if (s.worst.size() < worst_kept || ulp >= s.worst.back().ulp)
        keep_worst(s.worst, {ulp, {first, function.inputs == 2 ? static_cast<double>(in[1][i]) : 0}, y});
    }
  }

  void fault(size_t i, size_t slot, T y, mpfr_srcptr x) {
    if (faults.size() >= 5) return;
    std::string text = std::string(command::class_names[slot]) + "(";
    command::append_number(text, in[0][i], Format<T>::real);
    if (function.inputs == 2) {
      text += ", ";
      command::append_number(text, in[1][i], Format<T>::real);
    }
    text += ") gave ";
    command::append_number(text, y, Format<T>::real);
    text += " where the exact value is ";
    command::append_number(text, mpfr_get_d(x, N), Real::Double);
    faults.push_back(text);
  }

  std::array<std::array<std::vector<T>, 2>, 3> out; // by slot and result
  std::vector<double> scalars;
  Number a{64}, b{64}, difference{Format<T>::working}, quotient{64};
  std::array<Number, 2> exact{Number{Format<T>::working}, Number{Format<T>::working}};
  mpfr_t exact_scalars[4];
};

// The whole range of the claims, for the sampling.
std::pair<double, double> range(const std::vector<Claim>& claims) {
  double from = INFINITY, to = -INFINITY;
  for (const Claim& claim : claims) {
    from = std::min(from, claim.from);
    to = std::max(to, claim.to);
  }
  return {from, to};
}

uint64_t mix(uint64_t x) { // so that neighbouring chunks have unrelated seeds (splitmix64)
  x += 0x9E3779B97F4A7C15;
  x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9;
  x = (x ^ (x >> 27)) * 0x94D049BB133111EB;
  return x ^ (x >> 31);
}

template <class T>
Sweep sweep_as(const Function& function, const Reference& reference, const std::vector<Claim>& claims,
               const SweepOptions& options) {
  const std::pair<double, double> ends = range(claims);
  const double from = ends.first, to = ends.second; // Clang 14 captures no structured bindings
  const bool exhaustive = options.exhaustive && sizeof(T) == 4 && function.inputs == 1 && function.scalars == 0;
  constexpr int64_t floats = int64_t{1} << 32;
  const int64_t chunks = exhaustive ? floats / chunk : std::max<int64_t>(1, options.points / reference.thin / chunk);

  std::vector<Seen> seen(claims.size());
  std::vector<std::string> faults;
  const auto join = [&](const Bench<T>& bench) {
    for (size_t c = 0; c < claims.size(); ++c) seen[c].join(bench.seen[c]);
    for (const std::string& fault : bench.faults)
      if (faults.size() < 5) faults.push_back(fault);
  };

  const auto in_threads = [&](int64_t tasks, auto task) {
    std::atomic<int64_t> next{0};
    std::vector<std::unique_ptr<Bench<T>>> benches;
    std::vector<std::thread> threads;
    for (int t = 0; t < options.threads; ++t) {
      benches.push_back(std::make_unique<Bench<T>>(function, reference, claims));
      threads.emplace_back([&, bench = benches.back().get()] {
        tarn_lume_kernel_SetMode(0x100); // IGNORE: results only
        for (int64_t i = next++; i < tasks; i = next++) task(*bench, i);
        mpfr_free_cache();
      });
    }
    for (std::thread& thread : threads) thread.join();
    for (const auto& bench : benches) join(*bench);
  };

  in_threads(chunks, [&](Bench<T>& bench, int64_t number) {
    if (exhaustive) {
      int n = 0;
      for (int64_t i = 0; i < chunk; ++i) {
        const auto x = std::bit_cast<float>(static_cast<uint32_t>(number * chunk + i));
        if (std::isfinite(x)) bench.in[0][static_cast<size_t>(n++)] = x;
      }
      return bench.run(n);
    }
    Points<T> points(mix(options.seed + mix(static_cast<uint64_t>(number))), from, to);
    bench.set_scalars(points);
    for (size_t i = 0; i < chunk; ++i) {
      bench.in[0][i] = points.next();
      if (function.inputs == 2) bench.in[1][i] = points.partner(bench.in[0][i]);
    }
    bench.run(chunk);
  });

  // Around the worst points, nearer and nearer: the largest error often has a still larger one beside it.
  if (!exhaustive && function.scalars == 0) {
    for (int round = 0; round < refinements / reference.thin + 1; ++round) {
      std::vector<Worst> starts;
      for (const Seen& s : seen) starts.insert(starts.end(), s.worst.begin(), s.worst.end());
      in_threads(static_cast<int64_t>(starts.size()), [&](Bench<T>& bench, int64_t i) {
        Points<T> points(mix(options.seed ^ mix(static_cast<uint64_t>(i * refinements + round) << 32)), from, to);
        const Worst& start = starts[static_cast<size_t>(i)];
        bench.average = false;
        for (size_t k = 0; k < neighbours; ++k) {
          bench.in[0][k] = k % 4 && function.inputs == 2 ? static_cast<T>(start.argument[0])
                                                         : points.near(static_cast<T>(start.argument[0]));
          if (function.inputs == 2)
            bench.in[1][k] =
                k % 4 == 1 ? static_cast<T>(start.argument[1]) : points.near(static_cast<T>(start.argument[1]));
        }
        bench.run(neighbours);
      });
    }
  }

  Sweep result;
  result.faults = std::move(faults);
  for (size_t c = 0; c < claims.size(); ++c) {
    Finding& finding = result.findings.emplace_back();
    finding.claim = claims[c];
    finding.points = seen[c].count;
    if (seen[c].worst.empty()) continue;
    const Worst& worst = seen[c].worst.front();
    finding.max_ulp = worst.ulp;
    finding.at[0] = worst.argument[0];
    finding.at[1] = worst.argument[1];
    finding.result = worst.result;
    finding.mean_ulp = seen[c].sum / static_cast<double>(seen[c].count);
    finding.worst_bits = seen[c].relative > 0 ? -std::log2(seen[c].relative) : INFINITY;
  }
  return result;
}

}

Sweep sweep(const Function& function, const Reference& reference, const std::vector<Claim>& claims,
            const SweepOptions& options) {
  return function.type == 's' ? sweep_as<float>(function, reference, claims, options)
                              : sweep_as<double>(function, reference, claims, options);
}

}
