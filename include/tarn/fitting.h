/* Data fitting in one dimension: splines through sampled functions, cell search, interpolation and integration.
 *
 * A task (fitting_task.h) holds one partition, the functions sampled on it, the spline chosen for them and the storage
 * of its coefficients.
 *
 *   1. tarn_df_kernel_dNewTask1D with partition and functions;
 *   2. tarn_df_kernel_dEditPPSpline1D with the kind of spline, its conditions and storage for its coefficients;
 *   3. one of the constructors (fitting_splines.h), which fills the coefficients;
 *   4. searches, interpolation and integration (fitting_evaluation.h), as many as wanted;
 *   5. tarn_df_kernel_DeleteTask.
 *
 * Each function stands in double and single precision, d and s in its name; in the single form all reals are float.
 * Results are int32_t statuses: 0, or one of TARN_DF_ERROR_*. Only the first fault is reported.
 *
 * Threads: a task has no lock. Editors are for one thread at a time; constructors, searches, interpolation and
 * integration only read the record and may run at once on one task while nobody edits it. The library starts no
 * thread: what can be shared is shared through the caller's threader table (tarn/threader.h). */
#ifndef TARN_FITTING_H
#define TARN_FITTING_H

#include "tarn/fitting_evaluation.h"
#include "tarn/fitting_splines.h"
#include "tarn/fitting_task.h"

#endif
