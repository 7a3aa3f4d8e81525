// The frame of all benchmarks: contestants that do the same work take turns in one process, and are told in processor
// cycles per unit of work.
//
// A clock says little on a shared machine, whose cores change their speed. So each sample stands between two runs of a
// chain of dependent integer multiplies, of three cycles each on every x86-64 processor since 2008; the chain's time
// gives the length of a cycle there and then. Of all samples of a contestant a low quantile counts: what disturbs a
// sample can only make it longer. The program goes through all comparisons several times, so that a neighbour's work
// of some seconds does not fall on one of them.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tarn::bench {

struct Contestant {
  std::string name;          // "Tarn HA", "libmvec SSE4"
  std::function<void()> run; // does the work once; may be called any number of times
  std::string rival;         // the contestant whose time is set against this one's; "" for none
};

struct Comparison {
  std::string name; // "dExp"
  std::string size; // "n = 1000"
  std::string unit; // "element": what a cycle count is given per
  double units;     // how many of them one run() does
  std::vector<Contestant> contestants;
};

// Lets the contestants take their turns of this pass. For use inside the function given to run_benchmarks.
void compare(const Comparison& comparison);

// Whether a comparison of that name is asked for; spares setting it up.
bool wanted(const std::string& name);

// Whether only a look is asked for (--quick): leave out what takes long.
bool quick();

// The main function of a benchmark program: reads the options, calls `all` once a pass, which calls compare() for each
// comparison, and prints the tables.
//   --filter REGEX     only comparisons whose name matches
//   --passes N, --repetitions N   passes, and turns of each contestant in a pass
//   --results FILE     the figures as tab-separated lines, for tools/measure_speed
//   --quick            one short turn each: whether everything runs, not how fast
int run_benchmarks(int argc, char** argv, const std::function<void()>& all);

// A value that the compiler must believe to be used.
template <class T> void keep(const T& value) { asm volatile("" : : "m"(value) : "memory"); }

}
