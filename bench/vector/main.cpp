// tarn_bench_vector: every vector function of the roll beside its peers, on the same arrays.
#include "bench/frame.h"
#include "bench/vector/peers.h"
#include "command/functions.h"

#include <cmath>
#include <memory>
#include <random>

using namespace tarn;
using namespace tarn::bench;

namespace {

template <class T> struct Data {
  Data(int64_t n, Range range) : arrays{n, {}, {}} {
    std::mt19937_64 random(1);
    std::uniform_real_distribution<double> value(range.from, range.to);
    for (size_t i = 0; i < 2; ++i) {
      in[i].resize(static_cast<size_t>(n));
      out[i].resize(static_cast<size_t>(n));
      for (T& x : in[i]) x = static_cast<T>(value(random));
      arrays.in[i] = in[i].data();
      arrays.out[i] = out[i].data();
    }
  }
  std::vector<T> in[2], out[2];
  Arrays arrays;
};

const double scalars[4] = {1.5, 0.25, 0.75, 2};

template <class T> void compare_at(const command::Function& function, int64_t n, bool all_peers) {
  const std::string name = function.type + std::string(function.name);
  const Data<T> data(n, argument_range(std::string(function.name)));
  const Arrays& arrays = data.arrays;
  Comparison comparison{name, "n = " + std::to_string(n), "element", static_cast<double>(n), {}};
  for (size_t slot = 0; slot < 3; ++slot) {
    const tarn_kernel kernel = function.kernels[slot];
    comparison.contestants.push_back(
        {"Tarn " + std::string(command::class_names[slot]),
         [&function, &arrays, kernel] {
           const command::Arguments arguments{{arrays.in[0], arrays.in[1]}, {arrays.out[0], arrays.out[1]}, scalars};
           function.call(kernel, static_cast<int32_t>(arrays.n), arguments);
         },
         ""});
  }
  for (Peer& peer : peers(std::string(function.name), function.type, function.inputs, function.outputs)) {
    if (!all_peers && peer.name != "C library, scalar" && peer.name != "plain loop, SSE4") continue;
    comparison.contestants.push_back(
        {peer.name, [run = std::move(peer.run), &arrays] { run(arrays); }, "Tarn " + peer.rival});
  }
  compare(comparison);
}

void compare_all() {
  for (const command::Function& function : command::functions()) {
    if (!wanted(function.type + std::string(function.name))) continue;
    const auto at = [&](int64_t n, bool all_peers) {
      function.type == 's' ? compare_at<float>(function, n, all_peers) : compare_at<double>(function, n, all_peers);
    };
    at(1000, true);
    if (!quick()) at(1'000'000, true);
    for (int64_t n : {1, 2, 4, 8, 16, 32}) at(n, false); // where the frame of a kernel shows
  }
}

}

int main(int argc, char** argv) { return run_benchmarks(argc, argv, compare_all); }
