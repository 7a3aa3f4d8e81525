// Reading tables of numbers: plain text, CSV, raw binary; from a file or from standard input.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tarn::command {

enum class Real { Double, Single };

struct InputOptions {
  std::string path = "-";           // "-" is standard input
  std::string format = "auto";      // auto, text, csv, binary
  std::vector<std::string> columns; // names, or numbers from 1
  std::string delimiter = "auto";   // between the cells of CSV: a character, tab, or auto by the file's name
  std::string header = "auto";      // auto, yes, no: whether the first row of CSV holds names
  int64_t width = 0;                // values per row of binary input; 0: as many as the subcommand wants
  Real real = Real::Double;         // numbers are rounded once, to this type; binary values are of it too, unless the
                                    // file's name says that they are floats (.f32) or doubles (.f64)
};

struct Column {
  std::string name;           // the header's, or "" where there is none
  std::vector<double> values; // NaN where missing
  std::vector<bool> missing;  // the cell was empty or NA
};

struct Table {
  std::string source;          // for messages: the file's name or "standard input"
  std::vector<Column> columns; // all of the same length
  std::vector<int64_t> lines;  // of each row, from 1; in binary input the row's number
  int64_t width = 0;           // cells in a row of the input, where rows were told apart
  int64_t rows() const { return static_cast<int64_t>(lines.size()); }
};

// The bytes of a file or of standard input.
class Source {
public:
  explicit Source(const std::string& path); // throws Failure
  ~Source();
  Source(const Source&) = delete;
  Source& operator=(const Source&) = delete;
  size_t read(char* to, size_t most); // 0 only at the end; throws Failure
  int64_t length() const;             // -1 when it is not known
  const std::string name;             // for messages

private:
  int descriptor;
};

// Reads `wanted` columns, or with 0 every column that the options name (all when they name none).
// One wanted column and plain text with no column named: every number of the text, in order.
// Throws Failure on anything that is not a table of numbers, on a column that is unknown or whose name is not its own,
// and on input without a row.
Table read_table(const InputOptions& options, int wanted);

// What was read before a text: its lines (of binary input its rows), and the cells of each row, if any.
struct Before {
  int64_t lines = 0, width = 0;
};

// The same from text that is at hand, perhaps without a row; `options.path` still tells what is auto.
Table parse_table(const std::string& content, const InputOptions& options, int wanted, const std::string& source,
                  Before before = {});

// text, csv or binary: by the file's name; where that says nothing, CSV when columns are named or the delimiter stands in
// the first line of data.
std::string format_of(const InputOptions& options, std::string_view content);

// The length of the whole rows at the start of content whose end is still to come.
size_t whole_rows(std::string_view content, const InputOptions& options);

constexpr size_t no_column = SIZE_MAX;
// The place of the column that goes by a header's name or else by a number from 1. Throws Failure on a name that stands
// twice.
size_t find_column(const std::vector<std::string_view>& names, size_t width, const std::string& name,
                   const std::string& source);

// A number as the input knows it: decimal, scientific or hexadecimal (0x1.8p3), inf, nan. False when the text is no
// number or lies beyond the largest finite one of the type; a number too small for the type rounds as usual.
bool parse_number(std::string_view text, Real real, double& value);

// NA or nothing at all.
bool is_missing(std::string_view text);

}
