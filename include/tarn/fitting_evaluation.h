/* Cell search, interpolation and integration of a spline: the third step of tarn/fitting.h. */
#ifndef TARN_FITTING_EVALUATION_H
#define TARN_FITTING_EVALUATION_H

#include "tarn/fitting_task.h"

#endif
