// A large table, block by block: as many whole rows at a time as fit into a given number of bytes.
#pragma once

#include "command/input.h"

#include <fstream>
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
  size_t cut() const; // where the last whole row of the pending bytes ends
  void fill();

  InputOptions options;
  std::string source, pending, header;
  std::ifstream file;
  std::istream* stream;
  size_t limit;
  int64_t length = -1, taken = 0, lines_before = 0;
  bool ended = false, first = true;
};

}
