// The task record: every status in its order, what each call stores, the bin table, failing allocations.
#include "fitting/api.h"
#include "support/failing_allocator.h"
#include "tarn/service.h"

#include <cstddef>
#include <cstring>
#include <numeric>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace {

using tarn::test::Api;

static_assert(sizeof(DFTask) == 160);
static_assert(offsetof(DFTask, wideInterface) == 0 && offsetof(DFTask, recordMark) == 4);
static_assert(offsetof(DFTask, isDouble) == 8 && offsetof(DFTask, taskKind) == 12);
static_assert(offsetof(DFTask, nx) == 16 && offsetof(DFTask, x) == 24 && offsetof(DFTask, xHint) == 32);
static_assert(offsetof(DFTask, ny) == 40 && offsetof(DFTask, y) == 48 && offsetof(DFTask, yHint) == 56);
static_assert(offsetof(DFTask, splineOrder) == 64 && offsetof(DFTask, splineType) == 72);
static_assert(offsetof(DFTask, icType) == 80 && offsetof(DFTask, ic) == 88);
static_assert(offsetof(DFTask, bcType) == 96 && offsetof(DFTask, bc) == 104);
static_assert(offsetof(DFTask, coeff) == 112 && offsetof(DFTask, coeffHint) == 120);
static_assert(offsetof(DFTask, optionFlag) == 128 && offsetof(DFTask, binCount) == 136);
static_assert(offsetof(DFTask, binTable) == 144 && offsetof(DFTask, binScale) == 152);

template <class Real> std::vector<Real> steps(size_t n) {
  std::vector<Real> x(n);
  std::iota(x.begin(), x.end(), Real(0));
  return x;
}

template <class Real> class Task : public testing::Test {
protected:
  ~Task() override {
    if (task_) tarn_df_kernel_DeleteTask(&task_);
  }
  // A new task_ in the place of the present one.
  int32_t make(int64_t nx, const Real* at, int64_t x_hint, int64_t ny, const Real* values, int64_t y_hint,
               int32_t wide = 1) {
    if (task_) tarn_df_kernel_DeleteTask(&task_);
    return Api<Real>::new_task(&task_, nx, at, x_hint, ny, values, y_hint, wide);
  }
  int64_t value(int64_t id) {
    int64_t out = -12345;
    EXPECT_EQ(tarn_df_kernel_iQueryVal(task_, id, &out), 0);
    return out;
  }
  Real* pointer(int64_t id) {
    Real* out = junk_;
    EXPECT_EQ(Api<Real>::query_pointer(task_, id, &out), 0);
    return out;
  }
  Real* pointer(int64_t id, int64_t index) {
    Real* out = junk_;
    EXPECT_EQ(Api<Real>::query_pointer_at(task_, id, index, &out), 0);
    return out;
  }

  DFTask* task_ = nullptr;
  Real junk_[1] = {};
  std::vector<Real> x_ = steps<Real>(20), y_ = steps<Real>(100), c_ = steps<Real>(400);
};

using Precisions = testing::Types<double, float>;
TYPED_TEST_SUITE(Task, Precisions);

TYPED_TEST(Task, CreationChecksInOrder) {
  const TypeParam *x = this->x_.data(), *y = this->y_.data(), *none = nullptr;
  // Each row repairs the first fault of the row before it.
  EXPECT_EQ(this->make(1, none, 3, 2, none, 5), TARN_DF_ERROR_NX);
  EXPECT_EQ(this->make(2, none, 3, 2, none, 5), TARN_DF_ERROR_NULL_X);
  EXPECT_EQ(this->make(2, x, 3, 2, none, 5), TARN_DF_ERROR_X_HINT);
  EXPECT_EQ(this->make(2, x, 2, 2, none, 5), TARN_DF_ERROR_NULL_Y);
  EXPECT_EQ(this->make(2, x, 2, 0, y, 5), TARN_DF_ERROR_NY);
  EXPECT_EQ(this->make(2, x, 2, 2, y, 5), TARN_DF_ERROR_Y_HINT);
  EXPECT_EQ(this->task_, nullptr);
  EXPECT_EQ(Api<TypeParam>::new_task(nullptr, 2, x, 2, 2, y, 5, 0), TARN_DF_ERROR_Y_HINT);
  EXPECT_EQ(Api<TypeParam>::new_task(nullptr, 2, x, 2, 2, y, 16, 0), TARN_DF_ERROR_NULL_TASK);
  EXPECT_EQ(this->make(2, x, 2, 2, y, 16), TARN_DF_OK);
  EXPECT_EQ(this->make(2, x, 0, -1, y, 16), TARN_DF_ERROR_ALLOCATION); // no array has -1 entries
  for (int64_t nx : {int64_t(1), int64_t(0), int64_t(-5), INT64_MIN})
    EXPECT_EQ(this->make(nx, x, 0, 1, y, 16), TARN_DF_ERROR_NX);
  for (int64_t hint : {0, 1, 2, 4}) EXPECT_EQ(this->make(2, x, hint, 1, y, 16), TARN_DF_OK);
  for (int64_t hint : {-1, 3, 5, 6, 8}) EXPECT_EQ(this->make(2, x, hint, 1, y, 16), TARN_DF_ERROR_X_HINT);
  for (int64_t hint : {0, 16, 32, 128}) EXPECT_EQ(this->make(2, x, 0, 1, y, hint), TARN_DF_OK);
  for (int64_t hint : {-1, 1, 48, 64, 144}) EXPECT_EQ(this->make(2, x, 0, 1, y, hint), TARN_DF_ERROR_Y_HINT);
}

TYPED_TEST(Task, RecordAfterCreation) {
  ASSERT_EQ(this->make(20, this->x_.data(), 2, 3, this->y_.data(), 128, 7), 0);
  const DFTask& t = *this->task_;
  EXPECT_EQ(t.wideInterface, 7);
  EXPECT_EQ(t.recordMark, 4);
  EXPECT_EQ(t.isDouble, sizeof(TypeParam) == 8);
  EXPECT_EQ(t.taskKind, 1);
  EXPECT_EQ(t.nx, 20);
  EXPECT_EQ(t.x, this->x_.data());
  EXPECT_EQ(t.xHint, 2);
  EXPECT_EQ(t.ny, 3);
  EXPECT_EQ(t.yHint, 128);
  EXPECT_EQ(t.y[0], this->y_.data());
  EXPECT_EQ(t.splineOrder | t.splineType | t.icType | t.bcType | t.coeffHint | t.optionFlag, 0);
  EXPECT_TRUE(!t.ic && !t.bc && !t.coeff);
  EXPECT_EQ(t.binCount, 16);
  EXPECT_EQ(uintptr_t(this->task_) % 128, 0u);
  EXPECT_EQ(uintptr_t(t.y) % 128, 0u);
  EXPECT_EQ(uintptr_t(t.binTable) % 128, 0u);
}

TYPED_TEST(Task, PointersOfFunctions) {
  TypeParam* y = this->y_.data();
  for (int64_t hint : {0, 16}) {
    ASSERT_EQ(this->make(20, this->x_.data(), 0, 3, y, hint), 0);
    for (int64_t j = 0; j < 3; ++j) EXPECT_EQ(this->pointer(TARN_DF_Y, j), y + 20 * j);
    EXPECT_EQ(this->pointer(TARN_DF_Y, 3), nullptr); // the index ny passes the query
    EXPECT_EQ(this->pointer(TARN_DF_Y), y);
    EXPECT_EQ(Api<TypeParam>::edit_pointer_at(this->task_, TARN_DF_Y, 1, y + 7), 0);
    EXPECT_EQ(this->pointer(TARN_DF_Y, 1), y + 7);
    EXPECT_EQ(Api<TypeParam>::edit_pointer(this->task_, TARN_DF_Y, y + 1), 0); // laid out anew
    for (int64_t j = 0; j < 3; ++j) EXPECT_EQ(this->pointer(TARN_DF_Y, j), y + 1 + 20 * j);
  }
  ASSERT_EQ(this->make(20, this->x_.data(), 0, 3, y, 32), 0);
  EXPECT_EQ(this->pointer(TARN_DF_Y), y);
  TypeParam* out = nullptr;
  EXPECT_EQ(Api<TypeParam>::query_pointer_at(this->task_, TARN_DF_Y, 0, &out), TARN_DF_ERROR_Y_HINT);
  EXPECT_EQ(Api<TypeParam>::edit_pointer_at(this->task_, TARN_DF_Y, 99, nullptr), TARN_DF_ERROR_Y_HINT);
  ASSERT_EQ(this->make(20, this->x_.data(), 0, 3, y, 128), 0);
  EXPECT_EQ(this->pointer(TARN_DF_Y, 0), y);
  EXPECT_EQ(Api<TypeParam>::edit_pointer_at(this->task_, TARN_DF_Y, 2, y + 60), 0);
  EXPECT_EQ(this->pointer(TARN_DF_Y, 2), y + 60);
  ASSERT_EQ(this->make(20, this->x_.data(), 0, 0, nullptr, 16), 0); // no functions yet
  EXPECT_EQ(this->task_->y, nullptr);
  EXPECT_EQ(this->pointer(TARN_DF_Y), nullptr);
  EXPECT_EQ(tarn_df_kernel_iEditVal(this->task_, TARN_DF_NY, 2), 0);
  EXPECT_EQ(Api<TypeParam>::edit_pointer_at(this->task_, TARN_DF_Y, 0, y), TARN_DF_ERROR_NULL_Y);
  EXPECT_EQ(Api<TypeParam>::edit_pointer(this->task_, TARN_DF_Y, y), 0);
  EXPECT_EQ(this->pointer(TARN_DF_Y, 1), y + 20);
}

TYPED_TEST(Task, Deletion) {
  EXPECT_EQ(tarn_df_kernel_DeleteTask(nullptr), TARN_DF_ERROR_NULL_TASK);
  EXPECT_EQ(tarn_df_kernel_DeleteTask(&this->task_), TARN_DF_ERROR_NULL_TASK);
  ASSERT_EQ(this->make(20, this->x_.data(), 0, 3, this->y_.data(), 16), 0);
  EXPECT_EQ(tarn_df_kernel_DeleteTask(&this->task_), 0);
  EXPECT_EQ(this->task_, nullptr);
}

TYPED_TEST(Task, SplineChecksInOrderAndStores) {
  using A = Api<TypeParam>;
  const TypeParam *v = this->y_.data(), *none = nullptr;
  TypeParam* c = this->c_.data();
  EXPECT_EQ(A::edit_spline(nullptr, -1, -1, 4, none, 1, none, c, 16), TARN_DF_ERROR_NULL_TASK);
  ASSERT_EQ(this->make(20, this->x_.data(), 0, 0, nullptr, 16), 0);
  DFTask* t = this->task_;
  EXPECT_EQ(A::edit_spline(t, -1, -1, 4, none, 1, none, c, 99), TARN_DF_ERROR_SPLINE_ORDER);
  EXPECT_EQ(A::edit_spline(t, 4, -1, 4, none, 1, none, c, 99), TARN_DF_ERROR_SPLINE_TYPE);
  EXPECT_EQ(t->splineOrder, 0); // stored together, after both checks
  EXPECT_EQ(A::edit_spline(t, 4, 7, 4, none, 1, none, c, 99), TARN_DF_ERROR_NULL_BC);
  EXPECT_EQ(t->splineOrder, 4);
  EXPECT_EQ(t->splineType, 7); // the step types are set here
  EXPECT_EQ(t->bcType, 0);
  EXPECT_EQ(A::edit_spline(t, 4, 7, 12, v, 1, none, c, 99), TARN_DF_ERROR_IC);
  EXPECT_EQ(t->bcType, 12);
  EXPECT_EQ(t->bc, v);
  EXPECT_EQ(A::edit_spline(t, 4, 7, 12, v, 0, v, c, 99), TARN_DF_ERROR_IC_TYPE);
  EXPECT_EQ(t->ic, nullptr);
  EXPECT_EQ(A::edit_spline(t, 4, 7, 12, v, 1, v, c, 99), TARN_DF_ERROR_NY);
  EXPECT_EQ(t->ic, v);
  EXPECT_EQ(t->icType, 1);
  EXPECT_EQ(t->coeffHint, 0);
  EXPECT_EQ(A::edit_spline(t, 4, 7, 12, v, 1, v, nullptr, 99), 0); // no storage: no functions needed; any hint
  EXPECT_EQ(t->coeffHint, 99);
  for (int64_t bc : {0, 1, 2, 64}) EXPECT_EQ(A::edit_spline(t, 4, 0, bc, none, 0, none, nullptr, 16), 0) << bc;
  for (int64_t bc : {-1, 3, 4, 8, 12, 48, 128})
    EXPECT_EQ(A::edit_spline(t, 4, 0, bc, none, 0, none, nullptr, 16), TARN_DF_ERROR_NULL_BC) << bc;
}

TYPED_TEST(Task, PointersOfCoefficients) {
  using A = Api<TypeParam>;
  const TypeParam* none = nullptr;
  TypeParam* c = this->c_.data();
  ASSERT_EQ(this->make(20, this->x_.data(), 0, 3, this->y_.data(), 16), 0);
  DFTask* t = this->task_;
  EXPECT_EQ(this->pointer(TARN_DF_COEFF), nullptr);
  EXPECT_EQ(A::edit_pointer_at(t, TARN_DF_COEFF, 1, c), TARN_DF_ERROR_NULL_COEFF); // no array yet
  for (int64_t hint : {0, 16, 32}) {
    ASSERT_EQ(A::edit_spline(t, 4, 0, 0, none, 0, none, c, hint), 0);
    for (int64_t j = 0; j < 3; ++j) EXPECT_EQ(this->pointer(TARN_DF_COEFF, j), c + 19 * 4 * j);
    EXPECT_EQ(this->pointer(TARN_DF_COEFF, 3), nullptr);
  }
  ASSERT_EQ(A::edit_spline(t, 3, 1, 0, none, 0, none, c, 16), 0); // Subbotin: nx cells
  EXPECT_EQ(this->pointer(TARN_DF_COEFF, 2), c + 20 * 3 * 2);
  ASSERT_EQ(A::edit_spline(t, 4, 0, 0, none, 0, none, c, 128), 0);
  EXPECT_EQ(this->pointer(TARN_DF_COEFF, 0), c);
  EXPECT_EQ(A::edit_pointer_at(t, TARN_DF_COEFF, 2, c + 200), 0);
  EXPECT_EQ(this->pointer(TARN_DF_COEFF, 2), c + 200);
  EXPECT_EQ(tarn_df_kernel_iEditVal(t, TARN_DF_COEFF_HINT, 16), 0);
  EXPECT_EQ(tarn_df_kernel_iEditVal(t, TARN_DF_SPLINE_ORDER, 2), 0);
  EXPECT_EQ(A::edit_pointer(t, TARN_DF_COEFF, c + 1), 0);
  EXPECT_EQ(this->pointer(TARN_DF_COEFF, 2), c + 1 + 19 * 2 * 2);
}

TYPED_TEST(Task, PointerEditors) {
  using A = Api<TypeParam>;
  const TypeParam *v = this->y_.data(), *none = nullptr;
  EXPECT_EQ(A::edit_pointer(nullptr, 99, none), TARN_DF_ERROR_NULL_TASK);
  EXPECT_EQ(A::edit_pointer_at(nullptr, 99, -1, none), TARN_DF_ERROR_NULL_TASK);
  ASSERT_EQ(this->make(20, this->x_.data(), 0, 0, nullptr, 16), 0);
  DFTask* t = this->task_;
  for (int64_t id : {0, 6, 14, -1}) {
    EXPECT_EQ(A::edit_pointer(t, id, none), TARN_DF_ERROR_PARAMETER_ID);
    EXPECT_EQ(A::edit_pointer_at(t, id, -1, none), TARN_DF_ERROR_PARAMETER_ID);
  }
  for (int64_t id : {1, 3, 4}) EXPECT_EQ(A::edit_pointer_at(t, id, 0, v), TARN_DF_ERROR_PARAMETER_ID);
  const int32_t of_null[] = {0, -1005, -1008, -1013, -1015, -1016};
  for (int64_t id = 1; id <= 5; ++id) EXPECT_EQ(A::edit_pointer(t, id, none), of_null[id]);
  EXPECT_EQ(A::edit_pointer(t, TARN_DF_COEFF, v), TARN_DF_ERROR_NY);
  const int64_t low = t->binTable[5][0];
  for (int64_t id : {1, 3, 4}) {
    EXPECT_EQ(A::edit_pointer(t, id, v + id), 0);
    EXPECT_EQ(this->pointer(id), v + id);
  }
  EXPECT_EQ(t->binTable[5][0], low); // a new partition leaves the table
  ASSERT_EQ(this->make(20, this->x_.data(), 0, 3, v, 16), 0);
  t = this->task_;
  ASSERT_EQ(A::edit_pointer(t, TARN_DF_COEFF, v), 0);
  for (int64_t id : {2, 5}) {
    EXPECT_EQ(A::edit_pointer_at(t, id, -1, none), TARN_DF_ERROR_INDEX);
    EXPECT_EQ(A::edit_pointer_at(t, id, 3, none), TARN_DF_ERROR_INDEX); // ny itself, unlike in the query
    EXPECT_EQ(A::edit_pointer_at(t, id, 2, none), id == 2 ? TARN_DF_ERROR_NULL_Y : TARN_DF_ERROR_NULL_COEFF);
  }
}

TYPED_TEST(Task, ValueEditor) {
  struct Rule {
    int64_t id;
    std::vector<int64_t> taken, refused;
    int32_t status;
  };
  const std::vector<Rule> rules = {
      {14, {2, 3, INT64_MAX}, {1, 0, -1}, -1004},
      {15, {0, 2, 4}, {-1, 3, 5, 8}, -1006},
      {16, {1, INT64_MAX}, {0, -1}, -1007},
      {17, {0, 16, 32, 128}, {1, 48, 64, -1}, -1009},
      {18, {0, 2, 77}, {-1}, -1010},
      {19, {0, 1, 2, 3, 4, 5, 9}, {-1, 6, 7, 8, 10}, -1011},
      {20, {0, 1, 2, 8, 12, 9, -1}, {3, 4, 16, -16}, -1012}, // -1 has mask 8
      {21, {0, 7, 128}, {-1}, -1014},
      {22, {0, 16, 32, 128}, {1, 48, 64, -1}, -1017},
      {23, {0, 1}, {2, -1, int64_t(1) << 32}, -1036},
  };
  EXPECT_EQ(tarn_df_kernel_iEditVal(nullptr, 99, 0), TARN_DF_ERROR_NULL_TASK);
  ASSERT_EQ(this->make(20, this->x_.data(), 0, 1, this->y_.data(), 16), 0);
  for (int64_t id : {13, 24, 1, -1}) EXPECT_EQ(tarn_df_kernel_iEditVal(this->task_, id, 2), TARN_DF_ERROR_PARAMETER_ID);
  for (const Rule& rule : rules) {
    for (int64_t value : rule.taken) {
      EXPECT_EQ(tarn_df_kernel_iEditVal(this->task_, rule.id, value), 0) << rule.id << " " << value;
      EXPECT_EQ(this->value(rule.id), value) << rule.id;
    }
    for (int64_t value : rule.refused) {
      EXPECT_EQ(tarn_df_kernel_iEditVal(this->task_, rule.id, value), rule.status) << rule.id << " " << value;
      EXPECT_EQ(this->value(rule.id), rule.taken.back()) << rule.id;
    }
  }
}

TYPED_TEST(Task, Queries) {
  using A = Api<TypeParam>;
  TypeParam* out = nullptr;
  EXPECT_EQ(A::query_pointer(nullptr, 99, nullptr), TARN_DF_ERROR_NULL_TASK);
  EXPECT_EQ(A::query_pointer_at(nullptr, 99, -1, nullptr), TARN_DF_ERROR_NULL_TASK);
  EXPECT_EQ(tarn_df_kernel_iQueryVal(nullptr, 99, nullptr), TARN_DF_ERROR_NULL_TASK);
  ASSERT_EQ(this->make(20, this->x_.data(), 0, 3, this->y_.data(), 16), 0);
  EXPECT_EQ(A::query_pointer(this->task_, 99, nullptr), TARN_DF_ERROR_NULL_OUTPUT);
  EXPECT_EQ(A::query_pointer_at(this->task_, 99, -1, nullptr), TARN_DF_ERROR_NULL_OUTPUT);
  EXPECT_EQ(tarn_df_kernel_iQueryVal(this->task_, 99, nullptr), TARN_DF_ERROR_NULL_OUTPUT);
  EXPECT_EQ(A::query_pointer_at(this->task_, 99, -1, &out), TARN_DF_ERROR_INDEX);
  EXPECT_EQ(A::query_pointer_at(this->task_, 99, 4, &out), TARN_DF_ERROR_INDEX);
  EXPECT_EQ(A::query_pointer_at(this->task_, 1, 3, &out), TARN_DF_ERROR_PARAMETER_ID);
  for (int64_t id : {0, 6, 14}) EXPECT_EQ(A::query_pointer(this->task_, id, &out), TARN_DF_ERROR_PARAMETER_ID);
  int64_t wide = 0;
  for (int64_t id : {13, 24, 2})
    EXPECT_EQ(tarn_df_kernel_iQueryVal(this->task_, id, &wide), TARN_DF_ERROR_PARAMETER_ID);
}

TYPED_TEST(Task, NarrowAndWideQueries) {
  // wideInterface is tested as a whole here, so 2 is wide as well.
  for (int32_t width : {0, 1, 2}) {
    ASSERT_EQ(this->make(20, this->x_.data(), 0, 1, this->y_.data(), 16, width), 0);
    ASSERT_EQ(tarn_df_kernel_iEditVal(this->task_, TARN_DF_BC_TYPE, 0x123456789), 0);
    this->task_->optionFlag = -2;
    int64_t place = -1;
    ASSERT_EQ(tarn_df_kernel_iQueryVal(this->task_, TARN_DF_BC_TYPE, &place), 0);
    EXPECT_EQ(place, width ? 0x123456789 : int64_t(0xffffffff23456789));
    place = 0;
    ASSERT_EQ(tarn_df_kernel_iQueryVal(this->task_, TARN_DF_OPTION, &place), 0);
    EXPECT_EQ(place, width ? -2 : int64_t(0xfffffffe));
  }
}

TYPED_TEST(Task, AnotherKindIsLeftAlone) {
  using A = Api<TypeParam>;
  ASSERT_EQ(this->make(20, this->x_.data(), 0, 3, this->y_.data(), 16), 0);
  this->task_->taskKind = 2;
  DFTask before;
  std::memcpy(&before, this->task_, sizeof before);
  const TypeParam* none = nullptr;
  TypeParam* out = this->junk_;
  int64_t number = 55;
  EXPECT_EQ(A::edit_spline(this->task_, -1, -1, 4, none, 1, none, nullptr, 99), 0);
  EXPECT_EQ(A::edit_pointer(this->task_, 99, none), 0);
  EXPECT_EQ(A::edit_pointer_at(this->task_, 99, -1, none), 0);
  EXPECT_EQ(tarn_df_kernel_iEditVal(this->task_, 14, 50), 0);
  EXPECT_EQ(A::query_pointer(this->task_, 99, &out), 0);
  EXPECT_EQ(A::query_pointer_at(this->task_, 99, 1, &out), 0);
  EXPECT_EQ(A::query_pointer_at(this->task_, 99, 4, &out), TARN_DF_ERROR_INDEX); // judged before the kind
  EXPECT_EQ(tarn_df_kernel_iQueryVal(this->task_, 99, &number), 0);
  EXPECT_EQ(out, this->junk_);
  EXPECT_EQ(number, 55);
  EXPECT_EQ(std::memcmp(&before, this->task_, sizeof before), 0);
}

// What the table holds: entry k's high is the first point in a bin above k, its low the last in a bin below; but the
// points of bin 0 raise no low, which stays 0 until bin 1 has had a point.
template <class Real> void expect_bins(const DFTask* task, const std::vector<Real>& x) {
  const int64_t n = int64_t(x.size());
  const int64_t bins = std::min<int64_t>(std::max<int64_t>(n / 16, 16), 1024);
  ASSERT_EQ(task->binCount, bins);
  const Real scale = Real(bins) / (x.back() - x.front());
  EXPECT_EQ(sizeof(Real) == 8 ? Real(task->binScale.d) : Real(task->binScale.s), scale);
  for (int64_t k = 0; k < bins; ++k) {
    int64_t low = 0, high = n - 1;
    for (int64_t i = 0; i < n; ++i)
      if (const int64_t bin = int64_t((x[size_t(i)] - x[0]) * scale); bin > 0 && bin < k) low = i;
    for (int64_t i = n - 1; i > 0; --i)
      if (int64_t((x[size_t(i)] - x[0]) * scale) > k) high = i;
    ASSERT_EQ(task->binTable[k][0], low) << "bin " << k;
    ASSERT_EQ(task->binTable[k][1], high) << "bin " << k;
  }
  EXPECT_EQ(task->binTable[bins][0], task->binTable[bins - 1][0]);
  EXPECT_EQ(task->binTable[bins][1], task->binTable[bins - 1][1]);
}

TYPED_TEST(Task, BinTable) {
  using Real = TypeParam;
  std::mt19937 random(7);
  for (size_t n : {2, 3, 15, 255, 256, 271, 272, 273, 5000, 16383, 16384, 20000}) {
    std::vector<Real> even = steps<Real>(n), squares = steps<Real>(n), clustered = steps<Real>(n);
    for (Real& v : squares) v = v * v - Real(5);
    for (size_t i = 0; i + 1 < n; ++i) clustered[i] = Real(i) * Real(1e-7);
    for (const std::vector<Real>& x : {even, squares, clustered}) {
      ASSERT_EQ(this->make(int64_t(n), x.data(), 0, 0, nullptr, 16), 0);
      expect_bins(this->task_, x);
    }
  }
}

TYPED_TEST(Task, BinsAreRenewedByTheGeneralHintAlone) {
  using Real = TypeParam;
  const std::vector<Real> first = steps<Real>(300);
  std::vector<Real> second = steps<Real>(400);
  for (Real& v : second) v = v * v;
  ASSERT_EQ(this->make(300, first.data(), 0, 0, nullptr, 16), 0);
  ASSERT_EQ(tarn_df_kernel_iEditVal(this->task_, TARN_DF_NX, 400), 0);
  ASSERT_EQ(Api<Real>::edit_pointer(this->task_, TARN_DF_X, second.data()), 0);
  for (int64_t hint : {0, 2, 4}) {
    ASSERT_EQ(tarn_df_kernel_iEditVal(this->task_, TARN_DF_X_HINT, hint), 0);
    expect_bins(this->task_, first);
  }
  ASSERT_EQ(tarn_df_kernel_iEditVal(this->task_, TARN_DF_X_HINT, 1), 0);
  expect_bins(this->task_, second);
  // A uniform partition has a table, unfilled.
  ASSERT_EQ(this->make(300, first.data(), 4, 0, nullptr, 16), 0);
  EXPECT_NE(this->task_->binTable, nullptr);
  EXPECT_EQ(this->task_->binCount, 0);
}

// A partition with points that are no numbers must not lead the filling beside the table.
TYPED_TEST(Task, BinsOfBadPartitions) {
  using Real = TypeParam;
  const Real nan = std::numeric_limits<Real>::quiet_NaN(), inf = std::numeric_limits<Real>::infinity();
  std::vector<std::vector<Real>> bad = {{0, nan, 2}, {nan, nan}, {-inf, 0, inf}, {0, 0}, {3, 2, 1}, {0, 1000, 1}};
  for (const std::vector<Real>& x : bad) {
    ASSERT_EQ(this->make(int64_t(x.size()), x.data(), 0, 0, nullptr, 16), 0);
    for (int64_t k = 0; k <= this->task_->binCount; ++k)
      for (int64_t word : this->task_->binTable[k]) EXPECT_TRUE(word >= 0 && word < int64_t(x.size()));
  }
}

TYPED_TEST(Task, FailingAllocations) {
  using A = Api<TypeParam>;
  const int64_t at_creation = tarn::test::for_each_allocation_failure([&](int64_t k) {
    DFTask* task = nullptr;
    const int32_t status = A::new_task(&task, 20, this->x_.data(), 0, 3, this->y_.data(), 16, 1);
    EXPECT_EQ(status, k < 3 ? TARN_DF_ERROR_ALLOCATION : 0);
    EXPECT_EQ(task == nullptr, k == 0); // from the record's own on, the caller holds it
    if (k == 1) {
      EXPECT_EQ(task->nx, 20);
      EXPECT_EQ(task->y, nullptr);
    }
    if (k == 2) {
      EXPECT_EQ(task->taskKind, 1);
      EXPECT_EQ(task->binTable, nullptr);
      EXPECT_EQ(tarn_df_kernel_iEditVal(task, TARN_DF_X_HINT, 1), 0); // makes up for it
      expect_bins(task, this->x_);
    }
    EXPECT_EQ(tarn_df_kernel_DeleteTask(&task), k == 0 ? TARN_DF_ERROR_NULL_TASK : 0);
  });
  EXPECT_EQ(at_creation, 3);
  ASSERT_EQ(this->make(20, this->x_.data(), 0, 3, this->y_.data(), 16), 0);
  const TypeParam* none = nullptr;
  DFTask* t = this->task_;
  ASSERT_EQ(A::edit_spline(t, 4, 0, 0, none, 0, none, this->c_.data(), 16), 0);
  {
    tarn::test::AllocationFailure failure(0, true);
    EXPECT_EQ(A::edit_spline(t, 4, 0, 0, none, 0, none, this->c_.data(), 32), TARN_DF_ERROR_ALLOCATION);
    EXPECT_EQ(t->coeff, nullptr);
    EXPECT_EQ(t->coeffHint, 16); // stored last
    EXPECT_EQ(A::edit_pointer(t, TARN_DF_Y, this->y_.data()), TARN_DF_ERROR_ALLOCATION);
    EXPECT_EQ(t->y, nullptr);
    EXPECT_EQ(A::edit_pointer(t, TARN_DF_COEFF, this->c_.data()), TARN_DF_ERROR_ALLOCATION);
    tarn_serv_deallocate(t->binTable);
    t->binTable = nullptr;
    EXPECT_EQ(tarn_df_kernel_iEditVal(t, TARN_DF_X_HINT, 1), TARN_DF_ERROR_ALLOCATION);
  }
  EXPECT_EQ(A::edit_pointer(t, TARN_DF_Y, this->y_.data()), 0); // and the task recovers
  EXPECT_EQ(this->pointer(TARN_DF_Y, 2), this->y_.data() + 40);
}

}
