// tarn stats: summary statistics of a table. What fits into one block gets exact quantiles; a longer file passes block
// by block through the library's continuation and its quantile sketch.
#include "tarn/stats.h"
#include "command/failure.h"
#include "command/options.h"
#include "command/output.h"
#include "command/stats_pictures.h"
#include "command/subcommands.h"
#include "command/table_blocks.h"
#include "tarn/openmp_threader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>
#include <memory>
#include <omp.h>
#include <random>
#include <unistd.h>

namespace tarn::command {

namespace {

struct StatsOptions {
  InputOptions input;
  std::string weights, output = "-", format = "text", histogram, scatter;
  std::vector<double> orders = {0.25, 0.5, 0.75};
  double epsilon = 0.001;
  int64_t block = int64_t(64) << 20;
  int threads = 0;
  bool fast = false, moments_only = false;
};

void check(int32_t status) {
  if (status == TARN_SS_ERROR_ALLOCATION) throw std::bad_alloc();
  if (status != 0) throw Failure("the library refuses with status " + std::to_string(status));
}

// A task of the library over blocks of p variables, row by row, with the arrays that its estimates need.
class Task {
public:
  Task(int64_t variables, bool weighted) : p(variables), with_weights(weighted) {
    check(__kestdSSNewTask(&task, &p, &n, &storage, nullptr, nullptr, nullptr, 1));
    __kestdSSEditTask(task, 23, weight_sums.data());
  }
  ~Task() { __kestSSDeleteTask(&task); }
  Task(const Task&) = delete;
  Task& operator=(const Task&) = delete;

  void turn_to(const std::vector<double>& data, const std::vector<double>& weights) {
    n = static_cast<int64_t>(data.size()) / p;
    __kestdSSEditTask(task, 3, data.data());
    if (with_weights) __kestdSSEditTask(task, 6, weights.data());
  }
  void basic(uint64_t estimates, uint64_t method) {
    check(_kestdSSBasic(task, estimates, method, tarn_openmp_threader()));
  }
  double weight() const { return weight_sums[0]; }
  void* get() { return task; }

private:
  void* task = nullptr;
  int64_t p, n = 0, storage = TARN_SS_STORAGE_COLUMNS;
  bool with_weights;
  std::array<double, 2> weight_sums{};
};

// One variable: everything but what needs several.
class Variable {
public:
  Variable(std::string variable_name, const StatsOptions& stats_options, bool weighted)
      : name(std::move(variable_name)), options(stats_options), task(1, weighted),
        quantiles(options.orders.size(), std::numeric_limits<double>::quiet_NaN()),
        order_count(static_cast<int64_t>(options.orders.size())) {
    void* record = task.get();
    __kestdSSEditMoments(record, &mean, &raw[0], &raw[1], &raw[2], &variance, &third, &fourth);
    __kestdSSEditTask(record, 14, &kurtosis);
    __kestdSSEditTask(record, 15, &skewness);
    __kestdSSEditTask(record, 16, &minimum);
    __kestdSSEditTask(record, 17, &maximum);
    __kestdSSEditQuantiles(record, &order_count, options.orders.data(), quantiles.data(), nullptr, nullptr);
    __kestdSSEditStreamQuantiles(record, &order_count, options.orders.data(), quantiles.data(), &one, &options.epsilon);
  }

  void take(const std::vector<double>& values, const std::vector<double>& weights, bool whole) {
    if (values.empty()) return;
    count += static_cast<int64_t>(values.size());
    task.turn_to(values, weights);
    task.basic(TARN_SS_MEAN | TARN_SS_CENTRAL_MOMENT_2 | TARN_SS_CENTRAL_MOMENT_3 | TARN_SS_KURTOSIS | TARN_SS_SKEWNESS,
               options.fast ? TARN_SS_METHOD_FAST : TARN_SS_METHOD_ONE_PASS);
    check(_kestdSSMinmax(task.get(), TARN_SS_MINIMUM | TARN_SS_MAXIMUM, TARN_SS_METHOD_FAST, tarn_openmp_threader()));
    if (whole) {
      check(_kestdSSQuantiles(task.get(), TARN_SS_QUANTILES, TARN_SS_METHOD_FAST, tarn_openmp_threader()));
    } else {
      check(_kestdSSStreamQuantiles(task.get(), 0, TARN_SS_METHOD_STREAM_QUERY, tarn_openmp_threader()));
    }
  }

  std::string name;
  int64_t count = 0, missing = 0;
  double mean = NAN, variance = NAN, third = NAN, fourth = NAN, kurtosis = NAN, skewness = NAN;
  double minimum = INFINITY, maximum = -INFINITY;

private:
  const StatsOptions& options;
  double raw[3] = {};
  Task task;

public:
  std::vector<double> quantiles;
  double weight() const { return task.weight(); }

private:
  int64_t order_count, one = 1;
};

// All variables together, over the rows in which none is missing.
class Matrices {
public:
  Matrices(int64_t variables, const StatsOptions& stats_options, bool weighted)
      : p(variables), options(stats_options), task(p, weighted), covariance(static_cast<size_t>(p * p), NAN),
        correlation(static_cast<size_t>(p * p), NAN), mean(static_cast<size_t>(p)) {
    __kestdSSEditCovCor(task.get(), mean.data(), covariance.data(), &full, correlation.data(), &full);
  }
  void take(const std::vector<double>& rows, const std::vector<double>& weights) {
    if (rows.empty()) return;
    count += static_cast<int64_t>(rows.size()) / p;
    task.turn_to(rows, weights);
    task.basic(TARN_SS_COVARIANCE | TARN_SS_CORRELATION, options.fast ? TARN_SS_METHOD_FAST : TARN_SS_METHOD_ONE_PASS);
  }
  int64_t p, count = 0;

private:
  const StatsOptions& options;
  int64_t full = TARN_SS_MATRIX_FULL;
  Task task;

public:
  std::vector<double> covariance, correlation;

private:
  std::vector<double> mean;
};

// Up to `most` rows, each row of the input equally likely to be among them (Vitter's algorithm R).
class Reservoir {
public:
  static constexpr size_t most = 4000;
  void take(const std::vector<double>& row) {
    ++seen;
    if (rows.size() < most) {
      rows.push_back(row);
    } else if (const size_t place = std::uniform_int_distribution<size_t>(0, seen - 1)(random); place < most) {
      rows[place] = row;
    }
  }
  std::vector<std::vector<double>> rows;
  size_t seen = 0;

private:
  std::mt19937_64 random{1};
};

class Summary {
public:
  explicit Summary(const StatsOptions& stats_options) : options(stats_options) {}

  void read() {
    TableBlocks blocks(input_with_weights(), options.block);
    const bool bar = isatty(STDERR_FILENO) != 0;
    Table table;
    bool first = true;
    while (blocks.next(table)) {
      if (first) set_up(table);
      first = false;
      whole = variables.front()->count == 0 && !streaming && blocks.at_end();
      streaming = streaming || !whole;
      take(table);
      if (bar && streaming && blocks.progress() >= 0) show_progress(blocks.progress());
    }
    if (bar && streaming) std::fputs("\r\033[K", stderr);
  }

  std::string text() const;
  std::string csv() const;
  std::string json() const;
  std::string histograms() const { return draw_histograms(samples(), note()); }
  std::string scatter() const { return draw_scatter_matrix(samples(), note()); }

private:
  // The weights are read as one more column.
  InputOptions input_with_weights() const {
    InputOptions input = options.input;
    if (!options.weights.empty() && !input.columns.empty()) input.columns.push_back(options.weights);
    return input;
  }

  void set_up(const Table& table) {
    weight_column = table.columns.size();
    const std::vector<std::string>& chosen = options.input.columns;
    if (!options.weights.empty() && !chosen.empty()) {
      weight_column = table.columns.size() - 1;
    } else if (!options.weights.empty()) {
      std::vector<std::string_view> names;
      for (const Column& column : table.columns) names.emplace_back(column.name);
      weight_column = find_column(names, names.size(), options.weights, table.source);
      if (weight_column == no_column)
        throw Failure(table.source + ": no column \"" + options.weights + "\" for the weights");
    }
    const bool weighted = weight_column < table.columns.size();
    for (size_t i = 0; i < table.columns.size(); ++i) {
      if (i == weight_column) continue;
      const std::string& name = table.columns[i].name;
      variables.push_back(std::make_unique<Variable>(
          name.empty() ? "column " + (chosen.empty() ? std::to_string(i + 1) : chosen[i]) : name, options, weighted));
    }
    if (variables.empty()) throw Failure(table.source + ": no variable beside the weights");
    if (variables.size() > 1 && !options.moments_only)
      matrices = std::make_unique<Matrices>(static_cast<int64_t>(variables.size()), options, weighted);
  }

  void take(const Table& table) {
    std::vector<const Column*> columns;
    const Column* weights = nullptr;
    for (size_t i = 0; i < table.columns.size(); ++i)
      (i == weight_column ? weights : columns.emplace_back()) = &table.columns[i];
    const size_t rows = static_cast<size_t>(table.rows());
    const auto usable = [&](size_t row) {
      if (!weights) return true;
      if (weights->missing[row]) return false;
      if (!(weights->values[row] >= 0) || std::isinf(weights->values[row]))
        throw Failure(table.source + ", line " + std::to_string(table.lines[row]) +
                      ": a weight must be a number of 0 or above");
      return true;
    };
    std::vector<double> values, value_weights;
    for (size_t j = 0; j < columns.size(); ++j) {
      values.clear();
      value_weights.clear();
      for (size_t row = 0; row < rows; ++row) {
        if (!usable(row) || columns[j]->missing[row]) {
          ++variables[j]->missing;
          continue;
        }
        values.push_back(columns[j]->values[row]);
        if (weights) value_weights.push_back(weights->values[row]);
      }
      variables[j]->take(values, value_weights, whole);
    }
    values.clear();
    value_weights.clear();
    std::vector<double> one_row(columns.size());
    for (size_t row = 0; row < rows; ++row) {
      if (!usable(row)) continue;
      bool complete = true;
      for (size_t j = 0; j < columns.size(); ++j) {
        one_row[j] = columns[j]->values[row];
        complete = complete && !columns[j]->missing[row];
      }
      if (!options.histogram.empty() || !options.scatter.empty()) shown.take(one_row);
      if (!complete || !matrices) continue;
      values.insert(values.end(), one_row.begin(), one_row.end());
      if (weights) value_weights.push_back(weights->values[row]);
    }
    if (matrices) matrices->take(values, value_weights);
  }

  static void show_progress(double part) {
    constexpr int width = 40;
    const int done = static_cast<int>(part * width);
    std::fprintf(stderr, "\r[%.*s%*s] %3.0f%%", done, "########################################", width - done, "",
                 100 * part);
    std::fflush(stderr);
  }

  std::vector<Sample> samples() const;
  std::string note() const;

  struct Figure {
    std::string name;
    double value;
  };
  std::vector<Figure> figures(const Variable& v) const {
    std::vector<Figure> list = {{"mean", v.mean},         {"sd", std::sqrt(v.variance)}, {"variance", v.variance},
                                {"skewness", v.skewness}, {"kurtosis", v.kurtosis},      {"min", v.minimum}};
    if (v.count == 0) list.back().value = NAN;
    for (size_t k = 0; k < options.orders.size(); ++k) {
      std::string name = "q";
      append_number(name, options.orders[k], Real::Double);
      list.push_back({name, v.quantiles[k]});
    }
    list.push_back({"max", v.count ? v.maximum : NAN});
    return list;
  }

  const StatsOptions& options;
  std::vector<std::unique_ptr<Variable>> variables;
  std::unique_ptr<Matrices> matrices;
  Reservoir shown;
  size_t weight_column = 0;
  bool whole = false, streaming = false;
};

std::string cell(double value, int width) {
  char text[64];
  std::snprintf(text, sizeof text, "%*.6g", width, value);
  return std::isnan(value) ? std::string(static_cast<size_t>(std::max(0, width - 2)), ' ') + "NA" : text;
}

std::string padded(const std::string& text, size_t width, bool left) {
  if (text.size() >= width) return text;
  const std::string blanks(width - text.size(), ' ');
  return left ? text + blanks : blanks + text;
}

std::string Summary::text() const {
  size_t names = 8;
  std::vector<std::string> labels;
  for (const auto& v : variables) {
    labels.push_back(in_one_line(v->name));
    names = std::max(names, labels.back().size());
  }
  constexpr int width = 14; // -1.23457e+100 and a blank
  const auto figure_width = [](const Figure& figure) { return std::max<size_t>(width, figure.name.size() + 1); };
  std::string out = padded("variable", names, true) + padded("n", width, false) + padded("missing", width, false);
  for (const Figure& figure : figures(*variables.front())) out += padded(figure.name, figure_width(figure), false);
  out += '\n';
  for (size_t i = 0; i < variables.size(); ++i) {
    const auto& v = variables[i];
    out += padded(labels[i], names, true) + padded(std::to_string(v->count), width, false) +
           padded(std::to_string(v->missing), width, false);
    for (const Figure& figure : figures(*v)) out += padded(cell(figure.value, width), figure_width(figure), false);
    out += '\n';
  }
  if (streaming) {
    char note[120];
    std::snprintf(note, sizeof note, "Quantiles of this long input are within %g n ranks of the exact ones.\n",
                  options.epsilon);
    out += note;
  }
  if (!matrices) return out;
  const auto matrix = [&](const char* title, const std::vector<double>& values, bool unit_diagonal) {
    out += "\n" + std::string(title) + " (" + std::to_string(matrices->count) + " complete rows)\n" +
           std::string(names, ' ');
    for (const std::string& label : labels) out += " " + padded(label, width - 1, false);
    out += '\n';
    const size_t p = variables.size();
    for (size_t i = 0; i < p; ++i) {
      out += padded(labels[i], names, true);
      for (size_t j = 0; j < p; ++j)
        out += padded(cell(unit_diagonal && i == j ? 1 : values[i * p + j], width), //
                      std::max<size_t>(width, labels[j].size() + 1), false);
      out += '\n';
    }
  };
  matrix("covariance", matrices->covariance, false);
  matrix("correlation", matrices->correlation, true);
  return out;
}

std::string csv_cell(const std::string& text) {
  if (text.find_first_of(",\"\n\r") == text.npos) return text;
  std::string quoted = "\"";
  for (const char c : text) quoted += c == '"' ? "\"\"" : std::string(1, c);
  return quoted + '"';
}

std::string number(double value, const char* none) {
  if (!std::isfinite(value)) return std::isnan(value) ? none : value > 0 ? "inf" : "-inf";
  std::string text;
  append_number(text, value, Real::Double);
  return text;
}

// One figure a line: what it is, of which variable, and for matrices of which second one.
std::string Summary::csv() const {
  std::string out = "statistic,variable,with,value\n";
  for (const auto& v : variables) {
    const std::string name = csv_cell(v->name);
    out +=
        "n," + name + ",," + std::to_string(v->count) + "\nmissing," + name + ",," + std::to_string(v->missing) + "\n";
    for (const Figure& figure : figures(*v))
      out.append(figure.name).append(",").append(name).append(",,").append(number(figure.value, "NA")).append("\n");
  }
  for (size_t i = 0; matrices && i < variables.size(); ++i) {
    for (size_t j = 0; j < variables.size(); ++j) {
      const std::string pair = csv_cell(variables[i]->name) + "," + csv_cell(variables[j]->name) + ",";
      const size_t at = i * variables.size() + j;
      out += "covariance," + pair + number(matrices->covariance[at], "NA") + "\n";
      out += "correlation," + pair + number(i == j ? 1 : matrices->correlation[at], "NA") + "\n";
    }
  }
  return out;
}

std::string json_text(const std::string& text) {
  std::string quoted = "\"";
  for (const char c : as_utf8(text)) {
    if (c == '"' || c == '\\') quoted += '\\';
    if (static_cast<unsigned char>(c) < 0x20) {
      char code[8];
      std::snprintf(code, sizeof code, "\\u%04x", static_cast<unsigned>(c));
      quoted += code;
    } else {
      quoted += c;
    }
  }
  return quoted + '"';
}

// JSON knows no infinity, so one is null like a missing figure.
std::string json_number(double value) { return std::isfinite(value) ? number(value, "null") : "null"; }

std::string Summary::json() const {
  std::string out = "{\n  \"variables\": [";
  for (size_t i = 0; i < variables.size(); ++i) {
    const Variable& v = *variables[i];
    out += std::string(i ? "," : "") + "\n    {\"name\": " + json_text(v.name) + ", \"n\": " + std::to_string(v.count) +
           ", \"missing\": " + std::to_string(v.missing);
    for (const Figure& figure : figures(v)) out += ", \"" + figure.name + "\": " + json_number(figure.value);
    out += "}";
  }
  out += "\n  ],\n  \"quantiles_exact\": " + std::string(streaming ? "false" : "true");
  const auto matrix = [&](const char* title, const std::vector<double>& values, bool unit_diagonal) {
    out += ",\n  \"" + std::string(title) + "\": [";
    const size_t p = variables.size();
    for (size_t i = 0; i < p; ++i) {
      out += i ? ",\n    [" : "\n    [";
      for (size_t j = 0; j < p; ++j)
        out += (j ? ", " : "") + json_number(unit_diagonal && i == j ? 1 : values[i * p + j]);
      out += "]";
    }
    out += "\n  ]";
  };
  if (matrices) {
    out += ",\n  \"complete_rows\": " + std::to_string(matrices->count);
    matrix("covariance", matrices->covariance, false);
    matrix("correlation", matrices->correlation, true);
  }
  return out + "\n}\n";
}

std::vector<Sample> Summary::samples() const {
  std::vector<Sample> samples;
  for (size_t j = 0; j < variables.size(); ++j) {
    Sample& sample = samples.emplace_back(Sample{variables[j]->name, {}});
    for (const auto& row : shown.rows) sample.values.push_back(row[j]);
  }
  return samples;
}

std::string Summary::note() const {
  return shown.seen > shown.rows.size()
             ? "a random sample of " + std::to_string(shown.rows.size()) + " of " + std::to_string(shown.seen) + " rows"
             : std::to_string(shown.seen) + " rows";
}

void run(const StatsOptions& options) {
  if (options.threads > 0) omp_set_num_threads(options.threads);
  check_distinct({options.output, options.histogram, options.scatter});
  Summary summary(options);
  summary.read();
  // All files appear when all are complete; standard output, which cannot be taken back, is written last.
  std::vector<std::unique_ptr<Output>> outputs;
  const auto write = [&](const std::string& path, const std::string& content) {
    outputs.push_back(std::make_unique<Output>(path));
    outputs.back()->write(content);
  };
  if (!options.histogram.empty()) write(options.histogram, summary.histograms());
  if (!options.scatter.empty()) write(options.scatter, summary.scatter());
  write(options.output, options.format == "csv"    ? summary.csv()
                        : options.format == "json" ? summary.json()
                                                   : summary.text());
  for (const auto& output : outputs) output->flush();
  for (const auto& output : outputs) output->commit();
}

}

void add_stats(CLI::App& program) {
  auto options = std::make_shared<StatsOptions>();
  CLI::App* stats = program.add_subcommand("stats", "Moments, quantiles, covariance and correlation of a table");
  add_input_options(*stats, options->input);
  stats->add_option("--weights", options->weights, "The column of weights (0 or above), by name or number")
      ->check(not_empty());
  stats->add_option("--quantiles", options->orders, "Orders of the quantiles, from 0 to 1")
      ->delimiter(',')
      ->allow_extra_args(false)
      ->check(CLI::Range(0.0, 1.0))
      ->check(finite());
  stats->add_flag("--fast", options->fast, "From raw power sums: less arithmetic, for means not far from zero");
  stats->add_flag("--moments-only", options->moments_only, "No covariance and correlation");
  stats->add_option("--block", options->block, "Bytes read at a time; longer input passes block by block")
      ->transform(CLI::AsSizeValue(false))
      ->check(CLI::Range(int64_t(64), int64_t(1) << 40));
  stats->add_option("--epsilon", options->epsilon, "Rank error of the quantiles of longer input, as a part of n")
      ->check(CLI::Range(1e-6, 1.0))
      ->check(finite());
  stats->add_option("--threads", options->threads, "Threads to use; 0: as OpenMP says")->check(CLI::Range(0, 1024));
  stats->add_option("-o,--output", options->output, "File to write, whole or not at all; - : standard output")
      ->check(not_empty());
  stats->add_option("--to", options->format, "Output format: text, csv (one figure a line), json")
      ->check(CLI::IsMember({"text", "csv", "json"}));
  stats->add_option("--histogram", options->histogram, "SVG file for a histogram of each variable")->check(not_empty());
  stats->add_option("--scatter", options->scatter, "SVG file for every variable against every other")
      ->check(not_empty());
  stats->footer(
      "A missing cell (empty or NA) is left out of its variable; covariance and correlation take the rows in\n"
      "which none is missing. Quantiles do not use the weights. Kurtosis is the excess over 3.\n"
      "Examples:\n"
      "  tarn stats weather.csv --column Ozone --column Wind\n"
      "  tarn stats survey.csv --weights w --to json -o survey.json --scatter survey.svg");
  stats->callback([options] { run(*options); });
}

}
