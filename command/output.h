// Writing results so that a reader gets the same bits back, and so that a file is there whole or not at all.
#pragma once

#include "command/input.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tarn::command {

// A file that appears under its name only by commit(): until then it is a temporary beside it, which goes away with
// the object and on SIGINT, SIGTERM, SIGHUP and SIGPIPE. A name that is a device or a pipe is written directly, as is
// standard output ("-").
class Output {
public:
  explicit Output(const std::string& path);
  ~Output();
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;
  void write(std::string_view bytes);
  void flush();  // hands on what was written so far, so that commit() has little left to fail of
  void commit(); // throws Failure when anything could not be written
  bool is_terminal() const;

private:
  void forget();
  [[noreturn]] void refuse() const;
  std::string path, temporary, buffer;
  int descriptor = -1;
  char* doomed = nullptr; // the temporary's name where the signal handler looks for it
};

// Throws Failure when two outputs would be the same file, or both standard output. An empty path is no output.
void check_distinct(const std::vector<std::string>& paths);

struct OutputOptions {
  std::string path = "-";
  std::string format = "text"; // text, csv, binary
};

// The text with U+FFFD in place of what is no UTF-8 or what XML forbids even there.
std::string as_utf8(std::string_view text);

// The text with blanks in place of control characters.
std::string in_one_line(std::string text);

// Appends the shortest text that reads back to the same bits. A NaN is written nan, whatever its sign.
void append_number(std::string& text, double value, Real real);

// A table, row by row: text (cells between tabs, no header), CSV (with header) or binary (values of the type).
class RowWriter {
public:
  RowWriter(const OutputOptions& options, Real type, const std::vector<std::string>& names);
  void number(double value);
  void missing(); // NA; in binary a NaN
  void end_row();
  void comment(const std::string& words); // a line that readers of numbers pass over; in text alone
  void commit() { output.commit(); }

private:
  void separate();
  Output output;
  Real real;
  char separator;
  bool binary, first = true;
  std::string row;
};

}
