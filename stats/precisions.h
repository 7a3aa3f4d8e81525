// The two precisions of every entry. TARN_TWINS(X) expands X(d, double) and X(s, float).
#pragma once

#define TARN_TWINS(X)                                                                                                  \
  X(d, double)                                                                                                         \
  X(s, float)
