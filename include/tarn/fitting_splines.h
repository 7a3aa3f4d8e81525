/* Spline construction: the second step of tarn/fitting.h. */
#ifndef TARN_FITTING_SPLINES_H
#define TARN_FITTING_SPLINES_H

#include "tarn/fitting_task.h"

#endif
