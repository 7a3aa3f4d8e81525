#!/usr/bin/env python3
"""Tables of the roots: writes sqrt_data.h and cbrt_data.h beside this file."""
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[3] / "tools"))
from table_file import TableFile, double, single  # noqa: E402
from mpmath import mpf, sqrt  # noqa: E402

FOLDER = "vector/real/roots"
GENERATOR = f"{FOLDER}/roots_tables.py"


def sqrt_tables():
    out = TableFile(f"{FOLDER}/sqrt_data.h", GENERATOR)
    middle = lambda i: 1 + (i + mpf(1) / 2) / 256
    out.table("double", "__lumedSqrtHATab",
              "1/sqrt(2^p (1 + (i + 1/2)/256)) for p = 0, i = 0 to 255, then p = 1; last the two factors 2^p",
              [double(1 / sqrt(2 ** p * middle(i))) for p in (0, 1) for i in range(256)] + [mpf(1), mpf(2)])
    return out


def cbrt_tables():
    out = TableFile(f"{FOLDER}/cbrt_data.h", GENERATOR)
    # The middle of interval i, to which all mantissas in [1 + i/32, 1 + (i + 1)/32) are referred.
    middle = lambda i: 1 + mpf(2 * i + 1) / 64
    split = lambda x, rounded: [rounded(x), rounded(x - rounded(x))]
    root = lambda i, power: (2 ** mpf(power) * middle(i)) ** (mpf(1) / 3)
    out.table("double", "cbrt_reciprocal", "1/C(i), C(i) = 1 + (2i + 1)/64, for i = 0 to 31, once for each r as below",
              [double(1 / middle(i)) for i in range(32)] * 3)
    out.table("double", "__lumedCbrtHATab", "(2^r C(i))^(1/3) as hi, lo, for r = 0, i = 0 to 31, then r = 1, 2",
              [v for r in range(3) for i in range(32) for v in split(root(i, r), double)], 2)
    out.table("double", "__lumedInvCbrtHATab", "(2^r C(i))^(-1/3) as hi, lo, for r = 0, i = 0 to 31, then r = 1, 2",
              [v for r in range(3) for i in range(32) for v in split(1 / root(i, r), double)], 2)
    # A biased float exponent of 127 leaves the residue 1: the power of residue r is r - 1.
    out.table("float", "cbrt_reciprocalf", "1/C(i), for i = 0 to 31, three times",
              [single(1 / middle(i)) for i in range(32)] * 3)
    out.table("float", "cbrt_tablef", "(2^(r-1) C(i))^(1/3) as hi, lo, for r = 0, i = 0 to 31, then r = 1, 2",
              [v for r in range(3) for i in range(32) for v in split(root(i, r - 1), single)], 2)
    out.table("float", "inverse_cbrt_tablef", "(2^(r-1) C(i))^(-1/3) as hi, lo, for r = 0, i = 0 to 31, then r = 1, 2",
              [v for r in range(3) for i in range(32) for v in split(1 / root(i, r - 1), single)], 2)
    return out


FILES = [sqrt_tables, cbrt_tables]

if __name__ == "__main__":
    for make in FILES:
        make().write()
