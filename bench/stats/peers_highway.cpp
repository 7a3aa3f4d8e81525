// Highway's vectorised quicksort in the tier of these flags, not in the one that the processor would allow.
#include "bench/stats/peers.h"

#include <hwy/contrib/sort/traits-inl.h>
#include <hwy/contrib/sort/vqsort-inl.h>

namespace tarn::bench {

void highway_sort(double* x, int64_t n) {
  namespace target = hwy::HWY_NAMESPACE;
  using Traits = target::detail::SharedTraits<target::detail::TraitsLane<target::detail::OrderAscending<double>>>;
  target::Sort(target::SortTag<double>(), Traits(), x, static_cast<size_t>(n), static_cast<double*>(nullptr));
}

}
