// Includes TARN_NAMED once in a namespace of each precision, where Real is defined and TARN_KERNEL(Name) makes the
// exported name tarn_df_kernel_<t><TARN_INFIX><Name>. Included once by a file that has defined both; so there is no guard.

#define TARN_VISIBLE __attribute__((visibility("default")))
#define TARN_PASTE4(a, b, c, d) TARN_PASTE4_(a, b, c, d)
#define TARN_PASTE4_(a, b, c, d) a##b##c##d
namespace d {
using Real = double;
#define TARN_KERNEL(Name) TARN_PASTE4(tarn_df_kernel_, d, TARN_INFIX, Name)
#include TARN_NAMED
#undef TARN_KERNEL
}
namespace s {
using Real = float;
#define TARN_KERNEL(Name) TARN_PASTE4(tarn_df_kernel_, s, TARN_INFIX, Name)
#include TARN_NAMED
#undef TARN_KERNEL
}
