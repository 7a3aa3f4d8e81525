// tarn eval: one vector function over the numbers of a file, as a careful caller of the library would do it. Arguments
// are checked here, since the library trusts its caller; long input is cut into slices for OpenMP's threads, whose
// state the library keeps per thread: each slice runs under the mode of the calling thread, collects its own reports
// and hands back its status.
#include "command/failure.h"
#include "command/functions.h"
#include "command/options.h"
#include "command/subcommands.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <omp.h>

namespace tarn::command {

namespace {

struct EvalOptions {
  std::string function;
  std::string type = "d";
  std::string accuracy; // empty: the mode decides
  std::vector<std::string> scalar_texts;
  std::vector<double> scalars;
  int threads = 0;
  int64_t reports = 20;
  bool strict = false;
  InputOptions input;
  OutputOptions output;
};

struct Report {
  int32_t code;
  int32_t index; // in the whole vector
  double argument[2], result[2];
};

struct Reports {
  std::vector<Report> first; // as many as are to be shown
  int64_t count = 0;
};

// What the callback of this thread writes to.
thread_local Reports* collecting = nullptr;

int32_t collect(ErrorContext* context) {
  ++collecting->count;
  std::vector<Report>& first = collecting->first;
  if (first.size() < first.capacity())
    first.push_back({context->code, context->index, {context->arg1, context->arg2}, {context->res1, context->res2}});
  return 0;
}

constexpr uint32_t error_field = 0xFF00, callback_bit = 0x1000, ignore_only = 0x100;

// The calling thread's mode, callback, vector pointer and status for the length of a slice.
class SliceState {
public:
  SliceState(uint32_t mode, const void* start, Reports& reports) : with_callback((mode & callback_bit) != 0) {
    old_mode = tarn_lume_kernel_SetMode(mode);
    if (with_callback) old_callback = tarn_lume_kernel_SetErrorCallBack(collect);
    tarn_lume_kernel_SetInterfInputVectorPointer(start);
    old_status = tarn_lume_kernel_ClearErrStatus();
    collecting = &reports;
  }
  ~SliceState() {
    collecting = nullptr;
    tarn_lume_kernel_SetErrStatus(old_status);
    tarn_lume_kernel_SetInterfInputVectorPointer(nullptr);
    if (with_callback) tarn_lume_kernel_SetErrorCallBack(old_callback);
    tarn_lume_kernel_SetMode(old_mode);
  }
  SliceState(const SliceState&) = delete;
  SliceState& operator=(const SliceState&) = delete;

private:
  bool with_callback;
  uint32_t old_mode;
  ErrorCallback old_callback = nullptr;
  int32_t old_status;
};

struct Slice {
  int32_t first, count;
  Reports reports;
  int32_t status = 0;
};

// Cuts n elements so that a slice is worth a thread's start and there are a few slices a thread; a boundary never
// divides a cache line of the result.
std::vector<Slice> slices(int32_t n, float cost, int threads, size_t shown) {
  constexpr double worth_a_slice = 200'000; // in units of the cost table, some tens of microseconds
  constexpr int32_t grain = 64;
  constexpr int slices_a_thread = 4;
  const double most = std::max(1.0, static_cast<double>(n) * static_cast<double>(cost) / worth_a_slice);
  const int64_t count = threads == 1 ? 1 : static_cast<int64_t>(std::min<double>(most, threads * slices_a_thread));
  const int64_t step = (((n + count - 1) / count) + grain - 1) / grain * grain;
  std::vector<Slice> cut;
  for (int64_t first = 0; first < n; first += step) {
    Slice& slice = cut.emplace_back();
    slice.first = static_cast<int32_t>(first);
    slice.count = static_cast<int32_t>(std::min<int64_t>(step, n - first));
    slice.reports.first.reserve(shown);
  }
  return cut;
}

// Arrays of the function's element type.
struct Buffer {
  std::unique_ptr<char[]> memory;
  char* start = nullptr;
  size_t element;
  Buffer(int64_t n, size_t element_size)
      : memory(std::make_unique<char[]>(static_cast<size_t>(n) * element_size + 64)), element(element_size) {
    start = memory.get() + (64 - reinterpret_cast<uintptr_t>(memory.get()) % 64) % 64;
  }
  void set(int64_t i, double value) {
    if (element == sizeof(float)) {
      const float single = static_cast<float>(value);
      std::memcpy(start + i * sizeof single, &single, sizeof single);
    } else {
      std::memcpy(start + i * sizeof value, &value, sizeof value);
    }
  }
  double get(int64_t i) const {
    float single;
    double value;
    if (element == sizeof(float)) {
      std::memcpy(&single, start + i * sizeof single, sizeof single);
      return single;
    }
    std::memcpy(&value, start + i * sizeof value, sizeof value);
    return value;
  }
};

std::string_view status_text(int32_t code) {
  switch (code) {
  case 1: return "argument outside the domain";
  case 2: return "singularity";
  case 3: return "overflow";
  case 4: return "underflow";
  default: return "unknown status";
  }
}

std::string call_text(const Function& function, const double* arguments, Real real) {
  std::string text = std::string(function.name) + "(";
  for (int i = 0; i < function.inputs; ++i) {
    if (i) text += ", ";
    append_number(text, arguments[i], real);
  }
  return text + ")";
}

class Evaluation {
public:
  Evaluation(const EvalOptions& eval_options, const Function& called, Table&& read)
      : options(eval_options), function(called), table(std::move(read)) {
    for (int64_t row = 0; row < table.rows(); ++row) {
      const bool complete = std::none_of(table.columns.begin(), table.columns.end(),
                                         [&](const Column& c) { return c.missing[static_cast<size_t>(row)]; });
      if (complete) rows.push_back(row);
    }
    if (rows.size() > std::numeric_limits<int32_t>::max())
      throw Failure(table.source + " holds more rows than the library can count (2147483647)");
    const size_t element = options.input.real == Real::Double ? sizeof(double) : sizeof(float);
    const auto n = static_cast<int64_t>(rows.size());
    for (const Column& column : table.columns) {
      Buffer& buffer = in.emplace_back(n, element);
      for (int64_t i = 0; i < n; ++i) buffer.set(i, column.values[static_cast<size_t>(rows[static_cast<size_t>(i)])]);
    }
    for (int i = 0; i < function.outputs; ++i) out.emplace_back(n, element);
  }

  void run() {
    if (!options.accuracy.empty()) {
      const auto* chosen = std::find(std::begin(class_names), std::end(class_names), options.accuracy);
      tarn_lume_kernel_SetMode(static_cast<uint32_t>(chosen - std::begin(class_names)) + 1);
    }
    const int32_t slot = tarn_lume_kernel_GetTTableIndex();
    if (slot < 0 || slot > 2) throw Failure("the mode's accuracy field is none of LA, HA, EP");
    mode = tarn_lume_kernel_GetMode();

    const int threads = options.threads ? options.threads : omp_get_max_threads();
    const auto n = static_cast<int32_t>(rows.size());
    cut = slices(n, function.costs[slot], threads, static_cast<size_t>(options.reports));
    const auto count = static_cast<int64_t>(cut.size());
    const auto team = static_cast<int>(std::clamp<int64_t>(count, 1, threads));
#pragma omp parallel for schedule(dynamic, 1) num_threads(team)
    for (int64_t i = 0; i < count; ++i) run_slice(cut[static_cast<size_t>(i)], function.kernels[slot]);
    for (const Slice& slice : cut)
      if (slice.status) tarn_lume_kernel_SetErrStatus(slice.status);
  }

  // Tells on standard error which lines went wrong, in their order.
  void tell() const {
    int64_t shown = 0, count = 0;
    for (const Slice& slice : cut) {
      count += slice.reports.count;
      for (const Report& report : slice.reports.first)
        if (shown < options.reports) {
          tell(report);
          ++shown;
        }
    }
    if (count > shown) std::fprintf(stderr, "tarn: %lld reports in all\n", static_cast<long long>(count));
    const int32_t status = tarn_lume_kernel_GetErrStatus();
    if (count == 0 && status && !(mode & callback_bit) && (mode & error_field) != ignore_only)
      std::fprintf(stderr, "tarn: %s: last report: %s\n", table.source.c_str(), status_text(status).data());
    if (options.strict && status) throw Failure("elements were reported; with --strict nothing is written");
  }

  void write() const {
    const Real real = options.input.real;
    const bool csv = options.output.format == "csv";
    std::vector<std::string> names;
    std::string call = std::string(function.name) + "(";
    for (size_t i = 0; i < table.columns.size(); ++i) {
      std::string name = table.columns[i].name;
      if (name.empty()) name = std::string(1, static_cast<char>('a' + i));
      call += (i ? ", " : "") + name;
      names.push_back(std::move(name));
    }
    call += ")";
    for (int i = 0; i < function.outputs; ++i)
      names.push_back(function.outputs == 1 ? call : call + "[" + std::to_string(i + 1) + "]");

    RowWriter writer(options.output, real, names);
    size_t next = 0; // among the complete rows
    for (int64_t row = 0; row < table.rows(); ++row) {
      const bool complete = next < rows.size() && rows[next] == row;
      if (csv)
        for (const Column& column : table.columns) {
          const auto at = static_cast<size_t>(row);
          column.missing[at] ? writer.missing() : writer.number(column.values[at]);
        }
      for (const Buffer& result : out)
        complete ? writer.number(result.get(static_cast<int64_t>(next))) : writer.missing();
      if (complete) ++next;
      writer.end_row();
    }
    writer.commit();
  }

private:
  void run_slice(Slice& slice, tarn_kernel kernel) {
    Arguments arguments{};
    const auto place = [&](const Buffer& buffer) {
      return buffer.start + static_cast<size_t>(slice.first) * buffer.element;
    };
    for (size_t i = 0; i < in.size(); ++i) arguments.in[i] = place(in[i]);
    for (size_t i = 0; i < out.size(); ++i) arguments.out[i] = place(out[i]);
    arguments.scalars = options.scalars.data();
    const SliceState state(mode, in[0].start, slice.reports);
    function.call(kernel, slice.count, arguments);
    slice.status = tarn_lume_kernel_GetErrStatus();
  }

  void tell(const Report& report) const {
    const int64_t line = table.lines[static_cast<size_t>(rows[static_cast<size_t>(report.index)])];
    std::string text = "tarn: " + table.source + ", line " + std::to_string(line) + ": " +
                       call_text(function, report.argument, options.input.real) + ": " +
                       std::string(status_text(report.code)) + "; result ";
    for (int i = 0; i < function.outputs; ++i) {
      if (i) text += ", ";
      append_number(text, report.result[i], options.input.real);
    }
    std::fprintf(stderr, "%s\n", text.c_str());
  }

  const EvalOptions& options;
  const Function& function;
  Table table;
  std::vector<int64_t> rows; // those without a missing cell, in the order of the vectors
  std::vector<Buffer> in, out;
  std::vector<Slice> cut;
  uint32_t mode = 0;
};

void eval(EvalOptions& options) {
  const Function* function = find_function(options.function, options.type[0]);
  if (!function) {
    const auto all = functions();
    const bool known =
        std::any_of(all.begin(), all.end(), [&](const Function& f) { return f.name == options.function; });
    throw Failure(known ? options.function + " has no type " + options.type : unknown_function(options.function));
  }
  options.input.real = options.type == "s" ? Real::Single : Real::Double;
  for (const std::string& text : options.scalar_texts)
    if (!parse_number(text, options.input.real, options.scalars.emplace_back()))
      throw Failure("--scalar: \"" + text + "\" is not a number of type " + options.type);
  if (options.scalars.size() != static_cast<size_t>(function->scalars))
    throw Failure("--scalar: " + std::to_string(options.scalars.size()) + " given, " +
                  std::to_string(function->scalars) + " needed");
  Evaluation evaluation(options, *function, read_table(options.input, function->inputs));
  evaluation.run();
  evaluation.tell();
  evaluation.write();
}

constexpr const char* examples = R"(
Reads numbers, applies FUNCTION to each and writes one result a line, with the digits that read back to the same bits.
A missing cell (empty or NA) stays missing. Elements outside the domain and the like are told on standard error, with
the line they came from, and get NaN, an infinity or zero as the function defines. A function of two arguments takes
two columns; one of two results writes two.

The accuracy is the mode's, which TARN_VM_MODE sets (LUME_LA, LUME_HA, LUME_EP), and HA where nothing is set.

Examples:
  echo 0 1 2.5 | tarn eval Exp
  tarn eval Ln --column Ozone air-quality.csv
  tarn eval Ln --column Ozone --to csv -o ln.csv air-quality.csv
  tarn eval Exp --class EP --type s --to binary -o out.f32 in.f32
  TARN_VM_MODE=LUME_LA tarn eval Exp numbers.txt
)";

}

void add_eval(CLI::App& program) {
  CLI::App* eval_command = program.add_subcommand("eval", "Apply a vector function to numbers");
  auto options = std::make_shared<EvalOptions>();
  eval_command->add_option("function", options->function, "Its name, such as Exp; tarn list shows all")->required();
  add_input_options(*eval_command, options->input);
  eval_command->add_option("--class", options->accuracy, "Accuracy: LA, HA or EP; overrides the mode")
      ->check(CLI::IsMember({"LA", "HA", "EP"}));
  eval_command->add_option("--type", options->type, "Element type: d double, s float")
      ->check(CLI::IsMember({"d", "s"}))
      ->capture_default_str();
  eval_command
      ->add_option(
          "--scalar", options->scalar_texts,
          "A value given once, in the order of the arguments: scalea, shifta, scaleb, shiftb of LinearFrac; repeatable")
      ->allow_extra_args(false);
  add_output_options(*eval_command, options->output);
  eval_command->add_option("--threads", options->threads, "Threads for long input; 0: as many as OpenMP would use")
      ->check(CLI::Range(0, 4096));
  eval_command->add_option("--reports", options->reports, "How many reports to print before only counting")
      ->check(CLI::Range(0, 1'000'000))
      ->capture_default_str();
  eval_command->add_flag("--strict", options->strict, "Fail, and write nothing, when any element is reported");
  eval_command->footer(examples);
  eval_command->callback([options] { eval(*options); });
}

}
