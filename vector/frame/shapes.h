// The argument lists of the kernels, one block a shape:
//   TARN_PARAMS_<shape>(T), TARN_PARAMS_I_<shape>(T)   parameters of the plain and of the strided form
//   TARN_NAMES_<shape>, TARN_NAMES_I_<shape>           the same, as a call passes them on
//   TARN_ARRAYS_<shape>(T), TARN_ARRAYS_I_<shape>(T)   the arrays among them, as a loop walks them
//   TARN_FORMULA_<shape>(F)                            the formula, with the scalars among them
#pragma once

#define TARN_TYPE_s float
#define TARN_TYPE_d double
#define TARN_TYPE_c tarn_c32
#define TARN_TYPE_z tarn_c64

#define TARN_PARAMS_In1Out1(T) (int32_t n, const T* a, T* r)
#define TARN_PARAMS_I_In1Out1(T) (int32_t n, const T* a, int32_t inca, T* r, int32_t incr)
#define TARN_NAMES_In1Out1 (n, a, r)
#define TARN_NAMES_I_In1Out1 (n, a, inca, r, incr)
#define TARN_ARRAYS_In1Out1(T) (Arrays<Unit<const T>, Unit<T>>{{a}, {r}})
#define TARN_ARRAYS_I_In1Out1(T) (Arrays<Strided<const T>, Strided<T>>{{a, inca}, {r, incr}})
#define TARN_FORMULA_In1Out1(F) (F{})

#define TARN_PARAMS_In2Out1(T) (int32_t n, const T* a, const T* b, T* r)
#define TARN_PARAMS_I_In2Out1(T) (int32_t n, const T* a, int32_t inca, const T* b, int32_t incb, T* r, int32_t incr)
#define TARN_NAMES_In2Out1 (n, a, b, r)
#define TARN_NAMES_I_In2Out1 (n, a, inca, b, incb, r, incr)
#define TARN_ARRAYS_In2Out1(T) (Arrays<Unit<const T>, Unit<T>, Unit<const T>>{{a}, {r}, {b}})
#define TARN_ARRAYS_I_In2Out1(T)                                                                                       \
  (Arrays<Strided<const T>, Strided<T>, Strided<const T>>{{a, inca}, {r, incr}, {b, incb}})
#define TARN_FORMULA_In2Out1(F) (F{})

#define TARN_PARAMS_In1Out2(T) (int32_t n, const T* a, T* r1, T* r2)
#define TARN_PARAMS_I_In1Out2(T) (int32_t n, const T* a, int32_t inca, T* r1, int32_t incr1, T* r2, int32_t incr2)
#define TARN_NAMES_In1Out2 (n, a, r1, r2)
#define TARN_NAMES_I_In1Out2 (n, a, inca, r1, incr1, r2, incr2)
#define TARN_ARRAYS_In1Out2(T) (Arrays<Unit<const T>, Unit<T>, None, Unit<T>>{{a}, {r1}, {}, {r2}})
#define TARN_ARRAYS_I_In1Out2(T)                                                                                       \
  (Arrays<Strided<const T>, Strided<T>, None, Strided<T>>{{a, inca}, {r1, incr1}, {}, {r2, incr2}})
#define TARN_FORMULA_In1Out2(F) (F{})

#define TARN_PARAMS_Powx(T) (int32_t n, const T* a, T b, T* r)
#define TARN_PARAMS_I_Powx(T) (int32_t n, const T* a, int32_t inca, T b, T* r, int32_t incr)
#define TARN_NAMES_Powx (n, a, b, r)
#define TARN_NAMES_I_Powx (n, a, inca, b, r, incr)
#define TARN_ARRAYS_Powx(T) TARN_ARRAYS_In1Out1(T)
#define TARN_ARRAYS_I_Powx(T) TARN_ARRAYS_I_In1Out1(T)
#define TARN_FORMULA_Powx(F) (F{b})

#define TARN_PARAMS_LinearFrac(T) (int32_t n, const T* a, const T* b, T scalea, T shifta, T scaleb, T shiftb, T* r)
#define TARN_PARAMS_I_LinearFrac(T)                                                                                    \
  (int32_t n, const T* a, int32_t inca, const T* b, int32_t incb, T scalea, T shifta, T scaleb, T shiftb, T* r,        \
   int32_t incr)
#define TARN_NAMES_LinearFrac (n, a, b, scalea, shifta, scaleb, shiftb, r)
#define TARN_NAMES_I_LinearFrac (n, a, inca, b, incb, scalea, shifta, scaleb, shiftb, r, incr)
#define TARN_ARRAYS_LinearFrac(T) TARN_ARRAYS_In2Out1(T)
#define TARN_ARRAYS_I_LinearFrac(T) TARN_ARRAYS_I_In2Out1(T)
#define TARN_FORMULA_LinearFrac(F) (F{scalea, shifta, scaleb, shiftb})

// Pack and Unpack: the second array of integers is of the width's type, the scalars travel in 64-bit registers.
#define TARN_PARAMS_PackI(T) (int64_t n, const T* a, int64_t inca, T* y, int32_t width)
#define TARN_PARAMS_PackV(T) (int64_t n, const T* a, const void* ia, T* y, int32_t width)
#define TARN_PARAMS_PackM(T) (int64_t n, const T* a, const void* ma, T* y, int32_t width)
#define TARN_PARAMS_UnpackI(T) (int64_t n, const T* a, T* y, int64_t incy, int32_t width)
#define TARN_PARAMS_UnpackV(T) (int64_t n, const T* a, T* y, const void* iy, int32_t width)
#define TARN_PARAMS_UnpackM(T) (int64_t n, const T* a, T* y, const void* my, int32_t width)
// Through an entry the last argument is 1, whatever the caller gave.
#define TARN_NAMES_PackI (n, a, inca, y, width = 1)
#define TARN_NAMES_PackV (n, a, ia, y, width = 1)
#define TARN_NAMES_PackM (n, a, ma, y, width = 1)
#define TARN_NAMES_UnpackI (n, a, y, incy, width = 1)
#define TARN_NAMES_UnpackV (n, a, y, iy, width = 1)
#define TARN_NAMES_UnpackM (n, a, y, my, width = 1)
