// The arguments that formulas treat on their own, or get wrong.
#pragma once

#include <limits>

namespace tarn::test {

template <class T, class Limits = std::numeric_limits<T>>
constexpr T special_arguments[] = {T(0),
                                   -T(0),
                                   T(1),
                                   T(-1),
                                   Limits::infinity(),
                                   -Limits::infinity(),
                                   Limits::quiet_NaN(),
                                   Limits::max(),
                                   Limits::lowest(),
                                   Limits::min(),
                                   -Limits::min(),
                                   Limits::denorm_min(),
                                   T(0.5),
                                   T(-0.5),
                                   T(1.5),
                                   T(-2.5),
                                   T(2),
                                   T(-3),
                                   T(100),
                                   T(1e-3)};

}
