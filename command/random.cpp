// tarn random: numbers of any basic generator, as uniform values or as bits. The stream may be made from seeds or read
// from an image, narrowed by leapfrog, moved on, and saved for the next run.
#include "command/failure.h"
#include "command/options.h"
#include "command/output.h"
#include "command/subcommands.h"

#include "tarn/random.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

namespace tarn::command {

namespace {

struct Generator {
  const char* name;
  int32_t brng;
};

// Those that can be made from seed words.
constexpr Generator generators[] = {{"MCG31M1", 0x100000},       {"R250", 0x200000},    {"MRG32K3A", 0x300000},
                                    {"MCG59", 0x400000},         {"WH", 0x500000},      {"Sobol", 0x600000},
                                    {"Niederr", 0x700000},       {"MT19937", 0x800000}, {"MT2203", 0x900000},
                                    {"SFMT19937", 0xD00000},     {"TRNG", 0xE00000},    {"ARS5", 0xF00000},
                                    {"PHILOX4X32X10", 0x1000000}};

struct RandomOptions {
  std::string generator = "MT19937", load, save;
  int32_t member = 0;
  std::vector<uint32_t> seeds = {1};
  std::vector<int32_t> leapfrog; // k, n
  uint64_t skip = 0;
  uint64_t count = 10;
  double lower = 0, upper = 1;
  std::string type = "d";
  OutputOptions output;
};

struct StreamDeleter {
  void operator()(tarn_stream* stream) const { __kestDeleteStream(&stream); }
};
using StreamPtr = std::unique_ptr<tarn_stream, StreamDeleter>;

void check(int32_t status, const std::string& what) {
  if (status != TARN_RANDOM_OK) throw Failure("cannot " + what + " (status " + std::to_string(status) + ")");
}

StreamPtr make_stream(const RandomOptions& options) {
  tarn_stream* stream = nullptr;
  if (!options.load.empty()) {
    check(__kestLoadStreamF(&stream, options.load.c_str(), -1), "load a stream from " + options.load);
  } else {
    const auto* chosen = std::find_if(std::begin(generators), std::end(generators),
                                      [&](const Generator& g) { return options.generator == g.name; });
    const int32_t status = __kestNewStreamEx(&stream, chosen->brng + options.member,
                                             static_cast<int32_t>(options.seeds.size()), options.seeds.data());
    if (status != TARN_RANDOM_OK && stream) __kestDeleteStream(&stream);
    check(status, "make a stream of " + options.generator + ", member " + std::to_string(options.member));
  }
  StreamPtr made(stream);
  if (!options.leapfrog.empty() && options.leapfrog[1] == 0) throw Failure("--leapfrog takes an N of 1 or above");
  if (!options.leapfrog.empty())
    check(__kestLeapfrogStream(stream, options.leapfrog[0], options.leapfrog[1]), "leapfrog this generator");
  if (options.skip != 0)
    check(__kestSkipAheadStream(stream, static_cast<int64_t>(options.skip)), "skip ahead in this generator");
  return made;
}

// A line on the terminal, while a long output goes elsewhere.
class Progress {
public:
  Progress(uint64_t total_, bool to_terminal) : total(total_), shown(!to_terminal && isatty(2) && total_ >= kLong) {}
  void tell(uint64_t done) {
    const uint64_t now = done * 100 / total;
    if (!shown || now == percent) return;
    percent = now;
    std::fprintf(stderr, "\rtarn: %3u %%", static_cast<unsigned>(percent));
    if (done == total) std::fputc('\n', stderr);
  }

private:
  static constexpr uint64_t kLong = 10'000'000;
  uint64_t total, percent = 0;
  bool shown;
};

constexpr uint64_t kSlice = 8192;

// fill(n) gives n values as bytes of the output.
template <class Fill> void write_all(const RandomOptions& options, Fill fill) {
  check_distinct({options.output.path, options.save});
  const StreamPtr stream = make_stream(options);
  tarn_brng_properties row;
  __kestGetBrngProperties(stream->brng, &row);
  Output output(options.output.path);
  if (options.output.format == "binary" && output.is_terminal())
    throw Failure("binary output is not for a terminal; name a file with --output");
  Progress progress(options.count, output.is_terminal());
  for (uint64_t done = 0; done < options.count;) {
    const auto n = static_cast<int32_t>(std::min(kSlice, options.count - done));
    output.write(fill(stream.get(), row, n));
    done += static_cast<uint64_t>(n);
    progress.tell(done);
  }
  if (!options.save.empty()) {
    Output image(options.save);
    std::string bytes(static_cast<size_t>(__kestGetStreamSize(stream.get())), '\0');
    check(__kestSaveStreamM(stream.get(), bytes.data()), "save " + options.save);
    image.write(bytes);
    image.flush();
    output.commit();
    image.commit();
  } else {
    output.commit();
  }
}

template <class Value> std::string as_bytes(const std::vector<Value>& values) {
  return std::string(reinterpret_cast<const char*>(values.data()), values.size() * sizeof(Value));
}

template <class Value>
std::string uniform(const RandomOptions& options, tarn_stream* stream, const tarn_brng_properties& row, int32_t n) {
  std::vector<Value> r(static_cast<size_t>(n));
  int32_t status;
  if constexpr (sizeof(Value) == sizeof(double))
    status = row.dBRng(stream, n, r.data(), options.lower, options.upper);
  else
    status = row.sBRng(stream, n, r.data(), static_cast<float>(options.lower), static_cast<float>(options.upper));
  check(status, "draw from this generator");
  if (options.output.format == "binary") return as_bytes(r);
  std::string text;
  for (Value x : r) {
    append_number(text, static_cast<double>(x), sizeof(Value) == sizeof(double) ? Real::Double : Real::Single);
    text += '\n';
  }
  return text;
}

// One element a line: its words in hexadecimal, the highest first.
std::string bits(const RandomOptions& options, tarn_stream* stream, const tarn_brng_properties& row, int32_t n) {
  const auto words = static_cast<size_t>(row.WordSize / 4);
  std::vector<uint32_t> r(words * static_cast<size_t>(n));
  check(row.iBRng(stream, n, r.data()), "draw from this generator");
  if (options.output.format == "binary") return as_bytes(r);
  std::string text;
  for (size_t k = 0; k < r.size(); k += words) {
    for (size_t w = words; w-- > 0;) {
      char word[9];
      std::snprintf(word, sizeof word, "%08x", r[k + w]);
      text += word;
    }
    text += '\n';
  }
  return text;
}

// CLI11 takes -5 for an unsigned number, too, and what is too large for the largest.
CLI::Validator whole_number() {
  return {[](std::string& text) {
            uint64_t value = 0;
            const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
            return error == std::errc{} && end == text.data() + text.size()
                       ? std::string()
                       : text + " is not a whole number from 0 to 18446744073709551615";
          },
          "", "whole_number"};
}

void add_common(CLI::App& sub, RandomOptions& options) {
  std::vector<std::string> names;
  for (const Generator& g : generators) names.emplace_back(g.name);
  auto* generator = sub.add_option("-g,--generator", options.generator, "the basic generator")
                        ->check(CLI::IsMember(names))
                        ->capture_default_str();
  auto* member = sub.add_option("--member", options.member, "member of the family: WH 0 to 272, MT2203 0 to 6023")
                     ->check(CLI::Range(0, 0xFFFFF));
  auto* seeds = sub.add_option("-s,--seed", options.seeds, "seed words; for Sobol and Niederr the dimension first");
  sub.add_option("--load", options.load, "go on with the stream of this image")
      ->check(not_empty())
      ->excludes(generator)
      ->excludes(member)
      ->excludes(seeds);
  sub.add_option("--save", options.save, "write the image of the stream as it stands at the end")->check(not_empty());
  sub.add_option("--leapfrog", options.leapfrog,
                 "K N: every N-th number from number K on; of Sobol and Niederr, coordinate K of "
                 "every point, with N 2147483647")
      ->expected(2)
      ->check(CLI::Range(int32_t(0), std::numeric_limits<int32_t>::max()));
  sub.add_option("--skip", options.skip, "numbers to leave out first, after the leapfrog")->check(whole_number());
  sub.add_option("-n,--count", options.count, "how many numbers")->check(whole_number())->capture_default_str();
  sub.add_option("-o,--output", options.output.path, "File to write; - is standard output")
      ->check(not_empty())
      ->capture_default_str();
  sub.add_option("--to", options.output.format, "text or binary")
      ->check(CLI::IsMember({"text", "binary"}))
      ->capture_default_str();
}

}

void add_random(CLI::App& program) {
  auto options = std::make_shared<RandomOptions>();
  CLI::App* random = program.add_subcommand("random", "Numbers of a random or quasi-random generator");
  random->require_subcommand(1);

  CLI::App* values = random->add_subcommand("uniform", "values between two limits");
  add_common(*values, *options);
  values->add_option("-a,--lower", options->lower, "the lower limit")->check(finite())->capture_default_str();
  values->add_option("-b,--upper", options->upper, "the upper limit")->check(finite())->capture_default_str();
  values->add_option("-t,--type", options->type, "d or s")->check(CLI::IsMember({"d", "s"}))->capture_default_str();
  values->callback([options] {
    const bool single = options->type == "s";
    const double width = single ? static_cast<float>(options->upper) - static_cast<float>(options->lower)
                                : options->upper - options->lower;
    if (!(width > 0) || !std::isfinite(width))
      throw Failure("the lower limit must be below the upper one, by a width that is finite in type " + options->type);
    write_all(*options, [&](tarn_stream* stream, const tarn_brng_properties& row, int32_t n) {
      return options->type == "d" ? uniform<double>(*options, stream, row, n)
                                  : uniform<float>(*options, stream, row, n);
    });
  });

  CLI::App* raw = random->add_subcommand("bits", "the generator's integers, as hexadecimal lines or raw words");
  add_common(*raw, *options);
  raw->callback([options] {
    write_all(*options, [&](tarn_stream* stream, const tarn_brng_properties& row, int32_t n) {
      return bits(*options, stream, row, n);
    });
  });
}

}
