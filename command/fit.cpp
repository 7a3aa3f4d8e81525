// tarn fit: a spline through the columns of a table; its values, derivatives and integrals, and a picture.
#include "command/failure.h"
#include "command/fit_pictures.h"
#include "command/options.h"
#include "command/output.h"
#include "command/subcommands.h"
#include "command/svg.h"
#include "tarn/fitting.h"
#include "tarn/openmp_threader.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <numeric>
#include <omp.h>

namespace tarn::command {

namespace {

using Constructor = int32_t (*)(DFTask*, int64_t, int64_t, const tarn_threader*);

// What --kind may name. Inner conditions: a column of values at the inner points, which the kind cannot do without.
struct Kind {
  const char* name;
  int64_t order, type;
  Constructor construct; // none: the interpolant reads the data themselves
  size_t least_points;
  const char* usual_boundary;
  const char* boundaries; // the ones that fit, between blanks
  bool needs_inner;
};
constexpr const char* end_conditions = " first second first-second second-first ";
constexpr const char* natural_conditions = " free not-a-knot periodic first second first-second second-first ";
constexpr const char* local_conditions = " none free not-a-knot periodic first second first-second second-first ";
constexpr Kind kinds[] = {
    {"linear", 2, TARN_DF_TYPE_DEFAULT, tarn_df_kernel_dDFLinearSpline1D, 2, "none", " none periodic ", false},
    {"quadratic", 3, TARN_DF_TYPE_DEFAULT, tarn_df_kernel_dDFQuadraticSpline1D, 2, "middle", " middle ", false},
    {"subbotin", 3, TARN_DF_TYPE_SUBBOTIN, tarn_df_kernel_dDFQuadraticSpline1D, 2, "second", end_conditions, false},
    {"natural", 4, TARN_DF_TYPE_NATURAL, tarn_df_kernel_dDFNaturalCubicSpline1D, 3, "free", natural_conditions, false},
    {"akima", 4, TARN_DF_TYPE_AKIMA, tarn_df_kernel_dDFAkimaCubicSpline1D, 5, "none", local_conditions, false},
    {"bessel", 4, TARN_DF_TYPE_BESSEL, tarn_df_kernel_dDFBesselCubicSpline1D, 4, "not-a-knot", local_conditions, false},
    {"hyman", 4, TARN_DF_TYPE_HYMAN, tarn_df_kernel_dDFHymanCubicSpline1D, 4, "free", local_conditions, false},
    {"hermite", 4, TARN_DF_TYPE_HERMITE, tarn_df_kernel_dDFHermiteCubicSpline1D, 3, "free", local_conditions, true},
    {"default", 4, TARN_DF_TYPE_DEFAULT, tarn_df_kernel_dDFDefaultCubicSpline1D, 3, "free", natural_conditions, true},
    {"step-left", 0, TARN_DF_TYPE_STEP_LEFT, nullptr, 2, "none", " none ", false},
    {"step-right", 0, TARN_DF_TYPE_STEP_RIGHT, nullptr, 2, "none", " none ", false},
    {"look-up", 0, TARN_DF_TYPE_LOOKUP, nullptr, 2, "none", " none ", false},
};

struct Boundary {
  const char* name;
  int64_t code;
  size_t values;
};
constexpr Boundary boundaries[] = {
    {"none", TARN_DF_BC_NONE, 0},
    {"free", TARN_DF_BC_FREE_END, 0},
    {"not-a-knot", TARN_DF_BC_NOT_A_KNOT, 0},
    {"first", TARN_DF_BC_1ST_LEFT + TARN_DF_BC_1ST_RIGHT, 2},
    {"second", TARN_DF_BC_2ND_LEFT + TARN_DF_BC_2ND_RIGHT, 2},
    {"first-second", TARN_DF_BC_1ST_LEFT + TARN_DF_BC_2ND_RIGHT, 2},
    {"second-first", TARN_DF_BC_2ND_LEFT + TARN_DF_BC_1ST_RIGHT, 2},
    {"periodic", TARN_DF_BC_PERIODIC, 0},
    {"middle", TARN_DF_BC_FIRST_MIDDLE, 1},
};

struct FitOptions {
  InputOptions input;
  OutputOptions output;
  std::string x, kind = "natural", boundary, inner, at, picture;
  std::vector<std::string> y, integrals;
  std::vector<int64_t> derivatives = {0};
  int threads = 0;
};

// The rows that are complete, in ascending order of x.
struct Data {
  std::string x_name;
  std::vector<std::string> y_names;
  std::vector<double> x, y, inner; // y: function by function
  size_t left_out = 0;
  size_t points() const { return x.size(); }
};

std::string shown(double value) {
  std::string text;
  append_number(text, value, Real::Double);
  return text;
}

Data read_data(const FitOptions& options) {
  InputOptions input = options.input;
  input.columns = {options.x};
  input.columns.insert(input.columns.end(), options.y.begin(), options.y.end());
  if (!options.inner.empty()) input.columns.push_back(options.inner);
  const Table table = read_table(input, static_cast<int>(input.columns.size()));

  std::vector<size_t> rows;
  Data data;
  for (size_t row = 0; row < table.lines.size(); ++row) {
    bool complete = true;
    for (const Column& column : table.columns) {
      complete = complete && !column.missing[row];
      if (!column.missing[row] && !std::isfinite(column.values[row]))
        throw Failure(table.source + ", line " + std::to_string(table.lines[row]) + ": " + shown(column.values[row]) +
                      " is not a finite number");
    }
    if (complete) rows.push_back(row);
  }
  data.left_out = table.lines.size() - rows.size();
  const std::vector<double>& x = table.columns[0].values;
  std::stable_sort(rows.begin(), rows.end(), [&](size_t a, size_t b) { return x[a] < x[b]; });
  for (size_t i = 1; i < rows.size(); ++i)
    if (x[rows[i - 1]] == x[rows[i]])
      throw Failure(table.source + ", lines " + std::to_string(table.lines[rows[i - 1]]) + " and " +
                    std::to_string(table.lines[rows[i]]) + ": x is " + shown(x[rows[i]]) + " in both");

  const auto name_of = [&](size_t column) {
    const std::string& name = table.columns[column].name;
    return name.empty() ? "column " + input.columns[column] : name;
  };
  const auto take = [&](const std::vector<double>& from, std::vector<double>& to) {
    for (const size_t row : rows) to.push_back(from[row]);
  };
  data.x_name = name_of(0);
  take(x, data.x);
  for (size_t f = 0; f < options.y.size(); ++f) {
    data.y_names.push_back(name_of(1 + f));
    take(table.columns[1 + f].values, data.y);
  }
  if (!options.inner.empty()) take(table.columns.back().values, data.inner);
  return data;
}

double number_of(const std::string& text, const std::string& what) {
  double value;
  if (!parse_number(text, Real::Double, value) || !std::isfinite(value))
    throw Failure("\"" + text + "\" is not a finite number (" + what + ")");
  return value;
}

std::vector<std::string> split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  size_t from = 0;
  for (size_t end; (end = text.find(separator, from)) != text.npos; from = end + 1)
    parts.push_back(text.substr(from, end - from));
  parts.push_back(text.substr(from));
  return parts;
}

// The condition at the ends: NAME, or NAME=VALUES.
struct EndCondition {
  const Boundary* boundary;
  std::vector<double> values;
};
EndCondition end_condition(const FitOptions& options, const Kind& kind, const Data& data) {
  const std::vector<std::string> parts = split(options.boundary.empty() ? kind.usual_boundary : options.boundary, '=');
  const auto* found =
      std::find_if(std::begin(boundaries), std::end(boundaries), [&](const Boundary& b) { return parts[0] == b.name; });
  if (found == std::end(boundaries) || parts.size() > 2)
    throw Failure("no boundary condition named \"" + options.boundary + "\" (see tarn fit --help)");
  if (std::string(kind.boundaries).find(" " + parts[0] + " ") == std::string::npos)
    throw Failure(std::string("a ") + kind.name + " spline takes no boundary condition " + parts[0] + "; it takes" +
                  kind.boundaries);
  EndCondition condition{found, {}};
  if (parts.size() == 2)
    for (const std::string& text : split(parts[1], ',')) condition.values.push_back(number_of(text, "--boundary"));
  size_t wanted = found->values;
  // A spline whose inner derivatives are given takes that of the joined ends too.
  if (found->code == TARN_DF_BC_PERIODIC && kind.needs_inner) wanted = 1;
  if (options.boundary.empty() && wanted == 2) condition.values = {0, 0};
  if (options.boundary.empty() && wanted == 1) condition.values = {(data.y[0] + data.y[1]) / 2};
  if (condition.values.size() != wanted)
    throw Failure("the boundary condition " + parts[0] + " takes " + std::to_string(wanted) +
                  (wanted == 1 ? " value" : " values") + ", as in --boundary " + parts[0] +
                  (wanted == 0   ? ""
                   : wanted == 1 ? "=0.5"
                                 : "=0,1"));
  if (found->code == TARN_DF_BC_PERIODIC)
    for (size_t f = 0; f < data.y_names.size(); ++f)
      if (data.y[f * data.points()] != data.y[(f + 1) * data.points() - 1])
        throw Failure(data.y_names[f] + " is not periodic: it starts with " + shown(data.y[f * data.points()]) +
                      " and ends with " + shown(data.y[(f + 1) * data.points() - 1]));
  return condition;
}

void check(int32_t status) {
  switch (status) {
  case TARN_DF_OK: return;
  case TARN_DF_ERROR_ALLOCATION: throw std::bad_alloc();
  case TARN_DF_ERROR_LOOKUP_SITE: throw Failure("a look-up knows only the points of the data; another was asked for");
  case TARN_DF_ERROR_SOLVER: throw Failure("these data make a system of equations without a solution");
  default: throw Failure("the library refuses with status " + std::to_string(status));
  }
}

// The library's task over the data, with the coefficients of its spline.
class Spline {
public:
  Spline(const Data& fitted, const Kind& chosen, EndCondition condition)
      : data(fitted), kind(chosen), ends(std::move(condition)) {
    const auto n = static_cast<int64_t>(data.points());
    check(tarn_df_kernel_dNewTask1D(&task, n, data.x.data(), TARN_DF_PARTITION_GENERAL, functions(), data.y.data(),
                                    TARN_DF_STORAGE_ROWS, 1));
    coefficients.resize(static_cast<size_t>(functions() * n * std::max<int64_t>(kind.order, 1)));
    const double* inner = kind.needs_inner ? data.inner.data() + 1 : nullptr;
    const int64_t inner_type = kind.needs_inner ? int64_t(TARN_DF_IC_1ST) : int64_t(TARN_DF_IC_NONE);
    check(tarn_df_kernel_dEditPPSpline1D(task, kind.order, kind.type, ends.boundary->code,
                                         ends.values.empty() ? nullptr : ends.values.data(), inner_type, inner,
                                         kind.construct ? coefficients.data() : nullptr, TARN_DF_STORAGE_ROWS));
    if (kind.type == TARN_DF_TYPE_SUBBOTIN && kind.order == TARN_DF_ORDER_QUADRATIC)
      check(tarn_df_kernel_iEditVal(task, TARN_DF_IC_TYPE, TARN_DF_IC_SUBGRID)); // its knots: the middles of the cells
    if (kind.construct) check(kind.construct(task, 0, 0, tarn_openmp_threader()));
  }
  ~Spline() { tarn_df_kernel_DeleteTask(&task); }
  Spline(const Spline&) = delete;
  Spline& operator=(const Spline&) = delete;

  // Result of site s, function f, k-th order at (s * functions + f) * orders + k.
  std::vector<double> evaluate(const std::vector<double>& sites, const std::vector<int64_t>& orders) const {
    std::vector<int64_t> selection(static_cast<size_t>(*std::max_element(orders.begin(), orders.end())) + 1);
    for (const int64_t order : orders) selection[static_cast<size_t>(order)] = 1;
    std::vector<double> r(sites.size() * static_cast<size_t>(functions()) * orders.size());
    check(tarn_df_kernel_dDFInterpolate1D(task, TARN_DF_COMPUTE, 0, static_cast<int64_t>(sites.size()), sites.data(), 0,
                                          static_cast<int64_t>(selection.size()), selection.data(), nullptr, r.data(),
                                          TARN_DF_RESULTS_SITE_FUNCTION_ORDER, nullptr, nullptr, nullptr, nullptr,
                                          nullptr, nullptr, nullptr, nullptr, nullptr, tarn_openmp_threader()));
    return r;
  }
  // Of each function.
  std::vector<double> integrate(double from, double to) const {
    std::vector<double> r(static_cast<size_t>(functions()));
    check(tarn_df_kernel_dDFIntegrate1D(task, 0, 1, &from, 0, &to, 0, nullptr, nullptr, r.data(),
                                        TARN_DF_INTEGRALS_BY_PAIR, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                        nullptr, nullptr, tarn_openmp_threader()));
    return r;
  }
  int64_t functions() const { return static_cast<int64_t>(data.y_names.size()); }

private:
  const Data& data;
  const Kind& kind;
  EndCondition ends;
  DFTask* task = nullptr;
  std::vector<double> coefficients;
};

// N equally spaced ones over the data, or a list.
std::vector<double> sites_of(const FitOptions& options, const Data& data) {
  if (options.at.find_first_not_of("0123456789") == std::string::npos && !options.at.empty()) {
    constexpr double most = 1e8;
    const double count = number_of(options.at, "--at");
    if (count < 2 || count > most) throw Failure("--at takes a count from 2 to 100000000, or a list such as 0.5,1,2");
    std::vector<double> sites(static_cast<size_t>(count));
    for (size_t i = 0; i < sites.size(); ++i)
      sites[i] = svg::Range{data.x.front(), data.x.back()}.at(static_cast<double>(i) / (count - 1));
    sites.back() = data.x.back();
    return sites;
  }
  std::vector<double> sites;
  for (const std::string& text : split(options.at, ',')) {
    if (text.empty() && !sites.empty() && options.at.back() == ',') break; // 3, is a list of one
    sites.push_back(number_of(text, "--at"));
  }
  return sites;
}

struct Integral {
  double from, to;
};
std::vector<Integral> integrals_of(const FitOptions& options) {
  std::vector<Integral> list;
  for (const std::string& text : options.integrals) {
    const std::vector<std::string> parts = split(text, ':');
    if (parts.size() != 2) throw Failure("\"" + text + "\" is not a range such as 0:2.5 (--integrate)");
    list.push_back({number_of(parts[0], "--integrate"), number_of(parts[1], "--integrate")});
  }
  return list;
}

// Values at the sites; integrals follow as comments, since the output stays a table of numbers.
std::unique_ptr<RowWriter> write_values(const FitOptions& options, const Data& data, const Spline& spline,
                                        const std::vector<double>& sites, const std::vector<Integral>& integrals) {
  std::vector<std::string> names = {data.x_name};
  for (const std::string& y : data.y_names)
    for (const int64_t order : options.derivatives) names.push_back(y + std::string(static_cast<size_t>(order), '\''));
  const std::vector<double> r = spline.evaluate(sites, options.derivatives);
  const size_t width = names.size() - 1;
  auto writer = std::make_unique<RowWriter>(options.output, Real::Double, names);
  for (size_t s = 0; s < sites.size(); ++s) {
    writer->number(sites[s]);
    for (size_t k = 0; k < width; ++k) writer->number(r[s * width + k]);
    writer->end_row();
  }
  for (const Integral& integral : integrals) {
    const std::vector<double> values = spline.integrate(integral.from, integral.to);
    for (size_t f = 0; f < values.size(); ++f)
      writer->comment("integral of " + data.y_names[f] + " from " + shown(integral.from) + " to " + shown(integral.to) +
                      ": " + shown(values[f]));
  }
  return writer;
}

std::unique_ptr<RowWriter> write_integrals(const FitOptions& options, const Data& data, const Spline& spline,
                                           const std::vector<Integral>& integrals) {
  std::vector<std::string> names = {"from", "to"};
  for (const std::string& y : data.y_names) names.push_back("integral of " + y);
  auto writer = std::make_unique<RowWriter>(options.output, Real::Double, names);
  for (const Integral& integral : integrals) {
    writer->number(integral.from);
    writer->number(integral.to);
    for (const double value : spline.integrate(integral.from, integral.to)) writer->number(value);
    writer->end_row();
  }
  return writer;
}

std::string draw(const FitOptions& options, const Data& data, const Spline& spline, const std::vector<double>& sites,
                 const std::vector<Integral>& integrals) {
  FitPicture picture;
  picture.x_name = data.x_name;
  picture.title = options.kind + (options.boundary.empty() ? "" : ", " + options.boundary);
  picture.data_x = data.x;
  constexpr int samples = 1500;
  double low = data.x.front(), high = data.x.back();
  if (!sites.empty()) {
    low = std::min(low, *std::min_element(sites.begin(), sites.end()));
    high = std::max(high, *std::max_element(sites.begin(), sites.end()));
  }
  // A look-up has no curve but its points.
  if (options.kind != "look-up")
    for (int i = 0; i < samples; ++i) picture.curve_x.push_back(svg::Range{low, high}.at(i / double(samples - 1)));
  const size_t functions = data.y_names.size();
  std::vector<double> values;
  if (!picture.curve_x.empty()) values = spline.evaluate(picture.curve_x, {0});
  for (size_t f = 0; f < functions; ++f) {
    FittedCurve& curve = picture.curves.emplace_back();
    curve.name = data.y_names[f];
    curve.data.assign(data.y.begin() + static_cast<std::ptrdiff_t>(f * data.points()),
                      data.y.begin() + static_cast<std::ptrdiff_t>((f + 1) * data.points()));
    for (size_t s = 0; s < picture.curve_x.size(); ++s) curve.curve.push_back(values[s * functions + f]);
  }
  if (!integrals.empty()) {
    picture.shaded_low = std::min(integrals[0].from, integrals[0].to);
    picture.shaded_high = std::max(integrals[0].from, integrals[0].to);
  }
  return draw_fit(picture);
}

void fit(const FitOptions& given) {
  FitOptions options = given;
  if (options.threads > 0) omp_set_num_threads(options.threads);
  // Without values or integrals there is no table, and the picture may go anywhere.
  if (!options.at.empty() || !options.integrals.empty()) check_distinct({options.output.path, options.picture});
  const Kind& kind =
      *std::find_if(std::begin(kinds), std::end(kinds), [&](const Kind& k) { return options.kind == k.name; });
  std::vector<int64_t>& orders = options.derivatives;
  std::sort(orders.begin(), orders.end());
  orders.erase(std::unique(orders.begin(), orders.end()), orders.end());
  if (kind.type == TARN_DF_TYPE_LOOKUP && kind.order == 0 && orders != std::vector<int64_t>{0})
    throw Failure("a look-up has no derivatives");
  if (kind.type == TARN_DF_TYPE_LOOKUP && kind.order == 0 && !options.integrals.empty())
    throw Failure("a look-up has no integral");
  if (kind.needs_inner && options.inner.empty())
    throw Failure(options.kind + " needs the derivatives at the inner points: name their column with --inner");
  if (!kind.needs_inner && !options.inner.empty()) throw Failure("--inner is for the kinds hermite and default");
  const std::vector<Integral> integrals = integrals_of(options);
  if (!options.at.empty() && !integrals.empty() && options.output.format != "text")
    throw Failure(options.output.format + " output is one table: ask for --at or for --integrate");

  const Data data = read_data(options);
  if (data.points() < kind.least_points)
    throw Failure(options.kind + " needs at least " + std::to_string(kind.least_points) + " points, and there " +
                  (data.points() == 1 ? "is " : "are ") + std::to_string(data.points()));
  const Spline spline(data, kind, end_condition(options, kind, data));
  const std::vector<double> sites = options.at.empty() ? std::vector<double>() : sites_of(options, data);
  // Both files appear when both are complete.
  std::unique_ptr<RowWriter> table;
  if (!sites.empty()) {
    table = write_values(options, data, spline, sites, integrals);
  } else if (!integrals.empty()) {
    table = write_integrals(options, data, spline, integrals);
  }
  std::unique_ptr<Output> picture;
  if (!options.picture.empty()) {
    picture = std::make_unique<Output>(options.picture);
    picture->write(draw(options, data, spline, sites, integrals));
  }
  if (picture) picture->flush();
  if (table) table->commit();
  if (picture) picture->commit();
  if (data.left_out > 0)
    std::fprintf(stderr, "tarn: %zu %s left out for missing cells\n", data.left_out,
                 data.left_out == 1 ? "row" : "rows");
}

}

void add_fit(CLI::App& program) {
  auto options = std::make_shared<FitOptions>();
  CLI::App* fit_command =
      program.add_subcommand("fit", "Splines through data: values, derivatives, integrals, a picture");
  add_input_options(*fit_command, options->input);
  fit_command->remove_option(fit_command->get_option("--column")); // --x and --y say which
  add_output_options(*fit_command, options->output);
  std::vector<std::string> names;
  for (const Kind& kind : kinds) names.emplace_back(kind.name);
  fit_command->add_option("--x", options->x, "The column of the partition, by its header's name or number")->required();
  fit_command->add_option("--y", options->y, "A column of values; repeatable")->required()->allow_extra_args(false);
  fit_command->add_option("--kind", options->kind, "The interpolant")
      ->check(CLI::IsMember(names))
      ->capture_default_str();
  fit_command->add_option("--boundary", options->boundary,
                          "At the ends: none, free, not-a-knot, periodic, first=L,R, second=L,R, first-second=L,R, "
                          "second-first=L,R; of quadratic middle=V. Without it what suits the kind");
  fit_command->add_option("--inner", options->inner,
                          "Column of derivatives at the inner points: the first ones for hermite, the second ones for "
                          "default");
  CLI::Option* at = fit_command
                        ->add_option("--at", options->at,
                                     "Sites: a list such as 0.5,1,2 (3, is a list of one), or how many "
                                     "equally spaced ones over the data")
                        ->check(not_empty());
  fit_command->add_option("--derivatives", options->derivatives, "Orders to print; 0 is the value")
      ->delimiter(',')
      ->allow_extra_args(false)
      ->check(CLI::Range(int64_t(0), int64_t(10)))
      ->needs(at);
  CLI::Option* integrate =
      fit_command->add_option("--integrate", options->integrals, "A:B, a range to integrate over; repeatable")
          ->allow_extra_args(false);
  CLI::Option* picture = fit_command->add_option("--picture", options->picture, "SVG file for the curve with its data")
                             ->check(not_empty());
  fit_command->add_option("--threads", options->threads, "Threads to use; 0: as OpenMP says")
      ->check(CLI::Range(0, 1024));
  fit_command->footer(
      "Rows with a missing cell are left out. Sites outside the data continue the first or last piece.\n"
      "Examples:\n"
      "  tarn fit co2.csv --x year --y ppm --kind akima --at 1000 --picture co2.svg\n"
      "  tarn fit co2.csv --x year --y ppm --at 1960.5,1990.25 --derivatives 0,1\n"
      "  tarn fit co2.csv --x year --y ppm --boundary second=0,0 --integrate 1960:1970");
  fit_command->callback([options, at, integrate, picture] {
    if (at->empty() && integrate->empty() && picture->empty())
      throw Failure("nothing is asked for: give --at, --integrate or --picture");
    fit(*options);
  });
}

}
