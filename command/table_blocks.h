// A large table, block by block: as many whole rows at a time as fit into a given number of bytes.
#pragma once

#include "command/input.h"

#include <string>

namespace tarn::command {

class TableBlocks {
public:
  // The options choose the same columns of every block. A stretch of bytes without a row's end is an error.
  TableBlocks(const InputOptions& options, int64_t block_bytes);

  // Reads the next rows; false when there are none left. Lines are counted through all blocks.
  bool next(Table& block);

  bool at_end() const { return ended && pending.empty(); } // nothing is left to read
  double progress() const;                                 // 0 to 1; -1 when the length is not known

private:
  void fill();
  void first_rows(const Table& block, const std::string& content);

  InputOptions options;
  Source source;
  // Before every block stands the header. Until the first row is found, it is all that was read.
  std::string header, pending;
  size_t limit;
  int64_t taken = 0, width = 0;
  int64_t lines = 0; // that were taken; of binary input the rows
  bool ended = false, first = true;
};

}
