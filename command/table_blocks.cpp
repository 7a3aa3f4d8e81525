#include "command/table_blocks.h"

#include "command/failure.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>

namespace tarn::command {

TableBlocks::TableBlocks(const InputOptions& input, int64_t block_bytes)
    : options(input), source(input.path == "-" ? "standard input" : input.path), stream(&std::cin),
      limit(static_cast<size_t>(block_bytes)) {
  if (options.path == "-") return;
  file.open(options.path, std::ios::binary);
  if (!file) throw Failure("cannot open " + source + ": " + std::strerror(errno));
  std::error_code error;
  if (std::filesystem::is_directory(options.path, error))
    throw Failure("cannot read " + source + ": " + std::strerror(EISDIR));
  const auto size = std::filesystem::file_size(options.path, error);
  if (!error) length = static_cast<int64_t>(size);
  stream = &file;
}

double TableBlocks::progress() const {
  return length > 0 ? std::min(1.0, static_cast<double>(taken) / static_cast<double>(length)) : -1;
}

void TableBlocks::fill() {
  while (!ended && pending.size() < limit) {
    const size_t before = pending.size();
    pending.resize(limit);
    stream->read(pending.data() + before, static_cast<std::streamsize>(limit - before));
    pending.resize(before + static_cast<size_t>(stream->gcount()));
    if (stream->bad()) throw Failure("cannot read " + source);
    ended = stream->eof();
  }
  if (!ended && stream->peek() == std::char_traits<char>::eof()) ended = true;
}

// A line break inside quotes ends no row: those before an even number of quotes do.
size_t TableBlocks::cut() const {
  if (ended) return pending.size();
  if (options.format == "binary") {
    const size_t width = static_cast<size_t>(std::max<int64_t>(options.width, 1));
    const size_t row = width * (options.real == Real::Double ? sizeof(double) : sizeof(float));
    return pending.size() / row * row;
  }
  size_t end = 0;
  bool quoted = false;
  for (size_t i = 0; i < pending.size(); ++i) {
    if (pending[i] == '"' && options.format == "csv") quoted = !quoted;
    if (pending[i] == '\n' && !quoted) end = i + 1;
  }
  return end;
}

bool TableBlocks::next(Table& block) {
  fill();
  if (pending.empty()) {
    if (first) throw Failure(source + " holds no numbers");
    return false;
  }
  if (first && options.format == "auto") { // settle the format once, by the first block
    const std::string_view path = options.path;
    const bool csv = path.ends_with(".csv") || path.ends_with(".tsv");
    const bool binary = path.ends_with(".bin") || path.ends_with(".f64") || path.ends_with(".f32");
    const char delimiter = options.delimiter == "tab" ? '\t' : options.delimiter[0];
    options.format = binary ? "binary" : csv || pending.find(delimiter) != pending.npos ? "csv" : "text";
  }
  const size_t end = cut();
  if (end == 0) throw Failure(source + ": a row longer than a block of " + std::to_string(limit) + " bytes");
  const std::string content = header + pending.substr(0, end);
  const bool blank = !first && options.format != "binary" &&
                     pending.find_first_not_of(" \t\r\n") >= end; // what is left is empty lines
  pending.erase(0, end);
  taken += static_cast<int64_t>(end);
  if (blank) return false;
  block = parse_table(content, options, 0, source);

  const auto lines_in = [](std::string_view text) { return std::count(text.begin(), text.end(), '\n'); };
  const int64_t header_lines = lines_in(header);
  for (int64_t& line : block.lines) line += lines_before - header_lines;
  lines_before += lines_in(content) - header_lines;
  if (first && options.format == "csv") {
    const bool named = std::any_of(block.columns.begin(), block.columns.end(),
                                   [](const Column& column) { return !column.name.empty(); });
    options.header = named ? "yes" : "no";
    if (named) { // later blocks are read under the same header
      size_t at = 0;
      for (int64_t line = 1; line < block.lines.front(); ++line) at = content.find('\n', at) + 1;
      header = content.substr(0, at);
    }
  }
  first = false;
  return true;
}

}
