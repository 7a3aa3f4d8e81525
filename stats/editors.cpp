// The editors: one field by its id, or a group of fields at once.
#include <stddef.h>

#include "stats/precisions.h"
#include "stats/task.h"

namespace tarn::stats {
namespace {

enum class PointsAt : int8_t { nothing, real, integer };

struct Field {
  int16_t offset;
  PointsAt points_at;
  int16_t null_status;
};

constexpr Field fields[] = {
    // by id
    {0, PointsAt::nothing, 0},
#define TARN_TASK_FIELD(id, name, type, status) {offsetof(SSTask, name), PointsAt::type, status},
#include "stats/task_fields.def"
};
constexpr int32_t ids = sizeof(fields) / sizeof(fields[0]);
static_assert(ids == 80);
#define TARN_TASK_FIELD(id, name, type, status) static_assert(fields[id].offset == offsetof(SSTask, name));
#include "stats/task_fields.def"

int32_t edit(void* task, int32_t id, PointsAt family, const void* value) {
  if (!task) return TARN_SS_ERROR_NULL_TASK;
  if (id < 1 || id >= ids || fields[id].points_at != family) return TARN_SS_ERROR_PARAMETER_ID;
  if (!value) return fields[id].null_status;
  __builtin_memcpy(static_cast<char*>(task) + fields[id].offset, &value, sizeof value);
  return TARN_SS_OK;
}

void set_if_given(void*& field, const void* value) {
  if (value) field = const_cast<void*>(value);
}

}
}

using namespace tarn::stats;

TARN_EXPORT int32_t __kestdSSEditTask(void* task, int32_t id, const double* value) {
  return edit(task, id, PointsAt::real, value);
}
TARN_EXPORT int32_t __kestsSSEditTask(void* task, int32_t id, const float* value) {
  return edit(task, id, PointsAt::real, value);
}
TARN_EXPORT int32_t __kestiSSEditTask(void* task, int32_t id, const void* value) {
  return edit(task, id, PointsAt::integer, value);
}

#define TARN_SET(field) set_if_given(static_cast<SSTask*>(task)->field, field);
#define TARN_PARAMETER_d(field) , const double* field
#define TARN_PARAMETER_s(field) , const float* field
#define TARN_PARAMETER_i(field) , const void* field
#define TARN_EDITOR_TWIN(t, name)                                                                                      \
  TARN_EXPORT int32_t __kest##t##SSEdit##name(                                                                         \
      void* task TARN_EDITOR_FIELDS_##name(TARN_PARAMETER_##t, TARN_PARAMETER_i)) {                                    \
    if (!task) return TARN_SS_ERROR_NULL_TASK;                                                                         \
    TARN_EDITOR_FIELDS_##name(TARN_SET, TARN_SET) return TARN_SS_OK;                                                   \
  }
#define TARN_TASK_EDITOR(name) TARN_EDITOR_TWIN(d, name) TARN_EDITOR_TWIN(s, name)
#include "stats/group_editors.def"
