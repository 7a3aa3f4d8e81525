#include "bench/vector/peers.h"

#include <dlfcn.h>

namespace tarn::bench {

namespace {

struct Known {
  const char *function, *c_name;
  Range range;
};
constexpr Known known[] = {
#define TARN_PEER(Name, c_name, from, to) {#Name, #c_name, {from, to}},
#include "bench/vector/peers.def"
};

const Known* find(const std::string& function) {
  for (const Known& k : known)
    if (function == k.function) return &k;
  return nullptr;
}

void* symbol(const char* library, const std::string& name) {
  void* handle = dlopen(library, RTLD_NOW | RTLD_LOCAL);
  return handle ? dlsym(handle, name.c_str()) : nullptr;
}

template <class T> Loop scalar_loop(void* address, int inputs, int outputs, bool sincos) {
  if (outputs == 2)
    return [address, sincos](const Arrays& x) {
      const T* a = static_cast<const T*>(x.in[0]);
      T *r1 = static_cast<T*>(x.out[0]), *r2 = static_cast<T*>(x.out[1]);
      if (sincos) { // void sincos(T, T*, T*); T modf(T, T*) gives the fraction
        for (int64_t i = 0; i < x.n; ++i) reinterpret_cast<void (*)(T, T*, T*)>(address)(a[i], r1 + i, r2 + i);
      } else {
        for (int64_t i = 0; i < x.n; ++i) r2[i] = reinterpret_cast<T (*)(T, T*)>(address)(a[i], r1 + i);
      }
    };
  if (inputs == 2)
    return [address](const Arrays& x) {
      const T *a = static_cast<const T*>(x.in[0]), *b = static_cast<const T*>(x.in[1]);
      T* r = static_cast<T*>(x.out[0]);
      for (int64_t i = 0; i < x.n; ++i) r[i] = reinterpret_cast<T (*)(T, T)>(address)(a[i], b[i]);
    };
  return [address](const Arrays& x) {
    const T* a = static_cast<const T*>(x.in[0]);
    T* r = static_cast<T*>(x.out[0]);
    for (int64_t i = 0; i < x.n; ++i) r[i] = reinterpret_cast<T (*)(T)>(address)(a[i]);
  };
}

}

Range argument_range(const std::string& function) {
  const Known* peer = find(function);
  return peer ? peer->range : Range{};
}

std::vector<Peer> peers(const std::string& function, char type, int inputs, int outputs) {
  std::vector<Peer> all;
  const auto add = [&](const std::string& name, const char* rival, Loop loop) {
    if (loop) all.push_back({name, rival, std::move(loop)});
  };
  const bool single = type == 's', avx2 = __builtin_cpu_supports("avx2");
  add("plain loop, SSE4", "HA", plain_loop(function, type));
  add("Highway SSE4", "HA", highway_loop(function, type));
  const Known* peer = find(function);
  if (!peer) return all;

  const std::string c_name = peer->c_name;
  if (void* scalar = symbol("libm.so.6", c_name + (single ? "f" : "")))
    add("C library, scalar", "HA",
        single ? scalar_loop<float>(scalar, inputs, outputs, c_name == "sincos")
               : scalar_loop<double>(scalar, inputs, outputs, c_name == "sincos"));
  if (outputs == 1) { // those of libmvec with two results return through pointers of each lane
    const std::string arguments = inputs == 2 ? "vv_" : "v_", ending = "_" + c_name + (single ? "f" : "");
    const std::string tail = (inputs == 2 ? "vv" : "v") + ending;
    if (void* sse4 = symbol("libmvec.so.1", std::string("_ZGVbN") + (single ? "4" : "2") + tail))
      add("libmvec SSE4", "LA", loop_sse4(sse4, type, inputs, outputs));
    if (void* wide = symbol("libmvec.so.1", std::string("_ZGVdN") + (single ? "8" : "4") + tail); wide && avx2)
      add("libmvec AVX2", "LA", loop_avx2(wide, type, inputs, outputs));
  }
  struct Accuracy {
    const char *suffix, *rival;
  };
  for (const Accuracy accuracy : {Accuracy{"u05", "HA"}, {"u10", "HA"}, {"u15", "LA"}, {"u35", "LA"}, {"", "HA"}}) {
    const std::string suffix = accuracy.suffix;
    const std::string shown = "SLEEF " + (suffix.empty() ? "" : suffix + " ");
    if (void* sse4 = symbol("libsleef.so.3", "Sleef_" + c_name + (single ? "f4_" : "d2_") + suffix + "sse4"))
      add(shown + "SSE4", accuracy.rival, loop_sse4(sse4, type, inputs, outputs));
    if (void* wide = symbol("libsleef.so.3", "Sleef_" + c_name + (single ? "f8_" : "d4_") + suffix + "avx2");
        wide && avx2)
      add(shown + "AVX2", accuracy.rival, loop_avx2(wide, type, inputs, outputs));
  }
  return all;
}

}
