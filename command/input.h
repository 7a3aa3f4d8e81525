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
  std::string delimiter = ",";      // between the cells of CSV; "tab" for a tab
  std::string header = "auto";      // auto, yes, no: whether the first row of CSV holds names
  int64_t width = 0;                // values per row of binary input; 0: as many as the subcommand wants
  Real real = Real::Double;         // numbers are rounded once, to this type; binary values are of this type
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
  int64_t rows() const { return static_cast<int64_t>(lines.size()); }
};

// Reads `wanted` columns, or with 0 every column that the options name (all when they name none).
// One wanted column and plain text with no column named: every number of the text, in order.
// Throws Failure on anything that is not a table of numbers, on an unknown column and on input without a row.
Table read_table(const InputOptions& options, int wanted);

// The same from text that is at hand; `options.path` still tells the format where it is auto.
Table parse_table(const std::string& content, const InputOptions& options, int wanted, const std::string& source);

// A number as the input knows it: decimal, scientific or hexadecimal (0x1.8p3), inf, nan. False when the text is no
// number or lies beyond the largest finite one of the type; a number too small for the type rounds as usual.
bool parse_number(std::string_view text, Real real, double& value);

// NA or nothing at all.
bool is_missing(std::string_view text);

}
