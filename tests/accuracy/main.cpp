// tarn_accuracy: every vector function, in every class and type, against the exact value by MPFR.
#include "accuracy/claims.h"
#include "accuracy/references.h"
#include "accuracy/sweep.h"
#include "command/failure.h"
#include "command/functions.h"
#include "command/output.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <map>

using namespace tarn;
using namespace tarn::accuracy;

namespace {

struct Options {
  std::vector<std::string> functions;
  std::string types = "sdcz";
  std::string claims_folder = TARN_SOURCE_DIR "/vector";
  std::string page, data;
  SweepOptions sweep;
};

struct Row {
  const command::Function* function;
  Finding finding;
};

std::string number(double x, command::Real real = command::Real::Double) {
  std::string text;
  command::append_number(text, x, real);
  return text;
}

std::string printed(const char* format, double x) {
  char text[64];
  std::snprintf(text, sizeof text, format, x);
  return text;
}

std::string ulp_text(double ulp) { return printed(ulp < 100 ? "%.4f" : "%.3e", ulp); }

std::string bits_text(const Finding& finding) { // "-" where no normal result was off
  return std::isinf(finding.worst_bits) ? "-" : printed("%.1f", finding.worst_bits);
}

std::string argument_text(const Row& row) {
  const command::Real real = row.function->type == 's' ? command::Real::Single : command::Real::Double;
  std::string text = number(row.finding.at[0], real);
  if (row.function->inputs == 2) text += ", " + number(row.finding.at[1], real);
  return text;
}

std::string kernel_text(const Row& row) { return row.finding.claim.type_and_name + " " + row.finding.claim.class_name; }

void write(const std::string& path, const std::string& text) {
  command::Output output(path);
  output.write(text);
  output.commit();
}

std::string processor() {
  std::ifstream info("/proc/cpuinfo");
  for (std::string line; std::getline(info, line);)
    if (line.starts_with("model name")) return line.substr(line.find(':') + 2);
  return "an unknown processor";
}

// The page of the documentation.
std::string page(const std::vector<Row>& rows, const Options& options) {
  std::string text =
      "# Accuracy of the vector functions\n\n"
      "Made by `tools/measure_accuracy`; do not edit.\n\n"
      "Each kernel was compared with the exact value by MPFR: " +
      std::to_string(options.sweep.points) +
      " points a function and type (fewer where the\nexact value is slow), seed " + std::to_string(options.sweep.seed) +
      ", spread over every exponent, over the range of the claim, and dense near the\nplaces where formulas change "
      "and results vanish; then a search around the worst points for still worse ones.\n" +
      (options.sweep.exhaustive ? "Functions of one float were tried on every float there is.\n" : "") +
      "Kernels that start from the processor's own estimates (rcpps, rsqrtps) give other bits, and so other "
      "errors, on\nprocessors of other makers; these figures were taken on: " +
      processor() +
      ".\n\n"
      "An error is counted in units in the last place (ulp) of the exact result: 2^(e-52) for a double in "
      "[2^e, 2^(e+1)),\n2^(e-23) for a float, the smallest denormal for results below the normal range. The claim is "
      "the "
      "bound that stands\nwith the formula, over a range of the first argument, and that the tests hold. Bits are the "
      "correct leading bits of the\nworst normal result. Where a class shares the kernel of another, the row of that "
      "kernel counts for both.\n\n"
      "| kernel | claim (ulp) | from | to | largest error (ulp) | at | mean (ulp) | bits | points |\n"
      "|---|---|---|---|---|---|---|---|---|\n";
  for (const Row& row : rows) {
    const Finding& f = row.finding;
    text += "| " + kernel_text(row) + " | " + number(f.claim.ulp) + " | " + number(f.claim.from) + " | " +
            number(f.claim.to) + " | " + ulp_text(f.max_ulp) + " | " + argument_text(row) + " | " +
            ulp_text(f.mean_ulp) + " | " + bits_text(f) + " | " + std::to_string(f.points) + " |\n";
  }
  return text;
}

// The rows that `tarn list` shows: the largest error per kernel name and class slot.
std::string data_rows(const std::vector<Row>& rows) {
  std::string text = "// Largest and mean errors in ulp, with the argument of the largest. Made by tests/accuracy "
                     "(tools/measure_accuracy); do not edit.\n";
  std::map<const command::Function*, std::map<std::string, const Row*>> worst;
  std::vector<const command::Function*> order;
  for (const Row& row : rows) {
    if (!worst.count(row.function)) order.push_back(row.function);
    const Row*& known = worst[row.function][row.finding.claim.class_name];
    if (!known || row.finding.max_ulp > known->finding.max_ulp) known = &row;
  }
  for (const command::Function* function : order)
    for (size_t slot = 0; slot < 3; ++slot) {
      const auto serving = static_cast<size_t>(command::kernel_class(*function, static_cast<command::Class>(slot)));
      const auto found = worst[function].find(std::string(command::class_names[serving]));
      if (found == worst[function].end()) continue;
      const Row& row = *found->second;
      text += "TARN_MEASURED(" + row.finding.claim.type_and_name + ", " + std::string(command::class_names[slot]) +
              ", " + printed("%.6g", row.finding.max_ulp) + ", " + printed("%.4g", row.finding.mean_ulp) + ", \"" +
              argument_text(row) + "\")\n";
    }
  return text + "#undef TARN_MEASURED\n";
}

int measure(const Options& options) {
  const std::vector<Claim> claims = read_claims(options.claims_folder);
  std::vector<Row> rows;
  int passed = 0, failed = 0;
  const auto check = [&](bool good, const std::string& what) {
    ++(good ? passed : failed);
    if (!good) std::printf("FAILED %s\n", what.c_str());
  };
  for (const std::string& name : options.functions)
    if (const auto all = command::functions();
        std::none_of(all.begin(), all.end(), [&](const command::Function& f) { return f.name == name; }))
      throw command::Failure(command::unknown_function(name));

  for (const command::Function& function : command::functions()) {
    if (options.types.find(function.type) == std::string::npos) continue;
    if (!options.functions.empty() &&
        std::count(options.functions.begin(), options.functions.end(), function.name) == 0)
      continue;
    const std::string key = function.type + std::string(function.name);
    const Reference* reference = find_reference(function.name);
    check(reference != nullptr, key + " has no line in references.def");
    std::vector<Claim> own;
    std::copy_if(claims.begin(), claims.end(), std::back_inserter(own),
                 [&](const Claim& claim) { return claim.type_and_name == key; });
    for (size_t slot = 0; slot < 3; ++slot) {
      const std::string serving(command::class_names[static_cast<size_t>(
          command::kernel_class(function, static_cast<command::Class>(slot)))]);
      if (serving != command::class_names[slot]) continue;
      check(std::any_of(own.begin(), own.end(), [&](const Claim& claim) { return claim.class_name == serving; }),
            key + " makes no claim for its kernel of class " + serving);
    }
    if (!reference || own.empty()) continue;

    const auto start = std::chrono::steady_clock::now();
    const Sweep found = sweep(function, *reference, own, options.sweep);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    for (const std::string& fault : found.faults) check(false, key + " " + fault);
    for (const Finding& finding : found.findings) {
      const Row& row = rows.emplace_back(Row{&function, finding});
      std::printf("%-14s claim %-10s max %-11s at %-46s mean %-10s bits %5s  %lld points\n", kernel_text(row).c_str(),
                  number(finding.claim.ulp).c_str(), ulp_text(finding.max_ulp).c_str(), argument_text(row).c_str(),
                  ulp_text(finding.mean_ulp).c_str(), bits_text(finding).c_str(),
                  static_cast<long long>(finding.points));
      check(finding.points > 0, kernel_text(row) + ": no point fell into the range of the claim");
      check(finding.holds(), kernel_text(row) + ": " + ulp_text(finding.max_ulp) + " ulp at " + argument_text(row) +
                                 " where " + number(finding.claim.ulp) + " are claimed in " + finding.claim.file);
    }
    std::printf("%-14s %.2f s\n", key.c_str(), seconds);
  }
  if (!options.page.empty()) write(options.page, page(rows, options));
  if (!options.data.empty()) write(options.data, data_rows(rows));
  std::printf("%d passed, %d failed\n", passed, failed);
  return failed || !passed;
}

}

int main(int argc, char** argv) {
  CLI::App program("Measures the vector functions against MPFR and holds the claims of their formulas");
  Options options;
  program.add_option("--function", options.functions, "Only these functions; repeatable")->allow_extra_args(false);
  program.add_option("--type", options.types, "Only these types, such as d or sd");
  program.add_option("--points", options.sweep.points, "Points a function and type")->check(CLI::PositiveNumber);
  program.add_option("--seed", options.sweep.seed, "Another sequence of points");
  program.add_option("--threads", options.sweep.threads)->check(CLI::Range(1, 256));
  program.add_flag("--exhaustive", options.sweep.exhaustive, "Every float, for functions of one float");
  program.add_option("--claims", options.claims_folder, "Where the formula files are");
  program.add_option("--page", options.page, "Write the page of the documentation there");
  program.add_option("--data", options.data, "Write the rows for tarn list there");
  try {
    program.parse(argc, argv);
    return measure(options);
  } catch (const CLI::ParseError& error) {
    return program.exit(error);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "tarn_accuracy: %s\n", error.what());
    return 2;
  }
}
