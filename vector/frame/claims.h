// What a formula claims of itself: TARN_CLAIM(tName, class, ulp, from, to), the largest error in units in the last
// place over the arguments from..to (all finite ones of that range; results that are denormal count in units of the
// smallest denormal). A formula may claim several ranges. The accuracy harness reads these lines from the files (one
// claim a line) and holds them.
#pragma once

#ifndef TARN_CLAIM
#define TARN_CLAIM(tName, cls, ulp, from, to)
#endif
