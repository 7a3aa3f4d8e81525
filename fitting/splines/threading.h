// Work on cells and functions cut into items, for threads to share.
#pragma once

#include "fitting/task.h"
#include "fitting/threads.h"

namespace tarn::fitting {

inline int64_t divided_up(int64_t count, int64_t size) { return (count + size - 1) / size; }

// Threads for so many items of work, at least one.
inline int64_t threads_for(const tarn_threader* threader, int64_t items) {
  return maximum(minimum(max_threads(threader), items), 1);
}

// Cells and functions of one item, where items are blocks of cells by groups of functions, the cells running faster.
struct Item {
  int64_t first_cell, end_cell, first_function, end_function;
};
struct Items {
  int64_t cells, functions;             // of the task
  int64_t cell_blocks, function_groups; // the last block takes what remains
  int64_t cells_per_block, functions_per_group;
  int64_t count() const { return cell_blocks * function_groups; }
  Item operator[](int64_t item) const {
    const int64_t group = item / cell_blocks, block = item % cell_blocks;
    return {block * cells_per_block, block + 1 == cell_blocks ? cells : (block + 1) * cells_per_block,
            group * functions_per_group, group + 1 == function_groups ? functions : (group + 1) * functions_per_group};
  }
};

}
