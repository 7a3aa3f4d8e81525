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
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>
#include <unistd.h>

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

// For messages, which neither end early nor move the terminal's cursor.
std::string in_quotes(std::string_view text) {
  constexpr size_t shown = 40;
  std::string start(text.substr(0, shown));
  std::replace_if(
      start.begin(), start.end(), [](char c) { return (c >= 0 && c < ' ') || c == '\x7F'; }, '?');
  return "\"" + start + (text.size() > shown ? "...\"" : "\"");
}

std::string read_all(Source& source) {
  constexpr size_t least = size_t{1} << 16;
  std::string content;
  size_t size = 0;
  content.resize(static_cast<size_t>(std::max<int64_t>(source.length(), 0)) + least);
  while (const size_t read = source.read(content.data() + size, content.size() - size)) {
    size += read;
    if (size == content.size()) content.resize(2 * size);
  }
  content.resize(size);
  return content;
}

char delimiter_of(const InputOptions& options) {
  if (options.delimiter == "auto") return options.path.ends_with(".tsv") ? '\t' : ',';
  return options.delimiter == "tab" ? '\t' : options.delimiter[0];
}

// What may stand around a cell and means nothing there.
const char* blanks_beside(char delimiter) { return delimiter == '\t' ? " \r" : delimiter == ' ' ? "\t\r" : " \t\r"; }

constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";

Real binary_real(const InputOptions& options) {
  if (options.path.ends_with(".f32")) return Real::Single;
  return options.path.ends_with(".f64") ? Real::Double : options.real;
}

size_t binary_width(const InputOptions& options, int wanted) {
  return static_cast<size_t>(options.width ? options.width : std::max(wanted, 1));
}

size_t binary_row(const InputOptions& options, int wanted) {
  return binary_width(options, wanted) * (binary_real(options) == Real::Double ? sizeof(double) : sizeof(float));
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
  CsvRows(std::string_view content, char cell_delimiter, const std::string& source_name, int64_t lines_before)
      : rest(content), delimiter(cell_delimiter), blanks(blanks_beside(cell_delimiter)), source(source_name),
        at_line(lines_before + 1) {}

  bool next(Cells& cells, int64_t& line) {
    while (!rest.empty()) {
      cells.clear();
      unquoted.clear();
      line = at_line;
      const std::string_view whole = rest.substr(0, rest.find('\n'));
      if (whole.find_first_not_of(blanks) == whole.npos) {
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
    const size_t start = rest.find_first_not_of(blanks);
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
  const char* blanks;
  const std::string& source;
  int64_t at_line;
  std::deque<std::string> unquoted; // cells point into it
};

// The places of the named columns.
std::vector<size_t> locate(const InputOptions& options, const Cells& names, bool have_names, size_t width, int wanted,
                           const std::string& source) {
  std::vector<size_t> places;
  for (const std::string& name : options.columns) {
    places.push_back(find_column(have_names ? names : Cells{}, width, name, source));
    if (places.back() == no_column)
      throw Failure(source + ": no column " + in_quotes(name) + " among its " + std::to_string(width));
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

// Whether a cell of the first row makes it a header. What starts like a number and has no letter but an exponent's, as
// 1e999, 1,5 (where commas are decimal) or 2024-05-31, is rather a cell that is wrong or not asked for.
bool is_name(std::string_view cell) {
  cell = trim(cell);
  double ignored;
  if (is_missing(cell) || parse_number(cell, Real::Double, ignored)) return false;
  const bool starts_a_number = cell.find_first_of("0123456789+-.") == 0;
  return !starts_a_number || std::any_of(cell.begin(), cell.end(), [](char c) {
    const char lower = static_cast<char>(c | 0x20);
    return c < 0 || (lower >= 'a' && lower <= 'z' && lower != 'e');
  });
}

// Rows of cells, from whichever source, into the table's chosen columns.
template <class NextRow>
void fill(Table& table, const InputOptions& options, int wanted, bool may_have_header, NextRow next) {
  Cells cells;
  int64_t line = 0;
  if (!next(cells, line)) return;
  const bool header =
      may_have_header &&
      (options.header == "yes" || (options.header == "auto" && std::any_of(cells.begin(), cells.end(), is_name)));
  if (table.width == 0) table.width = static_cast<int64_t>(cells.size());
  const auto width = static_cast<size_t>(table.width);
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

void read_csv(Table& table, std::string_view content, const InputOptions& options, int wanted, int64_t lines_before) {
  CsvRows rows(content, delimiter_of(options), table.source, lines_before);
  fill(table, options, wanted, true, [&](Cells& cells, int64_t& line) { return rows.next(cells, line); });
}

// Numbers between blanks; # starts a comment that ends with the line.
void read_text(Table& table, std::string_view rest, const InputOptions& options, int wanted, int64_t lines_before) {
  int64_t at_line = lines_before;
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

void read_binary(Table& table, const std::string& content, const InputOptions& options, int wanted,
                 int64_t rows_before) {
  const size_t width = binary_width(options, wanted), row = binary_row(options, wanted), size = row / width;
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
      double& value = column.values[i];
      float single;
      if (size == sizeof single) {
        std::memcpy(&single, bytes, size);
        value = single;
      } else {
        std::memcpy(&value, bytes, size);
        if (options.real == Real::Double) continue;
        single = static_cast<float>(value);
        if (std::isinf(single) && !std::isinf(value))
          throw Failure(table.source + ", row " + std::to_string(rows_before + static_cast<int64_t>(i) + 1) +
                        ": a value too large for type s");
        value = single;
      }
    }
  }
  for (size_t i = 0; i < count; ++i) table.lines.push_back(rows_before + static_cast<int64_t>(i) + 1);
}

}

Source::Source(const std::string& path) : name(path == "-" ? "standard input" : path), descriptor(STDIN_FILENO) {
  if (path == "-") return;
  descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) throw Failure("cannot open " + name + ": " + std::strerror(errno));
}

Source::~Source() {
  if (descriptor != STDIN_FILENO) close(descriptor);
}

size_t Source::read(char* to, size_t most) {
  for (;;) {
    const ssize_t count = ::read(descriptor, to, most);
    if (count >= 0) return static_cast<size_t>(count);
    if (errno != EINTR) throw Failure("cannot read " + name + ": " + std::strerror(errno));
  }
}

int64_t Source::length() const {
  struct stat status {};
  return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) ? status.st_size : -1;
}

std::string format_of(const InputOptions& options, std::string_view content) {
  if (options.format != "auto") return options.format;
  const std::string_view path = options.path;
  if (path.ends_with(".csv") || path.ends_with(".tsv")) return "csv";
  if (path.ends_with(".bin") || path.ends_with(".f64") || path.ends_with(".f32")) return "binary";
  if (options.header == "yes") return "csv";
  std::string_view rest = content;
  if (rest.starts_with(byte_order_mark)) rest.remove_prefix(byte_order_mark.size());
  while (!rest.empty()) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(rest.size(), line.size() + 1));
    const std::string_view data = line.substr(0, line.find('#'));
    if (trim(data).empty()) continue;
    const bool number_columns = std::all_of(options.columns.begin(), options.columns.end(), [](const std::string& c) {
      return c.find_first_not_of("0123456789") == c.npos;
    });
    return data.find(delimiter_of(options)) != data.npos || !number_columns ? "csv" : "text";
  }
  return "text";
}

size_t whole_rows(std::string_view content, const InputOptions& options) {
  if (options.format == "binary") {
    const size_t row = binary_row(options, 0);
    return content.size() / row * row;
  }
  if (options.format != "csv") return content.rfind('\n') + 1; // npos + 1: none
  // Quotes hide a line break only in a cell that starts with one.
  enum class In { Blanks, Cell, Quotes } in = In::Blanks;
  const char delimiter = delimiter_of(options);
  const std::string_view blanks = blanks_beside(delimiter);
  size_t end = 0;
  for (size_t i = content.starts_with(byte_order_mark) ? byte_order_mark.size() : 0; i < content.size(); ++i) {
    const char c = content[i];
    if (in == In::Quotes) {
      if (c == '"' && i + 1 < content.size() && content[i + 1] == '"') {
        ++i;
      } else if (c == '"') {
        in = In::Cell;
      }
    } else if (c == '\n') {
      in = In::Blanks;
      end = i + 1;
    } else if (c == delimiter) {
      in = In::Blanks;
    } else if (in == In::Blanks && blanks.find(c) == blanks.npos) {
      in = c == '"' ? In::Quotes : In::Cell;
    }
  }
  return end;
}

size_t find_column(const std::vector<std::string_view>& names, size_t width, const std::string& name,
                   const std::string& source) {
  if (const auto count = std::count(names.begin(), names.end(), name); count > 1)
    throw Failure(source + ": " + std::to_string(count) + " columns are named " + in_quotes(name) +
                  "; choose by number");
  const auto found = std::find(names.begin(), names.end(), name);
  if (found != names.end()) return static_cast<size_t>(found - names.begin());
  int64_t number = 0;
  const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
  const bool is_number = error == std::errc{} && end == name.data() + name.size();
  return is_number && number >= 1 && number <= static_cast<int64_t>(width) ? static_cast<size_t>(number - 1)
                                                                           : no_column;
}

bool is_missing(std::string_view text) { return text.empty() || text == "NA"; }

bool parse_number(std::string_view text, Real real, double& value) {
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  if (text.empty() || text[0] == '-' || text[0] == '+') return false;
  if (text.size() > 2 && text[0] == '0' && (text[1] | 0x20) == 'x' && text.find_first_of("-+iInN") == 2)
    return false; // what follows the prefix is digits; neither a sign nor a word
  return real == Real::Single ? parse_as<float>(text, negative, value) : parse_as<double>(text, negative, value);
}

Table parse_table(const std::string& content, const InputOptions& options, int wanted, const std::string& source,
                  Before before) {
  Table table;
  table.source = source;
  table.width = before.width;
  const std::string_view text =
      std::string_view(content).substr(content.starts_with(byte_order_mark) ? byte_order_mark.size() : 0);
  const std::string format = format_of(options, text);
  if (format == "csv") {
    read_csv(table, text, options, wanted, before.lines);
  } else if (format == "binary") {
    read_binary(table, content, options, wanted, before.lines);
  } else {
    read_text(table, text, options, wanted, before.lines);
  }
  return table;
}

Table read_table(const InputOptions& options, int wanted) {
  Source source(options.path);
  Table table = parse_table(read_all(source), options, wanted, source.name);
  if (table.rows() == 0) throw Failure(source.name + " holds no numbers");
  return table;
}

}
