#include "command/input.h"

#include "command/failure.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <fstream>
#include <iostream>
#include <limits>
#include <sstream>

static_assert(std::endian::native == std::endian::little, "binary input and output are little-endian");

namespace tarn::command {

namespace {

using Cells = std::vector<std::string_view>;

std::string_view trim(std::string_view text) {
  const char* blanks = " \t\r\f\v";
  const size_t first = text.find_first_not_of(blanks);
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

template <class T> bool parse_as(std::string_view text, bool negative, double& value) {
  T number{};
  const bool hexadecimal = text.size() > 2 && text[0] == '0' && (text[1] | 0x20) == 'x';
  const char* first = text.data() + (hexadecimal ? 2 : 0);
  const char* last = text.data() + text.size();
  const auto format = hexadecimal ? std::chars_format::hex : std::chars_format::general;
  auto [end, error] = std::from_chars(first, last, number, format);
  if (end != last || error == std::errc::invalid_argument) return false;
  if (error == std::errc::result_out_of_range) { // too large, which is refused, or too small, which rounds
    const std::string terminated(text);
    number = std::is_same_v<T, float> ? static_cast<T>(std::strtof(terminated.c_str(), nullptr))
                                      : static_cast<T>(std::strtod(terminated.c_str(), nullptr));
    if (std::isinf(number)) return false;
  }
  value = negative ? -number : number;
  return true;
}

std::string in_quotes(std::string_view text) {
  constexpr size_t shown = 40;
  return "\"" + std::string(text.substr(0, shown)) + (text.size() > shown ? "...\"" : "\"");
}

std::string read_all(const InputOptions& options, const std::string& source) {
  std::ostringstream content;
  if (options.path == "-") {
    if (std::cin.peek() != std::char_traits<char>::eof()) content << std::cin.rdbuf();
    if (std::cin.bad()) throw Failure("cannot read standard input");
    return std::move(content).str();
  }
  std::ifstream file(options.path, std::ios::binary);
  if (!file) throw Failure("cannot open " + source + ": " + std::strerror(errno));
  errno = 0;
  if (file.peek() != std::char_traits<char>::eof()) content << file.rdbuf();
  if (errno == EISDIR) throw Failure("cannot read " + source + ": " + std::strerror(errno));
  if (file.bad() || content.bad()) throw Failure("cannot read " + source);
  return std::move(content).str();
}

[[noreturn]] void refuse(const std::string& source, int64_t line, const std::string& what) {
  throw Failure(source + ", line " + std::to_string(line) + ": " + what);
}

void add_cell(Column& column, std::string_view cell, const InputOptions& options, const std::string& source,
              int64_t line) {
  cell = trim(cell);
  double value = std::numeric_limits<double>::quiet_NaN();
  const bool missing = is_missing(cell);
  if (!missing && !parse_number(cell, options.real, value))
    refuse(source, line, in_quotes(cell) + " is not a number of type " + (options.real == Real::Double ? "d" : "s"));
  column.values.push_back(value);
  column.missing.push_back(missing);
}

// Splits CSV (RFC 4180: quoted cells, doubled quotes, line breaks inside quotes) and hands each row with the number of
// the line on which it starts. Empty lines are no rows.
class CsvRows {
public:
  CsvRows(const std::string& content, char cell_delimiter, const std::string& source_name)
      : rest(content), delimiter(cell_delimiter), source(source_name) {
    if (rest.starts_with("\xEF\xBB\xBF")) rest.remove_prefix(3);
  }

  bool next(Cells& cells, int64_t& line) {
    while (!rest.empty()) {
      cells.clear();
      unquoted.clear();
      line = at_line;
      if (const std::string_view whole = rest.substr(0, rest.find('\n')); trim(whole).empty()) {
        rest.remove_prefix(std::min(rest.size(), whole.size() + 1));
        ++at_line;
        continue;
      }
      while (cell(cells, line)) {
      }
      return true;
    }
    return false;
  }

private:
  // Takes one cell off the rest; false when it was the last of its row.
  bool cell(Cells& cells, int64_t line) {
    const size_t start = rest.find_first_not_of(delimiter == '\t' ? " " : " \t");
    if (start != rest.npos && rest[start] == '"') {
      rest.remove_prefix(start + 1);
      cells.push_back(quoted_cell(line));
      const size_t end = std::min(rest.find_first_of(std::string{delimiter, '\n'}), rest.size());
      if (!trim(rest.substr(0, end)).empty()) refuse(source, line, "text behind the closing quote of a cell");
      return leave(end);
    }
    const size_t end = std::min(rest.find_first_of(std::string{delimiter, '\n'}), rest.size());
    cells.push_back(trim(rest.substr(0, end)));
    return leave(end);
  }

  bool leave(size_t end) {
    const bool more = end < rest.size() && rest[end] == delimiter;
    if (!more) ++at_line;
    rest.remove_prefix(std::min(rest.size(), end + 1));
    return more;
  }

  std::string_view quoted_cell(int64_t line) {
    std::string& text = unquoted.emplace_back();
    for (;;) {
      const size_t quote = rest.find('"');
      if (quote == rest.npos) refuse(source, line, "a quoted cell without an end");
      text.append(rest.substr(0, quote));
      rest.remove_prefix(quote + 1);
      if (rest.empty() || rest[0] != '"') break;
      text.push_back('"');
      rest.remove_prefix(1);
    }
    at_line += std::count(text.begin(), text.end(), '\n');
    return text;
  }

  std::string_view rest;
  char delimiter;
  const std::string& source;
  int64_t at_line = 1;
  std::deque<std::string> unquoted; // cells point into it
};

// The places of the named columns: a header's name first, then a number from 1.
std::vector<size_t> locate(const InputOptions& options, const Cells& names, bool have_names, size_t width, int wanted,
                           const std::string& source) {
  std::vector<size_t> places;
  for (const std::string& name : options.columns) {
    const auto found = std::find(names.begin(), names.end(), name);
    int64_t number = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
    if (have_names && found != names.end()) {
      places.push_back(static_cast<size_t>(found - names.begin()));
    } else if (error == std::errc{} && end == name.data() + name.size() && number >= 1 &&
               number <= static_cast<int64_t>(width)) {
      places.push_back(static_cast<size_t>(number - 1));
    } else {
      throw Failure(source + ": no column " + in_quotes(name) + " among its " + std::to_string(width));
    }
  }
  if (!places.empty()) {
    if (wanted && places.size() != static_cast<size_t>(wanted))
      throw Failure("--column: " + std::to_string(places.size()) + " given, " + std::to_string(wanted) + " needed");
    return places;
  }
  if (wanted && width != static_cast<size_t>(wanted)) {
    std::string list;
    for (std::string_view name : names) list += (list.empty() ? ": " : ", ") + std::string(name);
    throw Failure(source + " has " + std::to_string(width) + (width == 1 ? " column" : " columns") + " where " +
                  std::to_string(wanted) + (wanted == 1 ? " is" : " are") + " needed; choose with --column" +
                  (have_names ? list : ""));
  }
  for (size_t i = 0; i < width; ++i) places.push_back(i);
  return places;
}

// Rows of cells, from whichever source, into the table's chosen columns.
template <class NextRow>
void fill(Table& table, const InputOptions& options, int wanted, bool may_have_header, NextRow next) {
  Cells cells;
  int64_t line = 0;
  if (!next(cells, line)) return;
  const auto is_name = [&](std::string_view cell) {
    double ignored;
    return !is_missing(trim(cell)) && !parse_number(trim(cell), Real::Double, ignored);
  };
  const bool header =
      may_have_header &&
      (options.header == "yes" || (options.header == "auto" && std::any_of(cells.begin(), cells.end(), is_name)));
  const size_t width = cells.size();
  const std::vector<size_t> places = locate(options, cells, header, width, wanted, table.source);
  table.columns.resize(places.size());
  if (header)
    for (size_t i = 0; i < places.size(); ++i) table.columns[i].name = std::string(cells[places[i]]);
  if (header && !next(cells, line)) return;
  do {
    if (cells.size() != width)
      refuse(table.source, line,
             std::to_string(cells.size()) + " cells where the first row has " + std::to_string(width));
    for (size_t i = 0; i < places.size(); ++i)
      add_cell(table.columns[i], cells[places[i]], options, table.source, line);
    table.lines.push_back(line);
  } while (next(cells, line));
}

void read_csv(Table& table, const std::string& content, const InputOptions& options, int wanted) {
  const char delimiter = options.delimiter == "tab" ? '\t' : options.delimiter[0];
  CsvRows rows(content, delimiter, table.source);
  fill(table, options, wanted, true, [&](Cells& cells, int64_t& line) { return rows.next(cells, line); });
}

// Numbers between blanks; # starts a comment that ends with the line.
void read_text(Table& table, const std::string& content, const InputOptions& options, int wanted) {
  std::string_view rest = content;
  int64_t at_line = 0;
  const auto next_line = [&](Cells& cells, int64_t& line) {
    while (!rest.empty()) {
      std::string_view text = rest.substr(0, rest.find('\n'));
      rest.remove_prefix(std::min(rest.size(), text.size() + 1));
      ++at_line;
      cells.clear();
      text = text.substr(0, text.find('#'));
      for (;;) {
        const size_t start = text.find_first_not_of(" \t\r\f\v");
        if (start == text.npos) break;
        text.remove_prefix(start);
        const size_t end = std::min(text.find_first_of(" \t\r\f\v"), text.size());
        cells.push_back(text.substr(0, end));
        text.remove_prefix(end);
      }
      line = at_line;
      if (!cells.empty()) return true;
    }
    return false;
  };
  if (wanted != 1 || !options.columns.empty()) return fill(table, options, wanted, false, next_line);
  table.columns.resize(1);
  Cells cells;
  int64_t line = 0;
  while (next_line(cells, line)) {
    for (std::string_view cell : cells) {
      add_cell(table.columns[0], cell, options, table.source, line);
      table.lines.push_back(line);
    }
  }
}

void read_binary(Table& table, const std::string& content, const InputOptions& options, int wanted) {
  const size_t size = options.real == Real::Double ? sizeof(double) : sizeof(float);
  const size_t width = options.width ? static_cast<size_t>(options.width) : static_cast<size_t>(std::max(wanted, 1));
  const size_t row = size * width;
  if (content.size() % row)
    throw Failure(table.source + ": " + std::to_string(content.size()) + " bytes are no whole number of rows of " +
                  std::to_string(row) + " bytes");
  const size_t count = content.size() / row;
  const std::vector<size_t> places = locate(options, {}, false, width, wanted, table.source);
  for (size_t place : places) {
    Column& column = table.columns.emplace_back();
    column.missing.assign(count, false);
    column.values.resize(count);
    for (size_t i = 0; i < count; ++i) {
      const char* bytes = content.data() + i * row + place * size;
      float single;
      if (options.real == Real::Single) {
        std::memcpy(&single, bytes, size);
        column.values[i] = single;
      } else {
        std::memcpy(&column.values[i], bytes, size);
      }
    }
  }
  for (size_t i = 0; i < count; ++i) table.lines.push_back(static_cast<int64_t>(i) + 1);
}

// By the file's name; where that says nothing, CSV when columns are named or a comma stands in the first line of data.
std::string format_of(const InputOptions& options, const std::string& content) {
  if (options.format != "auto") return options.format;
  const std::string_view path = options.path;
  if (path.ends_with(".csv") || path.ends_with(".tsv")) return "csv";
  if (path.ends_with(".bin") || path.ends_with(".f64") || path.ends_with(".f32")) return "binary";
  std::string_view rest = content;
  while (!rest.empty()) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(rest.size(), line.size() + 1));
    const std::string_view data = trim(line.substr(0, line.find('#')));
    if (data.empty()) continue;
    const bool number_columns = std::all_of(options.columns.begin(), options.columns.end(), [](const std::string& c) {
      return c.find_first_not_of("0123456789") == c.npos;
    });
    return data.find(options.delimiter == "tab" ? '\t' : options.delimiter[0]) != data.npos || !number_columns ? "csv"
                                                                                                               : "text";
  }
  return "text";
}

}

bool is_missing(std::string_view text) { return text.empty() || text == "NA"; }

bool parse_number(std::string_view text, Real real, double& value) {
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  if (text.empty() || text[0] == '-' || text[0] == '+') return false;
  return real == Real::Single ? parse_as<float>(text, negative, value) : parse_as<double>(text, negative, value);
}

Table parse_table(const std::string& content, const InputOptions& options, int wanted, const std::string& source) {
  Table table;
  table.source = source;
  const std::string format = format_of(options, content);
  if (format == "csv") {
    read_csv(table, content, options, wanted);
  } else if (format == "binary") {
    read_binary(table, content, options, wanted);
  } else {
    read_text(table, content, options, wanted);
  }
  if (table.rows() == 0) throw Failure(table.source + " holds no numbers");
  return table;
}

Table read_table(const InputOptions& options, int wanted) {
  const std::string source = options.path == "-" ? "standard input" : options.path;
  return parse_table(read_all(options, source), options, wanted, source);
}

}
