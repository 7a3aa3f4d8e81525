// All rows of the table of MT2203: minutes of work.
#include "random/mt2203_polynomial.h"

#include <gtest/gtest.h>

TEST(Mt2203Table, AllRowsAreIrreducible) {
  for (int row = 0; row < 6024; row++) ASSERT_TRUE(tarn::test::is_irreducible(__kest_mt2203_table[row][0])) << row;
}
