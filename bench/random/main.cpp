// The generators: raw words and double uniforms, beside the same generators of the C++ library, Boost, GSL and
// Random123, and beside plain loops.
#include <boost/random/mersenne_twister.hpp>
#include <boost/random/sobol.hpp>
#include <boost/random/uniform_01.hpp>
#include <gsl/gsl_qrng.h>
#include <gsl/gsl_rng.h>

#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "bench/frame.h"
#include "bench/random/plain.h"
#include "tarn/random.h"

namespace {

using tarn::bench::Comparison;
using tarn::bench::Contestant;

struct Generator {
  const char* name;
  int32_t brng;
  int dimension; // 0: pseudo-random
  int32_t (*raw)(tarn_stream*, int32_t, void*);
  int32_t (*doubles)(tarn_stream*, int32_t, double*, double, double);
};
#define GENERATOR(Name, row, dimension)                                                                                \
  { #Name, (row) << 20, dimension, __kestiBRng##Name, __kestdBRng##Name }
const Generator generators[] = {
    GENERATOR(MCG31M1, 1, 0), GENERATOR(R250, 2, 0),       GENERATOR(MRG32K3A, 3, 0), GENERATOR(MCG59, 4, 0),
    GENERATOR(WH, 5, 0),      GENERATOR(Sobol, 6, 1),      GENERATOR(Sobol, 6, 8),    GENERATOR(Sobol, 6, 40),
    GENERATOR(Niederr, 7, 1), GENERATOR(Niederr, 7, 8),    GENERATOR(Niederr, 7, 40), GENERATOR(MT19937, 8, 0),
    GENERATOR(MT2203, 9, 0),  GENERATOR(SFMT19937, 13, 0), GENERATOR(ARS5, 15, 0),    GENERATOR(PHILOX4X32X10, 16, 0),
};

// GSL's generators, called through its own interface; freed with the last copy.
struct GslPeer {
  const char* name;
  std::shared_ptr<gsl_rng> rng;
};
GslPeer gsl_peer(const char* name, const gsl_rng_type* type) {
  return {name, std::shared_ptr<gsl_rng>(gsl_rng_alloc(type), gsl_rng_free)};
}

// Loops over a whole array, one instantiation a generator, so that a peer is inlined as its users have it.
template <class Engine> void words_of(Engine& engine, std::vector<uint32_t>& out) {
  for (uint32_t& v : out) v = static_cast<uint32_t>(engine());
}
template <class Engine> void doubles_of(Engine& engine, std::vector<double>& out) {
  for (double& v : out) v = static_cast<double>(static_cast<uint32_t>(engine())) * 0x1p-32;
}

void compare_generator(const Generator& g, int32_t n) {
  const std::string name = g.name + (g.dimension ? ", " + std::to_string(g.dimension) + " coordinates" : std::string());
  if (!tarn::bench::wanted(name)) return;
  const uint32_t seed = g.dimension ? static_cast<uint32_t>(g.dimension) : 7777;
  tarn_stream* stream = nullptr;
  if (__kestNewStreamEx(&stream, g.brng, 1, &seed) != 0) return;
  // MCG59 gives 64-bit words, WH four of 32 a number: room for the widest.
  std::vector<uint64_t> words(static_cast<size_t>(n) * 2);
  std::vector<uint32_t> peer_words(static_cast<size_t>(n));
  std::vector<double> reals(static_cast<size_t>(n)), peer_reals(static_cast<size_t>(n));

  Comparison raw{name + ", raw words", "n = " + std::to_string(n), "value", static_cast<double>(n), {}};
  Comparison real{name + ", doubles", "n = " + std::to_string(n), "value", static_cast<double>(n), {}};
  raw.contestants.push_back({"Tarn", [&] { g.raw(stream, n, words.data()); }, ""});
  real.contestants.push_back({"Tarn", [&] { g.doubles(stream, n, reals.data(), 0, 1); }, ""});
  const auto add = [&](const std::string& peer, std::function<void()> word_loop, std::function<void()> real_loop) {
    if (word_loop) raw.contestants.push_back({peer, std::move(word_loop), "Tarn"});
    if (real_loop) real.contestants.push_back({peer, std::move(real_loop), "Tarn"});
  };

  static std::mt19937 std_mt(7777);
  static boost::random::mt19937 boost_mt(7777u);
  if (std::string(g.name) == "MT19937") {
    add(
        "C++ library", [&] { words_of(std_mt, peer_words); }, [&] { doubles_of(std_mt, peer_reals); });
    add(
        "Boost", [&] { words_of(boost_mt, peer_words); }, [&] { doubles_of(boost_mt, peer_reals); });
  }
  static const GslPeer mt = gsl_peer("GSL", gsl_rng_mt19937), r250 = gsl_peer("GSL", gsl_rng_r250),
                       mcg = gsl_peer("GSL, fishman20", gsl_rng_fishman20), cmrg = gsl_peer("GSL, cmrg", gsl_rng_cmrg);
  const GslPeer* gsl = std::string(g.name) == "MT19937"    ? &mt
                       : std::string(g.name) == "R250"     ? &r250
                       : std::string(g.name) == "MCG31M1"  ? &mcg  // the same kind: multiplier modulo 2^31 - 1
                       : std::string(g.name) == "MRG32K3A" ? &cmrg // the same kind: two recurrences combined
                                                           : nullptr;
  if (gsl)
    add(
        gsl->name,
        [&, rng = gsl->rng.get()] {
          for (uint32_t& v : peer_words) v = static_cast<uint32_t>(gsl_rng_get(rng));
        },
        [&, rng = gsl->rng.get()] {
          for (double& v : peer_reals) v = gsl_rng_uniform(rng);
        });

  std::shared_ptr<gsl_qrng> points;
  if (g.dimension) {
    const gsl_qrng_type* type = std::string(g.name) == "Sobol" ? gsl_qrng_sobol : gsl_qrng_niederreiter_2;
    if (static_cast<unsigned>(g.dimension) <= type->max_dimension) {
      points.reset(gsl_qrng_alloc(type, static_cast<unsigned>(g.dimension)), gsl_qrng_free);
      add("GSL", nullptr, [&, points] {
        for (size_t i = 0; i + static_cast<size_t>(g.dimension) <= peer_reals.size();
             i += static_cast<size_t>(g.dimension))
          gsl_qrng_get(points.get(), &peer_reals[i]);
      });
    }
  }
  std::vector<uint64_t> plain_words(static_cast<size_t>(n));
  for (const tarn::bench::PlainGenerator& plain : tarn::bench::plain_generators(g.name, g.dimension))
    add(plain.name, plain.words ? std::function<void()>([&, plain] { plain.words(plain_words.data(), n); }) : nullptr,
        [&, plain] { plain.doubles(peer_reals.data(), n); });
  compare(raw);
  compare(real);
  __kestDeleteStream(&stream);
}

}

int main(int argc, char** argv) {
  return tarn::bench::run_benchmarks(argc, argv, [] {
    for (const Generator& g : generators)
      for (const int32_t n : {4000, 1000000})
        if (n == 4000 || !tarn::bench::quick()) compare_generator(g, n);
  });
}
