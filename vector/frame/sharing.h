// How the classes LA, HA and EP of a function share kernels, and how a row of the roll is taken apart.
//   one(k)             one kernel in all three slots
//   la_ha(k, ep)       one for LA and HA, another for EP
//   la_ep(k, ha)       one for LA and EP, another for HA
//   three(la, ha, ep)  each its own
// A kernel k is (variant, class, block, block of the strided form), followed by its frame and loop where they are not
// those of the row.
#pragma once

// The three kernels in slot order.
#define TARN_SLOTS(sharing) TARN_SLOTS_##sharing
#define TARN_SLOTS_one(k) k, k, k
#define TARN_SLOTS_la_ha(k, ep) k, k, ep
#define TARN_SLOTS_la_ep(k, ha) k, ha, k
#define TARN_SLOTS_three(la, ha, ep) la, ha, ep

// The kernels that there are, each once.
#define TARN_KERNELS(sharing) TARN_KERNELS_##sharing
#define TARN_KERNELS_one(k) k
#define TARN_KERNELS_la_ha(k, ep) k, ep
#define TARN_KERNELS_la_ep(k, ha) k, ha
#define TARN_KERNELS_three(la, ha, ep) la, ha, ep

// Expands M(context, kernel) for each of up to three kernels.
#define TARN_EACH(M, context, ...) TARN_EACH_1(M, context, __VA_ARGS__)
#define TARN_EACH_1(M, context, k, ...) M(context, k) __VA_OPT__(TARN_EACH_2(M, context, __VA_ARGS__))
#define TARN_EACH_2(M, context, k, ...) M(context, k) __VA_OPT__(TARN_EACH_3(M, context, __VA_ARGS__))
#define TARN_EACH_3(M, context, k) M(context, k)

#define TARN_BARE(...) __VA_ARGS__
#define TARN_CALL(M, ...) M(__VA_ARGS__)
#define TARN_CALL_AGAIN(M, ...) M(__VA_ARGS__) // within TARN_CALL

// The name of a kernel. EP kernels carry another suffix.
#define TARN_SUFFIX_LA ynn
#define TARN_SUFFIX_HA ynn
#define TARN_SUFFIX_EP nnn
#define TARN_PASTE5(a, b, c, d, e) TARN_PASTE5_(a, b, c, d, e)
#define TARN_PASTE5_(a, b, c, d, e) a##b##c##d##e
#define TARN_KERNEL_NAME(tName, variant, cls) TARN_PASTE5(tarn_lume_kernel_, tName, _, variant##cls, TARN_SUFFIX_##cls)
