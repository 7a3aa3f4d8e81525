#!/bin/sh
# Feeds the bits of each generator, plain, leapfrogged and skipped, to tests of the dieharder battery, and prints one
# line a test: the stream, the test, its p-value and the verdict.
#   scripts/dieharder.sh path/to/tarn [TEST...]     the tests by dieharder's numbers; all of them with -a
# The battery reads 32-bit words, so generators with fewer bits in a word (MCG31M1, MCG59, WH) are left out, and so are
# the quasi-random ones, which are not meant to look random.
tarn=$1
shift
tests=${*:-0 2 8 15}

run() {
  name=$1
  shift
  for test in $tests; do
    "$tarn" random bits --to binary -n 2000000000 "$@" 2>/dev/null | dieharder -g 200 -d "$test" -D test_name -D ntuple -D pvalues -D assessment -c '|' |
      sed "s/^/$name: /"
  done
}

for generator in R250 MRG32K3A MT19937 MT2203 SFMT19937 ARS5 PHILOX4X32X10; do
  run "$generator" -g "$generator" -s 20201
done
run "MT2203 member 6023" -g MT2203 --member 6023 -s 20201
run "MT2203 member 3000" -g MT2203 --member 3000 -s 20201
run "MRG32K3A skipped by 2^62" -g MRG32K3A -s 20201 --skip 4611686018427387904
run "MT19937 skipped by 2^62" -g MT19937 -s 20201 --skip 4611686018427387904
run "SFMT19937 skipped by 2^62" -g SFMT19937 -s 20201 --skip 4611686018427387904
run "PHILOX4X32X10 skipped by 2^62" -g PHILOX4X32X10 -s 20201 --skip 4611686018427387904
