// Many sites with one method: threads take equal shares, the calling thread what is left.
#pragma once

#include "fitting/search/search.h"
#include "fitting/threads.h"

namespace tarn::fitting {

constexpr int64_t sites_on_stack = 4096;
constexpr int64_t batch_sites = 128; // of the hybrid's shares, and of one call of the caller's search

// Calls body(batch) with all sites of the batch at hand.
template <class Real, class Body> int32_t with_sites(const SiteBatch<Real>& batch, Body body) {
  if (batch.sites_hint != TARN_DF_SITES_UNIFORM) return body(batch);
  Real own[sites_on_stack];
  Real* sites = batch.count <= sites_on_stack ? own : allocate<Real>(batch.count);
  if (!sites) return TARN_DF_ERROR_ALLOCATION;
  expand(uniform_sites(batch.site, batch.count), 0, batch.count, sites);
  SiteBatch<Real> expanded = batch;
  expanded.site = sites;
  const int32_t status = body(expanded);
  if (sites != own) tarn_serv_deallocate(sites);
  return status;
}

template <class Real>
int32_t search_part(const SiteBatch<Real>& batch, SearchRun<Real>& run, SearchKernel<Real> kernel, int64_t from,
                    int64_t count) {
  return kernel(run, count, batch.site + from, batch.cell + from * cell_bytes(batch.form), 0);
}

// What the threads of a batch are given.
template <class Real> struct SharedBatch {
  const SiteBatch<Real>* batch;
  int64_t share; // sites of each thread
};
template <class Real> void search_share(const void* context, int64_t k, SearchKernel<Real> kernel) {
  const SharedBatch<Real>& shared = *static_cast<const SharedBatch<Real>*>(context);
  SearchRun<Real> run = *shared.batch->run; // with a cursor of its own
  search_part(*shared.batch, run, kernel, k * shared.share, shared.share);
}

// From where on threads pay, by method. The hybrid asks for more sites the more threads there are.
inline bool worth_threads(SearchMethod method, int64_t sites, int64_t nx, int64_t threads) {
  if (threads < 2) return false;
  switch (method) {
  case SearchMethod::Uniform: return sites >= 1001;
  case SearchMethod::Sorted: return sites > 3000;
  case SearchMethod::Peak: return sites > 1200 || nx > 1200;
  case SearchMethod::QuasiUniform:
    return sites > 300 || (sites > 150 && nx >= 600) || (sites > 150 && nx >= 40 && threads >= 4);
  case SearchMethod::Hybrid: return sites > 1200 || (sites > 600 && threads <= 4) || (sites > 300 && threads <= 2);
  default: return false;
  }
}

// `threaders`: by form of the cells.
template <SearchMethod Method, class Real>
int32_t search_with_threads(const SiteBatch<Real>& given, const tarn_threader* threader,
                            const tarn_loop_body (&threaders)[3]) {
  return with_sites(given, [&](const SiteBatch<Real>& batch) {
    const int64_t threads = max_threads(threader);
    int64_t done = 0;
    if (worth_threads(Method, batch.count, batch.run->nx, threads)) {
      constexpr int64_t unit = Method == SearchMethod::Hybrid ? batch_sites : 1;
      SharedBatch<Real> shared = {&batch, batch.count / unit / threads * unit};
      done = shared.share * threads;
      if (done > 0) run_loop(threader, threads, threads, &shared, threaders[static_cast<int>(batch.form)]);
    }
    const SearchKernel<Real> kernel = search_kernel<Real>(Method, batch.form);
    return search_part(batch, *batch.run, kernel, done, batch.count - done);
  });
}

// The caller's search runs in the calling thread.
template <SearchMethod Method, class Real> int32_t search_by_caller(const SiteBatch<Real>& given) {
  return with_sites(given, [](const SiteBatch<Real>& batch) {
    const SearchKernel<Real> kernel = search_kernel<Real>(Method, batch.form);
    int32_t status = TARN_DF_OK;
    for (int64_t from = 0; from < batch.count && status == TARN_DF_OK; from += batch_sites)
      status = search_part(batch, *batch.run, kernel, from, minimum(batch_sites, batch.count - from));
    return status;
  });
}

}
