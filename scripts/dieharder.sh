#!/bin/sh
# Feeds the bits of each generator, plain, leapfrogged and skipped, to tests of the dieharder battery, and prints one
# line a test: the stream, the test, its p-value and the verdict. Ends with status 1 if a test failed.
#   scripts/dieharder.sh path/to/tarn path/to/upper_halves [TEST...]     tests by the numbers of dieharder -l
# The battery reads 32-bit words. Generators whose words are wider, narrower or weak in their low bits (MCG31M1, MCG59,
# WH) come as uniform numbers, of which upper_halves takes the upper 16 bits. The quasi-random generators are left out:
# they are not meant to look random.
[ $# -ge 2 ] || { sed -n '2,4s/^# //p' "$0" >&2; exit 2; }
tarn=$1
upper_halves=$2
shift 2
tests=${*:-0 1 2 4 8 9 10 12 13 15 16 100 101}
seed=20201
far=4611686018427387904 # 2^62
failed=0

battery() { # reads words
  dieharder -g 200 -d "$1" -D test_name -D ntuple -D pvalues -D assessment -c '|'
}

report() { # name, what the battery printed
  [ -n "$2" ] || failed=1
  printf '%s\n' "$2" | sed "s/^/$1: /"
  case $2 in *FAILED*) failed=1 ;; esac
}

words() {
  name=$1
  shift
  for test in $tests; do
    report "$name" "$("$tarn" random bits --to binary -n 2000000000 "$@" 2>/dev/null | battery "$test")"
  done
}

numbers() {
  name=$1
  shift
  for test in $tests; do
    report "$name" "$("$tarn" random uniform --to binary -n 4000000000 "$@" 2>/dev/null | "$upper_halves" |
      battery "$test")"
  done
}

# R250 gets all its 250 words: one seed word leaves its lowest bits in patterns that last for millions of outputs.
# shellcheck disable=SC2046
words R250 -g R250 -s $("$tarn" random bits -g MT19937 -s $seed -n 250 --to binary | od -An -v -tu4)
for generator in MRG32K3A MT19937 MT2203 SFMT19937 ARS5 PHILOX4X32X10; do
  words "$generator" -g "$generator" -s $seed
done
words "MT2203 member 3000" -g MT2203 --member 3000 -s $seed
words "MT2203 member 6023" -g MT2203 --member 6023 -s $seed
for generator in MCG31M1 MCG59 WH; do
  numbers "$generator" -g "$generator" -s $seed
  numbers "$generator, number 5 of every 16" -g "$generator" -s $seed --leapfrog 5 16
  numbers "$generator, number 1 of every 3, skipped by 2^62" -g "$generator" -s $seed --leapfrog 1 3 --skip $far
done
numbers "WH member 272" -g WH --member 272 -s $seed
for generator in MRG32K3A MT19937 SFMT19937 ARS5 PHILOX4X32X10; do
  words "$generator skipped by 2^62" -g "$generator" -s $seed --skip $far
done
exit $failed
