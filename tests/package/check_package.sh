#!/bin/bash
# Installs the build into a folder of its own, moves that folder, and builds the little project in consumer/ against it:
# through find_package, and through pkg-config, in C and in C++, with the shared library and with the archive.
#
# usage: check_package.sh CMAKE GENERATOR BUILD_FOLDER C_COMPILER CXX_COMPILER
set -euo pipefail
cmake=$1 generator=$2 build=$3 cc=$4 cxx=$5
consumer=$(cd "$(dirname "$0")" && pwd)/consumer
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

"$cmake" --install "$build" --prefix "$work/first" >/dev/null
mv "$work/first" "$work/tarn" # a package that knew its folder by name would now be lost

"$cmake" -G "$generator" -S "$consumer" -B "$work/build" -DCMAKE_PREFIX_PATH="$work/tarn" \
  -DCMAKE_C_COMPILER="$cc" -DCMAKE_CXX_COMPILER="$cxx" >/dev/null
"$cmake" --build "$work/build" >"$work/log" || { cat "$work/log"; exit 1; }
for program in in_c in_cpp in_c_static in_cpp_static; do
  echo "find_package: $program"
  "$work/build/$program"
done
for program in "$work/build"/in_c_o*; do # with the adapters that there are
  [ -x "$program" ] || continue
  echo "find_package: ${program##*/}"
  "$program"
done
for program in in_c_static in_cpp_static; do
  ! readelf -d "$work/build/$program" | grep -q libtarn || { echo "$program needs the shared library"; exit 1; }
done

pc=$(find "$work/tarn" -name tarn.pc)
export PKG_CONFIG_PATH=${pc%/*}
read -ra flags <<<"$(pkg-config --cflags --libs tarn)"
libdir=$(pkg-config --variable=libdir tarn)
"$cc" -std=c11 -Wall -Wextra -pedantic -Werror "$consumer/consumer.c" "${flags[@]}" -o "$work/c"
"$cxx" -std=c++20 -Wall -Wextra -pedantic -Werror "$consumer/consumer.cpp" "${flags[@]}" -o "$work/cpp"
for program in c cpp; do
  echo "pkg-config: $program"
  LD_LIBRARY_PATH=$libdir "$work/$program"
done

python3 "$consumer/../check_headers.py" "$(pkg-config --variable=includedir tarn)" "$cc" "$cxx"

# The first example that a reader meets.
sed -n '/^```c$/,/^```$/p' "$consumer/../../../README.md" | sed '/^```/d' >"$work/readme.c"
"$cc" -std=c11 -Wall -Wextra -pedantic -Werror "$work/readme.c" "${flags[@]}" -o "$work/readme"
echo "README's example"
LD_LIBRARY_PATH=$libdir "$work/readme" >"$work/readme.out"
grep -q '^ln 2 = 0\.69314718055994' "$work/readme.out" && grep -q '^status 1$' "$work/readme.out" ||
  { cat "$work/readme.out"; exit 1; }

read -ra flags <<<"$(pkg-config --static --cflags --libs tarn)"
flags=("${flags[@]/#-ltarn/-l:libtarn.a}") # the archive; what it needs may be shared
"$cc" -std=c11 "$consumer/consumer.c" "${flags[@]}" -o "$work/c_static"
! readelf -d "$work/c_static" | grep -q libtarn || { echo "c_static needs the shared library"; exit 1; }
blas=$(readelf -d "$libdir/libtarn.so" | sed -n 's/.*runpath: \[\(.*\)\]/\1/p')
for program in "$work/c_static" "$work/build/in_c_static"; do
  readelf -d "$program" | grep -qF "[$blas]" || { echo "$program does not know the BLAS without threads"; exit 1; }
done
echo "pkg-config --static: c"
"$work/c_static"

for adapter in "$libdir"/libtarn_*.so; do
  [ -e "$adapter" ] || continue
  name=${adapter##*/lib} name=${name%.so}
  [ "$(nm -D --defined-only "$adapter" | awk '{ print $3 }')" = "${name}_threader" ] ||
    { echo "$adapter exports more than its table"; exit 1; }
done

if [ -x "$work/tarn/bin/tarn_known" ]; then # and its data in the same tree
  echo "installed known answers"
  env -u LD_LIBRARY_PATH "$work/tarn/bin/tarn_known" "$work/tarn"/share/tarn/known/*.txt >"$work/log" || { cat "$work/log"; exit 1; }
fi
if [ -x "$work/tarn/bin/tarn" ]; then # finds its library beside it
  echo "installed command"
  env -u LD_LIBRARY_PATH "$work/tarn/bin/tarn" --version
fi
