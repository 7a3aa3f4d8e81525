#!/usr/bin/env python3
"""Tables of Exp and Ln: writes exp_data.h and ln_data.h beside this file."""
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[3] / "tools"))
from table_file import TableFile, double, single, to_multiple  # noqa: E402
from mpmath import mpf, ln  # noqa: E402

FOLDER = "vector/real/exponential"
GENERATOR = f"{FOLDER}/exponential_tables.py"


def split(x, rounded):
    """hi and lo of an unevaluated sum."""
    hi = rounded(x)
    return [hi, rounded(x - hi)]


def exp_tables():
    out = TableFile(f"{FOLDER}/exp_data.h", GENERATOR)
    power = lambda j, n: mpf(2) ** (mpf(j) / n)
    out.table("double", "exp2_64", "2^(j/64) as hi, lo, for j = 0 to 63",
              [v for j in range(64) for v in split(power(j, 64), double)], 2)
    out.table("double", "exp2_128", "2^(j/128), for j = 0 to 127", [double(power(j, 128)) for j in range(128)])
    out.table("double", "exp2_1024", "2^(j/1024), for j = 0 to 1023", [double(power(j, 1024)) for j in range(1024)])
    out.table("float", "exp2_128f", "2^(j/128) as hi, lo, for j = 0 to 127",
              [v for j in range(128) for v in split(power(j, 128), single)], 2)
    return out


def ln_tables():
    out = TableFile(f"{FOLDER}/ln_data.h", GENERATOR)
    # ln 2 in two parts of 36 and 36 bits, so that products with an exponent are exact.
    l1, l2 = mpf(float.fromhex("0x1.62e42fefap-1")), mpf(float.fromhex("0x1.cf79abc9ep-40"))

    # hi is a multiple of 2^-36 like l1 and lo one of 2^-76 like l2, so that hi + E l1 and lo + E l2 are exact. The first
    # row then cancels against E = 1022 and the last against E = 1023, in both parts.
    def biased(c):
        t = ln(mpf(1024) / c)
        head = to_multiple(t, mpf(2) ** -36)
        tail = to_multiple(t - head, mpf(2) ** -76)
        return [head - 1023 * l1, tail - 1023 * l2]

    out.table("double", "ln_1024_over_c", "ln(1024/c) - 1023 ln 2 as hi, lo, for c = 512 to 1024",
              [v for c in range(512, 1025) for v in biased(c)], 2)
    out.table("double", "ln_1024_over_c_nearest", "ln(1024/c) for c above 724, ln(512/c) for c = 512 to 724",
              [double(ln(mpf(1024 if c > 724 else 512) / c)) for c in range(512, 1025)])

    # Mantissas from 1.5 on count for the next exponent: their logarithm is less by ln 2.
    def short(i):
        reciprocal = to_multiple(mpf(512) / (512 + i), mpf(2) ** -23)
        return [reciprocal, double(-ln(reciprocal) - (ln(2) if i >= 256 else 0))]

    out.table("double", "_BT_Tbl", "reciprocal of 1 + i/512 to 2^-23, and minus its logarithm, for i = 0 to 512",
              [v for i in range(513) for v in short(i)], 2)

    # 20 bits of reciprocal make products with a 32-bit head exact; the log's hi is a multiple of 2^-42 like the rare
    # routine's ln 2, so that their sum is exact.
    def wide(i):
        reciprocal = to_multiple(mpf(64) / (64 + i), mpf(2) ** -20)
        minus_log = -ln(reciprocal)
        hi = to_multiple(minus_log, mpf(2) ** -42)
        return [reciprocal, hi, double(minus_log - hi)]

    out.table("double", "___internal_CoutTab", "reciprocal of 1 + i/64 to 2^-20, minus its logarithm as hi, lo, for i = 0 to 64",
              [v for i in range(65) for v in wide(i)], 3)
    return out


FILES = [exp_tables, ln_tables]

if __name__ == "__main__":
    for make in FILES:
        make().write()
