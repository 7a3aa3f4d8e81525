#!/bin/bash
# Everything that holds Tarn to its promises. The only command needed on a bare Debian 12, as root.
#
# usage: scripts/test.sh [STAGE...]     with no stage named, all of them, in this order:
#   format   clang-format finds nothing to change
#   release  GCC, Release, with the benchmarks: all tests but the slow ones
#   clang    the same tests on a build by Clang
#   tidy     clang-tidy over the library and the command
#   asan     the tests under AddressSanitizer and UndefinedBehaviorSanitizer
#   tsan     the threaded tests under ThreadSanitizer
# The closing line counts the tests of all stages; format and tidy count as one each.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh
need_packages g++ cmake ninja-build python3 python3-mpmath pkg-config binutils \
  libgtest-dev libbenchmark-dev libcli11-dev libmpfr-dev libsleef-dev libhwy-dev libntl-dev \
  libopenblas-serial-dev libgsl-dev libboost-dev librandom123-dev libeigen3-dev libarmadillo-dev libtbb-dev libopenmpi-dev \
  clang clang-format clang-tidy libomp-dev

jobs=$(nproc)
passed=0 failed=0
declare -a failures=()

note() { # note NAME SUCCESS: one check without a count of its own
  if [ "$2" = yes ]; then
    passed=$((passed + 1))
  else
    failed=$((failed + 1))
    failures+=("$1")
  fi
}

build_and_test() { # build_and_test PRESET [CMAKE-OPTION...]
  local preset=$1 log
  shift
  if ! { cmake --preset "$preset" "$@" >/dev/null && cmake --build --preset "$preset" -j "$jobs" -- --quiet; }; then
    note "$preset: build" no
    return
  fi
  log=$(mktemp)
  ctest --preset "$preset" --no-tests=error -j "$jobs" >"$log" 2>&1 || true
  local closing
  closing=$(grep -E '^[0-9]+% tests passed, ' "$log" || true)
  if [ -z "$closing" ]; then
    cat "$log"
    note "$preset: ctest" no
  else
    local bad total
    bad=$(sed -E 's/.* ([0-9]+) tests? failed out of .*/\1/' <<<"$closing")
    total=$(sed -E 's/.* out of ([0-9]+).*/\1/' <<<"$closing")
    [ "$bad" = 0 ] || cat "$log"
    echo "$closing"
    passed=$((passed + total - bad))
    failed=$((failed + bad))
    [ "$bad" = 0 ] || failures+=("$preset: $bad tests")
  fi
  rm -f "$log"
}

stage_format() {
  local sources
  sources=$(find service vector random stats fitting command adapters include bench tests tools examples \
    \( -name '*.cpp' -o -name '*.h' -o -name '*.hpp' -o -name '*.c' \) ! -name '*_data.h' 2>/dev/null || true)
  # shellcheck disable=SC2086
  if clang-format --dry-run --Werror $sources; then note format yes; else note format no; fi
}

stage_release() { build_and_test release -DTARN_BUILD_BENCH=ON; }
stage_clang() { build_and_test clang; }
stage_asan() { build_and_test asan; }
stage_tsan() { build_and_test tsan; }

stage_tidy() {
  cmake --preset clang >/dev/null
  local log root
  root=$(sed 's/[][\.*^$+?(){}|]/\\&/g' <<<"$PWD") # run-clang-tidy takes it as an expression, and no file as success
  log=$(mktemp)
  if run-clang-tidy -quiet -j "$jobs" -p build/clang \
    "^$root/(service|vector|random|stats|fitting|command|adapters)/" >"$log" 2>&1; then
    note tidy yes
  else
    grep -E 'error:|warning:' -A 3 "$log" || tail -20 "$log"
    note tidy no
  fi
  rm -f "$log"
}

stages=("$@")
[ $# -gt 0 ] || stages=(format release clang tidy asan tsan)
for stage in "${stages[@]}"; do
  declare -F "stage_$stage" >/dev/null || { echo "no stage named $stage" >&2; exit 2; }
done
for stage in "${stages[@]}"; do
  start=$SECONDS
  echo "== $stage"
  "stage_$stage"
  echo "   $((SECONDS - start)) s"
done

for failure in "${failures[@]}"; do echo "FAILED $failure"; done
echo "$passed passed, $failed failed"
[ "$failed" = 0 ] && [ "$passed" -gt 0 ]
