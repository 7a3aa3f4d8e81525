// The entry of the basic statistics: what is demanded, on which arrays it works, the threads' shares and their merge.
#include "stats/basic/kernels.h"
#include "stats/basic/outputs.h"
#include "stats/precisions.h"

namespace tarn::stats {
namespace {

// One call. Thread 0 works on the caller's arrays where it can, every other thread on arrays of its own.
template <class Real> struct Run {
  SSTask* task;
  Request request;
  int64_t n, p;
  bool columns, weighted;
  int scenario;
  ArrayCounts arrays;
  Kernel<Real> kernel;
  int32_t threads;

  bool cross;            // a cross-product matrix is kept
  bool cross_per_thread; // one for each thread; else the kernels leave it alone and the entry does it in one piece

  Real* workspace;  // all that is allocated, in one block
  Real* saved_mean; // room for the caller's mean, which the task keeps
  Accumulator<Real>* accumulators;
  State<Real> state; // thread 0
  Real* matrix;      // thread 0
  Real* others;      // arrays of threads 1, 2, ..., other_size reals each
  int64_t other_size;
  Real* scratches; // of all threads, scratch_size reals each
  int64_t scratch_size;
  Real* roots; // p reals
};

constexpr int64_t line = 128; // bytes; blocks of different threads do not share a cache line

template <class Real> int64_t padded(int64_t count) {
  constexpr int64_t unit = line / int64_t(sizeof(Real));
  return (count + unit - 1) / unit * unit;
}

template <class Real> bool two_pass(const Run<Real>& run) { return run.request.family == Family::two_pass; }

template <class Real> Accumulator<Real>& accumulator(const Run<Real>& run, int32_t thread) {
  return *reinterpret_cast<Accumulator<Real>*>(reinterpret_cast<char*>(run.accumulators) + thread * line);
}

template <class Real> State<Real> state_of(const Run<Real>& run, int32_t thread) {
  if (thread == 0) return run.state;
  State<Real> state = {};
  Real* next = run.others + (thread - 1) * run.other_size;
  for (int k = 0; k < run.arrays.raw; ++k) {
    if (k == 0 && two_pass(run)) {
      state.raw[0] = run.state.raw[0]; // shared, since no kernel changes it
      continue;
    }
    state.raw[k] = next;
    next += padded<Real>(run.p);
  }
  for (int k = 0; k < run.arrays.central; ++k, next += padded<Real>(run.p)) state.central[k] = next;
  return state;
}

template <class Real> Real* matrix_of_thread(const Run<Real>& run, int32_t thread) {
  if (!run.cross) return nullptr;
  if (thread == 0) return run.matrix;
  if (!run.cross_per_thread) return nullptr;
  return run.others + thread * run.other_size - padded<Real>(run.p * run.p);
}

template <class Real> Real* scratch_of(const Run<Real>& run, int32_t thread) {
  return run.scratches + thread * run.scratch_size;
}

// ---- Setting up ----

template <class Real> int32_t thread_count(const Run<Real>& run, const tarn_threader* threader) {
  const int64_t limit = threader ? threader->threader_max_threads() : 1;
  int64_t work = 0;
  const bool overflow =
      __builtin_mul_overflow(run.n, run.p, &work) || (run.cross && __builtin_mul_overflow(work, run.p, &work));
  if (overflow) work = INT64_MAX;
  const int64_t count = minimum(limit, minimum(work >> 13, run.n >> 4));
  return static_cast<int32_t>(maximum(count, 1));
}

// Memory is taken by walking through the wanted pieces twice: first to add up their sizes, then to hand them out.
template <class Real> struct Pieces {
  Real* base;
  int64_t used;
};
template <class Real> Real* take(Pieces<Real>& pieces, int64_t count) {
  Real* piece = pieces.base ? pieces.base + pieces.used : nullptr;
  pieces.used += padded<Real>(count);
  return piece;
}

// The array of order k that thread 0 works on: the caller's sum array, else the caller's moment array, else a new one.
// With a mask all are new, so that the elements of other variables stay as they are.
template <class Real> Real* work_array(Run<Real>& run, int moment, int sum, Pieces<Real>& pieces) {
  SSTask* task = run.task;
  if (two_pass(run) && moment == estimate_mean) {
    if (task->mean) return reals<Real>(task->mean);
    return take(pieces, run.p); // sums about zero alone are wanted, and no mean was given: zeros serve
  }
  if (!task->variable_mask) {
    if (run.request.demands(sum)) return array_of<Real>(task, sum);
    if (run.request.demands(moment)) return array_of<Real>(task, moment);
  }
  return take(pieces, run.p);
}

// The matrix that holds the state between calls, and in which it is kept if it can be.
template <class Real> int matrix_in_use(const Run<Real>& run) {
  if (run.request.demands(estimate_cross_product)) return estimate_cross_product;
  return run.request.demands(estimate_covariance) ? estimate_covariance : estimate_correlation;
}

template <class Real> void lay_out(Run<Real>& run, Pieces<Real> pieces, int64_t& total) {
  const int64_t p = run.p;
  run.accumulators = reinterpret_cast<Accumulator<Real>*>(take(pieces, run.threads * line / int64_t(sizeof(Real))));
  run.state = {};
  for (int k = 0; k < run.arrays.raw; ++k)
    run.state.raw[k] = work_array(run, estimate_mean + k, estimate_sum + k, pieces);
  for (int k = 0; k < run.arrays.central; ++k)
    run.state.central[k] = work_array(run, estimate_central_moment_2 + k, estimate_central_sum_2 + k, pieces);
  run.matrix = nullptr;
  if (run.cross) {
    const Matrix<Real> callers = matrix_of<Real>(run.task, matrix_in_use(run), p);
    const bool usable = callers.storage == MatrixStorage::full && !run.task->variable_mask;
    run.matrix = usable ? callers.elements : take(pieces, p * p);
  }
  run.other_size = (run.arrays.raw - two_pass(run) + run.arrays.central) * padded<Real>(p) +
                   (run.cross && run.cross_per_thread ? padded<Real>(p * p) : 0);
  run.others = take(pieces, (run.threads - 1) * run.other_size);
  run.scratch_size = padded<Real>(kernel_scratch<Real>(p, run.cross, run.weighted));
  run.scratches = take(pieces, run.threads * run.scratch_size);
  run.roots = take(pieces, p);
  total = pieces.used;
}

template <class Real> int32_t set_up(Run<Real>& run, const tarn_threader* threader) {
  run.cross = run.request.demands(estimate_covariance) || run.request.demands(estimate_correlation) ||
              run.request.demands(estimate_cross_product);
  constexpr int64_t widest_matrix = int64_t(1) << 24; // beyond it neither memory nor BLAS would take it
  if (run.cross && run.p > widest_matrix) return TARN_SS_ERROR_ALLOCATION;
  run.threads = thread_count(run, threader);
  run.cross_per_thread = run.request.family == Family::one_pass || run.weighted ||
                         run.p <= minimum(product_block<Real>(run.p, false), run.n / run.threads);
  run.scenario = scenario_of(run.request);
  switch (run.request.family) {
  case Family::fast:
    run.kernel = fast_kernel<Real>(run.columns, run.weighted, run.scenario);
    run.arrays = mapFastScenOnMoms[run.scenario];
    break;
  case Family::one_pass:
    run.kernel = one_pass_kernel<Real>(run.columns, run.weighted, run.scenario, run.cross);
    run.arrays = map1passScenOnMoms[run.scenario];
    break;
  case Family::two_pass:
    run.kernel = two_pass_kernel<Real>(run.columns, run.weighted, run.scenario);
    run.arrays = map2passScenOnMoms[run.scenario];
  }
  int64_t total = 0;
  lay_out(run, {nullptr, 0}, total);
  run.workspace = allocate<Real>(total);
  if (!run.workspace) return TARN_SS_ERROR_ALLOCATION;
  if (two_pass(run) && run.task->mean) { // anew each time: the dimension may have grown since the last call
    run.saved_mean = allocate<Real>(run.p);
    if (!run.saved_mean) return TARN_SS_ERROR_ALLOCATION;
  }
  lay_out(run, {run.workspace, 0}, total);
  tarn_dft_mc3_ownsZero_8u(reinterpret_cast<uint8_t*>(run.workspace), total * int64_t(sizeof(Real)));
  return TARN_SS_OK;
}

// ---- Continuing from the results of earlier calls ----

// The kernels want raw arrays as moments and central arrays as running sums.
template <class Real> void seed_array(const Run<Real>& run, Real* work, const void* from, Real factor) {
  const Real* source = static_cast<const Real*>(from);
  for (int64_t j = 0; j < run.p; ++j) work[j] = source[j] * factor;
}

// A central sum that was not asked for is not in any array of the caller's that can be relied on. The raw moments give
// it where they are kept; else what the caller's array holds is taken.
template <class Real> void seed_unasked_central(const Run<Real>& run, int k, Real W, const Real factors[3]) {
  const Request& request = run.request;
  Real* work = run.state.central[k];
  const auto has_raw = [&](int order) {
    return request.demands(estimate_mean + order) || request.demands(estimate_sum + order);
  };
  bool all = k < 2;
  for (int order = 0; order <= k + 1; ++order) all = all && order < run.arrays.raw && has_raw(order);
  if (all) {
    for (int64_t j = 0; j < run.p; ++j) {
      const Real m1 = run.state.raw[0][j], m2 = run.state.raw[1][j];
      work[j] = k == 0 ? W * (m2 - m1 * m1) : W * (run.state.raw[2][j] - 3 * m2 * m1 + 2 * m1 * m1 * m1);
    }
  } else if (const void* sums = run.task->*estimates[estimate_central_sum_2 + k].array) {
    seed_array(run, work, sums, Real(1));
  } else if (const void* moments = run.task->*estimates[estimate_central_moment_2 + k].array) {
    seed_array(run, work, moments, factors[k]);
  }
}

template <class Real> void seed_matrix(const Run<Real>& run, Real W, Real V) {
  const int estimate = matrix_in_use(run);
  const Matrix<Real> from = matrix_of<Real>(run.task, estimate, run.p);
  const Real factor = estimate == estimate_cross_product ? Real(1) : W - V / W;
  const bool undefined = factor == 0 && !two_pass(run);
  const auto diagonal = [&](int64_t i) { return from.at(i, i); };
  for (int64_t i = run.p - 1; i >= 0; --i) { // diagonals of earlier rows are still needed when the matrix is in place
    for (int64_t j = 0; j < i; ++j) {
      Real value = from.at(i, j);
      if (estimate == estimate_correlation) {
        const Real vi = diagonal(i), vj = diagonal(j);
        // A variable that has not varied so far has a correlation with none, but its products are zero.
        const bool constant = (vi <= 0 || vj <= 0) && !two_pass(run);
        value = constant ? Real(0) : value * (square_root(vi) * square_root(vj));
      }
      run.matrix[i * run.p + j] = undefined ? Real(0) : value * factor;
    }
    run.matrix[i * run.p + i] = undefined ? Real(0) : diagonal(i) * factor;
  }
}

template <class Real> void seed_from_results(const Run<Real>& run, Real W, Real V) {
  const Request& request = run.request;
  // One observation has no variance: its undefined moment stands for a sum of zero. About a caller's mean the sum need
  // not be zero, and is lost with the moment: what goes on from there stays undefined.
  const Real factors[3] = {(W * W - V) / W, W, W};
  for (int k = two_pass(run) ? 1 : 0; k < run.arrays.raw; ++k) {
    if (request.demands(estimate_sum + k)) {
      seed_array(run, run.state.raw[k], array_of<Real>(run.task, estimate_sum + k), 1 / W);
    } else if (request.demands(estimate_mean + k)) {
      seed_array(run, run.state.raw[k], array_of<Real>(run.task, estimate_mean + k), Real(1));
    }
  }
  for (int k = 0; k < run.arrays.central; ++k) {
    const int sum = estimate_central_sum_2 + k, moment = estimate_central_moment_2 + k;
    if (request.demands(sum)) {
      seed_array(run, run.state.central[k], array_of<Real>(run.task, sum), Real(1));
    } else if (!request.demands(moment)) {
      seed_unasked_central(run, k, W, factors);
    } else if (factors[k] != 0 || two_pass(run)) {
      seed_array(run, run.state.central[k], array_of<Real>(run.task, moment), factors[k]);
    } else {
      for (int64_t j = 0; j < run.p; ++j) run.state.central[k][j] = 0;
    }
  }
  if (run.cross) seed_matrix(run, W, V);
}

template <class Real> void start_afresh(const Run<Real>& run) {
  for (int k = two_pass(run) ? 1 : 0; k < run.arrays.raw; ++k)
    for (int64_t j = 0; j < run.p; ++j) run.state.raw[k][j] = 0;
  for (int k = 0; k < run.arrays.central; ++k)
    for (int64_t j = 0; j < run.p; ++j) run.state.central[k][j] = 0;
  for (int64_t at = 0; run.cross && at < run.p * run.p; ++at) run.matrix[at] = 0;
}

// ---- The threads ----

// The mean by which the matrix was centred before this call.
template <class Real> const Real* earlier_mean(const Run<Real>& run, const State<Real>& state) {
  return two_pass(run) && run.task->saved_mean ? reals<Real>(run.task->saved_mean) : state.raw[0];
}

template <class Real> const Real* weights_of(const Run<Real>& run) { return reals<Real>(run.task->weights); }

template <class Real> Products<Real> products_of(const Run<Real>& run, int64_t first, int64_t count, bool together) {
  const Real* data = reals<Real>(run.task->observations) + (run.columns ? first * run.p : first);
  const Real* weights = run.weighted ? weights_of(run) + first : nullptr;
  return {{data, weights, count, run.p, run.n}, run.columns, nullptr, together};
}

// Fast and two-pass matrices: products as they are, and the part of the mean taken off at the end.
template <class Real> void sum_with_products(const Run<Real>& run, KernelArguments<Real> a, int64_t end) {
  Accumulator<Real>& total = *a.accumulator;
  if (total.W > 0) add_rank_one(run.p, total.W, earlier_mean(run, a.state), a.matrix);
  const int64_t length = product_block<Real>(run.p, run.weighted);
  Real* scratch = a.scratch + 2 * order_count * run.p;
  for (; a.first < end; a.first = a.end) {
    a.end = minimum(a.first + length, end);
    const Real before = total.W;
    run.kernel(a);
    if (total.W != before)
      add_cross_products(products_of(run, a.first, a.end - a.first, a.together), a.matrix, scratch);
  }
  if (total.W > 0) add_rank_one(run.p, -total.W, a.state.raw[0], a.matrix);
}

template <class Real> void _vSSBasicThreader(int32_t thread, int32_t, int32_t threads, void* context) {
  const Run<Real>& run = *static_cast<const Run<Real>*>(context);
  const int64_t share = run.n / threads, first = thread * share;
  const int64_t end = thread == threads - 1 ? run.n : first + share;
  const KernelArguments<Real> a = {first,
                                   end,
                                   run.n,
                                   run.p,
                                   reals<Real>(run.task->observations),
                                   run.weighted ? weights_of(run) : nullptr,
                                   &accumulator(run, thread),
                                   state_of(run, thread),
                                   matrix_of_thread(run, thread),
                                   scratch_of(run, thread),
                                   run.threads > 1};
  const bool with_products =
      run.cross && run.request.family != Family::one_pass && (run.cross_per_thread || run.threads == 1);
  if (with_products) {
    sum_with_products(run, a, end);
  } else {
    run.kernel(a);
  }
}

template <class Real> void merge_thread(const Run<Real>& run, int32_t thread) {
  Accumulator<Real>& total = accumulator(run, 0);
  const Accumulator<Real>& share = accumulator(run, thread);
  if (share.W == 0) return;
  const State<Real> state = state_of(run, thread);
  if (run.cross && run.cross_per_thread) {
    const Real* products = matrix_of_thread(run, thread);
    for (int64_t i = 0; i < run.p; ++i)
      for (int64_t j = 0; j <= i; ++j) run.matrix[i * run.p + j] += products[i * run.p + j];
    if (total.W != 0 && !two_pass(run)) {
      Real* difference = scratch_of(run, 0);
      for (int64_t j = 0; j < run.p; ++j) difference[j] = state.raw[0][j] - run.state.raw[0][j];
      add_rank_one(run.p, total.W / (total.W + share.W) * share.W, difference, run.matrix);
    }
  }
  merge_states(run.state, total.W, state, share.W, two_pass(run), 0, run.p);
  total.W += share.W;
  total.V += share.V;
  total.third += share.third;
  total.fourth += share.fourth;
}

// Wide matrices that the threads left alone: all products in one piece.
template <class Real> void finish_matrix(const Run<Real>& run) {
  const int64_t length = !run.columns && run.n > INT32_MAX ? product_block<Real>(run.p, false) : int64_t(1) << 20;
  Real* scratch = scratch_of(run, 0) + 2 * order_count * run.p;
  for (int64_t first = 0; first < run.n; first += length)
    add_cross_products(products_of(run, first, minimum(length, run.n - first), false), run.matrix, scratch);
  add_rank_one(run.p, -accumulator(run, 0).W, run.state.raw[0], run.matrix);
}

// ---- The entry ----

template <class Real> void keep_callers_mean(const Run<Real>& run) {
  if (!two_pass(run) || !run.task->mean) return;
  if (run.task->saved_mean) tarn_serv_deallocate(run.task->saved_mean);
  run.task->saved_mean = run.saved_mean;
  __builtin_memcpy(run.task->saved_mean, run.task->mean, static_cast<uint64_t>(run.p) * sizeof(Real));
}

template <class Real> int32_t compute(Run<Real>& run, const tarn_threader* threader) {
  SSTask* task = run.task;
  const int32_t status = set_up(run, threader);
  if (status != TARN_SS_OK) return status;
  Real* sums = reals<Real>(task->weight_sums);
  Accumulator<Real>& total = accumulator(run, 0);
  if (sums && sums[0] > 0) {
    total.W = sums[0];
    total.V = sums[1];
    seed_from_results(run, total.W, total.V);
  } else {
    start_afresh(run);
  }

  const bool whole_matrix = run.cross && run.threads > 1 && !run.cross_per_thread;
  if (whole_matrix && total.W > 0) add_rank_one(run.p, total.W, earlier_mean(run, run.state), run.matrix);
  if (threader) {
    threader->threader_region(run.threads, &run, _vSSBasicThreader<Real>);
  } else {
    _vSSBasicThreader<Real>(0, 0, 1, &run);
  }
  for (int32_t thread = 1; thread < run.threads; ++thread) merge_thread(run, thread);
  if (whole_matrix) finish_matrix(run);

  if (run.cross) put_matrices(task, run.request, run.matrix, run.p, total.W, total.V, run.roots);
  for (int64_t j = 0; j < run.p; ++j)
    if (selected(task, j)) put_moments(task, run.request, run.state, total.W, total.V, j);
  if (sums) {
    sums[0] = total.W;
    sums[1] = total.V;
  }
  keep_callers_mean(run);
  return TARN_SS_OK;
}

template <class Real> int32_t convert(Run<Real>& run) {
  const SSTask* task = run.task;
  const Real* sums = reals<Real>(task->weight_sums);
  const Real W = sums ? sums[0] : Real(read_integer(task, task->observation_count));
  const Real V = sums ? sums[1] : W;
  if (run.request.demands(estimate_covariance) || run.request.demands(estimate_correlation)) {
    const Matrix<Real> products = matrix_of<Real>(task, estimate_cross_product, run.p);
    const bool full = products.storage == MatrixStorage::full;
    run.workspace = allocate<Real>(run.p + (full ? 0 : run.p * run.p));
    if (!run.workspace) return TARN_SS_ERROR_ALLOCATION;
    Real* elements = full ? products.elements : run.workspace + run.p;
    for (int64_t i = 0; !full && i < run.p; ++i)
      for (int64_t j = 0; j <= i; ++j) elements[i * run.p + j] = products.at(i, j);
    put_matrices(task, run.request, elements, run.p, W, V, run.workspace);
  }
  for (int64_t j = 0; j < run.p; ++j)
    if (selected(task, j)) convert_moments(task, run.request, W, V, j);
  return TARN_SS_OK;
}

int32_t check_data(const SSTask* task) {
  if (!task->observation_count || read_integer(task, task->observation_count) < 1) return TARN_SS_ERROR_OBSERVATIONS;
  if (!task->observations) return TARN_SS_ERROR_NULL_DATA;
  if (!task->observation_storage) return TARN_SS_ERROR_NULL_STORAGE;
  return is_storage(read_integer(task, task->observation_storage)) ? TARN_SS_OK : TARN_SS_ERROR_STORAGE;
}

// Beyond the arrays: what a demanded matrix or a conversion reads besides.
int32_t check_matrices(const SSTask* task, const Request& request) {
  const bool converts_products =
      request.convert && (request.demands(estimate_covariance) || request.demands(estimate_correlation));
  if (converts_products && !task->cross_product) return estimates[estimate_cross_product].null_status;
  const struct {
    bool read;
    const void* storage;
  } matrices[] = {{request.demands(estimate_covariance), task->covariance_storage},
                  {request.demands(estimate_correlation), task->correlation_storage},
                  {request.demands(estimate_cross_product) || converts_products, task->cross_product_storage}};
  for (const auto& matrix : matrices)
    if (matrix.read && !matrix.storage) return TARN_SS_ERROR_NULL_STORAGE;
  return TARN_SS_OK;
}

template <class Real>
int32_t basic(SSTask* task, uint64_t estimate_mask, uint64_t method_mask, const tarn_threader* threader) {
  if (!task) return TARN_SS_ERROR_NULL_TASK;
  Run<Real> run = {};
  run.task = task;
  Request& request = run.request;
  int32_t status = make_request(task, estimate_mask, method_mask, request);
  if (status == TARN_SS_OK && request.compute) status = check_data(task);
  if (status == TARN_SS_OK && request.convert && !task->weight_sums && (!task->observation_count || task->weights))
    status = TARN_SS_ERROR_WEIGHT_SUMS;
  if (status == TARN_SS_OK) status = check_matrices(task, request);
  if (status != TARN_SS_OK) return status;
  if (!request.convert && request.family == Family::two_pass && request.demands(estimate_sum) && !task->mean)
    return estimates[estimate_mean].null_status; // a sum about the caller's mean is that mean times the weights
  if (!task->dimension || (run.p = read_integer(task, task->dimension)) < 1) return TARN_SS_ERROR_DIMENSION;
  if (request.convert) {
    status = convert(run);
  } else {
    run.n = read_integer(task, task->observation_count);
    run.columns = run.p > 1 && !stores_rows(read_integer(task, task->observation_storage));
    run.weighted = task->weights != nullptr;
    status = compute(run, threader);
  }
  tarn_serv_deallocate(run.workspace);
  return status;
}

}
}

#define TARN_BASIC(t, Real)                                                                                            \
  TARN_EXPORT int32_t _kest##t##SSBasic(void* task, uint64_t estimate_mask, uint64_t method_mask,                      \
                                        const tarn_threader* threader) {                                               \
    return tarn::stats::basic<Real>(static_cast<SSTask*>(task), estimate_mask, method_mask, threader);                 \
  }
TARN_TWINS(TARN_BASIC)
