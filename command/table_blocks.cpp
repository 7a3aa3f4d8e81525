#include "command/table_blocks.h"

#include "command/failure.h"

#include <algorithm>

namespace tarn::command {

TableBlocks::TableBlocks(const InputOptions& input, int64_t block_bytes)
    : options(input), source(input.path), limit(static_cast<size_t>(block_bytes)) {}

double TableBlocks::progress() const {
  const int64_t length = source.length();
  return length > 0 ? std::min(1.0, static_cast<double>(taken) / static_cast<double>(length)) : -1;
}

// One byte beyond the limit, so that input which just fits is known to have ended.
void TableBlocks::fill() {
  constexpr size_t least = size_t{1} << 20; // a small file shall not cost a large block
  while (!ended && pending.size() <= limit) {
    const size_t before = pending.size();
    pending.resize(std::min(limit + 1, before + std::max(before, least)));
    const size_t count = source.read(pending.data() + before, pending.size() - before);
    pending.resize(before + count);
    ended = count == 0;
  }
}

// What holds for the whole table once its first row is there. Later blocks are read under the same header.
void TableBlocks::first_rows(const Table& block, const std::string& content) {
  first = false;
  width = block.width;
  header.clear();
  if (options.format != "csv") return;
  const bool named = std::any_of(block.columns.begin(), block.columns.end(),
                                 [](const Column& column) { return !column.name.empty(); });
  options.header = named ? "yes" : "no";
  size_t at = 0;
  for (int64_t line = 1; named && line < block.lines.front(); ++line) at = content.find('\n', at) + 1;
  header = content.substr(0, at);
}

bool TableBlocks::next(Table& block) {
  const auto lines_in = [](std::string_view text) { return std::count(text.begin(), text.end(), '\n'); };
  for (;;) {
    fill();
    if (pending.empty()) {
      if (first) throw Failure(source.name + " holds no numbers");
      return false;
    }
    InputOptions settled = options;
    settled.format = format_of(options, header + pending.substr(0, first ? pending.npos : 0));
    const size_t end = ended ? pending.size() : whole_rows(pending, settled);
    if (end == 0) throw Failure(source.name + ": a row longer than a block of " + std::to_string(limit) + " bytes");
    const std::string content = header + pending.substr(0, end);
    pending.erase(0, end);
    taken += static_cast<int64_t>(end);
    block = parse_table(content, settled, 0, source.name, {lines - lines_in(header), width});
    if (first && block.rows() == 0) { // a header or comments alone
      lines += lines_in(content) - lines_in(header);
      header = content;
      continue;
    }
    lines += settled.format == "binary" ? block.rows() : lines_in(content) - lines_in(header);
    if (first) {
      options = settled;
      first_rows(block, content);
    }
    if (block.rows() > 0) return true;
  }
}

}
