// The vector functions over spans. Made by tools/regenerate from vector/functions.def; tarn/tarn.hpp
// tells what all of them share.
#ifndef TARN_VECTOR_FUNCTIONS_HPP
#define TARN_VECTOR_FUNCTIONS_HPP

#include "tarn/tarn.hpp"

// clang-format off
namespace tarn {

// r = a + b.
inline bool Add(std::span<const double> a, std::span<const double> b, std::span<double> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const double* a, const double* b, double* r)>(tarn_lume_kernel_dAdd_ttab, accuracy, "vdAdd",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, b.data() + i, r.data() + i); }, a, b, r);
}
inline bool Add(std::span<const float> a, std::span<const float> b, std::span<float> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const float* a, const float* b, float* r)>(tarn_lume_kernel_sAdd_ttab, accuracy, "vsAdd",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, b.data() + i, r.data() + i); }, a, b, r);
}

// r = a - b.
inline bool Sub(std::span<const double> a, std::span<const double> b, std::span<double> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const double* a, const double* b, double* r)>(tarn_lume_kernel_dSub_ttab, accuracy, "vdSub",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, b.data() + i, r.data() + i); }, a, b, r);
}
inline bool Sub(std::span<const float> a, std::span<const float> b, std::span<float> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const float* a, const float* b, float* r)>(tarn_lume_kernel_sSub_ttab, accuracy, "vsSub",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, b.data() + i, r.data() + i); }, a, b, r);
}

// r = a b.
inline bool Mul(std::span<const double> a, std::span<const double> b, std::span<double> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const double* a, const double* b, double* r)>(tarn_lume_kernel_dMul_ttab, accuracy, "vdMul",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, b.data() + i, r.data() + i); }, a, b, r);
}
inline bool Mul(std::span<const float> a, std::span<const float> b, std::span<float> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const float* a, const float* b, float* r)>(tarn_lume_kernel_sMul_ttab, accuracy, "vsMul",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, b.data() + i, r.data() + i); }, a, b, r);
}

// r = a a.
inline bool Sqr(std::span<const double> a, std::span<double> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const double* a, double* r)>(tarn_lume_kernel_dSqr_ttab, accuracy, "vdSqr",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, r.data() + i); }, a, r);
}
inline bool Sqr(std::span<const float> a, std::span<float> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const float* a, float* r)>(tarn_lume_kernel_sSqr_ttab, accuracy, "vsSqr",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, r.data() + i); }, a, r);
}

// r = |a|.
inline bool Abs(std::span<const double> a, std::span<double> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const double* a, double* r)>(tarn_lume_kernel_dAbs_ttab, accuracy, "vdAbs",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, r.data() + i); }, a, r);
}
inline bool Abs(std::span<const float> a, std::span<float> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const float* a, float* r)>(tarn_lume_kernel_sAbs_ttab, accuracy, "vsAbs",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, r.data() + i); }, a, r);
}

// r = |a| with the sign of b.
inline bool CopySign(std::span<const double> a, std::span<const double> b, std::span<double> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const double* a, const double* b, double* r)>(tarn_lume_kernel_dCopySign_ttab, accuracy, "vdCopySign",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, b.data() + i, r.data() + i); }, a, b, r);
}
inline bool CopySign(std::span<const float> a, std::span<const float> b, std::span<float> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const float* a, const float* b, float* r)>(tarn_lume_kernel_sCopySign_ttab, accuracy, "vsCopySign",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, b.data() + i, r.data() + i); }, a, b, r);
}

// r = a - b where a > b, else +0.
inline bool Fdim(std::span<const double> a, std::span<const double> b, std::span<double> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const double* a, const double* b, double* r)>(tarn_lume_kernel_dFdim_ttab, accuracy, "vdFdim",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, b.data() + i, r.data() + i); }, a, b, r);
}
inline bool Fdim(std::span<const float> a, std::span<const float> b, std::span<float> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const float* a, const float* b, float* r)>(tarn_lume_kernel_sFdim_ttab, accuracy, "vsFdim",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, b.data() + i, r.data() + i); }, a, b, r);
}

// r = a / b.
inline bool Div(std::span<const double> a, std::span<const double> b, std::span<double> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const double* a, const double* b, double* r)>(tarn_lume_kernel_dDiv_ttab, accuracy, "vdDiv",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, b.data() + i, r.data() + i); }, a, b, r);
}
inline bool Div(std::span<const float> a, std::span<const float> b, std::span<float> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const float* a, const float* b, float* r)>(tarn_lume_kernel_sDiv_ttab, accuracy, "vsDiv",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, b.data() + i, r.data() + i); }, a, b, r);
}

// r = 1 / a.
inline bool Inv(std::span<const double> a, std::span<double> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const double* a, double* r)>(tarn_lume_kernel_dInv_ttab, accuracy, "vdInv",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, r.data() + i); }, a, r);
}
inline bool Inv(std::span<const float> a, std::span<float> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const float* a, float* r)>(tarn_lume_kernel_sInv_ttab, accuracy, "vsInv",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, r.data() + i); }, a, r);
}

// r = the greater of a and b.
inline bool Fmax(std::span<const double> a, std::span<const double> b, std::span<double> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const double* a, const double* b, double* r)>(tarn_lume_kernel_dFmax_ttab, accuracy, "vdFmax",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, b.data() + i, r.data() + i); }, a, b, r);
}
inline bool Fmax(std::span<const float> a, std::span<const float> b, std::span<float> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const float* a, const float* b, float* r)>(tarn_lume_kernel_sFmax_ttab, accuracy, "vsFmax",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, b.data() + i, r.data() + i); }, a, b, r);
}

// r = the lesser of a and b.
inline bool Fmin(std::span<const double> a, std::span<const double> b, std::span<double> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const double* a, const double* b, double* r)>(tarn_lume_kernel_dFmin_ttab, accuracy, "vdFmin",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, b.data() + i, r.data() + i); }, a, b, r);
}
inline bool Fmin(std::span<const float> a, std::span<const float> b, std::span<float> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const float* a, const float* b, float* r)>(tarn_lume_kernel_sFmin_ttab, accuracy, "vsFmin",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, b.data() + i, r.data() + i); }, a, b, r);
}

// r = that of a and b with the greater magnitude.
inline bool MaxMag(std::span<const double> a, std::span<const double> b, std::span<double> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const double* a, const double* b, double* r)>(tarn_lume_kernel_dMaxMag_ttab, accuracy, "vdMaxMag",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, b.data() + i, r.data() + i); }, a, b, r);
}
inline bool MaxMag(std::span<const float> a, std::span<const float> b, std::span<float> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const float* a, const float* b, float* r)>(tarn_lume_kernel_sMaxMag_ttab, accuracy, "vsMaxMag",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, b.data() + i, r.data() + i); }, a, b, r);
}

// r = that of a and b with the lesser magnitude.
inline bool MinMag(std::span<const double> a, std::span<const double> b, std::span<double> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const double* a, const double* b, double* r)>(tarn_lume_kernel_dMinMag_ttab, accuracy, "vdMinMag",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, b.data() + i, r.data() + i); }, a, b, r);
}
inline bool MinMag(std::span<const float> a, std::span<const float> b, std::span<float> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const float* a, const float* b, float* r)>(tarn_lume_kernel_sMinMag_ttab, accuracy, "vsMinMag",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, b.data() + i, r.data() + i); }, a, b, r);
}

// r = a - b trunc(a/b).
inline bool Fmod(std::span<const double> a, std::span<const double> b, std::span<double> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const double* a, const double* b, double* r)>(tarn_lume_kernel_dFmod_ttab, accuracy, "vdFmod",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, b.data() + i, r.data() + i); }, a, b, r);
}
inline bool Fmod(std::span<const float> a, std::span<const float> b, std::span<float> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const float* a, const float* b, float* r)>(tarn_lume_kernel_sFmod_ttab, accuracy, "vsFmod",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, b.data() + i, r.data() + i); }, a, b, r);
}

// r = a - b n with n the integer nearest to a/b, even in a tie.
inline bool Remainder(std::span<const double> a, std::span<const double> b, std::span<double> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const double* a, const double* b, double* r)>(tarn_lume_kernel_dRemainder_ttab, accuracy, "vdRemainder",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, b.data() + i, r.data() + i); }, a, b, r);
}
inline bool Remainder(std::span<const float> a, std::span<const float> b, std::span<float> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const float* a, const float* b, float* r)>(tarn_lume_kernel_sRemainder_ttab, accuracy, "vsRemainder",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, b.data() + i, r.data() + i); }, a, b, r);
}

// r = the number next to a in the direction of b.
inline bool NextAfter(std::span<const double> a, std::span<const double> b, std::span<double> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const double* a, const double* b, double* r)>(tarn_lume_kernel_dNextAfter_ttab, accuracy, "vdNextAfter",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, b.data() + i, r.data() + i); }, a, b, r);
}
inline bool NextAfter(std::span<const float> a, std::span<const float> b, std::span<float> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const float* a, const float* b, float* r)>(tarn_lume_kernel_sNextAfter_ttab, accuracy, "vsNextAfter",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, b.data() + i, r.data() + i); }, a, b, r);
}

// r = (scalea a + shifta) / (scaleb b + shiftb).
inline bool LinearFrac(std::span<const double> a, std::span<const double> b, double scalea, double shifta, double scaleb, double shiftb, std::span<double> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const double* a, const double* b, double scalea, double shifta, double scaleb, double shiftb, double* r)>(tarn_lume_kernel_dLinearFrac_ttab, accuracy, "vdLinearFrac",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, b.data() + i, scalea, shifta, scaleb, shiftb, r.data() + i); }, a, b, r);
}
inline bool LinearFrac(std::span<const float> a, std::span<const float> b, float scalea, float shifta, float scaleb, float shiftb, std::span<float> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const float* a, const float* b, float scalea, float shifta, float scaleb, float shiftb, float* r)>(tarn_lume_kernel_sLinearFrac_ttab, accuracy, "vsLinearFrac",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, b.data() + i, scalea, shifta, scaleb, shiftb, r.data() + i); }, a, b, r);
}

// r = the least integer not below a.
inline bool Ceil(std::span<const double> a, std::span<double> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const double* a, double* r)>(tarn_lume_kernel_dCeil_ttab, accuracy, "vdCeil",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, r.data() + i); }, a, r);
}
inline bool Ceil(std::span<const float> a, std::span<float> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const float* a, float* r)>(tarn_lume_kernel_sCeil_ttab, accuracy, "vsCeil",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, r.data() + i); }, a, r);
}

// r = the greatest integer not above a.
inline bool Floor(std::span<const double> a, std::span<double> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const double* a, double* r)>(tarn_lume_kernel_dFloor_ttab, accuracy, "vdFloor",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, r.data() + i); }, a, r);
}
inline bool Floor(std::span<const float> a, std::span<float> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const float* a, float* r)>(tarn_lume_kernel_sFloor_ttab, accuracy, "vsFloor",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, r.data() + i); }, a, r);
}

// r = a without its fraction.
inline bool Trunc(std::span<const double> a, std::span<double> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const double* a, double* r)>(tarn_lume_kernel_dTrunc_ttab, accuracy, "vdTrunc",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, r.data() + i); }, a, r);
}
inline bool Trunc(std::span<const float> a, std::span<float> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const float* a, float* r)>(tarn_lume_kernel_sTrunc_ttab, accuracy, "vsTrunc",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, r.data() + i); }, a, r);
}

// r = a rounded to an integer as the caller's rounding mode says.
inline bool Rint(std::span<const double> a, std::span<double> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const double* a, double* r)>(tarn_lume_kernel_dRint_ttab, accuracy, "vdRint",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, r.data() + i); }, a, r);
}
inline bool Rint(std::span<const float> a, std::span<float> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const float* a, float* r)>(tarn_lume_kernel_sRint_ttab, accuracy, "vsRint",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, r.data() + i); }, a, r);
}

// r = a rounded to an integer as the caller's rounding mode says.
inline bool NearbyInt(std::span<const double> a, std::span<double> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const double* a, double* r)>(tarn_lume_kernel_dNearbyInt_ttab, accuracy, "vdNearbyInt",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, r.data() + i); }, a, r);
}
inline bool NearbyInt(std::span<const float> a, std::span<float> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const float* a, float* r)>(tarn_lume_kernel_sNearbyInt_ttab, accuracy, "vsNearbyInt",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, r.data() + i); }, a, r);
}

// r = a rounded to the nearest integer, halves away from zero.
inline bool Round(std::span<const double> a, std::span<double> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const double* a, double* r)>(tarn_lume_kernel_dRound_ttab, accuracy, "vdRound",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, r.data() + i); }, a, r);
}
inline bool Round(std::span<const float> a, std::span<float> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const float* a, float* r)>(tarn_lume_kernel_sRound_ttab, accuracy, "vsRound",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, r.data() + i); }, a, r);
}

// r = a - trunc(a), of a's sign.
inline bool Frac(std::span<const double> a, std::span<double> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const double* a, double* r)>(tarn_lume_kernel_dFrac_ttab, accuracy, "vdFrac",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, r.data() + i); }, a, r);
}
inline bool Frac(std::span<const float> a, std::span<float> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const float* a, float* r)>(tarn_lume_kernel_sFrac_ttab, accuracy, "vsFrac",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, r.data() + i); }, a, r);
}

// r1 = trunc(a), r2 = a - trunc(a), both of a's sign.
inline bool Modf(std::span<const double> a, std::span<double> r1, std::span<double> r2, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const double* a, double* r1, double* r2)>(tarn_lume_kernel_dModf_ttab, accuracy, "vdModf",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, r1.data() + i, r2.data() + i); }, a, r1, r2);
}
inline bool Modf(std::span<const float> a, std::span<float> r1, std::span<float> r2, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const float* a, float* r1, float* r2)>(tarn_lume_kernel_sModf_ttab, accuracy, "vsModf",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, r1.data() + i, r2.data() + i); }, a, r1, r2);
}

// r = the exponent of a: floor(log2 |a|).
inline bool Logb(std::span<const double> a, std::span<double> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const double* a, double* r)>(tarn_lume_kernel_dLogb_ttab, accuracy, "vdLogb",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, r.data() + i); }, a, r);
}
inline bool Logb(std::span<const float> a, std::span<float> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const float* a, float* r)>(tarn_lume_kernel_sLogb_ttab, accuracy, "vsLogb",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, r.data() + i); }, a, r);
}

// r = the square root of a.
inline bool Sqrt(std::span<const double> a, std::span<double> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const double* a, double* r)>(tarn_lume_kernel_dSqrt_ttab, accuracy, "vdSqrt",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, r.data() + i); }, a, r);
}
inline bool Sqrt(std::span<const float> a, std::span<float> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const float* a, float* r)>(tarn_lume_kernel_sSqrt_ttab, accuracy, "vsSqrt",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, r.data() + i); }, a, r);
}

// r = 1 / the square root of a.
inline bool InvSqrt(std::span<const double> a, std::span<double> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const double* a, double* r)>(tarn_lume_kernel_dInvSqrt_ttab, accuracy, "vdInvSqrt",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, r.data() + i); }, a, r);
}
inline bool InvSqrt(std::span<const float> a, std::span<float> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const float* a, float* r)>(tarn_lume_kernel_sInvSqrt_ttab, accuracy, "vsInvSqrt",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, r.data() + i); }, a, r);
}

// r = the cube root of a.
inline bool Cbrt(std::span<const double> a, std::span<double> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const double* a, double* r)>(tarn_lume_kernel_dCbrt_ttab, accuracy, "vdCbrt",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, r.data() + i); }, a, r);
}
inline bool Cbrt(std::span<const float> a, std::span<float> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const float* a, float* r)>(tarn_lume_kernel_sCbrt_ttab, accuracy, "vsCbrt",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, r.data() + i); }, a, r);
}

// r = 1 / the cube root of a.
inline bool InvCbrt(std::span<const double> a, std::span<double> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const double* a, double* r)>(tarn_lume_kernel_dInvCbrt_ttab, accuracy, "vdInvCbrt",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, r.data() + i); }, a, r);
}
inline bool InvCbrt(std::span<const float> a, std::span<float> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const float* a, float* r)>(tarn_lume_kernel_sInvCbrt_ttab, accuracy, "vsInvCbrt",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, r.data() + i); }, a, r);
}

// r = e^a.
inline bool Exp(std::span<const double> a, std::span<double> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const double* a, double* r)>(tarn_lume_kernel_dExp_ttab, accuracy, "vdExp",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, r.data() + i); }, a, r);
}
inline bool Exp(std::span<const float> a, std::span<float> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const float* a, float* r)>(tarn_lume_kernel_sExp_ttab, accuracy, "vsExp",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, r.data() + i); }, a, r);
}

// r = ln a.
inline bool Ln(std::span<const double> a, std::span<double> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const double* a, double* r)>(tarn_lume_kernel_dLn_ttab, accuracy, "vdLn",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, r.data() + i); }, a, r);
}
inline bool Ln(std::span<const float> a, std::span<float> r, Accuracy accuracy = Accuracy::of_mode) {
  return detail::over_pieces<void(int32_t n, const float* a, float* r)>(tarn_lume_kernel_sLn_ttab, accuracy, "vsLn",
      [=](auto kernel, int32_t n, std::size_t i) { kernel(n, a.data() + i, r.data() + i); }, a, r);
}

}
// clang-format on

#endif
