// The 273 members of WH.
#include "random/streams/stream.h"

namespace tarn::random {

struct Member {
  uint8_t a[4];
  uint32_t m[4];
};

// The types have external linkage, as the tables need.
constexpr int kMembers = 273;
constexpr Member kMember[kMembers] = {
#include "random/congruential/wh_members.inc"
};

template <class Element> struct Table { Element e[kMembers][4]; };

template <class Element, class Of> constexpr Table<Element> make(Of of) {
  Table<Element> table{};
  for (int k = 0; k < kMembers; k++)
    for (int i = 0; i < 4; i++) table.e[k][i] = of(kMember[k], i);
  return table;
}

// The arrays of the public header by their linkage names: a table that is computed has to be wrapped in a record. The
// record is aligned as the array would be, for callers may rely on it: the x86-64 ABI aligns arrays of 16 bytes and more
// at 16.
#define EXPORTED extern __attribute__((visibility("default"), aligned(16)))
EXPORTED const Table<uint8_t> wh_a asm("__kest_WH_A");
EXPORTED const Table<uint32_t> wh_m asm("__kest_WH_M");
EXPORTED const Table<double> wh_inverse asm("__kestdWH_IM_Tab");
constexpr Table<uint8_t> wh_a = make<uint8_t>([](const Member& w, int i) { return w.a[i]; });
constexpr Table<uint32_t> wh_m = make<uint32_t>([](const Member& w, int i) { return w.m[i]; });
constexpr Table<double> wh_inverse = make<double>([](const Member& w, int i) { return 1.0 / w.m[i]; });

}
