// What a call asks for, and the arrays that this demands.
#pragma once

#include "stats/task.h"

namespace tarn::stats {

enum Estimate : int {
#define TARN_ESTIMATE(bit, field, mask, status, by_default, fast, convert) estimate_##field = bit,
#include "stats/basic/estimates.def"
  estimate_count,
  no_array = estimate_count
};

struct EstimateRow {
  uint64_t mask;
  void* SSTask::*array;
  int32_t null_status;
  uint32_t by_default, fast, convert;
};
constexpr EstimateRow estimates[] = {
#define TARN_ESTIMATE(bit, field, mask, status, by_default, fast, convert)                                             \
  {mask, &SSTask::field, status, by_default, fast, convert},
#include "stats/basic/estimates.def"
};
static_assert(sizeof(estimates) / sizeof(estimates[0]) == estimate_count);

enum class Family { fast, one_pass, two_pass };

struct Request {
  bool compute; // exactly one compute method, of this family
  bool convert; // sums and cross products into moments
  Family family;
  uint32_t requested, demanded; // by bits of Estimate

  bool demands(int estimate) const { return demanded >> estimate & 1; }
  bool demands_any(int first, int last) const { return (demanded >> first & ((2u << (last - first)) - 1)) != 0; }
};

// The method and the arrays, in the order of the checks.
inline int32_t make_request(const SSTask* task, uint64_t estimate_mask, uint64_t method_mask, Request& request) {
  const uint64_t compute = method_mask & (TARN_SS_METHOD_FAST | TARN_SS_METHOD_ONE_PASS | TARN_SS_METHOD_USER_MEAN);
  const bool one = compute != 0 && (compute & (compute - 1)) == 0;
  request.convert = (method_mask & (TARN_SS_METHOD_FROM_MOMENTS | TARN_SS_METHOD_FROM_SUMS)) != 0;
  request.compute = one;
  if (!one && (compute != 0 || !request.convert)) return TARN_SS_ERROR_METHOD;
  request.family = compute == TARN_SS_METHOD_FAST       ? Family::fast
                   : compute == TARN_SS_METHOD_ONE_PASS ? Family::one_pass
                                                        : Family::two_pass;
  request.requested = request.demanded = 0;
  for (int bit = 0; bit < estimate_count; ++bit) {
    const EstimateRow& row = estimates[bit];
    if (!(estimate_mask & row.mask)) continue;
    request.requested |= 1u << bit;
    request.demanded |= compute == TARN_SS_METHOD_FAST ? row.fast : one ? row.by_default : row.convert;
  }
  for (int bit = 0; bit < estimate_count; ++bit)
    if (request.demands(bit) && !(task->*estimates[bit].array)) return estimates[bit].null_status;
  return request.demands(no_array) ? TARN_SS_ERROR_METHOD : TARN_SS_OK;
}

// How many moments a kernel keeps. A sum and its moment count alike.
inline int scenario_of(const Request& request) {
  const auto wants = [&](int moment, int sum) { return request.demands(moment) || request.demands(sum); };
  const bool raw2 = wants(estimate_raw_moment_2, estimate_raw_sum_2);
  const bool raw3 = wants(estimate_raw_moment_3, estimate_raw_sum_3);
  const bool raw4 = wants(estimate_raw_moment_4, estimate_raw_sum_4);
  const bool central2 = wants(estimate_central_moment_2, estimate_central_sum_2);
  const bool central3 = wants(estimate_central_moment_3, estimate_central_sum_3);
  const bool central4 = wants(estimate_central_moment_4, estimate_central_sum_4);
  switch (request.family) {
  case Family::fast: return raw4 ? 3 : raw3 ? 2 : raw2 ? 1 : 0;
  case Family::one_pass: return raw3 || raw4 || central3 || central4 ? 3 : raw2 ? 2 : central2 ? 1 : 0;
  case Family::two_pass: return raw2 || raw3 || raw4 ? 3 : central4 ? 2 : central3 ? 1 : 0;
  }
  return 0;
}

}
