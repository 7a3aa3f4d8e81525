// The caller's call-backs by precision.
#pragma once

#include "tarn/fitting_evaluation.h"

namespace tarn::fitting {

template <class Real> struct Callbacks;
template <> struct Callbacks<double> {
  using Search = tarn_df_dsearch_cb;
  using Evaluate = tarn_df_deval_cb;
  using Integrate = tarn_df_dintegr_cb;
};
template <> struct Callbacks<float> {
  using Search = tarn_df_ssearch_cb;
  using Evaluate = tarn_df_seval_cb;
  using Integrate = tarn_df_sintegr_cb;
};

// A call-back with its parameter.
template <class Function> struct Bound {
  Function call;
  void* parameter;
};

}
