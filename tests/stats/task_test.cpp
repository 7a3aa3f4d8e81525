#include <cstddef>
#include <cstring>

#include <gtest/gtest.h>

#include "support/failing_allocator.h"
#include "tarn/stats.h"

namespace {

using tarn::test::AllocationFailure;

struct FieldRow {
  int32_t id;
  size_t offset;
  bool integer;
  int32_t null_status;
};

// Typed here from the published table, not from the library's own list.
const FieldRow rows[] = {
    {1, 16, true, -4001},    {2, 24, true, -4002},    {5, 32, true, -4004},    {3, 40, false, -4032},
    {6, 48, false, -4005},   {23, 56, false, -4020},  {4, 64, true, -4044},    {60, 72, false, -4071},
    {61, 80, true, -4044},   {7, 88, false, -4006},   {8, 96, false, -4007},   {9, 104, false, -4008},
    {10, 112, false, -4009}, {11, 120, false, -4010}, {12, 128, false, -4011}, {13, 136, false, -4012},
    {67, 144, false, -4006}, {68, 152, false, -4075}, {69, 160, false, -4076}, {70, 168, false, -4077},
    {71, 176, false, -4078}, {72, 184, false, -4079}, {73, 192, false, -4080}, {14, 200, false, -4013},
    {15, 208, false, -4014}, {18, 216, false, -4017}, {16, 224, false, -4015}, {17, 232, false, -4016},
    {20, 240, true, -4044},  {19, 248, false, -4018}, {22, 256, true, -4044},  {21, 264, false, -4019},
    {75, 272, true, -4044},  {74, 280, false, -4081}, {28, 288, true, -4038},  {32, 296, true, -4038},
    {33, 304, false, -4037}, {35, 312, false, -4036}, {34, 320, true, -4044},  {30, 328, false, -4035},
    {31, 336, false, -4034}, {29, 344, true, -4044},  {24, 352, true, -4022},  {25, 360, false, -4021},
    {26, 368, false, -4023}, {27, 376, false, -4024}, {44, 384, true, -4044},  {64, 392, true, -4069},
    {65, 400, false, -4068}, {66, 408, false, -4070}, {62, 424, true, -4066},  {63, 432, false, -4065},
    {77, 440, false, -4083}, {76, 448, false, -4082}, {37, 456, true, -4043},  {38, 464, false, -4042},
    {39, 472, false, -4028}, {40, 480, false, -4027}, {36, 488, true, -4044},  {41, 496, true, -4040},
    {42, 504, false, -4039}, {43, 512, false, -4041}, {45, 520, true, -4045},  {46, 528, false, -4046},
    {47, 536, true, -4044},  {48, 544, false, -4047}, {49, 552, true, -4044},  {50, 560, true, -4049},
    {51, 568, false, -4048}, {52, 576, true, -4052},  {53, 584, false, -4053}, {58, 592, true, -4061},
    {59, 600, false, -4062}, {54, 608, true, -4055},  {55, 616, false, -4054}, {56, 624, true, -4056},
    {57, 632, false, -4057}, {78, 720, false, -4084}, {79, 728, true, -4044},
};

static_assert(sizeof(SSTask) == 744);
static_assert(offsetof(SSTask, dimension) == 16 && offsetof(SSTask, stream_state) == 416);
static_assert(offsetof(SSTask, distance_first) == 640 && offsetof(SSTask, distance_scratch_size) == 696);
static_assert(offsetof(SSTask, cleanup_count) == 704 && offsetof(SSTask, cleanup_hook) == 712);
static_assert(offsetof(SSTask, saved_mean) == 736);

template <class Real> struct Entry;
template <> struct Entry<double> {
  static constexpr auto create = __kestdSSNewTask;
  static constexpr auto edit = __kestdSSEditTask;
  static constexpr int32_t task_type = 1;
};
template <> struct Entry<float> {
  static constexpr auto create = __kestsSSNewTask;
  static constexpr auto edit = __kestsSSEditTask;
  static constexpr int32_t task_type = 0;
};

const void* field(const SSTask* task, size_t offset) {
  const void* value;
  std::memcpy(&value, reinterpret_cast<const char*>(task) + offset, sizeof value);
  return value;
}

template <class Real, class Int> class Task : public testing::Test {};

template <class R, class I> struct Case {
  using Real = R;
  using Int = I;
};
template <class C> class TaskTest : public testing::Test {};
using Cases = testing::Types<Case<double, int32_t>, Case<double, int64_t>, Case<float, int32_t>, Case<float, int64_t>>;
TYPED_TEST_SUITE(TaskTest, Cases);

TYPED_TEST(TaskTest, CreationChecksInOrder) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  constexpr auto create = Entry<Real>::create;
  const int32_t width = sizeof(Int) == 8;
  Int p = 2, zero = 0, minus = -1, n = 3, rows_word = 0x10000, columns_word = 0x20000, both = 0x30000, one = 1;
  Real x[6] = {};
  void* const marker = &p;
  void* task = marker;
  EXPECT_EQ(create(&task, nullptr, nullptr, nullptr, x, nullptr, nullptr, width), -4001);
  EXPECT_EQ(create(&task, &zero, nullptr, nullptr, x, nullptr, nullptr, width), -4001);
  EXPECT_EQ(create(&task, &minus, &n, &rows_word, nullptr, nullptr, nullptr, width), -4001);
  EXPECT_EQ(create(&task, &p, nullptr, nullptr, x, nullptr, nullptr, width), -4044);
  EXPECT_EQ(create(&task, &p, nullptr, &zero, x, nullptr, nullptr, width), -4003);
  EXPECT_EQ(create(&task, &p, nullptr, &both, x, nullptr, nullptr, width), -4003);
  EXPECT_EQ(create(&task, &p, nullptr, &one, x, nullptr, nullptr, width), -4003);
  EXPECT_EQ(create(&task, &p, nullptr, &rows_word, x, nullptr, nullptr, width), -4002);
  EXPECT_EQ(create(&task, &p, &zero, &columns_word, x, nullptr, nullptr, width), -4002);
  EXPECT_EQ(create(&task, &p, &minus, &columns_word, x, nullptr, nullptr, width), -4002);
  EXPECT_EQ(task, marker);
  {
    AllocationFailure failure(0);
    EXPECT_EQ(create(&task, &p, &n, &rows_word, x, nullptr, nullptr, width), -4000);
    EXPECT_EQ(task, marker);
  }
  ASSERT_EQ(create(&task, &one, nullptr, nullptr, nullptr, nullptr, nullptr, width), 0);
  EXPECT_EQ(__kestSSDeleteTask(&task), 0);
  EXPECT_EQ(task, nullptr);
  EXPECT_EQ(__kestSSDeleteTask(nullptr), -4031);
}

TYPED_TEST(TaskTest, CreationStoresItsArguments) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  const int32_t width = sizeof(Int) == 8;
  Int p = 2, n = 3, word = 0x20000, mask[2] = {1, 0};
  Real x[6] = {}, w[3] = {1, 1, 1};
  void* created = nullptr;
  ASSERT_EQ(Entry<Real>::create(&created, &p, &n, &word, x, w, mask, width), 0);
  const SSTask* task = static_cast<SSTask*>(created);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(task) % 128, 0u);
  EXPECT_EQ(task->integer_width, width);
  EXPECT_EQ(task->task_format, 2);
  EXPECT_EQ(task->task_type, Entry<Real>::task_type);
  const SSTask zero = {};
  SSTask expected = zero;
  expected.integer_width = width;
  expected.task_format = 2;
  expected.task_type = Entry<Real>::task_type;
  expected.dimension = &p;
  expected.observation_count = &n;
  expected.observation_storage = &word;
  expected.observations = x;
  expected.weights = w;
  expected.variable_mask = mask;
  EXPECT_EQ(std::memcmp(task, &expected, sizeof expected), 0); // and every other field is zero
  EXPECT_EQ(__kestSSDeleteTask(&created), 0);
}

TYPED_TEST(TaskTest, SingleEditors) {
  using Real = typename TypeParam::Real;
  Real value[1] = {};
  constexpr auto edit = Entry<Real>::edit;
  for (int32_t id = -2; id <= 82; ++id) {
    const FieldRow* row = nullptr;
    for (const FieldRow& r : rows)
      if (r.id == id) row = &r;
    for (bool integer : {false, true}) {
      auto call = [&](void* task, const void* v) {
        return integer ? __kestiSSEditTask(task, id, v) : edit(task, id, static_cast<const Real*>(v));
      };
      SSTask task = {};
      EXPECT_EQ(call(nullptr, value), -4031) << id;
      if (!row || row->integer != integer) {
        EXPECT_EQ(call(&task, value), -3) << id;
        EXPECT_EQ(call(&task, nullptr), -3) << id;
        EXPECT_EQ(std::memcmp(&task, &(const SSTask&)SSTask{}, sizeof task), 0) << id;
        continue;
      }
      EXPECT_EQ(call(&task, value), 0) << id;
      EXPECT_EQ(field(&task, row->offset), value) << id;
      EXPECT_EQ(call(&task, nullptr), row->null_status) << id;
      EXPECT_EQ(field(&task, row->offset), value) << id;
      std::memset(reinterpret_cast<char*>(&task) + row->offset, 0, sizeof(void*));
      EXPECT_EQ(std::memcmp(&task, &(const SSTask&)SSTask{}, sizeof task), 0) << id; // nothing else was set
    }
  }
}

// Calls a group editor with the addresses of consecutive array elements as its fields, then with nulls.
template <class... Fields>
void check_group(int32_t (*edit)(void*, Fields...), std::initializer_list<size_t> offsets, const char* name) {
  ASSERT_EQ(sizeof...(Fields), offsets.size()) << name;
  static const double values[16] = {};
  SSTask task = {}, expected = {};
  int at = 0;
  for (size_t offset : offsets) {
    const void* value = values + at++;
    std::memcpy(reinterpret_cast<char*>(&expected) + offset, &value, sizeof value);
  }
  auto call = [&](void* target, const double* base) {
    int k = 0;
    auto next = [&]() -> const void* { return base ? base + k++ : nullptr; };
    std::tuple<Fields...> arguments{static_cast<Fields>(next())...}; // braces: evaluated from left to right
    return std::apply([&](auto... fields) { return edit(target, fields...); }, arguments);
  };
  EXPECT_EQ(call(nullptr, values), -4031) << name;
  EXPECT_EQ(call(&task, nullptr), 0) << name;
  EXPECT_EQ(std::memcmp(&task, &(const SSTask&)SSTask{}, sizeof task), 0) << name;
  EXPECT_EQ(call(&task, values), 0) << name;
  EXPECT_EQ(std::memcmp(&task, &expected, sizeof task), 0) << name;
  EXPECT_EQ(call(&task, nullptr), 0) << name; // nulls leave what stands there
  EXPECT_EQ(std::memcmp(&task, &expected, sizeof task), 0) << name;
}

TEST(GroupEditors, SetTheirFieldsInOrder) {
#define GROUP(name, ...)                                                                                               \
  check_group(__kestdSSEdit##name, {__VA_ARGS__}, "d" #name);                                                          \
  check_group(__kestsSSEdit##name, {__VA_ARGS__}, "s" #name);
  GROUP(Moments, 88, 96, 104, 112, 120, 128, 136)
  GROUP(Sums, 144, 152, 160, 168, 176, 184, 192)
  GROUP(CovCor, 88, 248, 240, 264, 256)
  GROUP(CP, 88, 144, 280, 272)
  GROUP(PartialCovCor, 520, 248, 240, 264, 256, 528, 536, 544, 552)
  GROUP(Quantiles, 352, 360, 368, 376, 384)
  GROUP(StreamQuantiles, 392, 400, 408, 424, 432)
  GROUP(PooledCovariance, 288, 328, 336, 296, 304, 312)
  GROUP(MissingVals, 560, 568, 576, 584, 592, 600, 608, 616, 624, 632)
  GROUP(OutDetect, 496, 504, 512)
  GROUP(RCov, 488, 456, 464, 472, 480)
  GROUP(MtxParametrz, 264, 256, 72, 80)
#undef GROUP
}

int hook_calls = 0;
void counting_hook(void*) { ++hook_calls; }

TEST(Deletion, CallsTheRegisteredHook) {
  int32_t p = 1;
  void* task = nullptr;
  ASSERT_EQ(__kestdSSNewTask(&task, &p, nullptr, nullptr, nullptr, nullptr, nullptr, 0), 0);
  static_cast<SSTask*>(task)->cleanup_hook = counting_hook;
  static_cast<SSTask*>(task)->cleanup_count = 1;
  ASSERT_EQ(__kestSSDeleteTask(&task), 0);
  EXPECT_EQ(hook_calls, 1);
}

}
