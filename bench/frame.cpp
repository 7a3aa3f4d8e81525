#include "bench/frame.h"

#include <benchmark/benchmark.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <map>
#include <memory>
#include <regex>
#include <x86intrin.h>

namespace tarn::bench {

namespace {

struct Settings {
  std::string filter, results;
  int passes = 4, repetitions = 3;
  bool quick = false;
} settings;

constexpr int chain_length = 2000;
constexpr double chain_cycles = 3.0 * chain_length;
constexpr double sample_cycles = 60'000; // so long that reading the counter does not matter
constexpr double quantile = 0.2;

uint64_t ticks() {
  unsigned core;
  return __rdtscp(&core);
}

// Ticks of the time-stamp counter for chain_cycles cycles of the core.
uint64_t run_chain() {
  const uint64_t start = ticks();
  uint64_t x = start | 1;
  for (int i = 0; i < chain_length / 8; ++i)
    asm volatile("imul %0, %0\n imul %0, %0\n imul %0, %0\n imul %0, %0\n"
                 "imul %0, %0\n imul %0, %0\n imul %0, %0\n imul %0, %0\n"
                 : "+r"(x));
  keep(x);
  return ticks() - start;
}

double low_quantile(std::vector<double>& values) {
  if (values.empty()) return 0;
  const auto at = values.begin() + static_cast<std::ptrdiff_t>(quantile * static_cast<double>(values.size()));
  std::nth_element(values.begin(), at, values.end());
  return *at;
}

double thread_seconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

// Cycles of `calls` runs, between two chains. A long sample may lose the processor to somebody else: of the time that
// passed, only the thread's own counts then.
double sample(const std::function<void()>& run, int64_t calls, double& seconds) {
  const uint64_t before = run_chain();
  const double own_start = thread_seconds();
  const auto clock = std::chrono::steady_clock::now();
  const uint64_t start = ticks();
  for (int64_t i = 0; i < calls; ++i) run();
  const uint64_t took = ticks() - start;
  seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - clock).count();
  const double own = (thread_seconds() - own_start) / seconds;
  const uint64_t after = run_chain();
  return static_cast<double>(took) * (own < 0.98 ? own : 1) * chain_cycles / (static_cast<double>(before + after) / 2);
}

// Takes the cycles of each turn from Google Benchmark's counters; prints nothing itself.
class Collector : public benchmark::BenchmarkReporter {
public:
  bool ReportContext(const Context&) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs)
      if (run.run_type == Run::RT_Iteration) cycles[run.run_name.function_name].push_back(run.counters.at("cycles"));
  }
  std::map<std::string, std::vector<double>> cycles;
};

// A turn: samples one after the other until Google Benchmark has seen enough.
void turn(benchmark::State& state, const Contestant& contestant, double units) {
  double seconds = 0;
  const double once = sample(contestant.run, 1, seconds); // also warms the caches
  const auto calls = std::max<int64_t>(1, static_cast<int64_t>(sample_cycles / std::max(once, 1.0)));
  std::vector<double> cycles;
  for (auto _ : state) {
    const double per_unit = sample(contestant.run, calls, seconds) / (static_cast<double>(calls) * units);
    cycles.push_back(per_unit);
    state.SetIterationTime(seconds);
  }
  state.counters["cycles"] = low_quantile(cycles);
}

// Every turn so far, by comparison and contestant.
struct Record {
  Comparison comparison; // without its functions
  std::map<std::string, std::vector<double>> turns;
};
std::vector<Record> records;

Record& record_of(const Comparison& comparison) {
  for (Record& record : records)
    if (record.comparison.name == comparison.name && record.comparison.size == comparison.size) return record;
  Record& record = records.emplace_back(Record{comparison, {}});
  for (Contestant& contestant : record.comparison.contestants) contestant.run = nullptr;
  return record;
}

void print(Record& record, std::ofstream& results) {
  const Comparison& comparison = record.comparison;
  std::map<std::string, double> cycles;
  for (auto& [name, turns] : record.turns) cycles[name] = low_quantile(turns);
  std::printf("\n%s, %s: cycles per %s\n", comparison.name.c_str(), comparison.size.c_str(), comparison.unit.c_str());
  for (const Contestant& contestant : comparison.contestants) {
    const double mine = cycles[contestant.name];
    std::printf("  %-22s %9.3f", contestant.name.c_str(), mine);
    const auto rival = cycles.find(contestant.rival);
    if (rival != cycles.end()) std::printf("   %6.2f x %s", mine / rival->second, contestant.rival.c_str());
    std::printf("\n");
    if (results.is_open())
      results << comparison.name << '\t' << comparison.size << '\t' << comparison.unit << '\t' << contestant.name
              << '\t' << contestant.rival << '\t' << mine << '\n';
  }
}

}

bool quick() { return settings.quick; }

bool wanted(const std::string& name) {
  return settings.filter.empty() || std::regex_search(name, std::regex(settings.filter));
}

void compare(const Comparison& comparison) {
  if (!wanted(comparison.name)) return;
  benchmark::ClearRegisteredBenchmarks();
  for (const Contestant& contestant : comparison.contestants)
    benchmark::RegisterBenchmark(contestant.name.c_str(),
                                 [&](benchmark::State& state) { turn(state, contestant, comparison.units); })
        ->UseManualTime()
        ->Repetitions(settings.repetitions)
        ->MinTime(settings.quick ? 1e-6 : 0.003);
  Collector collector;
  benchmark::RunSpecifiedBenchmarks(&collector, ".");
  Record& record = record_of(comparison);
  for (const auto& [name, turns] : collector.cycles)
    record.turns[name].insert(record.turns[name].end(), turns.begin(), turns.end());
}

int run_benchmarks(int argc, char** argv, const std::function<void()>& all) {
  CLI::App program("Compares implementations, in processor cycles");
  program.add_option("--filter", settings.filter, "Only comparisons whose name matches this expression");
  program.add_option("--passes", settings.passes, "How often to go through all comparisons")
      ->check(CLI::PositiveNumber)
      ->capture_default_str();
  program.add_option("--repetitions", settings.repetitions, "Turns of each contestant in a pass")
      ->check(CLI::PositiveNumber)
      ->capture_default_str();
  program.add_option("--results", settings.results, "Write the figures there, tab-separated");
  program.add_flag("--quick", settings.quick, "One short turn each, to see that everything runs");
  try {
    program.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return program.exit(error);
  }
  if (settings.quick) settings.passes = settings.repetitions = 1;

  // Google Benchmark lets the turns of all contestants alternate at random.
  std::string name = argv[0], interleave = "--benchmark_enable_random_interleaving=true";
  char* arguments[] = {name.data(), interleave.data(), nullptr};
  int count = 2;
  benchmark::Initialize(&count, arguments);
  for (int pass = 0; pass < settings.passes; ++pass) all();
  std::ofstream results;
  if (!settings.results.empty()) results.open(settings.results);
  for (Record& record : records) print(record, results);
  if (settings.results.empty()) return 0;
  results.close();
  if (results.fail()) std::fprintf(stderr, "cannot write %s\n", settings.results.c_str());
  return results.fail();
}

}
