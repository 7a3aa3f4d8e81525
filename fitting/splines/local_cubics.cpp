#include "fitting/splines/local_cubic.h"
#include "fitting/splines/variants.h"

namespace tarn::fitting {
namespace {

// The boundary routines of a family, and its pair of tables.
template <class Kind, class Real> struct Boundaries {
  static Real _vCubicSpline1DBCNotAKnotLeft(const End<Real>& e) { return Boundary<Real>::at_not_a_knot(e); }
  static Real _vCubicSpline1DBCNotAKnotRight(const End<Real>& e) { return Boundary<Real>::at_not_a_knot(e); }
  static Real _vCubicSpline1DBCFreeEndLeft(const End<Real>& e) { return Boundary<Real>::at_free_end(e); }
  static Real _vCubicSpline1DBCFreeEndRight(const End<Real>& e) { return Boundary<Real>::at_free_end(e); }
  static Real _vCubicSpline1DBC1stDerLeft(const End<Real>& e) { return Boundary<Real>::at_1st(e); }
  static Real _vCubicSpline1DBC1stDerRight(const End<Real>& e) { return Boundary<Real>::at_1st(e); }
  static Real _vCubicSpline1DBC2ndDerLeft(const End<Real>& e) { return Boundary<Real>::template at_2nd<left>(e); }
  static Real _vCubicSpline1DBC2ndDerRight(const End<Real>& e) { return Boundary<Real>::template at_2nd<right>(e); }
  static Real _vCubicSpline1DBCPeriodicLeft(const End<Real>& e) { return Kind::at_seam(e, left); }
  static Real _vCubicSpline1DBCPeriodicRight(const End<Real>& e) { return Kind::at_seam(e, right); }
  static Real _vCubicSpline1DBCNotSetLeft(const End<Real>& e) { return Kind::at_not_set(e); }
  static Real _vCubicSpline1DBCNotSetRight(const End<Real>& e) { return Kind::at_not_set(e); }

#define TARN_LEFT(L, R) _vCubicSpline1DBC##L##Left,
#define TARN_RIGHT(L, R) _vCubicSpline1DBC##R##Right,
  static constexpr EndRoutine<Real> _vCubicSpline1DLeftBCDispatch[] = {TARN_BOUNDARIES(TARN_LEFT)};
  static constexpr EndRoutine<Real> _vCubicSpline1DRightBCDispatch[] = {TARN_BOUNDARIES(TARN_RIGHT)};
};

#define TARN_VARIANT(K, L, G)                                                                                          \
  template <class Real> void _v1DCS##K##Y##L##G##Threader(int64_t item, int32_t thread, int32_t, void* context) {      \
    write_item<K, Real, words::L, words::G>(*static_cast<const LocalWork<Real>*>(context), item, thread);              \
  }                                                                                                                    \
  template <class Real>                                                                                                \
  int32_t _v1DCS##K##Y##L##G(const DFTask* task, const LocalEnds<Real>& ends, const tarn_threader* threader) {         \
    return local_cubic<K, Real, words::L, words::G>(task, ends, threader, _v1DCS##K##Y##L##G##Threader<Real>);         \
  }
#define TARN_ENTRY(K, L, G) _v1DCS##K##Y##L##G<Real>,
#define TARN_HOLD(K, L, G)                                                                                             \
  static_assert(__Dispatch##K<double>[place_of(words::L, words::G)] == _v1DCS##K##Y##L##G<double>);
#define TARN_KIND(K)                                                                                                   \
  TARN_BY_PLACE(TARN_VARIANT, K)                                                                                       \
  template <class Real> constexpr Variant<Real> __Dispatch##K[places] = {TARN_BY_PLACE(TARN_ENTRY, K)};                \
  TARN_BY_PLACE(TARN_HOLD, K)

template <class Real> using Variant = int32_t (*)(const DFTask*, const LocalEnds<Real>&, const tarn_threader*);
TARN_KIND(Akima)
TARN_KIND(Bessel)
TARN_KIND(Hyman)
TARN_KIND(Hermite)

// The method is not asked for here.
template <class Kind, class Real>
int32_t construct(const DFTask* task, const Variant<Real>* variants, const tarn_threader* threader) {
  if (!task) return TARN_DF_ERROR_NULL_TASK;
  if (task->nx < Kind::min_points) return TARN_DF_ERROR_NX;
  if (!is_storage_hint(task->yHint)) return TARN_DF_ERROR_Y_HINT;
  int64_t column;
  if (const int32_t status = find_column(task, true, &column)) return status;
  if (Kind::takes_derivatives) {
    if (column == periodic && !task->bc) return TARN_DF_ERROR_NULL_BC;
    if (!task->ic) return TARN_DF_ERROR_IC;
  }
  if (const int32_t status = check_pointers(task)) return status;
  using Routines = Boundaries<Kind, Real>;
  const LocalEnds<Real> ends = {column, Routines::_vCubicSpline1DLeftBCDispatch[column],
                                Routines::_vCubicSpline1DRightBCDispatch[column]};
  return variants[place_of(is_interleaved(task), is_uniform(task))](task, ends, threader);
}

}
}

#define TARN_CONSTRUCTOR(t, Real, K)                                                                                   \
  TARN_EXPORT int32_t tarn_df_kernel_##t##DF##K##CubicSpline1D(DFTask* task, int64_t, int64_t,                         \
                                                               const tarn_threader* threader) {                        \
    return tarn::fitting::construct<tarn::fitting::K, Real>(task, tarn::fitting::__Dispatch##K<Real>, threader);       \
  }
#define TARN_CONSTRUCTORS(t, Real)                                                                                     \
  TARN_CONSTRUCTOR(t, Real, Akima)                                                                                     \
  TARN_CONSTRUCTOR(t, Real, Bessel)                                                                                    \
  TARN_CONSTRUCTOR(t, Real, Hyman)                                                                                     \
  TARN_CONSTRUCTOR(t, Real, Hermite)
TARN_DF_TWINS(TARN_CONSTRUCTORS)
